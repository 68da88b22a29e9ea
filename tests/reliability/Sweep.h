// The allocation-failure sweep: runs one operation on a fresh state once for
// every allocation it makes, with exactly that allocation failing, and checks
// each outcome, the state afterwards and that nothing leaked.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "toolbox/QvPlatform.h"

namespace reliability {

// Number of objects allocated with operator new and not freed yet, counted
// in the builds without AddressSanitizer (whose LeakSanitizer checks there);
// -1 when not counted.
long LiveAllocations();

// Runs op with the k-th allocation attempt failing (k = 0: none fails) and
// gives the number of attempts op made. Failing is off again afterwards.
template <class F>
int Inject(int k, F&& op) {
  QvFailAllocation(k);
  op();
  const int attempts = QvAllocationCount();
  QvFailAllocation(0);
  return attempts;
}

// True when the run of Inject(k, ...) that made `attempts` attempts had its
// k-th attempt fail.
inline bool Faulted(int k, int attempts) { return k > 0 && attempts >= k; }

// One trial: builds a fresh state, runs the operation under Inject(k, ...),
// checks the result and the state, makes a later operation succeed and
// destroys everything. Returns the attempts counted by Inject.
using Trial = std::function<int(int k)>;

// Sweeps k = 0 (the reference run), 1, 2, ... until a trial makes fewer than
// k attempts. Records the operation and its number of injected faults, and
// checks for leaks around each trial in the builds that count allocations.
// Returns the number of injected faults.
int Sweep(const std::string& operation, const Trial& trial);

// The operations swept so far and their fault counts.
struct SweepRecord {
  std::string operation;
  int faults = 0;
};
const std::vector<SweepRecord>& Records();

// A writable copy of a string for the interfaces that take unsigned char*.
class Text {
 public:
  explicit Text(const char* s);
  unsigned char* get() { return bytes.data(); }
  operator unsigned char*() { return bytes.data(); }

 private:
  std::vector<unsigned char> bytes;
};

}  // namespace reliability
