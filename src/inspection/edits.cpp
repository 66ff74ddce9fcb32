#include "utdata/edits.h"

#include <algorithm>
#include <array>
#include <functional>
#include <type_traits>
#include <utility>

#include "src/foundation/dataclass.h"
#include "src/inspection/fieldchange.h"
#include "src/inspection/groupitems.h"
#include "src/inspection/tofdpair.h"
#include "src/items/itemstate.h"
#include "utdata/tofd.h"

namespace utdata {

/// What is done with the items of a group type, whatever its descriptor's class is.
struct GroupKind {
  const SCFile::GroupTypeInfo* type;
  std::vector<void*> (*list)(InspectionState& inspection);
  const void* (*record)(const void* item);
  std::string (*name)(InspectionState& inspection, const void* item);
  std::vector<FieldChange> (*change)(InspectionState& inspection, void* item, FieldTexts values);
};

void AddChanges(const std::string& group,
                const Fields& before,
                const Fields& after,
                std::vector<FieldChange>& changes) {
  constexpr int everyDigit = 9;  // of what a file holds
  for (const Field& is : after.All()) {
    const Field was = before[is.Key()];
    if (is.SameAs(was)) continue;
    const int digits = was.Show() == is.Show() ? everyDigit : 6;
    changes.push_back(
        {group, &is.Info(), was.Value(), is.Value(), was.Show(digits), is.Show(digits)});
  }
}

namespace {

// ---- data groups, whose items take parameters, not a record

idata_typeInspParams ParamsOf(const CIData& item, const CGDataTypeFDD& record) {
  idata_typeInspParams params;
  item.idata3_GetInspParam(&params);
  params.probeAngle = record.probeAngle;
  params.probeSkew = record.probeSkew;
  params.probeThird = record.probeThird;
  params.probeFourth = record.probeFourth;
  params.partThickness = record.partThickness;
  params.soundSpeed = record.soundSpeed;
  params.columnResolution = record.columnResolution;
  params.columnOffset = record.columnOffset;
  params.rowResolution = record.rowResolution;
  params.rowOffset = record.rowOffset;
  // A C-scan's descriptor has a sample axis of its own, which stays when nobody changed it.
  if (record.sampleOffset != item.idata1_GetGInfoRef()->sampleOffset)
    params.sampleOffset = record.sampleOffset;
  return params;
}

idata_typeTOFD GeometryOf(const CIData& item, const CGDataTypeFDD& record) {
  idata_typeTOFD tofd;
  item.idata3_GetTOFDParam(&tofd);
  tofd.inspectionGeometry = record.inspectionGeometry;
  tofd.geometryKind = record.geometryKind;
  tofd.inspectionRadius = record.inspectionRadius;
  tofd.partThickness = record.partThickness;
  tofd.probeSeparation = record.probeSeparation;
  tofd.tofdValue = record.tofdValue;
  tofd.soundSpeed = record.soundSpeed;
  tofd.sampleOffsetCorrection = 0;
  return tofd;
}

/// Whether two records differ in what an item takes as the geometry of time-of-flight diffraction
/// only.
bool DifferInGeometry(const CGDataTypeFDD& a, const CGDataTypeFDD& b) {
  return a.columnResolution != b.columnResolution || a.rowResolution != b.rowResolution ||
         a.inspectionGeometry != b.inspectionGeometry || a.geometryKind != b.geometryKind ||
         a.inspectionRadius != b.inspectionRadius || a.probeSeparation != b.probeSeparation ||
         a.tofdValue != b.tofdValue;
}

}  // namespace

template <>
struct GroupItems<CGDataTypeFDD> {
  static std::vector<CIData*> List(InspectionState& inspection, fset_enumFilters) {
    std::vector<CIData*> items;
    for (const DataRow& row : inspection.rows)
      if (row.isListed) items.push_back(row.item);
    return items;
  }
  static const CGDataTypeFDD* Record(const CIData& item) { return item.idata1_GetGInfoRef(); }
  static void Change(CIData& item, const CGDataTypeFDD& record) {
    idata_typeInspParams params = ParamsOf(item, record);
    idata_typeTOFD tofd = GeometryOf(item, record);
    if (DifferInGeometry(*Record(item), record))
      item.idata3_ModifyTOFDParam(&tofd, &params);
    else
      item.idata1_ModifyInspParam(&params, 0);
    ItemAccess::TakeTofdFlag(item, record.tofd);
  }
};

namespace {

template <class Item, class Descriptor>
std::string NameOf(InspectionState& inspection, const Item& item, const Descriptor& record) {
  if constexpr (std::is_same_v<Item, CIData>) {
    const DataGroup group(inspection, *inspection.RowOf(&item));
    return group.IdLabel() + group.ClassName();
  } else {
    return Fields(record).Name();
  }
}

/// What one edit changes; all of it, or nothing.
class Edit {
 public:
  Edit() = default;
  Edit(const Edit&) = delete;
  Edit& operator=(const Edit&) = delete;
  ~Edit() {
    while (!m_isDone && !m_before.empty()) {
      m_before.back()();
      m_before.pop_back();
    }
  }

  /// Notes how an item is that changes next. Going back takes no memory.
  template <class Item, class Descriptor>
  void NoteBefore(Item& item, const Descriptor& record) {
    if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>)
      m_before.emplace_back([&item, record, isModified = item.idata1_ModifGetStatus()] {
        GroupItems<CGDataTypeFDD>::Change(item, record);
        if (isModified == 0) item.idata1_ModifClear();
      });
    else
      m_before.emplace_back([&item,
                             before = Descriptor(record),
                             isModified = ItemAccess::IsModified(item)]() mutable {
        RestoreWorkingCopy(item, std::move(before), isModified);
      });
  }

  [[nodiscard]] std::vector<FieldChange> Finish() noexcept {
    m_isDone = true;
    return std::move(changes);
  }

  std::vector<FieldChange> changes;

 private:
  std::vector<std::function<void()>> m_before;
  bool m_isDone = false;
};

/// Gives an item a record, and notes what is then different. Masters are made anew at each loading:
/// what they take is no change of the inspection.
template <class Item, class Descriptor>
void Take(InspectionState& inspection, Item& item, const Descriptor& record, Edit& edit) {
  const Descriptor before = *GroupItems<Descriptor>::Record(item);
  const Fields was(before), wanted(record);
  if (std::ranges::all_of(was.All(),
                          [&](const Field& field) { return field.SameAs(wanted[field.Key()]); }))
    return;
  edit.NoteBefore(item, before);
  GroupItems<Descriptor>::Change(item, record);
  if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>)
    if (IsMaster(record.dataClass)) return;
  const std::string name = NameOf(inspection, item, record);
  AddChanges(name, was, Fields(*GroupItems<Descriptor>::Record(item)), edit.changes);
}

// ---- what agrees with a change

/// Calls `change(record, item)` with the records of data groups and masters, and gives their items
/// what it made of them.
template <class Change>
void ChangeEachData(InspectionState& inspection, Edit& edit, Change&& change) {
  std::vector<CIData*> items = GroupItems<CGDataTypeFDD>::List(inspection, fset_All);
  for (CIData* master :
       ItemsIn<CIDataLst>([&](CIDataLst* list) { inspection.set.fset_GetMSCIDataLst(list); }))
    items.push_back(master);
  for (CIData* item : items) {
    CGDataTypeFDD record = *GroupItems<CGDataTypeFDD>::Record(*item);
    change(record, *item);
    Take(inspection, *item, record, edit);
  }
}

template <class Change>
void ChangeData(InspectionState& inspection, Edit& edit, Change&& change) {
  ChangeEachData(inspection, edit, [&](CGDataTypeFDD& record, const CIData&) { change(record); });
}

/// Gives the record of a channel, if it is described, another value.
template <class Change>
void ChangeChannel(InspectionState& inspection,
                   std::uint32_t channelId,
                   Edit& edit,
                   Change&& change) {
  CIChan* const channel = inspection.set.fset_GetIChan(fset_All, channelId);
  if (!channel) return;
  CGChanTypeDescr record = *GroupItems<CGChanTypeDescr>::Record(*channel);
  change(record);
  Take(inspection, *channel, record, edit);
}

/// What all of a channel has alike: its sound speed, and whether it is one of time-of-flight
/// diffraction.
template <class Value>
void SpreadOverChannel(InspectionState& inspection,
                       std::uint32_t channelId,
                       Value CGChanTypeDescr::*ofChannel,
                       Value CGDataTypeFDD::*ofData,
                       Value value,
                       Edit& edit) {
  ChangeChannel(
      inspection, channelId, edit, [=](CGChanTypeDescr& record) { record.*ofChannel = value; });
  ChangeData(inspection, edit, [=](CGDataTypeFDD& record) {
    if (record.channelId == channelId) record.*ofData = value;
  });
}

void SpreadSoundSpeed(InspectionState& inspection,
                      std::uint32_t channelId,
                      float speed,
                      Edit& edit) {
  SpreadOverChannel(
      inspection, channelId, &CGChanTypeDescr::soundSpeed, &CGDataTypeFDD::soundSpeed, speed, edit);
}

void SpreadTofd(InspectionState& inspection,
                std::uint32_t channelId,
                std::int32_t tofd,
                Edit& edit) {
  SpreadOverChannel(
      inspection, channelId, &CGChanTypeDescr::tofd, &CGDataTypeFDD::tofd, tofd, edit);
}

/// A separation is taken by the data groups of a beam that had the same one, or none.
void SpreadSeparation(InspectionState& inspection,
                      std::uint32_t channelId,
                      std::uint32_t subChannelId,
                      float was,
                      float is,
                      Edit& edit) {
  ChangeEachData(inspection, edit, [&](CGDataTypeFDD& record, const CIData& item) {
    if (record.channelId != channelId || record.subChannelId != subChannelId) return;
    const DataRow* const row = inspection.RowOf(&item);
    if (record.probeSeparation == was || (row && !IsSeparationKnown(*row)))
      record.probeSeparation = is;
  });
}

/// A field of another group that data groups repeat.
struct Repeated {
  const char* field;
  const char* dataField;
};

void Repeat(std::span<const Repeated> fields,
            const Fields& was,
            const Fields& is,
            CGDataTypeFDD& record) {
  const EditableFields data(record);
  for (const Repeated& repeated : fields) {
    const EditableField field = data[repeated.dataField];
    const double value = is[repeated.field].Number();
    const bool isRepeated = field.Number() == was[repeated.field].Number();
    if (isRepeated && field.Takes(value)) field.Set(value);
  }
}

template <class Descriptor>
void Spread(InspectionState&, const Descriptor&, const Descriptor&, Edit&) {}

template <>
void Spread(InspectionState& inspection,
            const CGChanTypeDescr& was,
            const CGChanTypeDescr& is,
            Edit& edit) {
  constexpr Repeated repeated[] = {{"refractedAngle", "probeAngle"}, {"skew", "probeSkew"}};
  if (was.soundSpeed != is.soundSpeed)
    SpreadSoundSpeed(inspection, is.channelId, is.soundSpeed, edit);
  if (was.tofd != is.tofd) SpreadTofd(inspection, is.channelId, is.tofd, edit);
  if (was.probeSeparation != is.probeSeparation && is.probeSeparation > 0)
    SpreadSeparation(inspection, is.channelId, 0, was.probeSeparation, is.probeSeparation, edit);
  ChangeData(inspection, edit, [&](CGDataTypeFDD& record) {
    if (record.channelId == is.channelId && record.subChannelId == 0)
      Repeat(repeated, Fields(was), Fields(is), record);
  });
}

template <>
void Spread(InspectionState& inspection,
            const CGSubchanTypeDescr& was,
            const CGSubchanTypeDescr& is,
            Edit& edit) {
  constexpr Repeated repeated[] = {{"refractedAngle", "probeAngle"}, {"skew", "probeSkew"}};
  ChangeData(inspection, edit, [&](CGDataTypeFDD& record) {
    if (record.channelId == is.channelId && record.subChannelId == is.subChannelId)
      Repeat(repeated, Fields(was), Fields(is), record);
  });
}

template <>
void Spread(InspectionState& inspection,
            const CGDataTypeFDD& was,
            const CGDataTypeFDD& is,
            Edit& edit) {
  if (was.soundSpeed != is.soundSpeed)
    SpreadSoundSpeed(inspection, is.channelId, is.soundSpeed, edit);
  if (was.tofd != is.tofd) SpreadTofd(inspection, is.channelId, is.tofd, edit);
  if (was.probeSeparation != is.probeSeparation) {
    ChangeChannel(inspection, is.channelId, edit, [&](CGChanTypeDescr& channel) {
      if (is.subChannelId == 0 &&
          (channel.probeSeparation == was.probeSeparation || channel.probeSeparation == 0))
        channel.probeSeparation = is.probeSeparation;
    });
    SpreadSeparation(
        inspection, is.channelId, is.subChannelId, was.probeSeparation, is.probeSeparation, edit);
  }
  if (was.partThickness != is.partThickness)
    ChangeData(inspection, edit, [&](CGDataTypeFDD& record) {
      if (record.partThickness == was.partThickness || record.partThickness == 0)
        record.partThickness = is.partThickness;
    });
}

// ---- the group types

template <class Descriptor>
void Check(const InspectionState&, const Descriptor&, const Descriptor&, const std::string&) {}

template <>
void Check(const InspectionState& inspection,
           const CGDataTypeFDD& was,
           const CGDataTypeFDD& wanted,
           const std::string& name) {
  const auto refuse = [&](const char* why) {
    throw Error(inspection.path, name + " cannot be edited so", why);
  };
  if (ClassOfElements(was.dataClass) == gdata_CScanAmplitude &&
      was.sampleOffset != wanted.sampleOffset)
    refuse(
        "an amplitude C-scan has the sample axis of its position C-scan; change sampleOffset "
        "there");
  // Loading would put another one in its place.
  if (was.columnQuantity == 1 && was.columnResolution != wanted.columnResolution)
    refuse("a single column has no step");
  if (was.rowQuantity == 1 && was.rowResolution != wanted.rowResolution)
    refuse("a single row has no step");
}

template <class Descriptor>
GroupKind KindOf() {
  using Items = GroupItems<Descriptor>;
  using Item = std::remove_pointer_t<typename decltype(Items::List(std::declval<InspectionState&>(),
                                                                   fset_All))::value_type>;
  return {&SCFile::file_GroupTypeOf<Descriptor>(),
          [](InspectionState& inspection) {
            const auto items = Items::List(inspection, fset_All);
            return std::vector<void*>(items.begin(), items.end());
          },
          [](const void* item) -> const void* {
            return Items::Record(*static_cast<const Item*>(item));
          },
          [](InspectionState& inspection, const void* handle) {
            const Item& item = *static_cast<const Item*>(handle);
            return NameOf(inspection, item, *Items::Record(item));
          },
          [](InspectionState& inspection, void* handle, FieldTexts values) {
            Item& item = *static_cast<Item*>(handle);
            const Descriptor was = *Items::Record(item);
            Descriptor wanted = was;
            const EditableFields fields(wanted);
            for (const auto& [key, text] : values) fields[key].Set(text);
            Check(inspection, was, wanted, NameOf(inspection, item, was));
            Edit edit;
            Take(inspection, item, wanted, edit);
            Spread(inspection, was, *Items::Record(item), edit);
            return edit.Finish();
          }};
}

const auto& Kinds() {
  static const std::array kinds = {KindOf<CGChanTypeDescr>(),
                                   KindOf<CGGateTypeDescr>(),
                                   KindOf<CGProbeTypeDescr>(),
                                   KindOf<CGPatchTypeDescr>(),
                                   KindOf<CGSubchanTypeDescr>(),
                                   KindOf<CGDataTypeFDD>(),
                                   KindOf<CGInfoTypeDescr>(),
                                   KindOf<CGSpecmatTypeDescr>()};
  return kinds;
}

const GroupKind& KindOf(const SCFile::GroupTypeInfo& type) {
  for (const GroupKind& kind : Kinds())
    if (kind.type == &type) return kind;
  throw Error("", std::string(type.name), "cannot be edited");
}

InspectionState& StateOf(Inspection& inspection) {
  return static_cast<InspectionState&>(inspection.Supplier());
}

/// Whether a group holds positions of the same beam and patch, which count from the same offset.
bool HoldsPositionsOf(const CGDataTypeFDD& ascans, const CGDataTypeFDD& record) {
  return HoldsPositions(record.dataClass) && record.channelId == ascans.channelId &&
         record.subChannelId == ascans.subChannelId && record.GetPatchID() == ascans.GetPatchID() &&
         record.dataOffset == ascans.sampleOffset;
}

}  // namespace

std::vector<FieldChange> CorrectSampleOffset(const DataGroup& group,
                                             const TofdCalibration& calibration) {
  InspectionState& inspection = DataGroupInside::State(group);
  if (!group.IsListed())
    throw Error(group.Name(), "cannot be calibrated", "another data group has its ids");
  if (!calibration.isNeeded) return {};
  CIData& item = group.Item();
  const CGDataTypeFDD was = *item.idata1_GetGInfoRef();
  Edit edit;
  edit.NoteBefore(item, was);
  idata_typeInspParams params = ParamsOf(item, was);
  idata_typeTOFD tofd = GeometryOf(item, was);
  tofd.sampleOffsetCorrection = static_cast<float>(calibration.correction);
  item.idata3_ModifyTOFDParam(&tofd, &params);
  const CGDataTypeFDD& is = *item.idata1_GetGInfoRef();
  AddChanges(NameOf(inspection, item, was), Fields(was), Fields(is), edit.changes);
  ChangeData(inspection, edit, [&](CGDataTypeFDD& record) {
    if (HoldsPositionsOf(was, record)) record.sampleOffset = is.sampleOffset;
  });
  return edit.Finish();
}

const SCFile::GroupTypeInfo& GroupHandle::Type() const { return *m_kind->type; }
std::string GroupHandle::Name() const { return m_kind->name(*m_inspection, m_item); }
Fields GroupHandle::Values() const { return {*m_kind->type, m_kind->record(m_item)}; }
bool GroupHandle::IsDefault(std::string_view key) const {
  const Field is = Values()[key];
  if (&Type() != &SCFile::file_GroupTypeOf<CGDataTypeFDD>()) return false;
  const DataRow* const row = m_inspection->RowOf(static_cast<const CIData*>(m_item));
  const Field taken = Fields(row->taken)[key];
  return is.SameAs(taken) && !taken.SameAs(Fields(*row->stored)[key]);
}
std::vector<FieldChange> GroupHandle::Change(FieldTexts values) const {
  return m_kind->change(*m_inspection, m_item, values);
}

std::vector<const SCFile::GroupTypeInfo*> EditableTypes() {
  std::vector<const SCFile::GroupTypeInfo*> types;
  for (const GroupKind& kind : Kinds()) types.push_back(kind.type);
  return types;
}

std::vector<GroupHandle> EditableGroups(Inspection& inspection, const SCFile::GroupTypeInfo& type) {
  const GroupKind& kind = KindOf(type);
  std::vector<GroupHandle> groups;
  for (void* item : kind.list(StateOf(inspection)))
    groups.emplace_back(StateOf(inspection), kind, item);
  return groups;
}

GroupHandle EditableGroup(Inspection& inspection, const DataGroup& group) {
  if (!group.IsListed())
    throw Error(inspection.Path(),
                "its data group " + std::to_string(group.Index()) + " cannot be edited",
                "another data group has its ids");
  return {StateOf(inspection), KindOf(SCFile::file_GroupTypeOf<CGDataTypeFDD>()), &group.Item()};
}

}  // namespace utdata
