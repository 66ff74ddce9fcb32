#include "arrays/hdf5_handle.h"

#include <algorithm>

namespace utdata::program {

std::string Hdf5Reason() {
  std::string reason = "the HDF5 library does not say why";
  const auto keep = [](unsigned, const H5E_error2_t* error, void* kept) -> herr_t {
    if (error->desc) *static_cast<std::string*>(kept) = error->desc;
    return 0;
  };
  H5Ewalk2(H5E_DEFAULT, H5E_WALK_DOWNWARD, keep, &reason);
  // The message of a failure of the operating system stands among addresses and times.
  constexpr std::string_view opening = "error message = '";
  const std::size_t at = reason.find(opening);
  if (at == std::string::npos) return reason;
  const std::string said = reason.substr(at + opening.size());
  return said.substr(0, said.find('\''));
}

void SilenceHdf5() { H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr); }

bool ForEachBox(const std::vector<hsize_t>& shape,
                std::uint64_t first,
                std::uint64_t count,
                const TakeBox& take) {
  std::vector<hsize_t> start(shape.size());
  std::vector<hsize_t> extent(shape.size());
  while (count > 0) {
    // The largest box that begins here: whole slabs of one axis, all of those inside it.
    std::fill(extent.begin(), extent.end(), 1);
    std::uint64_t elements = 1;
    std::uint64_t rest = first;
    bool aligned = true;
    for (std::size_t axis = shape.size(); axis-- > 0;) {
      start[axis] = rest % shape[axis];
      rest /= shape[axis];
      if (!aligned) continue;
      extent[axis] = std::min<std::uint64_t>(shape[axis] - start[axis], count / elements);
      elements *= extent[axis];
      aligned = extent[axis] == shape[axis];
    }
    if (!take(start.data(), extent.data(), elements)) return false;
    first += elements;
    count -= elements;
  }
  return true;
}

}  // namespace utdata::program
