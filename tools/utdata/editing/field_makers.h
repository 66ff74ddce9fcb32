// How a row of a table of fields is made of a record's member. For the sources that define such
// tables only.
#pragma once

#include "editing/edit_fields.h"

namespace utdata::program {

template <class>
struct MemberOf;
template <class Owner, class Held>
struct MemberOf<Held Owner::*> {
  using Record = Owner;
  using Value = Held;
};

/// A number of the record, stored in base units.
template <auto member>
constexpr auto NumberField(EditKind kind,
                           const char* key,
                           EditUnit unit,
                           double minimum,
                           double maximum) {
  using Record = typename MemberOf<decltype(member)>::Record;
  using Value = typename MemberOf<decltype(member)>::Value;
  RecordField<Record> field;
  field.key = key;
  field.kind = kind;
  field.unit = unit;
  field.minimum = minimum;
  field.maximum = maximum;
  field.get = [](const Record& record) { return static_cast<double>(record.*member); };
  field.set = [](Record& record, double value) {
    if constexpr (std::is_enum_v<Value>)
      record.*member = static_cast<Value>(static_cast<std::underlying_type_t<Value>>(value));
    else
      record.*member = static_cast<Value>(value);
  };
  return field;
}

template <auto member>
constexpr auto Quantity(const char* key, EditUnit unit, double minimum, double maximum) {
  return NumberField<member>(EditKind::Quantity, key, unit, minimum, maximum);
}

/// A quantity on an axis of the group.
template <auto member>
constexpr auto OnAxis(const char* key,
                      kvt_enumUnits MemberOf<decltype(member)>::Record::*axisUnit,
                      double minimum,
                      double maximum) {
  auto field = Quantity<member>(key, {"", 1}, minimum, maximum);
  field.onAxis = true;
  field.axisUnit = axisUnit;
  return field;
}

template <auto member>
constexpr auto Whole(const char* key, double minimum, double maximum, EditUnit unit = {"", 1}) {
  return NumberField<member>(EditKind::Whole, key, unit, minimum, maximum);
}

template <auto member>
constexpr auto Color(const char* key) {
  return NumberField<member>(EditKind::Color, key, {"", 1}, 0, 0xFFFFFF);
}

/// One of some names; each stands at the place that is its stored value.
template <auto member>
constexpr auto Choice(const char* key, std::span<const char* const> choices) {
  auto field = NumberField<member>(EditKind::Choice, key, {"", 1}, 0, 0);
  field.choices = choices;
  return field;
}

template <auto member>
constexpr auto Text(const char* key) {
  RecordField<typename MemberOf<decltype(member)>::Record> field;
  field.key = key;
  field.text = member;
  return field;
}

inline constexpr EditUnit millimetre = {"mm", 1e-3};
inline constexpr EditUnit microsecond = {"µs", 1e-6};
inline constexpr EditUnit degree = {"°", 1};
inline constexpr EditUnit percent = {"%", 1};
inline constexpr EditUnit decibel = {"dB", 1};
inline constexpr EditUnit decibelPerMetre = {"dB/m", 1};
inline constexpr EditUnit metrePerSecond = {"m/s", 1};
inline constexpr EditUnit millimetrePerSecond = {"mm/s", 1e-3};
inline constexpr EditUnit megahertz = {"MHz", 1e6};
inline constexpr EditUnit hertz = {"Hz", 1};
inline constexpr EditUnit volt = {"V", 1};
inline constexpr EditUnit kilogramPerCubicMetre = {"kg/m³", 1};
inline constexpr EditUnit celsius = {"°C", 1};
inline constexpr EditUnit second = {"s", 1};
inline constexpr EditUnit none = {"", 1};

inline constexpr double farthest = 1e6;  // mm, µs
inline constexpr double largestId = 0xFFFFFFFEU;
inline constexpr double largestLevel = 1000;  // percent

/// A row of a table: the key is the member's name.
#define UTDATA_EDIT(form, member, ...) form<&Record::member>(#member __VA_OPT__(, ) __VA_ARGS__)

}  // namespace utdata::program
