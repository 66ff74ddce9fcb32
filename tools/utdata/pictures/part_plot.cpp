#include "pictures/part_plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace utdata::program {

std::string LengthText(double millimetres) {
  std::array<char, 40> text{};
  const double rounded = std::round(millimetres * 100) / 100;
  std::snprintf(text.data(), text.size(), "%.2f mm", rounded == 0 ? 0.0 : rounded);
  return text.data();
}

std::string AngleText(double degrees) {
  std::array<char, 40> text{};
  const double rounded = std::round(degrees * 10) / 10;
  std::snprintf(text.data(), text.size(), "%.4g°", rounded == 0 ? 0.0 : rounded);
  return text.data();
}

PlotAxis PartAxis(const AxisScale& scale, const char* title) {
  return {title, scale.symbol, scale.first, scale.step, scale.quantity};
}

void SetPercents(ImagePlot& plot, const std::vector<float>& percents, std::uint32_t gain) {
  for (const float percent : percents) {
    const bool isSeen = !std::isnan(percent);
    const double place = isSeen ? std::abs(double{percent}) * gain / 100 * 255 : 0;
    plot.codes.push_back(static_cast<std::uint8_t>(std::lround(std::min(place, 255.0))));
    plot.unseen.push_back(isSeen ? 0 : 1);
  }
}

}  // namespace utdata::program
