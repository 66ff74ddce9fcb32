#include "samples/group_samples.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "document/data_group.h"
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
  if (group.columnQuantity == 0 || group.rowQuantity == 0 || group.sampleQuantity == 0)
    throw Failure(name, cannotBeDrawn, "the data group is empty");
  if (!group.samples.group || group.samples.size == 0)
    throw Failure(name, cannotBeDrawn, "the data group has no samples");
  return group;
}

/// A raw sample as the look-up table understands it, as a number.
template <class Sample>
double Corrected(Sample raw, lut_enumConversion conversion) {
  const std::int32_t value = CLookUpTable::CorrectAmplitudeData(static_cast<std::int32_t>(raw), conversion);
  return static_cast<Sample>(value & std::numeric_limits<std::make_unsigned_t<Sample>>::max());
}

}  // namespace

GroupSamples::GroupSamples(Host& host, const CGDataTypeFDD& group, const std::string& name)
    : m_host(host),
      m_samples(WithSamples(group, name)),
      m_descriptor(new CRDataTypeDD(&group, nullptr, nullptr)),
      m_table(nullptr) {
  CheckLayout(name);
  m_descriptor->SetSampleAxisScale(1);
  m_descriptor->SetDiskTable(m_samples.Bytes(), true);
  m_table = m_descriptor->GetLookUpTable(&host);
}

GroupSamples::~GroupSamples() { m_host.GetTableFactory()->ReleaseLUT(m_table); }

void GroupSamples::CheckLayout(const std::string& name) const {
  const std::uint32_t size = SizeOfType(m_descriptor->GetDataType());
  if (size == 0 || size != m_descriptor->GetSampleSize())
    throw Failure(name, cannotBeDrawn, "samples of " + SampleTypeName(*m_descriptor) + " have no display codes");
  std::uint64_t needed = 0;
  if (!m_descriptor->LayoutSize(needed)) throw Failure(name, cannotBeDrawn, "its samples are not stored cell by cell");
  if (needed > m_samples.Size())
    throw Failure(name,
                  cannotBeDrawn,
                  "its layout needs " + std::to_string(needed) + " bytes, and its samples have " +
                      std::to_string(m_samples.Size()));
  const double range = m_descriptor->GetDataMax() - m_descriptor->GetDataMin();
  if (!std::isfinite(range) || range <= 0) throw Failure(name, cannotBeDrawn, "the range of its values has no extent");
}

std::uint64_t GroupSamples::Cells() const {
  return std::uint64_t{m_descriptor->GetColQty()} * m_descriptor->GetRowQty();
}

StrongestSample GroupSamples::FindStrongest(std::uint64_t first, std::uint64_t count, double zero, bool quiet) const {
  switch (m_descriptor->GetDataType()) {
    case kvt_Int8:
      return Search<std::int8_t>(first, count, zero, quiet);
    case kvt_UInt8:
      return Search<std::uint8_t>(first, count, zero, quiet);
    case kvt_Int16:
      return Search<std::int16_t>(first, count, zero, quiet);
    case kvt_UInt16:
      return Search<std::uint16_t>(first, count, zero, quiet);
  }
  return {};
}

/// Amplitudes come from a table over all raw samples, so that a correction costs nothing.
template <class Sample>
StrongestSample GroupSamples::Search(std::uint64_t first, std::uint64_t count, double zero, bool quiet) const {
  using Index = std::make_unsigned_t<Sample>;
  const lut_enumConversion conversion = CLookUpTable::GetConversionStyle(m_descriptor.get());
  std::vector<std::uint32_t> amplitudes(std::size_t{std::numeric_limits<Index>::max()} + 1);
  for (std::size_t raw = 0; raw < amplitudes.size(); ++raw) {
    const double twice = 2 * std::abs(Corrected(static_cast<Sample>(static_cast<Index>(raw)), conversion) - zero);
    amplitudes[raw] =
        static_cast<std::uint32_t>(std::clamp(twice, 0.0, 1e9));  // doubled: a zero may lie between two values
  }
  const std::uint32_t vector = m_descriptor->GetSampleQty();
  const auto* samples = reinterpret_cast<const Index*>(m_samples.Data());
  Progress progress("looking for the strongest echo", quiet);
  StrongestSample strongest = {first, 0, 0};
  std::uint32_t largest = 0;
  for (std::uint64_t cell = first; cell < first + count; ++cell) {
    const Index* begin = samples + cell * vector;
    const Index* found =
        std::max_element(begin, begin + vector, [&](Index a, Index b) { return amplitudes[a] < amplitudes[b]; });
    if (amplitudes[*found] > largest || cell == first) {
      largest = amplitudes[*found];
      strongest = {cell, static_cast<std::uint32_t>(found - begin), Corrected(static_cast<Sample>(*found), conversion)};
    }
    if (cell % 1024 == 0) progress.At((cell - first) * vector * sizeof(Sample), count * vector * sizeof(Sample));
  }
  return strongest;
}

std::vector<std::uint8_t> GroupSamples::Codes(std::uint64_t first, std::uint64_t count, std::uint32_t gain) {
  if (CanAmplify()) m_table->RemapLUT(m_descriptor.get(), gain);
  const std::uint64_t vector = m_descriptor->GetSampleQty();
  std::vector<std::uint8_t> codes(count * vector);
  bool converted = false;
  switch (m_descriptor->GetDataType()) {
    case kvt_Int8:
      converted = Convert<char>(first * vector, codes);
      break;
    case kvt_UInt8:
      converted = Convert<unsigned char>(first * vector, codes);
      break;
    case kvt_Int16:
      converted = Convert<short>(first * vector, codes);
      break;
    case kvt_UInt16:
      converted = Convert<unsigned short>(first * vector, codes);
      break;
  }
  if (!converted) throw Failure("look-up table", cannotBeDrawn, "it does not fit the samples");
  return codes;
}

template <class Sample>
bool GroupSamples::Convert(std::uint64_t firstSample, std::vector<std::uint8_t>& codes) const {
  const auto* samples = reinterpret_cast<const Sample*>(m_samples.Data()) + firstSample;
  return m_table->ConvertBlock(samples, codes.size(), codes.data());
}

}  // namespace utdata::program
