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

/// Adds the gates of the channel that stand still. Where the others lie depends on an echo in
/// another gate, which a note says.
void AddGates(LinePlot& plot, const DataGroup& group, bool hasSign) {
  std::string moving;
  for (const PlacedGate& placed : group.Gates()) {
    const CGGateTypeDescr& gate = *placed.gate;
    if (!placed.isPlaced) {
      moving += (moving.empty() ? "" : ", ") + NameOf(gate);
      continue;
    }
    GateBar bar = {plot.across.At(placed.from),
                   plot.across.At(placed.to),
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
  const StrongestSample strongest =
      samples.FindPeaks(Searched(group, options), Watching(options.quiet)).strongest;
  AScan scan;
  LinePlot& plot = scan.plot;
  scan.row = static_cast<std::uint32_t>(strongest.cell / group.ColumnQuantity());
  scan.column = static_cast<std::uint32_t>(strongest.cell % group.ColumnQuantity());
  scan.sample = strongest.sample;
  scan.percent = group.Percent(strongest.value);
  for (const std::int32_t value : samples.Values(strongest.cell))
    plot.values.push_back(group.Percent(value));
  SampleAxes across = SampleAxesOf(group, options.samples);
  plot.across = std::move(across.first);
  plot.acrossAgain = std::move(across.again);
  plot.marked = scan.sample;

  plot.title = Caption(group) + " · A-scan at " + RowText(group, scan.row) + ", " +
               ColumnText(group, scan.column) + WhichCell(options);
  plot.notes = {"Strongest echo " + AmplitudeText(group, scan.percent) + " at " +
                SamplePlace(group, scan.sample) +
                TipDepthText(group, scan.row, scan.column, scan.sample)};
  const CodeMeaning meaning = MeaningOf(group, samples.Span());
  if (samples.IsDamaged(strongest.cell)) {
    scan.damagedCells = 1;
    plot.notes.push_back("The samples of this cell are damaged: shown without them");
  }
  AddGates(plot, group, meaning.hasSign);
  scan.gain = options.gain.value_or(GainFor(scan));
  plot.notes.front() += GainText(scan.gain);
  SetScale(scan, group, meaning);
  return scan;
}

}  // namespace utdata::program
