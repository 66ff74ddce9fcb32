#include "pictures/ascan.h"

#include <algorithm>
#include <cmath>

#include "pictures/amplitude_scale.h"
#include "terminal/progress.h"
#include "terminal/text.h"

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

/// Room for the echo and the levels of the gates.
std::uint32_t GainFor(const AScan& scan) {
  double largest = std::abs(scan.percent);
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
  plot.notes = {"Strongest echo " + AmplitudeText(group, scan.percent) + " at " +
                SamplePlace(group, scan.sample)};
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
