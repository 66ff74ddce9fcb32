// The largest amplitudes of raw samples, at the speed of memory.
//
// An amplitude is a share of full scale: of a value from 0 on its share of the range's maximum, of
// a negative one its share of the range's minimum. Two amplitudes are compared exactly, as products
// of whole numbers where the range is whole.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <span>
#include <type_traits>
#include <vector>

#include "utdata/lut.h"
#include "utdata/rdata.h"

namespace utdata {

/// The values of some samples that lie farthest from zero on either side.
struct Extremes {
  std::int32_t highest = std::numeric_limits<std::int32_t>::min();
  std::int32_t lowest = std::numeric_limits<std::int32_t>::max();
};

/// Of plain samples; eight or sixteen an instruction, two at a time. REQUIRES: not empty.
template <class Sample>
Extremes ExtremesOf(std::span<const Sample> samples) {
  using Lanes [[gnu::vector_size(16)]] = Sample;
  constexpr std::size_t lanes = sizeof(Lanes) / sizeof(Sample);
  Extremes found;
  std::size_t at = 0;
  const auto load = [&](std::size_t from) {
    Lanes values;
    std::memcpy(&values, samples.data() + from, sizeof values);
    return values;
  };
  // No arrays of lanes: a compiler that does not unroll loops over them keeps them in memory.
  if (samples.size() >= 2 * lanes) {
    Lanes highest = load(0), lowest = highest;
    Lanes otherHighest = load(lanes), otherLowest = otherHighest;
    for (at = 2 * lanes; at + 2 * lanes <= samples.size(); at += 2 * lanes) {
      const Lanes values = load(at), otherValues = load(at + lanes);
      highest = highest < values ? values : highest;
      lowest = values < lowest ? values : lowest;
      otherHighest = otherHighest < otherValues ? otherValues : otherHighest;
      otherLowest = otherValues < otherLowest ? otherValues : otherLowest;
    }
    highest = highest < otherHighest ? otherHighest : highest;
    lowest = otherLowest < lowest ? otherLowest : lowest;
    for (std::size_t lane = 0; lane < lanes; ++lane) {
      found.highest = std::max(found.highest, std::int32_t{highest[lane]});
      found.lowest = std::min(found.lowest, std::int32_t{lowest[lane]});
    }
  }
  for (; at < samples.size(); ++at) {
    found.highest = std::max(found.highest, std::int32_t{samples[at]});
    found.lowest = std::min(found.lowest, std::int32_t{samples[at]});
  }
  return found;
}

/// How the samples of a descriptor become values and amplitudes.
class AmplitudeRule {
 public:
  explicit AmplitudeRule(const CRDataTypeDD& descriptor)
      : m_above(descriptor.GetDataMax()),
        m_below(descriptor.GetDataMin() < 0 ? -descriptor.GetDataMin() : descriptor.GetDataMax()) {}

  /// Grows with the amplitude of a value.
  [[nodiscard]] double Rank(std::int32_t value) const {
    return value < 0 ? -m_above * value : m_below * value;
  }
  /// Of the two, the value with the larger amplitude; the positive one of equal ones.
  [[nodiscard]] std::int32_t Larger(const Extremes& values) const {
    return Rank(values.highest) >= Rank(values.lowest) ? values.highest : values.lowest;
  }
  /// The amplitude of a value on the positive scale, where the range's maximum is full scale.
  [[nodiscard]] double Positive(std::int32_t value) const {
    return value < 0 ? -m_above * value / m_below : value;
  }
  [[nodiscard]] double FullScale() const { return m_above; }

 private:
  double m_above;
  double m_below;
};

/// The first of some samples that has the larger amplitude of their extremes. Amplitudes grow with
/// values on either side of zero, so that no sample but an extreme one has it.
template <class Values, class Raw>
std::size_t FirstLargest(const AmplitudeRule& rule,
                         const Values& values,
                         std::span<const Raw> samples,
                         const Extremes& extremes) {
  const std::int32_t largest = rule.Larger(extremes);
  const bool areEqual = rule.Rank(extremes.highest) == rule.Rank(extremes.lowest);
  const std::int32_t alsoLargest = areEqual ? extremes.lowest : largest;
  const auto found = std::find_if(samples.begin(), samples.end(), [&](Raw sample) {
    const std::int32_t value = values.ValueOf(sample);
    return value == largest || value == alsoLargest;
  });
  return static_cast<std::size_t>(found - samples.begin());
}

/// Samples whose value is what is stored.
template <class Sample>
struct PlainValues {
  using Raw = Sample;
  [[nodiscard]] std::int32_t ValueOf(Sample sample) const { return sample; }
  [[nodiscard]] Extremes Of(std::span<const Sample> samples) const { return ExtremesOf(samples); }
};

/// Samples stored around the middle of their unsigned range: their order is that of the values.
template <class Sample>
struct OffsetValues {
  using Raw = std::make_unsigned_t<Sample>;
  static constexpr std::int32_t middle = std::numeric_limits<Sample>::max() + 1;
  [[nodiscard]] std::int32_t ValueOf(Raw sample) const { return std::int32_t{sample} - middle; }
  [[nodiscard]] Extremes Of(std::span<const Raw> samples) const {
    const Extremes stored = ExtremesOf(samples);
    return {stored.highest - middle, stored.lowest - middle};
  }
};

/// Samples that are corrected in another way: the value of every raw sample in a table.
template <class Sample>
class CorrectedValues {
 public:
  using Raw = std::make_unsigned_t<Sample>;
  explicit CorrectedValues(lut_enumConversion conversion)
      : m_values(std::size_t{std::numeric_limits<Raw>::max()} + 1) {
    for (std::size_t raw = 0; raw < m_values.size(); ++raw) {
      const auto sample = static_cast<Sample>(static_cast<Raw>(raw));
      const std::int32_t value =
          CLookUpTable::CorrectAmplitudeData(std::int32_t{sample}, conversion);
      m_values[raw] = static_cast<Sample>(value & std::numeric_limits<Raw>::max());
    }
  }
  [[nodiscard]] std::int32_t ValueOf(Raw sample) const { return m_values[sample]; }
  [[nodiscard]] Extremes Of(std::span<const Raw> samples) const {
    Extremes found;
    for (const Raw sample : samples) {
      found.highest = std::max(found.highest, m_values[sample]);
      found.lowest = std::min(found.lowest, m_values[sample]);
    }
    return found;
  }

 private:
  std::vector<std::int32_t> m_values;
};

/// The conversions that give a sample another value than the one that is stored.
inline constexpr std::uint32_t valueCorrections =
    lut_SwapData | lut_RemoveSVcompression | lut_RemoveOffset;

/// The bit that has to be flipped in the raw samples of a descriptor to get their values, 0 for
/// none; nothing where that does not do.
inline std::optional<std::uint16_t> FlippedBit(const CRDataTypeDD& descriptor) {
  const std::uint32_t corrections =
      CLookUpTable::GetConversionStyle(&descriptor) & valueCorrections;
  if (corrections == 0) return 0;
  if (corrections != lut_RemoveOffset) return std::nullopt;
  if (descriptor.GetDataType() == kvt_Int8) return 0x80;
  return descriptor.GetDataType() == kvt_Int16 ? 0x8000 : 0;
}

/// Calls `job(values)` with what reads the samples of a descriptor. @return what it returns; a
/// value-initialised result for a sample type that is not known
template <class Job>
auto WithValues(const CRDataTypeDD& descriptor, Job&& job) {
  const auto ofType = [&]<class Sample>(Sample) {
    const lut_enumConversion conversion = CLookUpTable::GetConversionStyle(&descriptor);
    if ((conversion & valueCorrections) == 0) return job(PlainValues<Sample>());
    if constexpr (std::is_signed_v<Sample>)
      if ((conversion & valueCorrections) == lut_RemoveOffset) return job(OffsetValues<Sample>());
    return job(CorrectedValues<Sample>(conversion));
  };
  switch (descriptor.GetDataType()) {
    case kvt_Int8:
      return ofType(std::int8_t{});
    case kvt_UInt8:
      return ofType(std::uint8_t{});
    case kvt_Int16:
      return ofType(std::int16_t{});
    case kvt_UInt16:
      return ofType(std::uint16_t{});
  }
  return decltype(ofType(std::int16_t{}))();
}

}  // namespace utdata
