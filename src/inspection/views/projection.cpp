// Top, side and end views. What is looked through is reduced first, at the speed of memory: rows of
// an end view and columns of a side view sample by sample, stretches of A-scans that fall on one
// pixel of a top view. Only what is left is put into pixels.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <span>
#include <type_traits>

#include "src/inspection/amplitudes.h"
#include "src/inspection/state.h"
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
    remarks.push_back(std::to_string(tofd) +
                      " data groups of time-of-flight diffraction have no "
                      "beams, and are left out");
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

/// Pixels of a view, and the strongest sample that falls on each.
class ProjectionPainter {
 public:
  explicit ProjectionPainter(ProjectionView& view) : m_view(view) {
    const std::size_t pixels = std::size_t{view.across.quantity} * view.down.quantity;
    view.pixels.assign(pixels, {});
    view.percents.assign(pixels, std::numeric_limits<float>::quiet_NaN());
  }

  static constexpr std::size_t outside = ~std::size_t{0};

  /// @param across, down in pixels, from the outer edges of the first
  [[nodiscard]] std::size_t PixelAt(double across, double down) const {
    const bool isInside = across >= 0 && across < m_width && down >= 0 && down < m_height;
    return isInside ? static_cast<std::size_t>(down) * m_view.across.quantity +
                          static_cast<std::size_t>(across)
                    : outside;
  }
  [[nodiscard]] bool IsStronger(std::size_t pixel, float percent) const {
    return !(std::abs(m_view.percents[pixel]) >= std::abs(percent));  // true for nothing
  }
  void Put(std::size_t pixel, float percent, const ProjectionView::Source& source) {
    if (!IsStronger(pixel, percent)) return;
    m_view.percents[pixel] = percent;
    m_view.pixels[pixel] = source;
  }

 private:
  ProjectionView& m_view;
  double m_width = m_view.across.quantity;
  double m_height = m_view.down.quantity;
};

/// A value on an axis in pixels, from the outer edge of the first.
double InPixels(const AxisScale& axis, double value) { return axis.IndexOf(value) + 0.5; }

/// Whether raw samples are in the order of their values.
template <class Values>
inline constexpr bool keepsOrder = true;
template <class Sample>
inline constexpr bool keepsOrder<CorrectedValues<Sample>> = false;

/// The largest and smallest of several A-scans, sample by sample, in the order of their values.
template <class Values>
class SampleExtremes {
 public:
  using Raw = typename Values::Raw;
  static constexpr bool isInOrder = keepsOrder<Values>;
  using Kept = std::conditional_t<isInOrder, Raw, std::int32_t>;

  explicit SampleExtremes(std::size_t quantity) : m_highest(quantity), m_lowest(quantity) {}

  void Take(const Values& values, const Raw* samples) {
    Kept* const highest = m_highest.data();
    Kept* const lowest = m_lowest.data();
    std::size_t at = 0;
    if constexpr (isInOrder) {
      using Lanes [[gnu::vector_size(16)]] = Raw;
      constexpr std::size_t lanes = sizeof(Lanes) / sizeof(Raw);
      for (; !m_isEmpty && at + lanes <= m_highest.size(); at += lanes) {
        Lanes high, low, taken;
        std::memcpy(&taken, samples + at, sizeof taken);
        std::memcpy(&high, highest + at, sizeof high);
        std::memcpy(&low, lowest + at, sizeof low);
        high = high < taken ? taken : high;
        low = taken < low ? taken : low;
        std::memcpy(highest + at, &high, sizeof high);
        std::memcpy(lowest + at, &low, sizeof low);
      }
    }
    for (; at < m_highest.size(); ++at) {
      const Kept value = KeptOf(values, samples[at]);
      highest[at] = m_isEmpty ? value : std::max(highest[at], value);
      lowest[at] = m_isEmpty ? value : std::min(lowest[at], value);
    }
    m_isEmpty = false;
  }
  void Clear() { m_isEmpty = true; }
  [[nodiscard]] bool IsEmpty() const { return m_isEmpty; }
  [[nodiscard]] Extremes At(const Values& values, std::size_t sample) const {
    if constexpr (isInOrder)
      return {values.ValueOf(m_highest[sample]), values.ValueOf(m_lowest[sample])};
    else
      return {m_highest[sample], m_lowest[sample]};
  }

 private:
  static Kept KeptOf(const Values& values, Raw sample) {
    if constexpr (isInOrder)
      return sample;
    else
      return values.ValueOf(sample);
  }

  std::vector<Kept> m_highest;
  std::vector<Kept> m_lowest;
  bool m_isEmpty = true;
};

/// Where a sample of a beam goes in an end or side view, from the place of its column or row.
struct SpreadPoint {
  std::uint32_t sample = 0;  ///< of those that are shown
  double across = 0;         ///< in pixels
  double down = 0;           ///< in pixels, from the outer edge of the first
};

/// A sample fills the width of its cell, or of its beam where there is one scan position.
std::vector<SpreadPoint> SpreadOf(const ProjectedBeam& placed,
                                  double ScanOffset::*along,
                                  const AxisScale& cells,
                                  const ProjectionView& view) {
  std::vector<SpreadPoint> points;
  const double edge = InPixels(view.across, 0);
  const auto add = [&](std::uint32_t sample, double away, double depth) {
    points.push_back(
        {sample, edge + away / view.across.step, InPixels(view.down, std::max(depth, 0.0))});
  };
  const SectorBeam& beam = placed.beam;
  for (std::uint32_t sample = 0; sample < placed.offsets.size(); ++sample) {
    const double middle = placed.offsets[sample].*along;
    const double path = beam.halfPaths.At(placed.first + sample);
    const bool isScanned = cells.quantity > 1;
    const double width =
        isScanned ? std::abs(cells.step) : path * placed.halfTurn * 2 * std::numbers::pi / 180;
    const int steps =
        static_cast<int>(std::min(std::ceil(pointsOfPixel * width / view.across.step), 1000.0)) | 1;
    for (int step = 0; step < steps; ++step) {
      const double part = (2.0 * step + 1) / steps - 1;  // of the half width, to either side
      if (isScanned || steps == 1) {
        add(sample, middle + part * width / 2, placed.depths[sample]);
        continue;
      }
      SectorBeam turned = beam;
      turned.refractedAngle = std::clamp(beam.refractedAngle + part * placed.halfTurn, -89.9, 89.9);
      if (const auto point = PointOf(turned, path)) {
        const ScanOffset away = TurnedBySkew(point->distance, beam.skew);
        add(sample, placed.index.*along + away.*along, point->depth);
      }
    }
  }
  return points;
}

/// Called with the bytes of a beam that were read.
using Progress = std::function<void(std::uint64_t bytes)>;

/// An end or side view of one beam: the cells of each line, which are looked through, are reduced.
void PaintLines(ProjectionPainter& painter,
                const ProjectionView& view,
                const ProjectedBeam& placed,
                std::uint32_t beam,
                const Progress& progress) {
  const DataGroup& group = placed.beam.group;
  const CellTable& table = DataGroupInside::Cells(group);
  const bool isEnd = view.view == PartView::End;
  const AxisScale& lines = isEnd ? placed.columns : placed.rows;
  const auto points = SpreadOf(placed, isEnd ? &ScanOffset::column : &ScanOffset::row, lines, view);
  const AmplitudeRule rule(group.Descriptor());
  const AmplitudeScale scale = group.Amplitudes();
  const std::uint64_t columns = group.ColumnQuantity(), rows = group.RowQuantity();
  WithValues(group.Descriptor(), [&](const auto& values) {
    using Values = std::remove_cvref_t<decltype(values)>;
    using Raw = typename Values::Raw;
    const std::size_t shown = placed.end - placed.first;
    // Columns are taken a few at a time, so that what is kept of them stays in the cache while the
    // rows are read in their order.
    constexpr std::size_t cache = std::size_t{256} << 10U;
    const std::uint64_t together =
        isEnd ? std::max<std::uint64_t>(1, cache / (2 * shown * sizeof(Raw) + 1)) : 1;
    std::vector<float> percents(shown);
    std::vector<SampleExtremes<Values>> kept(together, SampleExtremes<Values>(shown));
    const std::uint64_t quantity = isEnd ? columns : rows;
    for (std::uint64_t first = 0; first < quantity; first += together) {
      const std::uint64_t count = std::min(together, quantity - first);
      for (std::uint64_t outer = 0; outer < (isEnd ? rows : columns); ++outer)
        for (std::uint64_t line = 0; line < count; ++line) {
          const std::uint64_t cell =
              isEnd ? outer * columns + first + line : (first + line) * columns + outer;
          if (const std::byte* samples = table.Cell(cell))
            kept[line].Take(values, reinterpret_cast<const Raw*>(samples) + placed.first);
        }
      for (std::uint64_t line = 0; line < count; ++line) {
        if (kept[line].IsEmpty()) continue;
        for (std::size_t sample = 0; sample < shown; ++sample)
          percents[sample] =
              static_cast<float>(scale.Percent(rule.Larger(kept[line].At(values, sample))));
        kept[line].Clear();
        const double place = lines.At(static_cast<double>(first + line)) / view.across.step;
        for (const SpreadPoint& point : points) {
          const std::size_t pixel = painter.PixelAt(place + point.across, point.down);
          if (pixel != ProjectionPainter::outside)
            painter.Put(
                pixel, percents[point.sample], {beam, placed.first + point.sample, first + line});
        }
      }
      progress(count * (isEnd ? rows : columns) * table.VectorBytes());
    }
    return true;
  });
}

/// Samples of a cell of a top view that are put into one pixel: they are not farther from each
/// other.
struct Stretch {
  std::uint32_t begin = 0;  ///< of the samples that are shown
  std::uint32_t end = 0;
  ScanOffset offset;  ///< of its middle from the cell, in pixels
};

std::vector<Stretch> StretchesOf(const ProjectedBeam& placed, const ProjectionView& view) {
  std::vector<Stretch> stretches;
  const auto samples = static_cast<std::uint32_t>(placed.offsets.size());
  for (std::uint32_t begin = 0; begin < samples;) {
    std::uint32_t end = begin + 1;
    const ScanOffset& from = placed.offsets[begin];
    while (end < samples &&
           std::abs(placed.offsets[end].column - from.column) <= view.across.step &&
           std::abs(placed.offsets[end].row - from.row) <= view.down.step)
      ++end;
    const ScanOffset& middle = placed.offsets[begin + (end - begin) / 2];
    stretches.push_back(
        {begin, end, {middle.column / view.across.step, middle.row / view.down.step}});
    begin = end;
  }
  return stretches;
}

void PaintTop(ProjectionPainter& painter,
              const ProjectionView& view,
              const ProjectedBeam& placed,
              std::uint32_t beam,
              const Progress& progress) {
  const DataGroup& group = placed.beam.group;
  const CellTable& table = DataGroupInside::Cells(group);
  const std::vector<Stretch> stretches = StretchesOf(placed, view);
  const AmplitudeRule rule(group.Descriptor());
  const AmplitudeScale scale = group.Amplitudes();
  const std::uint32_t columns = group.ColumnQuantity();
  WithValues(group.Descriptor(), [&](const auto& values) {
    using Raw = typename std::remove_cvref_t<decltype(values)>::Raw;
    for (std::uint32_t row = 0; row < group.RowQuantity(); ++row) {
      for (std::uint32_t column = 0; column < columns; ++column) {
        const std::uint64_t cell = std::uint64_t{row} * columns + column;
        const auto* begin = reinterpret_cast<const Raw*>(table.Cell(cell));
        if (!begin) continue;
        const double across = InPixels(view.across, placed.columns.At(column));
        const double down = InPixels(view.down, placed.rows.At(row));
        for (const Stretch& stretch : stretches) {
          const std::size_t pixel =
              painter.PixelAt(across + stretch.offset.column, down + stretch.offset.row);
          if (pixel == ProjectionPainter::outside) continue;
          const std::span<const Raw> samples(begin + placed.first + stretch.begin,
                                             stretch.end - stretch.begin);
          const Extremes extremes = values.Of(samples);
          const auto percent = static_cast<float>(scale.Percent(rule.Larger(extremes)));
          if (!painter.IsStronger(pixel, percent)) continue;
          const std::size_t sample = FirstLargest(rule, values, samples, extremes);
          painter.Put(
              pixel,
              percent,
              {beam, placed.first + stretch.begin + static_cast<std::uint32_t>(sample), cell});
        }
      }
      progress(columns * table.VectorBytes());
    }
    return true;
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
