#include <algorithm>
#include <cctype>
#include <memory>
#include <nlohmann/json.hpp>
#include <span>
#include <string>

#include "arrays/description.h"
#include "arrays/foreign_array.h"
#include "arrays/hdf5_file.h"
#include "arrays/npy.h"
#include "listing/damage.h"
#include "listing/selector.h"
#include "terminal/interrupt.h"
#include "terminal/new_file.h"
#include "terminal/output.h"
#include "terminal/progress.h"
#include "terminal/text.h"
#include "verbs/options.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* exportExample =
    R"(SELECTOR is the number of a row of 'utdata info', or fields of its JSON that match exactly
one data group, as in class=1,channel=0. A-scans become an array of rows x columns x
samples, C-scans one of rows x columns. The .json file beside a .npy file gives axes, units
and ranges; an .h5 file has them in itself. 'utdata import' reads both.

Example:
  utdata demo --force && utdata export utdata-demo/weld.fpd --data 0 -o weld.npy
  python3 -c 'import numpy; print(numpy.load("weld.npy").shape)'
)";

struct ExportOptions {
  std::string file;
  std::string selector;
  std::string output;
  bool force = false;
  bool quiet = false;
  bool json = false;
  bool acceptDamage = false;
};

/// Exactly one data group, ready to be written.
struct Export {
  DataGroup group;
  DescribedArray array;
  nlohmann::ordered_json description;
};

std::span<const std::byte> BytesOf(const std::string& text) {
  return std::as_bytes(std::span(text));
}

void ExportNpy(const ExportOptions& options, const Export& exported, Progress& progress) {
  const std::string described = DescriptionPath(options.output);
  CheckNewFile(described, options.force);
  NewFile samples(options.output, options.force);
  NewFile description(described, options.force);
  samples.Append(BytesOf(NpyHeaderBytes(*exported.array.type, exported.array.Shape())));
  std::uint64_t done = 0;
  const auto append = [&](std::span<const std::byte> piece, std::uint64_t total) {
    samples.Append(piece);
    done += piece.size();
    progress.At(done, total);
  };
  ForEachPiece(exported.array, exported.group, append);
  description.Append(BytesOf(exported.description.dump(2) + "\n"));
  CommitTogether(samples, description);
}

void ExportHdf5(const ExportOptions& options, const Export& exported, Progress& progress) {
  NewFile file(options.output, options.force);
  WriteHdf5(file, exported.array, exported.group, exported.description.dump(), std::ref(progress));
  file.Commit();
}

std::string ShapeText(const DescribedArray& array) {
  std::string text;
  for (const DescribedAxis& axis : array.axes)
    text += (text.empty() ? "" : " x ") + std::to_string(axis.quantity) + " " + axis.name +
            (axis.quantity == 1 ? "" : "s");
  return text + " (" + array.type->name + ")";
}

void ReportExport(const ExportOptions& options, const Export& exported) {
  if (options.json) {
    nlohmann::ordered_json result = {{"path", options.output}};
    result.update(exported.description);
    return PrintResult(result.dump(2) + "\n");
  }
  if (options.quiet) return;
  const bool isNpy = exported.description["array"] != exportedDataSet;
  PrintResult(Printable(options.output) + (isNpy ? "" : std::string(":") + exportedDataSet) + ": " +
              ShapeText(exported.array) +
              (isNpy ? ", described in " + Printable(DescriptionPath(options.output)) : "") + "\n");
}

/// Reads all samples once, so that the description names the cells that are written without them.
void DescribeDamage(const Inspection& inspection,
                    const DataGroup& group,
                    nlohmann::ordered_json& description) {
  static_cast<void>(group.Table());
  nlohmann::ordered_json places = nlohmann::ordered_json::array();
  for (const DamagedSamples& damage : inspection.Damage())
    if (damage.group == group.Index())
      places.push_back({{"cells", damage.cells},
                        {"first_cell", damage.firstCell},
                        {"last_cell", damage.lastCell}});
  if (!places.empty()) description["damaged"] = std::move(places);
}

void ExportGroup(const ExportOptions& options) {
  const InterruptScope interrupts;
  const bool isNpy = ArrayName(options.output).format == ArrayFormat::Npy;
  if (!isNpy) CheckHasHdf5(options.output);
  CheckNewFile(options.output, options.force);
  const Inspection inspection =
      OpenInspection(options.file, SampleTables::Mapped, options.quiet, options.acceptDamage);
  CheckNotInput(inspection, options.output);
  const DataGroup group = SelectGroup(inspection, options.selector);
  Export exported = {group, DescribeArray(group), {}};
  const std::string holder = options.output.substr(options.output.find_last_of('/') + 1);
  exported.description = DescriptionJson(exported.array, group, isNpy ? holder : exportedDataSet);
  if (options.acceptDamage) DescribeDamage(inspection, group, exported.description);
  {
    Progress progress("exporting " + options.output, options.quiet);
    isNpy ? ExportNpy(options, exported, progress) : ExportHdf5(options, exported, progress);
  }
  WarnOfDamage(inspection);
  ReportExport(options, exported);
}

/// Refuses an output whose name has no format.
std::string CheckFormat(const std::string& path) {
  const ArrayName name(path);
  if (name.format != ArrayFormat::Raw && name.dataSet.empty()) return {};
  return "'" + path + "' ends neither in .npy nor in .h5 or .hdf5";
}

}  // namespace

void AddExportVerb(CLI::App& program) {
  CLI::App& verb = *program.add_subcommand(
      "export", "Writes the samples and axes of a data group for other programs");
  const auto options = std::make_shared<ExportOptions>();
  verb.add_option("FILE", options->file, "Inspection file")->required();
  verb.add_option("--data", options->selector, "Data group to export")
      ->required()
      ->type_name("SELECTOR");
  verb.add_option("-o,--output",
                  options->output,
                  "Array to make: a .npy file of NumPy, or an .h5 or .hdf5 file")
      ->required()
      ->check(CLI::Validator(CheckFormat, ""))
      ->type_name("OUT.npy|OUT.h5");
  verb.add_flag("--force", options->force, "Replace existing files");
  AddAcceptDamage(verb, options->acceptDamage);
  verb.add_flag("--json", options->json, "Print what was written as JSON");
  verb.add_flag("--quiet", options->quiet, "Print no progress and no result");
  verb.footer(exportExample);
  verb.callback([options] { ExportGroup(*options); });
}

}  // namespace utdata::program
