// Allocation counting for the leak checks of the sweeps. With AddressSanitizer
// its LeakSanitizer reports leaks (at the end of each test process); without
// it the test program replaces the global operator new and delete, which the
// library's QvNew, QvNewArray and GlobalAlloc all end in, and the sweep
// compares the number of live objects before and after each trial. The
// replacements live alone in this file so that no call to them is inlined: a
// tool that intercepts them (valgrind) then sees every call.
#include <atomic>
#include <cstdlib>
#include <new>

#include "tests/reliability/Sweep.h"

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

namespace {
std::atomic<long> liveObjects{0};
}  // namespace

#if QV_COUNT_ALLOCATIONS
namespace {

[[gnu::noinline]] void* Allocate(std::size_t size) {
  void* p = std::malloc(size == 0 ? 1 : size);
  if (p) liveObjects.fetch_add(1, std::memory_order_relaxed);
  return p;
}
[[gnu::noinline]] void* AllocateOrThrow(std::size_t size) {
  if (void* p = Allocate(size)) return p;
  throw std::bad_alloc();
}
[[gnu::noinline]] void Release(void* p) {
  if (p) liveObjects.fetch_sub(1, std::memory_order_relaxed);
  std::free(p);
}
}  // namespace

void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, std::size_t) noexcept { Release(p); }
void operator delete[](void* p, std::size_t) noexcept { Release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Release(p); }
#endif

long reliability::LiveAllocations() { return QV_COUNT_ALLOCATIONS ? liveObjects.load() : -1; }
