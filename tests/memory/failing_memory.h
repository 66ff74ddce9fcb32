// Memory that runs out when a test says so: the program's allocation functions are replaced.
//
// Only what the thread that arms it asks of `operator new` fails. All allocations are counted, so
// that a test can see what was not given back.
#pragma once

namespace utdata::test {

enum class Shortage {
  Once,    ///< one allocation fails
  ForGood  ///< that one and all after it
};

/// Lets the `number`-th allocation of this thread fail, counted from 1 and from now on.
void ArmMemory(long number, Shortage shortage) noexcept;
/// Memory is there again. Returns how many allocations there were since ArmMemory.
long DisarmMemory() noexcept;
/// Whether an allocation has failed since ArmMemory.
[[nodiscard]] bool HasMemoryFailed() noexcept;
/// Writes the call stack of the last allocation that failed to the standard error stream, as
/// addr2line takes it.
void ShowFailedAllocation() noexcept;

/// Blocks of memory that are allocated now, by all threads.
[[nodiscard]] long LiveAllocations() noexcept;

}  // namespace utdata::test
