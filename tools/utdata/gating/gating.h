// What a gate sees in the A-scans of a data group.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "interfaces/kvtiff19.h"

namespace utdata::program {

/// The samples of an A-scan that a gate covers.
struct GateWindow {
  std::uint32_t first = 0;
  std::uint32_t quantity = 0;
};

/// Round(width / sample step) samples from sample round((start - sample offset) / sample step), cut to those that there are.
/// @param start s
/// @param width s
[[nodiscard]] GateWindow WindowOf(const CGDataTypeFDD& ascans, double start, double width);

/// The largest absolute value in the window, for each cell in row-major order.
/// @param samples the group's table, cell by cell, of one of the four sample types
[[nodiscard]] std::vector<std::uint16_t> GateAmplitudes(const CGDataTypeFDD& ascans,
                                                        const std::byte* samples,
                                                        GateWindow window);

}  // namespace utdata::program
