// The arithmetic that gives the codes of a 16-bit look-up table without reading it, in plain C++
// and for AVX2.
//
// A raw sample becomes a signed key (byte order, mask, flip, clamp); the codes rise with the keys
// like an even staircase, which is one multiplication, or two that differ by an offset on either
// side of a knee where truncation toward zero makes one step twice as wide.
#pragma once

#include <cstddef>
#include <cstdint>

#include "src/foundation/vectorpath.h"

namespace utdata {

struct WordPlan {
  enum class Method : std::uint8_t {
    Table,   ///< read the table
    Narrow,  ///< level = (uint16(key + offset) * slope) >> 16 >> shift
    Wide     ///< level = (u * slope + (u * slopeLow >> 16) + offset) >> shift in 32 bits, u = key -
             ///< low
  };

  Method method = Method::Table;
  bool isFolded =
      false;  ///< codes are levels folded about 128: 128, 127, 129, 126 ... become 0, 1, 2, 3 ...
  bool isPlain = false;  ///< no byte order, no mask, no clamp
  bool isSwapped = false;
  std::uint16_t mask = 0xFFFF;
  std::uint16_t flip = 0;         ///< key = int16(sample & mask ^ flip)
  std::int16_t low = INT16_MIN;   ///< keys are raised to this
  std::int16_t high = INT16_MAX;  ///< and cut to this
  std::int16_t knee =
      INT16_MIN;  ///< keys below take offset[0], the others offset[1]; folded codes only
  std::uint16_t slope = 0;
  std::uint16_t slopeLow = 0;
  std::uint32_t offset[2] = {0, 0};
  std::uint8_t shift = 1;  ///< 1 to 15 for Narrow, 1 to 24 for Wide
};

/// Codes of whole blocks of 32 samples. REQUIRES: the path is available; codes do not overlap the
/// samples.
/// @return the samples done: the largest multiple of 32 not above `count`; 0 for Method::Table
[[nodiscard]] std::size_t CodeWords(VectorPath path,
                                    const WordPlan& plan,
                                    const std::uint16_t* samples,
                                    std::size_t count,
                                    std::uint8_t* codes) noexcept;

/// Codes of signed 8-bit samples, folded about 0, after `sample ^ flip`.
void FoldBytes(const std::uint8_t* samples,
               std::size_t count,
               std::uint8_t flip,
               std::uint8_t* codes) noexcept;

}  // namespace utdata
