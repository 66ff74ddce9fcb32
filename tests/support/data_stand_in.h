// A data item that is nothing but its ids, its flags and its place under a master.
#pragma once

#include <cstdint>

#include "utdata/idatalst.h"

namespace utdata::test {

class DataStandIn : public CIData {
 public:
  explicit DataStandIn(const idata_typeId& id, int* destroyed = nullptr) : m_id(id), m_destroyed(destroyed) {}
  ~DataStandIn() override {
    if (m_destroyed) ++*m_destroyed;
  }

  void idata1_GetId(idata_typeId& id) const override { id = m_id; }
  [[nodiscard]] int idata1_ModifGetStatus() const override { return modified; }
  void idata1_ModifClear() override { modified = 0; }
  [[nodiscard]] int idata1_NewGetStatus() const override { return isNew; }
  void idata1_NewClear() override { isNew = 0; }
  [[nodiscard]] bool idata1_IsMultiChannelElement() const override { return master && master != this; }
  [[nodiscard]] CIData* idata1_SubChannelMaster() const override { return master; }
  bool idata1_SubChannelRemove(CIData* element) override {
    elements.RemoveAt(elements.Find(element));
    return true;
  }

  /// Changes the ids as an item's own operations do.
  void SetId(const idata_typeId& id) {
    const HomeScope home(*this);
    m_id = id;
  }

  int modified = 0;
  int isNew = 0;
  CIData* master = nullptr;
  CIDataLst elements;

 private:
  idata_typeId m_id;
  int* m_destroyed;
};

}  // namespace utdata::test
