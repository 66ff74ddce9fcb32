// From display codes to the places of a colour scale, and from amplitudes to what its sides say.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "pictures/plot.h"
#include "utdata/samples.h"

namespace utdata::program {

/// How the codes of a group become the places of a colour scale, which rise evenly with the
/// amplitude.
struct CodeMeaning {
  std::array<std::uint8_t, 256> place{};
  double low = 0;        ///< percent at place 0, before soft gain
  double high = 100;     ///< percent at place 255, before soft gain
  bool hasSign = false;  ///< samples lie on both sides of zero
  bool isWave = false;   ///< they are shown so: zero lies in the middle
};

/// A time-of-flight diffraction scan is read by the phase of its echoes, and shown as a wave; of
/// other scans without rectification the size of the amplitude is shown.
[[nodiscard]] CodeMeaning MeaningOf(const DataGroup& group, const CodeSpan& span);

/// The colours and sides of a scale of amplitudes.
[[nodiscard]] ColorScale AmplitudeColors(const CodeMeaning& meaning,
                                         const DataGroup& group,
                                         std::uint32_t gain);

/// dB marks between two amplitudes in percent, strongest first.
[[nodiscard]] std::vector<Tick> DecibelTicks(const DataGroup& group, double low, double high);

/// The largest whole factor that keeps an amplitude, in percent of full scale, within the scale.
[[nodiscard]] std::uint32_t FittingGain(double percent);

}  // namespace utdata::program
