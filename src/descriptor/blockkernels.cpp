#include "src/descriptor/blockkernels.h"

#include <algorithm>

#if defined(UTDATA_HAS_AVX2)
#include <immintrin.h>
#endif

namespace utdata {

namespace {

/// Samples of one block. A fixed count lets a compiler turn the loops below into vector code by
/// itself.
constexpr std::size_t blockSize = 32;

std::uint8_t Fold(std::uint8_t level) {
  return static_cast<std::uint8_t>((level + level) ^ (level < 128 ? 0xFF : 0));
}

struct Portable {
  template <bool isFolded, bool isPlain>
  static std::size_t Narrow(const WordPlan& plan,
                            const std::uint16_t* samples,
                            std::size_t count,
                            std::uint8_t* codes) {
    const WordPlan p = plan;  // out of reach of what `codes` may alias
    std::size_t done = 0;
    for (; done + blockSize <= count; done += blockSize)
      for (std::size_t i = done; i < done + blockSize; ++i) {
        const std::int16_t key = Key<isPlain>(p, samples[i]);
        const auto u =
            static_cast<std::uint16_t>(key + static_cast<std::int32_t>(Offset<isFolded>(p, key)));
        const auto scaled = static_cast<std::uint16_t>((std::uint32_t{u} * p.slope) >> 16);
        codes[i] = Code<isFolded>(static_cast<std::uint8_t>(scaled >> p.shift));
      }
    return done;
  }

  template <bool isFolded>
  static std::size_t Wide(const WordPlan& plan,
                          const std::uint16_t* samples,
                          std::size_t count,
                          std::uint8_t* codes) {
    const WordPlan p = plan;
    std::size_t done = 0;
    for (; done + blockSize <= count; done += blockSize)
      for (std::size_t i = done; i < done + blockSize; ++i) {
        const std::int16_t key = Key<false>(p, samples[i]);
        const std::uint32_t u = static_cast<std::uint16_t>(key - p.low);
        const std::uint32_t sum = u * p.slope + ((u * p.slopeLow) >> 16) + Offset<isFolded>(p, key);
        codes[i] = Code<isFolded>(static_cast<std::uint8_t>(sum >> p.shift));
      }
    return done;
  }

 private:
  template <bool isPlain>
  static std::int16_t Key(const WordPlan& p, std::uint16_t sample) {
    if constexpr (isPlain) return static_cast<std::int16_t>(sample ^ p.flip);
    const unsigned turn = p.isSwapped ? 8 : 0;
    const auto ordered = static_cast<std::uint16_t>((sample << turn) | (sample >> (16 - turn)));
    return std::clamp(static_cast<std::int16_t>((ordered & p.mask) ^ p.flip), p.low, p.high);
  }
  template <bool isFolded>
  static std::uint32_t Offset(const WordPlan& p, std::int16_t key) {
    return isFolded && key < p.knee ? p.offset[0] : p.offset[1];
  }
  template <bool isFolded>
  static std::uint8_t Code(std::uint8_t level) {
    return isFolded ? Fold(level) : level;
  }
};

#if defined(UTDATA_HAS_AVX2)

struct Avx2 {
  using Words = __m256i;  // sixteen 16-bit lanes

  template <bool isFolded, bool isPlain>
  UTDATA_TARGET_AVX2 static std::size_t Narrow(const WordPlan& plan,
                                               const std::uint16_t* samples,
                                               std::size_t count,
                                               std::uint8_t* codes) {
    const Keys<isFolded, isPlain> keys(plan);
    const Words offset = Spread(plan.offset[1]);
    const Words kneeOffset = Spread(plan.offset[0] - plan.offset[1]);
    const Words slope = Spread(plan.slope);
    const Words downShift =
        Spread(1u << (16 - plan.shift));  // a shift by a variable costs twice a multiplication
    std::size_t done = 0;
    for (; done + blockSize <= count; done += blockSize) {
      Words halves[2];
      for (int half = 0; half < 2; ++half) {
        const Words key = keys.Load(samples + done + 16 * half);
        Words u = _mm256_add_epi16(key, offset);
        if constexpr (isFolded)
          u = _mm256_add_epi16(u, _mm256_and_si256(keys.BelowKnee(key), kneeOffset));
        halves[half] = _mm256_mulhi_epu16(_mm256_mulhi_epu16(u, slope), downShift);
      }
      Store<isFolded>(halves[0], halves[1], codes + done);
    }
    return done;
  }

  template <bool isFolded>
  UTDATA_TARGET_AVX2 static std::size_t Wide(const WordPlan& plan,
                                             const std::uint16_t* samples,
                                             std::size_t count,
                                             std::uint8_t* codes) {
    const Keys<isFolded, false> keys(plan);
    const Words low = Spread(static_cast<std::uint16_t>(plan.low));
    const Words slope = Spread(plan.slope);
    const Words slopeLow = Spread(plan.slopeLow);
    const Words offset = _mm256_set1_epi32(static_cast<int>(plan.offset[1]));
    const Words kneeOffset = _mm256_set1_epi32(static_cast<int>(plan.offset[0] - plan.offset[1]));
    const Words shift = _mm256_set1_epi32(plan.shift);
    std::size_t done = 0;
    for (; done + blockSize <= count; done += blockSize) {
      Words halves[2];
      for (int half = 0; half < 2; ++half) {
        const Words key = keys.Load(samples + done + 16 * half);
        const Words u = _mm256_sub_epi16(key, low);
        const Words productLow = _mm256_mullo_epi16(u, slope);
        const Words productHigh = _mm256_mulhi_epu16(u, slope);
        const Words rest = _mm256_mulhi_epu16(u, slopeLow);
        Words first = _mm256_add_epi32(_mm256_unpacklo_epi16(productLow, productHigh), offset);
        Words second = _mm256_add_epi32(_mm256_unpackhi_epi16(productLow, productHigh), offset);
        first = _mm256_add_epi32(first, _mm256_unpacklo_epi16(rest, _mm256_setzero_si256()));
        second = _mm256_add_epi32(second, _mm256_unpackhi_epi16(rest, _mm256_setzero_si256()));
        if constexpr (isFolded) {
          const Words below = keys.BelowKnee(key);
          first = _mm256_add_epi32(
              first, _mm256_and_si256(_mm256_unpacklo_epi16(below, below), kneeOffset));
          second = _mm256_add_epi32(
              second, _mm256_and_si256(_mm256_unpackhi_epi16(below, below), kneeOffset));
        }
        halves[half] =
            _mm256_packus_epi32(_mm256_srlv_epi32(first, shift), _mm256_srlv_epi32(second, shift));
      }
      Store<isFolded>(halves[0], halves[1], codes + done);
    }
    return done;
  }

 private:
  UTDATA_TARGET_AVX2 static inline Words Spread(std::uint32_t value) {
    return _mm256_set1_epi16(static_cast<short>(value & 0xFFFFu));
  }

  /// From raw samples to keys.
  template <bool isFolded, bool isPlain>
  struct Keys {
    UTDATA_TARGET_AVX2 explicit inline Keys(const WordPlan& plan)
        : order(_mm256_xor_si256(
              _mm256_broadcastsi128_si256(
                  _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15)),
              _mm256_set1_epi8(plan.isSwapped ? 1 : 0))),
          mask(Spread(plan.mask)),
          flip(Spread(plan.flip)),
          low(_mm256_set1_epi16(plan.low)),
          high(_mm256_set1_epi16(plan.high)),
          knee(_mm256_set1_epi16(plan.knee)) {}

    UTDATA_TARGET_AVX2 inline Words Load(const std::uint16_t* samples) const {
      Words words = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples));
      if constexpr (isPlain) return _mm256_xor_si256(words, flip);
      words = _mm256_xor_si256(_mm256_and_si256(_mm256_shuffle_epi8(words, order), mask), flip);
      return _mm256_min_epi16(_mm256_max_epi16(words, low), high);
    }
    UTDATA_TARGET_AVX2 inline Words BelowKnee(Words key) const {
      return _mm256_cmpgt_epi16(knee, key);
    }

    Words order, mask, flip, low, high, knee;
  };

  /// Packs two vectors of levels, each at most 255, into 32 codes.
  template <bool isFolded>
  UTDATA_TARGET_AVX2 static inline void Store(Words first, Words second, std::uint8_t* codes) {
    Words levels = _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0xD8);
    if constexpr (isFolded) {
      const Words below = _mm256_cmpgt_epi8(levels, _mm256_set1_epi8(-1));  // levels under 128
      levels = _mm256_xor_si256(_mm256_add_epi8(levels, levels), below);
    }
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(codes), levels);
  }
};

#endif

template <class Path>
std::size_t Run(const WordPlan& plan,
                const std::uint16_t* samples,
                std::size_t count,
                std::uint8_t* codes) {
  switch (plan.method) {
    case WordPlan::Method::Narrow:
      if (plan.isFolded)
        return plan.isPlain ? Path::template Narrow<true, true>(plan, samples, count, codes)
                            : Path::template Narrow<true, false>(plan, samples, count, codes);
      return plan.isPlain ? Path::template Narrow<false, true>(plan, samples, count, codes)
                          : Path::template Narrow<false, false>(plan, samples, count, codes);
    case WordPlan::Method::Wide:
      return plan.isFolded ? Path::template Wide<true>(plan, samples, count, codes)
                           : Path::template Wide<false>(plan, samples, count, codes);
    case WordPlan::Method::Table:
      break;
  }
  return 0;
}

}  // namespace

std::size_t CodeWords(VectorPath path,
                      const WordPlan& plan,
                      const std::uint16_t* samples,
                      std::size_t count,
                      std::uint8_t* codes) noexcept {
#if defined(UTDATA_HAS_AVX2)
  if (path == VectorPath::Avx2) return Run<Avx2>(plan, samples, count, codes);
#else
  static_cast<void>(path);
#endif
  return Run<Portable>(plan, samples, count, codes);
}

void FoldBytes(const std::uint8_t* samples,
               std::size_t count,
               std::uint8_t flip,
               std::uint8_t* codes) noexcept {
  const auto toLevel = static_cast<std::uint8_t>(flip ^ 0x80u);
  std::size_t done = 0;
  for (; done + blockSize <= count; done += blockSize)
    for (std::size_t i = done; i < done + blockSize; ++i) codes[i] = Fold(samples[i] ^ toLevel);
  for (; done < count; ++done) codes[done] = Fold(samples[done] ^ toLevel);
}

}  // namespace utdata
