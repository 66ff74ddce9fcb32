#include "arrays/described_array.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <nlohmann/json.hpp>

#include "arrays/description.h"
#include "listing/data_rows.h"
#include "terminal/failure.h"
#include "terminal/output.h"
#include "utdata/rdata.h"

namespace utdata::program {
namespace {

constexpr const char* cannotBeExported = "cannot be exported";

/// The shortest decimal that is the same 32-bit number: 0.001, not 0.0010000000474974513.
double Shortest(float value) { return JsonNumber(value).get<double>(); }

const char* SampleLabel(kvt_enumUnits units) {
  if (units == kvt_UnitSecond) return "two-way time of flight";
  return units == kvt_UnitMetre ? "half sound path" : "sample";
}

std::vector<DescribedAxis> AxesOf(const DataGroup& data) {
  const CGDataTypeFDD& group = data.Stored();
  const auto axis = [](const char* name,
                       const char* label,
                       kvt_enumUnits units,
                       float first,
                       float step,
                       std::uint32_t quantity) {
    return DescribedAxis{name, label, UnitName(units), Shortest(first), Shortest(step), quantity};
  };
  std::vector<DescribedAxis> axes = {axis("row",
                                          "row position",
                                          group.rowUnits,
                                          group.rowOffset,
                                          group.rowResolution,
                                          group.rowQuantity),
                                     axis("column",
                                          "column position",
                                          group.columnUnits,
                                          group.columnOffset,
                                          group.columnResolution,
                                          group.columnQuantity)};
  if (!data.IsCScan())
    axes.push_back(axis("sample",
                        SampleLabel(group.sampleUnits),
                        group.sampleUnits,
                        group.sampleOffset,
                        group.sampleResolution,
                        group.sampleQuantity));
  return axes;
}

bool IsSwapped(const DataGroup& group, const SampleType& type) {
  return type.size == 2 &&
         (group.Descriptor().IsSwapNeeded() != 0) != (std::endian::native == std::endian::big);
}

/// The number of an array's element that stands for no amplitude.
std::int32_t SilentNumber(const DataGroup& group, const SampleType& type) {
  std::uint16_t bits = group.SilentSample();
  if (group.Descriptor().IsSwapNeeded() != 0 && type.size == 2)
    bits = static_cast<std::uint16_t>(bits << 8U | bits >> 8U);
  if (!type.isSigned) return bits;
  return type.size == 1 ? static_cast<std::int8_t>(bits) : static_cast<std::int16_t>(bits);
}

DescribedValues ValuesOf(const DataGroup& group, const SampleType& type) {
  const CGDataTypeFDD& record = group.Stored();
  DescribedValues values = {group.ClassName(),
                            UnitName(record.GetDataUnits()),
                            Shortest(record.dataResolution),
                            Shortest(record.dataOffset)};
  if (!group.HoldsAmplitudes() || record.GetDataScale() != gdata_ScaleLinear) return values;
  const double perStep = group.Amplitudes().above;
  if (!std::isfinite(perStep)) return values;
  const std::int32_t silent = SilentNumber(group, type);
  values.unit = "%";
  values.scale = perStep;
  values.offset = silent == 0 ? 0 : -silent * perStep;
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

std::span<const std::byte> CellOf(const DataGroup& group,
                                  const SampleType& type,
                                  std::uint64_t cell) {
  const auto row = static_cast<std::uint32_t>(cell / group.ColumnQuantity());
  const auto column = static_cast<std::uint32_t>(cell % group.ColumnQuantity());
  if (type.size == 1) return std::as_bytes(group.AScan<std::uint8_t>(row, column));
  return std::as_bytes(group.AScan<std::uint16_t>(row, column));
}

void CheckSamples(const DescribedArray& array, const DataGroup& group) {
  for (const DescribedAxis& axis : array.axes)
    if (axis.quantity == 0)
      throw Failure(group.Name(), cannotBeExported, "the data group is empty");
  if (!group.HasTable())
    throw Failure(group.Name(), cannotBeExported, "the data group has no samples");
  static_cast<void>(CellOf(group, *array.type, group.AllCells().count - 1));
}

/// Puts cells one behind the other; those without samples hold the one that stands for no
/// amplitude.
class CellPacker {
 public:
  CellPacker(const DataGroup& group, const SampleType& type)
      : m_group(group), m_type(type), m_empty(std::size_t{group.SampleQuantity()} * type.size) {
    const std::uint16_t wide = group.SilentSample();
    const auto narrow = static_cast<std::uint8_t>(wide);
    const auto silent =
        type.size == 1 ? std::as_bytes(std::span(&narrow, 1)) : std::as_bytes(std::span(&wide, 1));
    for (std::size_t at = 0; at < m_empty.size(); ++at) m_empty[at] = silent[at % silent.size()];
  }

  std::span<const std::byte> Pack(std::uint64_t first, std::uint64_t count) {
    m_packed.clear();
    for (std::uint64_t cell = first; cell < first + count; ++cell) {
      std::span<const std::byte> samples = CellOf(m_group, m_type, cell);
      if (samples.empty()) samples = m_empty;
      m_packed.insert(m_packed.end(), samples.begin(), samples.end());
    }
    return m_packed;
  }

 private:
  const DataGroup& m_group;
  const SampleType& m_type;
  std::vector<std::byte> m_empty;
  std::vector<std::byte> m_packed;
};

}  // namespace

std::vector<std::uint64_t> DescribedArray::Shape() const {
  std::vector<std::uint64_t> shape;
  for (const DescribedAxis& axis : axes) shape.push_back(axis.quantity);
  return shape;
}

DescribedArray DescribeArray(const DataGroup& group) {
  const CGDataTypeFDD& record = group.Stored();
  DescribedArray array;
  array.type = FindSampleType(record.GetDataType());
  if (!array.type || array.type->size != record.sampleSize)
    throw Failure(
        group.Name(), cannotBeExported, "its samples are not whole numbers of 8 or 16 bits");
  array.axes = AxesOf(group);
  CheckSamples(array, group);
  array.values = ValuesOf(group, *array.type);
  array.label = group.Label();
  array.label.erase(array.label.find_last_not_of(' ') + 1);
  if (record.sampleUnits == kvt_UnitSecond && std::isfinite(record.soundSpeed) &&
      record.soundSpeed > 0)
    array.halfSoundSpeed = Shortest(record.soundSpeed) / 2;
  return array;
}

nlohmann::ordered_json DescriptionJson(const DescribedArray& array,
                                       const DataGroup& group,
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
          {"record", RecordJson(group.Stored())}};
}

void ForEachPiece(
    const DescribedArray& array,
    const DataGroup& group,
    const std::function<void(std::span<const std::byte> piece, std::uint64_t total)>& take) {
  constexpr std::uint64_t pieceSize = std::uint64_t{4} << 20U;
  const std::uint64_t cellQuantity = group.AllCells().count;
  const std::uint64_t cellBytes = std::uint64_t{group.SampleQuantity()} * array.type->size;
  const std::uint64_t total = cellQuantity * cellBytes;
  const std::uint64_t cells = std::max<std::uint64_t>(1, pieceSize / cellBytes);
  const bool swap = IsSwapped(group, *array.type);
  CellPacker packer(group, *array.type);
  std::vector<std::byte> swapped;
  for (std::uint64_t first = 0; first < cellQuantity; first += cells) {
    std::span<const std::byte> piece = packer.Pack(first, std::min(cells, cellQuantity - first));
    if (swap) {
      SwapBytes(piece, swapped);
      piece = swapped;
    }
    take(piece, total);
  }
}

}  // namespace utdata::program
