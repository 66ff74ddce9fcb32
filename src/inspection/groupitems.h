// How the items of each group type that has some are listed, read and changed.
#pragma once

#include <vector>

#include "src/inspection/state.h"

namespace utdata {

template <class Descriptor>
struct GroupItems;

/// The items of a list of the file set.
template <class List, class Get>
auto ItemsIn(Get&& get) {
  List list;
  get(&list);
  return std::vector<typename List::Item*>(list.begin(), list.end());
}

template <>
struct GroupItems<CGChanTypeDescr> {
  static auto List(InspectionState& inspection, fset_enumFilters filter) {
    return ItemsIn<CIChanLst>(
        [&](auto* list) { inspection.set.fset_GetIChanLst(list, filter, fset_AnyId); });
  }
  static CGChanTypeDescr* Record(const CIChan& item) { return item.ichan1_GetInfoRef(); }
  static void Change(CIChan& item, const CGChanTypeDescr& record) {
    item.ichan1_SetInfoCopy(&record);
  }
};

template <>
struct GroupItems<CGSubchanTypeDescr> {
  static auto List(InspectionState& inspection, fset_enumFilters filter) {
    return ItemsIn<CISubChanLst>([&](auto* list) {
      inspection.set.fset_GetISubChanLst(list, filter, fset_AnyId, fset_AnyId);
    });
  }
  static CGSubchanTypeDescr* Record(const CISubChan& item) { return item.ischa1_GetInfoRef(); }
  static void Change(CISubChan& item, const CGSubchanTypeDescr& record) {
    item.ischa1_SetInfoCopy(&record);
  }
};

template <>
struct GroupItems<CGGateTypeDescr> {
  static auto List(InspectionState& inspection, fset_enumFilters filter) {
    return ItemsIn<CIGateLst>(
        [&](auto* list) { inspection.set.fset_GetIGateLst(list, filter, fset_AnyId, fset_AnyId); });
  }
  static CGGateTypeDescr* Record(const CIGate& item) { return item.igate1_GetInfoRef(); }
  /// A gate's record is not set as a whole: an on-line update would also give it to the descriptor
  /// that changes are found against, and the file would then lack them.
  static void Change(CIGate& item, const CGGateTypeDescr& record) {
    item.Start(record.start);
    item.Width(record.width);
    item.PLevel(record.positiveLevel);
    item.NLevel(record.negativeLevel);
    CGGateTypeDescr& working = *Record(item);
    if (working == record) return;
    working = record;
    item.igate1_ModifSetStatus(true);
  }
};

template <>
struct GroupItems<CGProbeTypeDescr> {
  static auto List(InspectionState& inspection, fset_enumFilters filter) {
    return ItemsIn<CIProbeLst>(
        [&](auto* list) { inspection.set.fset_GetIProbeLst(list, filter, fset_AnyId); });
  }
  static CGProbeTypeDescr* Record(const CIProbe& item) { return item.iprob1_GetInfoRef(); }
  static void Change(CIProbe& item, const CGProbeTypeDescr& record) {
    item.iprob1_SetInfoCopy(&record);
  }
};

template <>
struct GroupItems<CGPatchTypeDescr> {
  static auto List(InspectionState& inspection, fset_enumFilters filter) {
    return ItemsIn<CIPatchLst>(
        [&](auto* list) { inspection.set.fset_GetIPatchLst(list, filter, fset_AnyId); });
  }
  static CGPatchTypeDescr* Record(const CIPatch& item) { return item.ipatch1_GetInfoRef(); }
  static void Change(CIPatch& item, const CGPatchTypeDescr& record) {
    item.ipatch1_SetInfoCopy(&record);
  }
};

template <>
struct GroupItems<CGInfoTypeDescr> {
  static std::vector<CIInfo*> List(InspectionState& inspection, fset_enumFilters filter) {
    CIInfo* info = inspection.set.fset_GetIInfo(filter);
    return info ? std::vector{info} : std::vector<CIInfo*>();
  }
  static CGInfoTypeDescr* Record(const CIInfo& item) { return item.iinfo1_GetInfoRef(); }
  static void Change(CIInfo& item, const CGInfoTypeDescr& record) {
    item.iinfo1_SetInfoCopy(&record);
  }
};

template <>
struct GroupItems<CGSpecmatTypeDescr> {
  static std::vector<CISpecMat*> List(InspectionState& inspection, fset_enumFilters filter) {
    CISpecMat* material =
        inspection.specimen.spec_SpecMatGet(static_cast<spec_enumFilters>(filter));
    return material ? std::vector{material} : std::vector<CISpecMat*>();
  }
  static CGSpecmatTypeDescr* Record(const CISpecMat& item) { return item.ismat1_GetInfoRef(); }
  static void Change(CISpecMat& item, const CGSpecmatTypeDescr& record) {
    item.ismat1_SetInfoCopy(&record);
  }
};

}  // namespace utdata
