#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "listing/damage.h"
#include "listing/selector.h"
#include "pictures/ascan.h"
#include "pictures/cscan.h"
#include "pictures/projection.h"
#include "pictures/section.h"
#include "pictures/sector.h"
#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/new_file.h"
#include "terminal/output.h"
#include "terminal/text.h"
#include "verbs/options.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* renderExample =
    R"(SELECTOR is the number of a row of 'utdata info', or fields of its JSON that match exactly
one data group, as in class=1,channel=0. Without --gain, the soft gain is the largest with
which the strongest echo of the picture stays within the scale. A sector scan (--view s) shows
all beams of a channel at one cell; SELECTOR may name any of them, or the channel. Behind the
first leg it is unfolded: the part is mirrored at its back wall and its surface. Top, side and end
views show the A-scans of all groups that SELECTOR matches, without TOFD, where they lie in the
part: the weld runs along the rows.

Example:
  utdata demo --force && utdata render utdata-demo/weld.fpd --data 0 --view b -o bscan.png
  utdata render utdata-demo/weld.fpd --data 0 --view a --row 5 --column 132 -o ascan.png
)";

struct RenderOptions {
  std::string file;
  std::string selector;
  std::string view;
  std::string output;
  std::optional<std::uint32_t> row;
  std::optional<std::uint32_t> column;
  std::optional<std::uint32_t> gain;
  PathLimits limits;
  std::string samples = "time";
  bool samplesGiven = false;
  std::string palette;
  bool straighten = false;
  std::string relativeTo;
  bool force = false;
  bool quiet = false;
  bool json = false;
  SampleTables tables = SampleTables::Mapped;
  bool acceptDamage = false;

  [[nodiscard]] SampleAxis Samples() const {
    return samples == "path" ? SampleAxis::Path : SampleAxis::Time;
  }
};

/// A picture that has been drawn, and what there is to say about it.
struct Rendering {
  PlotPicture picture;
  std::string title;
  std::vector<std::string> notes;
  nlohmann::ordered_json facts;
};

using Groups = std::vector<DataGroup>;

nlohmann::ordered_json AxisFacts(const PlotAxis& axis) {
  return {
      {"unit", axis.unit}, {"first", axis.first}, {"step", axis.step}, {"quantity", axis.quantity}};
}

/// In the palette that is wanted.
PlotPicture Drawn(ImagePlot& plot, const RenderOptions& options) {
  for (const Palette& palette : palettes)
    if (options.palette == palette.name) plot.scale.colors = &palette.colors();
  return Draw(plot, Font());
}

Rendering RenderAScan(const Groups& groups, const RenderOptions& options) {
  const DataGroup& group = groups.front();
  const AScan scan = MakeAScan(group,
                               {options.row,
                                options.column,
                                options.gain,
                                options.Samples(),
                                options.limits,
                                options.quiet,
                                options.relativeTo == "dac"});
  nlohmann::ordered_json gates = nlohmann::ordered_json::array();
  for (const GateBar& gate : scan.plot.gates)
    gates.push_back(
        {{"name", gate.label}, {"from", gate.from}, {"to", gate.to}, {"level", gate.level}});
  nlohmann::ordered_json facts = {
      {"row", scan.row},
      {"column", scan.column},
      {"strongest", {{"sample", scan.sample}, {"percent", scan.percent}}},
      {"gain", scan.gain},
      {"damaged_cells", scan.damagedCells},
      {"across", AxisFacts(scan.plot.across)},
      {"values", {{"unit", "%"}, {"low", scan.plot.low}, {"high", scan.plot.high}}},
      {"gates", std::move(gates)}};
  if (scan.decibelsToDac) facts["strongest"]["decibels_to_dac"] = *scan.decibelsToDac;
  return {Draw(scan.plot, Font()), scan.plot.title, scan.plot.notes, std::move(facts)};
}

Rendering RenderSection(const DataGroup& group, const RenderOptions& options, Cut cut) {
  const bool alongRow = cut == Cut::AlongRow;
  Section section = MakeSection(group,
                                {cut,
                                 alongRow ? options.row : options.column,
                                 options.gain,
                                 options.Samples(),
                                 options.limits,
                                 options.straighten,
                                 options.quiet});
  nlohmann::ordered_json facts;
  facts[alongRow ? "row" : "column"] = alongRow ? section.row : section.column;
  facts["strongest"] = {{alongRow ? "column" : "row", alongRow ? section.column : section.row},
                        {"sample", section.sample},
                        {"percent", section.percent}};
  facts["gain"] = section.gain;
  facts["damaged_cells"] = section.damagedCells;
  facts["across"] = AxisFacts(section.plot.across);
  facts["down"] = AxisFacts(section.plot.down);
  for (const PlotLine& line : section.plot.lines)
    facts["lines"].push_back({{"name", line.label}, {"down", line.points.front().down}});
  return {Drawn(section.plot, options), section.plot.title, section.plot.notes, std::move(facts)};
}

Rendering RenderBScan(const Groups& groups, const RenderOptions& options) {
  return RenderSection(groups.front(), options, Cut::AlongRow);
}

Rendering RenderDScan(const Groups& groups, const RenderOptions& options) {
  return RenderSection(groups.front(), options, Cut::AlongColumn);
}

Rendering RenderCScan(const Groups& groups, const RenderOptions& options) {
  const DataGroup& group = groups.front();
  CScan scan = MakeCScan(group, {options.gain, options.limits, options.quiet});
  const ColorScale& scale = scan.plot.scale;
  const bool hasPositions = group.HoldsPositions();
  nlohmann::ordered_json cell = {{"row", scan.row}, {"column", scan.column}};
  if (group.HasAScans()) cell["sample"] = scan.sample;
  cell[hasPositions ? "position" : "percent"] = scan.value;
  nlohmann::ordered_json facts = {
      {hasPositions ? "farthest" : "strongest", std::move(cell)},
      {"gain", scan.gain},
      {"damaged_cells", scan.damagedCells},
      {"across", AxisFacts(scan.plot.across)},
      {"down", AxisFacts(scan.plot.down)},
      {"values", {{"unit", scale.unit}, {"low", scale.low}, {"high", scale.high}}}};
  return {Drawn(scan.plot, options), scan.plot.title, scan.plot.notes, std::move(facts)};
}

/// A SectorEcho or ProjectedEcho of a beam.
template <class Echo>
nlohmann::ordered_json EchoFacts(const DataGroup& beam, const Echo& echo) {
  return {{"data", beam.Index()},
          {"sample", echo.sample},
          {"percent", echo.percent},
          {"half_path", echo.halfPath},
          {"depth", echo.point.depth},
          {"leg", echo.point.leg}};
}

Rendering RenderSector(const Groups& groups, const RenderOptions& options) {
  const DataGroup& group = groups.front();
  Sector sector = MakeSectorPlot(
      group, {options.row, options.column, options.limits, options.gain, options.quiet});
  const SectorView& view = sector.view;
  nlohmann::ordered_json facts = {
      {"row", view.row}, {"column", view.column}, {"beams", view.beams.size()}};
  if (view.strongest) {
    const SectorEcho& echo = *view.strongest;
    const SectorBeam& beam = view.beams[echo.beam];
    facts["strongest"] = EchoFacts(beam.group, echo);
    facts["strongest"].update({{"angle", beam.refractedAngle},
                               {"distance", echo.point.distance},
                               {"across", echo.across},
                               {"down", echo.down}});
  }
  facts["gain"] = sector.gain;
  facts["damaged_cells"] = sector.damagedCells;
  facts["across"] = AxisFacts(sector.plot.across);
  facts["down"] = AxisFacts(sector.plot.down);
  facts["remarks"] = view.remarks;
  return {Drawn(sector.plot, options), sector.plot.title, sector.plot.notes, std::move(facts)};
}

Rendering RenderProjection(const Groups& groups, const RenderOptions& options, PartView wanted) {
  Projection shown =
      MakeProjectionPlot(groups, wanted, {options.limits, options.gain, options.quiet});
  nlohmann::ordered_json facts = {{"beams", shown.view.beams.size()}};
  if (shown.strongest) {
    const ProjectedEcho& echo = *shown.strongest;
    facts["strongest"] = EchoFacts(shown.view.beams[echo.beam], echo);
    facts["strongest"].update({{"row", echo.row},
                               {"column", echo.column},
                               {"column_position", echo.place.column},
                               {"row_position", echo.place.row}});
  }
  facts["gain"] = shown.gain;
  facts["across"] = AxisFacts(shown.plot.across);
  facts["down"] = AxisFacts(shown.plot.down);
  facts["remarks"] = shown.view.remarks;
  return {Drawn(shown.plot, options), shown.plot.title, shown.plot.notes, std::move(facts)};
}

Rendering RenderTop(const Groups& groups, const RenderOptions& options) {
  return RenderProjection(groups, options, PartView::Top);
}
Rendering RenderSide(const Groups& groups, const RenderOptions& options) {
  return RenderProjection(groups, options, PartView::Side);
}
Rendering RenderEnd(const Groups& groups, const RenderOptions& options) {
  return RenderProjection(groups, options, PartView::End);
}

bool HasAScans(const DataGroup& group) { return group.HasAScans(); }
bool HasCScan(const DataGroup& group) {
  return group.HasAScans() || group.Class() == gdata_CScanAmplitude ||
         group.Class() == gdata_CScanPosition;
}

enum ViewTraits : unsigned {
  takesRow = 1,
  takesColumn = 2,
  hasSampleAxis = 4,
  showsBeams = 8,      ///< all of a channel, in the part
  showsChannels = 16,  ///< as many as the selector names
  isSection = 32,      ///< A-scans side by side
  isCurve = 64,        ///< has no colours
};

/// A view of the command line, the data classes and options that it has, and what draws it.
struct View {
  const char* name;
  const char* spoken;
  bool (*suits)(const DataGroup&);
  const char* needs;
  unsigned traits;
  Rendering (*render)(const Groups&, const RenderOptions&);

  [[nodiscard]] bool Has(ViewTraits trait) const { return (traits & trait) != 0; }
};

constexpr const char* ascans = "A-scans";
constexpr unsigned ofPart = showsBeams | showsChannels;
constexpr View views[] = {
    {"a",
     "A-scan",
     HasAScans,
     ascans,
     takesRow | takesColumn | hasSampleAxis | isCurve,
     RenderAScan},
    {"b", "B-scan", HasAScans, ascans, takesRow | hasSampleAxis | isSection, RenderBScan},
    {"c", "C-scan", HasCScan, "A-scans, amplitudes or positions", 0, RenderCScan},
    {"d", "D-scan", HasAScans, ascans, takesColumn | hasSampleAxis | isSection, RenderDScan},
    {"s", "sector scan", HasAScans, ascans, takesRow | takesColumn | showsBeams, RenderSector},
    {"top", "top view", HasAScans, ascans, ofPart, RenderTop},
    {"side", "side view", HasAScans, ascans, ofPart, RenderSide},
    {"end", "end view", HasAScans, ascans, ofPart, RenderEnd},
};

const View& FindView(const std::string& name) {
  return *std::find_if(
      std::begin(views), std::end(views), [&](const View& view) { return name == view.name; });
}

std::string Article(const View& view) { return view.name == std::string("end") ? "an " : "a "; }

/// An option that a view has no use for is a mistake, which the user should hear of.
void CheckOptions(const RenderOptions& options) {
  const View& view = FindView(options.view);
  const auto check = [&](const char* option, bool isGiven, bool isTaken) {
    if (isGiven && !isTaken)
      throw CLI::ValidationError(option, Article(view) + view.spoken + " takes none");
  };
  check("--row", options.row.has_value(), view.Has(takesRow));
  check("--column", options.column.has_value(), view.Has(takesColumn));
  check("--samples", options.samplesGiven, view.Has(hasSampleAxis));
  check("--palette", !options.palette.empty(), !view.Has(isCurve));
  check("--relative-to", !options.relativeTo.empty(), view.Has(isCurve));
  check("--straighten", options.straighten, view.Has(isSection));
}

nlohmann::ordered_json Facts(const RenderOptions& options, const Rendering& rendering) {
  const Canvas& canvas = rendering.picture.canvas;
  const Rect& image = rendering.picture.image;
  nlohmann::ordered_json facts = {{"path", options.output},
                                  {"title", rendering.title},
                                  {"width", canvas.Width()},
                                  {"height", canvas.Height()},
                                  {"image",
                                   {{"left", image.left},
                                    {"top", image.top},
                                    {"width", image.width},
                                    {"height", image.height}}}};
  facts.update(rendering.facts);
  return facts;
}

std::string Text(const RenderOptions& options, const Rendering& rendering) {
  std::string text = Printable(options.output) + ": " + rendering.title + "\n";
  for (const std::string& note : rendering.notes) text += note + "\n";
  return text;
}

/// One, or as many as the view shows.
Groups GroupsOf(const Inspection& inspection, const View& view, const std::string& selector) {
  if (!view.Has(showsBeams)) return {SelectGroup(inspection, selector)};
  Groups channels = SelectChannels(inspection, selector);
  if (channels.size() > 1 && !view.Has(showsChannels)) return {SelectGroup(inspection, selector)};
  return channels;
}

void Render(const RenderOptions& options) {
  CheckOptions(options);
  const InterruptScope interrupts;
  CheckNewFile(options.output, options.force);
  const Inspection inspection =
      OpenInspection(options.file, options.tables, options.quiet, options.acceptDamage);
  CheckNotInput(inspection, options.output);
  const View& view = FindView(options.view);
  const Groups groups = GroupsOf(inspection, view, options.selector);
  const DataGroup& group = groups.front();
  if (!view.suits(group))
    throw Failure(group.Name(),
                  std::string("has no ") + view.spoken,
                  std::string("it is ") + group.ClassName() + ", and " + Article(view) +
                      view.spoken + " needs " + view.needs);
  const Rendering rendering = view.render(groups, options);
  WarnOfDamage(inspection);
  WriteNewFile(options.output, rendering.picture.canvas.Png(), options.force);
  if (options.json)
    PrintResult(Facts(options, rendering).dump(2) + "\n");
  else if (!options.quiet)
    PrintResult(Text(options, rendering));
}

/// A name that says another kind of picture is refused: what is made is a PNG file.
std::string CheckPictureName(const std::string& path) {
  constexpr std::array others = {".jpg", ".jpeg", ".gif", ".bmp", ".tif", ".tiff", ".webp", ".svg"};
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& letter : extension)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  if (std::find(others.begin(), others.end(), extension) == others.end()) return {};
  return "'" + path + "' is no name of a PNG file, which is what is made";
}

}  // namespace

void AddRenderVerb(CLI::App& program) {
  CLI::App& verb = *program.add_subcommand(
      "render", "Draws a data group as a picture, through its look-up table");
  const auto options = std::make_shared<RenderOptions>();
  verb.add_option("FILE", options->file, "Inspection file")->required();
  verb.add_option("--data", options->selector, "Data group to draw")
      ->required()
      ->type_name("SELECTOR");
  std::vector<std::string> names;
  for (const View& view : views) names.emplace_back(view.name);
  verb.add_option("--view",
                  options->view,
                  "a: A-scan, one cell with its gates; b: B-scan, samples over the columns of a "
                  "row; c: C-scan, rows "
                  "over columns; "
                  "d: D-scan, samples over the rows of a column; "
                  "s: sector scan, all beams of a channel at a cell, true to scale; "
                  "top, side, end: the largest amplitudes of all beams in the part, rows over "
                  "columns, depth over rows, depth over columns")
      ->required()
      ->check(CLI::IsMember(names));
  verb.add_option(
      "--row",
      options->row,
      "Row of an A-, B- or sector scan, from 0; that of the strongest cell if not given");
  verb.add_option(
      "--column",
      options->column,
      "Column of an A-, D- or sector scan, from 0; that of the strongest cell if not given");
  verb.add_flag("--straighten",
                options->straighten,
                "Move each A-scan of a TOFD B- or D-scan so that its lateral wave lies where the "
                "separation of the probes has it");
  verb.add_option("--relative-to",
                  options->relativeTo,
                  "dac: show the echo of an A-scan that lies highest over the DAC curve of the "
                  "channel, with its level relative to it")
      ->check(CLI::IsMember({"dac"}));
  verb.add_option("--from",
                  options->limits.from,
                  "Half path in mm from which samples are shown, and the strongest echo is looked "
                  "for: behind the initial pulse. A sector scan shows all");
  verb.add_option("--to", options->limits.to, "Half path in mm up to which they are");
  std::vector<std::string> paletteNames;
  for (const Palette& palette : palettes) paletteNames.emplace_back(palette.name);
  verb.add_option("--palette",
                  options->palette,
                  "Colours of amplitudes; grey for TOFD data and heat for others if not given")
      ->check(CLI::IsMember(paletteNames));
  verb.add_option("--gain", options->gain, "Soft gain of 16-bit samples, a whole factor")
      ->check(CLI::Range(1, 1000));
  CLI::Option* samples =
      verb.add_option("--samples",
                      options->samples,
                      "Sample axis: time, or path (half sound path, true to scale)")
          ->check(CLI::IsMember({"time", "path"}))
          ->capture_default_str();
  verb.add_option("-o,--output", options->output, "Picture to make, a PNG file")
      ->required()
      ->check(CLI::Validator(CheckPictureName, ""))
      ->type_name("PNG");
  verb.add_flag("--force", options->force, "Replace an existing file");
  AddTables(verb, options->tables);
  AddAcceptDamage(verb, options->acceptDamage);
  verb.add_flag("--json", options->json, "Print what was drawn and where as JSON");
  verb.add_flag("--quiet", options->quiet, "Print no progress and no result");
  verb.footer(renderExample);
  verb.callback([options, samples] {
    options->samplesGiven = samples->count() > 0;
    Render(*options);
  });
}

}  // namespace utdata::program
