#include "pictures/captions.h"

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
