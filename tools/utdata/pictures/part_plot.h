// What the pictures of a part have in common: colours of lines, places in millimetres, and
// amplitudes of pixels that may show nothing.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "pictures/plot.h"
#include "utdata/datagroup.h"

namespace utdata::program {

inline constexpr Color wallColor = {0, 150, 200};
inline constexpr Color weldColor = {40, 175, 90};

/// A length to a hundredth of a millimetre, as fine as samples lie: "20.73 mm".
[[nodiscard]] std::string LengthText(double millimetres);
[[nodiscard]] std::string AngleText(double degrees);  ///< "19°"
[[nodiscard]] PlotAxis PartAxis(const AxisScale& scale, const char* title);
/// Fills in the codes of amplitudes in percent, NaN for a pixel that shows nothing.
void SetPercents(ImagePlot& plot, const std::vector<float>& percents, std::uint32_t gain);

}  // namespace utdata::program
