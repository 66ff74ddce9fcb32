// What stands on the disk already, for whatever fails behind it.
#pragma once

#include <string_view>

namespace utdata::program {

/// From now on a failure says that this file is written. Takes no memory.
void NoteWritten(std::string_view path) noexcept;

/// "; weld.A01 is written" behind the reason of a failure; without such a file, nothing.
[[nodiscard]] const char* WrittenNote() noexcept;

}  // namespace utdata::program
