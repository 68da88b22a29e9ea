#include "tests/reliability/Sweep.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

// Allocation counting. With AddressSanitizer its LeakSanitizer reports leaks
// (at the end of each test process); without it the test program replaces
// the global operator new and delete, which the library's QvNew, QvNewArray
// and GlobalAlloc all end in, and compares the number of live objects before
// and after each trial.
#if defined(__SANITIZE_ADDRESS__)
#define QV_COUNT_ALLOCATIONS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QV_COUNT_ALLOCATIONS 0
#endif
#endif
#ifndef QV_COUNT_ALLOCATIONS
#define QV_COUNT_ALLOCATIONS 1
#endif

#if QV_COUNT_ALLOCATIONS
namespace {
std::atomic<long> liveObjects{0};

void* Allocate(std::size_t size) {
  void* p = std::malloc(size == 0 ? 1 : size);
  if (p) liveObjects.fetch_add(1, std::memory_order_relaxed);
  return p;
}

void Release(void* p) {
  if (!p) return;
  liveObjects.fetch_sub(1, std::memory_order_relaxed);
  std::free(p);
}
}  // namespace

void* operator new(std::size_t size) {
  void* p = Allocate(size);
  if (!p) throw std::bad_alloc();
  return p;
}
void* operator new[](std::size_t size) {
  void* p = Allocate(size);
  if (!p) throw std::bad_alloc();
  return p;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, std::size_t) noexcept { Release(p); }
void operator delete[](void* p, std::size_t) noexcept { Release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Release(p); }
#endif

namespace reliability {

long LiveAllocations() {
#if QV_COUNT_ALLOCATIONS
  return liveObjects.load(std::memory_order_relaxed);
#else
  return -1;
#endif
}

namespace {

std::vector<SweepRecord>& MutableRecords() {
  static std::vector<SweepRecord> records;
  return records;
}

// Prints every operation swept by this process and the faults injected.
class SweepReport : public ::testing::Environment {
 public:
  void TearDown() override {
    const auto& records = Records();
    if (records.empty()) return;
    long faults = 0;
    for (const auto& r : records) faults += r.faults;
    std::printf("[ sweep    ] %zu operations swept, %ld allocation faults injected\n",
                records.size(), faults);
  }
};

[[maybe_unused]] ::testing::Environment* const report =
    ::testing::AddGlobalTestEnvironment(new SweepReport);

// A runaway sweep (an operation that allocates without end) stops here.
constexpr int kMaxFaults = 200000;

}  // namespace

const std::vector<SweepRecord>& Records() { return MutableRecords(); }

int Sweep(const std::string& operation, const Trial& trial) {
  QvFailAllocation(0);
  int faults = 0;
  for (int k = 0; k <= kMaxFaults; ++k) {
    const ::testing::TestResult* result =
        ::testing::UnitTest::GetInstance()->current_test_info()->result();
    const int reports = result->total_part_count();
    const long before = LiveAllocations();
    const int attempts = trial(k);
    QvFailAllocation(0);
    const long after = LiveAllocations();
    // A failure reported by the trial keeps its message: no leak check then.
    if (before >= 0 && result->total_part_count() == reports) {
      EXPECT_EQ(after, before) << operation << ": objects leaked with allocation " << k
                               << " failing";
    }
    if (::testing::Test::HasFatalFailure()) {
      ADD_FAILURE() << operation << ": stopped at allocation " << k;
      break;
    }
    if (k > 0) {
      if (attempts < k) break;
      ++faults;
    }
  }
  EXPECT_LT(faults, kMaxFaults) << operation << " never stops allocating";
  MutableRecords().push_back({operation, faults});
  std::printf("[ sweep    ] %-60s %6d faults\n", operation.c_str(), faults);
  return faults;
}

Text::Text(const char* s) : bytes(s, s + std::strlen(s) + 1) {}

}  // namespace reliability
