// Headerless arrays of samples, gathered into A-scans.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace utdata::program {

enum class ArrayAxis : std::uint8_t { Row, Column, Sample };

/// How a headerless array lies in its file.
struct ArrayLayout {
  std::array<std::uint32_t, 3> shape = {};  ///< quantities, outermost axis first; none is 0
  std::array<ArrayAxis, 3> axes = {};       ///< a permutation, outermost first
  std::uint32_t sampleSize = 2;             ///< bytes: 1 or 2
  bool bigEndian = false;                   ///< samples of two bytes are stored most significant byte first

  [[nodiscard]] std::uint32_t Quantity(ArrayAxis axis) const;
  /// Bytes of the array; false when they do not fit 64 bits.
  [[nodiscard]] bool Size(std::uint64_t& bytes) const;
};

/// Told how many bytes have been gathered, out of how many; may throw to stop.
using GatherProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

/// Reads an array and gathers it into A-scans: cells in row-major order (row outer, column inner), each its samples in order, in the
/// machine's byte order. Holds the gathered array and a few tens of megabytes beside it. Throws Failure when the file cannot be read
/// or its size is not that of the layout.
[[nodiscard]] std::unique_ptr<std::byte[]> GatherAScans(const std::string& path,
                                                        const ArrayLayout& layout,
                                                        const GatherProgress& progress);

}  // namespace utdata::program
