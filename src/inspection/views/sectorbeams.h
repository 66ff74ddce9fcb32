// The beams of a sector scan, and the rays along which they run in the view.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "utdata/views.h"

namespace utdata {

inline constexpr double millimetre = 1000;  // of metres

/// A straight line in the view, mm: from the index point downwards.
struct SectorRay {
  double across = 0;
  double down = 0;
  double angle = 0;  ///< radians from the depth axis towards rising positions

  [[nodiscard]] SectorLine::Point At(double path) const;
};

struct SectorBeams {
  std::vector<SectorBeam> beams;  ///< by angle and index point of their rays
  SectorAcross acrossOf = SectorAcross::Columns;
};

/// A beam as its own record has it, without its place. Throws when something is missing that places
/// its samples.
[[nodiscard]] SectorBeam BeamOf(const DataGroup& group);

/// Its index point beside the place of a cell, along the scan axes, mm.
[[nodiscard]] ScanOffset IndexOffsetOf(const DataGroup& group);

/// Where a half path of it leads. None before the index point, and behind the first leg of a round
/// part.
[[nodiscard]] std::optional<BeamPoint> PointOf(const SectorBeam& beam, double halfPath);

/// The elements of a group's master that hold A-scans. Throws when there are fewer than two.
[[nodiscard]] std::vector<DataGroup> BeamGroupsOf(const DataGroup& group);

/// Throws when they do not lie in one plane, or something is missing that places them.
[[nodiscard]] SectorBeams PlaceBeams(const std::vector<DataGroup>& groups,
                                     std::uint32_t row,
                                     std::uint32_t column);

[[nodiscard]] SectorRay RayOf(const SectorBeam& beam);

/// The half path up to which a beam is followed, mm: to its last sample, in a round part to the end
/// of its first leg.
[[nodiscard]] double LastPath(const SectorBeam& beam);

/// The stretch of a view that a beam fills: between two rays, at most half a beam beside it.
struct SectorWedge {
  SectorRay left;
  SectorRay middle;
  SectorRay right;
};

/// One for each beam. Throws when all lead the same way, or so many that they cannot be told apart.
/// @param remarks gets a line about beams that cover each other
[[nodiscard]] std::vector<SectorWedge> WedgesOf(const std::vector<SectorBeam>& beams,
                                                std::vector<std::string>& remarks);

/// Walls and weld over a view, within its axes.
[[nodiscard]] std::vector<SectorLine> LinesOver(const SectorLayout& view,
                                                std::vector<std::string>& remarks);

}  // namespace utdata
