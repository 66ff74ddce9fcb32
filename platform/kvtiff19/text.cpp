// Texts between wide characters and the UTF-8 of the file.
#include "platform/kvtiff19/text.h"

#include <cstring>

#include "platform/kvtiff19/items.h"
#include "platform/os/utf8.h"

namespace utdata::kvtiff19 {
namespace {

/// How many of the first bytes are ASCII, in steps of eight.
std::size_t AsciiPrefix(std::string_view utf8) {
  std::size_t at = 0;
  for (; at + 8 <= utf8.size(); at += 8) {
    std::uint64_t eight = 0;
    std::memcpy(&eight, utf8.data() + at, 8);
    if (eight & 0x8080808080808080u) break;
  }
  return at;
}

}  // namespace

bool AppendUtf8(std::string& utf8, std::wstring_view text) {
  const std::size_t before = utf8.size();
  while (!text.empty()) {
    const char32_t character = os::TakeWide(text);
    if (character == os::notACharacter) {
      utf8.resize(before);
      return false;
    }
    os::PutUtf8(utf8, character);
  }
  return true;
}

std::optional<std::wstring> FromUtf8(std::string_view utf8) {
  std::wstring text;
  text.reserve(utf8.size());
  while (!utf8.empty()) {
    const char32_t character = os::TakeUtf8(utf8);
    if (character == os::notACharacter) return std::nullopt;
    os::PutWide(text, character);
  }
  return text;
}

std::optional<std::size_t> WideLength(std::string_view utf8) noexcept {
  std::size_t length = AsciiPrefix(utf8);
  utf8.remove_prefix(length);
  while (!utf8.empty()) {
    const char32_t character = os::TakeUtf8(utf8);
    if (character == os::notACharacter) return std::nullopt;
    length += sizeof(wchar_t) == 2 && character >= 0x10000 ? 2 : 1;
  }
  return length;
}

std::size_t CopyWide(std::string_view utf8, std::span<wchar_t> buffer) noexcept {
  std::size_t length = 0;
  while (!utf8.empty()) {
    const char32_t character = os::TakeUtf8(utf8);
    const bool pair = sizeof(wchar_t) == 2 && character >= 0x10000;
    if (length + (pair ? 2 : 1) >= buffer.size()) break;
    if (pair) buffer[length++] = static_cast<wchar_t>(0xD7C0 + (character >> 10));
    buffer[length++] = static_cast<wchar_t>(pair ? 0xDC00 | (character & 0x3FF) : character);
  }
  buffer[length] = L'\0';
  return length;
}

}  // namespace utdata::kvtiff19
