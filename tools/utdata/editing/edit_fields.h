// The fields of groups that `edit` shows and changes: one table per group type, which drives
// parsing, printing, the listing of keys and the help text. Keys are the fields' names as `tree`
// prints them; the ids of a group are not among them, since they say which it is.
#pragma once

#include <cmath>
#include <nlohmann/json.hpp>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "interfaces/kvtiff19.h"
#include "terminal/output.h"
#include "terminal/text.h"

namespace utdata::program {

/// A unit of the user's, and how many base units one of it is.
struct EditUnit {
  const char* name;
  double scale;
};

enum class EditKind { Quantity, Whole, Color, Choice, Text };

/// What a value of a field looks like, whatever group it belongs to.
struct EditField {
  const char* key = nullptr;
  EditKind kind = EditKind::Text;
  EditUnit unit = {"", 1};
  double minimum = 0;  ///< in the unit
  double maximum = 0;  ///< in the unit
  std::span<const char* const> choices = {};
  bool onAxis = false;  ///< the unit is that of an axis of the group
};

template <class Record>
struct RecordField : EditField {
  double (*get)(const Record&) = nullptr;     ///< base units
  void (*set)(Record&, double) = nullptr;     ///< base units
  std::wstring Record::*text = nullptr;       ///< of a text
  kvt_enumUnits Record::*axisUnit = nullptr;  ///< of a field on an axis
};

/// A value that a field does not take; what() says why on one line.
struct WrongValue : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The user's unit on an axis whose base unit is `units`.
[[nodiscard]] EditUnit UnitOnAxis(kvt_enumUnits units);

/// The value that a text names, in base units. Throws WrongValue.
[[nodiscard]] double ParseValue(const EditField& field,
                                const EditUnit& unit,
                                const std::string& text);

/// A value in base units as the user writes it, with its unit. @param digits significant ones
[[nodiscard]] std::string ShowValue(const EditField& field,
                                    const EditUnit& unit,
                                    double value,
                                    int digits);

/// What the field takes: "0 to 1000 µs", "no, yes".
[[nodiscard]] std::string RangeText(const EditField& field, const EditUnit& unit);

/// "gate: name, start (µs), ..." in lines that fit a page.
[[nodiscard]] std::string KeysText(const std::string& group, std::span<const EditField> fields);

/// The fields of a type that can be edited, in the order of the record.
[[nodiscard]] std::span<const RecordField<CGChanTypeDescr>> EditFields(const CGChanTypeDescr*);
[[nodiscard]] std::span<const RecordField<CGSubchanTypeDescr>> EditFields(
    const CGSubchanTypeDescr*);
[[nodiscard]] std::span<const RecordField<CGGateTypeDescr>> EditFields(const CGGateTypeDescr*);
[[nodiscard]] std::span<const RecordField<CGProbeTypeDescr>> EditFields(const CGProbeTypeDescr*);
[[nodiscard]] std::span<const RecordField<CGPatchTypeDescr>> EditFields(const CGPatchTypeDescr*);
[[nodiscard]] std::span<const RecordField<CGInfoTypeDescr>> EditFields(const CGInfoTypeDescr*);
[[nodiscard]] std::span<const RecordField<CGSpecmatTypeDescr>> EditFields(
    const CGSpecmatTypeDescr*);
[[nodiscard]] std::span<const RecordField<CGDataTypeFDD>> EditFields(const CGDataTypeFDD*);

template <class Record>
std::string KeysText(const std::string& group) {
  const auto fields = EditFields(static_cast<const Record*>(nullptr));
  return KeysText(group, std::vector<EditField>(fields.begin(), fields.end()));
}

template <class Record>
EditUnit UnitOf(const RecordField<Record>& field, const Record& record) {
  return field.onAxis ? UnitOnAxis(record.*field.axisUnit) : field.unit;
}

/// Gives the field of a record the value that a text names. Throws WrongValue, or Failure for a
/// text that is not UTF-8.
template <class Record>
void Assign(const RecordField<Record>& field, Record& record, const std::string& text) {
  if (field.text)
    record.*field.text = ToWide(text);
  else
    field.set(record, ParseValue(field, UnitOf(field, record), text));
}

template <class Record>
std::string Shown(const RecordField<Record>& field, const Record& record, int digits = 6) {
  if (field.text) return "\"" + ToUtf8(record.*field.text) + "\"";
  return ShowValue(field, UnitOf(field, record), field.get(record), digits);
}

template <class Record>
bool Differs(const RecordField<Record>& field, const Record& before, const Record& after) {
  if (field.text) return before.*field.text != after.*field.text;
  const double was = field.get(before), is = field.get(after);
  return was != is && !(std::isnan(was) && std::isnan(is));
}

/// The field's value in base units.
template <class Record>
nlohmann::ordered_json ValueJson(const RecordField<Record>& field, const Record& record) {
  if (field.text) return ToUtf8(record.*field.text);
  const double value = field.get(record);
  if (field.kind == EditKind::Quantity) return JsonNumber(static_cast<float>(value));
  return static_cast<std::int64_t>(value);
}

}  // namespace utdata::program
