// Top, side and end views. What is looked through is reduced first, at the speed of memory: rows of
// an end view and columns of a side view sample by sample, stretches of A-scans that fall on one
// pixel of a top view. Only what is left is put into pixels.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <type_traits>

#include "src/inspection/state.h"
#include "src/inspection/views/groupedextremes.h"
#include "src/inspection/views/partaxes.h"
#include "src/inspection/views/sectorbeams.h"
#include "utdata/failure.h"
#include "utdata/fcont.h"
#include "utdata/samples.h"

namespace utdata {
namespace {

/// Points of a lattice at any angle to the pixels that fall on the side of one, so that each pixel
/// has a point: more than the diagonal of a square.
constexpr double pointsOfPixel = 1.5;

/// One beam: where its samples lie from the place of a cell.
struct ProjectedBeam {
  explicit ProjectedBeam(const DataGroup& group)
      : beam(BeamOf(group)),
        index(IndexOffsetOf(group)),
        columns(InMillimetres(group, group.Columns(), "columns")),
        rows(InMillimetres(group, group.Rows(), "rows")) {}

  SectorBeam beam;
  ScanOffset index;         ///< of its index point, mm
  AxisScale columns;        ///< mm
  AxisScale rows;           ///< mm
  std::uint32_t first = 0;  ///< samples that are shown
  std::uint32_t end = 0;
  std::vector<ScanOffset> offsets;  ///< of each of these from its cell, mm
  std::vector<double> depths;       ///< of each of these, mm
  double halfTurn = 0;              ///< to the next beam, degrees
};

ProjectedBeam PlaceProjected(const DataGroup& group, const ProjectionOptions& options) {
  (void)group.Samples();  // throws when there are none to be shown
  ProjectedBeam placed(group);
  const AxisScale& paths = placed.beam.halfPaths;
  for (std::uint32_t sample = 0; sample < paths.quantity; ++sample) {
    const double path = paths.At(sample);
    const std::optional<BeamPoint> point =
        path >= options.from && path <= options.to ? PointOf(placed.beam, path) : std::nullopt;
    if (!point && placed.offsets.empty()) {
      placed.first = sample + 1;
      continue;
    }
    if (!point) break;
    const ScanOffset away = TurnedBySkew(point->distance, placed.beam.skew);
    placed.offsets.push_back({placed.index.column + away.column, placed.index.row + away.row});
    placed.depths.push_back(point->depth);
  }
  placed.end = placed.first + static_cast<std::uint32_t>(placed.offsets.size());
  return placed;
}

/// Half of the usual angle from beam to beam of one channel.
void SetHalfTurns(std::vector<ProjectedBeam>& beams) {
  for (ProjectedBeam& placed : beams) {
    double nearest = std::numeric_limits<double>::infinity();
    for (const ProjectedBeam& other : beams) {
      const double turn = std::abs(other.beam.refractedAngle - placed.beam.refractedAngle);
      const bool isSibling = other.beam.group.Descriptor().GetChannelID() ==
                             placed.beam.group.Descriptor().GetChannelID();
      if (isSibling && turn > 1e-3) nearest = std::min(nearest, turn);
    }
    if (std::isfinite(nearest)) placed.halfTurn = nearest / 2;
  }
}

std::vector<ProjectedBeam> BeamsToProject(const std::vector<DataGroup>& groups,
                                          const ProjectionOptions& options,
                                          std::vector<std::string>& remarks) {
  std::vector<ProjectedBeam> beams;
  std::size_t tofd = 0;
  const auto add = [&](const DataGroup& group) {
    if (group.IsTofd())
      ++tofd;
    else if (group.HasAScans())
      beams.push_back(PlaceProjected(group, options));
  };
  for (const DataGroup& group : groups) {
    if (!group.IsMaster()) add(group);
    for (const DataGroup& element : group.Elements()) add(element);
  }
  if (tofd > 0)
    remarks.push_back("Data of time-of-flight diffraction have no beams, and are left out (" +
                      std::to_string(tofd) + (tofd == 1 ? " data group)" : " data groups)"));
  if (beams.empty())
    throw Error(groups.empty() ? "" : groups.front().Name(), notProjected, "no beam is left");
  if (std::all_of(
          beams.begin(), beams.end(), [](const auto& beam) { return beam.first == beam.end; }))
    throw Error(groups.front().Name(), notProjected, "no sample lies between these half paths");
  SetHalfTurns(beams);
  return beams;
}

/// What one axis of the part holds.
struct AxisExtent {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
  double step = 0;      ///< from cell to cell, the smallest
  double reach = 0;     ///< of the beams along it
  double pathStep = 0;  ///< the largest of the samples
};

AxisExtent ExtentOfScan(const std::vector<ProjectedBeam>& beams,
                        double ScanOffset::*along,
                        AxisScale ProjectedBeam::*axis) {
  AxisExtent extent;
  for (const ProjectedBeam& beam : beams) {
    if (beam.offsets.empty()) continue;
    const AxisScale& cells = beam.*axis;
    const auto [least, most] = std::minmax_element(
        beam.offsets.begin(), beam.offsets.end(), [&](const ScanOffset& a, const ScanOffset& b) {
          return a.*along < b.*along;
        });
    const double step = std::abs(cells.step);
    const auto [begin, end] = std::minmax({cells.At(0), cells.At(cells.quantity - 1.0)});
    extent.low = std::min(extent.low, begin + (*least).*along - step / 2);
    extent.high = std::max(extent.high, end + (*most).*along + step / 2);
    extent.step = extent.step == 0 ? step : std::min(extent.step, step);
    extent.reach = std::max(extent.reach, (*most).*along - (*least).*along);
    extent.pathStep = std::max(extent.pathStep, beam.beam.halfPaths.step);
  }
  return extent;
}

AxisExtent ExtentOfDepth(const std::vector<ProjectedBeam>& beams) {
  AxisExtent extent{.low = 0, .high = 0};
  for (const ProjectedBeam& beam : beams) {
    const double deepest =
        beam.depths.empty() ? 0 : *std::max_element(beam.depths.begin(), beam.depths.end());
    extent.high = std::max({extent.high, deepest, beam.beam.thickness});
    extent.pathStep = std::max(extent.pathStep, beam.beam.halfPaths.step);
  }
  extent.reach = extent.high;
  return extent;
}

/// Where beams run along an axis its pixels are as fine as the picture allows, but have room for
/// some samples; else a pixel is a cell.
AxisScale PixelsOf(const AxisExtent& extent,
                   std::uint32_t most,
                   std::uint32_t mostCells,
                   double samplesOfPixel) {
  const double length = extent.high - extent.low;
  const bool isAlongBeams = extent.reach > extent.step / 2;
  const double pixel = isAlongBeams
                           ? std::max(length / std::max(most, 1U), samplesOfPixel * extent.pathStep)
                           : std::max(extent.step, length / std::max(mostCells, 1U));
  if (!(pixel > 0) || !std::isfinite(length))
    throw Error("", notProjected, "the axes of the part have no extent");
  const double quantity = std::max(1.0, std::ceil(length / pixel - 1e-6));
  return {"mm", extent.low + pixel / 2, pixel, static_cast<std::uint32_t>(quantity)};
}

/// Some pixels of a row, `begin` to before `end`.
struct PixelRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};

/// Pixels of a view, and the strongest sample that falls on each.
class ProjectionPainter {
 public:
  explicit ProjectionPainter(ProjectionView& view)
      : m_view(view),
        m_width(view.across.quantity),
        m_height(view.down.quantity),
        m_acrossStep(view.view == PartView::Top ? 1 : m_height),
        m_downStep(view.view == PartView::Top ? m_width : 1),
        m_percents(m_width * m_height, std::numeric_limits<float>::quiet_NaN()),
        m_sources(m_width * m_height) {}

  /// The pixels of a row whose middles lie between two edges, or else that in the middle of these.
  /// @param left, right in pixels, from the outer edge of the first
  [[nodiscard]] PixelRange PixelsBetween(double left, double right) const {
    double first = std::ceil(left - 0.5), last = std::ceil(right - 0.5) - 1;
    if (first > last) first = last = std::floor((left + right) / 2);
    const auto width = static_cast<double>(m_width);
    if (!(last >= 0 && first < width)) return {};
    return {static_cast<std::size_t>(std::max(first, 0.0)),
            static_cast<std::size_t>(std::min(last, width - 1)) + 1};
  }
  /// The one pixel of a row in which a place lies; none outside.
  [[nodiscard]] PixelRange PixelAt(double place) const {
    if (!(place >= 0 && place < static_cast<double>(m_width))) return {};
    return {static_cast<std::size_t>(place), static_cast<std::size_t>(place) + 1};
  }
  /// Where an amplitude is the strongest so far, `sourceOf` gives what is shown, and whether it is
  /// below zero.
  /// @param amplitude percent of full scale, without sign
  template <class SourceOf>
  void Put(const PixelRange& pixels, std::size_t row, float amplitude, const SourceOf& sourceOf) {
    for (std::size_t x = pixels.begin; x < pixels.end; ++x) {
      const std::size_t at = x * m_acrossStep + row * m_downStep;
      if (std::abs(m_percents[at]) >= amplitude) continue;  // never of one that shows nothing
      bool isNegative = false;
      m_sources[at] = sourceOf(isNegative);
      m_percents[at] = isNegative ? -amplitude : amplitude;
    }
  }
  /// Gives the pixels to the view, row by row.
  void Finish() {
    m_view.pixels.reserve(m_sources.size());
    m_view.percents.reserve(m_percents.size());
    for (std::size_t row = 0; row < m_height; ++row)
      for (std::size_t x = 0; x < m_width; ++x) {
        const std::size_t at = x * m_acrossStep + row * m_downStep;
        m_view.pixels.push_back(m_sources[at]);
        m_view.percents.push_back(m_percents[at]);
      }
  }

 private:
  ProjectionView& m_view;
  std::size_t m_width;
  std::size_t m_height;
  // What is painted after each other lies near each other: samples of a top view along a row, those
  // of the others along a column.
  std::size_t m_acrossStep;
  std::size_t m_downStep;
  std::vector<float> m_percents;
  std::vector<ProjectionView::Source> m_sources;
};

/// A value on an axis in pixels, from the outer edge of the first.
double InPixels(const AxisScale& axis, double value) { return axis.IndexOf(value) + 0.5; }

/// As many samples of a beam together as none is farther from the first than the farthest.
/// @param distance from one sample to another in the view, in pixels
template <class Distance>
GroupSize GroupSizeOf(const ProjectedBeam& placed, const Distance& distance, double farthest) {
  constexpr GroupSize largestGroup = 64;
  const auto fits = [&](GroupSize size) {
    for (std::size_t sample = 0; sample < placed.offsets.size(); ++sample)
      if (distance(sample - sample % size, sample) > farthest) return false;
    return true;
  };
  GroupSize size = largestGroup;
  while (size > 1 && !fits(size)) size /= 2;
  return size;
}

/// Cells that a view looks through: each line of them becomes one.
struct CellLines {
  std::uint64_t quantity = 0;   ///< of lines
  std::uint64_t step = 0;       ///< from the first cell of a line to that of the next
  std::uint64_t cells = 0;      ///< of a line
  std::uint64_t cellsStep = 0;  ///< from one cell of a line to the next
};

/// Called with the bytes of a beam that were read.
using Progress = std::function<void(std::uint64_t bytes)>;

/// Calls `paint(line, extremes)` of each line of a beam that has samples.
template <class Paint>
void ReadLines(const ProjectedBeam& placed,
               const CellLines& lines,
               GroupSize groupSize,
               const Progress& progress,
               const Paint& paint) {
  const DataGroup& group = placed.beam.group;
  const CellTable& table = DataGroupInside::Cells(group);
  const std::size_t shown = placed.offsets.size();
  if (shown == 0) return;  // of this beam alone: no sample lies between the half paths
  WithValues(group.Descriptor(), [&](const auto& values) {
    using Values = std::remove_cvref_t<decltype(values)>;
    using Raw = typename Values::Raw;
    // Lines that lie beside each other are taken a few at a time, so that what is kept of them
    // stays in the cache while the cells are read in their order.
    constexpr std::size_t cache = std::size_t{256} << 10U;
    const bool areBeside = lines.step < lines.cellsStep;
    const std::uint64_t together =
        areBeside ? std::max<std::uint64_t>(1, cache / (2 * shown * sizeof(Raw) + 1)) : 1;
    std::vector<GroupedExtremes<Values>> kept(
        std::min(together, lines.quantity),
        GroupedExtremes<Values>(values, group, shown, groupSize));
    for (std::uint64_t first = 0; first < lines.quantity; first += kept.size()) {
      const std::uint64_t count = std::min<std::uint64_t>(kept.size(), lines.quantity - first);
      for (std::uint64_t cell = 0; cell < lines.cells; ++cell)
        for (std::uint64_t line = 0; line < count; ++line) {
          const std::byte* samples =
              table.Cell((first + line) * lines.step + cell * lines.cellsStep);
          if (samples) kept[line].Take(reinterpret_cast<const Raw*>(samples) + placed.first);
        }
      for (std::uint64_t line = 0; line < count; ++line) {
        if (!kept[line].IsEmpty()) paint(first + line, kept[line]);
        kept[line].Clear();
      }
      progress(count * lines.cells * table.VectorBytes());
    }
    return true;
  });
}

/// Where a group of samples goes in an end or side view, from the place of its line.
struct LinePlace {
  std::size_t group = 0;
  double left = 0;  ///< in pixels
  double right = 0;
  std::size_t row = 0;  ///< of the pixels
};

/// Cells of a scan are as wide as the step to the next.
std::vector<LinePlace> PlacesOfCells(const ProjectedBeam& placed,
                                     double ScanOffset::*along,
                                     const AxisScale& cells,
                                     const ProjectionView& view,
                                     GroupSize size) {
  const double halfWidth = std::abs(cells.step / view.across.step) / 2;
  const double edge = InPixels(view.across, 0);
  std::vector<LinePlace> places;
  for (std::size_t begin = 0; begin < placed.offsets.size(); begin += size) {
    const std::size_t last = std::min(begin + size, placed.offsets.size()) - 1;
    const double middle = (placed.offsets[begin].*along + placed.offsets[last].*along) / 2;
    const double depth = (placed.depths[begin] + placed.depths[last]) / 2;
    const double across = edge + middle / view.across.step;
    const double row = std::clamp(InPixels(view.down, depth), 0.0, view.down.quantity - 1.0);
    places.push_back(
        {begin / size, across - halfWidth, across + halfWidth, static_cast<std::size_t>(row)});
  }
  return places;
}

/// Where there is one scan position, beams are as wide as the angle to the next.
std::vector<LinePlace> PlacesOfFan(const ProjectedBeam& placed,
                                   double ScanOffset::*along,
                                   const ProjectionView& view) {
  std::vector<LinePlace> places;
  const double edge = InPixels(view.across, 0);
  SectorBeam turned = placed.beam;
  for (std::size_t sample = 0; sample < placed.offsets.size(); ++sample) {
    const double path = turned.halfPaths.At(static_cast<double>(placed.first + sample));
    const double width = path * placed.halfTurn * 2 * std::numbers::pi / 180;
    const int steps =
        static_cast<int>(std::min(std::ceil(pointsOfPixel * width / view.across.step), 1000.0)) | 1;
    for (int step = 0; step < steps; ++step) {
      const double part = (2.0 * step + 1) / steps - 1;  // of the half width, to either side
      turned.refractedAngle =
          std::clamp(placed.beam.refractedAngle + part * placed.halfTurn, -89.9, 89.9);
      const auto point = PointOf(turned, path);
      if (!point) continue;
      const ScanOffset away = TurnedBySkew(point->distance, turned.skew);
      const double across = edge + (placed.index.*along + away.*along) / view.across.step;
      const double row = InPixels(view.down, std::max(point->depth, 0.0));
      if (row < view.down.quantity)
        places.push_back({sample, across, across, static_cast<std::size_t>(row)});
    }
  }
  return places;
}

/// An end or side view of one beam: the cells of each column or row, which are looked through, are
/// reduced.
void PaintLines(ProjectionPainter& painter,
                const ProjectionView& view,
                const ProjectedBeam& placed,
                std::uint32_t beam,
                const Progress& progress) {
  const std::uint64_t columns = placed.columns.quantity, rows = placed.rows.quantity;
  const bool isEnd = view.view == PartView::End;
  const AxisScale& scan = isEnd ? placed.columns : placed.rows;
  double ScanOffset::*const along = isEnd ? &ScanOffset::column : &ScanOffset::row;
  const auto distance = [&](std::size_t from, std::size_t to) {
    return std::max(
        std::abs(placed.offsets[to].*along - placed.offsets[from].*along) / view.across.step,
        std::abs(placed.depths[to] - placed.depths[from]) / view.down.step);
  };
  const bool isScanned = scan.quantity > 1;
  const GroupSize size = isScanned ? GroupSizeOf(placed, distance, 0.5) : 1;
  const std::vector<LinePlace> places =
      isScanned ? PlacesOfCells(placed, along, scan, view, size) : PlacesOfFan(placed, along, view);
  const CellLines lines =
      isEnd ? CellLines{columns, 1, rows, columns} : CellLines{rows, columns, columns, 1};
  ReadLines(placed, lines, size, progress, [&](std::uint64_t line, auto& samples) {
    const std::vector<float>& amplitudes = samples.Amplitudes();
    const double place = scan.At(static_cast<double>(line)) / view.across.step;
    PixelRange across;
    double left = std::numeric_limits<double>::quiet_NaN();
    for (const LinePlace& to : places) {
      if (to.left != left) {  // it seldom is, where beams do not run along the line
        left = to.left;
        across = painter.PixelsBetween(place + left, place + to.right);
      }
      painter.Put(across, to.row, amplitudes[to.group], [&](bool& isNegative) {
        return ProjectionView::Source{
            beam, placed.first + samples.StrongestOf(to.group, isNegative), line};
      });
    }
  });
}

void PaintTop(ProjectionPainter& painter,
              const ProjectionView& view,
              const ProjectedBeam& placed,
              std::uint32_t beam,
              const Progress& progress) {
  const auto distance = [&](std::size_t from, std::size_t to) {
    const ScanOffset &one = placed.offsets[from], &other = placed.offsets[to];
    return std::max(std::abs(other.column - one.column) / view.across.step,
                    std::abs(other.row - one.row) / view.down.step);
  };
  const GroupSize size = GroupSizeOf(placed, distance, 1);
  std::vector<ScanOffset> places;  // of the groups from their cell, in pixels
  for (std::size_t begin = 0; begin < placed.offsets.size(); begin += size) {
    const ScanOffset& middle =
        placed.offsets[std::min(begin + size / 2, placed.offsets.size() - 1)];
    places.push_back({middle.column / view.across.step, middle.row / view.down.step});
  }
  const std::uint64_t columns = placed.columns.quantity, rows = placed.rows.quantity;
  const CellLines cells = {rows * columns, 1, 1, 1};
  ReadLines(placed, cells, size, progress, [&](std::uint64_t cell, auto& samples) {
    const std::vector<float>& amplitudes = samples.Amplitudes();
    const double across =
        InPixels(view.across, placed.columns.At(static_cast<double>(cell % columns)));
    const double down = InPixels(view.down, placed.rows.At(static_cast<double>(cell / columns)));
    for (std::size_t group = 0; group < places.size(); ++group) {
      const double row = down + places[group].row;
      if (!(row >= 0 && row < view.down.quantity)) continue;
      painter.Put(painter.PixelAt(across + places[group].column),
                  static_cast<std::size_t>(row),
                  amplitudes[group],
                  [&](bool& isNegative) {
                    return ProjectionView::Source{
                        beam, placed.first + samples.StrongestOf(group, isNegative), cell};
                  });
    }
  });
}

}  // namespace

ProjectionView MakeProjection(const std::vector<DataGroup>& groups,
                              PartView wanted,
                              const ProjectionOptions& options,
                              const Watch& watch) {
  ProjectionView view;
  view.view = wanted;
  const std::vector<ProjectedBeam> beams = BeamsToProject(groups, options, view.remarks);
  const bool isTop = wanted == PartView::Top;
  const AxisExtent columns = ExtentOfScan(beams, &ScanOffset::column, &ProjectedBeam::columns);
  const AxisExtent rows = ExtentOfScan(beams, &ScanOffset::row, &ProjectedBeam::rows);
  // Samples of a top view are taken in stretches; those of the others lie at any angle to the
  // pixels.
  const double samplesOfPixel = isTop ? 8 : pointsOfPixel;
  view.across = PixelsOf(
      wanted == PartView::Side ? rows : columns, options.widest, options.mostCells, samplesOfPixel);
  view.down = PixelsOf(
      isTop ? rows : ExtentOfDepth(beams), options.highest, options.mostCells, samplesOfPixel);
  ProjectionPainter painter(view);
  std::uint64_t done = 0, total = 0;
  for (const ProjectedBeam& beam : beams)
    total +=
        beam.beam.group.AllCells().count * DataGroupInside::Cells(beam.beam.group).VectorBytes();
  const Progress progress = [&](std::uint64_t bytes) {
    done += bytes;
    if (watch) watch("projecting beams", std::min(done, total), total);
  };
  bool isUnknown = false;
  for (std::uint32_t beam = 0; beam < beams.size(); ++beam) {
    view.beams.push_back(beams[beam].beam.group);
    isUnknown |= beams[beam].beam.thickness == 0;
    (isTop ? PaintTop : PaintLines)(painter, view, beams[beam], beam, progress);
  }
  painter.Finish();
  if (wanted == PartView::End)
    for (const CGWeldTypeDescr* weld : DataGroupInside::State(view.beams.front()).descriptor->welds)
      for (std::vector<SectorLine::Point>& line : WeldOutline(*weld, beams.front().beam.thickness))
        view.weld.push_back(std::move(line));
  if (isUnknown)
    view.remarks.emplace_back(
        "The thickness is not known of every beam: all of its echoes are in the first leg");
  return view;
}

}  // namespace utdata
