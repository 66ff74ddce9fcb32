#include "src/descriptor/blockcoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <optional>
#include <vector>

#include "utdata/lut.h"

namespace utdata {

namespace {

/// Keys with one level: a tread of the staircase.
struct Tread {
  std::int32_t first;
  std::int32_t last;
  std::int32_t level;  ///< 0 to 255
};

/// Offsets that put every tread where it belongs.
struct Offsets {
  std::int32_t knee = INT16_MIN;
  std::int64_t below = 0;
  std::int64_t above = 0;
};

struct Interval {
  static constexpr std::int64_t bound = std::int64_t{1} << 40;  ///< far beyond any offset
  std::int64_t low = -bound;
  std::int64_t high = bound;

  [[nodiscard]] bool IsEmpty() const { return low > high; }
  [[nodiscard]] std::int64_t Middle() const { return low + (high - low) / 2; }
  [[nodiscard]] Interval Meet(const Interval& other) const {
    return {std::max(low, other.low), std::min(high, other.high)};
  }
};

/// levels[n] is the smallest sum of scaled key and offset that gives level n.
using Levels = std::array<std::int64_t, 257>;

std::uint16_t SampleOfKey(const WordPlan& plan, std::int32_t key) {
  const auto ordered = static_cast<std::uint16_t>(static_cast<std::uint16_t>(key) ^ plan.flip);
  return plan.isSwapped ? CLookUpTable::SwapData(ordered) : ordered;
}

std::int32_t StepOfKeys(const WordPlan& plan) { return plan.mask == 0xFFFF ? 1 : 16; }

/// The treads of a table in the order of their keys; empty when the levels do not rise.
std::vector<Tread> TreadsOf(const WordPlan& plan, const std::uint8_t* table) {
  std::vector<Tread> treads;
  for (std::int32_t key = INT16_MIN; key <= INT16_MAX; key += StepOfKeys(plan)) {
    const std::uint8_t code = table[SampleOfKey(plan, key)];
    const std::int32_t level = plan.isFolded ? CLookUpTable::UnRectifySC(code) + 128 : code;
    if (treads.empty() || level > treads.back().level)
      treads.push_back({key, key, level});
    else if (level == treads.back().level)
      treads.back().last = key;
    else
      return {};
  }
  return treads;
}

/// Finds the offsets for a slope that is given by `scale`: one for all keys or, for folded codes,
/// one up to a knee and one from there.
template <class Scale>
std::optional<Offsets> FindOffsets(const WordPlan& plan,
                                   const std::vector<Tread>& treads,
                                   const Levels& levels,
                                   Scale scale) {
  const auto allowed = [&](std::int32_t key, std::int32_t level) {
    const auto index = static_cast<std::size_t>(level);
    return Interval{levels[index] - scale(key), levels[index + 1] - 1 - scale(key)};
  };
  Offsets found;
  Interval offset;
  bool mayTurn = plan.isFolded;
  for (const auto& [first, last, level] : treads) {
    const Interval whole = offset.Meet(allowed(first, level)).Meet(allowed(last, level));
    if (!whole.IsEmpty()) {
      offset = whole;
      continue;
    }
    if (!mayTurn) return std::nullopt;
    mayTurn = false;
    found.knee = first;
    for (Interval next = offset.Meet(allowed(found.knee, level)); !next.IsEmpty();
         next = offset.Meet(allowed(found.knee, level))) {
      offset = next;
      found.knee += StepOfKeys(plan);
    }
    found.below = offset.Middle();
    offset = allowed(found.knee, level).Meet(allowed(last, level));
    if (offset.IsEmpty()) return std::nullopt;
  }
  found.above = offset.Middle();
  return found;
}

void SetOffsets(WordPlan& plan, const Offsets& offsets) {
  plan.knee = static_cast<std::int16_t>(offsets.knee);
  plan.offset[0] = static_cast<std::uint32_t>(offsets.below & 0xFFFFFFFF);
  plan.offset[1] = static_cast<std::uint32_t>(offsets.above & 0xFFFFFFFF);
}

/// Takes slope * 2^bits and as many bits as a 16-bit slope holds; false when there are none.
bool NormaliseSlope(double codesPerSample, int fewest, int most, int& bits, double& scaled) {
  for (bits = most; bits >= fewest; --bits) {
    scaled = std::ldexp(codesPerSample, bits);
    if (scaled < 65535) return scaled >= 1;
  }
  return false;
}

bool FitNarrow(WordPlan& plan, const std::vector<Tread>& treads, double codesPerSample, int nudge) {
  int bits = 0;
  double scaled = 0;
  if (!NormaliseSlope(codesPerSample, 17, 31, bits, scaled)) return false;
  const std::int64_t slope = std::llround(scaled) + nudge;
  if (slope < 1 || slope > 65535) return false;
  Levels levels;
  for (std::size_t level = 0; level < levels.size(); ++level)
    levels[level] = std::min<std::int64_t>(
        ((static_cast<std::int64_t>(level) << bits) + slope - 1) / slope, 65536);
  const auto offsets =
      FindOffsets(plan, treads, levels, [](std::int32_t key) { return std::int64_t{key}; });
  if (!offsets) return false;
  plan.method = WordPlan::Method::Narrow;
  plan.slope = static_cast<std::uint16_t>(slope);
  plan.shift = static_cast<std::uint8_t>(bits - 16);
  SetOffsets(plan, *offsets);
  return true;
}

bool FitWide(WordPlan& plan, const std::vector<Tread>& treads, double codesPerSample) {
  int bits = 0;
  double scaled = 0;
  if (!NormaliseSlope(codesPerSample, 1, 24, bits, scaled)) return false;
  const std::int64_t slope = std::llround(std::ldexp(scaled, 16));
  const std::int64_t slopeHigh = slope >> 16;
  const std::int64_t slopeLow = slope & 0xFFFF;
  Levels levels;
  for (std::size_t level = 0; level < levels.size(); ++level)
    levels[level] = static_cast<std::int64_t>(level) << bits;
  const auto offsets =
      FindOffsets(plan, treads, levels, [&, low = std::int64_t{plan.low}](std::int32_t key) {
        return (key - low) * slopeHigh + (((key - low) * slopeLow) >> 16);
      });
  if (!offsets) return false;
  plan.method = WordPlan::Method::Wide;
  plan.slope = static_cast<std::uint16_t>(slopeHigh);
  plan.slopeLow = static_cast<std::uint16_t>(slopeLow);
  plan.shift = static_cast<std::uint8_t>(bits);
  SetOffsets(plan, *offsets);
  return true;
}

/// Whether the kernel gives the table's code for every sample.
bool IsProven(VectorPath path, const WordPlan& plan, const std::uint8_t* table) {
  constexpr std::size_t part = 1024;
  std::array<std::uint16_t, part> samples;
  std::array<std::uint8_t, part> codes;
  for (std::size_t from = 0; from < 65536; from += part) {
    for (std::size_t i = 0; i < part; ++i) samples[i] = static_cast<std::uint16_t>(from + i);
    if (CodeWords(path, plan, samples.data(), part, codes.data()) != part) return false;
    if (std::memcmp(codes.data(), table + from, part) != 0) return false;
  }
  return true;
}

/// Keys beyond the outer treads are clamped to them, so that a slope need not hold there.
void ClampOuterTreads(WordPlan& plan, std::vector<Tread>& treads) {
  treads.front().first = treads.front().last;
  treads.back().last = treads.back().first;
  plan.low = static_cast<std::int16_t>(treads.front().last);
  plan.high = static_cast<std::int16_t>(treads.back().first);
  plan.isPlain = false;
}

}  // namespace

WordPlan FindWordPlan(VectorPath path,
                      std::uint32_t conversion,
                      bool isFolded,
                      const std::uint8_t* table,
                      double codesPerSample) {
  WordPlan correction;
  correction.isFolded = isFolded;
  correction.isSwapped = (conversion & lut_SwapData) != 0;
  correction.mask = (conversion & lut_RemoveSVcompression) != 0 ? 0xFFF0 : 0xFFFF;
  // Keys are signed: unsigned samples are turned by half their range, and so are signed ones that
  // are stored offset.
  const bool isOffset = !isFolded || (conversion & lut_RemoveOffset) != 0;
  correction.flip = isOffset ? 0x8000 : 0;
  correction.isPlain = !correction.isSwapped && correction.mask == 0xFFFF;

  std::vector<Tread> treads = TreadsOf(correction, table);
  if (treads.size() < 2 || !std::isfinite(codesPerSample) || codesPerSample <= 0) return correction;
  for (const bool isClamped : {false, true}) {
    WordPlan plan = correction;
    if (isClamped) ClampOuterTreads(plan, treads);
    for (const int nudge : {0, 1, -1})
      if (FitNarrow(plan, treads, codesPerSample, nudge) && IsProven(path, plan, table))
        return plan;
    if (isClamped && FitWide(plan, treads, codesPerSample) && IsProven(path, plan, table))
      return plan;
  }
  return correction;
}

BlockCoder::BlockCoder(std::uint32_t dataType,
                       std::uint32_t conversion,
                       const std::uint8_t* table,
                       double codesPerSample)
    : m_table(table) {
  if (dataType == kvt_Int16 || dataType == kvt_UInt16) {
    m_plan = FindWordPlan(FastestPath(), conversion, dataType == kvt_Int16, table, codesPerSample);
  } else {
    m_byteFlip = static_cast<std::uint8_t>((conversion & lut_RemoveOffset) != 0 ? 0x80 : 0);
    ChooseByteMethod();
  }
}

void BlockCoder::ChooseByteMethod() {
  std::array<std::uint8_t, 256> samples;
  std::array<std::uint8_t, 256> folded;
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<std::uint8_t>(i);
  FoldBytes(samples.data(), samples.size(), m_byteFlip, folded.data());
  if (std::equal(samples.begin(), samples.end(), m_table))
    m_byteMethod = ByteMethod::Copy;
  else if (std::equal(folded.begin(), folded.end(), m_table))
    m_byteMethod = ByteMethod::Fold;
}

void BlockCoder::Bytes(const std::uint8_t* samples, std::size_t count, std::uint8_t* codes) const {
  if (m_byteMethod == ByteMethod::Copy)
    std::copy_n(samples, count, codes);
  else if (m_byteMethod == ByteMethod::Fold)
    FoldBytes(samples, count, m_byteFlip, codes);
  else
    std::transform(
        samples, samples + count, codes, [this](std::uint8_t sample) { return m_table[sample]; });
}

void BlockCoder::Words(const std::uint16_t* samples, std::size_t count, std::uint8_t* codes) const {
  const std::size_t done = CodeWords(FastestPath(), m_plan, samples, count, codes);
  std::transform(samples + done, samples + count, codes + done, [this](std::uint16_t sample) {
    return m_table[sample];
  });
}

}  // namespace utdata
