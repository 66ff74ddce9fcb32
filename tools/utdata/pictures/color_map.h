// How display codes become colours.
#pragma once

#include <array>
#include <cstdint>

#include "pictures/picture.h"

namespace utdata::program {

/// 256 colours whose lightness rises with the code, so that of two echoes the stronger is the
/// brighter, also in grey print and to eyes that see few hues.
using ColorMap = std::array<Color, 256>;

/// Black over violet, red and orange to pale yellow: for amplitudes without a sign.
[[nodiscard]] const ColorMap& HeatColors();
/// Black to white: for signed amplitudes, zero in the middle.
[[nodiscard]] const ColorMap& GreyColors();

}  // namespace utdata::program
