#include "render/RenderPipeline.h"

#include <time.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace qvrender {
namespace {

using Clock = std::chrono::steady_clock;

double Since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// Processor time of the calling thread, in seconds.
double ThreadSeconds() {
  timespec ts{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) + 1e-9 * static_cast<double>(ts.tv_nsec);
}

// What the drawing thread and the encoder share, under mutex.
struct Shared {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::pair<int, std::unique_ptr<PipelineItem>>> ready;  // drawn, in order
  std::vector<std::unique_ptr<PipelineItem>> spare;                 // encoded, to reuse
  bool drawingDone = false;  // every item is in ready: encode them, then end
  bool stop = false;         // drawing failed: end now
  bool failed = false;       // encoding failed: error or exception tell why
  std::string error;
  std::exception_ptr exception;
  double encodeSeconds = 0;  // written by the encoder only
};

void Encoder(Shared& s, const EncodeStep& encode) {
  std::unique_lock<std::mutex> lock(s.mutex);
  for (;;) {
    s.changed.wait(lock, [&] { return s.stop || !s.ready.empty() || s.drawingDone; });
    if (s.stop || s.ready.empty()) return;
    std::pair<int, std::unique_ptr<PipelineItem>> item = std::move(s.ready.front());
    s.ready.pop_front();
    lock.unlock();
    std::string error;
    bool ok = false;
    std::exception_ptr exception;
    const double start = ThreadSeconds();
    try {
      ok = encode(item.first, *item.second, &error);
    } catch (...) {
      exception = std::current_exception();
    }
    s.encodeSeconds += ThreadSeconds() - start;
    lock.lock();
    s.spare.push_back(std::move(item.second));
    if (!ok) {
      s.failed = true;
      s.error = std::move(error);
      s.exception = exception;
    }
    s.changed.notify_all();
    if (!ok) return;
  }
}

}  // namespace

bool RunPipeline(int count, const DrawStep& draw, const EncodeStep& encode, int queue,
                 std::string* error, PipelineTimes* times) {
  PipelineTimes t;
  const Clock::time_point start = Clock::now();
  auto finish = [&](bool ok) {
    t.total = Since(start);
    if (times) *times = t;
    return ok;
  };
  if (queue <= 0) {
    PipelineItem item;
    for (int k = 0; k < count; ++k) {
      double step = ThreadSeconds();
      if (!draw(k, &item, error)) return finish(false);
      t.draw += ThreadSeconds() - step;
      step = ThreadSeconds();
      if (!encode(k, item, error)) return finish(false);
      t.encode += ThreadSeconds() - step;
    }
    return finish(true);
  }

  Shared s;
  std::thread worker;
  try {
    worker = std::thread(Encoder, std::ref(s), std::cref(encode));
  } catch (const std::system_error&) {
    return RunPipeline(count, draw, encode, 0, error, times);  // no thread to be had: in turn
  }
  // Ends the worker however this function is left: after the last item
  // when every item was drawn, at once otherwise.
  struct Join {
    Shared& s;
    std::thread& worker;
    bool drawn = false;
    ~Join() {
      {
        std::lock_guard<std::mutex> lock(s.mutex);
        (drawn ? s.drawingDone : s.stop) = true;
      }
      s.changed.notify_all();
      worker.join();
    }
  };
  bool drawn = false;
  std::string drawError;
  {
    Join join{s, worker};
    const std::size_t items = static_cast<std::size_t>(queue) + 2;
    std::size_t made = 0;
    int k = 0;
    for (; k < count; ++k) {
      std::unique_ptr<PipelineItem> item;
      {
        const Clock::time_point wait = Clock::now();
        std::unique_lock<std::mutex> lock(s.mutex);
        s.changed.wait(lock, [&] { return s.failed || !s.spare.empty() || made < items; });
        t.drawWaiting += Since(wait);
        if (s.failed) break;
        if (!s.spare.empty()) {
          item = std::move(s.spare.back());
          s.spare.pop_back();
        }
      }
      if (!item) {
        item = std::make_unique<PipelineItem>();
        ++made;
      }
      const double step = ThreadSeconds();
      if (!draw(k, item.get(), &drawError)) break;
      t.draw += ThreadSeconds() - step;
      {
        std::lock_guard<std::mutex> lock(s.mutex);
        s.ready.emplace_back(k, std::move(item));
      }
      s.changed.notify_all();
    }
    drawn = join.drawn = k == count;
  }
  t.encode = s.encodeSeconds;
  if (s.exception) std::rethrow_exception(s.exception);
  if (s.failed || !drawn) {
    *error = s.failed ? s.error : drawError;
    return finish(false);
  }
  return finish(true);
}

}  // namespace qvrender
