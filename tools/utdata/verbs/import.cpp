#include <algorithm>
#include <charconv>
#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "arrays/gather.h"
#include "document/data_group.h"
#include "document/document.h"
#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/progress.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "verbs/options.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

constexpr const char* example =
    "Example:\n"
    "  head -c 1310720 /dev/urandom > scan.raw\n"
    "  utdata import scan.raw -o scan.fpd --shape 10,256,256 --axes row,sample,column --dtype u16 --rectified\n"
    "  utdata info scan.fpd\n";

/// What a sample type of the command line means.
struct SampleType {
  const char* name;
  kvt_enumDataType type;
  std::uint32_t size;  ///< bytes
  float minimum;
  float maximum;
};
constexpr SampleType sampleTypes[] = {{"u8", kvt_UInt8, 1, 0, 255},
                                      {"i8", kvt_Int8, 1, -128, 127},
                                      {"u16", kvt_UInt16, 2, 0, 65535},
                                      {"i16", kvt_Int16, 2, -32768, 32767}};

struct ImportOptions {
  std::string raw;
  std::string output;
  std::string shape;
  std::string axes;
  std::string dtype;
  bool bigEndian = false;
  bool rectified = false;
  double columnStep = 1;     // mm
  double rowStep = 1;        // mm
  double sampleStep = 10;    // ns
  double columnOffset = 0;   // mm
  double rowOffset = 0;      // mm
  double sampleOffset = 0;   // ns
  double soundSpeed = 5900;  // m/s
  double probeAngle = 0;     // degrees
  double thickness = 0;      // mm
  std::string channelName;
  std::string title;
  bool force = false;
  bool quiet = false;
  bool json = false;
  std::string nominal;  ///< the axis values that nobody gave
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

std::array<std::uint32_t, 3> ParseShape(const std::string& text) {
  const std::vector<std::string> parts = SplitAtCommas(text);
  std::array<std::uint32_t, 3> shape{};
  bool valid = parts.size() == shape.size();
  for (std::size_t index = 0; valid && index < shape.size(); ++index) {
    const char* end = parts[index].data() + parts[index].size();
    const auto [at, error] = std::from_chars(parts[index].data(), end, shape[index]);
    valid = error == std::errc() && at == end && shape[index] > 0;
  }
  if (!valid)
    throw CLI::ValidationError("--shape",
                               "'" + text + "' is not three whole numbers from 1 to 4294967295, as in 10,256,256");
  return shape;
}

std::array<ArrayAxis, 3> ParseAxes(const std::string& text) {
  constexpr std::array<const char*, 3> names = {"row", "column", "sample"};
  const std::vector<std::string> parts = SplitAtCommas(text);
  if (!std::is_permutation(parts.begin(), parts.end(), names.begin(), names.end()))
    throw CLI::ValidationError("--axes",
                               "'" + text + "' is not row, column and sample in some order, joined by commas");
  std::array<ArrayAxis, 3> axes{};
  for (std::size_t index = 0; index < axes.size(); ++index)
    axes[index] = static_cast<ArrayAxis>(std::find(names.begin(), names.end(), parts[index]) - names.begin());
  return axes;
}

const SampleType& ParseSampleType(const std::string& name) {
  return *std::find_if(
      std::begin(sampleTypes), std::end(sampleTypes), [&](const SampleType& type) { return name == type.name; });
}

void SetName(wchar_t (&field)[CGDataTypeFDD::nameSize], const std::wstring& name) {
  const std::size_t length = std::min(name.size(), CGDataTypeFDD::nameSize - 1);
  std::copy_n(name.begin(), length, field);
  field[length] = 0;
}

void AddDataGroup(Document& document, const ImportOptions& options, const ArrayLayout& layout, std::byte* samples) {
  const SampleType& type = ParseSampleType(options.dtype);
  CGDataTypeFDD* data = gdata_Allocate(1, nullptr);
  if (!data) throw std::bad_alloc();
  document.Groups().data.AddTail(data);
  data->dataClass = gdata_AScan;
  SetName(data->channelName, ToWide(options.channelName));
  data->columnQuantity = layout.Quantity(ArrayAxis::Column);
  data->columnResolution = static_cast<float>(options.columnStep / 1e3);
  data->columnOffset = static_cast<float>(options.columnOffset / 1e3);
  data->rowQuantity = layout.Quantity(ArrayAxis::Row);
  data->rowResolution = static_cast<float>(options.rowStep / 1e3);
  data->rowOffset = static_cast<float>(options.rowOffset / 1e3);
  data->sampleQuantity = layout.Quantity(ArrayAxis::Sample);
  data->sampleResolution = static_cast<float>(options.sampleStep / 1e9);
  data->sampleOffset = static_cast<float>(options.sampleOffset / 1e9);
  data->SetDataType(type.type);
  data->SetDataRectification(options.rectified ? gdata_RectifFull : gdata_RectifNone);
  data->dataMinimum = type.minimum;
  data->dataMaximum = type.maximum;
  data->sampleSize = type.size;
  data->cellSize = type.size * data->sampleQuantity;
  data->probeAngle = static_cast<float>(options.probeAngle);
  data->soundSpeed = static_cast<float>(options.soundSpeed);
  data->partThickness = static_cast<float>(options.thickness / 1e3);
  data->dataPointer = samples;
  AssignBookmarkType(*data);
}

void AddSettings(Document& document, const ImportOptions& options, const CGDataTypeFDD& data) {
  CFContTypeFileDescr& groups = document.Groups();
  const std::wstring channelName = ToWide(options.channelName);
  CGChanTypeDescr* channel = gchan_Allocate(1, channelName.c_str());
  if (!channel) throw std::bad_alloc();
  groups.channels.AddTail(channel);
  channel->rangeStart = data.sampleOffset;
  channel->range = data.sampleResolution * static_cast<float>(data.sampleQuantity);
  channel->soundSpeed = data.soundSpeed;
  channel->refractedAngle = data.probeAngle;
  channel->digitizingFrequency = static_cast<float>(1e9 / options.sampleStep);
  channel->rectification = data.GetDataRectification();

  CGProbeTypeDescr* probe = gprobe_Allocate(1, nullptr);
  if (!probe) throw std::bad_alloc();
  groups.probes.AddTail(probe);
  probe->angle = data.probeAngle;

  CGInfoTypeDescr* info = ginfo_Allocate(1, nullptr);
  if (!info) throw std::bad_alloc();
  groups.infos.AddTail(info);
  info->title = ToWide(options.title);
  info->software = ToWide("utdata " UTDATA_VERSION);
  if (!options.nominal.empty()) info->comment = ToWide("nominal, not measured: " + options.nominal);
}

void Report(const ImportOptions& options, const Document& document) {
  const CGDataTypeFDD& data = *document.Groups().data.GetHead();
  if (options.json) {
    nlohmann::ordered_json result = {{"path", options.output}, {"data", {DataGroupJson(data)}}};
    std::uint64_t size = 0;
    if (data.LayoutSize(size)) result["data"][0]["table_bytes"] = size;
    return PrintResult(result.dump(2) + "\n");
  }
  if (options.quiet) return;
  PrintResult(Printable(options.output) + ": " + std::to_string(data.rowQuantity) + " rows x " +
              std::to_string(data.columnQuantity) + " columns, A-scans of " + std::to_string(data.sampleQuantity) +
              " samples (" + SampleTypeName(data) + ")\n");
  if (!options.nominal.empty()) std::fprintf(stderr, "nominal: %s\n", options.nominal.c_str());
}

void Import(const ImportOptions& options) {
  ArrayLayout layout;
  layout.shape = ParseShape(options.shape);
  layout.axes = ParseAxes(options.axes);
  layout.sampleSize = ParseSampleType(options.dtype).size;
  layout.bigEndian = options.bigEndian;
  CheckNewPath(options.output, options.force);
  const InterruptScope interrupts;
  std::unique_ptr<std::byte[]> samples;
  {
    Progress progress("importing " + options.raw, options.quiet);
    samples =
        GatherAScans(options.raw, layout, [&](std::uint64_t done, std::uint64_t total) { progress.At(done, total); });
  }
  Document document = Document::New(options.output);
  AddDataGroup(document, options, layout, samples.get());
  AddSettings(document, options, *document.Groups().data.GetHead());
  document.WriteNew(options.force);
  Report(options, document);
}

/// A physical quantity of the command line, with the bounds that its field can hold in a sensible inspection.
struct QuantityOption {
  const char* name;
  double ImportOptions::*value;
  const char* unit;
  const char* what;
  double minimum;
  double maximum;
  bool hasNominal;  ///< its default is a nominal value that the user is told of
};
constexpr QuantityOption quantityOptions[] = {
    {"--column-step", &ImportOptions::columnStep, "mm", "Distance between columns", 1e-6, 1e6, true},
    {"--row-step", &ImportOptions::rowStep, "mm", "Distance between rows", 1e-6, 1e6, true},
    {"--sample-step", &ImportOptions::sampleStep, "ns", "Two-way time between samples", 1e-3, 1e9, true},
    {"--column-offset", &ImportOptions::columnOffset, "mm", "Position of the first column", -1e6, 1e6, false},
    {"--row-offset", &ImportOptions::rowOffset, "mm", "Position of the first row", -1e6, 1e6, false},
    {"--sample-offset", &ImportOptions::sampleOffset, "ns", "Time of the first sample", -1e9, 1e9, false},
    {"--sound-speed", &ImportOptions::soundSpeed, "m/s", "Sound speed in the part", 1, 1e5, true},
    {"--probe-angle", &ImportOptions::probeAngle, "degrees", "Refracted angle in the part", -90, 90, false},
    {"--thickness", &ImportOptions::thickness, "mm", "Thickness of the part, 0 unknown", 0, 1e6, false},
};

std::string NominalText(const CLI::App& verb, const ImportOptions& options) {
  std::string text;
  for (const QuantityOption& option : quantityOptions) {
    if (!option.hasNominal || verb.count(option.name) > 0) continue;
    std::string name = option.name + 2;
    std::replace(name.begin(), name.end(), '-', ' ');
    text += (text.empty() ? "" : ", ") + name + " " + Number(options.*option.value) + " " + option.unit;
  }
  return text;
}

void AddArrayOptions(CLI::App& verb, ImportOptions& options) {
  verb.add_option("RAW", options.raw, "Headerless array of samples")->required();
  verb.add_option("-o,--output", options.output, "Inspection file to make")->required();
  verb.add_option("--shape", options.shape, "Quantities of the three axes, outermost first")
      ->required()
      ->type_name("N,N,N");
  verb.add_option("--axes", options.axes, "Names of the axes, outermost first: row, column and sample in some order")
      ->required()
      ->type_name("A,B,C");
  verb.add_option("--dtype", options.dtype, "Sample type")
      ->required()
      ->check(CLI::IsMember({"u8", "i8", "u16", "i16"}).description(""))
      ->type_name("u8|i8|u16|i16");
  verb.add_flag("--big-endian", options.bigEndian, "Samples are stored most significant byte first");
  verb.add_flag("--rectified", options.rectified, "Amplitudes are rectified");
}

}  // namespace

void AddImportVerb(CLI::App& program) {
  CLI::App& verb = *program.add_subcommand("import", "Makes an inspection file from a headerless array of samples");
  const auto options = std::make_shared<ImportOptions>();
  AddArrayOptions(verb, *options);
  for (const QuantityOption& option : quantityOptions)
    verb.add_option(option.name, (*options).*option.value, option.what)
        ->capture_default_str()
        ->check(Within(option.minimum, option.maximum))
        ->type_name(option.unit);
  verb.add_option("--channel-name", options->channelName, "Name of the channel, at most 31 characters");
  verb.add_option("--title", options->title, "Title of the inspection");
  verb.add_flag("--force", options->force, "Replace an existing file");
  verb.add_flag("--json", options->json, "Print the result as JSON");
  verb.add_flag("--quiet", options->quiet, "Print no messages and no progress");
  verb.footer(example);
  verb.callback([&verb, options] {
    options->nominal = NominalText(verb, *options);
    Import(*options);
  });
}

}  // namespace utdata::program
