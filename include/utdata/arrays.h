// Samples as arrays of other programs: what a data group is as an array with named axes in base
// units, and how an array in any order of axes becomes A-scans.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "utdata/datagroup.h"
#include "utdata/newscan.h"

namespace utdata {

/// A unit by the name that arrays give it, of a base unit.
struct ArrayUnit {
  std::string_view name;  ///< "m", "mm", "in", "s", "us", "ns", "degree", "%", "dB", "V", or empty
  kvt_enumUnits base;
  double perBase;  ///< of it in the base unit: 1000 mm in a metre
};

/// Null when there is none of that name.
[[nodiscard]] UTDATA_API const ArrayUnit* FindArrayUnit(std::string_view name);
/// A base unit by its name.
[[nodiscard]] UTDATA_API const ArrayUnit& ArrayUnitOf(kvt_enumUnits base);

/// The double of the shortest decimal that is the same 32-bit number: 0.001, not
/// 0.0010000000474974513.
[[nodiscard]] UTDATA_API double Shortest(float value);

// ---- a data group as an array

/// One axis; the value at index i is first + i * step.
struct DescribedAxis {
  const char* name;       ///< "row", "column", "sample"
  const char* label;      ///< for the axis of a picture: "time of flight"
  std::string_view unit;  ///< "m", "s", "degree"; empty for plain numbers
  double first;
  double step;
  std::uint32_t quantity;
};

/// What the stored whole numbers mean: value = offset + scale * number.
struct DescribedValues {
  std::string name;  ///< "A-scan"
  std::string unit;  ///< "%" of full scale, "s"; empty for plain numbers
  double scale = 1;
  double offset = 0;
};

/// Quantities and spacings of an array, outermost axis first: rows, columns and, for A-scans,
/// samples.
struct DescribedArray {
  const SampleType* type = nullptr;
  std::vector<DescribedAxis> axes;
  DescribedValues values;
  std::string label;  ///< of the data group
  /// Metres of one-way sound path in a second of flight; 0 where it is not known, or the samples
  /// are not in time.
  double halfSoundSpeed = 0;

  [[nodiscard]] UTDATA_API std::vector<std::uint64_t> Shape() const;
};

/// Throws Error when the group has no samples, or they are not whole numbers of 8 or 16 bits or
/// cannot be read.
[[nodiscard]] UTDATA_API DescribedArray DescribeArray(const DataGroup& group);

/// Hands over the samples of a described array in its order, little-endian, a few megabytes at a
/// time; a cell without samples has those of no amplitude.
UTDATA_API void ForEachPiece(
    const DescribedArray& array,
    const DataGroup& group,
    const std::function<void(std::span<const std::byte> piece, std::uint64_t total)>& take);

// ---- an array as A-scans

enum class ArrayAxis : std::uint8_t { Beam, Row, Column, Sample };
inline constexpr std::size_t arrayAxisQuantity = 4;

/// How an array lies in its file.
struct ArrayLayout {
  /// Quantities, outermost axis first; none is 0.
  std::array<std::uint32_t, arrayAxisQuantity> shape = {};
  std::array<ArrayAxis, arrayAxisQuantity> axes = {};  ///< a permutation, outermost first
  std::uint32_t sampleSize = 2;                        ///< bytes: 1 or 2
  bool bigEndian = false;   ///< samples of two bytes are stored most significant byte first
  std::uint64_t start = 0;  ///< bytes before the array

  [[nodiscard]] UTDATA_API std::uint32_t Quantity(ArrayAxis axis) const;
  /// Bytes of the array; false when they do not fit 64 bits.
  [[nodiscard]] UTDATA_API bool Size(std::uint64_t& bytes) const;
};

/// Called with how many bytes have been gathered, out of how many; what it throws ends the work.
using GatherProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

/// Where the elements of an array come from, in the order of its layout.
class UTDATA_API ArraySource {
 public:
  ArraySource();
  virtual ~ArraySource();
  ArraySource(const ArraySource&) = delete;
  ArraySource& operator=(const ArraySource&) = delete;

  /// Fills `bytes` with the elements from `firstElement` on. What it throws ends the
  /// gathering.
  virtual void Read(std::uint64_t firstElement, std::span<std::byte> bytes) = 0;
};

/// Gathers an array into A-scans: beam after beam, of each the cells in row-major order (row outer,
/// column inner), of each its samples in order, in the machine's byte order. Holds a few tens of
/// megabytes beside them.
/// @param gathered as many bytes as the layout has
UTDATA_API void GatherAScans(ArraySource& source,
                             const ArrayLayout& layout,
                             std::span<std::byte> gathered,
                             const GatherProgress& progress);

}  // namespace utdata
