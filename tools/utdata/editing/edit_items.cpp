#include "editing/edit_items.h"

#include "editing/edit_data.h"

namespace utdata::program {
namespace {

template <class List>
auto ToVector(const List& list) {
  std::vector<typename List::Item*> items;
  for (auto* item : list) items.push_back(item);
  return items;
}

template <class Items>
void Gather(Host& host, CList<typename Items::Record*>& changed) {
  for (typename Items::Item* item : Items::List(host, fset_Modified))
    changed.AddTail(const_cast<typename Items::Record*>(&Items::Of(*item)));
}

}  // namespace

std::vector<CIChan*> ChannelItems::List(Host& host, fset_enumFilters filter) {
  CIChanLst list;
  host.GetFileSet()->fset_GetIChanLst(&list, filter, fset_AnyId);
  return ToVector(list);
}

std::vector<CISubChan*> SubChannelItems::List(Host& host, fset_enumFilters filter) {
  CISubChanLst list;
  host.GetFileSet()->fset_GetISubChanLst(&list, filter, fset_AnyId, fset_AnyId);
  return ToVector(list);
}

std::vector<CIGate*> GateItems::List(Host& host, fset_enumFilters filter) {
  CIGateLst list;
  host.GetFileSet()->fset_GetIGateLst(&list, filter, fset_AnyId, fset_AnyId);
  return ToVector(list);
}

// A gate's record is not set as a whole: an on-line update would also give it to the descriptor
// that changes are told against, and the file would then lack them.
void GateItems::Change(CIGate& gate, const CGGateTypeDescr& record) {
  gate.Start(record.start);
  gate.Width(record.width);
  gate.PLevel(record.positiveLevel);
  gate.NLevel(record.negativeLevel);
  CGGateTypeDescr& working = *gate.igate1_GetInfoRef();
  if (working == record) return;
  working = record;
  gate.igate1_ModifSetStatus(true);
}

std::vector<CIProbe*> ProbeItems::List(Host& host, fset_enumFilters filter) {
  CIProbeLst list;
  host.GetFileSet()->fset_GetIProbeLst(&list, filter, fset_AnyId);
  return ToVector(list);
}

std::vector<CIPatch*> PatchItems::List(Host& host, fset_enumFilters filter) {
  CIPatchLst list;
  host.GetFileSet()->fset_GetIPatchLst(&list, filter, fset_AnyId);
  return ToVector(list);
}

std::vector<CIInfo*> InfoItems::List(Host& host, fset_enumFilters filter) {
  CIInfo* info = host.GetFileSet()->fset_GetIInfo(filter);
  return info ? std::vector{info} : std::vector<CIInfo*>{};
}

std::vector<CISpecMat*> MaterialItems::List(Host& host, fset_enumFilters filter) {
  CISpecMat* material = host.GetSpecimen().spec_SpecMatGet(static_cast<spec_enumFilters>(filter));
  return material ? std::vector{material} : std::vector<CISpecMat*>{};
}

ModifiedGroups GatherModified(Host& host) {
  ModifiedGroups modified = {std::make_unique<CFContTypeFileDescr>(), ModifiedData(host)};
  CFContTypeFileDescr& changes = *modified.groups;
  for (CGDataTypeFDD& record : modified.data) changes.data.AddTail(&record);
  Gather<ChannelItems>(host, changes.channels);
  Gather<SubChannelItems>(host, changes.subChannels);
  Gather<GateItems>(host, changes.gates);
  Gather<ProbeItems>(host, changes.probes);
  Gather<PatchItems>(host, changes.patches);
  Gather<InfoItems>(host, changes.infos);
  Gather<MaterialItems>(host, changes.specimenMaterials);
  return modified;
}

void ClearModified(Host& host) {
  host.GetFileSet()->fset_ClearModified();
  if (CISpecMat* material = host.GetSpecimen().spec_SpecMatGet(spec_Modified))
    material->ismat1_ModifClear();
}

}  // namespace utdata::program
