#include "utdata/rescue.h"

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/text.h"
#include "terminal/written.h"
#include "utdata/companions.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* rescueExample =
    "Groups that match their checksums are written with their samples; one wrong byte of a small "
    "group is mended.\n"
    "A modification whose group is lost is left out, and so are damaged samples, cell by cell. A "
    "group whose checksum\n"
    "is lost with what held it is written and listed as unchecked. The exit status is 0 when "
    "nothing was lost, else 1.\n"
    "Each companion is rescued by itself, and stays one of its base.\n"
    "\n"
    "Example:\n"
    "  utdata demo --force && utdata rescue utdata-demo/weld.fpd -o rescued.fpd\n";

struct RescueOptions {
  std::string file;
  std::string output;
  bool force = false;
  bool json = false;
  bool quiet = false;
};

std::string Text(const Rescued& rescued, const std::string& output) {
  std::string text;
  const auto add = [&](const char* what, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) text += what + Printable(line) + "\n";
  };
  add("mended: ", rescued.mended);
  add("unchecked: ", rescued.unchecked);
  add("lost: ", rescued.lost);
  const std::string role = DescribeCompanion(output);
  return text + "written to " + Printable(output) + (role.empty() ? "" : ", " + Printable(role)) +
         (rescued.IsComplete() ? ": nothing is lost\n" : ": what is left\n");
}

void RunRescue(const RescueOptions& options) {
  const InterruptScope interrupts;
  Rescued rescued;
  {
    const UnfinishedFileScope unfinished(options.output);
    rescued = Rescue(options.file, options.output, options.force);
    NoteWritten(options.output);
  }
  if (options.json)
    PrintResult(nlohmann::ordered_json({{"path", options.file},
                                        {"written", options.output},
                                        {"role", DescribeCompanion(options.output)},
                                        {"complete", rescued.IsComplete()},
                                        {"mended", rescued.mended},
                                        {"unchecked", rescued.unchecked},
                                        {"lost", rescued.lost}})
                    .dump(2) +
                "\n");
  else if (!options.quiet)
    PrintResult(Text(rescued, options.output));
  if (rescued.IsComplete()) return;
  const std::size_t places = rescued.lost.size() + rescued.unchecked.size();
  const std::string& first = rescued.lost.empty() ? rescued.unchecked[0] : rescued.lost[0];
  throw Failure(options.file,
                "not all of it is rescued",
                first + (places > 1 ? ", and " + std::to_string(places - 1) + " more" : ""),
                "what is left is in " + options.output);
}

}  // namespace

void AddRescueVerb(CLI::App& program) {
  CLI::App& verb = *program.add_subcommand(
      "rescue", "Writes what is whole of a damaged file as a new one, and lists what is lost");
  const auto options = std::make_shared<RescueOptions>();
  verb.add_option("FILE", options->file, "Damaged inspection file")->required();
  verb.add_option("-o,--output", options->output, "Inspection file to make")->required();
  verb.add_flag("--force", options->force, "Replace an existing file");
  verb.add_flag("--json", options->json, "Print what was found as JSON");
  verb.add_flag("--quiet", options->quiet, "Print no result");
  verb.footer(rescueExample);
  verb.callback([options] { RunRescue(*options); });
}

}  // namespace utdata::program
