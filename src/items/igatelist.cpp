// List of gate items.
#include "utdata/igatelist.h"

IMPLEMENT_DYNAMIC(CIGateLst, CObject)

CIGateLst::CIGateLst() = default;
CIGateLst::~CIGateLst() = default;

CIGate* CIGateLst::GetIGate(fset_enumFilters filter,
                            std::uint32_t gateId,
                            std::uint32_t chanId) const {
  return First(filter, {gateId, chanId});
}

void CIGateLst::GetIGateLst(fset_enumFilters filter,
                            CIGateLst* out,
                            std::uint32_t gateId,
                            std::uint32_t chanId) const {
  Append(filter, *out, {gateId, chanId});
}

void CIGateLst::RemoveIGate(fset_enumFilters filter,
                            CIGateLst* out,
                            std::uint32_t gateId,
                            std::uint32_t chanId) {
  Move(filter, *out, {gateId, chanId});
}
