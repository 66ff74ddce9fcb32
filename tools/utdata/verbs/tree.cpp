#include <memory>
#include <string>

#include "listing/tree.h"
#include "terminal/failure.h"
#include "terminal/text.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* treeExample =
    "Example:\n"
    "  utdata demo --force && utdata tree utdata-demo/weld.A01\n";

struct CloseFile {
  void operator()(SCFile::Node* file) const { SCFile::file_Close(file); }
};

}  // namespace

void AddTreeVerb(CLI::App& program) {
  struct Options {
    std::string file;
    bool full = false;
    bool json = false;
    bool quiet = false;
  };
  CLI::App& verb =
      *program.add_subcommand("tree", "Shows the groups and items of a file as stored");
  const auto options = std::make_shared<Options>();
  verb.add_option("FILE", options->file, "Inspection file")->required();
  verb.add_flag("--full", options->full, "Show whole arrays and texts");
  verb.add_flag("--json", options->json, "Print the result as JSON");
  verb.add_flag("--quiet", options->quiet, "Print no messages (this verb has none)");
  verb.footer(treeExample);
  verb.callback([options] {
    SCFile::FileHandle opened = nullptr;
    const int status = SCFile::file_OpenReadOnly(ToWide(options->file).c_str(), &opened);
    if (status != SCFile::status_Ok)
      throw Failure::OfFileLayer(status, options->file, "cannot be read");
    const std::unique_ptr<SCFile::Node, CloseFile> file(opened);
    (options->json ? PrintTreeJson : PrintTreeText)(file.get(), options->full);
  });
}

}  // namespace utdata::program
