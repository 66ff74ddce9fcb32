#include "terminal/text.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "terminal/failure.h"

namespace utdata::program {
namespace {

constexpr char32_t replacement = 0xFFFD;

bool IsCharacter(char32_t code) { return code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF); }

unsigned char ByteAt(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

/// The character at `at`, which moves behind it; a value that is not a character when the bytes are
/// malformed.
char32_t NextCharacter(std::string_view text, std::size_t& at) {
  constexpr char32_t malformed = 0xFFFFFFFF;
  constexpr std::array<char32_t, 4> smallest = {0, 0x80, 0x800, 0x10000};
  const unsigned char lead = ByteAt(text, at++);
  if (lead < 0x80) return lead;
  const std::size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC0 || lead > 0xF7 || text.size() - at < more) return malformed;
  char32_t code = lead & (0x3FU >> more);
  for (std::size_t index = 0; index < more; ++index) {
    const unsigned char next = ByteAt(text, at++);
    if ((next & 0xC0U) != 0x80U) return malformed;
    code = (code << 6U) | (next & 0x3FU);
  }
  return code >= smallest[more] && IsCharacter(code) ? code : malformed;
}

void AppendWide(std::wstring& text, char32_t code) {
  if (sizeof(wchar_t) == 2 && code > 0xFFFF) {
    text += static_cast<wchar_t>(0xD7C0 + (code >> 10U));
    code = 0xDC00 + (code & 0x3FFU);
  }
  text += static_cast<wchar_t>(code);
}

void AppendUtf8(std::string& text, char32_t code) {
  if (code < 0x80) {
    text += static_cast<char>(code);
    return;
  }
  const unsigned more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  const std::array<char32_t, 4> lead = {0, 0xC0, 0xE0, 0xF0};
  text += static_cast<char>(lead[more] | code >> (6 * more));
  for (unsigned left = more; left-- > 0;)
    text += static_cast<char>(0x80U | (code >> (6 * left) & 0x3FU));
}

}  // namespace

std::wstring ToWide(std::string_view utf8) {
  std::wstring wide;
  wide.reserve(utf8.size());
  for (std::size_t at = 0; at < utf8.size();) {
    const char32_t code = NextCharacter(utf8, at);
    if (!IsCharacter(code) || code == 0)
      throw Failure(std::string(utf8), "cannot be used", "the text is not valid UTF-8");
    AppendWide(wide, code);
  }
  return wide;
}

std::string ToUtf8(std::wstring_view text) {
  std::string utf8;
  utf8.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    auto code = static_cast<char32_t>(text[at]);
    if (sizeof(wchar_t) == 2 && code >= 0xD800 && code < 0xDC00 && at + 1 < text.size()) {
      const auto low = static_cast<char32_t>(text[at + 1]);
      if (low >= 0xDC00 && low <= 0xDFFF) {
        code = 0x10000 + ((code - 0xD800) << 10U) + (low - 0xDC00);
        ++at;
      }
    }
    AppendUtf8(utf8, IsCharacter(code) ? code : replacement);
  }
  return utf8;
}

std::string Printable(std::string_view utf8) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string printable;
  printable.reserve(utf8.size());
  for (std::size_t at = 0; at < utf8.size();) {
    const std::size_t start = at;
    const char32_t code = NextCharacter(utf8, at);
    if (IsCharacter(code) && code >= 0x20 && (code < 0x7F || code >= 0xA0)) {
      printable += utf8.substr(start, at - start);
      continue;
    }
    at = start + (IsCharacter(code) ? at - start : 1);
    for (const char byte : utf8.substr(start, at - start)) {
      const auto value = static_cast<unsigned char>(byte);
      printable += {'\\', 'x', digits[value >> 4U], digits[value & 0xFU]};
    }
  }
  return printable;
}

std::size_t DisplayWidth(std::string_view utf8) {
  return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
  }));
}

}  // namespace utdata::program
