#include "terminal/text.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace utdata::program {
namespace {

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

}  // namespace

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
