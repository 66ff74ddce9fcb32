// A-scans: the samples of one cell as a curve, with the gates of its channel.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "pictures/captions.h"
#include "pictures/line_plot.h"
#include "utdata/samples.h"

namespace utdata::program {

struct AScanOptions {
  std::optional<std::uint32_t>
      row;  ///< none: that of the strongest cell, of those of the column if one is given
  std::optional<std::uint32_t>
      column;  ///< none: that of the strongest cell, of those of the row if one is given
  std::optional<std::uint32_t> gain;  ///< soft gain, a whole factor from 1; none: as much as the
                                      ///< echo and the levels of the gates allow
  SampleAxis samples = SampleAxis::Time;
  PathLimits limits;
  bool quiet = false;  ///< shows no progress
  /// The strongest echo is that which lies highest over the channel's DAC curve.
  bool relativeToDac = false;
};

/// What an A-scan shows, beside the picture of it.
struct AScan {
  LinePlot plot;
  std::uint32_t row = 0;
  std::uint32_t column = 0;
  std::uint32_t sample = 0;             ///< of the strongest echo
  double percent = 0;                   ///< of full scale, of that echo, negative below zero
  std::optional<double> decibelsToDac;  ///< of that echo; none without a DAC curve, and outside it
  std::uint32_t gain = 1;
  std::uint64_t damagedCells =
      0;  ///< 1 when the A-scan itself is damaged, and shown without samples
};

/// REQUIRES: the group is of class 1. Throws Error or Failure when its samples
/// cannot be shown, the cell is not there, or a path or the DAC curve is wanted and not known.
[[nodiscard]] AScan MakeAScan(const DataGroup& group, const AScanOptions& options);

}  // namespace utdata::program
