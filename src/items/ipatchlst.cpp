// List of patch items.
#include "utdata/ipatchlst.h"

IMPLEMENT_DYNAMIC(CIPatchLst, CObject)

CIPatchLst::CIPatchLst() = default;
CIPatchLst::~CIPatchLst() = default;

void CIPatchLst::Dump(CDumpContext& context) const { context << "A CIPatchLst object\n"; }

CIPatch* CIPatchLst::GetIPatch(fset_enumFilters filter, std::uint32_t patchId) const {
  return First(filter, {patchId});
}

void CIPatchLst::GetIPatchLst(fset_enumFilters filter,
                              CIPatchLst* out,
                              std::uint32_t patchId) const {
  Append(filter, *out, {patchId});
}

void CIPatchLst::RemoveIPatch(fset_enumFilters filter, CIPatchLst* out, std::uint32_t patchId) {
  Move(filter, *out, {patchId});
}
