// An array that another program wrote: headerless, of NumPy, or a data set of an HDF5 file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "utdata/arrays.h"
#include "utdata/newscan.h"

namespace utdata::program {

enum class ArrayFormat : std::uint8_t { Raw, Npy, Hdf5 };

/// The array that a command line names: FILE, FILE.npy or FILE.h5:/path.
struct ArrayName {
  explicit ArrayName(std::string given);

  std::string text;  ///< as given
  ArrayFormat format = ArrayFormat::Raw;
  std::string file;
  std::string dataSet;  ///< of an HDF5 file, from its root; empty for the others
};

/// What the header of such an array says.
struct ForeignArray {
  const SampleType* type = nullptr;
  bool bigEndian = false;
  bool fortranOrder = false;         ///< the first axis is the innermost in the file
  std::uint64_t start = 0;           ///< bytes before its first element
  std::vector<std::uint64_t> shape;  ///< first axis first
  std::string description;           ///< that an export wrote beside it; empty when there is none
  std::string describedBy;           ///< who holds the description, for failures
};

/// Where the description of an .npy file stands: beside it, with the extension .json.
[[nodiscard]] std::string DescriptionPath(const std::string& path);

/// Reads the header of an .npy or HDF5 array. REQUIRES: not a headerless one. Throws Failure.
[[nodiscard]] ForeignArray ReadHeader(const ArrayName& name);

/// How the array lies in its file, axes that it lacks with a quantity of 1. Throws Failure, which
/// begins with `name`, when a quantity does not fit.
/// @param axes the names of the axes, first one first; as many as the shape has
[[nodiscard]] ArrayLayout LayoutOf(const ForeignArray& array,
                                   const std::vector<ArrayAxis>& axes,
                                   const std::string& name);

/// Memory that is given back in its own way.
using SampleMemory = std::unique_ptr<std::byte[], std::function<void(std::byte*)>>;

/// Gathers the A-scans of an array into memory of its own. Throws Failure.
[[nodiscard]] SampleMemory GatherArray(const ArrayName& name,
                                       const ArrayLayout& layout,
                                       const GatherProgress& progress);

}  // namespace utdata::program
