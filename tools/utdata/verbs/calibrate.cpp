#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "listing/damage.h"
#include "listing/selector.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "utdata/rdata.h"
#include "utdata/tofd.h"
#include "verbs/options.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* calibrateExplanation =
    R"(Corrects the sample offset of TOFD data for the delay in wedges and cables. The lateral wave
runs straight from probe to probe: with separation S and sound speed c it takes S / c in the part,
and what it is recorded later is the correction. The back wall is the check: how deep it lies then,
how far that is from the thickness of the part, and which separation or sound speed would put it
there. Separation, sound speed and thickness are those of the data group; 'utdata edit FILE data'
shows and sets them.

Both echoes are found in the A-scans, the lateral wave as the first one with a back wall echo of the
opposite phase behind it, where thickness, separation and sound speed say, and of several A-scans
the median counts. Choose A-scans over sound material with --row or --column, or give both times as
you read them off the largest half wave. Gates stay at their times: C-scans of before are of other
samples.
)";

constexpr const char* calibrateExample = R"(
Example:
  utdata demo --force
  utdata calibrate utdata-demo/paut.fpd --data channel=2 --show
  utdata calibrate utdata-demo/paut.fpd --data channel=2 --lateral-wave 10.1351 --back-wall 12.18
)";

struct CalibrateOptions {
  std::string file;
  std::string selector;
  TofdCalibrationOptions echoes;
  TofdEchoTimes times;  ///< µs
  ChangeOutput output;
  bool show = false;
  bool acceptDamage = false;
  bool json = false;
  bool quiet = false;
};

std::string Digits(int digits, double value, const char* unit) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.*f %s", digits, value, unit);
  return text.data();
}

std::string FoundText(const TofdCalibration& found) {
  if (found.searched == 0) return ", as given";
  return ", found in " + std::to_string(found.ascans) + " of " + std::to_string(found.searched) +
         (found.searched == 1 ? " A-scan" : " A-scans");
}

/// "2.00 mm more than"
std::string ErrorText(const TofdCalibration& found) {
  const std::string error = Digits(2, std::abs(found.Error()), "mm");
  if (error == "0.00 mm") return "the same as";
  return error + (found.Error() < 0 ? " less than" : " more than");
}

/// What would put the back wall at the thickness, unless it lies there.
std::string FitText(const TofdCalibration& found) {
  constexpr double shown = 0.005;  // mm
  if (std::abs(found.Error()) < shown || !found.fittingSoundSpeed) return "";
  std::string text = "would fit      a ";
  if (found.fittingSeparation)
    text += "probe separation of " + Digits(2, *found.fittingSeparation, "mm") + ", or a ";
  return text + "sound speed of " + Digits(0, *found.fittingSoundSpeed, "m/s") + "\n";
}

std::string CalibrationText(const DataGroup& group, const TofdCalibration& found) {
  const CRDataTypeDD& record = group.Descriptor();
  return "lateral wave   " + Digits(4, found.times.lateralWave, "µs") + FoundText(found) + "\n" +
         "back wall      " + Digits(4, found.times.backWall, "µs") + "\n" + "correction     " +
         Digits(4, found.isNeeded ? found.correction * 1e6 : 0, "µs") +
         ", with a probe separation of " + Millimetres(record.probeSeparation) +
         " and a sound speed of " + Number(record.soundSpeed) + " m/s\n" + "back wall then " +
         Digits(2, found.backWallDepth, "mm") + " deep, " + ErrorText(found) +
         " the thickness of " + Millimetres(record.partThickness) + "\n" + FitText(found);
}

/// More than a reading of two echoes can be off.
void WarnOfError(const CalibrateOptions& options, const TofdCalibration& found) {
  if (std::abs(found.Error()) < std::max(0.5, 0.02 * found.thickness)) return;
  std::fprintf(stderr,
               "warning: %s: the back wall is %s the part is thick: check the echoes, the probe "
               "separation, the sound speed and the thickness\n",
               Printable(options.file).c_str(),
               (Digits(2, std::abs(found.Error()), "mm") +
                (found.Error() < 0 ? " less deep than" : " deeper than"))
                   .c_str());
}

Json CalibrationJson(const DataGroup& group, const TofdCalibration& found) {
  const CRDataTypeDD& record = group.Descriptor();
  const auto optional = [](const std::optional<double>& value, double scale) {
    return value ? Json(*value * scale) : Json();
  };
  return {
      {"data", group.Index()},
      {"searched", found.searched},
      {"found", found.ascans},
      {"lateral_wave", {{"time", found.times.lateralWave * 1e-6}, {"sample", found.lateralWave}}},
      {"back_wall", {{"time", found.times.backWall * 1e-6}, {"sample", found.backWall}}},
      {"correction", found.correction},
      {"sample_offset", JsonNumber(record.sampleOffset)},
      {"thickness", found.thickness * 1e-3},
      {"back_wall_depth", found.backWallDepth * 1e-3},
      {"error", found.Error() * 1e-3},
      {"fitting_separation", optional(found.fittingSeparation, 1e-3)},
      {"fitting_sound_speed", optional(found.fittingSoundSpeed, 1)}};
}

void ReportCalibration(const CalibrateOptions& options,
                       const DataGroup& group,
                       const TofdCalibration& found,
                       const std::vector<FieldChange>& changes,
                       const std::string& written) {
  if (options.json) {
    Json result = CalibrationJson(group, found);
    result["written"] = written.empty() ? Json() : Json(written);
    return PrintResult(result.dump(2) + "\n");
  }
  if (options.quiet) return;
  std::string text = ChangesText(changes);
  if (!written.empty()) text += "written to " + Printable(written) + "\n";
  if (!found.isNeeded) text += "the sample offset is right already; nothing is written\n";
  PrintResult(CalibrationText(group, found) + text);
}

void Calibrate(const CalibrateOptions& options) {
  const InterruptScope interrupts;
  if (options.output.IsNewFile() && !options.show)
    CheckNewInspection(options.output.path, options.output.force);
  Inspection inspection =
      OpenInspection(options.file, SampleTables::Mapped, options.quiet, options.acceptDamage);
  const DataGroup group = SelectGroup(inspection, options.selector);
  const TofdCalibration found = CalibrateTofd(group, options.echoes);
  WarnOfDamage(inspection);
  WarnOfError(options, found);
  if (options.show) return ReportCalibration(options, group, found, {}, "");
  const std::vector<FieldChange> changes = CorrectSampleOffset(group, found);
  ReportCalibration(
      options, group, found, changes, changes.empty() ? "" : Save(inspection, options.output));
}

}  // namespace

void AddCalibrateVerb(CLI::App& program) {
  constexpr double farthest = 1e6;  // µs
  CLI::App& verb = *program.add_subcommand(
      "calibrate", "Corrects the sample offset of TOFD data by lateral wave and back wall");
  const auto options = std::make_shared<CalibrateOptions>();
  verb.add_option("FILE", options->file, "Inspection file")->required();
  verb.add_option("--data", options->selector, "Data group with the A-scans")
      ->required()
      ->type_name("SELECTOR");
  verb.add_option("--row", options->echoes.row, "Row of the A-scans, from 0; all if not given");
  verb.add_option(
      "--column", options->echoes.column, "Column of the A-scans, from 0; all if not given");
  CLI::Option* const lateral =
      verb.add_option("--lateral-wave",
                      options->times.lateralWave,
                      "Time of the lateral wave on the sample axis, µs; else it is found")
          ->check(Within(-farthest, farthest))
          ->type_name("US");
  CLI::Option* const back =
      verb.add_option("--back-wall",
                      options->times.backWall,
                      "Time of the back wall echo on the sample axis, µs; else it is found")
          ->check(Within(-farthest, farthest))
          ->type_name("US");
  lateral->needs(back);
  back->needs(lateral);
  for (const char* place : {"--row", "--column"}) lateral->excludes(verb.get_option(place));
  verb.add_flag("--show", options->show, "Show what the echoes say; write nothing");
  AddChangeOutput(verb, options->output);
  AddAcceptDamage(verb, options->acceptDamage);
  verb.add_flag("--json", options->json, "Print the result as JSON, quantities in base units");
  verb.add_flag("--quiet", options->quiet, "Print no result");
  verb.footer(std::string(calibrateExplanation) + calibrateExample);
  verb.callback([options, lateral] {
    CheckChangeOutput(options->output);
    if (*lateral) options->echoes.times = options->times;
    Calibrate(*options);
  });
}

}  // namespace utdata::program
