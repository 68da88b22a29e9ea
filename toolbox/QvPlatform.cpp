#include "toolbox/QvPlatform.h"
#include "toolbox/QvPlatformLocal.h"

#include <chrono>
#include <cstring>

#include "toolbox/tbRect.h"

namespace {

std::uint32_t SystemTicks() {
  using namespace std::chrono;
  const auto ms = duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
  // Only the low 32 bits are kept, so the count wraps at 2^32.
  return static_cast<std::uint32_t>(static_cast<std::uint64_t>(ms));
}

QvTickSource tickSource = nullptr;  // null: the system clock

int failAt = 0;           // attempt that fails, 0 for none
int allocationCount = 0;  // attempts since the last QvFailAllocation

}  // namespace

namespace qv {

std::uint32_t GetTickCount() { return tickSource ? tickSource() : SystemTicks(); }

void* GlobalAlloc(unsigned int /*flags*/, std::size_t bytes) {
  if (bytes == 0) return nullptr;
  if (QvAllocationFails()) return nullptr;
  // Blocks are handed out zeroed.
  return new (std::nothrow) unsigned char[bytes]();
}

void* GlobalFree(void* block) {
  delete[] static_cast<unsigned char*>(block);
  return nullptr;
}

void SetRect(tbRect* rect, std::int32_t left, std::int32_t top, std::int32_t right,
             std::int32_t bottom) {
  if (!rect) return;
  rect->left = left;
  rect->top = top;
  rect->right = right;
  rect->bottom = bottom;
}

}  // namespace qv

QvTickSource QvSetTickSource(QvTickSource source) {
  QvTickSource previous = tickSource;
  tickSource = source;
  return previous;
}

void QvFailAllocation(int k) {
  failAt = k > 0 ? k : 0;
  allocationCount = 0;
}

int QvAllocationCount() { return allocationCount; }

bool QvAllocationFails() {
  if (allocationCount < 0x7fffffff) ++allocationCount;
  return failAt > 0 && allocationCount == failAt;
}

bool QvAllocationFailsWithin(int attempts) {
  int count = allocationCount;
  for (int i = 0; i < attempts; ++i) {
    if (count < 0x7fffffff) ++count;
    if (failAt > 0 && count == failAt) return true;
  }
  return false;
}
