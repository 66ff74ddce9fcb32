// Data item, as far as the lists and the file set need one: identity, status, and its place under a multi-channel master.
#pragma once

#include <cstdint>

#include "utdata/enum.h"
#include "utdata/item.h"

/// One data group of a file set.
class UTDATA_API CIData : public utdata::PlacedItem {
 public:
  virtual void idata1_GetId(idata_typeId& id) const = 0;
  [[nodiscard]] virtual int idata1_ModifGetStatus() const = 0;
  virtual void idata1_ModifClear() = 0;
  [[nodiscard]] virtual int idata1_NewGetStatus() const = 0;
  virtual void idata1_NewClear() = 0;

  /// Whether the item is one of the sub-channels that a master gathers.
  [[nodiscard]] virtual bool idata1_IsMultiChannelElement() const = 0;
  /// The master, which is the item itself for a master; null for an item without.
  [[nodiscard]] virtual CIData* idata1_SubChannelMaster() const = 0;
  /// Takes an element out of this master's list. Always true.
  virtual bool idata1_SubChannelRemove(CIData* element) = 0;
};
