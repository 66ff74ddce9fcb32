// What the pixels of top, side and end views show, traced back to the samples.
#include <algorithm>
#include <cmath>
#include <span>
#include <tuple>

#include "src/inspection/amplitudes.h"
#include "src/inspection/state.h"
#include "src/inspection/views/partaxes.h"
#include "src/inspection/views/sectorbeams.h"
#include "utdata/failure.h"
#include "utdata/samples.h"

namespace utdata {
namespace {

/// Where the samples of one beam lie at any of its cells.
class BeamPlaces {
 public:
  explicit BeamPlaces(const DataGroup& group)
      : m_beam(BeamOf(group)),
        m_index(IndexOffsetOf(group)),
        m_columns(InMillimetres(group, group.Columns(), "columns")),
        m_rows(InMillimetres(group, group.Rows(), "rows")) {}

  [[nodiscard]] std::uint32_t Quantity() const { return m_beam.halfPaths.quantity; }

  /// Without amplitude and beam. None where the beam is not in the part.
  [[nodiscard]] std::optional<ProjectedEcho> At(std::uint32_t row,
                                                std::uint32_t column,
                                                std::uint32_t sample) const {
    const double halfPath = m_beam.halfPaths.At(sample);
    const std::optional<BeamPoint> point = PointOf(m_beam, halfPath);
    if (!point) return std::nullopt;
    const ScanOffset away = TurnedBySkew(point->distance, m_beam.skew);
    ProjectedEcho echo;
    echo.row = row;
    echo.column = column;
    echo.sample = sample;
    echo.halfPath = halfPath;
    echo.place = {m_columns.At(column) + m_index.column + away.column,
                  m_rows.At(row) + m_index.row + away.row};
    echo.point = *point;
    return echo;
  }

 private:
  SectorBeam m_beam;
  ScanOffset m_index;
  AxisScale m_columns;
  AxisScale m_rows;
};

/// The cells of which one is shown by a pixel.
CellRange CellsBehind(const ProjectionView& view, const ProjectionView::Source& source) {
  const DataGroup& group = view.beams[source.beam];
  const auto line = static_cast<std::uint32_t>(source.cells);
  switch (view.view) {
    case PartView::Top:
      return {source.cells, 1};
    case PartView::Side:
      return group.CellsOfRow(line);
    case PartView::End:
      break;
  }
  return group.CellsOfColumn(line);
}

bool IsBefore(const ProjectionView::Source& a, const ProjectionView::Source& b) {
  return std::tie(a.beam, a.cells, a.sample) < std::tie(b.beam, b.cells, b.sample);
}

bool AreOfOneLine(const ProjectionView::Source& a, const ProjectionView::Source& b) {
  return a.beam == b.beam && a.cells == b.cells;
}

/// The strongest of some cells at each of some samples, the first of equal ones.
/// @param samples ordered
/// @param traced one for each of these
template <class Values>
void TraceLine(const DataGroup& group,
               const Values& values,
               const CellRange& cells,
               std::span<const std::uint32_t> samples,
               std::span<ProjectedSample> traced) {
  using Raw = typename Values::Raw;
  const CellTable& table = DataGroupInside::Cells(group);
  const AmplitudeRule rule(group.Descriptor());
  std::fill(traced.begin(), traced.end(), ProjectedSample{cells.first, 0});
  for (std::uint64_t index = 0; index < cells.count; ++index) {
    const std::uint64_t cell = cells.At(index);
    const auto* raw = reinterpret_cast<const Raw*>(table.Cell(cell));
    if (!raw) continue;
    for (std::size_t at = 0; at < samples.size(); ++at) {
      const std::int32_t value = values.ValueOf(raw[samples[at]]);
      if (rule.Rank(value) > rule.Rank(traced[at].value)) traced[at] = {cell, value};
    }
  }
}

}  // namespace

std::vector<std::optional<ProjectedEcho>> ProjectionView::PlacesOf(std::size_t beam) const {
  if (beam >= beams.size())
    throw Error("", "there is no such beam", "it is not one of those that are shown");
  const BeamPlaces places(beams[beam]);
  std::vector<std::optional<ProjectedEcho>> found;
  for (std::uint32_t sample = 0; sample < places.Quantity(); ++sample) {
    found.push_back(places.At(0, 0, sample));
    if (found.back()) found.back()->beam = beam;
  }
  return found;
}

std::vector<ProjectedSample> ProjectionView::Trace(const Watch& watch) const {
  std::vector<std::size_t> order;
  for (std::size_t pixel = 0; pixel < pixels.size(); ++pixel)
    if (pixels[pixel].beam != Source::nothing) order.push_back(pixel);
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return IsBefore(pixels[a], pixels[b]);
  });
  std::vector<ProjectedSample> traced(pixels.size());
  std::vector<std::uint32_t> samples;
  std::vector<ProjectedSample> found;
  for (auto first = order.begin(); first != order.end();) {
    const Source& source = pixels[*first];
    const auto end = std::find_if(first, order.end(), [&](std::size_t pixel) {
      return !AreOfOneLine(pixels[pixel], source);
    });
    samples.clear();
    for (auto pixel = first; pixel != end; ++pixel)
      if (samples.empty() || samples.back() != pixels[*pixel].sample)
        samples.push_back(pixels[*pixel].sample);
    found.resize(samples.size());
    const DataGroup& group = beams[source.beam];
    WithValues(group.Descriptor(), [&](const auto& values) {
      TraceLine(group, values, CellsBehind(*this, source), samples, found);
      return true;
    });
    auto at = found.begin();
    for (auto pixel = first; pixel != end; ++pixel) {
      if (pixel != first && pixels[*pixel].sample != pixels[*(pixel - 1)].sample) ++at;
      traced[*pixel] = *at;
    }
    first = end;
    if (watch)
      watch("tracing echoes",
            static_cast<std::uint64_t>(first - order.begin()) * sizeof(Source),
            order.size() * sizeof(Source));
  }
  return traced;
}

std::optional<ProjectedEcho> ProjectionView::EchoAt(std::size_t pixel) const {
  if (pixel >= pixels.size()) throw Error("", "there is no such pixel", "it is outside the view");
  const Source& source = pixels[pixel];
  if (source.beam == Source::nothing) return std::nullopt;
  const DataGroup& group = beams[source.beam];
  const Samples samples = group.Samples();
  const CellRange cells = CellsBehind(*this, source);
  std::uint64_t strongest = cells.first;
  double largest = -1, found = 0;
  for (std::uint64_t index = 0; index < cells.count; ++index) {
    const double percent = group.Percent(samples.Values(cells.At(index))[source.sample]);
    if (std::abs(percent) <= largest) continue;
    largest = std::abs(percent);
    strongest = cells.At(index);
    found = percent;
  }
  ProjectedEcho echo = BeamPlaces(group)
                           .At(static_cast<std::uint32_t>(strongest / group.ColumnQuantity()),
                               static_cast<std::uint32_t>(strongest % group.ColumnQuantity()),
                               source.sample)
                           .value_or(ProjectedEcho());
  echo.beam = source.beam;
  echo.percent = found;
  return echo;
}

std::optional<ProjectedEcho> ProjectionView::Strongest() const {
  std::size_t strongest = 0;
  float largest = -1;
  for (std::size_t pixel = 0; pixel < percents.size(); ++pixel)
    if (std::abs(percents[pixel]) > largest) {
      largest = std::abs(percents[pixel]);
      strongest = pixel;
    }
  return largest < 0 ? std::nullopt : EchoAt(strongest);
}

}  // namespace utdata
