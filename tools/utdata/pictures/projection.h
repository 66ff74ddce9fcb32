// Top, side and end views: the largest amplitudes of many beams in the part, as plots.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "pictures/captions.h"
#include "pictures/plot.h"
#include "utdata/views.h"

namespace utdata::program {

struct ProjectionPlotOptions {
  PathLimits limits;                  ///< between which samples are shown
  std::optional<std::uint32_t> gain;  ///< soft gain, a whole factor from 1; none: as much as the
                                      ///< strongest echo allows
  bool quiet = false;                 ///< shows no progress
};

/// What a projection shows, beside the picture of it.
struct Projection {
  ImagePlot plot;
  ProjectionView view;
  std::optional<ProjectedEcho> strongest;
  std::uint32_t gain = 1;
};

/// Throws Error when the data groups cannot be shown in the part.
[[nodiscard]] Projection MakeProjectionPlot(const std::vector<DataGroup>& groups,
                                            PartView wanted,
                                            const ProjectionPlotOptions& options);

}  // namespace utdata::program
