#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "terminal/output.h"
#include "terminal/text.h"
#include "utdata/companions.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* adoptExplanation =
    "A companion is found by its name (weld.A01 beside weld.fpd), and belongs to its base by the\n"
    "identity that both carry, whatever they are called. Without COMPANION, those of the base in\n"
    "its folder are taken that stand under the name of a file that is not there any more. Nothing\n"
    "is renamed unless all can be, and never over a file that exists.\n"
    "\n"
    "Example:\n"
    "  utdata demo --force && cd utdata-demo && mv weld.fpd pipe.fpd\n"
    "  utdata adopt pipe.fpd --dry-run && utdata adopt pipe.fpd\n";

struct AdoptOptions {
  std::string base;
  std::vector<std::string> companions;
  bool dryRun = false;
  bool json = false;
  bool quiet = false;
};

void RunAdopt(const AdoptOptions& options) {
  const std::vector<Renaming> renamings = PlanAdoption(options.base, options.companions);
  if (!options.dryRun) Rename(renamings);
  nlohmann::ordered_json renamed = nlohmann::ordered_json::array();
  std::string text;
  for (const auto& [from, to] : renamings) {
    renamed.push_back({{"from", from}, {"to", to}});
    text += Printable(from) + " -> " + Printable(to) + "\n";
  }
  if (renamings.empty()) text = Printable(options.base) + ": nothing to rename\n";
  if (options.json)
    PrintResult(nlohmann::ordered_json{
                    {"path", options.base}, {"done", !options.dryRun}, {"renamed", renamed}}
                    .dump(2) +
                "\n");
  else if (!options.quiet)
    PrintResult(text);
}

}  // namespace

void AddAdoptVerb(CLI::App& program) {
  CLI::App& verb = *program.add_subcommand(
      "adopt", "Gives companions the name of their base again, after it was renamed");
  const auto options = std::make_shared<AdoptOptions>();
  verb.add_option("BASE", options->base, "Inspection file")->required();
  verb.add_option("COMPANION", options->companions, "Its companions, in its folder");
  verb.add_flag("--dry-run", options->dryRun, "List what would be renamed, and rename nothing");
  verb.add_flag("--json", options->json, "Print the result as JSON");
  verb.add_flag("--quiet", options->quiet, "Print no result");
  verb.footer(adoptExplanation);
  verb.callback([options] { RunAdopt(*options); });
}

}  // namespace utdata::program
