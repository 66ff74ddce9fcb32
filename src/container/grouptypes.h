// The group types as the container goes through them: the lists that hold their descriptors, and
// the orders of loading, writing and applying modifications. Codes, names, operations and what
// identifies a group are the catalogue's.
//
// The defect table is no group type here: its records are not a family's (see defects.h).
#pragma once

#include <cstdint>
#include <memory>
#include <tuple>
#include <type_traits>

#include "interfaces/kvtiff19_catalogue.h"
#include "src/container/workrecord.h"
#include "utdata/grouplists.h"

namespace utdata::container {

inline constexpr std::uint32_t codeTop = 0;
inline constexpr const wchar_t* nameTop = L"FC";

using SCFile::Family;

/// Where the descriptors of a type are. Of a type without a modifier code, modifications are read
/// as groups of their own: loading does not apply them, and they follow, in the list, what they
/// modify.
template <class Descriptor>
struct GroupType : SCFile::GroupType<Descriptor> {
  using List = CList<Descriptor*>;

  List CFContTypeFileDescr::*list;
  List fcontsec_typeFileDescriptor::*primaries;
  List fcontsec_typeFileDescriptor::*modifiers;  ///< null without a modifier code
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

/// In the order of a file descriptor's lists, without the defect records, which stand before the
/// weld scan plans.
inline constexpr std::tuple allTypes = [] {
  using Work = fcontsec_typeFileDescriptor;
  const auto type = []<class Descriptor>(
                        CList<Descriptor*> Work::*primaries,
                        std::type_identity_t<CList<Descriptor*> Work::*> modifiers = nullptr) {
    return GroupType<Descriptor>{
        SCFile::groupTypeOf<Descriptor>, listOf<Descriptor>, primaries, modifiers};
  };
  return std::tuple{type(&Work::data, &Work::modifiedData),
                    type(&Work::channels, &Work::modifiedChannels),
                    type(&Work::subChannels, &Work::modifiedSubChannels),
                    type(&Work::gates, &Work::modifiedGates),
                    type(&Work::patches, &Work::modifiedPatches),
                    type(&Work::probes, &Work::modifiedProbes),
                    type(&Work::specimenDimensions, &Work::modifiedSpecimenDimensions),
                    type(&Work::specimenInformation, &Work::modifiedSpecimenInformation),
                    type(&Work::specimenMaterials, &Work::modifiedSpecimenMaterials),
                    type(&Work::welds, &Work::modifiedWelds),
                    type(&Work::infos, &Work::modifiedInfos),
                    type(&Work::contours, &Work::modifiedContours),
                    type(&Work::referenceAdjustments, &Work::modifiedReferenceAdjustments),
                    type(&Work::meshes, &Work::modifiedMeshes),
                    type(&Work::specimenDefinitions, &Work::modifiedSpecimenDefinitions),
                    type(&Work::dacs, &Work::modifiedDacs),
                    type(&Work::weldScanPlans),
                    type(&Work::weldFills)};
}();

template <class Descriptor>
inline constexpr const GroupType<Descriptor>& typeOf = std::get<GroupType<Descriptor>>(allTypes);

/// An order of group types.
template <class... Descriptor>
struct Order {};

/// Written whole; the defect table comes between the two.
using WrittenBeforeDefects = Order<CGDataTypeFDD,
                                   CGChanTypeDescr,
                                   CGSubchanTypeDescr,
                                   CGGateTypeDescr,
                                   CGPatchTypeDescr,
                                   CGProbeTypeDescr,
                                   CGWeldTypeDescr,
                                   CGSpecdimTypeDescr,
                                   CGSpecinfTypeDescr,
                                   CGSpecmatTypeDescr,
                                   CGInfoTypeDescr,
                                   CGContourTypeDescr,
                                   CGRefadjTypeDescr,
                                   CGMeshTypeDescr,
                                   CGSpecdefTypeDescr,
                                   CGDacTypeDescr>;
using WrittenAfterDefects = Order<CGWeldScanPlanDescr, CGWeldFillDescr>;

/// The types whose modifications loading applies, in the order in which it does so and in which
/// changes are written before the defect table. WrittenAfterDefects follow it.
using Modified = Order<CGDataTypeFDD,
                       CGChanTypeDescr,
                       CGSubchanTypeDescr,
                       CGGateTypeDescr,
                       CGPatchTypeDescr,
                       CGProbeTypeDescr,
                       CGWeldTypeDescr,
                       CGSpecmatTypeDescr,
                       CGSpecinfTypeDescr,
                       CGContourTypeDescr,
                       CGRefadjTypeDescr,
                       CGDacTypeDescr>;
/// The types whose modifications are read and dropped.
using Dropped = Order<CGInfoTypeDescr, CGSpecdimTypeDescr, CGMeshTypeDescr, CGSpecdefTypeDescr>;

template <class... Descriptor>
constexpr bool AllAreModified(Order<Descriptor...>) {
  return (typeOf<Descriptor>.isModified && ...);
}
template <class... Descriptor>
constexpr bool NoneIsModified(Order<Descriptor...>) {
  return (!typeOf<Descriptor>.isModified && ...);
}
static_assert(AllAreModified(Modified()) && NoneIsModified(Dropped()) &&
              NoneIsModified(WrittenAfterDefects()));

/// Calls `action(type)` for each group type of an order.
template <class... Descriptor, class Action>
constexpr void ForEach(Order<Descriptor...>, Action&& action) {
  (action(typeOf<Descriptor>), ...);
}

/// Calls `action(type)` for each group type, in the order of the lists.
template <class Action>
constexpr void ForEachType(Action&& action) {
  std::apply([&](const auto&... type) { (action(type), ...); }, allTypes);
}

/// A descriptor between its allocation and the list that takes it.
template <class Descriptor>
auto Hold(Descriptor* descriptor) {
  constexpr auto remove = [](Descriptor* held) { Family<Descriptor>::Delete(held, 1); };
  return std::unique_ptr<Descriptor, decltype(remove)>(descriptor, remove);
}

/// Deletes every descriptor of a list and empties it.
template <class Descriptor>
void Release(CList<Descriptor*>& list) noexcept {
  for (Descriptor* descriptor : list) Family<Descriptor>::Delete(descriptor, 1);
  list.RemoveAll();
}

/// Deletes everything that a working record still holds, and empties its lists.
void ReleaseAll(fcontsec_typeFileDescriptor& work) noexcept;

}  // namespace utdata::container
