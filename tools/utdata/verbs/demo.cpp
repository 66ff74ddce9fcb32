#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>

#include "demo/butt_weld.h"
#include "demo/demo_inspection.h"
#include "demo/demo_pictures.h"
#include "demo/simulate.h"
#include "interfaces/os.h"
#include "listing/info.h"
#include "listing/verify.h"
#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/new_file.h"
#include "terminal/output.h"
#include "terminal/progress.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "utdata/igate.h"
#include "utdata/samples.h"
#include "verbs/options.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* demoExample =
    "Example:\n"
    "  utdata demo --out utdata-demo --force\n"
    "  utdata info utdata-demo/weld.fpd\n";

struct DemoOptions {
  std::string folder = "utdata-demo";
  std::string scans = "all";  ///< all, raster or phased
  bool force = false;
  Signature signature;
  bool quiet = false;
};

/// Prints each step with the time it took.
class Steps {
 public:
  explicit Steps(bool quiet) : m_quiet(quiet) {}

  void Done(const std::string& step, const std::string& result) {
    const Clock::time_point now = Clock::now();
    const std::string took = Duration(std::chrono::duration<double>(now - m_start).count());
    m_start = now;
    ThrowIfInterrupted();
    if (!m_quiet)
      PrintResult(step + std::string(10 - step.size(), ' ') + Printable(result) + "  (" + took +
                  ")\n");
  }

 private:
  using Clock = std::chrono::steady_clock;

  bool m_quiet;
  Clock::time_point m_start = Clock::now();
};

struct DemoPaths {
  std::string acquisition;
  std::string inspection;
  std::string companion;
  std::string crack;
  std::string flaws;
  ButtWeldFiles phased;
  std::string sector;
};

void Remove(const std::string& path) {
  const os::Error removed = os::CurrentFileSystem().Remove(ToWide(path));
  if (removed != os::Error::None && removed != os::Error::NotFound)
    throw Failure(path, "cannot be removed", std::string(os::ErrorText(removed)));
}

/// Removes the companions of an earlier demonstration, those of later edits included.
void RemoveCompanions(const std::string& base) {
  for (int number = 1; number <= 99; ++number) {
    const std::string path =
        base + ".A" + std::to_string(number / 10) + std::to_string(number % 10);
    if (!os::CurrentFileSystem().Exists(ToWide(path))) return;
    Remove(path);
  }
}

/// Makes the folder. With force, the companions of an earlier demonstration are removed, and its
/// other files may be replaced.
DemoPaths Prepare(const DemoOptions& options) {
  std::error_code error;
  std::filesystem::create_directories(options.folder, error);
  if (error) throw Failure(options.folder, "cannot be made", error.message());
  const std::string weld = options.folder + "/weld";
  const DemoPaths paths = {
      weld + ".acq",
      weld + ".fpd",
      weld + ".A01",
      options.folder + "/crack.png",
      options.folder + "/cscan.png",
      {options.folder + "/paut.acq", options.folder + "/paut.fpd", options.folder + "/flaws.json"},
      options.folder + "/sector.png"};
  if (options.force) {
    RemoveCompanions(weld);
    RemoveCompanions(options.folder + "/paut");
  }
  for (const std::string& path : {paths.inspection, paths.phased.inspection})
    CheckNewInspection(path, options.force);
  for (const std::string& path :
       {paths.acquisition, paths.crack, paths.flaws, paths.phased.acquisition, paths.phased.flaws})
    CheckNewFile(path, options.force);
  return paths;
}

RecordedBlocks Acquire(const DemoPaths& paths,
                       const WeldScan& scan,
                       const DemoOptions& options,
                       Steps& steps) {
  const std::vector<std::int16_t> samples = Simulate(scan, options.quiet);
  steps.Done("simulate",
             Millimetres(scan.thickness) + " welded plate, three side-drilled holes, a crack; " +
                 Megahertz(scan.frequency) + "; " + std::to_string(scan.rows) + " × " +
                 std::to_string(scan.columns) + " A-scans of " + std::to_string(scan.samples) +
                 " samples");
  if (options.force) Remove(paths.acquisition);
  const RecordedBlocks blocks =
      AcquireScan(paths.acquisition, scan, samples, Watching(options.quiet));
  steps.Done(
      "acquire",
      paths.acquisition + ": A-scans, and two C-scans of the back wall, " + Bytes(blocks.size));
  return blocks;
}

void WriteInspection(const DemoPaths& paths,
                     const WeldScan& scan,
                     const RecordedBlocks& blocks,
                     bool replace,
                     const Signature& signature,
                     Steps& steps) {
  Recording recorded(paths.acquisition);
  Inspection inspection = Inspection::New(paths.inspection);
  FillInspection(inspection, scan, recorded, blocks);
  SaveNew(inspection, paths.inspection, replace, signature);
  steps.Done("write", paths.inspection + ": the inspection, built from the recorded blocks");
}

/// @return the gate as it was changed
CGGateTypeDescr WriteGated(const DemoPaths& paths, Signature signature, Steps& steps, bool quiet) {
  Inspection loaded = Inspection::Open(paths.inspection);
  steps.Done("load", paths.inspection);
  const GateResult gated = RefineFlawGate(loaded, Watching(quiet));
  const GatedData& seen = gated.data.front();
  const CGGateTypeDescr gate = *gated.gate->igate1_GetInfoRef();
  const double strongest = seen.amplitudes.Samples().Values(seen.strongest).front();
  steps.Done("gate",
             "gate " + std::to_string(gate.gateId) + " now at " + Percent(gate.positiveLevel) +
                 " from " + Microseconds(gate.start) + "; its strongest echo has " +
                 Percent(std::round(seen.amplitudes.Percent(strongest))));
  if (signature.reason.empty()) signature.reason = "gate moved to the flaws";
  const std::string written = loaded.SaveCompanion(signature);
  steps.Done("write", written + ": the changed gate and C-scans of it, beside the untouched file");
  return gate;
}

void CheckClean(const std::string& path, bool quiet, Steps& steps) {
  for (const Verdict& verdict : Verify(path, quiet)) {
    if (!verdict.IsClean()) throw Failure(verdict.path, verdict.Word(), verdict.problems.front());
    steps.Done("verify", verdict.Line());
  }
}

/// Loads everything back, compares it with what was written, and draws it.
void Show(const DemoPaths& paths,
          const WeldScan& scan,
          const CGGateTypeDescr& changed,
          const DemoOptions& options,
          Steps& steps) {
  const Inspection inspection = Inspection::Open(paths.inspection);
  const CGGateTypeDescr& gate =
      *inspection.Gate(changed.channelId, changed.gateId).Item().igate1_GetInfoRef();
  if (!(gate == changed) || inspection.Data().size() != 5 || inspection.Files().size() != 2)
    throw Failure(
        paths.inspection, "does not load as it was written", "the companion's changes are missing");
  steps.Done(
      "reload",
      paths.inspection + " with its companion: the change is applied, the C-scans are there");
  steps.Done("picture",
             paths.crack + ": " + DrawCrack(inspection, scan, paths.crack, options.force));
  steps.Done("picture",
             paths.flaws + ": " + DrawFlaws(inspection, scan, paths.flaws, options.force));
  CheckClean(paths.inspection, options.quiet, steps);
  if (!options.quiet) PrintResult("\n" + InfoText(inspection, {}));
}

/// The sector scans and the TOFD scan of a butt weld.
void ShowPhasedArrays(const DemoPaths& paths, const DemoOptions& options, Steps& steps) {
  if (options.force) Remove(paths.phased.acquisition);
  const ButtWeld weld;
  const std::vector<std::string> flaws =
      MakeButtWeld(paths.phased, weld, options.signature, options.force, options.quiet);
  steps.Done("paut",
             paths.phased.inspection + ": a butt weld, " + std::to_string(weld.beams) +
                 " beams from either side, and TOFD");
  const Inspection inspection = Inspection::Open(paths.phased.inspection);
  if (inspection.Masters().size() != 2 || inspection.Data().size() != 2 * weld.beams + 1)
    throw Failure(paths.phased.inspection,
                  "does not load as it was written",
                  "its beams are not gathered under a master of each side");
  steps.Done("picture",
             paths.sector + ": " + DrawSector(inspection, weld, paths.sector, options.force));
  CheckClean(paths.phased.inspection, options.quiet, steps);
  steps.Done("flaws", paths.phased.flaws + ": where they were put, and from where they are seen");
  if (options.quiet) return;
  for (const std::string& flaw : flaws) PrintResult("          " + flaw + "\n");
}

void SayWhatNext(const DemoOptions& options) {
  const std::string folder = Printable(options.folder);
  const std::string inspection = folder + "/weld.fpd";
  std::string text = "\nThe files and pictures are in " + folder;
  if (options.scans != "phased")
    text += ": look at crack.png and cscan.png.\nTry next:\n  utdata render " + inspection +
            " --data 0 --view a --row 5 --column 132 -o " + folder + "/ascan.png\n  utdata gate " +
            inspection + " --channel 0 --gate 3 --start 4 --width 2 --as append\n" +
            "  utdata tree " + folder + "/weld.A01\n";
  else
    text += ": look at sector.png.\nTry next:\n";
  if (options.scans != "raster")
    text += "  utdata render " + folder + "/paut.fpd --data channel=2 --view d -o " + folder +
            "/tofd.png\n";
  PrintResult(text);
}

void ShowRaster(const DemoPaths& paths, const DemoOptions& options, Steps& steps) {
  const WeldScan scan;
  const RecordedBlocks blocks = Acquire(paths, scan, options, steps);
  WriteInspection(paths, scan, blocks, options.force, options.signature, steps);
  const CGGateTypeDescr gate = WriteGated(paths, options.signature, steps, options.quiet);
  Show(paths, scan, gate, options, steps);
}

void Demo(const DemoOptions& options) {
  const InterruptScope interrupts;
  Steps steps(options.quiet);
  const DemoPaths paths = Prepare(options);
  if (options.scans != "phased") ShowRaster(paths, options, steps);
  if (options.scans != "raster") ShowPhasedArrays(paths, options, steps);
  if (!options.quiet) SayWhatNext(options);
}

}  // namespace

void AddDemoVerb(CLI::App& program) {
  CLI::App& verb = *program.add_subcommand(
      "demo", "Shows a simulated weld scan from its acquisition on: inspect, gate, draw, verify");
  const auto options = std::make_shared<DemoOptions>();
  verb.add_option("--out", options->folder, "Folder for the files")
      ->capture_default_str()
      ->type_name("DIR");
  verb.add_option("--scans",
                  options->scans,
                  "Which: the raster scan of weld.fpd, the phased-array and TOFD scans of paut.fpd")
      ->check(CLI::IsMember({"all", "raster", "phased"}).description(""))
      ->capture_default_str()
      ->type_name("all|raster|phased");
  verb.add_flag("--force", options->force, "Replace the files of an earlier demonstration");
  AddSignature(verb, options->signature);
  verb.add_flag("--quiet", options->quiet, "Print no messages and no progress");
  verb.footer(demoExample);
  verb.callback([options] { Demo(*options); });
}

}  // namespace utdata::program
