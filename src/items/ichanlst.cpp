// List of channel items.
#include "utdata/ichanlst.h"

IMPLEMENT_DYNAMIC(CIChanLst, CObject)

CIChanLst::CIChanLst() = default;
CIChanLst::~CIChanLst() = default;

void CIChanLst::Dump(CDumpContext& context) const { context << "A CIChanLst object\n"; }

CIChan* CIChanLst::GetIChan(fset_enumFilters filter, std::uint32_t chanId) const {
  return First(filter, {chanId});
}

void CIChanLst::GetIChanLst(fset_enumFilters filter, CIChanLst* out, std::uint32_t chanId) const {
  Append(filter, *out, {chanId});
}

void CIChanLst::RemoveIChan(fset_enumFilters filter, CIChanLst* out, std::uint32_t chanId) {
  Move(filter, *out, {chanId});
}
