// The nineteen group lists of a file descriptor: what each is called, and how its
// elements are deleted.
#pragma once

#include "utdata/fcont.h"
#include "utdata/fset.h"

namespace utdata {

/// Calls visit(name, list, remove) for each list in the order of the descriptor; `name` is the
/// list's key in results, and `remove` deletes one element.
template <class Descriptor, class Visitor>
void VisitGroupLists(Descriptor& groups, Visitor&& visit) {
  visit("data", groups.data, [](CGDataTypeFDD* group) { gdata_Delete(group, 1); });
  visit("channel", groups.channels, [](CGChanTypeDescr* group) { gchan_Delete(group, 1); });
  visit("sub_channel", groups.subChannels, [](CGSubchanTypeDescr* group) {
    gsubchan_Delete(group, 1);
  });
  visit("gate", groups.gates, [](CGGateTypeDescr* group) { ggate_Delete(group, 1); });
  visit("patch", groups.patches, [](CGPatchTypeDescr* group) { gpatch_Delete(group, 1); });
  visit("probe", groups.probes, [](CGProbeTypeDescr* group) { gprobe_Delete(group, 1); });
  visit("specimen_dimensions", groups.specimenDimensions, [](CGSpecdimTypeDescr* group) {
    gspecdim_Delete(group, 1);
  });
  visit("specimen_information", groups.specimenInformation, [](CGSpecinfTypeDescr* group) {
    gspecinf_Delete(group, 1);
  });
  visit("specimen_material", groups.specimenMaterials, [](CGSpecmatTypeDescr* group) {
    gspecmat_Delete(group, 1);
  });
  visit("weld", groups.welds, [](CGWeldTypeDescr* group) { gweld_Delete(group, 1); });
  visit("info", groups.infos, [](CGInfoTypeDescr* group) { ginfo_Delete(group, 1); });
  visit("contour", groups.contours, [](CGContourTypeDescr* group) { gcontour_Delete(group, 1); });
  visit("reference_adjustment", groups.referenceAdjustments, [](CGRefadjTypeDescr* group) {
    grefadj_Delete(group, 1);
  });
  visit("mesh", groups.meshes, [](CGMeshTypeDescr* group) { gmesh_Delete(group, 1); });
  visit("specimen_definition", groups.specimenDefinitions, [](CGSpecdefTypeDescr* group) {
    gspecdef_Delete(group, 1);
  });
  visit("dac", groups.dacs, [](CGDacTypeDescr* group) { gdac_Delete(group, 1); });
  visit("defect", groups.defects, [](stDefectExtern* record) { delete record; });
  visit("weld_scan_plan", groups.weldScanPlans, [](CGWeldScanPlanDescr* group) {
    gweldsp_Delete(group, 1);
  });
  visit("weld_fill", groups.weldFills, [](CGWeldFillDescr* group) { gweldFill_Delete(group, 1); });
}

// How many groups of one list an inspection has: of the types that a file set holds, the items
// there; of the others, the groups of the descriptor.

inline std::size_t CountItems(CFSet& set, const CList<CGDataTypeFDD*>&) {
  CIDataLst found;
  return set.fset_GetIDataLst(&found);
}
inline std::size_t CountItems(CFSet& set, const CList<CGChanTypeDescr*>&) {
  return set.fset_GetIChanCount();
}
inline std::size_t CountItems(CFSet& set, const CList<CGSubchanTypeDescr*>&) {
  CISubChanLst found;
  return set.fset_GetISubChanLst(&found, fset_All, fset_AnyId, fset_AnyId);
}
inline std::size_t CountItems(CFSet& set, const CList<CGGateTypeDescr*>&) {
  CIGateLst found;
  return set.fset_GetIGateLst(&found, fset_All, fset_AnyId, fset_AnyId);
}
inline std::size_t CountItems(CFSet& set, const CList<CGPatchTypeDescr*>&) {
  CIPatchLst found;
  return set.fset_GetIPatchLst(&found, fset_All, fset_AnyId);
}
inline std::size_t CountItems(CFSet& set, const CList<CGProbeTypeDescr*>&) {
  CIProbeLst found;
  return set.fset_GetIProbeLst(&found, fset_All, fset_AnyId);
}
inline std::size_t CountItems(CFSet& set, const CList<CGInfoTypeDescr*>&) {
  return set.fset_GetIInfo(fset_All) ? 1 : 0;
}
inline std::size_t CountItems(CFSet& set, const CList<CGWeldScanPlanDescr*>&) {
  return set.fset_GetGWeldScanPlanList().size();
}
inline std::size_t CountItems(CFSet& set, const CList<CGWeldFillDescr*>&) {
  return set.fset_GetGWeldFillList().size();
}
template <class Descriptor>
std::size_t CountItems(CFSet&, const CList<Descriptor*>& list) {
  return static_cast<std::size_t>(list.GetCount());
}

}  // namespace utdata
