#include "report/report.h"

#include <memory>
#include <span>
#include <string>

#include "listing/damage.h"
#include "terminal/interrupt.h"
#include "terminal/new_file.h"
#include "terminal/output.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "verbs/options.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* reportExample =
    R"(The page needs no network: it carries the samples within itself, up to the limit. Of a data
group that does not fit, it has the largest amplitude of each A-scan only, and says so.

Example:
  utdata demo --force && utdata report utdata-demo/weld.fpd -o report.html
)";

struct ReportVerbOptions {
  std::string file;
  std::string output;
  std::uint64_t megabytes = 64;
  bool force = false;
  bool quiet = false;
  bool acceptDamage = false;
};

void MakeReportFile(const ReportVerbOptions& options) {
  const InterruptScope interrupts;
  CheckNewFile(options.output, options.force);
  const Inspection inspection =
      OpenInspection(options.file, SampleTables::Mapped, options.quiet, options.acceptDamage);
  CheckNotInput(inspection, options.output);
  const Report report = MakeReport(inspection, {options.megabytes * 1'000'000, options.quiet});
  WarnOfDamage(inspection);
  WriteNewFile(options.output, std::as_bytes(std::span(report.html)), options.force);
  if (options.quiet) return;
  PrintResult(Printable(options.output) + ": " + std::to_string(report.views) +
              (report.views == 1 ? " view, " : " views, ") + Bytes(report.html.size()) + "\n");
  for (const std::string& line : report.missing)
    PrintResult("not shown: " + Printable(line) + "\n");
}

}  // namespace

void AddReportVerb(CLI::App& program) {
  CLI::App& verb =
      *program.add_subcommand("report", "Makes one page for a browser: views, tables and history");
  const auto options = std::make_shared<ReportVerbOptions>();
  verb.add_option("FILE", options->file, "Inspection file")->required();
  verb.add_option("-o,--output", options->output, "Page to make, an HTML file")
      ->required()
      ->type_name("HTML");
  verb.add_option(
          "--limit", options->megabytes, "Samples that the page may carry, in MB before packing")
      ->check(CLI::Range(0, 1000))
      ->capture_default_str()
      ->type_name("MB");
  verb.add_flag("--force", options->force, "Replace an existing file");
  AddAcceptDamage(verb, options->acceptDamage);
  verb.add_flag("--quiet", options->quiet, "Print no progress and no result");
  verb.footer(reportExample);
  verb.callback([options] { MakeReportFile(*options); });
}

}  // namespace utdata::program
