#include "pictures/font_data.h"

#include <bit>

extern const unsigned long long embeddedWords[];
extern const unsigned long embeddedSize;

namespace utdata::program {

static_assert(std::endian::native == std::endian::little,
              "the typeface is embedded as little-endian words");

std::span<const std::byte> FontData() {
  return {reinterpret_cast<const std::byte*>(embeddedWords), embeddedSize};
}

}  // namespace utdata::program
