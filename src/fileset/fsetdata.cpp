// The file set: its data items.
#include <mutex>

#include "utdata/fset.h"

using utdata::queryTimeoutMs;
using utdata::ReaderScope;

std::map<std::uint32_t, std::int32_t> CFSet::mapGateIDOrdering;

void CFSet::FillGateOrdering() {
  static std::once_flag filled;
  std::call_once(filled, [] {
    // Order 18 belongs to no gate.
    mapGateIDOrdering.insert({{0, 1},   {1, 2},    {2, 3},    {3, 4},    {10, 5},   {11, 6},   {20, 7},   {21, 8},
                              {30, 9},  {31, 10},  {120, 11}, {130, 12}, {140, 13}, {100, 14}, {300, 15}, {80, 16},
                              {90, 17}, {110, 19}, {40, 20},  {50, 21},  {60, 22},  {150, 23}});
  });
}

std::uint32_t CFSet::fset_GetIDataLst(CIDataLst* out,
                                      fset_enumFilters filter,
                                      std::uint32_t bookmarkType,
                                      std::uint32_t patchId,
                                      std::uint32_t chanId,
                                      std::uint32_t subChanId,
                                      std::uint32_t gateId,
                                      std::uint32_t dataClass,
                                      unsigned,
                                      unsigned) {
  UTDATA_ASSERT(out != nullptr);
  if (!out) return 0;
  const CIDataLst::Ids ids{bookmarkType, patchId, chanId, subChanId, gateId, dataClass};
  const bool ofMasters = dataClass != fset_AnyId && (dataClass & gdata_MultiChannelMaster);
  if (const ReaderScope reader(m_lock, queryTimeoutMs); reader) {
    if (ofMasters)
      m_masters.Append(filter, *out, ids);
    else
      m_data.Append(filter, *out, ids);
  }
  return static_cast<std::uint32_t>(out->GetCount());
}
