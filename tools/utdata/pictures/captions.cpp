#include "pictures/captions.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "terminal/failure.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "utdata/readout.h"

namespace utdata::program {
namespace {

PlotAxis ToPlotAxis(const AxisScale& axis, const char* title, const char* plainUnit) {
  return {
      title, axis.symbol.empty() ? plainUnit : axis.symbol, axis.first, axis.step, axis.quantity};
}

std::string Named(const AxisScale& axis, const char* name, std::uint32_t index) {
  return std::string(name) + " " + std::to_string(index) +
         (axis.symbol.empty() ? "" : " (" + AxisText(axis, index) + ")");
}

std::string Place(const AxisScale& axis, const char* name, std::uint32_t index) {
  return axis.symbol.empty() ? std::string(name) + " " + std::to_string(index)
                             : AxisText(axis, index);
}

void CheckIndex(const char* what,
                std::optional<std::uint32_t> index,
                std::uint32_t quantity,
                const std::string& name) {
  if (index && *index >= quantity)
    throw Failure(name,
                  std::string("has no ") + what + " " + std::to_string(*index),
                  std::string("its ") + what + "s are 0 to " + std::to_string(quantity - 1));
}

}  // namespace

PlotAxis ColumnAxis(const DataGroup& group) {
  const AxisScale columns = group.Columns();
  return ToPlotAxis(columns, columns.symbol == "°" ? "Scan angle" : "Scan position", "column");
}

PlotAxis RowAxis(const DataGroup& group) {
  const AxisScale rows = group.Rows();
  return ToPlotAxis(rows, rows.symbol == "°" ? "Index angle" : "Index position", "row");
}

SampleAxes SampleAxesOf(const DataGroup& group, SampleAxis wanted) {
  const AxisScale natural = group.Times();
  const std::optional<AxisScale> path = group.HalfPaths();
  SampleAxes shown;
  shown.first =
      ToPlotAxis(natural, natural.symbol == "µs" ? "Time of flight" : "Sound path", "sample");
  if (wanted == SampleAxis::Path && !path && natural.symbol != "mm")
    throw Failure(group.Name(),
                  "has no sound path",
                  "its sound speed is not known",
                  "--samples time shows the time of flight");
  if (path) shown.again = ToPlotAxis(*path, "Half sound path", "sample");
  if (path && wanted == SampleAxis::Path) std::swap(shown.first, *shown.again);
  return shown;
}

IndexRange SamplesBetween(const DataGroup& group, const PathLimits& limits) {
  constexpr const char* cannotBeLimited = "has no samples between half paths";
  const std::uint32_t quantity = group.SampleQuantity();
  if (!limits.AreGiven()) return {0, quantity};
  if (!group.HasAScans()) throw Failure(group.Name(), cannotBeLimited, "it has one value a cell");
  const AxisScale natural = group.Times();
  const std::optional<AxisScale> path =
      natural.symbol == "mm" ? std::optional(natural) : group.HalfPaths();
  if (!path) throw Failure(group.Name(), cannotBeLimited, "its sound speed is not known");
  const IndexRange samples = path->IndicesBetween(limits.From(), limits.To());
  if (samples.count == 0)
    throw Failure(
        group.Name(),
        cannotBeLimited,
        "its samples lie from " + Number(path->At(0)) + " to " + AxisText(*path, quantity - 1.0));
  return samples;
}

std::string LimitsText(const PathLimits& limits) {
  return "Samples" + (limits.from ? " from " + Number(*limits.from) : "") +
         (limits.to ? " to " + Number(*limits.to) : "") + " mm half path";
}

PlotAxis Part(const PlotAxis& axis, const IndexRange& cells) {
  PlotAxis part = axis;
  part.first = axis.At(cells.first);
  part.quantity = std::min<std::size_t>(cells.count, axis.quantity - cells.first);
  return part;
}

std::string Caption(const DataGroup& group) { return Printable(group.Caption()); }

std::string RowText(const DataGroup& group, std::uint32_t row) {
  return Named(group.Rows(), "row", row);
}
std::string ColumnText(const DataGroup& group, std::uint32_t column) {
  return Named(group.Columns(), "column", column);
}
std::string RowPlace(const DataGroup& group, std::uint32_t row) {
  return Place(group.Rows(), "row", row);
}
std::string ColumnPlace(const DataGroup& group, std::uint32_t column) {
  return Place(group.Columns(), "column", column);
}

std::string SamplePlace(const DataGroup& group, std::uint32_t sample) {
  const std::optional<AxisScale> path = group.HalfPaths();
  return Place(group.Times(), "sample", sample) +
         (path ? ", " + AxisText(*path, sample) + " half path" : "");
}

std::string TipDepthText(const DataGroup& group,
                         std::uint32_t row,
                         std::uint32_t column,
                         std::uint32_t sample) {
  if (!group.IsTofd()) return "";
  const AxisValue depth = group.ReadOut(row, column, sample).tofdDepth;
  return depth.IsKnown() ? ", " + depth.Text(unit_Millimetre) + " deep" : "";
}

std::string AmplitudeText(const DataGroup& group, double percent) {
  return group.AmplitudeText(std::abs(percent), unit_DataPercent) + " (" +
         group.AmplitudeText(percent, unit_DataDecibel) + ")";
}

std::string GainText(std::uint32_t gain) {
  return gain > 1 ? " · soft gain × " + std::to_string(gain) : "";
}

std::string DamageNote(std::uint64_t cells) {
  return (cells == 1 ? "1 cell is" : std::to_string(cells) + " cells are") +
         " damaged: striped, without samples";
}

void CheckRow(const DataGroup& group, std::optional<std::uint32_t> row) {
  CheckIndex("row", row, group.RowQuantity(), group.Name());
}

void CheckColumn(const DataGroup& group, std::optional<std::uint32_t> column) {
  CheckIndex("column", column, group.ColumnQuantity(), group.Name());
}

}  // namespace utdata::program
