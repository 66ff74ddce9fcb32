// List of sub-channel items.
#include "utdata/ischanlst.h"

IMPLEMENT_DYNAMIC(CISubChanLst, CObject)

CISubChanLst::CISubChanLst() = default;
CISubChanLst::~CISubChanLst() = default;

void CISubChanLst::Dump(CDumpContext& context) const { context << "A CISubChanLst object\n"; }

CISubChan* CISubChanLst::GetISubChan(fset_enumFilters filter,
                                     std::uint32_t subChanId,
                                     std::uint32_t chanId) const {
  return First(filter, {subChanId, chanId});
}

void CISubChanLst::GetISubChanLst(fset_enumFilters filter,
                                  CISubChanLst* out,
                                  std::uint32_t subChanId,
                                  std::uint32_t chanId) const {
  Append(filter, *out, {subChanId, chanId});
}

void CISubChanLst::RemoveISubChan(fset_enumFilters filter,
                                  CISubChanLst* out,
                                  std::uint32_t subChanId,
                                  std::uint32_t chanId) {
  Move(filter, *out, {subChanId, chanId});
}
