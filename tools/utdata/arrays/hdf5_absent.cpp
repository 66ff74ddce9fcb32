// Stands in for HDF5 in a build without it.
#include "arrays/hdf5_file.h"
#include "terminal/failure.h"

namespace utdata::program {

void CheckHasHdf5(const std::string& path) {
  throw Failure(path,
                "needs HDF5",
                "this build has none",
                "build with libhdf5-dev installed, or use .npy files");
}

void WriteHdf5(const NewFile& file,
               const DescribedArray&,
               const DataGroup&,
               const std::string&,
               const GatherProgress&) {
  CheckHasHdf5(file.Path());
}

ForeignArray ReadHdf5Header(const std::string& path, const std::string&) {
  CheckHasHdf5(path);
  return {};
}

SampleMemory GatherHdf5(const std::string& path,
                        const std::string&,
                        const ArrayLayout&,
                        const GatherProgress&) {
  CheckHasHdf5(path);
  return {};
}

}  // namespace utdata::program
