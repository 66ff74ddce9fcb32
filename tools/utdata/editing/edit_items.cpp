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

}  // namespace

std::vector<CIChan*> ChannelItems::List(Inspection& inspection, fset_enumFilters filter) {
  CIChanLst list;
  inspection.FileSet().fset_GetIChanLst(&list, filter, fset_AnyId);
  return ToVector(list);
}

std::vector<CISubChan*> SubChannelItems::List(Inspection& inspection, fset_enumFilters filter) {
  CISubChanLst list;
  inspection.FileSet().fset_GetISubChanLst(&list, filter, fset_AnyId, fset_AnyId);
  return ToVector(list);
}

std::vector<CIGate*> GateItems::List(Inspection& inspection, fset_enumFilters filter) {
  CIGateLst list;
  inspection.FileSet().fset_GetIGateLst(&list, filter, fset_AnyId, fset_AnyId);
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

std::vector<CIProbe*> ProbeItems::List(Inspection& inspection, fset_enumFilters filter) {
  CIProbeLst list;
  inspection.FileSet().fset_GetIProbeLst(&list, filter, fset_AnyId);
  return ToVector(list);
}

std::vector<CIPatch*> PatchItems::List(Inspection& inspection, fset_enumFilters filter) {
  CIPatchLst list;
  inspection.FileSet().fset_GetIPatchLst(&list, filter, fset_AnyId);
  return ToVector(list);
}

std::vector<CIInfo*> InfoItems::List(Inspection& inspection, fset_enumFilters filter) {
  CIInfo* info = inspection.FileSet().fset_GetIInfo(filter);
  return info ? std::vector{info} : std::vector<CIInfo*>{};
}

std::vector<CISpecMat*> MaterialItems::List(Inspection& inspection, fset_enumFilters filter) {
  CISpecMat* material =
      inspection.Specimen().spec_SpecMatGet(static_cast<spec_enumFilters>(filter));
  return material ? std::vector{material} : std::vector<CISpecMat*>{};
}

}  // namespace utdata::program
