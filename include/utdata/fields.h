// The fields of group descriptors by their names: read, shown and changed without knowing the
// descriptor's class. Which fields there are, with their units, ranges, choices and meanings, is
// the catalogue's (SCFile::file_GroupTypes).
//
// Numbers are in stored units (metres, seconds); texts are UTF-8, as people write and read them, in
// the units of the trade ("12.5 mm"). What a field does not take, and a name that there is not, is
// thrown as Error: `What` is the field's name, `Why` says what is wrong on one line.
//
// Nothing here takes a lock or owns a descriptor: one is used by one thread at a time, and has to
// outlive what refers to it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "interfaces/export.h"
#include "interfaces/kvtiff19_catalogue.h"

namespace utdata {

/// A number in stored units, or a text.
using FieldValue = std::variant<double, std::string>;

/// One field of one descriptor.
class UTDATA_API Field {
 public:
  /// @param group a descriptor of that type
  Field(const SCFile::GroupTypeInfo& type, const SCFile::FieldInfo& info, const void* group)
      : m_type(&type), m_info(&info), m_group(group) {}

  [[nodiscard]] const SCFile::FieldInfo& Info() const { return *m_info; }
  [[nodiscard]] std::string Key() const { return std::string(m_info->key); }
  /// That in which it is shown; of a field on an axis the one that its group says.
  [[nodiscard]] const SCFile::FieldUnit& Unit() const;

  [[nodiscard]] double Number() const;                ///< throws when it is no number
  [[nodiscard]] std::string Text() const;             ///< throws when it is no text
  [[nodiscard]] std::vector<double> Numbers() const;  ///< throws when it is not several numbers

  /// The number or text; of several numbers what Show gives.
  [[nodiscard]] FieldValue Value() const;
  /// As people read it: "12.5 mm", "negative", "0x00FF80", a text in quotes.
  /// @param digits significant ones of a quantity
  [[nodiscard]] std::string Show(int digits = 6) const;
  /// What it takes: "0 to 1000 µs", "no, yes".
  [[nodiscard]] std::string Range() const;
  /// Whether a number is within the range, or one of the choices.
  [[nodiscard]] bool Takes(double number) const;
  /// Whether the same field of another descriptor has the same value. A NaN is the same as another.
  [[nodiscard]] bool SameAs(const Field& other) const;

 protected:
  /// The failure of a value that it does not take.
  [[noreturn]] void Refuse(const std::string& why) const;

  const SCFile::GroupTypeInfo* m_type;
  const SCFile::FieldInfo* m_info;
  const void* m_group;
};

/// The same, to be changed. A value that is refused leaves the field as it was.
class UTDATA_API EditableField : public Field {
 public:
  EditableField(const SCFile::GroupTypeInfo& type, const SCFile::FieldInfo& info, void* group)
      : Field(type, info, group), m_changed(group) {}

  void Set(double number) const;
  void Set(std::span<const double> numbers) const;
  /// As Show writes it, without unit and quotes. A choice by its name; a colour may be hexadecimal.
  void Set(const std::string& text) const;

 private:
  void CheckEditable() const;

  void* m_changed;
};

/// The fields of one descriptor.
class UTDATA_API Fields {
 public:
  template <class Descriptor>
  explicit Fields(const Descriptor& group)
      : Fields(SCFile::file_GroupTypeOf<Descriptor>(), &group) {}
  /// @param group a descriptor of that type
  Fields(const SCFile::GroupTypeInfo& type, const void* group) : m_type(&type), m_group(group) {}

  [[nodiscard]] const SCFile::GroupTypeInfo& Type() const { return *m_type; }
  /// In the order of the catalogue, without samples.
  [[nodiscard]] std::vector<Field> All() const;
  /// Throws Error, with names like that one, when there is no such field.
  [[nodiscard]] Field operator[](std::string_view key) const;

  /// The ids that name the group, its own first: ("gate", 1), ("channel", 0). None of a type that
  /// an inspection has one group of.
  [[nodiscard]] std::vector<std::pair<std::string, std::uint32_t>> Ids() const;
  /// "gate 1 of channel 0", "A-scan of channel 0, sub-channel 0, gate 0, patch 0"; of a type
  /// without ids its name.
  [[nodiscard]] std::string Name() const;

 protected:
  const SCFile::GroupTypeInfo* m_type;
  const void* m_group;
};

/// The same, to be changed.
class UTDATA_API EditableFields : public Fields {
 public:
  template <class Descriptor>
  explicit EditableFields(Descriptor& group) : Fields(group), m_changed(&group) {}

  [[nodiscard]] EditableField operator[](std::string_view key) const;

 private:
  void* m_changed;
};

/// What a value of a field with choices is called; empty for one without a name.
[[nodiscard]] UTDATA_API std::string ChoiceName(const SCFile::FieldInfo& field, double value);

}  // namespace utdata
