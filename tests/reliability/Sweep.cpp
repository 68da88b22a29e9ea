#include "tests/reliability/Sweep.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

namespace reliability {

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
