#include "tests/support/record_samples.h"

namespace utdata::test {

std::wstring MakeText(RandomEngine& engine, std::size_t maxLength) {
  // Latin, Greek, CJK, the last characters below and above the surrogates, and two of the upper
  // planes.
  static constexpr char32_t letters[] = U"aZ 0ßé°µλΩ溶接検査\uD7FF\uE000\uFFFD\U0001F50A\U0010FFFF";
  const std::size_t wanted = 1 + engine() % maxLength;
  std::wstring text;
  while (text.size() < wanted) {
    const char32_t letter = letters[engine() % (std::size(letters) - 1)];
    if (sizeof(wchar_t) == 2 && letter > 0xFFFF) continue;
    text += static_cast<wchar_t>(letter);
  }
  return text;
}

}  // namespace utdata::test
