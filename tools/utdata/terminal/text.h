// Texts between the library, which speaks wide characters, and the terminal and JSON, which speak
// UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace utdata::program {

/// The wide form of well-formed UTF-8. Throws Failure when it is malformed, as a path or a name
/// from the command line may be.
[[nodiscard]] std::wstring ToWide(std::string_view utf8);

/// The UTF-8 form of a wide text; what is not a character becomes U+FFFD, so that the result is
/// always well-formed.
[[nodiscard]] std::string ToUtf8(std::wstring_view text);

/// A text that is safe on a terminal and keeps to its line: control characters are written as \xNN.
[[nodiscard]] std::string Printable(std::string_view utf8);

/// Columns that a UTF-8 text takes on a terminal, each character counting one.
[[nodiscard]] std::size_t DisplayWidth(std::string_view utf8);

}  // namespace utdata::program
