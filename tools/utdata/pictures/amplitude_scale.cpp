#include "pictures/amplitude_scale.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "utdata/lut.h"

namespace utdata::program {
bool IsSignedType(const CGDataTypeFDD& group) {
  return group.GetDataType() == kvt_Int8 || group.GetDataType() == kvt_Int16;
}

std::uint8_t PlaceInRange(const CGDataTypeFDD& group, std::uint8_t code) {
  return IsSignedType(group) ? static_cast<std::uint8_t>(CLookUpTable::UnRectifySC(code) + 128)
                             : code;
}

CodeMeaning MeaningOf(const CGDataTypeFDD& group, const GroupAxes& axes) {
  CodeMeaning meaning;
  const bool wide = group.sampleSize == 2;
  meaning.low = axes.Percent(wide || IsSignedType(group) ? group.dataMinimum : 0);
  meaning.high = axes.Percent(wide || IsSignedType(group) ? group.dataMaximum : 255);
  meaning.hasSign =
      meaning.low < 0 && (IsSignedType(group) || group.GetDataRectification() == gdata_RectifNone);
  meaning.isWave = meaning.hasSign && group.tofd == 1;
  const bool showsSize = meaning.hasSign && !meaning.isWave;
  for (int code = 0; code < 256; ++code) {
    const auto display = static_cast<std::uint8_t>(code);
    const int size = IsSignedType(group) ? code : std::abs(2 * code - 255);
    meaning.place[display] =
        showsSize ? static_cast<std::uint8_t>(size) : PlaceInRange(group, display);
  }
  if (showsSize) {
    meaning.high = std::max(std::abs(meaning.low), std::abs(meaning.high));
    meaning.low = 0;
  }
  return meaning;
}

ColorScale AmplitudeScale(const CodeMeaning& meaning, const GroupAxes& axes, std::uint32_t gain) {
  ColorScale scale;
  scale.colors = meaning.isWave ? &GreyColors() : &HeatColors();
  scale.isSigned = meaning.isWave;
  scale.low = meaning.low / gain;
  scale.high = meaning.high / gain;
  scale.title = "Amplitude, of full scale";
  scale.unit = "%";
  scale.marks = DecibelTicks(axes, scale.low, scale.high);
  scale.marksUnit = "dB";
  return scale;
}

std::vector<Tick> DecibelTicks(const GroupAxes& axes, double low, double high) {
  std::vector<Tick> ticks;
  for (int decibels = 0; decibels >= -60; decibels -= 6) {
    const double percent = axes.PercentOfDecibels(decibels);
    if (percent > low && percent <= high * (1 + 1e-9))
      ticks.push_back({percent, std::to_string(decibels)});
  }
  return ticks;
}

std::uint32_t FittingGain(double percent) {
  const double factor = std::floor(100 / std::abs(percent));
  return std::isfinite(factor) ? static_cast<std::uint32_t>(std::clamp(factor, 1.0, 1000.0)) : 1;
}

}  // namespace utdata::program
