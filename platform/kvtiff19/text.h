// UTF-8 of the file, measured and copied as wide characters. Pure functions.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace utdata::kvtiff19 {

/// Whether UTF-8 is well-formed.
[[nodiscard]] bool IsUtf8(std::string_view utf8) noexcept;

/// Wide characters of a text without terminator; nothing when the UTF-8 is malformed.
[[nodiscard]] std::optional<std::size_t> WideLength(std::string_view utf8) noexcept;

/// Fills `buffer` with as many whole characters as fit before a terminator; returns the wide
/// characters before it. REQUIRES: well-formed UTF-8, a buffer that is not empty.
std::size_t CopyWide(std::string_view utf8, std::span<wchar_t> buffer) noexcept;

}  // namespace utdata::kvtiff19
