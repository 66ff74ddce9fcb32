#include "demo/demo_pictures.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "demo/demo_inspection.h"
#include "document/data_group.h"
#include "pictures/cscan.h"
#include "pictures/section.h"
#include "terminal/failure.h"
#include "terminal/new_file.h"
#include "terminal/quantity.h"

namespace utdata::program {
namespace {

std::uint32_t Nearest(double position, double step) {
  return static_cast<std::uint32_t>(std::lround(position / step));
}

const CGDataTypeFDD& AmplitudesOf(const Document& document, std::uint32_t gateId) {
  const auto& groups = document.Groups().data;
  const auto found = std::find_if(groups.begin(), groups.end(), [=](const CGDataTypeFDD* group) {
    return PlainClass(*group) == gdata_CScanAmplitude && group->gateId == gateId;
  });
  if (found == groups.end())
    throw Failure(
        document.Path(), "cannot be drawn", "it has no C-scan of gate " + std::to_string(gateId));
  return **found;
}

}  // namespace

std::string DrawCrack(const Document& document,
                      const WeldScan& scan,
                      const std::string& path,
                      bool replace) {
  SectionOptions view;
  view.position = Nearest(scan.crack.centre, scan.rowStep);
  view.gain = 3;
  view.samples = SampleAxis::Path;
  view.quiet = true;
  Section crack =
      MakeSection(document.GetHost(), *document.Groups().data.GetHead(), document.Path(), view);
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

std::string DrawFlaws(const Document& document,
                      const WeldScan& scan,
                      const std::string& path,
                      bool replace) {
  CScanOptions view;
  view.quiet = true;
  CScan flaws =
      MakeCScan(document.GetHost(), AmplitudesOf(document, flawGate), document.Path(), view);
  const std::string crack = "crack at " + Millimetres(scan.crack.x);
  flaws.plot.marked = ImagePlot::Cell{Nearest(scan.crack.x, scan.columnStep),
                                      Nearest(scan.crack.centre, scan.rowStep)};
  flaws.plot.notes = {"Three side-drilled holes, and the " + crack + " between them"};
  WriteNewFile(path, Draw(flaws.plot, Font()).canvas.Png(), replace);
  return "the gate from above: three holes, and the " + crack;
}

}  // namespace utdata::program
