// The strongest of A-scans that are looked through, at the speed of memory: samples that are shown
// together are reduced before anything else is asked of them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

#include "src/inspection/amplitudes.h"
#include "utdata/datagroup.h"

namespace utdata {

/// Samples of an A-scan that are shown together, as one: their number, a power of two. The last of
/// an A-scan may be fewer.
using GroupSize = std::uint32_t;

/// Whether raw samples are in the order of their values.
template <class Values>
inline constexpr bool keepsOrder = true;
template <class Sample>
inline constexpr bool keepsOrder<CorrectedValues<Sample>> = false;

struct TakeLarger {
  template <class Value>
  Value operator()(const Value& one, const Value& other) const {
    return one < other ? other : one;
  }
};
struct TakeSmaller {
  template <class Value>
  Value operator()(const Value& one, const Value& other) const {
    return other < one ? other : one;
  }
};

/// Puts the taken of each two neighbours into `taken`, which may be where they stand. The last of
/// an odd number stays as it is. @return how many are left
template <class Take, class Value>
std::size_t TakeOfPairs(const Value* values, std::size_t quantity, Value* taken) {
  const Take take;
  using Lanes [[gnu::vector_size(16)]] = Value;
  constexpr std::size_t lanes = sizeof(Lanes) / sizeof(Value);
  std::size_t at = 0;
  const auto takeLanes = [&]<std::size_t... lane>(std::index_sequence<lane...>) {
    for (; at + 2 * lanes <= quantity; at += 2 * lanes) {
      Lanes first, second;
      std::memcpy(&first, values + at, sizeof first);
      std::memcpy(&second, values + at + lanes, sizeof second);
      const Lanes even = __builtin_shufflevector(first, second, 2 * lane...);
      const Lanes odd = __builtin_shufflevector(first, second, (2 * lane + 1)...);
      const Lanes of = take(even, odd);
      std::memcpy(taken + at / 2, &of, sizeof of);
    }
  };
  takeLanes(std::make_index_sequence<lanes>());
  for (; at + 1 < quantity; at += 2) taken[at / 2] = take(values[at], values[at + 1]);
  if (at < quantity) taken[at / 2] = values[at];
  return (quantity + 1) / 2;
}

/// Of one or several A-scans: the largest and smallest value at each sample, and the amplitude of
/// each group of samples.
template <class Values>
class GroupedExtremes {
 public:
  using Raw = typename Values::Raw;

  GroupedExtremes(const Values& values,
                  const DataGroup& group,
                  std::size_t samples,
                  GroupSize groupSize)
      : m_values(values),
        m_rule(group.Descriptor()),
        m_above(static_cast<float>(group.Amplitudes().above)),
        m_below(static_cast<float>(group.Amplitudes().below)),
        m_groupSize(groupSize),
        m_highest(samples),
        m_lowest(samples),
        m_high((samples + 1) / 2),
        m_low((samples + 1) / 2),
        m_amplitudes((samples + groupSize - 1) / groupSize) {}

  /// Takes an A-scan in addition to what was taken.
  void Take(const Raw* samples) {
    if (m_isEmpty)
      Begin(samples);
    else
      Widen(samples);
    m_isEmpty = false;
  }
  void Clear() { m_isEmpty = true; }
  [[nodiscard]] bool IsEmpty() const { return m_isEmpty; }

  /// Percent of full scale of each group, without sign.
  [[nodiscard]] const std::vector<float>& Amplitudes() {
    const Kept *highest = m_highest.data(), *lowest = m_lowest.data();
    std::size_t quantity = m_highest.size();
    for (GroupSize size = 1; size < m_groupSize; size *= 2) {
      TakeOfPairs<TakeLarger>(highest, quantity, m_high.data());
      quantity = TakeOfPairs<TakeSmaller>(lowest, quantity, m_low.data());
      highest = m_high.data();
      lowest = m_low.data();
    }
    for (std::size_t group = 0; group < quantity; ++group) {
      const float above = static_cast<float>(ValueOf(highest[group])) * m_above;
      const float below = static_cast<float>(ValueOf(lowest[group])) * -m_below;
      m_amplitudes[group] = above < below ? below : above;
    }
    return m_amplitudes;
  }
  /// The first sample of a group that has the largest amplitude, and whether it is below zero.
  [[nodiscard]] std::uint32_t StrongestOf(std::size_t group, bool& isNegative) const {
    const auto begin = static_cast<std::uint32_t>(group) * m_groupSize;
    const auto end = std::min(begin + m_groupSize, static_cast<std::uint32_t>(m_highest.size()));
    std::uint32_t strongest = begin;
    for (std::uint32_t sample = begin; sample < end; ++sample)
      if (m_rule.Rank(LargerOf(sample)) > m_rule.Rank(LargerOf(strongest))) strongest = sample;
    isNegative = LargerOf(strongest) < 0;
    return strongest;
  }

 private:
  // Samples whose order is that of their values are kept as they are.
  static constexpr bool isInOrder = keepsOrder<Values>;
  using Kept = std::conditional_t<isInOrder, Raw, std::int32_t>;

  void Begin(const Raw* samples) {
    if constexpr (isInOrder)
      std::memcpy(m_highest.data(), samples, m_highest.size() * sizeof(Raw));
    else
      std::transform(samples, samples + m_highest.size(), m_highest.begin(), [&](Raw sample) {
        return m_values.ValueOf(sample);
      });
    m_lowest = m_highest;
  }
  void Widen(const Raw* samples) {
    std::size_t at = 0;
    if constexpr (isInOrder) {
      using Lanes [[gnu::vector_size(16)]] = Raw;
      constexpr std::size_t lanes = sizeof(Lanes) / sizeof(Raw);
      Raw* const highest = m_highest.data();
      Raw* const lowest = m_lowest.data();
      for (; at + lanes <= m_highest.size(); at += lanes) {
        Lanes high, low, taken;
        std::memcpy(&taken, samples + at, sizeof taken);
        std::memcpy(&high, highest + at, sizeof high);
        std::memcpy(&low, lowest + at, sizeof low);
        high = high < taken ? taken : high;
        low = taken < low ? taken : low;
        std::memcpy(highest + at, &high, sizeof high);
        std::memcpy(lowest + at, &low, sizeof low);
      }
    }
    for (; at < m_highest.size(); ++at) {
      const Kept value = KeptOf(samples[at]);
      m_highest[at] = std::max(m_highest[at], value);
      m_lowest[at] = std::min(m_lowest[at], value);
    }
  }
  [[nodiscard]] std::int32_t LargerOf(std::uint32_t sample) const {
    return m_rule.Larger({ValueOf(m_highest[sample]), ValueOf(m_lowest[sample])});
  }
  [[nodiscard]] Kept KeptOf(Raw sample) const {
    if constexpr (isInOrder)
      return sample;
    else
      return m_values.ValueOf(sample);
  }
  [[nodiscard]] std::int32_t ValueOf(Kept kept) const {
    if constexpr (isInOrder)
      return m_values.ValueOf(kept);
    else
      return kept;
  }

  const Values& m_values;
  AmplitudeRule m_rule;
  float m_above;
  float m_below;
  GroupSize m_groupSize;
  std::vector<Kept> m_highest;  ///< at each sample
  std::vector<Kept> m_lowest;
  std::vector<Kept> m_high;  ///< of each group
  std::vector<Kept> m_low;
  std::vector<float> m_amplitudes;  ///< of each group
  bool m_isEmpty = true;
};

}  // namespace utdata
