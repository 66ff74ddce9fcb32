#include "pictures/cscan.h"

#include <algorithm>
#include <utility>

#include "pictures/amplitude_scale.h"
#include "pictures/captions.h"
#include "terminal/progress.h"
#include "terminal/quantity.h"
#include "utdata/gating.h"

namespace utdata::program {
namespace {

/// Marks in a second unit, at their places in the first: both run evenly along the same values.
std::vector<Tick> MarksOnPath(const AxisScale& positions,
                              const AxisScale& path,
                              double low,
                              double high) {
  std::vector<Tick> marks = RoundTicks(path.At(low), path.At(high), 10).major;
  for (Tick& mark : marks) mark.value = positions.At((mark.value - path.first) / path.step);
  return marks;
}

/// Positions read in the unit of the sample axis at the right, and in half sound path at the left.
ColorScale PositionScale(const DataGroup& group, const CodeSpan& span, std::uint32_t gain) {
  const AxisScale positions = group.Times();
  const double low = span.low / gain;
  const double high = span.high / gain;
  ColorScale scale;
  scale.colors = &HeatColors();
  scale.low = positions.At(low);
  scale.high = positions.At(high);
  scale.title = positions.symbol == "µs" ? "Time of flight of the echo" : "Position of the echo";
  scale.unit = positions.symbol;
  if (const auto path = group.HalfPaths()) {
    scale.marks = MarksOnPath(positions, *path, low, high);
    scale.marksUnit = path->symbol;
  }
  return scale;
}

/// "Echoes from 1.2 to 4.8 µs (3.54 to 14.2 mm half path) · 12 grey cells without an echo".
std::string PositionNote(const DataGroup& group, const Peaks& peaks) {
  double nearest = 0;
  double farthest = 0;
  std::size_t empty = 0;
  for (const double value : peaks.values) {
    if (value == noEchoPosition) ++empty;
    if (value != noEchoPosition && (nearest == 0 || value < nearest)) nearest = value;
    farthest = std::max(farthest, value);
  }
  const auto range = [&](const AxisScale& axis) {
    return Number(axis.At(nearest)) + " to " + AxisText(axis, farthest);
  };
  if (empty == peaks.values.size()) return "No cell has an echo";
  std::string note = "Echoes from " + range(group.Times());
  if (const auto path = group.HalfPaths()) note += " (" + range(*path) + " half path)";
  return empty == 0 ? note : note + " · " + std::to_string(empty) + " grey cells without an echo";
}

std::string EchoNote(const CScan& scan, const DataGroup& group) {
  std::string note = "Strongest cell " + AmplitudeText(group, scan.value) + " at " +
                     RowText(group, scan.row) + ", " + ColumnText(group, scan.column);
  if (group.HasAScans()) note += ", " + SamplePlace(group, scan.sample);
  return note;
}

/// What the cells show, behind the label.
const char* Subject(const DataGroup& group) {
  if (group.HasAScans()) return " · C-scan: largest amplitude of each A-scan";
  return group.HoldsPositions() ? " · C-scan of positions" : " · C-scan of amplitudes";
}

void ShowAmplitudes(CScan& scan, const DataGroup& group, const CodeSpan& span) {
  const CodeMeaning meaning = MeaningOf(group, span);
  scan.plot.scale = AmplitudeColors(meaning, group, scan.gain);
  for (std::uint8_t& code : scan.plot.codes) code = meaning.place[code];
  scan.plot.notes = {EchoNote(scan, group) + GainText(scan.gain)};
}

void MarkDamage(CScan& scan, const Samples& samples) {
  std::vector<std::uint8_t> striped(samples.CellQuantity());
  for (std::uint64_t cell = 0; cell < striped.size(); ++cell) {
    striped[cell] = samples.IsDamaged(cell) ? 1 : 0;
    scan.damagedCells += striped[cell];
  }
  if (scan.damagedCells == 0) return;
  scan.plot.striped = std::move(striped);
  scan.plot.notes.push_back(DamageNote(scan.damagedCells));
}

}  // namespace

CScan MakeCScan(const DataGroup& group, const CScanOptions& options) {
  Samples samples = group.Samples();
  const bool hasPositions = group.HoldsPositions();
  const Peaks peaks = samples.FindPeaks(
      group.AllCells(), Watching(options.quiet), SamplesBetween(group, options.limits));
  CScan scan;
  ImagePlot& plot = scan.plot;
  scan.row = static_cast<std::uint32_t>(peaks.strongest.cell / group.ColumnQuantity());
  scan.column = static_cast<std::uint32_t>(peaks.strongest.cell % group.ColumnQuantity());
  scan.sample = peaks.strongest.sample;
  const double percent = group.Percent(peaks.strongest.value);
  scan.value = hasPositions ? group.Times().At(peaks.strongest.value) : percent;
  if (samples.CanAmplify()) scan.gain = options.gain.value_or(FittingGain(percent));

  plot.across = ColumnAxis(group);
  plot.down = RowAxis(group);
  plot.codes = samples.CodesOf(peaks.values, scan.gain);
  plot.title = Caption(group) + Subject(group);
  if (hasPositions) {
    plot.scale = PositionScale(group, samples.Span(), scan.gain);
    for (std::uint8_t& code : plot.codes) code = samples.Span().PlaceOf(code);
    plot.notes = {PositionNote(group, peaks)};
    for (const std::int32_t value : peaks.values)
      plot.unseen.push_back(value == noEchoPosition ? 1 : 0);
  } else {
    plot.marked = ImagePlot::Cell{scan.column, scan.row};
    ShowAmplitudes(scan, group, samples.Span());
  }
  if (options.limits.AreGiven()) plot.notes.push_back(LimitsText(options.limits));
  MarkDamage(scan, samples);
  SetProportion(plot);
  return scan;
}

}  // namespace utdata::program
