#include "pictures/section.h"

#include <algorithm>

#include "terminal/progress.h"

#include "pictures/amplitude_scale.h"
#include "pictures/part_plot.h"
#include "utdata/views.h"

namespace utdata::program {
namespace {

CellRange CellsOf(const DataGroup& group, Cut cut, std::uint32_t position) {
  return cut == Cut::AlongRow ? group.CellsOfRow(position) : group.CellsOfColumn(position);
}

/// Samples run down the picture: the cells of the section stand upright beside each other.
std::vector<std::uint8_t> Upright(const std::vector<std::uint8_t>& codes,
                                  std::size_t samples,
                                  const CodeMeaning& meaning) {
  const std::size_t cells = codes.size() / samples;
  std::vector<std::uint8_t> places(codes.size());
  for (std::size_t cell = 0; cell < cells; ++cell)
    for (std::size_t sample = 0; sample < samples; ++sample)
      places[sample * cells + cell] = meaning.place[codes[cell * samples + sample]];
  return places;
}

/// Moves the A-scans of a section down, or up where a shift is negative. What has no samples any
/// more is not seen.
void Shift(ImagePlot& plot, const std::vector<std::int32_t>& shifts) {
  const std::vector<std::uint8_t> codes = plot.codes;
  const auto samples = static_cast<std::int64_t>(plot.down.quantity);
  plot.unseen.assign(codes.size(), 0);
  for (std::size_t cell = 0; cell < shifts.size(); ++cell)
    for (std::int64_t sample = 0; sample < samples; ++sample) {
      const std::int64_t from = sample - shifts[cell];
      const std::size_t at = static_cast<std::size_t>(sample) * shifts.size() + cell;
      if (from >= 0 && from < samples)
        plot.codes[at] = codes[static_cast<std::size_t>(from) * shifts.size() + cell];
      else
        plot.unseen[at] = 1;
    }
}

void Straighten(Section& section, const DataGroup& group, const CellRange& shown, Cut cut) {
  const std::vector<std::int32_t> shifts = StraighteningShifts(group, shown);
  Shift(section.plot, shifts);
  const std::int64_t moved =
      section.sample + std::int64_t{shifts[cut == Cut::AlongRow ? section.column : section.row]};
  section.sample = static_cast<std::uint32_t>(
      std::clamp<std::int64_t>(moved, 0, std::int64_t{group.SampleQuantity()} - 1));
}

void SetTexts(Section& section, const DataGroup& group, const SectionOptions& options) {
  const bool alongRow = options.cut == Cut::AlongRow;
  section.plot.title =
      Caption(group) + (alongRow ? " · B-scan at " + RowText(group, section.row)
                                 : " · D-scan at " + ColumnText(group, section.column));
  if (!options.position) section.plot.title += ", that of the strongest cell";
  if (options.straighten) section.plot.title += ", straightened by the lateral wave";
  section.plot.notes = {
      "Strongest echo " + AmplitudeText(group, section.percent) + " at " +
      (alongRow ? ColumnPlace(group, section.column) : RowPlace(group, section.row)) + ", " +
      SamplePlace(group, section.sample) + GainText(section.gain)};
}

/// Keeps some of the samples alone.
void Crop(ImagePlot& plot, const IndexRange& samples) {
  const std::size_t width = plot.across.quantity;
  const auto crop = [&](std::vector<std::uint8_t>& cells) {
    if (cells.empty()) return;
    const auto begin = cells.begin() + static_cast<std::ptrdiff_t>(samples.first * width);
    cells = {begin, begin + static_cast<std::ptrdiff_t>(samples.count * width)};
  };
  crop(plot.codes);
  crop(plot.striped);
  crop(plot.unseen);
  plot.down = Part(plot.down, samples);
  if (plot.downAgain) plot.downAgain = Part(*plot.downAgain, samples);
  const auto isOutside = [&](double down) {
    return (down < plot.down.From()) == (down < plot.down.To());
  };
  std::erase_if(plot.downMarks, [&](const Tick& tick) { return isOutside(tick.value); });
  std::erase_if(plot.lines,
                [&](const PlotLine& line) { return isOutside(line.points.front().down); });
  if (plot.marked) plot.marked->down -= samples.first;
}

/// A line across the whole picture at a sample.
PlotLine LineAt(const ImagePlot& plot, double sample, const char* label) {
  const double down = plot.down.At(sample);
  return {{{plot.across.From(), down}, {plot.across.To(), down}}, wallColor, true, label};
}

/// Depths of diffracting tips beside the picture, and over it the waves between which they lie.
void SetTofdDepths(Section& section, const DataGroup& group) {
  if (!group.IsTofd()) return;
  ImagePlot& plot = section.plot;
  const std::optional<TofdScale> scale = TofdScaleOf(group);
  if (!scale) {
    plot.notes.push_back("No depths: " + WhyNoTofdScale(group));
    return;
  }
  if (!(scale->lateralWave < group.SampleQuantity())) {
    plot.notes.emplace_back("No depths: the samples end before the lateral wave");
    return;
  }
  if (scale->lateralWave < 0) plot.notes.emplace_back("The samples begin behind the lateral wave");
  const double deepest = scale->depths.empty() ? 0 : scale->depths.back();
  for (const Tick& tick : RoundTicks(0, deepest, 20).major)
    if (const auto sample = scale->SampleAt(tick.value))
      plot.downMarks.push_back({plot.down.At(*sample), tick.label});
  plot.downMarksTitle = "Depth of a diffracting tip (mm)";
  if (scale->lateralWave >= 0 && scale->lateralWave < group.SampleQuantity())
    plot.lines.push_back(LineAt(plot, scale->lateralWave, "lateral wave"));
  if (scale->backWall) plot.lines.push_back(LineAt(plot, *scale->backWall, "back wall"));
  plot.notes.front() += TipDepthText(group, section.row, section.column, section.sample);
}

void MarkDamage(Section& section, const Samples& samples, const CellRange& shown) {
  std::vector<std::uint8_t> striped(section.plot.codes.size());
  for (std::uint64_t index = 0; index < shown.count; ++index) {
    if (!samples.IsDamaged(shown.At(index))) continue;
    ++section.damagedCells;
    for (std::uint64_t at = index; at < striped.size(); at += shown.count) striped[at] = 1;
  }
  if (section.damagedCells == 0) return;
  section.plot.striped = std::move(striped);
  section.plot.notes.push_back(DamageNote(section.damagedCells));
}

}  // namespace

Section MakeSection(const DataGroup& group, const SectionOptions& options) {
  Samples samples = group.Samples();
  const bool alongRow = options.cut == Cut::AlongRow;
  (alongRow ? CheckRow : CheckColumn)(group, options.position);
  Section section;
  ImagePlot& plot = section.plot;
  plot.across = alongRow ? ColumnAxis(group) : RowAxis(group);
  SampleAxes down = SampleAxesOf(group, options.samples);
  plot.down = std::move(down.first);
  plot.downAgain = std::move(down.again);

  const CellRange searched =
      options.position ? CellsOf(group, options.cut, *options.position) : group.AllCells();
  const IndexRange limits = SamplesBetween(group, options.limits);
  const StrongestSample strongest =
      samples.FindPeaks(searched, Watching(options.quiet), limits).strongest;
  section.row = static_cast<std::uint32_t>(strongest.cell / group.ColumnQuantity());
  section.column = static_cast<std::uint32_t>(strongest.cell % group.ColumnQuantity());
  section.sample = strongest.sample;
  section.percent = group.Percent(strongest.value);
  if (samples.CanAmplify()) section.gain = options.gain.value_or(FittingGain(section.percent));

  const CodeMeaning meaning = MeaningOf(group, samples.Span());
  plot.scale = AmplitudeColors(meaning, group, section.gain);
  const CellRange shown = CellsOf(group, options.cut, alongRow ? section.row : section.column);
  plot.codes = Upright(samples.Codes(shown, section.gain), group.SampleQuantity(), meaning);
  if (options.straighten) Straighten(section, group, shown, options.cut);
  if (limits.Holds(section.sample))  // where straightening has not moved it out
    plot.marked = ImagePlot::Cell{alongRow ? section.column : section.row, section.sample};
  SetTexts(section, group, options);
  SetTofdDepths(section, group);
  MarkDamage(section, samples, shown);
  if (options.limits.AreGiven()) {
    plot.notes.push_back(LimitsText(options.limits));
    Crop(plot, limits);
  }
  SetProportion(plot);
  return section;
}

}  // namespace utdata::program
