// Arrays of samples, gathered into A-scans.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace utdata::program {

enum class ArrayAxis : std::uint8_t { Row, Column, Sample };

/// How an array lies in its file.
struct ArrayLayout {
  std::array<std::uint32_t, 3> shape = {};  ///< quantities, outermost axis first; none is 0
  std::array<ArrayAxis, 3> axes = {};       ///< a permutation, outermost first
  std::uint32_t sampleSize = 2;             ///< bytes: 1 or 2
  bool bigEndian = false;   ///< samples of two bytes are stored most significant byte first
  std::uint64_t start = 0;  ///< bytes before the array

  [[nodiscard]] std::uint32_t Quantity(ArrayAxis axis) const;
  /// Bytes of the array; false when they do not fit 64 bits.
  [[nodiscard]] bool Size(std::uint64_t& bytes) const;
};

/// Told how many bytes have been gathered, out of how many; may throw to stop.
using GatherProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

/// Where the elements of an array come from, in the order of its layout.
class ArraySource {
 public:
  ArraySource() = default;
  virtual ~ArraySource() = default;
  ArraySource(const ArraySource&) = delete;
  ArraySource& operator=(const ArraySource&) = delete;

  /// Fills `bytes` with the elements from `firstElement` on. Throws Failure.
  virtual void Read(std::uint64_t firstElement, std::span<std::byte> bytes) = 0;
};

/// The bytes of a file that a layout describes. Throws Failure when it cannot be read or holds more
/// or less.
/// @param remedy what to check when it does not fit
[[nodiscard]] std::unique_ptr<ArraySource> OpenArrayFile(const std::string& path,
                                                         const ArrayLayout& layout,
                                                         const std::string& remedy);

/// Gathers an array into A-scans: cells in row-major order (row outer, column inner), each its
/// samples in order, in the machine's byte order. Holds a few tens of megabytes beside them.
/// @param gathered as many bytes as the layout has
void GatherAScans(ArraySource& source,
                  const ArrayLayout& layout,
                  std::span<std::byte> gathered,
                  const GatherProgress& progress);

}  // namespace utdata::program
