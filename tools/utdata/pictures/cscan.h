// C-scans: one colour a cell, rows over columns, as a plot.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "pictures/captions.h"
#include "pictures/plot.h"
#include "utdata/samples.h"

namespace utdata::program {

struct CScanOptions {
  std::optional<std::uint32_t>
      gain;  ///< soft gain, a whole factor from 1; none: as much as the largest value allows
  PathLimits limits;   ///< of A-scans
  bool quiet = false;  ///< shows no progress
};

/// What a C-scan shows, beside the picture of it.
struct CScan {
  ImagePlot plot;
  std::uint32_t row = 0;     ///< of the strongest cell; of positions, of the farthest
  std::uint32_t column = 0;  ///< the same
  std::uint32_t sample = 0;  ///< of the strongest echo in A-scans
  double value = 0;  ///< percent of full scale, or the position in the unit of the colour bar
  std::uint32_t gain = 1;
  std::uint64_t damagedCells = 0;  ///< striped in the picture
};

/// REQUIRES: the group is of class 1, of which the largest amplitude of each cell is shown, or 2 or
/// 3, whose values are. Throws Error or Failure when its samples cannot be shown.
[[nodiscard]] CScan MakeCScan(const DataGroup& group, const CScanOptions& options);

}  // namespace utdata::program
