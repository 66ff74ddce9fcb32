// What is written: the items' changes, gathered as groups.
#include <algorithm>
#include <type_traits>
#include <unordered_map>

#include "src/container/matching.h"
#include "src/inspection/state.h"
#include "utdata/grouplists.h"

namespace utdata {
namespace {

// The parameters of a data group that its item changes; the rest of its record stays as the file
// has it, however the item read it.
constexpr auto changed = std::make_tuple(&CGDataTypeFDD::probeAngle,
                                         &CGDataTypeFDD::probeSkew,
                                         &CGDataTypeFDD::probeThird,
                                         &CGDataTypeFDD::probeFourth,
                                         &CGDataTypeFDD::partThickness,
                                         &CGDataTypeFDD::soundSpeed,
                                         &CGDataTypeFDD::columnResolution,
                                         &CGDataTypeFDD::columnOffset,
                                         &CGDataTypeFDD::rowResolution,
                                         &CGDataTypeFDD::rowOffset,
                                         &CGDataTypeFDD::sampleOffset,
                                         &CGDataTypeFDD::dataOffset,
                                         &CGDataTypeFDD::inspectionGeometry,
                                         &CGDataTypeFDD::geometryKind,
                                         &CGDataTypeFDD::inspectionRadius,
                                         &CGDataTypeFDD::probeSeparation,
                                         &CGDataTypeFDD::tofdValue);

CGDataTypeFDD Changed(const DataRow& row) {
  CGDataTypeFDD record = *row.stored;
  const CGDataTypeFDD& now = *row.item->idata1_GetGInfoRef();
  std::apply(
      [&](const auto... member) {
        ((row.taken.*member != now.*member ? static_cast<void>(record.*member = now.*member)
                                           : static_cast<void>(0)),
         ...);
      },
      changed);
  return record;
}

}  // namespace

Changes::Changes(InspectionState& inspection) {
  const auto isUnsaved = [&](const void* item) { return inspection.saved.count(item) == 0; };
  for (const DataRow& row : inspection.rows) {
    const bool isNew = row.added && row.isListed && isUnsaved(row.item);
    if (!isNew && row.item->idata1_ModifGetStatus() == 0) continue;
    groups.data.AddTail(&records.emplace_back(Changed(row)));
    if (isNew) newItems.push_back(row.item);
  }
  /// The modified items of a type, and the new ones that stand in no file yet.
  const auto gather = [&](auto& out, const auto& listOf, auto recordOf) {
    for (const fset_enumFilters filter : {fset_New, fset_Modified})
      for (auto* item : listOf(filter)) {
        if (filter == fset_New && !isUnsaved(item)) continue;
        auto* record = recordOf(*item);
        if (std::find(out.begin(), out.end(), record) != out.end()) continue;
        out.AddTail(record);
        if (filter == fset_New) newItems.push_back(item);
      }
  };
  CFSet& set = inspection.set;
  gather(
      groups.channels,
      [&](fset_enumFilters filter) {
        CIChanLst list;
        set.fset_GetIChanLst(&list, filter, fset_AnyId);
        return std::vector<CIChan*>(list.begin(), list.end());
      },
      [](CIChan& item) { return item.ichan1_GetInfoRef(); });
  gather(
      groups.subChannels,
      [&](fset_enumFilters filter) {
        CISubChanLst list;
        set.fset_GetISubChanLst(&list, filter, fset_AnyId, fset_AnyId);
        return std::vector<CISubChan*>(list.begin(), list.end());
      },
      [](CISubChan& item) { return item.ischa1_GetInfoRef(); });
  gather(
      groups.gates,
      [&](fset_enumFilters filter) {
        CIGateLst list;
        set.fset_GetIGateLst(&list, filter, fset_AnyId, fset_AnyId);
        return std::vector<CIGate*>(list.begin(), list.end());
      },
      [](CIGate& item) { return item.igate1_GetInfoRef(); });
  gather(
      groups.probes,
      [&](fset_enumFilters filter) {
        CIProbeLst list;
        set.fset_GetIProbeLst(&list, filter, fset_AnyId);
        return std::vector<CIProbe*>(list.begin(), list.end());
      },
      [](CIProbe& item) { return item.iprob1_GetInfoRef(); });
  gather(
      groups.patches,
      [&](fset_enumFilters filter) {
        CIPatchLst list;
        set.fset_GetIPatchLst(&list, filter, fset_AnyId);
        return std::vector<CIPatch*>(list.begin(), list.end());
      },
      [](CIPatch& item) { return item.ipatch1_GetInfoRef(); });
  gather(
      groups.infos,
      [&](fset_enumFilters filter) {
        CIInfo* info = set.fset_GetIInfo(filter);
        return info ? std::vector{info} : std::vector<CIInfo*>();
      },
      [](CIInfo& item) { return item.iinfo1_GetInfoRef(); });
  if (CISpecMat* material = inspection.specimen.spec_SpecMatGet(spec_Modified))
    groups.specimenMaterials.AddTail(material->ismat1_GetInfoRef());
  VisitGroupLists(
      groups, [this](std::string_view, const auto& list) { isEmpty = isEmpty && list.IsEmpty(); });
}

void MergeInto(CFContTypeFileDescr& copy,
               const CFContTypeFileDescr& loaded,
               const CFContTypeFileDescr& changes) {
  using namespace container;
  ForEachType([&]<class Descriptor>(const GroupType<Descriptor>& type) {
    const CList<Descriptor*>& before = loaded.*type.list;
    std::unordered_map<const Descriptor*, Descriptor*> replaced;
    const Matching<Descriptor> matching(before);
    for (Descriptor* change : changes.*type.list) replaced[matching.Find(*change)] = change;
    for (Descriptor* descriptor : before) {
      const auto found = replaced.find(descriptor);
      (copy.*type.list).AddTail(found == replaced.end() ? descriptor : found->second);
    }
    for (Descriptor* change : changes.*type.list)
      if (!matching.Find(*change)) (copy.*type.list).AddTail(change);
  });
  for (stDefectExtern* defect : loaded.defects) copy.defects.AddTail(defect);
}

}  // namespace utdata
