// Texts of diagnostics between narrow and wide. Nothing is refused here: a diagnostic with a broken
// character is worth more than none.
#include "interfaces/framework.h"
#include "platform/os/utf8.h"

namespace utdata {
namespace {

constexpr char32_t OrReplacement(char32_t character) {
  return character == os::notACharacter ? U'\uFFFD' : character;
}

}  // namespace

std::wstring WideFromNarrow(const char* text) {
  std::wstring wide;
  for (std::string_view left = text ? text : ""; !left.empty();)
    os::PutWide(wide, OrReplacement(os::TakeUtf8(left)));
  return wide;
}

std::string NarrowFromWide(std::wstring_view text) {
  std::string narrow;
  while (!text.empty()) os::PutUtf8(narrow, OrReplacement(os::TakeWide(text)));
  return narrow;
}

}  // namespace utdata
