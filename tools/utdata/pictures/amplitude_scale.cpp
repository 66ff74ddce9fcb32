#include "pictures/amplitude_scale.h"

#include <string>

namespace utdata::program {

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

}  // namespace utdata::program
