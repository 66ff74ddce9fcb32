#include "src/acquisition/narrow.h"

#include <cstring>

#if defined(UTDATA_HAS_AVX2)
#include <immintrin.h>
#endif

namespace utdata {

namespace {

/// Elements of one block. A fixed count lets a compiler turn the loop into vector code by itself.
constexpr std::size_t blockSize = 32;

/// Elements from `done` on.
template <class Stored>
void NarrowPortably(const std::int32_t* elements,
                    std::size_t done,
                    std::size_t count,
                    std::byte* stored) {
  for (; done + blockSize <= count; done += blockSize) {
    Stored block[blockSize];
    for (std::size_t i = 0; i < blockSize; ++i) block[i] = static_cast<Stored>(elements[done + i]);
    std::memcpy(stored + done * sizeof(Stored), block, sizeof block);
  }
  for (; done < count; ++done) {
    const auto value = static_cast<Stored>(elements[done]);
    std::memcpy(stored + done * sizeof(Stored), &value, sizeof value);
  }
}

#if defined(UTDATA_HAS_AVX2)

/// Eight elements, of each only the low bits that `mask` has.
UTDATA_TARGET_AVX2 inline __m256i Load(const std::int32_t* elements, __m256i mask) {
  return _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(elements)), mask);
}

/// @return the elements done, whole blocks
UTDATA_TARGET_AVX2 std::size_t BytesOfBlocks(const std::int32_t* elements,
                                             std::size_t count,
                                             std::byte* stored) {
  const __m256i mask = _mm256_set1_epi32(0xFF);
  const __m256i order =
      _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);  // packing works in halves of a vector
  std::size_t done = 0;
  for (; done + 32 <= count; done += 32) {
    const std::int32_t* from = elements + done;
    const __m256i low = _mm256_packus_epi32(Load(from, mask), Load(from + 8, mask));
    const __m256i high = _mm256_packus_epi32(Load(from + 16, mask), Load(from + 24, mask));
    const __m256i bytes = _mm256_permutevar8x32_epi32(_mm256_packus_epi16(low, high), order);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(stored + done), bytes);
  }
  return done;
}

/// @return the elements done, whole blocks
UTDATA_TARGET_AVX2 std::size_t WordsOfBlocks(const std::int32_t* elements,
                                             std::size_t count,
                                             std::byte* stored) {
  const __m256i mask = _mm256_set1_epi32(0xFFFF);
  std::size_t done = 0;
  for (; done + 16 <= count; done += 16) {
    const __m256i packed =
        _mm256_packus_epi32(Load(elements + done, mask), Load(elements + done + 8, mask));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(stored + 2 * done),
                        _mm256_permute4x64_epi64(packed, 0xD8));
  }
  return done;
}

#endif

}  // namespace

void NarrowToBytes([[maybe_unused]] VectorPath path,
                   const std::int32_t* elements,
                   std::size_t count,
                   std::byte* stored) noexcept {
  std::size_t done = 0;
#if defined(UTDATA_HAS_AVX2)
  if (path == VectorPath::Avx2) done = BytesOfBlocks(elements, count, stored);
#endif
  NarrowPortably<std::uint8_t>(elements, done, count, stored);
}

void NarrowToWords([[maybe_unused]] VectorPath path,
                   const std::int32_t* elements,
                   std::size_t count,
                   std::byte* stored) noexcept {
  std::size_t done = 0;
#if defined(UTDATA_HAS_AVX2)
  if (path == VectorPath::Avx2) done = WordsOfBlocks(elements, count, stored);
#endif
  NarrowPortably<std::uint16_t>(elements, done, count, stored);
}

}  // namespace utdata
