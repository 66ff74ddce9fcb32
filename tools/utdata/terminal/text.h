// Texts as a terminal takes them.
#pragma once

#include <string>
#include <string_view>

#include "utdata/failure.h"

namespace utdata::program {

/// A text that is safe on a terminal and keeps to its line: control characters are written as \xNN.
[[nodiscard]] std::string Printable(std::string_view utf8);

/// Columns that a UTF-8 text takes on a terminal, each character counting one.
[[nodiscard]] std::size_t DisplayWidth(std::string_view utf8);

}  // namespace utdata::program
