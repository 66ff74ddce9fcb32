#include "pictures/ascan.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "pictures/amplitude_scale.h"
#include "terminal/progress.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "utdata/dac.h"

namespace utdata::program {
namespace {

CellRange Searched(const DataGroup& group, const AScanOptions& options) {
  if (options.row && options.column)
    return {std::uint64_t{*options.row} * group.ColumnQuantity() + *options.column, 1, 1};
  if (options.row) return group.CellsOfRow(*options.row);
  return options.column ? group.CellsOfColumn(*options.column) : group.AllCells();
}

std::string WhichCell(const AScanOptions& options) {
  if (options.row && options.column) return "";
  if (options.row) return ", the column of the strongest cell in that row";
  return options.column ? ", the row of the strongest cell in that column" : ", the strongest cell";
}

/// A colour that is seen on paper; gates without one are red.
Color ColorOf(const CGGateTypeDescr& gate) {
  const auto part = [&](unsigned shift) {
    return static_cast<std::uint8_t>((gate.color >> shift) & 0xFFU);
  };
  const Color color = {part(16), part(8), part(0)};
  const bool isTooPale = color.red + color.green + color.blue > 600;
  return gate.color == 0 || isTooPale ? pointer : color;
}

std::string NameOf(const CGGateTypeDescr& gate) {
  return gate.name.empty() ? "gate " + std::to_string(gate.gateId) : Printable(ToUtf8(gate.name));
}

/// Adds the gates of the channel that stand still, as far as they lie on samples that are shown.
/// Where the others lie depends on an echo in another gate, which a note says.
void AddGates(LinePlot& plot, const DataGroup& group, const IndexRange& shown, bool hasSign) {
  std::string moving;
  const double first = shown.first;
  const auto inPlot = [&](double sample) {
    return std::clamp(sample - first, -0.5, shown.count - 0.5);
  };
  for (const PlacedGate& placed : group.Gates()) {
    const CGGateTypeDescr& gate = *placed.gate;
    if (!placed.isPlaced) {
      moving += (moving.empty() ? "" : ", ") + NameOf(gate);
      continue;
    }
    if (placed.to < first || placed.from > first + shown.count - 1) continue;
    GateBar bar = {plot.across.At(inPlot(placed.from)),
                   plot.across.At(inPlot(placed.to)),
                   gate.positiveLevel,
                   ColorOf(gate),
                   NameOf(gate)};
    if (!hasSign || gate.polarity != gdata_RectifNegative) plot.gates.push_back(bar);
    bar.level = -gate.negativeLevel;
    if (hasSign && gate.polarity != gdata_RectifPositive) plot.gates.push_back(bar);
  }
  if (!moving.empty()) plot.notes.push_back("Not drawn, as they follow another echo: " + moving);
}

/// Puts the mark on the sample that lies highest over the curve.
void MarkHighest(AScan& scan, const DataGroup& group) {
  LinePlot& plot = scan.plot;
  double highest = 0;
  std::optional<std::size_t> found;
  for (std::size_t cell = 0; cell < plot.values.size(); ++cell) {
    const double ratio = std::abs(plot.values[cell]) / plot.reference[cell];
    if (!(ratio > highest)) continue;  // also where there is no curve
    highest = ratio;
    found = cell;
  }
  if (!found)
    throw Error(group.Name(),
                "has no amplitude relative to its DAC",
                "the curve covers none of the echoes that are shown");
  scan.sample =
      scan.sample - static_cast<std::uint32_t>(*plot.marked) + static_cast<std::uint32_t>(*found);
  scan.percent = plot.values[*found];
  plot.marked = found;
}

/// Adds the DAC curve of the channel, where it has one.
void AddDac(AScan& scan, const DataGroup& group, bool isWanted) {
  const std::optional<DacCurve> dac = DacOf(group);
  if (!dac && isWanted)
    throw Error(group.Name(),
                "has no amplitude relative to a DAC",
                "its channel has no DAC curve that is switched on");
  if (!dac) return;
  LinePlot& plot = scan.plot;
  const AxisScale times = group.Times();
  const auto first = static_cast<double>(scan.sample - *plot.marked);
  for (std::size_t cell = 0; cell < plot.values.size(); ++cell)
    plot.reference.push_back(dac->LevelAt(times.At(first + static_cast<double>(cell)))
                                 .value_or(std::numeric_limits<double>::quiet_NaN()));
  plot.referenceLabel = "DAC";
  if (isWanted) MarkHighest(scan, group);
  scan.decibelsToDac = dac->DecibelsAt(scan.percent, times.At(scan.sample));
}

std::string EchoText(const AScan& scan, const DataGroup& group, bool isToDac) {
  std::string text = isToDac ? "Highest echo over the DAC " : "Strongest echo ";
  text += AmplitudeText(group, scan.percent);
  if (scan.decibelsToDac)
    text += ", " + Number(std::round(*scan.decibelsToDac * 10) / 10) + " dB to DAC,";
  return text + " at " + SamplePlace(group, scan.sample) +
         TipDepthText(group, scan.row, scan.column, scan.sample);
}

/// Room for the echo, the DAC curve and the levels of the gates.
std::uint32_t GainFor(const AScan& scan) {
  double largest = std::abs(scan.percent);
  for (const double level : scan.plot.reference) largest = std::fmax(largest, level);
  for (const GateBar& gate : scan.plot.gates) largest = std::max(largest, std::abs(gate.level));
  return FittingGain(largest);
}

void SetScale(AScan& scan, const DataGroup& group, const CodeMeaning& meaning) {
  LinePlot& plot = scan.plot;
  plot.valueTitle = "Amplitude, of full scale (%)";
  plot.high = meaning.high / scan.gain;
  plot.low = meaning.hasSign ? -plot.high : 0;
  plot.marks = DecibelTicks(group, 0, plot.high);
  plot.marksTitle = "Level below full scale (dB)";
}

}  // namespace

AScan MakeAScan(const DataGroup& group, const AScanOptions& options) {
  const Samples samples = group.Samples();
  CheckRow(group, options.row);
  CheckColumn(group, options.column);
  const IndexRange shown = SamplesBetween(group, options.limits);
  const StrongestSample strongest =
      samples.FindPeaks(Searched(group, options), Watching(options.quiet), shown).strongest;
  AScan scan;
  LinePlot& plot = scan.plot;
  scan.row = static_cast<std::uint32_t>(strongest.cell / group.ColumnQuantity());
  scan.column = static_cast<std::uint32_t>(strongest.cell % group.ColumnQuantity());
  scan.sample = strongest.sample;
  scan.percent = group.Percent(strongest.value);
  const std::vector<std::int32_t> values = samples.Values(strongest.cell);
  for (std::uint32_t sample = shown.first; shown.Holds(sample); ++sample)
    plot.values.push_back(group.Percent(values[sample]));
  const SampleAxes across = SampleAxesOf(group, options.samples);
  plot.across = Part(across.first, shown);
  if (across.again) plot.acrossAgain = Part(*across.again, shown);
  plot.marked = scan.sample - shown.first;

  plot.title = Caption(group) + " · A-scan at " + RowText(group, scan.row) + ", " +
               ColumnText(group, scan.column) + WhichCell(options);
  AddDac(scan, group, options.relativeToDac);
  plot.notes = {EchoText(scan, group, options.relativeToDac)};
  const CodeMeaning meaning = MeaningOf(group, samples.Span());
  if (samples.IsDamaged(strongest.cell)) {
    scan.damagedCells = 1;
    plot.notes.push_back("The samples of this cell are damaged: shown without them");
  }
  if (options.limits.AreGiven()) plot.notes.push_back(LimitsText(options.limits));
  AddGates(plot, group, shown, meaning.hasSign);
  scan.gain = options.gain.value_or(GainFor(scan));
  plot.notes.front() += GainText(scan.gain);
  SetScale(scan, group, meaning);
  return scan;
}

}  // namespace utdata::program
