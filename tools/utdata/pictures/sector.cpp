#include "pictures/sector.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "pictures/amplitude_scale.h"
#include "pictures/captions.h"
#include "pictures/part_plot.h"
#include "terminal/progress.h"

namespace utdata::program {
namespace {

const char* AcrossTitle(SectorAcross across) {
  switch (across) {
    case SectorAcross::Columns:
      return "Position along the columns";
    case SectorAcross::Rows:
      return "Position along the rows";
    case SectorAcross::ScanPosition:
      break;
  }
  return "Distance from the scan position";
}

bool HasLegs(const SectorView& view) {
  return view.beams.front().outsideRadius == 0 &&
         std::any_of(view.lines.begin(), view.lines.end(), [](const SectorLine& line) {
           return line.kind == SectorLine::Kind::BackWall;
         });
}

void SetImage(Sector& sector) {
  const SectorView& view = sector.view;
  ImagePlot& plot = sector.plot;
  plot.across = PartAxis(view.across, AcrossTitle(view.acrossOf));
  plot.down = PartAxis(view.down, HasLegs(view) ? "Depth, unfolded" : "Depth");
  plot.sameScale = true;
  const bool hasDamage = std::any_of(
      view.beams.begin(), view.beams.end(), [](const SectorBeam& beam) { return beam.isDamaged; });
  SetPercents(plot, view.percents, sector.gain);
  if (!hasDamage) return;
  for (const SectorView::Source& source : view.pixels) {
    const bool isSeen = source.beam != SectorView::Source::nothing;
    plot.striped.push_back(isSeen && view.beams[source.beam].isDamaged ? 1 : 0);
  }
}

void SetLines(Sector& sector) {
  for (const SectorLine& line : sector.view.lines) {
    PlotLine shown;
    for (const SectorLine::Point& point : line.points)
      shown.points.push_back({point.across, point.down});
    shown.color = line.kind == SectorLine::Kind::Weld ? weldColor : wallColor;
    shown.isDashed = line.kind == SectorLine::Kind::Surface;
    if (line.kind == SectorLine::Kind::BackWall) shown.label = "back wall";
    if (line.kind == SectorLine::Kind::Surface && line.leg > 0)
      shown.label = "surface, skip " + std::to_string(line.leg / 2);
    sector.plot.lines.push_back(std::move(shown));
  }
}

std::string StrongestText(const Sector& sector) {
  const SectorView& view = sector.view;
  if (!view.strongest) return "No sample lies between these half paths";
  const SectorEcho& echo = *view.strongest;
  const SectorBeam& beam = view.beams[echo.beam];
  return "Strongest echo " + AmplitudeText(beam.group, echo.percent) + " at " +
         AngleText(beam.refractedAngle) + ", " + LengthText(echo.halfPath) +
         " half path: " + LengthText(echo.point.depth) + " deep, " +
         LengthText(echo.point.distance) + " from the index point" +
         (beam.thickness > 0 ? ", leg " + std::to_string(echo.point.leg) : "") +
         GainText(sector.gain);
}

void SetSectorTexts(Sector& sector, const DataGroup& group, const SectorPlotOptions& options) {
  const SectorView& view = sector.view;
  const DataGroup& cells = view.beams.front().group;
  std::string title = Caption(group) + " · sector scan of " + std::to_string(view.beams.size()) +
                      " beams, " + AngleText(view.beams.front().refractedAngle) + " to " +
                      AngleText(view.beams.back().refractedAngle);
  if (cells.RowQuantity() > 1) title += " at " + RowText(cells, view.row);
  if (cells.ColumnQuantity() > 1) title += ", " + ColumnText(cells, view.column);
  const bool isFound =
      (cells.RowQuantity() > 1 && !options.row) || (cells.ColumnQuantity() > 1 && !options.column);
  if (isFound) title += ", that of the strongest cell";
  sector.plot.title = std::move(title);
  sector.plot.notes = {StrongestText(sector)};
  for (const std::string& remark : view.remarks) sector.plot.notes.push_back(remark);
  if (sector.damagedCells > 0) sector.plot.notes.push_back(DamageNote(sector.damagedCells));
}

}  // namespace

Sector MakeSectorPlot(const DataGroup& group, const SectorPlotOptions& options) {
  SectorOptions wanted;
  wanted.row = options.row;
  wanted.column = options.column;
  wanted.from = options.limits.from.value_or(wanted.from);
  wanted.to = options.limits.to.value_or(wanted.to);
  Sector sector;
  sector.view = MakeSector(group, wanted, Watching(options.quiet));
  const SectorView& view = sector.view;
  const double percent = view.strongest ? std::abs(view.strongest->percent) : 100;
  sector.gain = options.gain.value_or(FittingGain(percent));
  sector.plot.scale = AmplitudeColors(CodeMeaning(), view.beams.front().group, sector.gain);
  sector.damagedCells = static_cast<std::uint64_t>(std::count_if(
      view.beams.begin(), view.beams.end(), [](const SectorBeam& beam) { return beam.isDamaged; }));
  SetImage(sector);
  SetLines(sector);
  if (view.strongest) {
    const auto cell = [](const AxisScale& axis, double value) {
      return static_cast<std::size_t>(
          std::clamp(std::round(axis.IndexOf(value)), 0.0, axis.quantity - 1.0));
    };
    sector.plot.marked = ImagePlot::Cell{cell(view.across, view.strongest->across),
                                         cell(view.down, view.strongest->down)};
  }
  SetSectorTexts(sector, group, options);
  return sector;
}

}  // namespace utdata::program
