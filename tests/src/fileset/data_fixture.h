// A file set with data groups, as a host fills it.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/data_host.h"
#include "utdata/fset.h"

namespace utdata::test {

constexpr auto anyBookmark = static_cast<eDataBookmarkType>(fset_AnyId);

constexpr gdata_enumDataClass MasterOf(gdata_enumDataClass dataClass) {
  return static_cast<gdata_enumDataClass>(dataClass | gdata_MultiChannelMaster);
}

/// Ids of an element or another item of channel 4.
constexpr idata_typeId Id(gdata_enumDataClass dataClass,
                          std::uint32_t subChannelId,
                          std::uint32_t gateId) {
  return {.channelId = 4, .subChannelId = subChannelId, .gateId = gateId, .dataClass = dataClass};
}

inline std::vector<CIData*> Content(const CIDataLst& list) { return {list.begin(), list.end()}; }

class DataGroups : public testing::Test {
 protected:
  CIData* Add(const idata_typeId& id) {
    CGDataTypeFDD record = SoundRecord(id);
    return Add(record);
  }
  CIData* Add(CGDataTypeFDD& record, int isNew = 0) {
    return set.fset_AddGData(&record, nullptr, &host.volumes, isNew);
  }
  std::uint32_t Remove(const idata_typeId& id) {
    return set.fset_RemoveGData(fset_All,
                                id.bookmarkType,
                                id.patchId,
                                id.channelId,
                                id.subChannelId,
                                id.gateId,
                                id.dataClass);
  }
  std::uint32_t RemoveAll() {
    return set.fset_RemoveGData(
        fset_All, 0, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId);
  }
  std::vector<CIData*> All() {
    CIDataLst out;
    set.fset_GetIDataLst(&out);
    return Content(out);
  }
  std::vector<CIData*> Masters() {
    CIDataLst out;
    set.fset_GetMSCIDataLst(&out);
    return Content(out);
  }

  DataHost host;
  CFSet& set = host.set;
};

}  // namespace utdata::test
