// Paths between wide characters and the bytes that the operating system wants.
#pragma once

#include <string>
#include <string_view>

#include "interfaces/export.h"
#include "platform/os/utf8.h"

namespace utdata::os {

/// The system's bytes of a path: UTF-8. A byte of a name that is not UTF-8 travels in wide texts as
/// U+DC80 to U+DCFF and comes back as that byte. Characters that no name can hold become '?'.
[[nodiscard]] UTDATA_API std::string NarrowPath(std::wstring_view path);
/// The inverse of NarrowPath.
[[nodiscard]] UTDATA_API std::wstring WidePath(std::string_view path);

/// Appends the bytes of NarrowPath with push_back.
template <class Bytes>
void PutPath(Bytes& bytes, std::wstring_view path) {
  while (!path.empty()) {
    const auto unit = static_cast<char32_t>(path.front());
    if (const char32_t character = TakeWide(path); character != notACharacter)
      PutUtf8(bytes, character);
    else
      bytes.push_back(unit >= 0xDC80 && unit <= 0xDCFF ? static_cast<char>(unit - 0xDC00) : '?');
  }
}

}  // namespace utdata::os
