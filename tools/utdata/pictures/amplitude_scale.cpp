#include "pictures/amplitude_scale.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace utdata::program {

CodeMeaning MeaningOf(const DataGroup& group, const CodeSpan& span) {
  CodeMeaning meaning;
  meaning.low = group.Percent(span.low);
  meaning.high = group.Percent(span.high);
  meaning.hasSign = meaning.low < 0;
  meaning.isWave = meaning.hasSign && group.IsTofd();
  const bool showsSize = meaning.hasSign && !meaning.isWave;
  for (int code = 0; code < 256; ++code) {
    const auto display = static_cast<std::uint8_t>(code);
    // The codes of a signed span grow with the size of the amplitude.
    meaning.place[display] = showsSize ? display : span.PlaceOf(display);
  }
  if (showsSize) {
    meaning.high = std::max(std::abs(meaning.low), std::abs(meaning.high));
    meaning.low = 0;
  }
  return meaning;
}

ColorScale AmplitudeColors(const CodeMeaning& meaning, const DataGroup& group, std::uint32_t gain) {
  ColorScale scale;
  scale.colors = meaning.isWave ? &GreyColors() : &HeatColors();
  scale.isSigned = meaning.isWave;
  scale.low = meaning.low / gain;
  scale.high = meaning.high / gain;
  scale.title = "Amplitude, of full scale";
  scale.unit = "%";
  scale.marks = DecibelTicks(group, scale.low, scale.high);
  scale.marksUnit = "dB";
  return scale;
}

std::vector<Tick> DecibelTicks(const DataGroup& group, double low, double high) {
  std::vector<Tick> ticks;
  for (int decibels = 0; decibels >= -60; decibels -= 6) {
    const double percent = group.PercentOfDecibels(decibels);
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
