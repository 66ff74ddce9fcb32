// The colours of amplitudes, and what the sides of their scale say.
#pragma once

#include <cstdint>
#include <vector>

#include "pictures/plot.h"
#include "utdata/samples.h"

namespace utdata::program {

/// The colours and sides of a scale of amplitudes.
[[nodiscard]] ColorScale AmplitudeColors(const CodeMeaning& meaning,
                                         const DataGroup& group,
                                         std::uint32_t gain);

/// dB marks between two amplitudes in percent, strongest first.
[[nodiscard]] std::vector<Tick> DecibelTicks(const DataGroup& group, double low, double high);

}  // namespace utdata::program
