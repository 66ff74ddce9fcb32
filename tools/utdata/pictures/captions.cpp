#include "pictures/captions.h"

#include <cmath>
#include <utility>

#include "document/data_group.h"
#include "terminal/failure.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

PlotAxis ToPlotAxis(const ShownAxis& axis, const char* title, const char* plainUnit) {
  return {
      title, axis.symbol.empty() ? plainUnit : axis.symbol, axis.first, axis.step, axis.quantity};
}

std::string Named(const ShownAxis& axis, const char* name, std::uint32_t index) {
  return std::string(name) + " " + std::to_string(index) +
         (axis.symbol.empty() ? "" : " (" + axis.Text(index) + ")");
}

std::string Place(const ShownAxis& axis, const char* name, std::uint32_t index) {
  return axis.symbol.empty() ? std::string(name) + " " + std::to_string(index) : axis.Text(index);
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

PlotAxis ColumnAxis(const GroupAxes& axes) {
  const ShownAxis columns = axes.Columns();
  return ToPlotAxis(columns, columns.symbol == "°" ? "Scan angle" : "Scan position", "column");
}

PlotAxis RowAxis(const GroupAxes& axes) {
  const ShownAxis rows = axes.Rows();
  return ToPlotAxis(rows, rows.symbol == "°" ? "Index angle" : "Index position", "row");
}

SampleAxes SampleAxesOf(const CGDataTypeFDD& group,
                        const GroupAxes& axes,
                        SampleAxis wanted,
                        const std::string& name) {
  const ShownAxis natural = axes.Samples();
  const std::optional<ShownAxis> path = axes.HalfPath();
  SampleAxes shown;
  shown.first = ToPlotAxis(
      natural, group.sampleUnits == kvt_UnitSecond ? "Time of flight" : "Sound path", "sample");
  if (wanted == SampleAxis::Path && !path && natural.symbol != "mm")
    throw Failure(name,
                  "has no sound path",
                  "its sound speed is not known",
                  "--samples time shows the time of flight");
  if (path) shown.again = ToPlotAxis(*path, "Half sound path", "sample");
  if (path && wanted == SampleAxis::Path) std::swap(shown.first, *shown.again);
  return shown;
}

std::string Caption(const CGDataTypeFDD& group) {
  std::string label = Printable(Label(group));
  label.erase(label.find_last_not_of(' ') + 1);
  return label;
}

std::string RowText(const GroupAxes& axes, std::uint32_t row) {
  return Named(axes.Rows(), "row", row);
}
std::string ColumnText(const GroupAxes& axes, std::uint32_t column) {
  return Named(axes.Columns(), "column", column);
}
std::string RowPlace(const GroupAxes& axes, std::uint32_t row) {
  return Place(axes.Rows(), "row", row);
}
std::string ColumnPlace(const GroupAxes& axes, std::uint32_t column) {
  return Place(axes.Columns(), "column", column);
}

std::string SamplePlace(const GroupAxes& axes, std::uint32_t sample) {
  const std::optional<ShownAxis> path = axes.HalfPath();
  return Place(axes.Samples(), "sample", sample) +
         (path ? ", " + path->Text(sample) + " half path" : "");
}

std::string AmplitudeText(const GroupAxes& axes, double percent) {
  return axes.PercentText(std::abs(percent)) + " (" + axes.DecibelText(percent) + ")";
}

std::string GainText(std::uint32_t gain) {
  return gain > 1 ? " · soft gain × " + std::to_string(gain) : "";
}

void CheckRow(const CGDataTypeFDD& group,
              std::optional<std::uint32_t> row,
              const std::string& name) {
  CheckIndex("row", row, group.rowQuantity, name);
}

void CheckColumn(const CGDataTypeFDD& group,
                 std::optional<std::uint32_t> column,
                 const std::string& name) {
  CheckIndex("column", column, group.columnQuantity, name);
}

}  // namespace utdata::program
