// UTF-8 and wide characters, one character at a time. Wide characters are UTF-32, or UTF-16 where
// wchar_t has two bytes.
#pragma once

#include <string>
#include <string_view>

namespace utdata::os {

inline constexpr char32_t notACharacter = 0xFFFFFFFF;

[[nodiscard]] constexpr bool IsCharacter(char32_t value) {
  return value < 0xD800 || (value >= 0xE000 && value <= 0x10FFFF);
}

/// REQUIRES: IsCharacter(character).
/// @tparam Text what bytes can be appended to with push_back
template <class Text>
void PutUtf8(Text& utf8, char32_t character) {
  const auto put = [&](char32_t byte) { utf8.push_back(static_cast<char>(byte)); };
  const auto putTail = [&](unsigned shift) { put(0x80 | ((character >> shift) & 0x3F)); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | (character >> 6));
  } else if (character < 0x10000) {
    put(0xE0 | (character >> 12));
    putTail(6);
  } else {
    put(0xF0 | (character >> 18));
    putTail(12);
    putTail(6);
  }
  if (character >= 0x80) putTail(0);
}

/// Takes the first character off well-formed UTF-8; otherwise takes one byte off and returns
/// notACharacter. Overlong forms, surrogates and values past U+10FFFF are malformed. REQUIRES: not
/// empty.
[[nodiscard]] constexpr char32_t TakeUtf8(std::string_view& utf8) {
  const auto lead = static_cast<unsigned char>(utf8.front());
  const std::size_t tails = lead < 0x80   ? 0
                            : lead < 0xC2 ? 4
                            : lead < 0xE0 ? 1
                            : lead < 0xF0 ? 2
                            : lead < 0xF5 ? 3
                                          : 4;
  constexpr char32_t smallest[] = {0, 0x80, 0x800, 0x10000};
  char32_t character = tails == 0 ? lead : lead & (0x3Fu >> tails);
  bool good = tails < 4 && utf8.size() > tails;
  for (std::size_t index = 1; good && index <= tails; ++index) {
    const auto next = static_cast<unsigned char>(utf8[index]);
    good = (next & 0xC0) == 0x80;
    character = (character << 6) | (next & 0x3Fu);
  }
  good = good && character >= smallest[tails] && IsCharacter(character);
  utf8.remove_prefix(good ? tails + 1 : 1);
  return good ? character : notACharacter;
}

/// REQUIRES: IsCharacter(character).
inline void PutWide(std::wstring& text, char32_t character) {
  if (sizeof(wchar_t) == 2 && character >= 0x10000) {
    text.push_back(static_cast<wchar_t>(0xD7C0 + (character >> 10)));
    text.push_back(static_cast<wchar_t>(0xDC00 | (character & 0x3FF)));
  } else {
    text.push_back(static_cast<wchar_t>(character));
  }
}

/// Takes the first character off a wide text; one unit and notACharacter when there is none.
/// REQUIRES: not empty.
[[nodiscard]] constexpr char32_t TakeWide(std::wstring_view& text) {
  const auto first = static_cast<char32_t>(text.front());
  text.remove_prefix(1);
  if (sizeof(wchar_t) == 2 && first >= 0xD800 && first < 0xDC00 && !text.empty()) {
    const auto second = static_cast<char32_t>(text.front());
    if (second < 0xDC00 || second > 0xDFFF) return notACharacter;
    text.remove_prefix(1);
    return 0x10000 + ((first & 0x3FF) << 10) + (second & 0x3FF);
  }
  return IsCharacter(first) ? first : notACharacter;
}

}  // namespace utdata::os
