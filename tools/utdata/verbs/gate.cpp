#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "listing/damage.h"
#include "listing/data_rows.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/progress.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "utdata/arrays.h"
#include "utdata/gating.h"
#include "utdata/igate.h"
#include "utdata/rdata.h"
#include "utdata/readout.h"
#include "verbs/options.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* gateExplanation =
    R"(The gate covers round(width / sample step) samples from sample round((start - sample offset)
/ sample step). Its amplitude is the largest in percent of full scale, each half wave by its
own slope, on the positive scale; its position is the index of the sample where that first
occurs, and 0 in a cell whose amplitude is below the threshold.

Each data group with A-scans of the channel gets both C-scans. A gate that is there already
is changed to the one given; one that has C-scans already is refused.

)";

constexpr const char* gateExample = R"(Example:
  utdata demo --force
  utdata gate utdata-demo/weld.fpd --channel 0 --gate 3 --start 4 --width 2 --threshold 10
)";

struct GateOptions {
  std::string file;
  GateSettings gate;
  double start = 0;  // µs
  double width = 0;  // µs
  ChangeOutput output;
  SampleTables tables = SampleTables::Mapped;
  bool acceptDamage = false;
  bool json = false;
  bool quiet = false;
};

double Rounded(double value) { return std::round(value * 10) / 10; }

/// The strongest cell, read out of both C-scans.
struct Strongest {
  explicit Strongest(const GatedData& gated)
      : row(static_cast<std::uint32_t>(gated.strongest / gated.ascans.ColumnQuantity())),
        column(static_cast<std::uint32_t>(gated.strongest % gated.ascans.ColumnQuantity())),
        amplitude(gated.amplitudes.ReadOut(row, column)),
        position(gated.positions.ReadOut(row, column)) {}

  std::uint32_t row;
  std::uint32_t column;
  ReadOut amplitude;
  ReadOut position;
};

std::string GroupText(const GatedData& gated) {
  const GateWindow& window = gated.window;
  std::string text = gated.ascans.Label() + " " + std::to_string(gated.ascans.RowQuantity()) +
                     " rows x " + std::to_string(gated.ascans.ColumnQuantity()) +
                     " columns, samples " + std::to_string(window.first) + " to " +
                     std::to_string(window.first + window.quantity - 1);
  if (window.isCut) text += " (the gate reaches beyond the A-scans)";
  if (gated.damaged > 0)
    text += "; " + std::to_string(gated.damaged) + " cells are damaged and have no value";
  const Strongest strongest(gated);
  if (strongest.amplitude.value == 0) return text + "; no echo";
  text += "; strongest echo " + Percent(Rounded(strongest.amplitude.percent)) + " (" +
          Decibels(Rounded(strongest.amplitude.decibels)) + ") in row " +
          std::to_string(strongest.row) + ", column " + std::to_string(strongest.column);
  if (strongest.position.value == 0) return text;
  return text + " at sample " + std::to_string(strongest.position.value) + ", " +
         Number(strongest.position.time.In(unit_Microsecond)) + " µs";
}

std::string Text(const GateOptions& options, const GateResult& gated, const std::string& written) {
  std::string text = "gate " + std::to_string(options.gate.gate) + " of channel " +
                     std::to_string(options.gate.channel) +
                     (gated.isNew ? " added: " : " changed: ") + Number(options.start) + " to " +
                     Number(options.start + options.width) + " µs";
  if (options.gate.threshold) text += ", threshold " + Percent(*options.gate.threshold);
  text += "\n";
  for (const GatedData& data : gated.data) text += Printable(GroupText(data)) + "\n";
  return text + "written to " + Printable(written) + ": amplitude and position C-scans\n";
}

Json GroupJson(const GatedData& gated) {
  const Strongest strongest(gated);
  const CGDataTypeFDD& ascans = gated.ascans.Stored();
  return {{"data", gated.ascans.Index()},
          {"sub_channel", ascans.subChannelId},
          {"patch", ascans.GetPatchID()},
          {"first_sample", gated.window.first},
          {"sample_quantity", gated.window.quantity},
          {"rows", gated.ascans.RowQuantity()},
          {"columns", gated.ascans.ColumnQuantity()},
          {"damaged_cells", gated.damaged},
          {"full_scale", gated.amplitudes.Descriptor().GetDataMax()},
          {"strongest",
           {{"row", strongest.row},
            {"column", strongest.column},
            {"amplitude", strongest.amplitude.value},
            {"percent", strongest.amplitude.percent},
            {"position", strongest.position.value}}}};
}

Json ResultJson(const GateOptions& options, const GateResult& gated, const std::string& written) {
  const CGGateTypeDescr& gate = *gated.gate->igate1_GetInfoRef();
  Json groups = Json::array();
  for (const GatedData& data : gated.data) groups.push_back(GroupJson(data));
  return {{"path", options.file},
          {"written", written},
          {"gate",
           {{"gate", gate.gateId},
            {"channel", gate.channelId},
            {"added", gated.isNew},
            {"start", JsonNumber(gate.start)},
            {"width", JsonNumber(gate.width)},
            {"threshold", options.gate.threshold ? Json(*options.gate.threshold) : Json()}}},
          {"gated", groups}};
}

void RunGate(const GateOptions& options) {
  const InterruptScope interrupts;
  if (options.output.IsNewFile()) CheckNewInspection(options.output.path, options.output.force);
  Inspection inspection =
      OpenInspection(options.file, options.tables, options.quiet, options.acceptDamage);
  const GateResult gated = Gate(inspection, options.gate, Watching(options.quiet));
  WarnOfDamage(inspection);
  const std::string written = Save(inspection, options.output);
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
      "gate", "Gates the A-scans of a channel and adds amplitude and position C-scans");
  const auto options = std::make_shared<GateOptions>();
  verb.add_option("FILE", options->file, "Inspection file")->required();
  verb.add_option("--channel", options->gate.channel, "Channel, from 0")
      ->required()
      ->check(CLI::Range(0U, lastChannel).description(""))
      ->type_name("C");
  verb.add_option("--gate", options->gate.gate, "Number of the gate")
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
  AddAcceptDamage(verb, options->acceptDamage);
  verb.add_flag("--json", options->json, "Print the result as JSON, quantities in base units");
  verb.add_flag("--quiet", options->quiet, "Print no progress and no result");
  verb.footer(std::string(gateExplanation) + gateExample);
  verb.callback([options] {
    CheckChangeOutput(options->output);
    const double perSecond = FindArrayUnit("us")->perBase;
    options->gate.start = options->start / perSecond;
    options->gate.width = options->width / perSecond;
    RunGate(*options);
  });
}

}  // namespace utdata::program
