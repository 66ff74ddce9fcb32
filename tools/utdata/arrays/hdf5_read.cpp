// The HDF5 library does not survive every damaged file: whatever reads one runs in a child process.
#include <hdf5.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <utility>
#include <vector>

#include "arrays/description.h"
#include "arrays/guarded_job.h"
#include "arrays/hdf5_file.h"
#include "arrays/hdf5_handle.h"
#include "terminal/failure.h"

namespace utdata::program {
namespace {

constexpr const char* cannotBeImported = "cannot be imported";
constexpr std::size_t mostHdf5Axes = H5S_MAX_RANK;

/// What the child finds, as both processes see it.
struct Header {
  std::uint64_t axes;
  std::array<std::uint64_t, mostHdf5Axes> shape;
  std::uint64_t sampleSize;
  bool isSigned;
  std::uint64_t descriptionSize;
  std::array<char, largestDescription> description;
};

GuardedJob Reading(const std::string& path, double patience) {
  return {path, "cannot be read", "the HDF5 library", "restore it from a copy", patience};
}

/// An open data set; every step throws Failure.
class Hdf5Reader final : public ArraySource {
 public:
  Hdf5Reader(const std::string& path, const std::string& dataSet)
      : m_path(path), m_name(path + ":" + dataSet) {
    SilenceHdf5();
    m_file = {H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT), H5Fclose};
    if (m_file < 0) throw Failure(path, "cannot be read", Hdf5Reason());
    const Hdf5Handle access(H5Pcreate(H5P_DATASET_ACCESS), H5Pclose);
    H5Pset_chunk_cache(access, 12421, std::size_t{64} << 20U, 1);
    m_dataSet = {H5Dopen2(m_file, dataSet.c_str(), access), H5Dclose};
    if (m_dataSet < 0) throw Failure(m_name, "cannot be read", "the file has no such data set");
    m_space = {H5Dget_space(m_dataSet), H5Sclose};
    m_type = {H5Dget_type(m_dataSet), H5Tclose};
    const int axes = H5Sget_simple_extent_ndims(m_space);
    if (axes < 0 || m_type < 0 || H5Sget_simple_extent_type(m_space) == H5S_NULL)
      Refuse("its shape or type is not known");
    m_shape.resize(static_cast<std::size_t>(axes));
    if (axes > 0 && H5Sget_simple_extent_dims(m_space, m_shape.data(), nullptr) < 0)
      Refuse(Hdf5Reason());
  }

  /// Refuses what no import takes, before memory is asked for.
  void Check() const {
    const Hdf5Handle creation(H5Dget_create_plist(m_dataSet), H5Pclose);
    if (creation < 0) Refuse(Hdf5Reason());
    if (H5Pget_layout(creation) == H5D_VIRTUAL || H5Pget_external_count(creation) != 0)
      Refuse("its samples lie in other files");
    const bool isWhole =
        H5Tget_class(m_type) == H5T_INTEGER && H5Tget_precision(m_type) == 8 * H5Tget_size(m_type);
    if (!isWhole || H5Tget_size(m_type) > 2)
      throw Failure(m_name,
                    cannotBeImported,
                    "its elements are " + Kind(),
                    "convert them to whole numbers of 8 or 16 bits first");
    CheckExtent();
  }

  void Tell(Header& header) const {
    header.axes = m_shape.size();
    std::copy(m_shape.begin(), m_shape.end(), header.shape.begin());
    header.sampleSize = H5Tget_size(m_type);
    header.isSigned = H5Tget_sign(m_type) == H5T_SGN_2;
    const std::string description = Description();
    header.descriptionSize = description.size();
    std::copy(description.begin(), description.end(), header.description.begin());
  }

  void Read(std::uint64_t firstElement, std::span<std::byte> bytes) override {
    const std::uint64_t size = H5Tget_size(m_type);
    const Hdf5Handle type(H5Tget_native_type(m_type, H5T_DIR_ASCEND), H5Tclose);
    std::byte* to = bytes.data();
    const bool read =
        ForEachBox(m_shape,
                   firstElement,
                   bytes.size() / size,
                   [&](const hsize_t* start, const hsize_t* extent, std::uint64_t elements) {
                     const hsize_t length = elements;
                     const Hdf5Handle memory(H5Screate_simple(1, &length, nullptr), H5Sclose);
                     std::byte* const at = std::exchange(to, to + elements * size);
                     return H5Sselect_hyperslab(
                                m_space, H5S_SELECT_SET, start, nullptr, extent, nullptr) >= 0 &&
                            H5Dread(m_dataSet, type, memory, m_space, H5P_DEFAULT, at) >= 0;
                   });
    if (!read) throw Failure(m_name, "cannot be read", Hdf5Reason());
  }

  /// The file may have been changed since its header was read.
  void CheckIs(const ArrayLayout& layout) const {
    std::uint64_t elements = layout.sampleSize;
    for (const std::uint64_t quantity : m_shape) elements *= quantity;
    std::uint64_t expected = 0;
    if (!layout.Size(expected) || elements != expected || H5Tget_size(m_type) != layout.sampleSize)
      Refuse("the file has changed");
  }

 private:
  [[noreturn]] void Refuse(const std::string& why) const {
    throw Failure(m_name, cannotBeImported, why);
  }

  [[nodiscard]] std::string Kind() const {
    const std::string bits = std::to_string(8 * H5Tget_size(m_type)) + "-bit ";
    switch (H5Tget_class(m_type)) {
      case H5T_INTEGER:
        return bits + "integers";
      case H5T_FLOAT:
        return bits + "floating-point numbers";
      case H5T_STRING:
        return "texts";
      case H5T_COMPOUND:
        return "records of fields";
      default:
        return "no numbers";
    }
  }

  /// A few bytes may claim an array of any size; deflate makes samples at most 1032 times smaller.
  void CheckExtent() const {
    constexpr std::uint64_t mostCompressed = 1100;
    std::uint64_t size = H5Tget_size(m_type);
    bool fits = true;
    for (const std::uint64_t quantity : m_shape)
      fits = fits && !__builtin_mul_overflow(size, quantity, &size);
    const std::uint64_t stored = H5Dget_storage_size(m_dataSet);
    if (fits && size / mostCompressed <= stored && (size == 0 || stored > 0)) return;
    Refuse("its shape claims " + (fits ? std::to_string(size) : "more than 18446744073709551615") +
           " bytes, and " + std::to_string(stored) + " are stored");
  }

  /// The text that an export left; empty when there is none.
  [[nodiscard]] std::string Description() const {
    const Hdf5Handle attribute(H5Aopen(m_dataSet, "description", H5P_DEFAULT), H5Aclose);
    if (attribute < 0) return {};
    const Hdf5Handle type(H5Aget_type(attribute), H5Tclose);
    const Hdf5Handle space(H5Aget_space(attribute), H5Sclose);
    if (H5Tis_variable_str(type) <= 0 || H5Sget_simple_extent_npoints(space) != 1) return {};
    char* text = nullptr;
    if (H5Aread(attribute, type, &text) < 0 || !text) return {};
    const std::size_t length = strnlen(text, largestDescription + 1);
    std::string description(text, length > largestDescription ? 0 : length);
    H5free_memory(text);
    return description;
  }

  std::string m_path;
  std::string m_name;
  Hdf5Handle m_file;
  Hdf5Handle m_dataSet;
  Hdf5Handle m_space;
  Hdf5Handle m_type;
  std::vector<hsize_t> m_shape;
};

}  // namespace

ForeignArray ReadHdf5Header(const std::string& path, const std::string& dataSet) {
  const SharedMemory memory(sizeof(Header));
  Header& header = *new (memory.Bytes().data()) Header;
  const auto read = [&](const GatherProgress&) {
    const Hdf5Reader reader(path, dataSet);
    reader.Check();
    reader.Tell(header);
  };
  RunGuarded(Reading(path, headerPatience), read, [](std::uint64_t, std::uint64_t) {});
  ForeignArray array;
  array.type = FindSampleType(header.sampleSize, header.isSigned);
  array.shape.assign(header.shape.begin(),
                     header.shape.begin() + static_cast<std::ptrdiff_t>(header.axes));
  array.description.assign(header.description.data(), header.descriptionSize);
  array.describedBy = path + ":" + dataSet;
  return array;
}

SampleMemory GatherHdf5(const std::string& path,
                        const std::string& dataSet,
                        const ArrayLayout& layout,
                        const GatherProgress& progress) {
  std::uint64_t size = 0;
  if (!layout.Size(size)) throw std::bad_alloc();
  auto memory = std::make_shared<SharedMemory>(size);
  const auto read = [&](const GatherProgress& told) {
    Hdf5Reader reader(path, dataSet);
    reader.Check();
    reader.CheckIs(layout);
    GatherAScans(reader, layout, memory->Bytes(), told);
  };
  RunGuarded(Reading(path, samplesPatience), read, progress);
  return {memory->Bytes().data(), [memory](std::byte*) {}};
}

}  // namespace utdata::program
