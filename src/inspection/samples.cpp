#include "utdata/samples.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "src/foundation/dataclass.h"
#include "src/inspection/amplitudes.h"
#include "src/inspection/state.h"
#include "src/items/idatarecord.h"
#include "utdata/lut.h"

namespace utdata {
namespace {

constexpr const char* cannotBeShown = "cannot be shown";

/// The value of every raw sample.
std::vector<std::int32_t> ValuesOfRaw(const CRDataTypeDD& descriptor) {
  std::vector<std::int32_t> values(descriptor.GetSampleSize() == 2 ? 0x10000 : 0x100);
  WithValues(descriptor, [&](const auto& reader) {
    using Raw = typename std::remove_cvref_t<decltype(reader)>::Raw;
    for (std::size_t raw = 0; raw < values.size(); ++raw)
      values[raw] = reader.ValueOf(static_cast<Raw>(raw));
    return true;
  });
  return values;
}

/// The raw sample whose value is nearest to zero.
std::uint16_t SilentIn(const std::vector<std::int32_t>& values) {
  const auto isNearer = [](std::int32_t a, std::int32_t b) { return std::abs(a) < std::abs(b); };
  return static_cast<std::uint16_t>(std::min_element(values.begin(), values.end(), isNearer) -
                                    values.begin());
}

}  // namespace

struct Samples::Reader {
  Reader(InspectionState& inspection, DataRow& dataRow)
      : state(inspection), row(dataRow), descriptor(*dataRow.item->Descriptor()), rule(descriptor) {
    Check();
    cells = &state.CellsOf(row);
    isWide = descriptor.GetSampleSize() == 2;
    if (const auto bit = FlippedBit(descriptor)) {  // no need to look at every raw sample
      flipped = silent = *bit;
      return;
    }
    values = ValuesOfRaw(descriptor);
    silent = SilentIn(values);
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() {
    if (table) state.tables.ReleaseLUT(table);
  }

  void Check() const {
    const CGDataTypeFDD& stored = *row.stored;
    const std::string name = state.NameOf(row);
    if (stored.columnQuantity == 0 || stored.rowQuantity == 0 ||
        utdata::SamplesPerCell(stored) == 0)
      throw Error(name, cannotBeShown, "the data group is empty");
    if (!row.added && (!stored.samples.group || stored.samples.size == 0))
      throw Error(name, cannotBeShown, "the data group has no samples");
    const DataGroup group(state, row);
    const std::uint32_t size = SampleSizeOf(descriptor.GetDataType());
    if (size == 0 || size != descriptor.GetSampleSize())
      throw Error(name, cannotBeShown, "samples of " + group.TypeName() + " have no display codes");
    const double range = double{stored.dataMaximum} - double{stored.dataMinimum};
    if (!std::isfinite(range) || range <= 0)
      throw Error(name, cannotBeShown, "the range of its values has no extent");
  }

  CLookUpTable& Table(std::uint32_t gain) {
    if (!table) table = descriptor.GetLookUpTable(&state);
    if (!table) throw std::bad_alloc();
    if (isWide) table->RemapLUT(&descriptor, gain);
    return *table;
  }

  template <class Sample>
  [[nodiscard]] bool Convert(const CLookUpTable& lut,
                             const CellRange& range,
                             std::vector<std::uint8_t>& codes) const {
    const std::size_t vector = cells->SamplesPerCell();
    const std::vector<Sample> silence(vector, static_cast<Sample>(silent));
    for (std::uint64_t index = 0; index < range.count; ++index) {
      const auto* samples = reinterpret_cast<const Sample*>(cells->Cell(range.At(index)));
      if (!lut.ConvertBlock(
              samples ? samples : silence.data(), vector, codes.data() + index * vector))
        return false;
    }
    return true;
  }

  [[nodiscard]] std::int32_t ValueOf(std::uint16_t raw) const {
    if (!values.empty()) return values[raw];
    raw ^= flipped;
    switch (descriptor.GetDataType()) {
      case kvt_Int8:
        return static_cast<std::int8_t>(raw);
      case kvt_Int16:
        return static_cast<std::int16_t>(raw);
      case kvt_UInt8:
      case kvt_UInt16:
        break;
    }
    return raw;
  }

  [[nodiscard]] bool ConvertOfType(const CLookUpTable& lut,
                                   const CellRange& range,
                                   std::vector<std::uint8_t>& codes) const {
    switch (descriptor.GetDataType()) {
      case kvt_Int8:
        return Convert<char>(lut, range, codes);
      case kvt_UInt8:
        return Convert<unsigned char>(lut, range, codes);
      case kvt_Int16:
        return Convert<short>(lut, range, codes);
      case kvt_UInt16:
        return Convert<unsigned short>(lut, range, codes);
    }
    return false;
  }

  InspectionState& state;
  DataRow& row;
  const CRDataTypeDD& descriptor;
  AmplitudeRule rule;
  const CellTable* cells = nullptr;
  CLookUpTable* table = nullptr;  ///< of the factory, given back at the end
  bool isWide = false;
  std::vector<std::int32_t> values;  ///< of every raw sample, where flipping a bit does not do
  std::uint16_t flipped = 0;         ///< that bit
  std::uint16_t silent = 0;          ///< the raw sample nearest to zero
};

Samples::Samples(std::unique_ptr<Reader> reader) : m_reader(std::move(reader)) {}
Samples::Samples(Samples&&) noexcept = default;
Samples& Samples::operator=(Samples&&) noexcept = default;
Samples::~Samples() = default;

utdata::Samples DataGroup::Samples() const {
  return utdata::Samples(std::make_unique<utdata::Samples::Reader>(*m_inspection, *m_row));
}

std::uint16_t DataGroup::SilentSample() const { return SilentIn(ValuesOfRaw(Descriptor())); }

std::uint64_t Samples::CellQuantity() const { return m_reader->cells->Cells(); }
std::uint32_t Samples::SamplesPerCell() const { return m_reader->cells->SamplesPerCell(); }

bool Samples::IsSigned() const {
  const kvt_enumDataType type = m_reader->descriptor.GetDataType();
  return type == kvt_Int8 || type == kvt_Int16;
}

CodeSpan Samples::Span() const {
  const CRDataTypeDD& descriptor = m_reader->descriptor;
  CodeSpan span;
  span.isSigned = IsSigned();
  if (!m_reader->isWide && !span.isSigned) return span;
  span.low = descriptor.GetDataMin();
  span.high = descriptor.GetDataMax();
  return span;
}

bool Samples::CanAmplify() const {
  // A table of unrectified unsigned samples amplifies about the middle of their range.
  const bool isCentred = m_reader->descriptor.GetDataType() == kvt_UInt16 &&
                         m_reader->descriptor.GetDataRectification() == gdata_RectifNone;
  return m_reader->isWide && !isCentred;
}

Peaks Samples::FindPeaks(const CellRange& cells,
                         const Watch& watch,
                         const IndexRange& shown) const {
  const Reader& reader = *m_reader;
  const std::uint32_t all = reader.cells->SamplesPerCell();
  if (shown.count == 0 || shown.first >= all)
    throw Error(reader.state.NameOf(reader.row), cannotBeShown, "it has no such samples");
  return WithValues(reader.descriptor, [&](const auto& values) {
    using Raw = typename std::remove_cvref_t<decltype(values)>::Raw;
    const std::size_t vector = std::min(shown.count, all - shown.first);
    const std::size_t cellBytes = vector * sizeof(Raw);
    const std::size_t cellsPerCall = 1 + (std::size_t{1} << 20U) / (cellBytes + 1);
    const std::int32_t silence = reader.ValueOf(reader.silent);
    Peaks peaks = {std::vector<std::int32_t>(cells.count), {cells.first, shown.first, 0}};
    double largest = -1;
    for (std::uint64_t index = 0; index < cells.count; ++index) {
      if (watch && index % cellsPerCall == 0)
        watch("looking for the strongest echo", index * cellBytes, cells.count * cellBytes);
      const auto* begin = reinterpret_cast<const Raw*>(reader.cells->Cell(cells.At(index)));
      const std::span<const Raw> samples(begin ? begin + shown.first : nullptr, begin ? vector : 0);
      const Extremes extremes = begin ? values.Of(samples) : Extremes{silence, silence};
      const std::int32_t value = reader.rule.Larger(extremes);
      peaks.values[index] = value;
      if (reader.rule.Rank(value) <= largest) continue;
      largest = reader.rule.Rank(value);
      const std::size_t sample = begin ? FirstLargest(reader.rule, values, samples, extremes) : 0;
      const std::int32_t first = begin ? values.ValueOf(samples[sample]) : silence;
      peaks.strongest = {cells.At(index),
                         shown.first + static_cast<std::uint32_t>(sample),
                         static_cast<double>(first)};
    }
    return peaks;
  });
}

std::vector<std::int32_t> Samples::Values(std::uint64_t cell) const {
  const Reader& reader = *m_reader;
  const std::byte* samples = reader.cells->Cell(cell);
  std::vector<std::int32_t> values(reader.cells->SamplesPerCell(), reader.ValueOf(reader.silent));
  for (std::size_t index = 0; samples && index < values.size(); ++index) {
    std::uint16_t raw = 0;
    if (reader.isWide)
      std::memcpy(&raw, samples + 2 * index, sizeof raw);
    else
      raw = static_cast<std::uint8_t>(samples[index]);
    values[index] = reader.ValueOf(raw);
  }
  return values;
}

bool Samples::IsDamaged(std::uint64_t cell) const { return m_reader->cells->IsDamaged(cell); }

std::vector<std::uint8_t> Samples::Codes(const CellRange& cells, std::uint32_t gain) {
  std::vector<std::uint8_t> codes(cells.count * m_reader->cells->SamplesPerCell());
  if (!m_reader->ConvertOfType(m_reader->Table(gain), cells, codes))
    throw Error(
        m_reader->state.NameOf(m_reader->row), cannotBeShown, "its look-up table does not fit it");
  return codes;
}

std::vector<std::uint8_t> Samples::CodesOf(std::span<const std::int32_t> values,
                                           std::uint32_t gain) {
  const CLookUpTable& table = m_reader->Table(gain);
  // The code of each value that a sample can have: that of the first raw sample with this value.
  constexpr std::int32_t lowest = -0x8000;
  std::vector<std::uint8_t> codeOf(0x18000);
  for (std::uint32_t raw = m_reader->isWide ? 0x10000 : 0x100; raw-- > 0;)
    codeOf[static_cast<std::size_t>(m_reader->ValueOf(static_cast<std::uint16_t>(raw)) - lowest)] =
        table.Convert(raw);
  std::vector<std::uint8_t> codes(values.size());
  std::transform(values.begin(), values.end(), codes.begin(), [&](std::int32_t value) {
    return codeOf[static_cast<std::size_t>(std::clamp(value, lowest, 0xFFFF) - lowest)];
  });
  return codes;
}

}  // namespace utdata
