// A group descriptor as one table of its fields. FieldTable<Record> is specialised per descriptor
// and holds `fields`, a tuple of rows in the order in which they are stored; everything a family
// does comes from it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "platform/kvtiff19/families/value_codec.h"

namespace utdata::kvtiff19 {

template <class Record>
struct FieldTable;

enum class FieldRole : std::uint8_t {
  Value,
  Key  ///< identifies the record: written even where it equals the base's
};

/// One row: the item code under which a member is stored. A code is never given to another field.
template <class Owner, class Type>
struct Field {
  using Member = Type;
  using Codec = ValueCodec<Type>;

  std::uint16_t code;
  FieldRole role;
  Type Owner::*member;
  std::string_view name;
  std::string_view note;  ///< unit or meaning, for the page of group types

  [[nodiscard]] constexpr ItemRule Rule() const {
    constexpr ValueShape shape = Codec::shape;
    return {
        code, shape.type, shape.minCount, shape.maxCount, shape.multipleOf, shape.maxCharacters};
  }
};

template <class Owner, class Type>
constexpr Field<Owner, Type> MakeField(std::uint16_t code,
                                       FieldRole role,
                                       Type Owner::*member,
                                       std::string_view name,
                                       std::string_view note) {
  return {code, role, member, name, note};
}

/// Rows of the table of `Record`, named so inside a specialisation of FieldTable.
#define UTDATA_FIELD(code, member, note) \
  ::utdata::kvtiff19::MakeField(         \
      code, ::utdata::kvtiff19::FieldRole::Value, &Record::member, #member, note)
#define UTDATA_KEY(code, member, note) \
  ::utdata::kvtiff19::MakeField(       \
      code, ::utdata::kvtiff19::FieldRole::Key, &Record::member, #member, note)

template <class Record>
inline constexpr std::size_t fieldCount = std::tuple_size_v<decltype(FieldTable<Record>::fields)>;

/// Calls `visit` with each row, in order.
template <class Record, class Visitor>
constexpr void ForEachField(Visitor&& visit) {
  std::apply([&](const auto&... field) { (visit(field), ...); }, FieldTable<Record>::fields);
}

/// Whether codes ascend from 1 or more and no name comes twice.
template <class Record>
constexpr bool IsWellFormedTable() {
  std::array<std::string_view, fieldCount<Record>> names{};
  std::size_t count = 0;
  std::uint16_t last = 0;
  bool good = true;
  ForEachField<Record>([&](const auto& field) {
    good = good && field.code > last;
    last = field.code;
    for (std::size_t index = 0; index < count; ++index) good = good && names[index] != field.name;
    names[count++] = field.name;
  });
  return good;
}

/// Initialises a member of any type; used unevaluated, to count the members of an aggregate.
struct AnyMember {
  std::size_t index;
  template <class Type>
  constexpr operator Type() const noexcept;
};

template <class Record, std::size_t... index>
constexpr bool TakesMembers(std::index_sequence<index...>) {
  return requires { Record{AnyMember{index}...}; };
}

/// Whether an aggregate has exactly `quantity` members.
template <class Record, std::size_t quantity>
inline constexpr bool hasMembers = TakesMembers<Record>(std::make_index_sequence<quantity>{}) &&
                                   !TakesMembers<Record>(std::make_index_sequence<quantity + 1>{});

/// A record with a member that its table misses would lose it on writing. Of the members, only
/// `group` and `stored` are not stored. The data group's record is a class with private members and
/// is checked member by member in its test.
template <class Record>
constexpr bool CoversRecord() {
  if constexpr (std::is_aggregate_v<Record>)
    return hasMembers<Record, fieldCount<Record> + 1 + (requires(Record r) { r.stored; } ? 1 : 0)>;
  else
    return true;
}

/// The rules of a table's items, in order.
template <class Record>
constexpr std::array<ItemRule, fieldCount<Record>> RulesOfFields() {
  std::array<ItemRule, fieldCount<Record>> rules{};
  std::size_t count = 0;
  ForEachField<Record>([&](const auto& field) { rules[count++] = field.Rule(); });
  return rules;
}

}  // namespace utdata::kvtiff19
