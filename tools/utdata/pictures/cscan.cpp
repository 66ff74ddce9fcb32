#include "pictures/cscan.h"

#include <algorithm>

#include "document/data_group.h"
#include "pictures/amplitude_scale.h"
#include "pictures/captions.h"
#include "samples/group_axes.h"
#include "samples/group_samples.h"
#include "terminal/quantity.h"

namespace utdata::program {
namespace {

/// Marks in a second unit, at their places in the first: both run evenly along the same values.
std::vector<Tick> MarksOnPath(const ShownAxis& positions,
                              const ShownAxis& path,
                              double low,
                              double high) {
  std::vector<Tick> marks = RoundTicks(path.At(low), path.At(high), 10).major;
  for (Tick& mark : marks) mark.value = positions.At((mark.value - path.first) / path.step);
  return marks;
}

/// Positions read in the unit of the sample axis at the right, and in half sound path at the left.
ColorScale PositionScale(const CGDataTypeFDD& group, const GroupAxes& axes, std::uint32_t gain) {
  const ShownAxis positions = axes.Positions();
  const bool isCompressed = group.sampleSize == 2 || IsSignedType(group);
  const double low = (isCompressed ? group.dataMinimum : 0.0) / gain;
  const double high = (isCompressed ? group.dataMaximum : 255.0) / gain;
  ColorScale scale;
  scale.colors = &HeatColors();
  scale.low = positions.At(low);
  scale.high = positions.At(high);
  scale.title =
      group.sampleUnits == kvt_UnitSecond ? "Time of flight of the echo" : "Position of the echo";
  scale.unit = positions.symbol;
  if (const auto path = axes.PositionsOnHalfPath()) {
    scale.marks = MarksOnPath(positions, *path, low, high);
    scale.marksUnit = path->symbol;
  }
  return scale;
}

/// "Echoes from 1.2 to 4.8 µs (3.54 to 14.2 mm half path)"; a cell at 0 has none.
std::string PositionNote(const GroupSamples& samples, const GroupAxes& axes, const Peaks& peaks) {
  double nearest = 0;
  double farthest = 0;
  std::size_t empty = 0;
  for (const std::uint16_t raw : peaks.raw) {
    const double value = samples.ValueOf(raw);
    if (value == 0) ++empty;
    if (value != 0 && (nearest == 0 || value < nearest)) nearest = value;
    farthest = std::max(farthest, value);
  }
  const auto range = [&](const ShownAxis& axis) {
    return Number(axis.At(nearest)) + " to " + axis.Text(farthest);
  };
  std::string note = "Echoes from " + range(axes.Positions());
  if (const auto path = axes.PositionsOnHalfPath()) note += " (" + range(*path) + " half path)";
  return empty == 0 ? note : note + " · " + std::to_string(empty) + " cells at 0";
}

std::string EchoNote(const CScan& scan, const CGDataTypeFDD& group, const GroupAxes& axes) {
  std::string note = "Strongest cell " + AmplitudeText(axes, scan.value) + " at " +
                     RowText(axes, scan.row) + ", " + ColumnText(axes, scan.column);
  if (PlainClass(group) == gdata_AScan) note += ", " + SamplePlace(axes, scan.sample);
  return note;
}

/// What the cells show, behind the label.
const char* Subject(const CGDataTypeFDD& group) {
  switch (PlainClass(group)) {
    case gdata_AScan:
      return " · C-scan: largest amplitude of each A-scan";
    case gdata_CScanPosition:
      return " · C-scan of positions";
  }
  return " · C-scan of amplitudes";
}

void ShowAmplitudes(CScan& scan, const CGDataTypeFDD& group, const GroupAxes& axes) {
  const CodeMeaning meaning = MeaningOf(group, axes);
  scan.plot.scale = AmplitudeScale(meaning, axes, scan.gain);
  for (std::uint8_t& code : scan.plot.codes) code = meaning.place[code];
  scan.plot.notes = {EchoNote(scan, group, axes) + GainText(scan.gain)};
}

}  // namespace

CScan MakeCScan(Host& host,
                const CGDataTypeFDD& group,
                const std::string& name,
                const CScanOptions& options) {
  GroupSamples samples(host, group, name);
  const GroupAxes axes(host, group);
  const bool hasPositions = PlainClass(group) == gdata_CScanPosition;
  const Peaks peaks = samples.FindPeaks(AllCells(group), options.quiet);
  CScan scan;
  ImagePlot& plot = scan.plot;
  scan.row = static_cast<std::uint32_t>(peaks.strongest.cell / group.columnQuantity);
  scan.column = static_cast<std::uint32_t>(peaks.strongest.cell % group.columnQuantity);
  scan.sample = peaks.strongest.sample;
  const double percent = axes.Percent(peaks.strongest.value);
  scan.value = hasPositions ? axes.Positions().At(peaks.strongest.value) : percent;
  if (samples.CanAmplify()) scan.gain = options.gain.value_or(FittingGain(percent));

  plot.across = ColumnAxis(axes);
  plot.down = RowAxis(axes);
  plot.sameScale = plot.across.unit == "mm" && plot.down.unit == "mm";
  plot.codes = samples.CodesOf(peaks.raw, scan.gain);
  plot.title = Caption(group) + Subject(group);
  if (hasPositions) {
    plot.scale = PositionScale(group, axes, scan.gain);
    for (std::uint8_t& code : plot.codes) code = PlaceInRange(group, code);
    plot.notes = {PositionNote(samples, axes, peaks)};
  } else {
    plot.marked = ImagePlot::Cell{scan.column, scan.row};
    ShowAmplitudes(scan, group, axes);
  }
  return scan;
}

}  // namespace utdata::program
