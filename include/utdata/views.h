// Views of a data group as it lies in the part: true to scale, from the geometry of each beam.
//
// A sector scan shows the beams of a channel at one scan position side by side. Behind the first
// leg it is unfolded: beams stay straight, and the part is mirrored at each wall. Every pixel names
// the sample that it shows.
//
// A view is good while its inspection lives. Making one reads samples, and may run in several
// threads as long as no other thread changes the inspection. What cannot be shown as it is in the
// part is thrown as utdata::Error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "utdata/datagroup.h"
#include "utdata/geometry.h"

namespace utdata {

/// One beam of a sector scan at a scan position, from its own record.
struct SectorBeam {
  DataGroup group;            ///< of its A-scans
  double refractedAngle = 0;  ///< degrees
  double skew = 0;            ///< degrees, from 0 up to 360
  double index = 0;           ///< of its index point on the axis across, mm
  double direction = 0;       ///< its angle in the view: above 0 towards rising positions
  AxisScale halfPaths;        ///< mm at each sample
  double thickness = 0;       ///< of the part, mm; 0: not known
  double outsideRadius = 0;   ///< of a round part, mm; 0: the part is flat
  bool hasSamples = true;     ///< at this scan position
  bool isDamaged = false;     ///< its samples are, and it counts as one without
};

/// A sample of a sector scan: where it lies, and how strong it is.
struct SectorEcho {
  std::size_t beam = 0;  ///< index in SectorView::beams
  std::uint32_t sample = 0;
  double percent = 0;   ///< of full scale, negative for negative half waves
  double halfPath = 0;  ///< mm
  double across = 0;    ///< in the view, mm
  double down = 0;      ///< in the view, mm: unfolded
  BeamPoint point;      ///< in the part, mm, as its own beam passes it
};

/// A line over a sector scan, as (across, down) in mm.
struct SectorLine {
  enum class Kind { BackWall, Surface, Weld };
  struct Point {
    double across = 0;
    double down = 0;
  };
  Kind kind = Kind::BackWall;
  std::vector<Point> points;
  std::uint32_t leg = 0;  ///< that ends there, of a wall
};

struct SectorOptions {
  /// None: that of the strongest echo, of those of the column or row if one is given.
  std::optional<std::uint32_t> row = {};
  std::optional<std::uint32_t> column = {};
  /// Half paths between which the strongest echo is looked for, mm: the initial pulse is often
  /// stronger than any.
  double from = 0;
  double to = std::numeric_limits<double>::infinity();
  std::uint32_t widest = 880;   ///< pixels at the most
  std::uint32_t highest = 560;  ///< the same
};

/// What positions across a sector scan count from.
enum class SectorAcross {
  Columns,      ///< along the column axis, as that does
  Rows,         ///< along the row axis, as that does
  ScanPosition  ///< in the direction of the beams
};

/// Where the beams of a sector scan lie, and the pixels of its picture.
struct SectorLayout {
  std::uint32_t row = 0;  ///< the scan position
  std::uint32_t column = 0;
  std::vector<SectorBeam> beams;  ///< by the direction in which they lead
  SectorAcross acrossOf = SectorAcross::Columns;
  AxisScale across;                  ///< of the pixels, mm
  AxisScale down;                    ///< the same, as long; depth in the first leg
  std::vector<SectorLine> lines;     ///< walls, and the weld where the file describes one
  std::vector<std::string> remarks;  ///< what could not be shown as it should be, a line each

  /// Where a sample lies; its percent is not looked up. None before its beam enters the part, and
  /// behind the first leg of a round one. Throws when there is no such sample.
  [[nodiscard]] UTDATA_API std::optional<SectorEcho> PlaceOf(std::size_t beam,
                                                             std::uint32_t sample) const;
  /// The same with its percent; 0 where the beam has no samples.
  [[nodiscard]] UTDATA_API std::optional<SectorEcho> EchoOf(std::size_t beam,
                                                            std::uint32_t sample) const;
};

/// Which samples fall on which pixels, whatever they hold: for a host that shows one scan position
/// after the other.
struct SectorMap : SectorLayout {
  /// Samples of one beam on one pixel, which shows the strongest of all its stretches.
  struct Stretch {
    std::uint32_t pixel = 0;  ///< row by row
    std::uint32_t beam = 0;   ///< index in `beams`
    std::uint32_t first = 0;
    std::uint32_t last = 0;
  };

  std::vector<Stretch> stretches;  ///< by pixel
};

struct SectorView : SectorLayout {
  /// What a pixel shows.
  struct Source {
    static constexpr std::uint32_t nothing = ~std::uint32_t{0};

    std::uint32_t beam = nothing;  ///< index in `beams`; `nothing`: no beam sees this place
    std::uint32_t sample = 0;
  };

  /// Row by row. A pixel shows the strongest of the samples that fall on it, of the beams that are
  /// at most half a beam away.
  std::vector<Source> pixels;
  std::vector<float> percents;          ///< of full scale, of each pixel; NaN for nothing
  std::optional<SectorEcho> strongest;  ///< between the half paths that were asked for
};

/// The sector scan of the beams that a master gathers.
/// @param group the master, or one of its elements. Throws when it has no beams, they show no
///   A-scans, do not lie in one plane, all lead the same way, or have no sound speed.
[[nodiscard]] UTDATA_API SectorView MakeSector(const DataGroup& group,
                                               const SectorOptions& options = {},
                                               const Watch& watch = {});

/// The same without amplitudes, of the scan position that is given, or else of the first cell.
/// Reads no samples. Throws as MakeSector does.
[[nodiscard]] UTDATA_API SectorMap MakeSectorMap(const DataGroup& group,
                                                 const SectorOptions& options = {});

/// From where a part is looked at. The weld runs along the row axis, across the column axis.
enum class PartView {
  Top,   ///< rows over columns
  Side,  ///< depth over rows: along the weld
  End    ///< depth over columns: across the weld
};

struct ProjectionOptions {
  /// Half paths between which samples are shown, mm: behind the initial pulse.
  double from = 0;
  double to = std::numeric_limits<double>::infinity();
  std::uint32_t widest = 880;   ///< pixels at the most, along an axis that beams run along
  std::uint32_t highest = 560;  ///< the same
  /// Pixels at the most along an axis that no beam runs along: of more positions, several share a
  /// pixel.
  std::uint32_t mostCells = 20000;
};

/// A sample of a projection: where it was recorded, and where it lies in the part.
struct ProjectedEcho {
  std::size_t beam = 0;  ///< index in ProjectionView::beams
  std::uint32_t row = 0;
  std::uint32_t column = 0;
  std::uint32_t sample = 0;
  double percent = 0;   ///< of full scale, negative for negative half waves
  double halfPath = 0;  ///< mm
  ScanOffset place;     ///< on the scan axes, mm
  BeamPoint point;      ///< as its beam passes it, mm
};

/// Where a sample that a projection shows was recorded, and what is stored there.
struct ProjectedSample {
  std::uint64_t cell = 0;  ///< row x columns + column
  std::int32_t value = 0;  ///< corrected
};

/// The largest amplitudes of many beams, looked at along one of the part's axes.
struct ProjectionView {
  /// What a pixel shows: a sample of the beam, at a cell of a top view; of the others at one of the
  /// cells of a column (end view) or row (side view).
  struct Source {
    static constexpr std::uint32_t nothing = ~std::uint32_t{0};

    std::uint32_t beam = nothing;  ///< `nothing`: no sample lies there
    std::uint32_t sample = 0;
    std::uint64_t cells = 0;  ///< the cell; the column; the row
  };

  PartView view = PartView::Top;
  std::vector<DataGroup> beams;
  AxisScale across;             ///< of the pixels, mm
  AxisScale down;               ///< the same
  std::vector<Source> pixels;   ///< row by row
  std::vector<float> percents;  ///< of full scale, of each pixel; NaN for nothing
  std::vector<std::vector<SectorLine::Point>> weld;  ///< its outline in an end view
  std::vector<std::string> remarks;  ///< what could not be shown as it should be, a line each

  /// What a pixel shows; none for nothing. Reads samples.
  [[nodiscard]] UTDATA_API std::optional<ProjectedEcho> EchoAt(std::size_t pixel) const;
  /// The cell and value of each pixel's sample; those of pixels that show nothing mean nothing.
  /// Reads each sample once that is looked through.
  [[nodiscard]] UTDATA_API std::vector<ProjectedSample> Trace(const Watch& watch = {}) const;
  /// Where each sample of a beam lies at the cell of row 0 and column 0, without amplitude; the
  /// steps of the scan axes lead to other cells. None where the beam is not in the part. Throws
  /// when there is no such beam.
  [[nodiscard]] UTDATA_API std::vector<std::optional<ProjectedEcho>> PlacesOf(
      std::size_t beam) const;
  /// What the first of the strongest pixels shows.
  [[nodiscard]] UTDATA_API std::optional<ProjectedEcho> Strongest() const;
};

/// Projects the A-scans of some data groups; a master stands for its elements. Each beam lies
/// where its own record has it. Throws when a scan axis is not in millimetres, a beam cannot be
/// placed, or none is left: TOFD data have no beams, and are left out.
[[nodiscard]] UTDATA_API ProjectionView MakeProjection(const std::vector<DataGroup>& groups,
                                                       PartView view,
                                                       const ProjectionOptions& options = {},
                                                       const Watch& watch = {});

/// Where the depths of time-of-flight diffraction data lie on their samples.
struct TofdScale {
  double lateralWave = 0;          ///< sample index at which it arrives
  std::optional<double> backWall;  ///< sample index; none where the thickness is not known
  std::vector<double> depths;      ///< mm at each sample; NaN before the lateral wave

  /// The sample index of a depth in mm; none outside the samples.
  [[nodiscard]] UTDATA_API std::optional<double> SampleAt(double depth) const;
};

/// Through the unit of the data group's item. None for data of another kind, and where what the
/// depths follow from is not known (WhyNoTofdScale).
[[nodiscard]] UTDATA_API std::optional<TofdScale> TofdScaleOf(const DataGroup& group);

/// Why a data group has no TofdScale, in a few words: it is of another kind, its samples do not
/// count time, sound speed, probe separation or, of a round part, the radius is not known or cannot
/// be. What loading puts in place of a value that is missing is not known. Empty: it has one.
[[nodiscard]] UTDATA_API std::string WhyNoTofdScale(const DataGroup& group);

/// By how many samples each A-scan of some cells is to be moved to larger indices, so that the peak
/// of its lateral wave lies where the separation of the probes has it. The wave is found by what is
/// alike in the A-scans around that place. Throws for data without a TofdScale, and where the place
/// is not within the samples.
[[nodiscard]] UTDATA_API std::vector<std::int32_t> StraighteningShifts(const DataGroup& group,
                                                                       const CellRange& cells);

/// The outline of a weld's preparation and caps, as lines of (across, depth) in mm; across counts
/// as the column axis does. Empty where there is nothing to be drawn.
/// @param thickness of the part, mm; 0: the weld's own
[[nodiscard]] UTDATA_API std::vector<std::vector<SectorLine::Point>> WeldOutline(
    const CGWeldTypeDescr& weld,
    double thickness = 0);

}  // namespace utdata
