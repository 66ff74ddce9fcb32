#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <iterator>
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
#include "utdata/newscan.h"
#include "verbs/options.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* importExample =
    R"(FILE.npy and the data set of FILE.h5:/path give their shape and type, and what 'utdata
export' wrote gives the axes too; an option overrides them. A headerless file needs --shape,
--axes and --dtype.

Example:
  head -c 1310720 /dev/urandom > scan.raw
  utdata import scan.raw -o scan.fpd --shape 10,256,256 --axes row,sample,column --dtype u16
  utdata export scan.fpd --data 0 -o scan.npy && utdata import scan.npy -o again.fpd
  utdata info again.fpd
)";

using Record = CGDataTypeFDD;

/// A physical quantity of the command line, with the bounds that its field can hold in a sensible
/// inspection.
struct QuantityOption {
  const char* name;
  float Record::*field;
  const char* unit;
  const char* what;
  double minimum;
  double maximum;
  bool isNominal = false;  ///< its preset is a nominal value, which a message names

  /// Of its unit in the base unit of the field.
  [[nodiscard]] double PerBase() const {
    const ArrayUnit* known = FindArrayUnit(unit);
    return known ? known->perBase : 1;
  }
};
constexpr QuantityOption quantityOptions[] = {
    {"--column-step", &Record::columnResolution, "mm", "Distance between columns", 1e-6, 1e6, true},
    {"--row-step", &Record::rowResolution, "mm", "Distance between rows", 1e-6, 1e6, true},
    {"--sample-step",
     &Record::sampleResolution,
     "ns",
     "Two-way time between samples",
     1e-3,
     1e9,
     true},
    {"--column-offset", &Record::columnOffset, "mm", "Position of the first column", -1e6, 1e6},
    {"--row-offset", &Record::rowOffset, "mm", "Position of the first row", -1e6, 1e6},
    {"--sample-offset", &Record::sampleOffset, "ns", "Time of the first sample", -1e9, 1e9},
    {"--sound-speed", &Record::soundSpeed, "m/s", "Sound speed in the part", 1, 1e5, true},
    {"--probe-angle", &Record::probeAngle, "degrees", "Refracted angle in the part", -90, 90},
    {"--thickness", &Record::partThickness, "mm", "Thickness of the part, 0 unknown", 0, 1e6},
};

struct ImportOptions {
  std::string array;
  std::string output;
  std::string shape;
  std::string axes;
  std::string dtype;
  bool bigEndian = false;
  bool rectified = false;
  std::array<std::optional<double>, std::size(quantityOptions)>
      quantities;  ///< as given, in the units of the options
  std::string channelName;
  std::string title;
  std::string nominal;  ///< the values that nobody gave
  bool force = false;
  bool quiet = false;
  bool json = false;
};

std::vector<std::string> SplitAtCommas(const std::string& text) {
  std::vector<std::string> parts(1);
  for (const char character : text) {
    if (character == ',')
      parts.emplace_back();
    else
      parts.back() += character;
  }
  return parts;
}

std::vector<std::uint64_t> ParseShape(const std::string& text) {
  std::vector<std::uint64_t> shape;
  bool valid = true;
  for (const std::string& part : SplitAtCommas(text)) {
    std::uint32_t quantity = 0;
    const char* end = part.data() + part.size();
    const auto [at, error] = std::from_chars(part.data(), end, quantity);
    valid = valid && error == std::errc() && at == end && quantity > 0;
    shape.push_back(quantity);
  }
  if (!valid || shape.size() != 3)
    throw CLI::ValidationError(
        "--shape",
        "'" + text + "' is not three whole numbers from 1 to 4294967295, as in 10,256,256");
  return shape;
}

std::vector<ArrayAxis> ParseAxes(const std::string& text) {
  constexpr std::array<const char*, 3> names = {"row", "column", "sample"};
  std::vector<ArrayAxis> axes;
  for (const std::string& part : SplitAtCommas(text)) {
    const auto* const found = std::find(names.begin(), names.end(), part);
    const auto axis = static_cast<ArrayAxis>(found - names.begin());
    if (found == names.end() || std::find(axes.begin(), axes.end(), axis) != axes.end())
      throw CLI::ValidationError(
          "--axes", "'" + text + "' is not row, column and sample in some order, joined by commas");
    axes.push_back(axis);
  }
  return axes;
}

/// The options that only a headerless array has, and needs.
void CheckHeaderOptions(const CLI::App& verb, ArrayFormat format) {
  if (format == ArrayFormat::Raw) {
    for (const char* name : {"--shape", "--axes", "--dtype"})
      if (verb.count(name) == 0) throw CLI::RequiredError(name);
    return;
  }
  for (const char* name : {"--shape", "--dtype", "--big-endian"})
    if (verb.count(name) > 0) throw CLI::ValidationError(name, "the array has that in itself");
}

ForeignArray Describe(const ImportOptions& options, const ArrayName& name) {
  if (name.format != ArrayFormat::Raw) return ReadHeader(name);
  ForeignArray array;
  array.type = FindSampleType(options.dtype);
  array.bigEndian = options.bigEndian;
  array.shape = ParseShape(options.shape);
  return array;
}

/// The axes as given, else as described, else, of an array of three axes, row, column, sample.
std::vector<ArrayAxis> ChooseAxes(const ImportOptions& options,
                                  const ForeignArray& array,
                                  std::vector<ArrayAxis> described) {
  const std::size_t quantity = array.shape.size();
  const std::string has =
      "the array has " + std::to_string(quantity) + (quantity == 1 ? " axis" : " axes");
  if (quantity == 0 || quantity > 3)
    throw Failure(options.array, "cannot be imported", has, "one to three are taken");
  if (!options.axes.empty()) {
    const std::vector<ArrayAxis> given = ParseAxes(options.axes);
    if (given.size() == quantity) return given;
    throw CLI::ValidationError("--axes", "names " + std::to_string(given.size()) + ", and " + has);
  }
  if (!described.empty()) return described;
  if (quantity == 3) return {ArrayAxis::Row, ArrayAxis::Column, ArrayAxis::Sample};
  throw Failure(options.array,
                "cannot be imported",
                has,
                "name each with --axes, as in column,sample or row,column");
}

/// Puts the quantities given on the command line into the record. Returns which ones are nominal,
/// unless a description came with the array.
std::string SetQuantities(const ImportOptions& options, bool isDescribed, CGDataTypeFDD& record) {
  std::string nominal;
  for (std::size_t index = 0; index < std::size(quantityOptions); ++index) {
    const QuantityOption& option = quantityOptions[index];
    float& field = record.*option.field;
    if (options.quantities[index]) {
      field = static_cast<float>(*options.quantities[index] / option.PerBase());
    } else if (option.isNominal && !isDescribed) {
      std::string name = option.name + 2;
      std::replace(name.begin(), name.end(), '-', ' ');
      nominal += (nominal.empty() ? "" : ", ") + name + " " + Number(field * option.PerBase()) +
                 " " + option.unit;
    }
  }
  return nominal;
}

void ReportImport(const ImportOptions& options, const DataGroup& data) {
  if (options.json) {
    nlohmann::ordered_json result = {{"path", options.output}, {"data", {DataGroupJson(data)}}};
    result["data"][0]["table_bytes"] = data.Table().size();
    return PrintResult(result.dump(2) + "\n");
  }
  if (options.quiet) return;
  PrintResult(Printable(options.output) + ": " + std::to_string(data.RowQuantity()) + " rows x " +
              std::to_string(data.ColumnQuantity()) + " columns, " +
              (data.HasAScans() ? "A-scans of " + std::to_string(data.SampleQuantity()) + " samples"
                                : data.ClassName()) +
              " (" + data.TypeName() + ")\n");
  if (!options.nominal.empty()) std::fprintf(stderr, "nominal: %s\n", options.nominal.c_str());
}

void Import(ImportOptions options, const CLI::App& verb) {
  const ArrayName name(options.array);
  CheckHeaderOptions(verb, name.format);
  const InterruptScope interrupts;
  const ForeignArray array = Describe(options, name);
  CGDataTypeFDD record = NominalRecord(*array.type);
  const std::vector<ArrayAxis> described = ReadDescription(array, record);
  const std::vector<ArrayAxis> axes = ChooseAxes(options, array, described);
  CheckNewInspection(options.output, options.force);
  const ArrayLayout layout = LayoutOf(array, axes, options.array);
  SetLayout(record,
            *array.type,
            {layout.Quantity(ArrayAxis::Column),
             layout.Quantity(ArrayAxis::Row),
             layout.Quantity(ArrayAxis::Sample),
             std::find(axes.begin(), axes.end(), ArrayAxis::Sample) != axes.end()});
  options.nominal = SetQuantities(options, !described.empty(), record);
  if (options.rectified) record.SetDataRectification(gdata_RectifFull);
  if (!options.channelName.empty()) SetName(record.channelName, ToWide(options.channelName));
  SampleMemory samples;
  {
    Progress progress("importing " + options.array, options.quiet);
    samples = GatherArray(name, layout, std::ref(progress));
  }
  std::uint64_t size = 0;
  static_cast<void>(layout.Size(size));  // it fits: the samples are in memory
  Inspection inspection = Inspection::New(options.output);
  const DataGroup data =
      AddScan(inspection,
              record,
              {samples.get(), size},
              {options.title,
               "utdata " UTDATA_VERSION,
               options.nominal.empty() ? "" : "nominal, not measured: " + options.nominal});
  SaveNew(inspection, options.output, options.force);
  ReportImport(options, data);
}

void AddArrayOptions(CLI::App& verb, ImportOptions& options) {
  verb.add_option("ARRAY",
                  options.array,
                  "Array of samples: FILE.npy, FILE.h5:/path of a data set, or a headerless file")
      ->required();
  verb.add_option("-o,--output", options.output, "Inspection file to make")->required();
  verb.add_option("--shape",
                  options.shape,
                  "Quantities of the three axes of a headerless file, outermost first")
      ->type_name("N,N,N");
  verb.add_option(
          "--axes",
          options.axes,
          "Names of the axes, first (outermost) one first: row, column, sample in some order")
      ->type_name("A,B,C");
  verb.add_option("--dtype", options.dtype, "Sample type of a headerless file")
      ->check(CLI::IsMember({"u8", "i8", "u16", "i16"}).description(""))
      ->type_name("u8|i8|u16|i16");
  verb.add_flag("--big-endian",
                options.bigEndian,
                "Samples of a headerless file are stored most significant byte first");
  verb.add_flag("--rectified", options.rectified, "Amplitudes are rectified");
}

void AddQuantityOptions(CLI::App& verb, ImportOptions& options) {
  const CGDataTypeFDD nominal = NominalRecord(*FindSampleType("u8"));
  for (std::size_t index = 0; index < std::size(quantityOptions); ++index) {
    const QuantityOption& option = quantityOptions[index];
    verb.add_option(option.name, options.quantities[index], option.what)
        ->default_str(Number(nominal.*option.field * option.PerBase()))
        ->check(Within(option.minimum, option.maximum))
        ->type_name(option.unit);
  }
}

}  // namespace

void AddImportVerb(CLI::App& program) {
  CLI::App& verb =
      *program.add_subcommand("import", "Makes an inspection file from an array of samples");
  const auto options = std::make_shared<ImportOptions>();
  AddArrayOptions(verb, *options);
  AddQuantityOptions(verb, *options);
  verb.add_option(
      "--channel-name", options->channelName, "Name of the channel, at most 31 characters");
  verb.add_option("--title", options->title, "Title of the inspection");
  verb.add_flag("--force", options->force, "Replace an existing file");
  verb.add_flag("--json", options->json, "Print the result as JSON");
  verb.add_flag("--quiet", options->quiet, "Print no messages and no progress");
  verb.footer(importExample);
  verb.callback([&verb, options] { Import(*options, verb); });
}

}  // namespace utdata::program
