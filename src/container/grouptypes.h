// The group types, told once: codes, names, lists, keys and operations of each, and the orders in
// which loading, writing and applying modifications go through them.
//
// The defect table is no row: its records are not a family's (see defects.h).
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <tuple>

#include "src/container/workrecord.h"

namespace utdata::container {

inline constexpr std::uint32_t codeTop = 0;
inline constexpr const wchar_t* nameTop = L"FC";

/// The ids that tell which primary group a modification belongs to; unused places are 0. A type
/// without ids has the same key everywhere, so that its first group is meant.
using Key = std::array<std::uint32_t, 5>;

template <class Descriptor>
struct GroupType {
  using List = CList<Descriptor*>;

  std::uint32_t primaryCode;
  const wchar_t* primaryName;
  std::uint32_t modifierCode;   ///< 0: none; see HasModifierCode
  const wchar_t* modifierName;  ///< empty: not named
  List CFContTypeFileDescr::*list;
  List fcontsec_typeFileDescriptor::*primaries;
  List fcontsec_typeFileDescriptor::*modifiers;  ///< null without a modifier code
  Descriptor* (*allocate)(int mode, const wchar_t* name);
  void (*remove)(Descriptor* descriptor, int whole);
  int (*read)(SCFile::GroupHandle group, Descriptor* descriptor, bool modifier);
  int (*write)(SCFile::GroupHandle group,
               const Descriptor* base,
               const Descriptor* descriptor,
               int writeFlag);
  Key (*key)(const Descriptor& descriptor);

  /// A type without one stores its modifications whole, under the primary code. Loading does not
  /// apply them: they follow, in the list, what they modify.
  [[nodiscard]] constexpr bool HasModifierCode() const { return modifierCode != 0; }
  [[nodiscard]] constexpr std::uint32_t ModificationCode() const {
    return HasModifierCode() ? modifierCode : primaryCode;
  }
};

template <class Descriptor>
void SetGroupHandle(Descriptor& descriptor, SCFile::GroupHandle group) {
  descriptor.group = group;
}
template <class Descriptor>
SCFile::GroupHandle GetGroupHandle(const Descriptor& descriptor) {
  return descriptor.group;
}
inline void SetGroupHandle(CGDataTypeFDD& descriptor, SCFile::GroupHandle group) {
  descriptor.SetGroupHandle(group);
}
inline SCFile::GroupHandle GetGroupHandle(const CGDataTypeFDD& descriptor) {
  return descriptor.GetGroupHandle();
}

namespace row {

// The families' own operations in the one shape that the table asks for.
template <class Descriptor, int (*Read)(SCFile::GroupHandle, Descriptor*)>
int ReadAs(SCFile::GroupHandle group, Descriptor* descriptor, bool /*modifier*/) {
  return Read(group, descriptor);
}
template <class Descriptor, int (*Write)(SCFile::GroupHandle, const Descriptor*, const Descriptor*)>
int WriteAs(SCFile::GroupHandle group,
            const Descriptor* base,
            const Descriptor* descriptor,
            int /*writeFlag*/) {
  return Write(group, base, descriptor);
}
inline void RemoveData(CGDataTypeFDD* descriptor, int whole) { gdata_Delete(descriptor, whole); }

template <class Descriptor>
Key NoKey(const Descriptor&) {
  return {};
}
inline Key DataKey(const CGDataTypeFDD& data) {
  return {data.dataClass, data.channelId, data.subChannelId, data.gateId, data.GetPatchID()};
}
inline Key ChannelKey(const CGChanTypeDescr& channel) {
  return {channel.channelId, channel.firstProbeId, channel.secondProbeId};
}
inline Key SubChannelKey(const CGSubchanTypeDescr& subChannel) {
  return {subChannel.subChannelId, subChannel.channelId};
}
inline Key GateKey(const CGGateTypeDescr& gate) { return {gate.gateId, gate.channelId}; }
inline Key PatchKey(const CGPatchTypeDescr& patch) { return {patch.patchId}; }
inline Key ProbeKey(const CGProbeTypeDescr& probe) { return {probe.probeId}; }
inline Key WeldKey(const CGWeldTypeDescr& weld) { return {weld.weldId}; }
inline Key ContourKey(const CGContourTypeDescr& contour) {
  return {contour.contourId, contour.channelId};
}
inline Key AdjustmentKey(const CGRefadjTypeDescr& adjustment) { return {adjustment.adjustmentId}; }
inline Key DacKey(const CGDacTypeDescr& dac) { return {dac.dacId}; }
inline Key ScanPlanKey(const CGWeldScanPlanDescr& plan) { return {plan.weldId}; }
inline Key FillKey(const CGWeldFillDescr& fill) { return {fill.weldId, fill.fillId}; }

}  // namespace row

// clang-format off
using Loaded = CFContTypeFileDescr;
using Work = fcontsec_typeFileDescriptor;
#define UTDATA_OPERATIONS(prefix, Descriptor)                                                           \
  prefix##_Allocate, prefix##_Delete, row::ReadAs<Descriptor, prefix##_ReadGroupInfo>,                  \
  row::WriteAs<Descriptor, prefix##_WriteGroupInfo>

inline constexpr GroupType<CGDataTypeFDD> dataType = {
  10004, L"Data Group", 10018, L"Modified Data", &Loaded::data, &Work::data, &Work::modifiedData,
  gdata_Allocate, row::RemoveData, row::ReadAs<CGDataTypeFDD, gdata_ReadGroupInfo>, gdata_WriteGroupInfo, row::DataKey};
inline constexpr GroupType<CGChanTypeDescr> channelType = {
  10009, L"Channel", 10017, L"Modified Channel", &Loaded::channels, &Work::channels, &Work::modifiedChannels,
  UTDATA_OPERATIONS(gchan, CGChanTypeDescr), row::ChannelKey};
inline constexpr GroupType<CGSubchanTypeDescr> subChannelType = {
  10020, L"Sub Channel", 10021, L"", &Loaded::subChannels, &Work::subChannels, &Work::modifiedSubChannels,
  UTDATA_OPERATIONS(gsubchan, CGSubchanTypeDescr), row::SubChannelKey};
inline constexpr GroupType<CGGateTypeDescr> gateType = {
  10224, L"Gate", 10025, L"Modified Gate", &Loaded::gates, &Work::gates, &Work::modifiedGates,
  ggate_Allocate, ggate_Delete, ggate_ReadGroupInfo, row::WriteAs<CGGateTypeDescr, ggate_WriteGroupInfo>, row::GateKey};
inline constexpr GroupType<CGPatchTypeDescr> patchType = {
  10007, L"Patch", 10014, L"", &Loaded::patches, &Work::patches, &Work::modifiedPatches,
  UTDATA_OPERATIONS(gpatch, CGPatchTypeDescr), row::PatchKey};
inline constexpr GroupType<CGProbeTypeDescr> probeType = {
  10008, L"Probe", 10016, L"", &Loaded::probes, &Work::probes, &Work::modifiedProbes,
  UTDATA_OPERATIONS(gprobe, CGProbeTypeDescr), row::ProbeKey};
inline constexpr GroupType<CGSpecdimTypeDescr> specimenDimensionsType = {
  10006, L"Specdim", 10013, L"", &Loaded::specimenDimensions, &Work::specimenDimensions, &Work::modifiedSpecimenDimensions,
  UTDATA_OPERATIONS(gspecdim, CGSpecdimTypeDescr), row::NoKey};
inline constexpr GroupType<CGSpecinfTypeDescr> specimenInformationType = {
  10028, L"Specinf", 10029, L"", &Loaded::specimenInformation, &Work::specimenInformation, &Work::modifiedSpecimenInformation,
  UTDATA_OPERATIONS(gspecinf, CGSpecinfTypeDescr), row::NoKey};
inline constexpr GroupType<CGSpecmatTypeDescr> specimenMaterialType = {
  10026, L"Specmat", 10027, L"", &Loaded::specimenMaterials, &Work::specimenMaterials, &Work::modifiedSpecimenMaterials,
  UTDATA_OPERATIONS(gspecmat, CGSpecmatTypeDescr), row::NoKey};
inline constexpr GroupType<CGWeldTypeDescr> weldType = {
  10022, L"Weld", 10023, L"", &Loaded::welds, &Work::welds, &Work::modifiedWelds,
  UTDATA_OPERATIONS(gweld, CGWeldTypeDescr), row::WeldKey};
inline constexpr GroupType<CGInfoTypeDescr> infoType = {
  15697, L"Info", 10019, L"", &Loaded::infos, &Work::infos, &Work::modifiedInfos,
  UTDATA_OPERATIONS(ginfo, CGInfoTypeDescr), row::NoKey};
inline constexpr GroupType<CGContourTypeDescr> contourType = {
  10011, L"Contour", 10032, L"Modified Contour", &Loaded::contours, &Work::contours, &Work::modifiedContours,
  UTDATA_OPERATIONS(gcontour, CGContourTypeDescr), row::ContourKey};
inline constexpr GroupType<CGRefadjTypeDescr> referenceAdjustmentType = {
  10031, L"Refadj", 10034, L"", &Loaded::referenceAdjustments, &Work::referenceAdjustments, &Work::modifiedReferenceAdjustments,
  UTDATA_OPERATIONS(grefadj, CGRefadjTypeDescr), row::AdjustmentKey};
inline constexpr GroupType<CGMeshTypeDescr> meshType = {
  10030, L"Mesh", 10033, L"", &Loaded::meshes, &Work::meshes, &Work::modifiedMeshes,
  UTDATA_OPERATIONS(gmesh, CGMeshTypeDescr), row::NoKey};
inline constexpr GroupType<CGSpecdefTypeDescr> specimenDefinitionType = {
  10035, L"Specdef", 10036, L"", &Loaded::specimenDefinitions, &Work::specimenDefinitions, &Work::modifiedSpecimenDefinitions,
  UTDATA_OPERATIONS(gspecdef, CGSpecdefTypeDescr), row::NoKey};
inline constexpr GroupType<CGDacTypeDescr> dacType = {
  10010, L"DAC", 10039, L"Modified DAC", &Loaded::dacs, &Work::dacs, &Work::modifiedDacs,
  UTDATA_OPERATIONS(gdac, CGDacTypeDescr), row::DacKey};
inline constexpr GroupType<CGWeldScanPlanDescr> weldScanPlanType = {
  10047, L"WeldScanPlan", 0, L"", &Loaded::weldScanPlans, &Work::weldScanPlans, nullptr,
  UTDATA_OPERATIONS(gweldsp, CGWeldScanPlanDescr), row::ScanPlanKey};
inline constexpr GroupType<CGWeldFillDescr> weldFillType = {
  10048, L"WeldFill", 0, L"", &Loaded::weldFills, &Work::weldFills, nullptr,
  UTDATA_OPERATIONS(gweldFill, CGWeldFillDescr), row::FillKey};
#undef UTDATA_OPERATIONS

// The orders. The lists of both records follow allTypes, with the defect records before the weld
// scan plans.
inline constexpr auto allTypes = std::tie(
  dataType, channelType, subChannelType, gateType, patchType, probeType, specimenDimensionsType, specimenInformationType,
  specimenMaterialType, weldType, infoType, contourType, referenceAdjustmentType, meshType, specimenDefinitionType, dacType,
  weldScanPlanType, weldFillType);
// Written whole; the defect table comes between the two.
inline constexpr auto writtenBeforeDefects = std::tie(
  dataType, channelType, subChannelType, gateType, patchType, probeType, weldType, specimenDimensionsType,
  specimenInformationType, specimenMaterialType, infoType, contourType, referenceAdjustmentType, meshType,
  specimenDefinitionType, dacType);
inline constexpr auto writtenAfterDefects = std::tie(weldScanPlanType, weldFillType);
// Written as changes before the defect table; what follows it is the same.
inline constexpr auto changesBeforeDefects = std::tie(
  dataType, channelType, subChannelType, gateType, patchType, probeType, weldType, specimenMaterialType,
  specimenInformationType, contourType, referenceAdjustmentType, dacType);
// Applied when a file is loaded; the info modifiers between the two are dropped.
inline constexpr auto appliedBeforeInfo = std::tie(
  dataType, channelType, subChannelType, gateType, patchType, probeType, weldType, specimenMaterialType,
  specimenInformationType);
inline constexpr auto appliedAfterInfo = std::tie(contourType, referenceAdjustmentType, dacType);
// clang-format on

/// Calls `action(type)` for each group type of an order.
template <class Order, class Action>
constexpr void ForEach(const Order& order, Action&& action) {
  std::apply([&](const auto&... type) { (action(type), ...); }, order);
}

/// A descriptor between its allocation and the list that takes it.
template <class Descriptor>
auto Hold(const GroupType<Descriptor>& type, Descriptor* descriptor) {
  const auto remove = [&type](Descriptor* held) { type.remove(held, 1); };
  return std::unique_ptr<Descriptor, decltype(remove)>(descriptor, remove);
}

/// Deletes every descriptor of a list and empties it.
template <class Descriptor>
void Release(const GroupType<Descriptor>& type, CList<Descriptor*>& list) noexcept {
  for (Descriptor* descriptor : list) type.remove(descriptor, 1);
  list.RemoveAll();
}

/// Deletes everything that a working record still holds, and empties its lists.
void ReleaseAll(fcontsec_typeFileDescriptor& work) noexcept;

}  // namespace utdata::container
