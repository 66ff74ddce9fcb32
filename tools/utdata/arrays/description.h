// The description that stands beside an exported array: how it is written, and how an import reads
// it back into a data group's record.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "arrays/foreign_array.h"
#include "utdata/arrays.h"

namespace utdata::program {

inline constexpr const char* descriptionFormat = "utdata array";
inline constexpr int descriptionVersion = 1;
/// Longer texts are not taken for a description.
inline constexpr std::uint64_t largestDescription = std::uint64_t{1} << 20U;  ///< bytes

/// All that an import needs to make the same data group again.
/// @param holder the file or data set that has the elements
[[nodiscard]] nlohmann::ordered_json DescriptionJson(const DescribedArray& array,
                                                     const DataGroup& group,
                                                     const std::string& holder);

/// Reads the description of an array into the record of a new data group and gives the names of the
/// array's axes, first one first; none when there is no description of this program's making.
/// Throws Failure, which begins with who holds it, when it does not fit the array or says what
/// cannot be.
[[nodiscard]] std::vector<ArrayAxis> ReadDescription(const ForeignArray& array,
                                                     CGDataTypeFDD& record);

}  // namespace utdata::program
