#include "pictures/section.h"

#include "pictures/amplitude_scale.h"
#include "samples/group_axes.h"
#include "samples/group_samples.h"

namespace utdata::program {
namespace {

CellRange CellsOf(const CGDataTypeFDD& group, Cut cut, std::uint32_t position) {
  return cut == Cut::AlongRow ? CellsOfRow(group, position) : CellsOfColumn(group, position);
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

void SetTexts(Section& section,
              const CGDataTypeFDD& group,
              const GroupAxes& axes,
              const SectionOptions& options) {
  const bool alongRow = options.cut == Cut::AlongRow;
  section.plot.title =
      Caption(group) + (alongRow ? " · B-scan at " + RowText(axes, section.row)
                                 : " · D-scan at " + ColumnText(axes, section.column));
  if (!options.position) section.plot.title += ", that of the strongest cell";
  section.plot.notes = {
      "Strongest echo " + AmplitudeText(axes, section.percent) + " at " +
      (alongRow ? ColumnPlace(axes, section.column) : RowPlace(axes, section.row)) + ", " +
      SamplePlace(axes, section.sample) + GainText(section.gain)};
}

}  // namespace

Section MakeSection(Host& host,
                    const CGDataTypeFDD& group,
                    const std::string& name,
                    const SectionOptions& options) {
  GroupSamples samples(host, group, name);
  const GroupAxes axes(host, group);
  const bool alongRow = options.cut == Cut::AlongRow;
  (alongRow ? CheckRow : CheckColumn)(group, options.position, name);
  Section section;
  ImagePlot& plot = section.plot;
  plot.across = alongRow ? ColumnAxis(axes) : RowAxis(axes);
  SampleAxes down = SampleAxesOf(group, axes, options.samples, name);
  plot.down = std::move(down.first);
  plot.downAgain = std::move(down.again);
  plot.sameScale = plot.across.unit == "mm" && plot.down.unit == "mm";

  const CellRange searched =
      options.position ? CellsOf(group, options.cut, *options.position) : AllCells(group);
  const StrongestSample strongest = samples.FindPeaks(searched, options.quiet).strongest;
  section.row = static_cast<std::uint32_t>(strongest.cell / group.columnQuantity);
  section.column = static_cast<std::uint32_t>(strongest.cell % group.columnQuantity);
  section.sample = strongest.sample;
  section.percent = axes.Percent(strongest.value);
  if (samples.CanAmplify()) section.gain = options.gain.value_or(FittingGain(section.percent));

  const CodeMeaning meaning = MeaningOf(group, axes);
  plot.scale = AmplitudeScale(meaning, axes, section.gain);
  const CellRange shown = CellsOf(group, options.cut, alongRow ? section.row : section.column);
  plot.codes = Upright(samples.Codes(shown, section.gain), group.sampleQuantity, meaning);
  plot.marked = ImagePlot::Cell{alongRow ? section.column : section.row, section.sample};
  SetTexts(section, group, axes, options);
  return section;
}

}  // namespace utdata::program
