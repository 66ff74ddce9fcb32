// Work that a library may not survive: it is done by a child process, so that a crash there is a
// failure here.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "utdata/arrays.h"

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

/// What the Failure says when the library does not survive the job.
struct GuardedJob {
  std::string file;     ///< as the user named it
  std::string what;     ///< "cannot be read"
  std::string library;  ///< "the HDF5 library"
  std::string advice;
  double patience;  ///< seconds of processor time that it may take between signs of progress
};

/// Runs a job in a child process and waits for its end; its results go through SharedMemory and
/// files. A Failure of the job is thrown here, and so is one of a library that crashes or that goes
/// on for ever. The child ends with this process. What it writes to the standard error stream is
/// lost. Throws Interrupted when the user has asked to stop. REQUIRES: one thread.
/// @param job      called with the function to which it reports its progress
/// @param progress called here with what the job has reported; may throw to stop it
void RunGuarded(const GuardedJob& name,
                const std::function<void(const GatherProgress& told)>& job,
                const GatherProgress& progress);

}  // namespace utdata::program
