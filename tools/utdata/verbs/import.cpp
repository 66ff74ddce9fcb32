#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "arrays/description.h"
#include "arrays/foreign_array.h"
#include "listing/data_rows.h"
#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/progress.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "utdata/edits.h"
#include "utdata/newscan.h"
#include "verbs/import_options.h"
#include "verbs/options.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* importExample =
    R"(FILE.npy and the data set of FILE.h5:/path give their shape and type, and what 'utdata
export' wrote gives the axes too; an option overrides them. A headerless file needs --shape,
--axes and --dtype. An array with a beam axis becomes a channel with a sub-channel for each beam.
LIST.json holds several arrays, each with its options: [{"array": "a.npy", "channel": 0}, ...].

Example:
  head -c 1310720 /dev/urandom > scan.raw
  utdata import scan.raw -o scan.fpd --shape 10,256,256 --axes row,sample,column --dtype u16
  utdata export scan.fpd --data 0 -o scan.npy && utdata import scan.npy -o again.fpd
  head -c 41000 /dev/urandom > sector.raw
  utdata import sector.raw -o weld.fpd --shape 41,500 --axes beam,sample --dtype i16 --angle 30:1
  utdata import scan.npy --into weld.fpd --channel 1 --tofd --pcs 60
  utdata info weld.fpd
)";

struct ImportOptions {
  ArrayOptions array;
  std::string output;
  std::string into;
  std::string as = "append";
  std::string title;
  Signature signature;
  bool force = false;
  bool quiet = false;
  bool json = false;

  [[nodiscard]] const std::string& Path() const { return into.empty() ? output : into; }
};

/// One array, with all that an inspection takes of it.
struct Scan {
  CGDataTypeFDD record;
  ChannelSetup setup;
  SampleMemory samples;
  std::uint64_t size = 0;  ///< bytes
  std::string nominal;     ///< the values that nobody gave
};

ForeignArray Describe(const ArrayOptions& options, const ArrayName& name) {
  if (name.format != ArrayFormat::Raw) return ReadHeader(name);
  ForeignArray array;
  array.type = FindSampleType(options.dtype);
  array.bigEndian = options.bigEndian;
  array.shape = ParseShape(options.shape);
  return array;
}

/// The sound speed of a channel that an inspection has.
std::optional<float> SoundSpeedOf(Inspection& inspection, std::uint32_t channel) {
  for (const GroupHandle& group :
       EditableGroups(inspection, SCFile::file_GroupTypeOf<CGChanTypeDescr>()))
    if (const Fields values = group.Values(); values["channelId"].Number() == channel)
      return static_cast<float>(values["soundSpeed"].Number());
  return std::nullopt;
}

/// The beams of an array, and its angle where it has one beam.
std::vector<CGSubchanTypeDescr> SetBeams(const ArrayOptions& options,
                                         const ArrayLayout& layout,
                                         bool hasBeamAxis,
                                         CGDataTypeFDD& record) {
  const std::uint32_t quantity = layout.Quantity(ArrayAxis::Beam);
  if (hasBeamAxis && options.angles.empty()) throw CLI::RequiredError("--angle");
  if (options.subChannel) record.subChannelId = *options.subChannel;
  if (options.angles.empty()) return SetupOf(record).beams;
  const std::vector<double> angles = ParseAngles(options.angles, quantity);
  if (!hasBeamAxis) {
    record.probeAngle = static_cast<float>(angles.front());
    return SetupOf(record).beams;
  }
  return BeamsOf(record, angles);
}

void SetIds(const ArrayOptions& options, CGDataTypeFDD& record) {
  if (options.channel) record.channelId = *options.channel;
  if (options.tofd) record.tofd = 1;
  if (record.tofd == 1 && !(record.probeSeparation > 0)) throw CLI::RequiredError("--pcs");
  if (record.tofd != 1 && options.HasSeparation())
    throw CLI::ValidationError("--pcs", "goes with --tofd");
  if (!options.channelName.empty()) SetName(record.channelName, ToWide(options.channelName));
}

/// Reads an array. @param inspection that it is added to
Scan ReadScan(const ArrayOptions& options, Inspection& inspection, bool quiet) {
  const ArrayName name(options.array);
  CheckHeaderOptions(options, name.format);
  const ForeignArray array = Describe(options, name);
  Scan scan{NominalRecord(*array.type), {}, {}, 0, {}};
  const std::vector<ArrayAxis> described = ReadDescription(array, scan.record);
  const std::vector<ArrayAxis> axes = ChooseAxes(options, array, described);
  const auto has = [&](ArrayAxis axis) { return std::ranges::count(axes, axis) > 0; };
  const ArrayLayout layout = LayoutOf(array, axes, options.array);
  SetLayout(scan.record,
            *array.type,
            {layout.Quantity(ArrayAxis::Column),
             layout.Quantity(ArrayAxis::Row),
             layout.Quantity(ArrayAxis::Sample),
             has(ArrayAxis::Sample)});
  const std::optional<float> speed =
      SoundSpeedOf(inspection, options.channel.value_or(scan.record.channelId));
  if (speed && described.empty()) scan.record.soundSpeed = *speed;
  scan.nominal = SetQuantities(options, !described.empty(), speed.has_value(), scan.record);
  if (options.rectified) scan.record.SetDataRectification(gdata_RectifFull);
  SetIds(options, scan.record);
  const std::vector<CGSubchanTypeDescr> beams =
      SetBeams(options, layout, has(ArrayAxis::Beam), scan.record);
  scan.setup = SetupOf(scan.record);
  scan.setup.beams = beams;
  Progress progress("importing " + options.array, quiet);
  scan.samples = GatherArray(name, layout, std::ref(progress));
  static_cast<void>(layout.Size(scan.size));  // it fits: the samples are in memory
  return scan;
}

/// "weld.fpd: channel 1, 41 beams from 30 to 70 degrees, each 1 rows x 10 columns, A-scans of 500
/// samples (i16)"
std::string LineOf(const std::string& path, const std::vector<DataGroup>& added) {
  const DataGroup& first = added.front();
  const CGDataTypeFDD& record = first.Stored();
  std::string text = Printable(path) + ": ";
  if (record.channelId != 0 || record.subChannelId != 0)
    text += "channel " + std::to_string(record.channelId) + ", ";
  if (added.size() > 1)
    text += std::to_string(added.size()) + " beams from " + Number(record.probeAngle) + " to " +
            Number(added.back().Stored().probeAngle) + " degrees, each ";
  else if (record.subChannelId != 0)
    text += "sub-channel " + std::to_string(record.subChannelId) + ", ";
  return text + std::to_string(first.RowQuantity()) + " rows x " +
         std::to_string(first.ColumnQuantity()) + " columns, " +
         (first.HasAScans() ? "A-scans of " + std::to_string(first.SampleQuantity()) + " samples"
                            : first.ClassName()) +
         (first.IsTofd() ? " (TOFD, " : " (") + first.TypeName() + ")\n";
}

void ReportImport(const ImportOptions& options,
                  const std::vector<std::vector<DataGroup>>& scans,
                  const std::string& written,
                  const std::string& nominal) {
  if (options.json) {
    nlohmann::ordered_json result = {{"path", options.Path()}, {"written", written}};
    result["data"] = nlohmann::ordered_json::array();
    for (const auto& scan : scans)
      for (const DataGroup& data : scan) {
        result["data"].push_back(DataGroupJson(data));
        result["data"].back()["table_bytes"] = data.Table().size();
      }
    return PrintResult(result.dump(2) + "\n");
  }
  if (options.quiet) return;
  std::string text;
  for (const auto& scan : scans) text += LineOf(written, scan);
  PrintResult(text);
  if (!nominal.empty()) std::fprintf(stderr, "nominal: %s\n", nominal.c_str());
}

Inspection Begin(const ImportOptions& options) {
  if (!options.into.empty()) return OpenInspection(options.into);
  CheckNewInspection(options.output, options.force);
  return Inspection::New(options.output);
}

std::string Finish(Inspection& inspection, ImportOptions& options, const std::string& nominal) {
  const std::string note = nominal.empty() ? "" : "nominal, not measured: " + nominal;
  if (options.into.empty()) {
    AddTexts(inspection, {options.title, "utdata " UTDATA_VERSION, note});
    SaveNew(inspection, options.output, options.force, options.signature);
    return options.output;
  }
  if (options.signature.reason.empty()) options.signature.reason = note;
  return Save(inspection, {options.as, {}, false, options.signature});
}

void Import(ImportOptions options) {
  const InterruptScope interrupts;
  const std::vector<ArrayOptions> arrays = ListedArrays(options.array);
  std::vector<Scan> read;  // the samples, which live as long as the inspection
  Inspection inspection = Begin(options);
  std::vector<std::vector<DataGroup>> added;
  std::string nominal;
  for (const ArrayOptions& array : arrays) {
    const Scan& scan = read.emplace_back(ReadScan(array, inspection, options.quiet));
    added.push_back(AddBeams(inspection, scan.record, scan.setup, {scan.samples.get(), scan.size}));
    if (nominal.empty()) nominal = scan.nominal;
  }
  const std::string written = Finish(inspection, options, nominal);
  ReportImport(options, added, written, nominal);
}

void CheckOutput(const CLI::App& verb, const ImportOptions& options) {
  if (options.output.empty() == options.into.empty())
    throw CLI::ValidationError("-o", "names a new inspection file, or --into one that is there");
  for (const char* name : {"--force", "--title"})
    if (!options.into.empty() && verb.count(name) > 0)
      throw CLI::ValidationError(name, "goes with -o");
  if (options.into.empty() && verb.count("--as") > 0)
    throw CLI::ValidationError("--as", "goes with --into");
}

}  // namespace

void AddImportVerb(CLI::App& program) {
  CLI::App& verb =
      *program.add_subcommand("import", "Makes an inspection file from an array of samples");
  const auto options = std::make_shared<ImportOptions>();
  AddArrayOptions(verb, options->array);
  verb.add_option("-o,--output", options->output, "Inspection file to make");
  verb.add_option("--into", options->into, "Inspection file that the array is added to")
      ->type_name("FILE");
  verb.add_option("--as", options->as, "Where it goes then: append or companion")
      ->check(CLI::IsMember({"append", "companion"}).description(""))
      ->capture_default_str()
      ->type_name("append|companion");
  verb.add_option("--title", options->title, "Title of a new inspection");
  verb.add_flag("--force", options->force, "Replace an existing file, with -o");
  AddSignature(verb, options->signature);
  verb.add_flag("--json", options->json, "Print the result as JSON");
  verb.add_flag("--quiet", options->quiet, "Print no messages and no progress");
  verb.footer(importExample);
  verb.callback([&verb, options] {
    CheckOutput(verb, *options);
    Import(*options);
  });
}

}  // namespace utdata::program
