// Data sets of HDF5 files. A program that was built without HDF5 refuses them in plain words.
#pragma once

#include <string>

#include "arrays/foreign_array.h"
#include "terminal/new_file.h"
#include "utdata/arrays.h"

namespace utdata::program {

/// Throws Failure, which begins with `path`, when this program was built without HDF5.
void CheckHasHdf5(const std::string& path);

/// Writes the samples of a data group and its axes, as dimension scales, into the unfinished form
/// of a new file.
/// @param description all of it as a text, kept beside the samples
/// @param progress    called with how many bytes of samples are written
void WriteHdf5(const NewFile& file,
               const DescribedArray& array,
               const DataGroup& group,
               const std::string& description,
               const GatherProgress& progress);

/// The data set that an export makes.
inline constexpr const char* exportedDataSet = "/samples";

/// The shape and type of a data set and, when this program wrote it, all else. Throws Failure.
[[nodiscard]] ForeignArray ReadHdf5Header(const std::string& path, const std::string& dataSet);

/// Gathers the A-scans of a data set. Throws Failure.
[[nodiscard]] SampleMemory GatherHdf5(const std::string& path,
                                      const std::string& dataSet,
                                      const ArrayLayout& layout,
                                      const GatherProgress& progress);

}  // namespace utdata::program
