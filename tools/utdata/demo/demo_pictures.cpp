#include "demo/demo_pictures.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "demo/demo_inspection.h"
#include "pictures/cscan.h"
#include "pictures/section.h"
#include "pictures/sector.h"
#include "terminal/failure.h"
#include "terminal/new_file.h"
#include "terminal/quantity.h"

namespace utdata::program {
namespace {

std::uint32_t Nearest(double position, double step) {
  return static_cast<std::uint32_t>(std::lround(position / step));
}

}  // namespace

std::string DrawCrack(const Inspection& inspection,
                      const WeldScan& scan,
                      const std::string& path,
                      bool replace) {
  SectionOptions view;
  view.position = Nearest(scan.crack.centre, scan.rowStep);
  view.gain = 3;
  view.samples = SampleAxis::Path;
  view.quiet = true;
  Section crack = MakeSection(inspection.Data().front(), view);
  const double depth = scan.thickness - scan.crack.height;
  const std::string tip =
      "tip at " + Millimetres(scan.crack.x) + ", " + Millimetres(depth) + " deep";
  // The strongest echo is the surface's, which nobody looks for here.
  crack.plot.marked = ImagePlot::Cell{Nearest(scan.crack.x, scan.columnStep),
                                      Nearest(2 * depth / scan.soundSpeed, scan.sampleStep)};
  crack.plot.notes = {"Crack " + tip + ", between three side-drilled holes; back wall at " +
                      Millimetres(scan.thickness) + " · soft gain × " + std::to_string(crack.gain)};
  WriteNewFile(path, Draw(crack.plot, Font()).canvas.Png(), replace);
  return "the crack from the side, its " + tip;
}

std::string DrawFlaws(const Inspection& inspection,
                      const WeldScan& scan,
                      const std::string& path,
                      bool replace) {
  CScanOptions view;
  view.quiet = true;
  CScan flaws =
      MakeCScan(inspection.Data({.dataClass = gdata_CScanAmplitude, .gate = flawGate}), view);
  const std::string crack = "crack at " + Millimetres(scan.crack.x);
  flaws.plot.marked = ImagePlot::Cell{Nearest(scan.crack.x, scan.columnStep),
                                      Nearest(scan.crack.centre, scan.rowStep)};
  flaws.plot.notes = {"Three side-drilled holes, and the " + crack + " between them"};
  WriteNewFile(path, Draw(flaws.plot, Font()).canvas.Png(), replace);
  return "the gate from above: three holes, and the " + crack;
}

std::string DrawSector(const Inspection& inspection,
                       const ButtWeld& weld,
                       const std::string& path,
                       bool replace) {
  const WeldFlaw& crack = weld.flaws.front();
  SectorPlotOptions view;
  view.row = Nearest((crack.from + crack.to) / 2, weld.rowStep);
  view.quiet = true;
  Sector sector = MakeSectorPlot(inspection.Masters().front(), view);
  WriteNewFile(path, Draw(sector.plot, Font()).canvas.Png(), replace);
  return "the beams from the left, the crack at the root of the weld at " + Millimetres(crack.x);
}

}  // namespace utdata::program
