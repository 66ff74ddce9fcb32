#include "arrays/described_array.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <nlohmann/json.hpp>

#include "arrays/description.h"
#include "document/data_group.h"
#include "document/document.h"
#include "samples/cell_table.h"
#include "samples/group_axes.h"
#include "terminal/failure.h"
#include "utdata/enum.h"
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

std::vector<DescribedAxis> AxesOf(const CGDataTypeFDD& group) {
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
  if (HasSampleAxis(group))
    axes.push_back(axis("sample",
                        SampleLabel(group.sampleUnits),
                        group.sampleUnits,
                        group.sampleOffset,
                        group.sampleResolution,
                        group.sampleQuantity));
  return axes;
}

DescribedValues ValuesOf(Host& host, const CGDataTypeFDD& group) {
  DescribedValues values = {ClassName(group),
                            UnitName(group.GetDataUnits()),
                            Shortest(group.dataResolution),
                            Shortest(group.dataOffset)};
  if (!HoldsAmplitudes(group) || group.GetDataScale() != gdata_ScaleLinear) return values;
  const GroupAxes axes(host, group);
  const double zero = ZeroOfSamples(group);
  const double perStep = axes.Percent(zero + 1);
  if (!std::isfinite(perStep)) return values;
  values.unit = "%";
  values.scale = perStep;
  values.offset = zero == 0 ? 0 : -zero * perStep;
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

std::span<const std::byte> BytesOf(const MappedSamples& samples) {
  return {samples.Data(), samples.Size()};
}

void CheckSamples(const DescribedArray& array,
                  const CGDataTypeFDD& group,
                  const std::string& name) {
  for (const DescribedAxis& axis : array.axes)
    if (axis.quantity == 0) throw Failure(name, cannotBeExported, "the data group is empty");
  if (!group.samples.group) throw Failure(name, cannotBeExported, "the data group has no samples");
  const MappedSamples samples(group);
  static_cast<void>(CellTable(group, BytesOf(samples), name));
}

/// The sample that stands for no amplitude, as it is stored.
std::vector<std::byte> ZeroSample(const CGDataTypeFDD& group, std::uint32_t size) {
  const auto zero =
      static_cast<std::uint32_t>(static_cast<std::int32_t>(std::floor(ZeroOfSamples(group))));
  std::vector<std::byte> bytes;
  for (std::uint32_t at = 0; at < size; ++at)
    bytes.push_back(static_cast<std::byte>(zero >> 8 * at));
  if (IsBigEndian(group)) std::reverse(bytes.begin(), bytes.end());
  return bytes;
}

/// Puts cells one behind the other; those without samples hold the one that stands for no
/// amplitude.
class CellPacker {
 public:
  CellPacker(const CellTable& table, const CGDataTypeFDD& group, std::uint32_t sampleSize)
      : m_table(table), m_cellBytes(std::size_t{table.SamplesPerCell()} * sampleSize) {
    const std::vector<std::byte> zero = ZeroSample(group, sampleSize);
    for (std::size_t at = 0; at < m_cellBytes; ++at) m_empty.push_back(zero[at % zero.size()]);
  }

  std::span<const std::byte> Pack(std::uint64_t first, std::uint64_t count) {
    m_packed.clear();
    for (std::uint64_t cell = first; cell < first + count; ++cell) {
      const std::byte* samples = m_table.Cell(cell);
      if (!samples) samples = m_empty.data();
      m_packed.insert(m_packed.end(), samples, samples + m_cellBytes);
    }
    return m_packed;
  }

 private:
  const CellTable& m_table;
  std::size_t m_cellBytes;
  std::vector<std::byte> m_empty;
  std::vector<std::byte> m_packed;
};

}  // namespace

bool HasSampleAxis(const CGDataTypeFDD& group) {
  return enum_IsCscanData(static_cast<gdata_enumDataClass>(PlainClass(group))) == 0;
}

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
  if (group.sampleUnits == kvt_UnitSecond && std::isfinite(group.soundSpeed) &&
      group.soundSpeed > 0)
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

void ForEachPiece(
    const DescribedArray& array,
    const CGDataTypeFDD& group,
    const std::string& name,
    const std::function<void(std::span<const std::byte> piece, std::uint64_t total)>& take) {
  constexpr std::uint64_t pieceSize = std::uint64_t{4} << 20U;
  const MappedSamples samples(group);
  const CellTable table(group, BytesOf(samples), name);
  const std::uint64_t cellBytes = std::uint64_t{table.SamplesPerCell()} * array.type->size;
  const std::uint64_t total = table.Cells() * cellBytes;
  const std::uint64_t cells = std::max<std::uint64_t>(1, pieceSize / cellBytes);
  const bool swap = IsBigEndian(group);
  CellPacker packer(table, group, array.type->size);
  std::vector<std::byte> swapped;
  for (std::uint64_t first = 0; first < table.Cells(); first += cells) {
    std::span<const std::byte> piece = packer.Pack(first, std::min(cells, table.Cells() - first));
    if (swap) {
      SwapBytes(piece, swapped);
      piece = swapped;
    }
    take(piece, total);
  }
}

}  // namespace utdata::program
