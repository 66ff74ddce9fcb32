// Work that a library may not survive: it is done by a child process, so that a crash there is a
// failure here.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>

#include "arrays/gather.h"
#include "terminal/failure.h"

namespace utdata::program {

/// Memory that parent and child processes share, all zeros at first.
class SharedMemory {
 public:
  /// Throws std::bad_alloc. REQUIRES: size > 0.
  explicit SharedMemory(std::size_t size);
  ~SharedMemory();
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;

  [[nodiscard]] std::span<std::byte> Bytes() const { return {m_data, m_size}; }

 private:
  std::byte* m_data;
  std::size_t m_size;
};

/// Runs a job in a child process and waits for its end; its results go through SharedMemory and
/// files. A Failure of the job is thrown here. What it writes to the standard error stream is lost.
/// REQUIRES: one thread.
/// @param crashed  thrown when the child ends in any other way than by its job's end
/// @param job      told where to tell its own progress
/// @param progress told here what the job told there; may throw to stop it
void RunGuarded(const Failure& crashed,
                const std::function<void(const GatherProgress& told)>& job,
                const GatherProgress& progress);

}  // namespace utdata::program
