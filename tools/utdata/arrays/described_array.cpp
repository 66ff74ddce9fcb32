#include "arrays/described_array.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "arrays/description.h"
#include "document/data_group.h"
#include "document/document.h"
#include "samples/group_axes.h"
#include "terminal/failure.h"
#include "utdata/rdata.h"

namespace utdata::program {
namespace {

constexpr const char* cannotBeExported = "cannot be exported";

/// The shortest decimal that is the same 32-bit number: 0.001, not 0.0010000000474974513.
double Shortest(float value) { return JsonNumber(value).get<double>(); }

bool IsOfAScans(const CGDataTypeFDD& group) {
  return HoldsAmplitudes(group) && PlainClass(group) != gdata_CScanAmplitude;
}

const char* SampleLabel(kvt_enumUnits units) {
  if (units == kvt_UnitSecond) return "two-way time of flight";
  return units == kvt_UnitMetre ? "half sound path" : "sample";
}

std::vector<DescribedAxis> AxesOf(const CGDataTypeFDD& group) {
  const auto axis =
      [](const char* name, const char* label, kvt_enumUnits units, float first, float step, std::uint32_t quantity) {
        return DescribedAxis{name, label, UnitName(units), Shortest(first), Shortest(step), quantity};
      };
  std::vector<DescribedAxis> axes = {
      axis("row", "row position", group.rowUnits, group.rowOffset, group.rowResolution, group.rowQuantity),
      axis("column",
           "column position",
           group.columnUnits,
           group.columnOffset,
           group.columnResolution,
           group.columnQuantity)};
  if (IsOfAScans(group))
    axes.push_back(axis("sample",
                        SampleLabel(group.sampleUnits),
                        group.sampleUnits,
                        group.sampleOffset,
                        group.sampleResolution,
                        group.sampleQuantity));
  return axes;
}

DescribedValues ValuesOf(Host& host, const CGDataTypeFDD& group) {
  DescribedValues values = {
      ClassName(group), UnitName(group.GetDataUnits()), Shortest(group.dataResolution), Shortest(group.dataOffset)};
  if (!HoldsAmplitudes(group) || group.GetDataScale() != gdata_ScaleLinear) return values;
  const GroupAxes axes(host, group);
  const double perStep = axes.Percent(axes.Zero() + 1);
  if (!std::isfinite(perStep)) return values;
  values.unit = "%";
  values.scale = perStep;
  values.offset = axes.Zero() == 0 ? 0 : -axes.Zero() * perStep;
  return values;
}

/// Turns the two bytes of each sample round.
void SwapBytes(std::span<const std::byte> from, std::vector<std::byte>& to) {
  to.resize(from.size());
  for (std::size_t at = 0; at + 1 < from.size(); at += 2) {
    to[at] = from[at + 1];
    to[at + 1] = from[at];
  }
}

/// Whether the samples lie in the table with their most significant byte first.
bool IsBigEndian(const CGDataTypeFDD& group) {
  if (group.sampleSize == 1) return false;
  const CRDataTypeDD descriptor(&group, nullptr, nullptr);
  return (descriptor.IsSwapNeeded() != 0) != (std::endian::native == std::endian::big);
}

/// Bytes of the array; the largest number when they do not fit 64 bits.
std::uint64_t SizeOf(const DescribedArray& array) {
  std::uint64_t size = array.type->size;
  for (const std::uint64_t quantity : array.Shape())
    if (__builtin_mul_overflow(size, quantity, &size)) return std::numeric_limits<std::uint64_t>::max();
  return size;
}

void CheckSamples(const DescribedArray& array, const CGDataTypeFDD& group, const std::string& name) {
  for (const DescribedAxis& axis : array.axes)
    if (axis.quantity == 0) throw Failure(name, cannotBeExported, "the data group is empty");
  if (!group.samples.group) throw Failure(name, cannotBeExported, "the data group has no samples");
  if (group.storageMode != kvt_StorCells)
    throw Failure(name, cannotBeExported, "its samples are not stored cell by cell");
  if (SizeOf(array) > group.samples.size)
    throw Failure(name,
                  cannotBeExported,
                  "its layout needs " + std::to_string(SizeOf(array)) + " bytes, and its samples have " +
                      std::to_string(group.samples.size));
}

}  // namespace

std::vector<std::uint64_t> DescribedArray::Shape() const {
  std::vector<std::uint64_t> shape;
  for (const DescribedAxis& axis : axes) shape.push_back(axis.quantity);
  return shape;
}

DescribedArray DescribeArray(Host& host, const CGDataTypeFDD& group, const std::string& name) {
  DescribedArray array;
  array.type = FindSampleType(group.GetDataType());
  if (!array.type || array.type->size != group.sampleSize)
    throw Failure(name, cannotBeExported, "its samples are not whole numbers of 8 or 16 bits");
  array.axes = AxesOf(group);
  CheckSamples(array, group, name);
  array.values = ValuesOf(host, group);
  array.label = Label(group);
  array.label.erase(array.label.find_last_not_of(' ') + 1);
  if (group.sampleUnits == kvt_UnitSecond && std::isfinite(group.soundSpeed) && group.soundSpeed > 0)
    array.halfSoundSpeed = Shortest(group.soundSpeed) / 2;
  return array;
}

nlohmann::ordered_json DescriptionJson(const DescribedArray& array,
                                       const CGDataTypeFDD& group,
                                       const std::string& holder) {
  nlohmann::ordered_json axes = nlohmann::ordered_json::array();
  for (const DescribedAxis& axis : array.axes)
    axes.push_back({{"name", axis.name},
                    {"label", axis.label},
                    {"unit", axis.unit},
                    {"quantity", axis.quantity},
                    {"first", axis.first},
                    {"step", axis.step}});
  return {{"format", descriptionFormat},
          {"version", descriptionVersion},
          {"array", holder},
          {"type", array.type->name},
          {"shape", array.Shape()},
          {"axes", axes},
          {"values",
           {{"name", array.values.name},
            {"unit", array.values.unit},
            {"scale", array.values.scale},
            {"offset", array.values.offset}}},
          {"group", DataGroupJson(group)},
          {"record", RecordJson(group)}};
}

void ForEachPiece(const DescribedArray& array,
                  const CGDataTypeFDD& group,
                  const std::string& name,
                  const std::function<void(std::span<const std::byte> piece, std::uint64_t total)>& take) {
  constexpr std::uint64_t pieceSize = std::uint64_t{4} << 20U;
  const MappedSamples samples(group);
  const std::uint64_t total = SizeOf(array);
  if (total > samples.Size()) throw Failure(name, cannotBeExported, "its samples have become fewer");
  const bool swap = IsBigEndian(group);
  std::vector<std::byte> swapped;
  for (std::uint64_t at = 0; at < total; at += pieceSize) {
    std::span<const std::byte> piece(samples.Data() + at, std::min(pieceSize, total - at));
    if (swap) {
      SwapBytes(piece, swapped);
      piece = swapped;
    }
    take(piece, total);
  }
}

}  // namespace utdata::program
