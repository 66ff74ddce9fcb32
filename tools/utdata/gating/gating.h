// What a gate sees in the A-scans of a data group.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "interfaces/kvtiff19.h"
#include "samples/cell_table.h"

namespace utdata::program {

/// The samples of an A-scan that a gate covers.
struct GateWindow {
  std::uint32_t first = 0;
  std::uint32_t quantity = 0;
  bool isCut = false;  ///< the gate reaches beyond the A-scan
};

/// What the gate sees in each cell, in row-major order.
struct GatedCells {
  std::vector<std::uint16_t> amplitudes;  ///< largest absolute value in the window
  std::vector<std::uint16_t> positions;   ///< index in the A-scan of the first sample of that
                                          ///< amplitude; 0 below the threshold
};

/// Sample indices that a position can tell: an A-scan may be longer, a gate's end may not lie
/// beyond.
inline constexpr std::uint32_t positionEnd = 65536;

/// Round(width / sample step) samples from sample round((start - sample offset) / sample step), cut
/// to those that there are.
/// @param start s
/// @param width s
[[nodiscard]] GateWindow WindowOf(const CGDataTypeFDD& ascans, double start, double width);

/// The amplitude that is 100 %: the larger magnitude of the range of the samples.
[[nodiscard]] double FullScale(const CGDataTypeFDD& ascans);

/// Gates every A-scan of a data group, its samples corrected for byte order, compression and
/// offset. A cell without samples has amplitude and position 0. Shows progress on long work and
/// throws Interrupted.
/// @param ascans    as a data item takes it, unrectified samples being signed; of one of the four
///   sample types
/// @param cells     of the group
/// @param window    not beyond positionEnd
/// @param threshold percent of full scale
/// @param quiet     shows no progress
[[nodiscard]] GatedCells GateAScans(const CGDataTypeFDD& ascans,
                                    const CellTable& cells,
                                    GateWindow window,
                                    double threshold,
                                    bool quiet);

}  // namespace utdata::program
