#include "pictures/ascan.h"

#include <algorithm>
#include <cmath>

#include "pictures/amplitude_scale.h"
#include "samples/group_axes.h"
#include "samples/group_samples.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

CellRange Searched(const CGDataTypeFDD& group, const AScanOptions& options) {
  if (options.row && options.column)
    return {std::uint64_t{*options.row} * group.columnQuantity + *options.column, 1, 1};
  if (options.row) return CellsOfRow(group, *options.row);
  return options.column ? CellsOfColumn(group, *options.column) : AllCells(group);
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
void AddGates(LinePlot& plot, Host& host, const CGDataTypeFDD& group, bool hasSign) {
  if (group.sampleUnits != kvt_UnitSecond || group.sampleResolution <= 0) return;
  std::string moving;
  for (const CGGateTypeDescr* gate : host.GetFileDescriptor()->gates) {
    if (gate->channelId != group.channelId || gate->enabled == 0) continue;
    if (gate->reference != ggate_RefInitialPulse) {
      moving += (moving.empty() ? "" : ", ") + NameOf(*gate);
      continue;
    }
    const auto across = [&](double seconds) {
      return plot.across.At((seconds - group.sampleOffset) / group.sampleResolution);
    };
    const double end = double{gate->start} + gate->width;
    GateBar bar = {
        across(gate->start), across(end), gate->positiveLevel, ColorOf(*gate), NameOf(*gate)};
    if (!hasSign || gate->polarity != gdata_RectifNegative) plot.gates.push_back(bar);
    bar.level = -gate->negativeLevel;
    if (hasSign && gate->polarity != gdata_RectifPositive) plot.gates.push_back(bar);
  }
  if (!moving.empty()) plot.notes.push_back("Not drawn, as they follow another echo: " + moving);
}

/// Room for the echo and the levels of the gates.
std::uint32_t GainFor(const AScan& scan) {
  double largest = std::abs(scan.percent);
  for (const GateBar& gate : scan.plot.gates) largest = std::max(largest, std::abs(gate.level));
  return FittingGain(largest);
}

void SetScale(AScan& scan, const GroupAxes& axes, const CodeMeaning& meaning) {
  LinePlot& plot = scan.plot;
  plot.valueTitle = "Amplitude, of full scale (%)";
  plot.high = meaning.high / scan.gain;
  plot.low = meaning.hasSign ? -plot.high : 0;
  plot.marks = DecibelTicks(axes, 0, plot.high);
  plot.marksTitle = "Level below full scale (dB)";
}

}  // namespace

AScan MakeAScan(Host& host,
                const CGDataTypeFDD& group,
                const std::string& name,
                const AScanOptions& options) {
  const GroupSamples samples(host, group, name);
  const GroupAxes axes(host, group);
  CheckRow(group, options.row, name);
  CheckColumn(group, options.column, name);
  const StrongestSample strongest =
      samples.FindPeaks(Searched(group, options), options.quiet).strongest;
  AScan scan;
  LinePlot& plot = scan.plot;
  scan.row = static_cast<std::uint32_t>(strongest.cell / group.columnQuantity);
  scan.column = static_cast<std::uint32_t>(strongest.cell % group.columnQuantity);
  scan.sample = strongest.sample;
  scan.percent = axes.Percent(strongest.value);
  for (const std::int32_t value : samples.Values(strongest.cell))
    plot.values.push_back(axes.Percent(value));
  SampleAxes across = SampleAxesOf(group, axes, options.samples, name);
  plot.across = std::move(across.first);
  plot.acrossAgain = std::move(across.again);
  plot.marked = scan.sample;

  plot.title = Caption(group) + " · A-scan at " + RowText(axes, scan.row) + ", " +
               ColumnText(axes, scan.column) + WhichCell(options);
  plot.notes = {"Strongest echo " + AmplitudeText(axes, scan.percent) + " at " +
                SamplePlace(axes, scan.sample)};
  const CodeMeaning meaning = MeaningOf(group, axes);
  AddGates(plot, host, group, meaning.hasSign);
  scan.gain = options.gain.value_or(GainFor(scan));
  plot.notes.front() += GainText(scan.gain);
  SetScale(scan, axes, meaning);
  return scan;
}

}  // namespace utdata::program
