// The group lists of a file descriptor, one after the other: for whoever counts, copies or deletes
// groups whatever their types are. Constant; no locks.
#pragma once

#include <string_view>
#include <tuple>

#include "interfaces/kvtiff19_catalogue.h"
#include "utdata/fcont.h"

namespace utdata {

/// A list of a file descriptor, and what it is called in results: the key of its group type, or
/// "defect".
template <class Element>
struct GroupList {
  std::string_view key;
  CList<Element*> CFContTypeFileDescr::*list;
};

/// In the order of the file descriptor.
inline constexpr std::tuple groupLists = [] {
  const auto of = []<class Descriptor>(CList<Descriptor*> CFContTypeFileDescr::*list) {
    return GroupList<Descriptor>{SCFile::groupTypeOf<Descriptor>.key, list};
  };
  return std::tuple{of(&CFContTypeFileDescr::data),
                    of(&CFContTypeFileDescr::channels),
                    of(&CFContTypeFileDescr::subChannels),
                    of(&CFContTypeFileDescr::gates),
                    of(&CFContTypeFileDescr::patches),
                    of(&CFContTypeFileDescr::probes),
                    of(&CFContTypeFileDescr::specimenDimensions),
                    of(&CFContTypeFileDescr::specimenInformation),
                    of(&CFContTypeFileDescr::specimenMaterials),
                    of(&CFContTypeFileDescr::welds),
                    of(&CFContTypeFileDescr::infos),
                    of(&CFContTypeFileDescr::contours),
                    of(&CFContTypeFileDescr::referenceAdjustments),
                    of(&CFContTypeFileDescr::meshes),
                    of(&CFContTypeFileDescr::specimenDefinitions),
                    of(&CFContTypeFileDescr::dacs),
                    GroupList<stDefectExtern>{"defect", &CFContTypeFileDescr::defects},
                    of(&CFContTypeFileDescr::weldScanPlans),
                    of(&CFContTypeFileDescr::weldFills)};
}();

/// The list of a descriptor's class.
template <class Element>
inline constexpr auto listOf = std::get<GroupList<Element>>(groupLists).list;

/// Calls `visit(key, list)` for each list of a descriptor, in order.
template <class Descriptor, class Visit>
void VisitGroupLists(Descriptor& groups, Visit&& visit) {
  std::apply([&](const auto&... each) { (visit(each.key, groups.*each.list), ...); }, groupLists);
}

}  // namespace utdata
