#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "document/data_group.h"
#include "document/document.h"
#include "gating/gate_groups.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "verbs/options.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* gateExplanation =
    "The gate covers round(width / sample step) samples from sample round((start - sample offset) "
    "/ sample step). Its\n"
    "amplitude is the largest absolute value in it, 100 % being the larger magnitude of the "
    "samples' range; its "
    "position\n"
    "is the index of the sample where that first occurs, and 0 in a cell whose amplitude is below "
    "the threshold.\n"
    "\n"
    "Each data group with A-scans of the channel gets both C-scans. A gate that is there already "
    "is changed to the "
    "one\n"
    "given; one that has C-scans already is refused.\n"
    "\n";

constexpr const char* gateExample =
    "Example:\n"
    "  utdata demo --force\n"
    "  utdata gate utdata-demo/weld.fpd --channel 0 --gate 3 --start 4 --width 2 --threshold 10 "
    "--as companion\n";

struct GateOptions {
  std::string file;
  GateSettings gate;
  double start = 0;  // µs
  double width = 0;  // µs
  ChangeOutput output;
  Tables tables = Tables::Mapped;
  bool json = false;
  bool quiet = false;
};

/// The strongest cell of a group, in every way to name it.
struct Strongest {
  explicit Strongest(const GatedGroup& group)
      : cell(StrongestCell(group)),
        row(cell / group.ascans->group->columnQuantity),
        column(cell % group.ascans->group->columnQuantity),
        value(group.cells.amplitudes[cell]),
        position(group.cells.positions[cell]),
        percent(PercentOf(group, cell)) {}

  std::size_t cell;
  std::size_t row;
  std::size_t column;
  std::uint16_t value;
  std::uint16_t position;
  double percent;
};

double Rounded(double value) { return std::round(value * 10) / 10; }

std::string GroupText(const GatedGroup& group) {
  const CGDataTypeFDD& ascans = *group.ascans->group;
  const GateWindow& window = group.window;
  std::string text = Label(ascans) + " " + std::to_string(ascans.rowQuantity) + " rows x " +
                     std::to_string(ascans.columnQuantity) + " columns, samples " +
                     std::to_string(window.first) + " to " +
                     std::to_string(window.first + window.quantity - 1);
  if (window.isCut) text += " (the gate reaches beyond the A-scans)";
  const Strongest strongest(group);
  if (strongest.value == 0) return text + "; no echo";
  text += "; strongest echo " + Percent(Rounded(strongest.percent)) + " (" +
          Decibels(Rounded(20 * std::log10(strongest.percent / 100))) + ") in row " +
          std::to_string(strongest.row) + ", column " + std::to_string(strongest.column);
  if (strongest.position == 0) return text;
  const double time = ascans.sampleOffset + double{ascans.sampleResolution} * strongest.position;
  return text + " at sample " + std::to_string(strongest.position) + ", " + Microseconds(time);
}

std::string Text(const GateOptions& options,
                 const GatedInspection& gated,
                 const std::string& written) {
  std::string text = "gate " + std::to_string(gated.gate.gateId) + " of channel " +
                     std::to_string(gated.gate.channelId) +
                     (gated.isNewGate ? " added: " : " changed: ") + Number(options.start) +
                     " to " + Number(options.start + options.width) + " µs";
  if (options.gate.threshold) text += ", threshold " + Percent(*options.gate.threshold);
  text += "\n";
  for (const GatedGroup& group : gated.groups) text += Printable(GroupText(group)) + "\n";
  return text + "written to " + Printable(written) + ": amplitude and position C-scans\n";
}

Json GroupJson(const GatedGroup& group) {
  const Strongest strongest(group);
  const CGDataTypeFDD& ascans = *group.ascans->group;
  return {{"data", group.ascans->index},
          {"sub_channel", ascans.subChannelId},
          {"patch", ascans.GetPatchID()},
          {"first_sample", group.window.first},
          {"sample_quantity", group.window.quantity},
          {"rows", ascans.rowQuantity},
          {"columns", ascans.columnQuantity},
          {"full_scale", group.fullScale},
          {"strongest",
           {{"row", strongest.row},
            {"column", strongest.column},
            {"amplitude", strongest.value},
            {"percent", strongest.percent},
            {"position", strongest.position}}}};
}

Json ResultJson(const GateOptions& options,
                const GatedInspection& gated,
                const std::string& written) {
  const CGGateTypeDescr& gate = gated.gate;
  Json groups = Json::array();
  for (const GatedGroup& group : gated.groups) groups.push_back(GroupJson(group));
  return {{"path", options.file},
          {"written", written},
          {"gate",
           {{"gate", gate.gateId},
            {"channel", gate.channelId},
            {"added", gated.isNewGate},
            {"start", JsonNumber(gate.start)},
            {"width", JsonNumber(gate.width)},
            {"threshold", options.gate.threshold ? Json(*options.gate.threshold) : Json()}}},
          {"gated", groups}};
}

void Gate(const GateOptions& options) {
  const InterruptScope interrupts;
  if (options.output.IsNewFile()) CheckNewPath(options.output.path, options.output.force);
  Document document = Document::Load(options.file, options.tables);
  GatedInspection gated = GateChannel(document, options.gate, options.quiet);
  const std::string written = WriteChanges(document, gated.changes.Groups(), options.output);
  if (options.json)
    PrintResult(ResultJson(options, gated, written).dump(2) + "\n");
  else if (!options.quiet)
    PrintResult(Text(options, gated, written));
}

}  // namespace

void AddGateVerb(CLI::App& program) {
  constexpr double farthest = 1e6, shortest = 1e-6;  // µs
  constexpr std::uint32_t lastGate = 1999, lastChannel = 0xFFFFFFFE;
  CLI::App& verb = *program.add_subcommand(
      "gate", "Gates the A-scans of a channel and adds C-scans of what it sees");
  const auto options = std::make_shared<GateOptions>();
  verb.add_option("FILE", options->file, "Inspection file")->required();
  verb.add_option("--channel", options->gate.channelId, "Channel, from 0")
      ->required()
      ->check(CLI::Range(0U, lastChannel).description(""))
      ->type_name("C");
  verb.add_option("--gate", options->gate.gateId, "Number of the gate")
      ->required()
      ->check(CLI::Range(0U, lastGate).description(""))
      ->type_name("G");
  verb.add_option("--start", options->start, "Start of the gate on the sample axis, µs")
      ->required()
      ->check(Within(-farthest, farthest))
      ->type_name("US");
  verb.add_option("--width", options->width, "Width of the gate, µs")
      ->required()
      ->check(Within(shortest, farthest))
      ->type_name("US");
  verb.add_option("--threshold",
                  options->gate.threshold,
                  "Amplitude that a position needs, percent of full scale")
      ->check(Within(0, 100))
      ->type_name("PCT");
  AddChangeOutput(verb, options->output);
  AddTables(verb, options->tables);
  verb.add_flag("--json", options->json, "Print the result as JSON, quantities in base units");
  verb.add_flag("--quiet", options->quiet, "Print no progress and no result");
  verb.footer(std::string(gateExplanation) + gateExample);
  verb.callback([options] {
    CheckChangeOutput(options->output);
    options->gate.start = options->start / 1e6;
    options->gate.width = options->width / 1e6;
    Gate(*options);
  });
}

}  // namespace utdata::program
