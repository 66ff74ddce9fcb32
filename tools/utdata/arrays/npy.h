// The .npy format of NumPy: a header that is a Python literal, then the elements.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "utdata/newscan.h"

namespace utdata::program {

/// What the header of a .npy file says.
struct NpyHeader {
  const SampleType* type = nullptr;
  bool bigEndian = false;
  bool fortranOrder = false;         ///< the first axis is the innermost in the file
  std::vector<std::uint64_t> shape;  ///< quantities, first axis first
  std::uint64_t size = 0;            ///< bytes before the first element
};

/// The bytes of a version 1.0 header for little-endian elements in C order, padded so that the
/// elements begin at a multiple of 64 bytes.
[[nodiscard]] std::string NpyHeaderBytes(const SampleType& type,
                                         const std::vector<std::uint64_t>& shape);

/// Reads the header of versions 1.0 to 3.0. Throws Failure when the file is no such array, or its
/// elements are not samples of 8 or 16 bits.
[[nodiscard]] NpyHeader ReadNpyHeader(const std::string& path);

}  // namespace utdata::program
