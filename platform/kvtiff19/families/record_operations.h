// The operations of a family, each generated from its field table. The functions at the boundary
// are defined with the macros at the end; none of them throws.
#pragma once

#include <bitset>
#include <new>
#include <string>

#include "platform/kvtiff19/families/field_table.h"
#include "platform/kvtiff19/guard.h"

namespace utdata::kvtiff19 {

/// Reads the items of one group into a record. Items come in the order of the table as a rule, so
/// that one pass over the table takes them all; whatever order they have, each pass takes or skips
/// one at least.
template <class Record>
class RecordReader {
 public:
  RecordReader(const SCFile::Node& group, Record& record)
      : m_walk(group), m_record(record), m_count(m_walk.Left()) {}

  /// Calls `other` with the item and its index for each item whose code is no field's. False when
  /// an item does not fit its field or a field comes twice.
  template <class Other>
  bool Read(Other&& other) {
    while (m_walk.Left() > 0 && m_good) {
      const std::uint32_t before = m_walk.Left();
      Pass(std::make_index_sequence<fieldCount<Record>>{});
      if (!m_good || m_walk.Left() == 0 || m_walk.Left() != before) continue;
      m_walk.Next(m_item);
      m_good = other(m_item, m_count - before);
    }
    return m_good;
  }

 private:
  template <std::size_t... index>
  void Pass(std::index_sequence<index...>) {
    (Take<index>(), ...);
  }

  template <std::size_t index>
  void Take() {
    static constexpr auto& field = std::get<index>(FieldTable<Record>::fields);
    using Codec = typename std::remove_cvref_t<decltype(field)>::Codec;
    static constexpr ValueShape shape = Codec::shape;
    if constexpr (constexpr ItemRule rule = field.Rule(); rule.numberHead != noNumber) {
      if (const std::byte* number = m_walk.NextNumber(rule.numberHead)) [[likely]] {
        Codec::Decode(number, m_record.*field.member);
        m_good = m_good && !m_seen[index];
        m_seen[index] = true;
        return;
      }
    }
    if (m_walk.Left() == 0 || m_walk.Code() != field.code || !m_good) return;
    m_walk.Next(m_item);
    m_good = m_item.type == shape.type && m_item.count >= shape.minCount &&
             m_item.count <= shape.maxCount && m_item.count % shape.multipleOf == 0 &&
             !m_seen[index] && Codec::Decode(m_item, m_record.*field.member);
    m_seen[index] = true;
  }

  ItemWalk m_walk;
  Record& m_record;
  std::uint32_t m_count;  // of items
  StoredItem m_item{};    // the last one taken that is not one number of four bytes
  std::bitset<fieldCount<Record>> m_seen;
  bool m_good = true;
};

inline void SetGroup(CGDataTypeFDD& record, SCFile::GroupHandle group) {
  record.SetGroupHandle(group);
}
template <class Record>
void SetGroup(Record& record, SCFile::GroupHandle group) {
  record.group = group;
}

/// Reads a group into `next` and, when all of it fits, moves that into the descriptor.
template <class Record, class Other>
int ReadRecord(SCFile::GroupHandle group, Record next, Record& descriptor, Other&& other) {
  if (!RecordReader<Record>(*group, next).Read(other))
    return Fail(SCFile::status_Damaged, "an item does not fit its group's type");
  SetGroup(next, group);
  descriptor = std::move(next);
  return SCFile::status_Ok;
}

/// As ReadRecord, over a copy of the descriptor, and skips what is no field's.
template <class Record>
int ReadRecordOver(SCFile::GroupHandle group, Record* descriptor) noexcept {
  if (!group || !descriptor)
    return Fail(SCFile::status_BadArgument, "no group to read, or no descriptor to fill");
  return Guarded([&] {
    return ReadRecord(
        group, *descriptor, *descriptor, [](const StoredItem&, std::uint32_t) { return true; });
  });
}

/// Appends one field's value. A failure also fails the file's next commit.
template <class Row, class Record>
int WriteField(SCFile::Node& group, const Row& field, const Record& record, std::string& scratch) {
  const std::optional<EncodedValue> value = Row::Codec::Encode(record.*field.member, scratch);
  if (!value || value->count > anyCount) {
    const int status = value ? SCFile::status_TooLarge : SCFile::status_BadText;
    MarkFailed(group, status);
    return Fail(
        status,
        "field " + std::string(field.name) + (value ? " has too many elements" : " is not a text"));
  }
  return AppendItem(group,
                    field.code,
                    Row::Codec::shape.type,
                    static_cast<std::uint32_t>(value->count),
                    value->data);
}

/// Writes every field, or with a base the keys and what differs from it; the first failure ends it.
template <class Record>
int WriteFields(SCFile::Node& group, const Record* base, const Record& descriptor) {
  std::string scratch;
  int status = SCFile::status_Ok;
  ForEachField<Record>([&](const auto& field) {
    using Codec = typename std::remove_cvref_t<decltype(field)>::Codec;
    if (status != SCFile::status_Ok) return;
    if (base && !field.form.IsKey() && Codec::Same(base->*field.member, descriptor.*field.member))
      return;
    status = WriteField(group, field, descriptor, scratch);
  });
  return status;
}

template <class Record>
int WriteRecord(SCFile::GroupHandle group, const Record* base, const Record* descriptor) noexcept {
  if (!group) return Fail(SCFile::status_BadArgument, "no group to write to");
  if (!descriptor) {
    MarkFailed(*group, SCFile::status_BadArgument);
    return Fail(SCFile::status_BadArgument, "no descriptor to write");
  }
  return Guarded([&] { return WriteFields(*group, base, *descriptor); }, group->file);
}

template <class Record>
bool SameFields(const Record& a, const Record& b) {
  bool same = true;
  ForEachField<Record>([&](const auto& field) {
    using Codec = typename std::remove_cvref_t<decltype(field)>::Codec;
    same = same && Codec::Same(a.*field.member, b.*field.member);
  });
  return same;
}

template <class Record>
void EmptyFields(Record& record) {
  ForEachField<Record>([&](const auto& field) {
    std::remove_cvref_t<decltype(field)>::Codec::Empty(record.*field.member);
  });
}

/// The values of the keys, in the order of the table.
template <class Record>
SCFile::GroupIdentity IdentityOf(const Record& record) {
  SCFile::GroupIdentity identity;
  std::size_t count = 0;
  ForEachField<Record>([&](const auto& field) {
    using Member = typename std::remove_cvref_t<decltype(field)>::Member;
    if constexpr (std::is_same_v<Member, std::uint32_t> || std::is_enum_v<Member>) {
      if (field.form.role == SCFile::FieldRole::Kind)
        identity.kind = record.*field.member;
      else if (field.form.IsKey())
        identity.ids[count++] = record.*field.member;
    }
  });
  return identity;
}

/// A new record, named where it has a name; null when there is no memory.
template <class Record>
Record* AllocateRecord(const wchar_t* name) noexcept {
  try {
    auto record = std::make_unique<Record>();
    if constexpr (requires { record->name; })
      if (name) record->name = name;
    return record.release();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

template <class Record>
void DeleteRecord(Record* descriptor, int whole) {
  if (whole)
    delete descriptor;
  else if (descriptor)
    EmptyFields(*descriptor);
}

template <class Record>
int DuplicateRecord(Record* target, const Record* source) noexcept {
  if (!target || !source)
    return Fail(SCFile::status_BadArgument, "no descriptor to copy, or none to copy to");
  return Guarded([&] {
    *target = Record(*source);
    return SCFile::status_Ok;
  });
}

/// The format layer calls nobody back: whoever passes a callback expects what will not happen.
template <class... Callback>
int InitFamily(Callback... callback) {
  if ((callback || ...)) return Fail(SCFile::status_BadArgument, "callbacks are not supported");
  return SCFile::status_Ok;
}

}  // namespace utdata::kvtiff19

/// Defines what every family but the data groups has; READ and DUPLICATE are for those that have
/// them in this form.
#define UTDATA_DEFINE_FAMILY(prefix, Descriptor)                                         \
  static_assert(utdata::kvtiff19::IsWellFormedTable<Descriptor>());                      \
  static_assert(utdata::kvtiff19::CoversRecord<Descriptor>(),                            \
                "a member of the record is missing in its table");                       \
  int prefix##_Init(SCFile::LockCallback lock,                                           \
                    SCFile::LockCallback unlock,                                         \
                    SCFile::AllocCallback alloc,                                         \
                    SCFile::FreeCallback free,                                           \
                    SCFile::ErrorCallback error) {                                       \
    return utdata::kvtiff19::InitFamily(lock, unlock, alloc, free, error);               \
  }                                                                                      \
  Descriptor* prefix##_Allocate(int, const wchar_t* name) {                              \
    return utdata::kvtiff19::AllocateRecord<Descriptor>(name);                           \
  }                                                                                      \
  void prefix##_Delete(Descriptor* descriptor, int whole) {                              \
    utdata::kvtiff19::DeleteRecord(descriptor, whole);                                   \
  }                                                                                      \
  int prefix##_WriteGroupInfo(                                                           \
      SCFile::GroupHandle group, const Descriptor* base, const Descriptor* descriptor) { \
    return utdata::kvtiff19::WriteRecord(group, base, descriptor);                       \
  }                                                                                      \
  bool operator==(const Descriptor& a, const Descriptor& b) {                            \
    return utdata::kvtiff19::SameFields(a, b);                                           \
  }                                                                                      \
  SCFile::GroupIdentity SCFile::file_Identity(const Descriptor& descriptor) {            \
    return utdata::kvtiff19::IdentityOf(descriptor);                                     \
  }
#define UTDATA_DEFINE_FAMILY_READ(prefix, Descriptor)                             \
  int prefix##_ReadGroupInfo(SCFile::GroupHandle group, Descriptor* descriptor) { \
    return utdata::kvtiff19::ReadRecordOver(group, descriptor);                   \
  }
#define UTDATA_DEFINE_FAMILY_DUPLICATE(prefix, Descriptor)               \
  int prefix##_Duplicate(Descriptor* target, const Descriptor* source) { \
    return utdata::kvtiff19::DuplicateRecord(target, source);            \
  }
