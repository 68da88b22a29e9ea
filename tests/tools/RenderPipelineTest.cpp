// The render pipeline: every item drawn and encoded once, in order, with or
// without the worker thread; a failure or an exception on either side stops
// both and reaches the caller.

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "render/RenderPipeline.h"

namespace {

using qvrender::PipelineItem;
using qvrender::RunPipeline;

struct Outcome {
  std::vector<int> drawn, encoded;
  bool ok = false;
  std::string error;
};

// Items 0 to count - 1, each drawn as a picture count + k wide; drawing
// fails at failDraw, encoding at failEncode, throwing when asked.
Outcome Pipeline(int queue, int count, int failDraw = -1, int failEncode = -1,
                 bool toThrow = false) {
  Outcome r;
  auto draw = [&](int k, PipelineItem* item, std::string* error) {
    r.drawn.push_back(k);
    item->picture.width = count + k;
    if (k != failDraw) return true;
    if (toThrow) throw std::runtime_error("draw threw");
    *error = "draw failed";
    return false;
  };
  auto encode = [&](int k, PipelineItem& item, std::string* error) {
    r.encoded.push_back(item.picture.width == count + k ? k : -1);
    if (k != failEncode) return true;
    if (toThrow) throw std::runtime_error("encode threw");
    *error = "encode failed";
    return false;
  };
  qvrender::PipelineTimes times;
  r.ok = RunPipeline(count, draw, encode, queue, &r.error, &times);
  EXPECT_GE(times.total, 0);
  return r;
}

TEST(RenderPipeline, EveryItemIsDrawnAndEncodedOnceInOrder) {
  std::vector<int> all(50);
  for (int k = 0; k < 50; ++k) all[static_cast<std::size_t>(k)] = k;
  for (int queue : {0, 1, 2, 5}) {
    SCOPED_TRACE("queue " + std::to_string(queue));
    const Outcome r = Pipeline(queue, 50);
    EXPECT_TRUE(r.ok) << r.error;
    EXPECT_EQ(all, r.drawn);
    EXPECT_EQ(all, r.encoded);
  }
  EXPECT_TRUE(Pipeline(2, 0).ok);
}

TEST(RenderPipeline, AFailureStopsBothSidesAndIsReported) {
  for (int queue : {0, 2}) {
    SCOPED_TRACE("queue " + std::to_string(queue));
    Outcome r = Pipeline(queue, 1000, -1, 5);
    EXPECT_EQ(false, r.ok);
    EXPECT_EQ("encode failed", r.error);
    EXPECT_EQ(6u, r.encoded.size());
    EXPECT_LE(r.drawn.size(), 6u + static_cast<std::size_t>(queue) + 2);  // no more than fit

    r = Pipeline(queue, 1000, 3);
    EXPECT_EQ(false, r.ok);
    EXPECT_EQ("draw failed", r.error);
    EXPECT_EQ(4u, r.drawn.size());
    EXPECT_LE(r.encoded.size(), 3u);

    EXPECT_THROW(Pipeline(queue, 1000, -1, 7, true), std::runtime_error);
    EXPECT_THROW(Pipeline(queue, 1000, 7, -1, true), std::runtime_error);
  }
}

}  // namespace
