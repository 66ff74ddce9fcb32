// Texts of diagnostics between narrow and wide. Nothing is refused here: a diagnostic with a broken character is worth more than none.
#include <cstddef>
#include <cstdint>

#include "interfaces/framework.h"

namespace utdata {
namespace {

constexpr std::uint32_t replacement = 0xFFFD;

bool IsCharacter(std::uint32_t code) { return code < 0xD800 || (code > 0xDFFF && code <= 0x10FFFF); }

void AppendWide(std::wstring& wide, std::uint32_t code) {
  if (sizeof(wchar_t) == 2 && code > 0xFFFF) {
    wide += static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10));
    wide += static_cast<wchar_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
  } else {
    wide += static_cast<wchar_t>(code);
  }
}

/// Takes one character off the front of `text`, which is not empty; one byte and U+FFFD when there is none.
std::uint32_t TakeUtf8(std::string_view& text) {
  static constexpr std::uint32_t smallest[] = {0, 0x80, 0x800, 0x10000};
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t following = lead < 0x80   ? 0
                                : lead < 0xC0 ? 4
                                : lead < 0xE0 ? 1
                                : lead < 0xF0 ? 2
                                : lead < 0xF8 ? 3
                                              : 4;
  std::uint32_t code = following == 0 ? lead : lead & (0x3Fu >> following);
  bool good = following < 4 && following < text.size();
  for (std::size_t index = 1; good && index <= following; ++index) {
    const auto byte = static_cast<unsigned char>(text[index]);
    good = (byte & 0xC0) == 0x80;
    code = code << 6 | (byte & 0x3Fu);
  }
  good = good && code >= smallest[following] && IsCharacter(code);
  text.remove_prefix(good ? following + 1 : 1);
  return good ? code : replacement;
}

void AppendUtf8Of(std::string& narrow, std::uint32_t code) {
  if (code < 0x80) {
    narrow += static_cast<char>(code);
    return;
  }
  const int following = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  narrow += static_cast<char>((0xFF00u >> (following + 1) & 0xFFu) | code >> (6 * following));
  for (int shift = 6 * (following - 1); shift >= 0; shift -= 6)
    narrow += static_cast<char>(0x80u | (code >> shift & 0x3Fu));
}

}  // namespace

std::wstring WideFromNarrow(const char* text) {
  std::wstring wide;
  for (std::string_view left = text ? text : ""; !left.empty();) AppendWide(wide, TakeUtf8(left));
  return wide;
}

std::string NarrowFromWide(std::wstring_view text) {
  std::string narrow;
  for (std::size_t index = 0; index < text.size(); ++index) {
    auto code = static_cast<std::uint32_t>(text[index]);
    const bool high = sizeof(wchar_t) == 2 && (code & 0xFC00) == 0xD800;
    if (high && index + 1 < text.size() && (static_cast<std::uint32_t>(text[index + 1]) & 0xFC00) == 0xDC00)
      code = 0x10000 + ((code & 0x3FF) << 10) + (static_cast<std::uint32_t>(text[++index]) & 0x3FF);
    AppendUtf8Of(narrow, IsCharacter(code) ? code : replacement);
  }
  return narrow;
}

}  // namespace utdata
