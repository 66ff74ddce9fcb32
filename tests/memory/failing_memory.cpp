#include "tests/memory/failing_memory.h"

#include <execinfo.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

struct Memory {
  bool isArmed = false;
  long failing = 0;  ///< number of the allocation that fails
  long asked = 0;    ///< allocations since it was armed
  bool failsForGood = false;
  bool hasFailed = false;
};
thread_local Memory memory;
std::atomic<long> liveAllocations{0};
void* failedAt[64];
int failedDepth = 0;

bool Fails() noexcept {
  if (!memory.isArmed) return false;
  ++memory.asked;
  if (memory.asked != memory.failing && !(memory.failsForGood && memory.asked > memory.failing))
    return false;
  if (!memory.hasFailed) {
    memory.isArmed = false;
    failedDepth = backtrace(failedAt, 64);
    memory.isArmed = true;
  }
  memory.hasFailed = true;
  return true;
}

void* Allocate(std::size_t size, std::size_t alignment = 0) noexcept {
  if (Fails()) return nullptr;
  if (size == 0) size = 1;
  void* const allocated =
      alignment == 0
          ? std::malloc(size)
          : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
  if (allocated) liveAllocations.fetch_add(1, std::memory_order_relaxed);
  return allocated;
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment = 0) {
  if (void* const allocated = Allocate(size, alignment)) return allocated;
  throw std::bad_alloc();
}

void Release(void* allocated) noexcept {
  if (allocated) liveAllocations.fetch_sub(1, std::memory_order_relaxed);
  std::free(allocated);
}

}  // namespace

// The sized forms come last: what they would call by default counts all the same.
void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* allocated) noexcept { Release(allocated); }
void operator delete[](void* allocated) noexcept { Release(allocated); }
void operator delete(void* allocated, std::align_val_t) noexcept { Release(allocated); }
void operator delete[](void* allocated, std::align_val_t) noexcept { Release(allocated); }
void operator delete(void* allocated, std::size_t) noexcept { Release(allocated); }
void operator delete[](void* allocated, std::size_t) noexcept { Release(allocated); }
void operator delete(void* allocated, std::size_t, std::align_val_t) noexcept {
  Release(allocated);
}
void operator delete[](void* allocated, std::size_t, std::align_val_t) noexcept {
  Release(allocated);
}

namespace utdata::test {

void ArmMemory(long number, Shortage shortage) noexcept {
  memory = {true, number, 0, shortage == Shortage::ForGood, false};
}

long DisarmMemory() noexcept {
  memory.isArmed = false;
  return memory.asked;
}

bool HasMemoryFailed() noexcept { return memory.hasFailed; }

void ShowFailedAllocation() noexcept { backtrace_symbols_fd(failedAt, failedDepth, STDERR_FILENO); }

long LiveAllocations() noexcept { return liveAllocations.load(std::memory_order_relaxed); }

}  // namespace utdata::test
