// The samples of a data group as other programs take them: an array with named axes in base units,
// and a text that tells all of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <vector>

#include "utdata/newscan.h"

namespace utdata::program {

/// One axis; the value at index i is first + i * step.
struct DescribedAxis {
  const char* name;   ///< "row", "column", "sample"
  const char* label;  ///< for the axis of a picture: "time of flight"
  const char* unit;   ///< "m", "s", "degree"; empty for plain numbers
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
  std::string label;          ///< of the data group
  double halfSoundSpeed = 0;  ///< m of depth along the path per s of flight; 0 where it is unknown
                              ///< or the samples are not in time

  [[nodiscard]] std::vector<std::uint64_t> Shape() const;
};

/// Throws Failure when the group's samples are of no kind that an array has, or Error when they
/// cannot be read.
[[nodiscard]] DescribedArray DescribeArray(const DataGroup& group);

/// All that an import needs to make the same data group again.
/// @param holder the file or data set that has the elements
[[nodiscard]] nlohmann::ordered_json DescriptionJson(const DescribedArray& array,
                                                     const DataGroup& group,
                                                     const std::string& holder);

/// Hands over the samples of a described array in its order, little-endian, a few megabytes at a
/// time; a cell without samples has those of no amplitude.
void ForEachPiece(
    const DescribedArray& array,
    const DataGroup& group,
    const std::function<void(std::span<const std::byte> piece, std::uint64_t total)>& take);

}  // namespace utdata::program
