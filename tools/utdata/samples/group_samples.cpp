#include "samples/group_samples.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "document/data_group.h"
#include "samples/group_axes.h"
#include "terminal/failure.h"
#include "terminal/progress.h"

namespace utdata::program {
namespace {

constexpr const char* cannotBeDrawn = "cannot be drawn";

/// Bytes of one sample; 0 for a type that has no display codes.
std::uint32_t SizeOfType(kvt_enumDataType type) {
  if (type == kvt_Int8 || type == kvt_UInt8) return 1;
  return type == kvt_Int16 || type == kvt_UInt16 ? 2 : 0;
}

const CGDataTypeFDD& WithSamples(const CGDataTypeFDD& group, const std::string& name) {
  if (group.columnQuantity == 0 || group.rowQuantity == 0 || SamplesPerCell(group) == 0)
    throw Failure(name, cannotBeDrawn, "the data group is empty");
  if (!group.samples.group || group.samples.size == 0)
    throw Failure(name, cannotBeDrawn, "the data group has no samples");
  return group;
}

/// A raw sample as the look-up table understands it, as a number.
template <class Sample>
std::int32_t Corrected(std::size_t raw, lut_enumConversion conversion) {
  using Raw = std::make_unsigned_t<Sample>;
  const auto sample = static_cast<Sample>(static_cast<Raw>(raw));
  const std::int32_t value = CLookUpTable::CorrectAmplitudeData(std::int32_t{sample}, conversion);
  return static_cast<Sample>(value & std::numeric_limits<Raw>::max());
}

using Correction = std::int32_t (*)(std::size_t, lut_enumConversion);

Correction CorrectionOf(kvt_enumDataType type) {
  switch (type) {
    case kvt_Int8:
      return Corrected<std::int8_t>;
    case kvt_UInt8:
      return Corrected<std::uint8_t>;
    case kvt_Int16:
      return Corrected<std::int16_t>;
    case kvt_UInt16:
      break;
  }
  return Corrected<std::uint16_t>;
}

}  // namespace

GroupSamples::GroupSamples(Host& host, const CGDataTypeFDD& group, const std::string& name)
    : m_host(host),
      m_samples(host.Data().Table(WithSamples(group, name))),
      m_cells(group, m_samples, name),
      m_descriptor(new CRDataTypeDD(&group, nullptr, nullptr)),
      m_table(nullptr),
      m_canAmplify(false) {
  CheckKind(name);
  m_descriptor->SetSampleAxisScale(1);
  m_table = m_descriptor->GetLookUpTable(&host);
  FillValues(group);
}

GroupSamples::~GroupSamples() { m_host.GetTableFactory()->ReleaseLUT(m_table); }

void GroupSamples::CheckKind(const std::string& name) const {
  const std::uint32_t size = SizeOfType(m_descriptor->GetDataType());
  if (size == 0 || size != m_descriptor->GetSampleSize())
    throw Failure(name,
                  cannotBeDrawn,
                  "samples of " + SampleTypeName(*m_descriptor) + " have no display codes");
  const double range = m_descriptor->GetDataMax() - m_descriptor->GetDataMin();
  if (!std::isfinite(range) || range <= 0)
    throw Failure(name, cannotBeDrawn, "the range of its values has no extent");
}

/// Tables over all raw samples, so that a correction costs nothing.
void GroupSamples::FillValues(const CGDataTypeFDD& group) {
  const lut_enumConversion conversion = CLookUpTable::GetConversionStyle(m_descriptor.get());
  const Correction correct = CorrectionOf(m_descriptor->GetDataType());
  const double zero = ZeroOfSamples(group);
  const bool tableIsCentred =
      group.GetDataType() == kvt_UInt16 && group.GetDataRectification() == gdata_RectifNone;
  m_canAmplify = IsWide() && tableIsCentred == (zero != 0);
  m_values.resize(IsWide() ? 0x10000 : 0x100);
  m_amplitudes.resize(m_values.size());
  for (std::size_t raw = 0; raw < m_values.size(); ++raw) {
    m_values[raw] = correct(raw, conversion);
    const double twice =
        2 * std::abs(m_values[raw] - zero);  // doubled: a zero may lie between two values
    m_amplitudes[raw] = static_cast<std::uint32_t>(std::clamp(twice, 0.0, 1e9));
  }
  m_silent = static_cast<std::uint16_t>(std::min_element(m_amplitudes.begin(), m_amplitudes.end()) -
                                        m_amplitudes.begin());
}

Peaks GroupSamples::FindPeaks(const CellRange& cells, bool quiet) const {
  return IsWide() ? Search<std::uint16_t>(cells, quiet) : Search<std::uint8_t>(cells, quiet);
}

template <class Raw>
Peaks GroupSamples::Search(const CellRange& cells, bool quiet) const {
  const std::uint32_t vector = m_cells.SamplesPerCell();
  const std::uint64_t cellBytes = vector * sizeof(Raw);
  const auto silent = static_cast<Raw>(m_silent);
  const auto isWeaker = [this](Raw a, Raw b) { return m_amplitudes[a] < m_amplitudes[b]; };
  Progress progress("looking for the strongest echo", quiet);
  Peaks peaks = {std::vector<std::uint16_t>(cells.count), {cells.first, 0, 0}};
  bool isFirst = true;
  std::uint32_t largest = 0;
  for (std::uint64_t index = 0; index < cells.count; ++index) {
    const auto* begin = reinterpret_cast<const Raw*>(m_cells.Cell(cells.At(index)));
    const Raw* found = begin ? std::max_element(begin, begin + vector, isWeaker) : &silent;
    peaks.raw[index] = *found;
    if (m_amplitudes[*found] > largest || isFirst) {
      largest = m_amplitudes[*found];
      const auto sample = begin ? static_cast<std::uint32_t>(found - begin) : 0;
      peaks.strongest = {cells.At(index), sample, static_cast<double>(m_values[*found])};
      isFirst = false;
    }
    if (index % 1024 == 0) progress.At(index * cellBytes, cells.count * cellBytes);
  }
  return peaks;
}

std::vector<std::uint8_t> GroupSamples::Codes(const CellRange& cells, std::uint32_t gain) {
  if (IsWide()) m_table->RemapLUT(m_descriptor.get(), gain);
  std::vector<std::uint8_t> codes(cells.count * m_cells.SamplesPerCell());
  bool converted = false;
  switch (m_descriptor->GetDataType()) {
    case kvt_Int8:
      converted = Convert<char>(cells, codes);
      break;
    case kvt_UInt8:
      converted = Convert<unsigned char>(cells, codes);
      break;
    case kvt_Int16:
      converted = Convert<short>(cells, codes);
      break;
    case kvt_UInt16:
      converted = Convert<unsigned short>(cells, codes);
      break;
  }
  if (!converted) throw Failure("look-up table", cannotBeDrawn, "it does not fit the samples");
  return codes;
}

template <class Sample>
bool GroupSamples::Convert(const CellRange& cells, std::vector<std::uint8_t>& codes) const {
  const std::size_t vector = m_cells.SamplesPerCell();
  const std::vector<Sample> silence(vector, static_cast<Sample>(m_silent));
  bool converted = true;
  for (std::uint64_t index = 0; index < cells.count && converted; ++index) {
    const auto* samples = reinterpret_cast<const Sample*>(m_cells.Cell(cells.At(index)));
    converted = m_table->ConvertBlock(
        samples ? samples : silence.data(), vector, codes.data() + index * vector);
  }
  return converted;
}

std::vector<std::uint8_t> GroupSamples::CodesOf(std::span<const std::uint16_t> raw,
                                                std::uint32_t gain) {
  if (IsWide()) m_table->RemapLUT(m_descriptor.get(), gain);
  std::vector<std::uint8_t> codes(raw.size());
  std::transform(raw.begin(), raw.end(), codes.begin(), [this](std::uint16_t sample) {
    return m_table->Convert(static_cast<unsigned int>(sample));
  });
  return codes;
}

std::vector<std::int32_t> GroupSamples::Values(std::uint64_t cell) const {
  const std::byte* samples = m_cells.Cell(cell);
  std::vector<std::int32_t> values(m_cells.SamplesPerCell(), m_values[m_silent]);
  for (std::size_t index = 0; samples && index < values.size(); ++index) {
    std::uint16_t raw = 0;
    if (IsWide())
      std::memcpy(&raw, samples + 2 * index, sizeof raw);
    else
      raw = static_cast<std::uint8_t>(samples[index]);
    values[index] = m_values[raw];
  }
  return values;
}

}  // namespace utdata::program
