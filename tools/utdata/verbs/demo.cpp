#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>

#include "demo/demo_inspection.h"
#include "demo/simulate.h"
#include "document/data_group.h"
#include "document/document.h"
#include "interfaces/os.h"
#include "listing/info.h"
#include "listing/verify.h"
#include "pictures/section.h"
#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/new_file.h"
#include "terminal/output.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* example =
    "Example:\n"
    "  utdata demo --out utdata-demo --force\n"
    "  utdata info utdata-demo/weld.fpd\n";

struct DemoOptions {
  std::string folder = "utdata-demo";
  bool force = false;
  bool quiet = false;
};

/// Tells each step with the time it took.
class Steps {
 public:
  explicit Steps(bool quiet) : m_quiet(quiet) {}

  void Done(const std::string& step, const std::string& result) {
    const Clock::time_point now = Clock::now();
    const std::string took = Duration(std::chrono::duration<double>(now - m_start).count());
    m_start = now;
    ThrowIfInterrupted();
    if (!m_quiet) PrintResult(step + std::string(10 - step.size(), ' ') + Printable(result) + "  (" + took + ")\n");
  }

 private:
  using Clock = std::chrono::steady_clock;

  bool m_quiet;
  Clock::time_point m_start = Clock::now();
};

struct DemoPaths {
  std::string inspection;
  std::string companion;
  std::string picture;
};

/// Takes away the companions of a former demonstration, those that came by editing it included.
void RemoveCompanions(const std::string& folder) {
  for (int number = 1; number <= 99; ++number) {
    const std::string path = folder + "/weld.A" + std::to_string(number / 10) + std::to_string(number % 10);
    const os::Error removed = os::CurrentFileSystem().Remove(ToWide(path));
    if (removed == os::Error::NotFound) return;
    if (removed != os::Error::None) throw Failure(path, "cannot be removed", os::ErrorText(removed));
  }
}

/// Makes the folder, and makes room in it: with force, the files of a former demonstration go.
DemoPaths Prepare(const DemoOptions& options) {
  std::error_code error;
  std::filesystem::create_directories(ToWide(options.folder), error);
  if (error) throw Failure(options.folder, "cannot be made", error.message());
  const DemoPaths paths = {options.folder + "/weld.fpd", options.folder + "/weld.A01", options.folder + "/crack.png"};
  if (options.force) RemoveCompanions(options.folder);
  CheckNewPath(paths.inspection, options.force);
  CheckNewFile(paths.picture, options.force);
  return paths;
}

void WriteInspection(const std::string& path, bool replace, Steps& steps) {
  const WeldScan scan;
  std::vector<std::int16_t> samples = Simulate(scan);
  steps.Done("simulate",
             Millimetres(scan.thickness) + " welded plate, three side-drilled holes, a crack; " +
                 Number(scan.frequency / 1e6) + " MHz; " + std::to_string(scan.rows) + " × " +
                 std::to_string(scan.columns) + " A-scans of " + std::to_string(scan.samples) + " samples");
  Document document = Document::New(path);
  FillInspection(document, scan, samples);
  document.WriteNew(replace);
  steps.Done("write", path);
}

/// @return the gate as it was changed
CGGateTypeDescr WriteGated(const DemoPaths& paths, Steps& steps, bool quiet) {
  Document loaded = Document::Load(paths.inspection);
  steps.Done("load", paths.inspection);
  GatedInspection gated = RefineFlawGate(loaded, quiet);
  const GatedGroup& seen = gated.groups.front();
  steps.Done("gate",
             "gate " + std::to_string(gated.gate.gateId) + " now at " + Percent(gated.gate.positiveLevel) + " from " +
                 Microseconds(gated.gate.start) + "; its strongest echo has " +
                 Percent(std::round(PercentOf(seen, StrongestCell(seen)))));
  const std::string written = loaded.WriteCompanion(gated.changes.Groups());
  steps.Done("write", written + ": the changed gate and C-scans of it, beside the untouched file");
  return gated.gate;
}

/// Loads everything back and holds it against what was written.
void CheckReloaded(const DemoPaths& paths, const CGGateTypeDescr& changed, Steps& steps, bool quiet) {
  const Document document = Document::Load(paths.inspection);
  const auto& gates = document.Groups().gates;
  const bool gateHolds =
      std::any_of(gates.begin(), gates.end(), [&](const CGGateTypeDescr* gate) { return *gate == changed; });
  if (!gateHolds || document.Groups().data.GetCount() != 3 || document.Files().size() != 2)
    throw Failure(paths.inspection, "does not load as it was written", "the companion's changes are missing");
  steps.Done("reload", paths.inspection + " with its companion: the change is applied, the C-scans are there");
  if (!quiet) PrintResult("\n" + InfoText(document, {}) + "\n");
}

/// The B-scan through the middle of the crack, bright enough for the echo of its tip.
void DrawCrack(const DemoPaths& paths, const DemoOptions& options, Steps& steps) {
  const WeldScan scan;
  const Document document = Document::Load(paths.inspection);
  SectionOptions view;
  view.position = static_cast<std::uint32_t>(std::lround(scan.crack.centre / scan.rowStep));
  view.gain = 3;
  view.samples = SampleAxis::Path;
  view.quiet = options.quiet;
  Section crack = MakeSection(document.GetHost(), *document.Groups().data.GetHead(), paths.inspection, view);
  const double depth = scan.thickness - scan.crack.height;
  const std::string tip = "tip at " + Millimetres(scan.crack.x) + ", " + Millimetres(depth) + " deep";
  // The strongest echo is the surface's, which nobody looks for here.
  crack.plot.marked =
      ImagePlot::Cell{static_cast<std::uint32_t>(std::lround(scan.crack.x / scan.columnStep)),
                      static_cast<std::uint32_t>(std::lround(2 * depth / scan.soundSpeed / scan.sampleStep))};
  crack.plot.notes = {"Crack " + tip + ", between three side-drilled holes; back wall at " +
                      Millimetres(scan.thickness) + " · soft gain × " + std::to_string(crack.gain)};
  WriteNewFile(paths.picture, Draw(crack.plot, Font()).canvas.Png(), options.force);
  steps.Done("picture", paths.picture + ": the crack's " + tip);
}

void Demo(const DemoOptions& options) {
  const InterruptScope interrupts;
  Steps steps(options.quiet);
  const DemoPaths paths = Prepare(options);
  WriteInspection(paths.inspection, options.force, steps);
  const CGGateTypeDescr gate = WriteGated(paths, steps, options.quiet);
  CheckReloaded(paths, gate, steps, options.quiet);
  DrawCrack(paths, options, steps);
  for (const std::string& path : {paths.inspection, paths.companion}) {
    const Verdict verdict = Verify(path, options.quiet);
    if (!verdict.IsClean()) throw Failure(path, verdict.Word(), verdict.problems.front());
    steps.Done("verify", verdict.Line());
  }
  if (options.quiet) return;
  const std::string folder = Printable(options.folder);
  PrintResult("\nTry next:\n  utdata info " + folder + "/weld.fpd --hash\n  utdata tree " + folder +
              "/weld.A01\n  utdata verify " + folder + "/weld.fpd " + folder + "/weld.A01\n");
}

}  // namespace

void AddDemoVerb(CLI::App& program) {
  CLI::App& verb = *program.add_subcommand("demo", "Writes, changes and reloads a simulated weld scan");
  const auto options = std::make_shared<DemoOptions>();
  verb.add_option("--out", options->folder, "Folder for the files")->capture_default_str()->type_name("DIR");
  verb.add_flag("--force", options->force, "Replace the files of a former demonstration");
  verb.add_flag("--quiet", options->quiet, "Print no messages and no progress");
  verb.footer(example);
  verb.callback([options] { Demo(*options); });
}

}  // namespace utdata::program
