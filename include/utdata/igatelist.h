// List of gate items.
#pragma once

#include "utdata/igate.h"
#include "utdata/itemlist.h"

/// utdata/itemlist.h documents the lookups. Gate ids are compared exactly, not by gate number.
class UTDATA_API CIGateLst : public utdata::ItemList<CIGate, 2> {
  DECLARE_DYNAMIC(CIGateLst)

 public:
  CIGateLst();
  ~CIGateLst() override;
  [[nodiscard]] CIGate* GetIGate(fset_enumFilters filter,
                                 std::uint32_t gateId,
                                 std::uint32_t chanId) const;
  void GetIGateLst(fset_enumFilters filter,
                   CIGateLst* out,
                   std::uint32_t gateId,
                   std::uint32_t chanId) const;
  void RemoveIGate(fset_enumFilters filter,
                   CIGateLst* out,
                   std::uint32_t gateId,
                   std::uint32_t chanId);
};
