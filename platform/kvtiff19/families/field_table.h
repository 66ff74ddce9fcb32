// A group descriptor as one table of its fields. FieldTable<Record> is specialised per descriptor
// and holds `fields`, a tuple of rows in the order in which they are stored; everything that is
// done with fields comes from it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "platform/kvtiff19/families/field_forms.h"
#include "platform/kvtiff19/families/value_codec.h"

namespace utdata::kvtiff19 {

template <class Record>
struct FieldTable;

/// One row. An item code is never given to another field.
template <class Owner, class Type>
struct Field {
  using Member = Type;
  using Codec = ValueCodec<Type>;

  std::uint16_t code;
  Type Owner::*member;
  std::string_view name;  ///< of the member
  SCFile::FieldForm form;
  std::string_view meaning;

  [[nodiscard]] constexpr ItemRule Rule() const {
    constexpr ValueShape shape = Codec::shape;
    return {
        code, shape.type, shape.minCount, shape.maxCount, shape.multipleOf, shape.maxCharacters};
  }
};

/// A row of the table of `Record`, named so inside a specialisation of FieldTable.
#define UTDATA_FIELD(code, member, form, meaning)               \
  ::utdata::kvtiff19::Field<Record, decltype(Record::member)> { \
    code, &Record::member, #member, form, meaning               \
  }

template <class Record>
inline constexpr std::size_t fieldCount = std::tuple_size_v<decltype(FieldTable<Record>::fields)>;

/// Calls `visit` with each row, in order.
template <class Record, class Visitor>
constexpr void ForEachField(Visitor&& visit) {
  std::apply([&](const auto&... field) { (visit(field), ...); }, FieldTable<Record>::fields);
}

/// Whether a form can be that of a member.
template <class Type>
constexpr bool FitsForm(SCFile::FieldKind kind) {
  using SCFile::FieldKind;
  if (ValueCodec<Type>::shape.type == SCFile::value_Text) return kind == FieldKind::Text;
  if (!std::is_arithmetic_v<Type> && !std::is_enum_v<Type>) return kind == FieldKind::Numbers;
  if (std::is_floating_point_v<Type>) return kind == FieldKind::Quantity;
  return kind == FieldKind::Whole || kind == FieldKind::Choice || kind == FieldKind::Color;
}

/// Whether codes ascend from 1 or more, no name comes twice, and every form fits its member.
template <class Record>
constexpr bool IsWellFormedTable() {
  std::array<std::string_view, fieldCount<Record>> names{};
  std::size_t count = 0;
  std::uint16_t last = 0;
  bool good = true;
  ForEachField<Record>([&](const auto& field) {
    using Member = typename std::remove_cvref_t<decltype(field)>::Member;
    good = good && field.code > last && FitsForm<Member>(field.form.kind);
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

}  // namespace utdata::kvtiff19
