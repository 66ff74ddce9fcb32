// Identifiers of the HDF5 library, closed at the end.
#pragma once

#include <hdf5.h>

namespace utdata::bench {

class Id {
 public:
  Id(hid_t id, herr_t (*close)(hid_t)) : m_id(id), m_close(close) {}
  ~Id() {
    if (m_id >= 0) m_close(m_id);
  }
  Id(const Id&) = delete;
  Id& operator=(const Id&) = delete;
  operator hid_t() const { return m_id; }

 private:
  hid_t m_id;
  herr_t (*m_close)(hid_t);
};

}  // namespace utdata::bench
