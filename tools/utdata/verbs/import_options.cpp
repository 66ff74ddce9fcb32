#include "verbs/import_options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>
#include <span>

#include "arrays/input_file.h"
#include "terminal/failure.h"
#include "terminal/quantity.h"
#include "verbs/options.h"

namespace utdata::program {
namespace {

using Record = CGDataTypeFDD;
using Json = nlohmann::ordered_json;

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
    {"--skew", &Record::probeSkew, "degrees", "Direction of the beams on the part", -360, 360},
    {"--thickness", &Record::partThickness, "mm", "Thickness of the part, 0 unknown", 0, 1e6},
    {"--pcs",
     &Record::probeSeparation,
     "mm",
     "Distance between the index points of the two probes, with --tofd",
     1e-3,
     1e6},
};
static_assert(std::size(quantityOptions) == importQuantityCount);

std::vector<std::string> SplitAt(char separator, const std::string& text) {
  std::vector<std::string> parts(1);
  for (const char character : text) {
    if (character == separator)
      parts.emplace_back();
    else
      parts.back() += character;
  }
  return parts;
}

constexpr double widestAngle = 90;

double ParseAngle(const std::string& text, const std::string& all) {
  double angle = 0;
  const char* end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, angle);
  if (error != std::errc() || at != end || !std::isfinite(angle))
    throw CLI::ValidationError(
        "--angle", "'" + all + "' is no list of degrees, as in 45,50,60, nor FIRST:STEP");
  return angle;
}

std::string ValueText(const Json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number()) return value.dump();
  return {};
}

/// An entry of a list as arguments, last one first, as the parser takes them.
std::vector<std::string> ArgumentsOf(const Json& entry, const std::filesystem::path& folder) {
  std::vector<std::string> arguments;
  for (const auto& [key, value] : entry.items()) {
    if (key == "array") {
      const std::string name = ValueText(value);
      // What stands behind an HDF5 file's name is no part of a path.
      arguments.push_back(name.starts_with('/') ? name : (folder / "").string() + name);
      continue;
    }
    std::string option = "--" + key;
    std::replace(option.begin(), option.end(), '_', '-');
    if (value.is_boolean()) {
      if (value.get<bool>()) arguments.push_back(option);
      continue;
    }
    std::string text = ValueText(value);
    if (value.is_array())
      for (const Json& part : value) text += (text.empty() ? "" : ",") + ValueText(part);
    arguments.push_back(option + "=" + text);
  }
  std::reverse(arguments.begin(), arguments.end());
  return arguments;
}

Json ReadList(const std::string& path) {
  constexpr std::uint64_t longest = std::uint64_t{16} << 20U;
  const InputFile file(path);
  std::string text(std::min(file.Size(), longest), 0);
  static_cast<void>(file.Read(0, std::as_writable_bytes(std::span(text))));
  Json list = Json::parse(text, nullptr, false);
  const bool isList =
      list.is_array() && !list.empty() && std::ranges::all_of(list, [](auto& entry) {
        return entry.is_object() && entry.contains("array");
      });
  if (!isList)
    throw Failure(path,
                  "cannot be imported",
                  "it is no list of arrays",
                  R"(write it as in [{"array": "a.npy", "channel": 0}, {"array": "b.npy"}])");
  return list;
}

}  // namespace

void AddArrayOptions(CLI::App& verb, ArrayOptions& options) {
  constexpr std::uint32_t lastId = 0xFFFFFFFE;
  verb.add_option("ARRAY",
                  options.array,
                  "Array of samples: FILE.npy, FILE.h5:/path of a data set, or a headerless file; "
                  "or a list of arrays, LIST.json")
      ->required();
  verb.add_option(
          "--shape", options.shape, "Quantities of the axes of a headerless file, outermost first")
      ->type_name("N,N,N");
  verb.add_option("--axes",
                  options.axes,
                  "Names of the axes, first (outermost) one first: beam, row, column, sample in "
                  "some order; tx, rx or pair, of a full-matrix capture, for row and column")
      ->type_name("A,B,C");
  verb.add_option("--dtype", options.dtype, "Sample type of a headerless file")
      ->check(CLI::IsMember({"u8", "i8", "u16", "i16"}).description(""))
      ->type_name("u8|i8|u16|i16");
  verb.add_flag("--big-endian",
                options.bigEndian,
                "Samples of a headerless file are stored most significant byte first");
  verb.add_flag("--rectified", options.rectified, "Amplitudes are rectified");
  verb.add_option("--channel", options.channel, "Channel, from 0")
      ->check(CLI::Range(0U, lastId).description(""))
      ->type_name("C");
  verb.add_option("--sub-channel",
                  options.subChannel,
                  "Which beam of its channel the array is, from 1; with a beam axis, its first")
      ->check(CLI::Range(1U, lastId).description(""))
      ->type_name("N");
  verb.add_option("--angle",
                  options.angles,
                  "Refracted angles of the beams, degrees: a list, or FIRST:STEP")
      ->type_name("A,B,..|A:STEP");
  verb.add_flag("--tofd", options.tofd, "Time-of-flight diffraction, of two probes; needs --pcs");
  const CGDataTypeFDD nominal = NominalRecord(*FindSampleType("u8"));
  for (std::size_t index = 0; index < std::size(quantityOptions); ++index) {
    const QuantityOption& option = quantityOptions[index];
    CLI::Option& added = *verb.add_option(option.name, options.quantities[index], option.what)
                              ->check(Within(option.minimum, option.maximum))
                              ->type_name(option.unit);
    if (option.field != &Record::probeSeparation)
      added.default_str(Number(nominal.*option.field * option.PerBase()));
  }
  verb.add_option(
      "--channel-name", options.channelName, "Name of the channel, at most 31 characters");
}

std::vector<ArrayOptions> ListedArrays(const ArrayOptions& options) {
  if (!options.array.ends_with(".json")) return {options};
  const Json list = ReadList(options.array);
  const std::filesystem::path folder = std::filesystem::path(options.array).parent_path();
  std::vector<ArrayOptions> listed;
  for (const Json& entry : list) {
    listed.push_back(options);
    CLI::App parser;
    AddArrayOptions(parser, listed.back());
    try {
      parser.parse(ArgumentsOf(entry, folder));
    } catch (const CLI::ParseError& error) {
      throw Failure(options.array,
                    "entry " + std::to_string(listed.size()) + " cannot be read",
                    error.what());
    }
  }
  return listed;
}

void CheckHeaderOptions(const ArrayOptions& options, ArrayFormat format) {
  if (format == ArrayFormat::Raw) {
    if (options.shape.empty()) throw CLI::RequiredError("--shape");
    if (options.axes.empty()) throw CLI::RequiredError("--axes");
    if (options.dtype.empty()) throw CLI::RequiredError("--dtype");
    return;
  }
  constexpr const char* hasIt = "the array has that in itself";
  if (!options.shape.empty()) throw CLI::ValidationError("--shape", hasIt);
  if (!options.dtype.empty()) throw CLI::ValidationError("--dtype", hasIt);
  if (options.bigEndian) throw CLI::ValidationError("--big-endian", hasIt);
}

std::vector<std::uint64_t> ParseShape(const std::string& text) {
  std::vector<std::uint64_t> shape;
  bool valid = true;
  for (const std::string& part : SplitAt(',', text)) {
    std::uint32_t quantity = 0;
    const char* end = part.data() + part.size();
    const auto [at, error] = std::from_chars(part.data(), end, quantity);
    valid = valid && error == std::errc() && at == end && quantity > 0;
    shape.push_back(quantity);
  }
  if (!valid || shape.size() > arrayAxisQuantity)
    throw CLI::ValidationError("--shape",
                               "'" + text +
                                   "' is not up to four whole numbers from 1 to 4294967295, as in "
                                   "10,256,256");
  return shape;
}

namespace {

/// A name of an axis on the command line. The transmitters, receivers and pairs of a full-matrix
/// capture are counted: they lie at no places of the scan.
struct AxisName {
  const char* name;
  ArrayAxis axis;
  bool isCounted;
};
constexpr AxisName axisNames[] = {{"beam", ArrayAxis::Beam, false},
                                  {"row", ArrayAxis::Row, false},
                                  {"column", ArrayAxis::Column, false},
                                  {"sample", ArrayAxis::Sample, false},
                                  {"tx", ArrayAxis::Row, true},
                                  {"rx", ArrayAxis::Column, true},
                                  {"pair", ArrayAxis::Column, true}};

const AxisName* FindAxis(const std::string& name) {
  const auto* const found =
      std::ranges::find_if(axisNames, [&](const AxisName& known) { return name == known.name; });
  return found == std::end(axisNames) ? nullptr : found;
}

std::vector<ArrayAxis> ParseAxes(const std::string& text) {
  std::vector<ArrayAxis> axes;
  for (const std::string& part : SplitAt(',', text)) {
    const AxisName* const found = FindAxis(part);
    if (!found || std::ranges::count(axes, found->axis) > 0)
      throw CLI::ValidationError(
          "--axes",
          "'" + text +
              "' is not beam, row (or tx), column (or rx or pair) and sample in some order, joined "
              "by commas");
    axes.push_back(found->axis);
  }
  return axes;
}

}  // namespace

std::vector<ArrayAxis> ChooseAxes(const ArrayOptions& options,
                                  const ForeignArray& array,
                                  std::vector<ArrayAxis> described) {
  const std::size_t quantity = array.shape.size();
  const std::string has =
      "the array has " + std::to_string(quantity) + (quantity == 1 ? " axis" : " axes");
  if (quantity == 0 || quantity > arrayAxisQuantity)
    throw Failure(options.array, "cannot be imported", has, "one to four are taken");
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
                "name each with --axes, as in column,sample or beam,row,column,sample");
}

std::vector<double> ParseAngles(const std::string& text, std::uint32_t beams) {
  const std::string has =
      "the array has " + std::to_string(beams) + (beams == 1 ? " beam" : " beams");
  std::vector<double> angles;
  if (const auto parts = SplitAt(':', text); parts.size() == 2) {
    const double first = ParseAngle(parts[0], text), step = ParseAngle(parts[1], text);
    for (std::uint32_t beam = 0; beam < beams; ++beam) angles.push_back(first + beam * step);
  } else {
    for (const std::string& part : SplitAt(',', text)) angles.push_back(ParseAngle(part, text));
  }
  if (angles.size() != beams)
    throw CLI::ValidationError("--angle",
                               "names " + std::to_string(angles.size()) +
                                   (angles.size() == 1 ? " angle" : " angles") + ", and " + has);
  for (const double angle : angles)
    if (std::abs(angle) >= widestAngle)
      throw CLI::ValidationError("--angle",
                                 Number(angle) + " degrees is not between -90 and 90, and " + has);
  return angles;
}

std::string SetQuantities(const ArrayOptions& options,
                          bool isDescribed,
                          bool hasSoundSpeed,
                          CGDataTypeFDD& record) {
  std::string nominal;
  std::vector<float Record::*> known;  // steps that do not count, and what is known from elsewhere
  if (hasSoundSpeed) known.push_back(&Record::soundSpeed);
  for (const std::string& name : SplitAt(',', options.axes))
    if (const AxisName* axis = FindAxis(name); axis && axis->isCounted) {
      known.push_back(axis->axis == ArrayAxis::Row ? &Record::rowResolution
                                                   : &Record::columnResolution);
      record.*known.back() = 0;  // an axis without a step counts its indices
    }
  for (std::size_t index = 0; index < std::size(quantityOptions); ++index) {
    const QuantityOption& option = quantityOptions[index];
    float& field = record.*option.field;
    if (options.quantities[index]) {
      field = static_cast<float>(*options.quantities[index] / option.PerBase());
    } else if (option.isNominal && !isDescribed && std::ranges::count(known, option.field) == 0) {
      std::string name = option.name + 2;
      std::replace(name.begin(), name.end(), '-', ' ');
      nominal += (nominal.empty() ? "" : ", ") + name + " " + Number(field * option.PerBase()) +
                 " " + option.unit;
    }
  }
  return nominal;
}

}  // namespace utdata::program
