#include "document/host.h"

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace utdata::program {
namespace {

/// Calls add with the last descriptor of each identity, in the order of the list.
template <class Descriptor, class Add>
void AddLatest(const CList<Descriptor*>& list, Add add) {
  std::map<SCFile::GroupIdentity::Ids, Descriptor*> latest;
  for (Descriptor* descriptor : list) latest[SCFile::file_Identity(*descriptor).ids] = descriptor;
  for (Descriptor* descriptor : list)
    if (latest[SCFile::file_Identity(*descriptor).ids] == descriptor) add(descriptor);
}

}  // namespace

Host::Host(CFContTypeFileDescr& groups, Tables tables)
    : m_groups(groups), m_volume(this, unit_Length, L"", unit_Length, L""), m_data(tables) {
  std::vector<kvt_enumAxis> angles;
  if (!groups.data.IsEmpty()) {
    const CGDataTypeFDD& first = *groups.data.GetHead();
    if (first.columnUnits == kvt_UnitDegree) angles.push_back(kvt_AxisColumn);
    if (first.rowUnits == kvt_UnitDegree) angles.push_back(kvt_AxisRow);
  }
  m_volume.vol_FillBaseUnits(angles);
  FillSet();
}

void Host::FillSet() {
  constexpr int ofTheFile = 0;
  for (CGPatchTypeDescr* patch : m_groups.patches) m_set.fset_AddGPatch(patch, ofTheFile);
  for (CGProbeTypeDescr* probe : m_groups.probes) m_set.fset_AddGProbe(probe, ofTheFile);
  for (CGChanTypeDescr* channel : m_groups.channels) m_set.fset_AddGChan(channel, ofTheFile);
  for (CGSubchanTypeDescr* subChannel : m_groups.subChannels)
    m_set.fset_AddGSubChan(subChannel, ofTheFile);
  for (CGGateTypeDescr* gate : m_groups.gates) m_set.fset_AddGGate(gate, ofTheFile);
  for (CGInfoTypeDescr* info : m_groups.infos) m_set.fset_AddGInfo(info, ofTheFile);
  for (CGDataTypeFDD* data : m_groups.data) m_data.Add(*data, m_set, m_volume);
  for (CGSpecmatTypeDescr* material : m_groups.specimenMaterials)
    m_specimen.spec_SpecMatAdd(material, ofTheFile);
  AddLatest(m_groups.weldScanPlans,
            [this](CGWeldScanPlanDescr* plan) { m_set.fset_AddGWeldScanPlan(plan); });
  AddLatest(m_groups.weldFills, [this](CGWeldFillDescr* fill) { m_set.fset_AddGWeldFill(fill); });
}

void Host::OnDataGroupAdded(std::int32_t) {}

void Host::HandleParameterRequest(PellamServiceParam&, std::int32_t) {}

void Host::OnParametersChanged() {}

}  // namespace utdata::program
