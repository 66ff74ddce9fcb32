#include "pictures/bscan.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "document/data_group.h"
#include "samples/group_axes.h"
#include "samples/group_samples.h"
#include "terminal/failure.h"
#include "terminal/text.h"
#include "utdata/lut.h"

namespace utdata::program {
namespace {

bool IsSignedType(const CGDataTypeFDD& group) {
  return group.GetDataType() == kvt_Int8 || group.GetDataType() == kvt_Int16;
}

/// How the codes of a group become the places of a colour scale, which rise evenly with the amplitude.
struct CodeMeaning {
  std::array<std::uint8_t, 256> place{};
  double low = 0;       ///< percent at place 0, before soft gain
  double high = 100;    ///< percent at place 255, before soft gain
  bool isWave = false;  ///< zero lies in the middle
};

/// A time-of-flight diffraction scan is read by the phase of its echoes, and shown as a wave; of other scans without rectification
/// the size of the amplitude is shown.
CodeMeaning MeaningOf(const CGDataTypeFDD& group, const GroupAxes& axes) {
  CodeMeaning meaning;
  const bool wide = group.sampleSize == 2;
  meaning.low = axes.Percent(wide || IsSignedType(group) ? group.dataMinimum : 0);
  meaning.high = axes.Percent(wide || IsSignedType(group) ? group.dataMaximum : 255);
  const bool hasSign = meaning.low < 0 && (IsSignedType(group) || group.GetDataRectification() == gdata_RectifNone);
  meaning.isWave = hasSign && group.tofd == 1;
  for (int code = 0; code < 256; ++code) {
    const auto display = static_cast<std::uint8_t>(code);
    int place = IsSignedType(group) ? CLookUpTable::UnRectifySC(display) + 128 : code;
    if (hasSign && !meaning.isWave) place = IsSignedType(group) ? code : std::abs(2 * code - 255);
    meaning.place[display] = static_cast<std::uint8_t>(place);
  }
  if (hasSign && !meaning.isWave) {
    meaning.high = std::max(std::abs(meaning.low), std::abs(meaning.high));
    meaning.low = 0;
  }
  return meaning;
}

/// dB marks for a colour scale, strongest first.
std::vector<Tick> DecibelTicks(const GroupAxes& axes, double low, double high) {
  std::vector<Tick> ticks;
  for (int decibels = 0; decibels >= -60; decibels -= 6) {
    const double percent = axes.PercentOfDecibels(decibels);
    if (percent > low && percent <= high * (1 + 1e-9)) ticks.push_back({percent, std::to_string(decibels)});
  }
  return ticks;
}

PlotAxis ToPlotAxis(const ShownAxis& axis, const char* title, const char* plainUnit) {
  return {title, axis.symbol.empty() ? plainUnit : axis.symbol, axis.first, axis.step, axis.quantity};
}

bool IsLength(const ShownAxis& axis) { return axis.symbol == "mm"; }

void SetAxes(ImagePlot& plot,
             const CGDataTypeFDD& group,
             const GroupAxes& axes,
             SampleAxis samples,
             const std::string& name) {
  const ShownAxis columns = axes.Columns();
  const ShownAxis natural = axes.Samples();
  const std::optional<ShownAxis> path = axes.HalfPath();
  plot.across = ToPlotAxis(columns, columns.symbol == "°" ? "Scan angle" : "Scan position", "column");
  plot.down = ToPlotAxis(natural, group.sampleUnits == kvt_UnitSecond ? "Time of flight" : "Sound path", "sample");
  if (samples == SampleAxis::Path && !path && !IsLength(natural))
    throw Failure(name, "has no sound path", "its sound speed is not known", "--samples time shows the time of flight");
  if (path) plot.downAgain = ToPlotAxis(*path, "Half sound path", "sample");
  if (path && samples == SampleAxis::Path) std::swap(plot.down, *plot.downAgain);
  plot.sameScale = IsLength(columns) && plot.down.unit == "mm";
}

/// The largest whole factor that keeps an amplitude within the scale.
std::uint32_t FittingGain(double percent) {
  const double factor = std::floor(100 / std::abs(percent));
  return std::isfinite(factor) ? static_cast<std::uint32_t>(std::clamp(factor, 1.0, 1000.0)) : 1;
}

/// Samples run down the picture, columns across: the cells of the row stand upright beside each other.
std::vector<std::uint8_t> Upright(const std::vector<std::uint8_t>& codes,
                                  std::size_t samples,
                                  const CodeMeaning& meaning) {
  const std::size_t columns = codes.size() / samples;
  std::vector<std::uint8_t> places(codes.size());
  for (std::size_t column = 0; column < columns; ++column)
    for (std::size_t sample = 0; sample < samples; ++sample)
      places[sample * columns + column] = meaning.place[codes[column * samples + sample]];
  return places;
}

void SetTexts(BScan& scan, const CGDataTypeFDD& group, const GroupAxes& axes, bool rowChosen) {
  const std::string rowText = axes.Rows().symbol.empty() ? "" : " (" + axes.Rows().Text(scan.row) + ")";
  std::string label = Printable(Label(group));
  label.erase(label.find_last_not_of(' ') + 1);
  scan.plot.title = label + " · B-scan at row " + std::to_string(scan.row) + rowText;
  if (!rowChosen) scan.plot.title += ", that of the strongest cell";
  const std::string time =
      axes.Samples().symbol.empty() ? "sample " + std::to_string(scan.sample) : axes.Samples().Text(scan.sample);
  const std::string place =
      axes.Columns().symbol.empty() ? "column " + std::to_string(scan.column) : axes.Columns().Text(scan.column);
  std::string echo = "Strongest echo " + axes.PercentText(std::abs(scan.percent)) + " (" +
                     axes.DecibelText(scan.percent) + ") at " + place + ", " + time;
  if (const auto path = axes.HalfPath()) echo += ", " + path->Text(scan.sample) + " half path";
  scan.plot.notes = {echo};
  if (scan.gain > 1) scan.plot.notes.front() += " · soft gain × " + std::to_string(scan.gain);
}

}  // namespace

BScan MakeBScan(Host& host, const CGDataTypeFDD& group, const std::string& name, const BScanOptions& options) {
  GroupSamples samples(host, group, name);
  const GroupAxes axes(host, group);
  const std::uint32_t columns = group.columnQuantity;
  if (options.row && *options.row >= group.rowQuantity)
    throw Failure(name,
                  "has no row " + std::to_string(*options.row),
                  "its rows are 0 to " + std::to_string(group.rowQuantity - 1));
  BScan scan;
  SetAxes(scan.plot, group, axes, options.samples, name);
  const std::uint64_t firstCell = options.row ? std::uint64_t{*options.row} * columns : 0;
  const StrongestSample strongest =
      samples.FindStrongest(firstCell, options.row ? columns : samples.Cells(), axes.Zero(), options.quiet);
  scan.row = static_cast<std::uint32_t>(strongest.cell / columns);
  scan.column = static_cast<std::uint32_t>(strongest.cell % columns);
  scan.sample = strongest.sample;
  scan.percent = axes.Percent(strongest.value);
  if (samples.CanAmplify()) scan.gain = options.gain.value_or(FittingGain(scan.percent));

  const CodeMeaning meaning = MeaningOf(group, axes);
  ColorScale& scale = scan.plot.scale;
  scale.colors = meaning.isWave ? &GreyColors() : &HeatColors();
  scale.isSigned = meaning.isWave;
  scale.low = meaning.low / scan.gain;
  scale.high = meaning.high / scan.gain;
  scale.decibels = DecibelTicks(axes, scale.low, scale.high);
  const std::vector<std::uint8_t> codes = samples.Codes(std::uint64_t{scan.row} * columns, columns, scan.gain);
  scan.plot.codes = Upright(codes, group.sampleQuantity, meaning);
  scan.plot.marked = ImagePlot::Cell{scan.column, scan.sample};
  SetTexts(scan, group, axes, options.row.has_value());
  return scan;
}

}  // namespace utdata::program
