// List of probe items.
#include "utdata/iprobelst.h"

IMPLEMENT_DYNAMIC(CIProbeLst, CObject)

CIProbeLst::CIProbeLst() = default;
CIProbeLst::~CIProbeLst() = default;

void CIProbeLst::Dump(CDumpContext& context) const { context << "A CIProbeLst object\n"; }

CIProbe* CIProbeLst::GetIProbe(fset_enumFilters filter, std::uint32_t probeId) const {
  return First(filter, {probeId});
}

void CIProbeLst::GetIProbeLst(fset_enumFilters filter,
                              CIProbeLst* out,
                              std::uint32_t probeId) const {
  Append(filter, *out, {probeId});
}

void CIProbeLst::RemoveIProbe(fset_enumFilters filter, CIProbeLst* out, std::uint32_t probeId) {
  Move(filter, *out, {probeId});
}
