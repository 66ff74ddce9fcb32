// From the system's error numbers to those of the interface.
#pragma once

#include <sys/types.h>

#include <cerrno>
#include <cstdint>
#include <limits>

#include "interfaces/os.h"

namespace utdata::os {

/// What errno says, noted as the thread's last failure.
[[nodiscard]] Error LastError() noexcept;

/// Runs a system call until a signal no longer interrupts it.
template <class Call>
auto Uninterrupted(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

[[nodiscard]] inline bool FitsOffset(std::uint64_t offset) {
  return offset <= static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
}

}  // namespace utdata::os
