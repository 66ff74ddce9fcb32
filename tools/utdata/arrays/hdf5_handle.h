// Owned identifiers of the HDF5 library, and runs of a data set's elements.
#pragma once

#include <hdf5.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace utdata::program {

/// An identifier that is closed with its owner. Used by one thread.
class Hdf5Handle {
 public:
  using Close = herr_t (*)(hid_t);

  Hdf5Handle() = default;
  Hdf5Handle(hid_t id, Close close) : m_id(id), m_close(close) {}
  Hdf5Handle(Hdf5Handle&& other) noexcept
      : m_id(std::exchange(other.m_id, H5I_INVALID_HID)), m_close(other.m_close) {}
  Hdf5Handle& operator=(Hdf5Handle&& other) noexcept {
    std::swap(m_id, other.m_id);
    std::swap(m_close, other.m_close);
    return *this;
  }
  ~Hdf5Handle() {
    if (m_id >= 0) m_close(m_id);
  }

  operator hid_t() const { return m_id; }
  /// Closes it. @return whether that succeeded
  [[nodiscard]] bool CloseNow() { return m_close(std::exchange(m_id, H5I_INVALID_HID)) >= 0; }
  /// Leaves it open for as long as the process runs.
  void Forget() { m_id = H5I_INVALID_HID; }

 private:
  hid_t m_id = H5I_INVALID_HID;
  Close m_close = nullptr;
};

/// Seconds of processor time that the library may take for a step, such as the largest chunk of
/// compressed samples; what it takes longer for is damaged.
inline constexpr double headerPatience = 5;
inline constexpr double samplesPatience = 60;

/// What the library said last on this thread, from where the fault lies: "unable to open file".
[[nodiscard]] std::string Hdf5Reason();

/// Keeps the library from printing its errors.
void SilenceHdf5();

/// Takes a box of elements: where it begins, its extents, and how many there are; false stops.
using TakeBox =
    std::function<bool(const hsize_t* start, const hsize_t* extent, std::uint64_t elements)>;

/// Calls `take` for each box of elements that together make up `count` of them from `first` on, in
/// their order. @return what the last call returned
/// @param shape quantities, outermost axis first
bool ForEachBox(const std::vector<hsize_t>& shape,
                std::uint64_t first,
                std::uint64_t count,
                const TakeBox& take);

}  // namespace utdata::program
