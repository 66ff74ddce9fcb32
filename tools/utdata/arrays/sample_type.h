// The kinds of samples that other programs' arrays and data groups have in common.
#pragma once

#include <cstdint>
#include <string_view>

#include "interfaces/kvtiff19.h"

namespace utdata::program {

/// A whole number of 8 or 16 bits.
struct SampleType {
  const char* name;  ///< "u16"
  kvt_enumDataType type;
  std::uint32_t size;  ///< bytes
  bool isSigned;
  float minimum;
  float maximum;
};

/// The type of that name, size or data group; null when there is none.
[[nodiscard]] const SampleType* FindSampleType(std::string_view name);
[[nodiscard]] const SampleType* FindSampleType(kvt_enumDataType type);
[[nodiscard]] const SampleType* FindSampleType(std::uint64_t size, bool isSigned);

}  // namespace utdata::program
