#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "listing/damage.h"
#include "listing/info.h"
#include "terminal/output.h"
#include "verbs/options.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* infoExample =
    "Example:\n"
    "  utdata demo --force && utdata info utdata-demo/weld.fpd\n";

}  // namespace

void AddInfoVerb(CLI::App& program) {
  struct Options {
    std::string file;
    bool json = false;
    bool hash = false;
    bool sorted = false;
    bool acceptDamage = false;
    bool quiet = false;
  };
  CLI::App& verb =
      *program.add_subcommand("info", "Shows the loaded inspection, its companions read");
  const auto options = std::make_shared<Options>();
  verb.add_option("FILE", options->file, "Inspection file")->required();
  CLI::Option* hash =
      verb.add_flag("--hash", options->hash, "Add the SHA-256 of each data group's samples");
  AddAcceptDamage(verb, options->acceptDamage)->needs(hash);
  verb.add_flag("--sorted",
                options->sorted,
                "Data groups by channel, sub-channel and the display order of their gates");
  verb.add_flag("--json", options->json, "Print the result as JSON, quantities in base units");
  verb.add_flag("--quiet", options->quiet, "Print no progress");
  verb.footer(infoExample);
  verb.callback([options] {
    const Inspection inspection =
        OpenInspection(options->file, SampleTables::Mapped, options->quiet, options->acceptDamage);
    const InfoContent content{
        .hash = options->hash, .sorted = options->sorted, .quiet = options->quiet};
    const std::string result = options->json ? InfoJson(inspection, content).dump(2) + "\n"
                                             : InfoText(inspection, content);
    WarnOfDamage(inspection);
    PrintResult(result);
  });
}

}  // namespace utdata::program
