// After a failed write, as on a full disk, the HDF5 library may crash when it closes or ends:
// writing runs in a child process.
#include <hdf5.h>
#include <hdf5_hl.h>

#include <vector>

#include "arrays/guarded_job.h"
#include "arrays/hdf5_file.h"
#include "arrays/hdf5_handle.h"
#include "terminal/failure.h"

namespace utdata::program {
namespace {

/// A file that is being made; every step throws Failure.
class Hdf5Writer {
 public:
  explicit Hdf5Writer(const NewFile& file) : m_path(file.Path()) {
    SilenceHdf5();
    m_file = Made(H5Fcreate(file.UnfinishedPath().c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT),
                  H5Fclose);
  }

  void MakeSamples(const DescribedArray& array) {
    for (const std::uint64_t quantity : array.Shape()) m_shape.push_back(quantity);
    With(Space(m_shape), [&](hid_t space) {
      m_samples = Made(H5Dcreate2(m_file,
                                  exportedDataSet,
                                  TypeOf(*array.type),
                                  space,
                                  H5P_DEFAULT,
                                  H5P_DEFAULT,
                                  H5P_DEFAULT),
                       H5Dclose);
    });
    m_space = Made(H5Dget_space(m_samples), H5Sclose);
    m_type = TypeOf(*array.type);
    m_sampleSize = array.type->size;
  }

  void Append(std::span<const std::byte> piece) {
    const std::byte* from = piece.data();
    const std::uint64_t count = piece.size() / m_sampleSize;
    const bool written = ForEachBox(
        m_shape,
        m_done,
        count,
        [&](const hsize_t* start, const hsize_t* extent, std::uint64_t elements) {
          const hsize_t length = elements;
          Check(H5Sselect_hyperslab(m_space, H5S_SELECT_SET, start, nullptr, extent, nullptr));
          With(Space({length}), [&](hid_t memory) {
            Check(H5Dwrite(m_samples, m_type, memory, m_space, H5P_DEFAULT, from));
          });
          from += elements * m_sampleSize;
          return true;
        });
    m_done += written ? count : 0;
  }

  void DescribeSamples(const DescribedArray& array, const std::string& description) {
    Text(m_samples, "long_name", array.label + " " + array.values.name);
    Text(m_samples, "units", array.values.unit);
    Number(m_samples, "scale_factor", array.values.scale);
    Number(m_samples, "add_offset", array.values.offset);
    Text(m_samples, "description", description);
  }

  /// One more dimension scale of an axis of the samples.
  void AddScale(unsigned place, const DescribedAxis& axis) {
    std::vector<double> values(axis.quantity);
    for (std::size_t index = 0; index < values.size(); ++index)
      values[index] = axis.first + static_cast<double>(index) * axis.step;
    Hdf5Handle scale;
    With(Space({values.size()}), [&](hid_t space) {
      scale =
          Made(H5Dcreate2(
                   m_file, axis.name, H5T_IEEE_F64LE, space, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT),
               H5Dclose);
    });
    Check(H5Dwrite(scale, H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT, values.data()));
    Text(scale, "long_name", axis.label);
    Text(scale, "units", std::string(axis.unit));
    Number(scale, "first", axis.first);
    Number(scale, "step", axis.step);
    Check(H5DSset_scale(scale, axis.name));
    Check(H5DSattach_scale(m_samples, scale, place));
    CloseNow(scale);
  }

  void LabelAxis(unsigned place, const char* name) { Check(H5DSset_label(m_samples, place, name)); }

  /// The library holds the last of the samples back until their data set is closed.
  void Close() {
    CloseNow(m_space);
    CloseNow(m_samples);
    Check(H5Fflush(m_file, H5F_SCOPE_GLOBAL));
    CloseNow(m_file);
  }

 private:
  /// What is open stays open: closing would write again.
  [[noreturn]] void Fail() {
    const std::string reason = Hdf5Reason();
    for (Hdf5Handle* handle : {&m_space, &m_samples, &m_file}) handle->Forget();
    throw Failure(m_path, "cannot be written", reason);
  }

  void Check(herr_t status) {
    if (status < 0) Fail();
  }

  void CloseNow(Hdf5Handle& handle) {
    if (!handle.CloseNow()) Fail();
  }

  /// Uses an identifier, then closes it.
  template <class Use>
  void With(Hdf5Handle handle, Use use) {
    use(static_cast<hid_t>(handle));
    CloseNow(handle);
  }

  Hdf5Handle Made(hid_t id, Hdf5Handle::Close close) {
    if (id < 0) Fail();
    return {id, close};
  }

  [[nodiscard]] Hdf5Handle Space(const std::vector<hsize_t>& shape) {
    return Made(H5Screate_simple(static_cast<int>(shape.size()), shape.data(), nullptr), H5Sclose);
  }

  static hid_t TypeOf(const SampleType& type) {
    if (type.size == 1) return type.isSigned ? H5T_STD_I8LE : H5T_STD_U8LE;
    return type.isSigned ? H5T_STD_I16LE : H5T_STD_U16LE;
  }

  void Attribute(hid_t object, const char* name, hid_t type, hid_t memoryType, const void* value) {
    With(Made(H5Screate(H5S_SCALAR), H5Sclose), [&](hid_t space) {
      With(Made(H5Acreate2(object, name, type, space, H5P_DEFAULT, H5P_DEFAULT), H5Aclose),
           [&](hid_t attribute) { Check(H5Awrite(attribute, memoryType, value)); });
    });
  }

  void Number(hid_t object, const char* name, double value) {
    Attribute(object, name, H5T_IEEE_F64LE, H5T_NATIVE_DOUBLE, &value);
  }

  void Text(hid_t object, const char* name, const std::string& text) {
    With(Made(H5Tcopy(H5T_C_S1), H5Tclose), [&](hid_t type) {
      Check(H5Tset_size(type, H5T_VARIABLE));
      Check(H5Tset_cset(type, H5T_CSET_UTF8));
      const char* const characters = text.c_str();
      Attribute(object, name, type, type, &characters);
    });
  }

  std::string m_path;
  Hdf5Handle m_file;
  Hdf5Handle m_samples;
  Hdf5Handle m_space;
  hid_t m_type = H5I_INVALID_HID;
  std::vector<hsize_t> m_shape;
  std::uint64_t m_sampleSize = 1;
  std::uint64_t m_done = 0;
};

void WriteAll(const NewFile& file,
              const DescribedArray& array,
              const DataGroup& group,
              const std::string& description,
              const GatherProgress& progress) {
  Hdf5Writer writer(file);
  writer.MakeSamples(array);
  writer.DescribeSamples(array, description);
  for (unsigned place = 0; place < array.axes.size(); ++place) {
    const DescribedAxis& axis = array.axes[place];
    writer.AddScale(place, axis);
    writer.LabelAxis(place, axis.name);
    if (place < 2 || array.halfSoundSpeed == 0) continue;
    const double half = array.halfSoundSpeed;
    writer.AddScale(
        place,
        {"half_path", "half sound path", "m", axis.first * half, axis.step * half, axis.quantity});
  }
  std::uint64_t done = 0;
  ForEachPiece(array, group, [&](std::span<const std::byte> piece, std::uint64_t total) {
    writer.Append(piece);
    done += piece.size();
    progress(done, total);
  });
  writer.Close();
}

}  // namespace

void CheckHasHdf5(const std::string&) {}

void WriteHdf5(const NewFile& file,
               const DescribedArray& array,
               const DataGroup& group,
               const std::string& description,
               const GatherProgress& progress) {
  const auto write = [&](const GatherProgress& told) {
    WriteAll(file, array, group, description, told);
  };
  RunGuarded(
      {file.Path(), "cannot be written", "the HDF5 library", {}, samplesPatience}, write, progress);
}

}  // namespace utdata::program
