// The low bits of many 4-byte elements, in plain C++ and for AVX2.
#pragma once

#include <cstddef>
#include <cstdint>

#include "src/foundation/vectorpath.h"

namespace utdata {

/// Stores the low 8 bits of each element. REQUIRES: the path is available; `stored` has `count`
/// bytes, apart from the elements
void NarrowToBytes(VectorPath path,
                   const std::int32_t* elements,
                   std::size_t count,
                   std::byte* stored) noexcept;
/// Stores the low 16 bits of each element in the machine's byte order. REQUIRES: as NarrowToBytes,
/// with 2 * count bytes, at any address
void NarrowToWords(VectorPath path,
                   const std::int32_t* elements,
                   std::size_t count,
                   std::byte* stored) noexcept;

}  // namespace utdata
