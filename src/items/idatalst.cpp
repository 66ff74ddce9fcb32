// List of data items.
#include "utdata/idatalst.h"

#include "src/items/itemlookup.h"

namespace {

constexpr auto rulesByGateNumber = [] {
  auto rules = utdata::rulesOf<CIData>;
  for (utdata::IdRule& rule : rules)
    if (rule == utdata::IdRule::SameGate) rule = utdata::IdRule::GateNumber;
  return rules;
}();

}  // namespace

IMPLEMENT_DYNAMIC(CIDataLst, CObject)

CIDataLst::CIDataLst() = default;
CIDataLst::~CIDataLst() = default;

void CIDataLst::Dump(CDumpContext& context) const { context << "A CIDataLst object\n"; }

CIData* CIDataLst::GetIData(fset_enumFilters filter,
                            std::uint32_t bookmark,
                            std::uint32_t patchId,
                            std::uint32_t chanId,
                            std::uint32_t subChanId,
                            std::uint32_t gateId,
                            std::uint32_t dataClass) const {
  return First(filter, {bookmark, patchId, chanId, subChanId, gateId, dataClass});
}

void CIDataLst::GetIDataLst(fset_enumFilters filter,
                            CIDataLst* out,
                            std::uint32_t bookmark,
                            std::uint32_t patchId,
                            std::uint32_t chanId,
                            std::uint32_t subChanId,
                            std::uint32_t gateId,
                            std::uint32_t dataClass) const {
  Append(filter, *out, {bookmark, patchId, chanId, subChanId, gateId, dataClass});
}

void CIDataLst::RemoveIData(fset_enumFilters filter,
                            CIDataLst* out,
                            std::uint32_t bookmark,
                            std::uint32_t patchId,
                            std::uint32_t chanId,
                            std::uint32_t subChanId,
                            std::uint32_t gateId,
                            std::uint32_t dataClass) {
  Move(filter, *out, {bookmark, patchId, chanId, subChanId, gateId, dataClass});
}

void CIDataLst::GetGateIDataList(fset_enumFilters filter,
                                 CIDataLst* out,
                                 std::uint32_t patchId,
                                 std::uint32_t chanId,
                                 std::uint32_t subChanId,
                                 std::uint32_t gateId,
                                 std::uint32_t dataClass) const {
  const Ids ids{bookmark_None, patchId, chanId, subChanId, gateId, dataClass};
  utdata::Appending appending(*out);
  utdata::Walk(*this, filter, ids, rulesByGateNumber, [out](POSITION, CIData* item) {
    out->AddTail(item);
    return true;
  });
  appending.Keep();
}
