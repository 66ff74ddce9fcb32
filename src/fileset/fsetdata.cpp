// The file set: queries of its data items.
#include <algorithm>
#include <utility>
#include <vector>

#include "src/fileset/contents.h"
#include "src/foundation/dataclass.h"

using utdata::QueryScope;
using utdata::queryTimeoutMs;
using utdata::ReaderScope;

namespace {

std::uint32_t CountOf(const CIDataLst& list) { return static_cast<std::uint32_t>(list.GetCount()); }

gdata_enumDataClass ClassOf(const CIData& item) {
  idata_typeId id;
  item.idata1_GetId(id);
  return id.dataClass;
}

std::uint32_t FirstProbeOf(const CIChan& channel) {
  return utdata::ReadWorkingCopy(
      channel, [](const CGChanTypeDescr& working) { return working.firstProbeId; });
}

CIDataLst::Ids IdsOfClass(std::uint32_t dataClass) {
  CIDataLst::Ids ids = utdata::everyDataItem;
  ids.back() = dataClass;
  return ids;
}

}  // namespace

// Display order of gates.

std::map<std::uint32_t, std::int32_t> CFSet::mapGateIDOrdering;

void CFSet::FillGateOrdering() {
  static const bool isFilled = [] {
    // Order 18 belongs to no gate.
    mapGateIDOrdering.insert({{0, 1},    {1, 2},    {2, 3},    {3, 4},   {10, 5},   {11, 6},
                              {20, 7},   {21, 8},   {30, 9},   {31, 10}, {120, 11}, {130, 12},
                              {140, 13}, {100, 14}, {300, 15}, {80, 16}, {90, 17},  {110, 19},
                              {40, 20},  {50, 21},  {60, 22},  {150, 23}});
    return true;
  }();
  static_cast<void>(isFilled);
}

std::int32_t CFSet::GateOrder(std::uint32_t gateId) {
  const auto found = mapGateIDOrdering.find(utdata::GateNumber(gateId));
  return found == mapGateIDOrdering.end() ? 0 : found->second;
}

// Lookups.

CIData* CFSet::fset_GetIData(fset_enumFilters filter,
                             std::uint32_t bookmarkType,
                             std::uint32_t patchId,
                             std::uint32_t chanId,
                             std::uint32_t subChanId,
                             std::uint32_t gateId,
                             std::uint32_t dataClass) {
  const CIDataLst::Ids ids{bookmarkType, patchId, chanId, subChanId, gateId, dataClass};
  Contents& c = *m_contents;
  const auto list = c.ListOf(dataClass);
  const QueryScope query(c, list);
  if (!query) return nullptr;
  CIData* const found = (c.*list).First(filter, ids);
  return found || list == &Contents::data ? found : c.data.First(filter, ids);
}

CIData* CFSet::fset_GetIData(const idata_typeId* id) {
  if (!id) return nullptr;
  return fset_GetIData(fset_All,
                       id->bookmarkType,
                       id->patchId,
                       id->channelId,
                       id->subChannelId,
                       id->gateId,
                       id->dataClass);
}

std::uint32_t CFSet::fset_GetIDataLst(CIDataLst* out) {
  if (!out) return 0;
  Contents& c = *m_contents;
  const ReaderScope reader(c.lock, queryTimeoutMs);
  if (reader) c.data.Append(fset_All, *out, utdata::everyDataItem);
  return CountOf(*out);
}

std::uint32_t CFSet::fset_GetIDataLst(CIDataLst* out, std::uint32_t probeId) {
  if (!out) return 0;
  Contents& c = *m_contents;
  const ReaderScope reader(c.lock, queryTimeoutMs);
  if (!reader) return CountOf(*out);
  utdata::Appending appending(*out);
  for (CIData* item : c.data.Items()) {
    const CGDataTypeFDD* const record = std::as_const(*item).idata1_GetGInfoRef();
    const CIChan* const channel = c.channels.First(fset_All, {record->channelId});
    if (channel && FirstProbeOf(*channel) == probeId) out->AddTail(item);
  }
  appending.Keep();
  return CountOf(*out);
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
  Contents& c = *m_contents;
  const auto list = c.ListOf(dataClass);
  const QueryScope query(c, list);
  if (query)
    (c.*list).Append(filter, *out, {bookmarkType, patchId, chanId, subChanId, gateId, dataClass});
  return CountOf(*out);
}

std::uint32_t CFSet::fset_GetGateSpecificIDataList(CIDataLst* out,
                                                   fset_enumFilters filter,
                                                   std::uint32_t patchId,
                                                   std::uint32_t chanId,
                                                   std::uint32_t subChanId,
                                                   std::uint32_t gateId,
                                                   std::uint32_t dataClass) {
  UTDATA_ASSERT(out != nullptr);
  if (!out) return 0;
  Contents& c = *m_contents;
  const auto listOfClass = c.ListOf(dataClass);
  const QueryScope query(c, listOfClass);
  if (!query) return CountOf(*out);
  const utdata::DataList& list = c.*listOfClass;
  // A gate number is what an ordinary lookup makes of it.
  if (gateId == fset_AnyId || gateId == utdata::GateNumber(gateId))
    list.Append(filter, *out, {bookmark_None, patchId, chanId, subChanId, gateId, dataClass});
  else
    list.Items().GetGateIDataList(filter, out, patchId, chanId, subChanId, gateId, dataClass);
  return CountOf(*out);
}

std::uint32_t CFSet::fset_GetMSCIDataLst(CIDataLst* out) {
  if (!out) return 0;
  Contents& c = *m_contents;
  const ReaderScope reader(c.lock, queryTimeoutMs);
  if (reader) c.masters.Append(fset_All, *out, utdata::everyDataItem);
  return CountOf(*out);
}

std::uint32_t CFSet::fset_GetSpecialIDataList(CIDataLst* out) {
  UTDATA_ASSERT(out != nullptr);
  if (!out) return 0;
  Contents& c = *m_contents;
  const ReaderScope reader(c.lock, queryTimeoutMs);
  if (!reader) return CountOf(*out);
  utdata::Appending appending(*out);
  for (CIData* item : c.data.Items())
    if (const gdata_enumDataClass dataClass = ClassOf(*item);
        !utdata::IsMaster(dataClass) && utdata::IsSpecial(dataClass))
      out->AddTail(item);
  appending.Keep();
  return CountOf(*out);
}

std::uint32_t CFSet::fset_GetSpecificChannelSortedIDataList(std::uint32_t chanId, CIDataLst* out) {
  if (!out) return 0;
  Contents& c = *m_contents;
  const ReaderScope reader(c.lock, queryTimeoutMs);
  if (!reader) return CountOf(*out);
  CIDataLst::Ids ids = utdata::everyDataItem;
  ids[2] = chanId;
  CIDataLst candidates;  // more than the channel's where its id is the wildcard
  c.data.Append(fset_All, candidates, ids);

  using SortKey =
      std::pair<std::uint32_t, std::int32_t>;  // sub-channel id, display order of the gate
  std::vector<std::pair<SortKey, CIData*>> found;
  for (CIData* item : candidates) {
    idata_typeId id;
    item->idata1_GetId(id);
    if (id.channelId == chanId) found.push_back({{id.subChannelId, GateOrder(id.gateId)}, item});
  }
  std::stable_sort(
      found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  out->Reserve(static_cast<std::ptrdiff_t>(found.size()));
  for (const auto& entry : found) out->AddTail(entry.second);
  return CountOf(*out);
}

// Tests.

bool CFSet::Contents::HasDataOfClass(std::initializer_list<gdata_enumDataClass> classes) {
  const QueryScope query(*this, &Contents::data);
  if (!query) return false;
  for (const gdata_enumDataClass dataClass : classes)
    if (data.First(fset_All, IdsOfClass(dataClass))) return true;
  return false;
}

bool CFSet::fset_HasAdvancedViewData() const {
  return m_contents->HasDataOfClass({gdata_AdvancedView});
}

int CFSet::fset_HasAnalogData() const {
  return m_contents->HasDataOfClass({gdata_Analog, gdata_AnalogScaled, gdata_AnalogCounter}) ? 1
                                                                                             : 0;
}

bool CFSet::fset_HasBeamSimulationData() const {
  return m_contents->HasDataOfClass({gdata_BeamSimulation});
}

bool CFSet::fset_HasEddyCurrentData() const {
  return m_contents->HasDataOfClass({gdata_EddyCurrentX});
}
