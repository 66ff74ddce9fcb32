// What display codes mean to whoever draws them.
#include <algorithm>
#include <cmath>

#include "utdata/samples.h"

namespace utdata {

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

std::uint32_t FittingGain(double percent) {
  const double factor = std::floor(100 / std::abs(percent));
  return std::isfinite(factor) ? static_cast<std::uint32_t>(std::clamp(factor, 1.0, 1000.0)) : 1;
}

}  // namespace utdata
