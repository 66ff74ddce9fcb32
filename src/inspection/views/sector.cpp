// The picture of a sector scan: beams and their samples, put where they lie in the part.
#include <algorithm>
#include <cmath>
#include <limits>

#include "src/inspection/state.h"
#include "src/inspection/views/sectorbeams.h"
#include "utdata/failure.h"
#include "utdata/samples.h"

namespace utdata {
namespace {

constexpr float nothingSeen = std::numeric_limits<float>::quiet_NaN();

/// The amplitudes of one beam, percent of full scale.
std::vector<float> PercentsOf(SectorBeam& beam, std::uint64_t cell) {
  const Samples samples = beam.group.Samples();
  beam.isDamaged = samples.IsDamaged(cell);
  beam.hasSamples = DataGroupInside::Cells(beam.group).Cell(cell) != nullptr;
  const AmplitudeScale scale = beam.group.Amplitudes();
  const std::vector<std::int32_t> values = samples.Values(cell);
  std::vector<float> percents(values.size());
  std::transform(values.begin(), values.end(), percents.begin(), [&](std::int32_t value) {
    return static_cast<float>(scale.Percent(value));
  });
  return percents;
}

/// The cells among which a scan position is looked for.
CellRange CellsToSearch(const DataGroup& group, const SectorOptions& options) {
  if (options.row && options.column)
    return {std::uint64_t{*options.row} * group.ColumnQuantity() + *options.column, 1};
  if (options.row) return group.CellsOfRow(*options.row);
  if (options.column) return group.CellsOfColumn(*options.column);
  return group.AllCells();
}

/// The cell of the strongest echo of all beams.
std::uint64_t FindCell(const std::vector<DataGroup>& groups,
                       const SectorOptions& options,
                       const Watch& watch) {
  const DataGroup& first = groups.front();
  const auto check = [&](const char* what, std::optional<std::uint32_t> index, std::uint32_t end) {
    if (index && *index >= end)
      throw Error(first.Name(),
                  std::string("has no ") + what + " " + std::to_string(*index),
                  std::string("its ") + what + "s are 0 to " + std::to_string(end - 1));
  };
  check("row", options.row, first.RowQuantity());
  check("column", options.column, first.ColumnQuantity());
  const CellRange cells = CellsToSearch(first, options);
  std::uint64_t strongest = cells.first;
  double largest = -1;
  for (const DataGroup& group : groups) {
    if (group.RowQuantity() != first.RowQuantity() ||
        group.ColumnQuantity() != first.ColumnQuantity())
      throw Error(
          group.Name(), "cannot be shown in the part", "its beams have different scan positions");
    if (cells.count == 1) continue;
    const StrongestSample found = group.Samples().FindPeaks(cells, watch).strongest;
    const double percent = std::abs(group.Percent(found.value));
    if (percent <= largest) continue;
    largest = percent;
    strongest = found.cell;
  }
  return strongest;
}

/// The rectangle of a view, mm.
struct Extent {
  double left = std::numeric_limits<double>::infinity();
  double right = -std::numeric_limits<double>::infinity();
  double bottom = 0;

  void Take(const SectorLine::Point& point) {
    left = std::min(left, point.across);
    right = std::max(right, point.across);
    bottom = std::max(bottom, point.down);
  }
};

Extent ExtentOf(const std::vector<SectorBeam>& beams, const std::vector<SectorWedge>& wedges) {
  Extent extent;
  for (std::size_t beam = 0; beam < beams.size(); ++beam)
    for (const SectorRay& ray : {wedges[beam].left, wedges[beam].middle, wedges[beam].right}) {
      const double last = LastPath(beams[beam]);
      extent.Take(ray.At(std::clamp(beams[beam].halfPaths.first, 0.0, last)));
      extent.Take(ray.At(last));
    }
  return extent;
}

AxisScale PixelAxis(double from, double to, double pixel) {
  const auto quantity = static_cast<std::uint32_t>(std::max(1.0, std::ceil((to - from) / pixel)));
  return {"mm", from + pixel / 2, pixel, quantity};
}

void SetAxes(SectorLayout& view, const Extent& extent, const SectorOptions& options) {
  constexpr double rounding = 1 + 1e-9;  // so that a whole number of pixels stays one
  const double width = extent.right - extent.left;
  const double pixel = std::max(width / std::max(options.widest, 1U),
                                extent.bottom / std::max(options.highest, 1U)) *
                       rounding;
  if (!(pixel > 0) || !std::isfinite(pixel))
    throw Error(
        view.beams.front().group.Name(), "cannot be shown in the part", "its beams have no extent");
  view.across = PixelAxis(extent.left, extent.right, pixel);
  view.down = PixelAxis(0, extent.bottom, pixel);
}

/// Finds the samples of one beam that fall on the pixels of its wedge, and calls
/// `put(pixel, first, last)` for each.
template <class Put>
class BeamPixels {
 public:
  BeamPixels(const SectorLayout& view, std::size_t beam, const SectorWedge& wedge, Put put)
      : m_view(view),
        m_wedge(wedge),
        m_put(std::move(put)),
        m_paths(view.beams[beam].halfPaths),
        m_last(LastPath(view.beams[beam])),
        m_sine(std::sin(wedge.middle.angle)),
        m_cosine(std::cos(wedge.middle.angle)),
        m_pixel(view.across.step) {}

  void Find() {
    const SectorRay& middle = m_wedge.middle;
    for (std::uint32_t y = 0; y < m_view.down.quantity; ++y) {
      const double down = m_view.down.At(y);
      if (down < middle.down - m_pixel / 2) continue;
      const double left = m_view.across.IndexOf(AcrossOf(m_wedge.left, down));
      const double right = m_view.across.IndexOf(AcrossOf(m_wedge.right, down));
      const double first = std::ceil(std::min(left, right));
      const double end = std::ceil(std::max(left, right));
      if (first < end) {
        FindInRow(y, first, end, (std::abs(m_sine) + m_cosine) * m_pixel / 2);
      } else {  // narrower than a pixel: all that falls on this row is put into the nearest
        const double nearest = std::round(m_view.across.IndexOf(AcrossOf(middle, down)));
        FindInRow(y, nearest, nearest + 1, m_pixel / 2 / m_cosine);
      }
    }
  }

 private:
  static double AcrossOf(const SectorRay& ray, double down) {
    return ray.across + (down - ray.down) * std::tan(ray.angle);
  }

  /// @param reach half of the stretch of the beam that falls on one pixel, mm
  void FindInRow(std::uint32_t y, double first, double end, double reach) {
    const double limit = m_view.across.quantity;
    const auto from = static_cast<std::uint32_t>(std::clamp(first, 0.0, limit));
    const auto to = static_cast<std::uint32_t>(std::clamp(end, 0.0, limit));
    const double alongDown = (m_view.down.At(y) - m_wedge.middle.down) * m_cosine;
    for (std::uint32_t x = from; x < to; ++x) {
      const double path = alongDown + (m_view.across.At(x) - m_wedge.middle.across) * m_sine;
      if (path + reach >= 0 && path - reach <= m_last)
        FindOfPixel(y * m_view.across.quantity + x, path, reach);
    }
  }

  void FindOfPixel(std::uint32_t pixel, double path, double reach) {
    const double middle = (path - m_paths.first) / m_paths.step;
    const double half = reach / m_paths.step;
    const double last = static_cast<double>(m_paths.quantity) - 1;
    double low = std::ceil(middle - half), high = std::floor(middle + half);
    if (low > high) low = high = std::round(middle);  // between two samples
    if (high < 0 || low > last) return;
    m_put(pixel,
          static_cast<std::uint32_t>(std::max(low, 0.0)),
          static_cast<std::uint32_t>(std::min(high, last)));
  }

  const SectorLayout& m_view;
  const SectorWedge& m_wedge;
  Put m_put;
  const AxisScale m_paths;
  const double m_last;
  const double m_sine;
  const double m_cosine;
  const double m_pixel;
};

/// Puts the samples of one beam into its pixels.
void Paint(SectorView& view,
           std::uint32_t beam,
           const SectorWedge& wedge,
           const std::vector<float>& percents) {
  const auto put = [&](std::uint32_t pixel, std::uint32_t first, std::uint32_t last) {
    std::uint32_t strongest = first;
    for (std::uint32_t sample = first + 1; sample <= last; ++sample)
      if (std::abs(percents[sample]) > std::abs(percents[strongest])) strongest = sample;
    float& shown = view.percents[pixel];
    if (std::abs(shown) >= std::abs(percents[strongest])) return;  // false for nothing
    shown = percents[strongest];
    view.pixels[pixel] = {beam, strongest};
  };
  BeamPixels(view, beam, wedge, put).Find();
}

/// The strongest sample between two half paths.
void FindStrongest(SectorView& view,
                   const std::vector<std::vector<float>>& percents,
                   const SectorOptions& options) {
  std::optional<std::pair<std::size_t, std::uint32_t>> strongest;
  float largest = -1;
  for (std::size_t beam = 0; beam < view.beams.size(); ++beam) {
    if (!view.beams[beam].hasSamples) continue;
    const AxisScale& paths = view.beams[beam].halfPaths;
    const double to = std::min(options.to, LastPath(view.beams[beam]));
    for (std::uint32_t sample = 0; sample < percents[beam].size(); ++sample) {
      const double path = paths.At(sample);
      if (path < std::max(options.from, 0.0) || path > to) continue;
      if (std::abs(percents[beam][sample]) <= largest) continue;
      largest = std::abs(percents[beam][sample]);
      strongest = std::pair(beam, sample);
    }
  }
  if (!strongest) return;
  view.strongest = view.EchoOf(strongest->first, strongest->second);
  if (view.strongest) view.strongest->percent = percents[strongest->first][strongest->second];
}

void RemarkOnBeams(SectorLayout& view) {
  const auto count = [&](auto test) {
    return std::count_if(view.beams.begin(), view.beams.end(), test);
  };
  const auto silent = count([](const SectorBeam& beam) { return !beam.hasSamples; });
  if (silent > 0)
    view.remarks.push_back(std::to_string(silent) + (silent == 1 ? " beam has" : " beams have") +
                           " no samples at this scan position");
  if (view.beams.front().outsideRadius > 0)
    view.remarks.push_back("Round part: only the first leg is shown");
}

/// Places the beams of a channel at a cell, and the pixels over them. @return their wedges
std::vector<SectorWedge> Lay(SectorLayout& layout,
                             const std::vector<DataGroup>& groups,
                             std::uint64_t cell,
                             const SectorOptions& options) {
  layout.row = static_cast<std::uint32_t>(cell / groups.front().ColumnQuantity());
  layout.column = static_cast<std::uint32_t>(cell % groups.front().ColumnQuantity());
  SectorBeams placed = PlaceBeams(groups, layout.row, layout.column);
  layout.beams = std::move(placed.beams);
  layout.acrossOf = placed.acrossOf;
  std::vector<SectorWedge> wedges = WedgesOf(layout.beams, layout.remarks);
  SetAxes(layout, ExtentOf(layout.beams, wedges), options);
  return wedges;
}

}  // namespace

std::optional<SectorEcho> SectorLayout::PlaceOf(std::size_t beam, std::uint32_t sample) const {
  if (beam >= beams.size() || sample >= beams[beam].halfPaths.quantity)
    throw Error("", "there is no such sample", "it is outside the sector scan");
  const SectorBeam& seen = beams[beam];
  SectorEcho echo;
  echo.beam = beam;
  echo.sample = sample;
  echo.halfPath = seen.halfPaths.At(sample);
  const std::optional<BeamPoint> point = PointOf(seen, echo.halfPath);
  if (!point) return std::nullopt;
  echo.point = *point;
  const SectorLine::Point place = RayOf(seen).At(echo.halfPath);
  echo.across = place.across;
  echo.down = place.down;
  return echo;
}

std::optional<SectorEcho> SectorLayout::EchoOf(std::size_t beam, std::uint32_t sample) const {
  std::optional<SectorEcho> echo = PlaceOf(beam, sample);
  if (!echo || !beams[beam].hasSamples) return echo;
  const DataGroup& group = beams[beam].group;
  const std::uint64_t cell = std::uint64_t{row} * group.ColumnQuantity() + column;
  echo->percent = group.Percent(group.Samples().Values(cell)[sample]);
  return echo;
}

SectorView MakeSector(const DataGroup& group, const SectorOptions& options, const Watch& watch) {
  const std::vector<DataGroup> groups = BeamGroupsOf(group);
  const std::uint64_t cell = FindCell(groups, options, watch);
  SectorView view;
  const std::vector<SectorWedge> wedges = Lay(view, groups, cell, options);
  const std::size_t pixels = std::size_t{view.across.quantity} * view.down.quantity;
  view.pixels.assign(pixels, {});
  view.percents.assign(pixels, nothingSeen);
  std::vector<std::vector<float>> percents;
  for (std::uint32_t beam = 0; beam < view.beams.size(); ++beam) {
    percents.push_back(PercentsOf(view.beams[beam], cell));
    if (view.beams[beam].hasSamples || view.beams[beam].isDamaged)
      Paint(view, beam, wedges[beam], percents[beam]);
  }
  FindStrongest(view, percents, options);
  RemarkOnBeams(view);
  view.lines = LinesOver(view, view.remarks);
  return view;
}

SectorMap MakeSectorMap(const DataGroup& group, const SectorOptions& options) {
  const std::vector<DataGroup> groups = BeamGroupsOf(group);
  SectorOptions position = options;
  position.row = options.row.value_or(0);
  position.column = options.column.value_or(0);
  SectorMap map;
  const std::vector<SectorWedge> wedges = Lay(map, groups, FindCell(groups, position, {}), options);
  for (std::uint32_t beam = 0; beam < map.beams.size(); ++beam) {
    const auto put = [&](std::uint32_t pixel, std::uint32_t first, std::uint32_t last) {
      map.stretches.push_back({pixel, beam, first, last});
    };
    BeamPixels(map, beam, wedges[beam], put).Find();
  }
  std::ranges::stable_sort(map.stretches, {}, &SectorMap::Stretch::pixel);
  RemarkOnBeams(map);
  map.lines = LinesOver(map, map.remarks);
  return map;
}

}  // namespace utdata
