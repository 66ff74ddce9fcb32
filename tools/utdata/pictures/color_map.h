// How display codes become colours.
#pragma once

#include <array>
#include <cstdint>

#include "pictures/picture.h"

namespace utdata::program {

/// 256 colours, one a code.
using ColorMap = std::array<Color, 256>;

// The lightness of these two rises with the code, so that of two echoes the stronger is the
// brighter, also in grey print and to eyes that see few hues.

/// Black over violet, red and orange to pale yellow: for amplitudes without a sign.
[[nodiscard]] const ColorMap& HeatColors();
/// Black to white: for signed amplitudes, zero in the middle.
[[nodiscard]] const ColorMap& GreyColors();
/// White over blue, green and yellow to dark red, as amplitudes have long been shown: weak echoes
/// are seen on white.
[[nodiscard]] const ColorMap& RainbowColors();

struct Palette {
  const char* name;
  const ColorMap& (*colors)();
};
inline constexpr std::array palettes = {Palette{"heat", HeatColors},
                                        Palette{"rainbow", RainbowColors},
                                        Palette{"grey", GreyColors}};

}  // namespace utdata::program
