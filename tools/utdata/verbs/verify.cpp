#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "listing/verify.h"
#include "terminal/failure.h"
#include "terminal/output.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* verifyExample =
    "Example:\n"
    "  utdata demo --force && utdata verify utdata-demo/weld.fpd\n";

struct VerifyOptions {
  std::vector<std::string> files;
  bool json = false;
  bool quiet = false;
};

/// Every verdict is a result; the failure at the end says in one line that not all is well.
void VerifyAll(const VerifyOptions& options) {
  nlohmann::ordered_json results = nlohmann::ordered_json::array();
  std::vector<Verdict> bad;
  std::set<std::string> done;
  for (const std::string& path : options.files) {
    if (done.contains(path)) continue;
    for (const Verdict& verdict : Verify(path, options.quiet)) {
      if (!done.insert(verdict.path).second) continue;
      if (!verdict.IsClean()) bad.push_back(verdict);
      if (options.json)
        results.push_back(verdict.Json());
      else if (!options.quiet || !verdict.IsClean())
        PrintResult(verdict.Line() + "\n");
    }
  }
  if (options.json)
    PrintResult(results.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
                "\n");
  if (bad.empty()) return;
  const std::string others =
      bad.size() > 1 ? ", and " + std::to_string(bad.size() - 1) + " more not clean" : "";
  throw Failure(bad.front().path, "not clean", bad.front().Word() + others, {}, bad.front().status);
}

}  // namespace

void AddVerifyVerb(CLI::App& program) {
  CLI::App& verb = *program.add_subcommand(
      "verify",
      "Checks every byte of inspection files and of their companions, sample blocks included");
  const auto options = std::make_shared<VerifyOptions>();
  verb.add_option(
          "FILE", options->files, "Inspection files; the companions of each are checked with it")
      ->required();
  verb.add_flag("--json", options->json, "Print the results as JSON");
  verb.add_flag("--quiet", options->quiet, "Print only files that are not clean, and no progress");
  verb.footer(verifyExample);
  verb.callback([options] { VerifyAll(*options); });
}

}  // namespace utdata::program
