// The nineteen group lists of a file descriptor, told once: what each is called, and how its
// elements are deleted.
#pragma once

#include "utdata/fcont.h"

namespace utdata::program {

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

}  // namespace utdata::program
