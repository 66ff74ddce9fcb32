// Changes of groups by the names of their fields, as people make them, and what else has to change
// with them so that an inspection agrees with itself.
//
// A channel has one sound speed: where it changes, on the channel or on one of its data groups, the
// channel and all its data groups take the new one, whatever they had before, so that no path is
// measured with another. The speeds of the specimen's material are those of the material as such
// and stay.
//
// A part may be thicker in one place than in another: a thickness that changes on a data group is
// taken by the data groups that had the same one, or none (0). The specimen's dimensions stay: a
// modification of them is not read back.
//
// A channel is one of time-of-flight diffraction, or it is not: where `tofd` changes, the channel
// and all its data groups take the new one. Their bookmark types stay; their items choose the unit
// of samples that items made with that flag have. A probe separation is taken by the data groups of
// the same beam that had the same one, or none; of the channel's own beam by the channel too, and
// from it.
//
// The refracted angle and skew of a channel are taken by its data groups without a sub-channel,
// those of a sub-channel by its data groups, where they had the same value and can hold the new
// one.
//
// One thread at a time. Nothing here saves.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "utdata/fields.h"
#include "utdata/inspection.h"

namespace utdata {

struct GroupKind;

/// A field that a change has given another value.
struct FieldChange {
  std::string group;  ///< its name: GroupHandle::Name, in a history HistoryEvent::group
  const SCFile::FieldInfo* field = nullptr;
  FieldValue before;
  FieldValue after;
  std::string shownBefore;  ///< with the unit, and as many digits as distinguish the two
  std::string shownAfter;
};

/// New values as (key, text), each text as Field::Show writes it, without unit and quotes.
using FieldTexts = std::span<const std::pair<std::string, std::string>>;

/// One group of an inspection that can be changed. Good while the inspection lives.
class UTDATA_API GroupHandle {
 public:
  GroupHandle(InspectionState& inspection, const GroupKind& kind, void* item)
      : m_inspection(&inspection), m_kind(&kind), m_item(item) {}

  [[nodiscard]] const SCFile::GroupTypeInfo& Type() const;
  /// "gate 1 of channel 0", of a data group "C 1 G1 C-scan position"; of a type without ids its
  /// name.
  [[nodiscard]] std::string Name() const;
  /// They show what the group holds at the time when they are asked.
  [[nodiscard]] Fields Values() const;
  /// Whether a value of a data group is one that loading has put in place of the file's, which is
  /// missing or cannot be meant: a default, not a measurement. False for other types, and once it
  /// was changed. Throws Error when there is no such field.
  [[nodiscard]] bool IsDefault(std::string_view key) const;

  /// Gives several fields other values, and the fields of other groups that agree with them.
  /// Throws Error, and changes nothing, when there is no such field or it does not take its value
  /// (`What` is then the field's key), or for the sample offset of an amplitude C-scan, which
  /// follows that of its position C-scan.
  /// @return what has changed, this group's fields first; empty when all values were there already
  std::vector<FieldChange> Change(FieldTexts values) const;

 private:
  InspectionState* m_inspection;
  const GroupKind* m_kind;
  void* m_item;
};

/// The types whose groups can be changed: channels, gates, probes, patches, sub-channels, data
/// groups, general information and the specimen's material. General information is read from the
/// first file only: a change of it is to be saved as a new file (GroupTypeRow::isModified).
[[nodiscard]] UTDATA_API std::vector<const SCFile::GroupTypeInfo*> EditableTypes();

/// The groups of such a type in the order of the file set.
[[nodiscard]] UTDATA_API std::vector<GroupHandle> EditableGroups(Inspection& inspection,
                                                                 const SCFile::GroupTypeInfo& type);

/// Throws Error for a group that the file set does not hold.
[[nodiscard]] UTDATA_API GroupHandle EditableGroup(Inspection& inspection, const DataGroup& group);

}  // namespace utdata
