#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "document/data_group.h"
#include "document/document.h"
#include "listing/selector.h"
#include "pictures/bscan.h"
#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/new_file.h"
#include "terminal/output.h"
#include "terminal/text.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* example =
    "SELECTOR is the number of a row of 'utdata info', or fields of its JSON that match exactly one data group, as in\n"
    "class=1,channel=0. The soft gain that is not given is as much as the strongest echo of the picture allows.\n"
    "\n"
    "Example:\n"
    "  utdata demo --force && utdata render utdata-demo/weld.fpd --data 0 --view b -o bscan.png\n";

struct RenderOptions {
  std::string file;
  std::string selector;
  std::string view;
  std::string output;
  std::uint32_t row = 0;
  std::uint32_t gain = 0;
  std::string samples = "time";
  bool rowGiven = false;
  bool gainGiven = false;
  bool force = false;
  bool quiet = false;
  bool json = false;
};

/// A picture that has been drawn, and what there is to say about it.
struct Rendering {
  PlotPicture picture;
  std::string title;
  std::string note;
  nlohmann::ordered_json facts;
};

nlohmann::ordered_json AxisFacts(const PlotAxis& axis) {
  return {{"unit", axis.unit}, {"first", axis.first}, {"step", axis.step}, {"quantity", axis.quantity}};
}

Rendering RenderBScan(Host& host, const CGDataTypeFDD& group, const std::string& name, const RenderOptions& options) {
  BScanOptions wanted;
  if (options.rowGiven) wanted.row = options.row;
  if (options.gainGiven) wanted.gain = options.gain;
  wanted.samples = options.samples == "path" ? SampleAxis::Path : SampleAxis::Time;
  wanted.quiet = options.quiet;
  const BScan scan = MakeBScan(host, group, name, wanted);
  const std::string note = scan.plot.notes.front();
  nlohmann::ordered_json facts = {
      {"row", scan.row},
      {"strongest", {{"column", scan.column}, {"sample", scan.sample}, {"percent", scan.percent}}},
      {"gain", scan.gain},
      {"across", AxisFacts(scan.plot.across)},
      {"down", AxisFacts(scan.plot.down)}};
  return {Draw(scan.plot, Font()), scan.plot.title, note, std::move(facts)};
}

/// A view of the command line, the data classes that have it, and what draws it.
struct View {
  const char* name;
  const char* spoken;
  bool (*suits)(std::uint32_t plainClass);
  const char* needs;
  Rendering (*render)(Host&, const CGDataTypeFDD&, const std::string&, const RenderOptions&);
};

constexpr View views[] = {
    {"b", "B-scan", [](std::uint32_t plainClass) { return plainClass == gdata_AScan; }, "A-scans", RenderBScan},
};

const View& FindView(const std::string& name) {
  return *std::find_if(std::begin(views), std::end(views), [&](const View& view) { return name == view.name; });
}

nlohmann::ordered_json Facts(const RenderOptions& options, const Rendering& rendering) {
  const Canvas& canvas = rendering.picture.canvas;
  const Rect& image = rendering.picture.image;
  nlohmann::ordered_json facts = {
      {"path", options.output},
      {"title", rendering.title},
      {"width", canvas.Width()},
      {"height", canvas.Height()},
      {"image", {{"left", image.left}, {"top", image.top}, {"width", image.width}, {"height", image.height}}}};
  facts.update(rendering.facts);
  return facts;
}

void Render(const RenderOptions& options) {
  const InterruptScope interrupts;
  CheckNewFile(options.output, options.force);
  Document document = Document::Load(options.file);
  CheckIsNoFileOf(document, options.output);
  const SelectedGroup selected = SelectGroup(document, options.selector);
  const View& view = FindView(options.view);
  const std::string name = options.file + ": data group " + std::to_string(selected.index);
  if (!view.suits(PlainClass(*selected.group)))
    throw Failure(
        name,
        std::string("has no ") + view.spoken,
        std::string("it is ") + ClassName(*selected.group) + ", and a " + view.spoken + " needs " + view.needs);
  const Rendering rendering = view.render(document.GetHost(), *selected.group, name, options);
  WriteNewFile(options.output, rendering.picture.canvas.Png(), options.force);
  if (options.json)
    PrintResult(Facts(options, rendering).dump(2) + "\n");
  else if (!options.quiet)
    PrintResult(Printable(options.output) + ": " + rendering.title + "\n" + rendering.note + "\n");
}

}  // namespace

void AddRenderVerb(CLI::App& program) {
  CLI::App& verb = *program.add_subcommand("render", "Draws a data group as a picture, through its look-up table");
  const auto options = std::make_shared<RenderOptions>();
  verb.add_option("FILE", options->file, "Inspection file")->required();
  verb.add_option("--data", options->selector, "Data group to draw")->required()->type_name("SELECTOR");
  std::vector<std::string> names;
  for (const View& view : views) names.emplace_back(view.name);
  verb.add_option("--view", options->view, "b: B-scan, samples over columns at a row")
      ->required()
      ->check(CLI::IsMember(names));
  CLI::Option* row =
      verb.add_option("--row", options->row, "Row of the B-scan, from 0; that of the strongest cell if not given");
  CLI::Option* gain = verb.add_option("--gain", options->gain, "Soft gain of 16-bit samples, a whole factor")
                          ->check(CLI::Range(1, 1000));
  verb.add_option("--samples", options->samples, "Sample axis: time, or path (half sound path, true to scale)")
      ->check(CLI::IsMember({"time", "path"}))
      ->capture_default_str();
  verb.add_option("-o,--output", options->output, "Picture to make, a PNG file")->required()->type_name("PNG");
  verb.add_flag("--force", options->force, "Replace an existing file");
  verb.add_flag("--json", options->json, "Print what was drawn and where as JSON");
  verb.add_flag("--quiet", options->quiet, "Print no progress and no result");
  verb.footer(example);
  verb.callback([options, row, gain] {
    options->rowGiven = row->count() > 0;
    options->gainGiven = gain->count() > 0;
    Render(*options);
  });
}

}  // namespace utdata::program
