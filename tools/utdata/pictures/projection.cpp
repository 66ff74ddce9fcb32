#include "pictures/projection.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "pictures/amplitude_scale.h"
#include "pictures/captions.h"
#include "pictures/part_plot.h"
#include "terminal/progress.h"

namespace utdata::program {
namespace {

const char* NameOfView(PartView view) {
  switch (view) {
    case PartView::Top:
      return "top view";
    case PartView::Side:
      return "side view";
    case PartView::End:
      break;
  }
  return "end view";
}

std::string EchoText(const Projection& shown) {
  if (!shown.strongest) return "No sample lies between these half paths";
  const ProjectedEcho& echo = *shown.strongest;
  const DataGroup& beam = shown.view.beams[echo.beam];
  return "Strongest echo " + AmplitudeText(beam, echo.percent) + " at column position " +
         LengthText(echo.place.column) + ", row position " + LengthText(echo.place.row) + ", " +
         LengthText(echo.point.depth) + " deep, leg " + std::to_string(echo.point.leg) +
         GainText(shown.gain);
}

std::string TitleOf(const std::vector<DataGroup>& groups, const Projection& shown) {
  std::string title = Caption(groups.front());
  if (groups.size() > 1) title += " and " + std::to_string(groups.size() - 1) + " more";
  const std::size_t beams = shown.view.beams.size();
  return title + " · " + NameOfView(shown.view.view) + " of " + std::to_string(beams) +
         (beams == 1 ? " beam" : " beams");
}

void MarkStrongest(Projection& shown) {
  const auto largest = std::max_element(
      shown.view.percents.begin(), shown.view.percents.end(), [](float a, float b) {
        return std::isnan(a) ? !std::isnan(b) : std::abs(a) < std::abs(b);
      });
  const auto pixel = static_cast<std::size_t>(largest - shown.view.percents.begin());
  const std::size_t width = shown.view.across.quantity;
  shown.plot.marked = ImagePlot::Cell{pixel % width, pixel / width};
}

}  // namespace

Projection MakeProjectionPlot(const std::vector<DataGroup>& groups,
                              PartView wanted,
                              const ProjectionPlotOptions& options) {
  ProjectionOptions limits;
  limits.from = options.limits.from.value_or(limits.from);
  limits.to = options.limits.to.value_or(limits.to);
  Projection shown;
  shown.view = MakeProjection(groups, wanted, limits, Watching(options.quiet));
  shown.strongest = shown.view.Strongest();
  ImagePlot& plot = shown.plot;
  plot.across =
      PartAxis(shown.view.across,
               wanted == PartView::Side ? "Position along the rows" : "Position along the columns");
  plot.down =
      PartAxis(shown.view.down, wanted == PartView::Top ? "Position along the rows" : "Depth");
  shown.gain = options.gain.value_or(
      FittingGain(shown.strongest ? std::abs(shown.strongest->percent) : 100));
  plot.scale = AmplitudeColors(CodeMeaning(), shown.view.beams.front(), shown.gain);
  SetPercents(plot, shown.view.percents, shown.gain);
  for (const auto& outline : shown.view.weld) {
    PlotLine line;
    for (const SectorLine::Point& point : outline)
      line.points.push_back({point.across, point.down});
    line.color = weldColor;
    plot.lines.push_back(std::move(line));
  }
  if (shown.strongest) MarkStrongest(shown);
  plot.title = TitleOf(groups, shown);
  plot.notes = {EchoText(shown)};
  plot.notes.insert(plot.notes.end(), shown.view.remarks.begin(), shown.view.remarks.end());
  SetProportion(plot);
  return shown;
}

}  // namespace utdata::program
