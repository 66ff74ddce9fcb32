// Sector scans: the beams of a channel at one scan position, true to scale, as a plot.
#pragma once

#include <cstdint>
#include <optional>

#include "pictures/captions.h"
#include "pictures/plot.h"
#include "utdata/views.h"

namespace utdata::program {

struct SectorPlotOptions {
  std::optional<std::uint32_t> row;     ///< none: that of the strongest cell
  std::optional<std::uint32_t> column;  ///< the same
  PathLimits limits;                    ///< between which the strongest echo is looked for
  std::optional<std::uint32_t> gain;    ///< soft gain, a whole factor from 1; none: as much as the
                                        ///< strongest echo allows
  bool quiet = false;                   ///< shows no progress
};

/// What a sector scan shows, beside the picture of it.
struct Sector {
  ImagePlot plot;
  SectorView view;
  std::uint32_t gain = 1;
  std::uint64_t damagedCells = 0;  ///< beams, striped in the picture
};

/// @param group a master or one of its elements. Throws Error when its beams make no sector.
[[nodiscard]] Sector MakeSectorPlot(const DataGroup& group, const SectorPlotOptions& options);

}  // namespace utdata::program
