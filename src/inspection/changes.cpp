// What is written: the items' changes, gathered as groups.
#include <algorithm>

#include "src/container/matching.h"
#include "src/inspection/groupitems.h"
#include "utdata/grouplists.h"

namespace utdata {
namespace {

/// What the file has, with the fields that the item changed since it took them: those that the
/// catalogue lets people change, and the offset of positions, which follows that of their samples.
/// The rest of the record stays as the file has it, however the item read it.
CGDataTypeFDD Changed(const DataRow& row) {
  CGDataTypeFDD record = *row.stored;
  const CGDataTypeFDD& now = *row.item->idata1_GetGInfoRef();
  for (const SCFile::FieldInfo& field : SCFile::file_GroupTypeOf<CGDataTypeFDD>().fields) {
    if (!field.IsEditable()) continue;
    const double value = field.access.number(&now);
    if (value != field.access.number(&row.taken)) field.access.setNumber(&record, value);
  }
  if (row.taken.dataOffset != now.dataOffset) record.dataOffset = now.dataOffset;
  // A bookmark type that the file does not give would be another one with another TOFD flag.
  if (row.taken.tofd != now.tofd && record.GetDataBookmarkType() == bookmark_None)
    record.SetDataBookmarkType(now.GetDataBookmarkType());
  return record;
}

}  // namespace

Changes::Changes(InspectionState& inspection, Scope scope) {
  const auto isUnsaved = [&](const void* item) { return inspection.saved.count(item) == 0; };
  for (const DataRow& row : inspection.rows) {
    const bool isNew = row.added && row.isListed && isUnsaved(row.item);
    if (!isNew && row.item->idata1_ModifGetStatus() == 0) continue;
    CGDataTypeFDD* const record = &records.emplace_back(Changed(row));
    bases.emplace(record, row.stored);
    groups.data.AddTail(record);
    if (isNew) newItems.insert(row.item);
  }
  // Of the other types, the modified items and the new ones that stand in no file yet. Those that
  // were saved have joined no list of the descriptor: a whole file takes them from here.
  const auto gather = [&]<class Descriptor>(CList<Descriptor*>& out) {
    for (const fset_enumFilters filter : {fset_New, fset_Modified})
      for (const auto* item : GroupItems<Descriptor>::List(inspection, filter)) {
        if (filter == fset_New && !isUnsaved(item) && scope == Scope::Unsaved) continue;
        Descriptor* record = GroupItems<Descriptor>::Record(*item);
        if (std::find(out.begin(), out.end(), record) != out.end()) continue;
        out.AddTail(record);
        if (filter == fset_New) newItems.insert(item);
      }
  };
  gather(groups.channels);
  gather(groups.subChannels);
  gather(groups.gates);
  gather(groups.probes);
  gather(groups.patches);
  gather(groups.infos);
  gather(groups.specimenMaterials);
  VisitGroupLists(
      groups, [this](std::string_view, const auto& list) { isEmpty = isEmpty && list.IsEmpty(); });
}

void MergeInto(CFContTypeFileDescr& copy,
               const CFContTypeFileDescr& loaded,
               const Changes& changes) {
  using namespace container;
  ForEachType([&]<class Descriptor>(const GroupType<Descriptor>& type) {
    const CList<Descriptor*>& before = loaded.*type.list;
    const CList<Descriptor*>& changed = changes.groups.*type.list;
    std::unordered_map<const Descriptor*, Descriptor*> replaced;
    const Matching<Descriptor> matching(before);
    // Several data groups may have the same ids.
    const auto baseOf = [&](const Descriptor& change) -> const Descriptor* {
      if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>)
        return changes.bases.at(&change);
      else
        return matching.Find(change);
    };
    for (Descriptor* change : changed) replaced[baseOf(*change)] = change;
    for (Descriptor* descriptor : before) {
      const auto found = replaced.find(descriptor);
      if (found == replaced.end()) {
        (copy.*type.list).AddTail(descriptor);
        continue;
      }
      (copy.*type.list).AddTail(found->second);
      replaced.erase(found);
    }
    for (Descriptor* change : changed)
      if (replaced.count(baseOf(*change)) != 0) (copy.*type.list).AddTail(change);
  });
  for (stDefectExtern* defect : loaded.defects) copy.defects.AddTail(defect);
}

}  // namespace utdata
