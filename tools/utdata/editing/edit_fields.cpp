#include "editing/edit_fields.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <optional>

namespace utdata::program {
namespace {

std::string Digits(double value, int digits) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%.*g", digits, value == 0 ? 0.0 : value);
  return text.data();
}

std::string WithUnit(const std::string& number, const EditUnit& unit) {
  const std::string name = unit.name;
  return number + (name.empty() || name.starts_with("°") ? "" : " ") + name;
}

/// The whole text as a number; a colour may be hexadecimal.
std::optional<double> ToNumber(const EditField& field, const std::string& text) {
  const char* const end = text.data() + text.size();
  if (field.kind == EditKind::Color && (text.starts_with("0x") || text.starts_with("0X"))) {
    std::uint32_t color = 0;
    const auto [at, error] = std::from_chars(text.data() + 2, end, color, 16);
    if (error != std::errc() || at != end) return std::nullopt;
    return color;
  }
  double value = 0;
  const auto [at, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || at != end) return std::nullopt;
  return value;
}

std::string JoinChoices(const EditField& field) {
  std::string text;
  for (const char* choice : field.choices) text += (text.empty() ? "" : ", ") + std::string(choice);
  return text;
}

}  // namespace

EditUnit UnitOnAxis(kvt_enumUnits units) {
  switch (units) {
    case kvt_UnitSecond:
      return {"µs", 1e-6};
    case kvt_UnitMetre:
      return {"mm", 1e-3};
    case kvt_UnitDegree:
      return {"°", 1};
    case kvt_UnitPercent:
      return {"%", 1};
    case kvt_UnitDecibel:
      return {"dB", 1};
    case kvt_UnitVolt:
      return {"V", 1};
    case kvt_UnitNone:
      break;
  }
  return {"", 1};
}

double ParseValue(const EditField& field, const EditUnit& unit, const std::string& text) {
  if (field.kind == EditKind::Choice) {
    const auto found = std::find(field.choices.begin(), field.choices.end(), text);
    if (found != field.choices.end()) return static_cast<double>(found - field.choices.begin());
    throw WrongValue("'" + text + "' is none of " + JoinChoices(field));
  }
  const std::optional<double> number = ToNumber(field, text);
  if (!number) throw WrongValue("'" + text + "' is not a number");
  const bool within = *number >= field.minimum && *number <= field.maximum;
  if (!within) throw WrongValue("'" + text + "' is not within " + RangeText(field, unit));
  if (field.kind != EditKind::Quantity && *number != std::floor(*number))
    throw WrongValue("'" + text + "' is not a whole number");
  return *number * unit.scale;
}

std::string ShowValue(const EditField& field, const EditUnit& unit, double value, int digits) {
  switch (field.kind) {
    case EditKind::Choice: {
      const bool known = value >= 0 && value < static_cast<double>(field.choices.size());
      return known ? field.choices[static_cast<std::size_t>(value)] : Digits(value, 15);
    }
    case EditKind::Color: {
      std::array<char, 16> text{};
      std::snprintf(text.data(), text.size(), "0x%06X", static_cast<unsigned>(value));
      return text.data();
    }
    case EditKind::Whole:
      return WithUnit(Digits(value, 15), unit);
    case EditKind::Quantity:
    case EditKind::Text:
      break;
  }
  return WithUnit(Digits(value / unit.scale, digits), unit);
}

std::string RangeText(const EditField& field, const EditUnit& unit) {
  switch (field.kind) {
    case EditKind::Text:
      return "text";
    case EditKind::Choice:
      return JoinChoices(field);
    case EditKind::Color:
      return "0x000000 to 0xFFFFFF";
    case EditKind::Quantity:
    case EditKind::Whole:
      break;
  }
  return WithUnit(Digits(field.minimum, 15) + " to " + Digits(field.maximum, 15), unit);
}

std::string KeysText(const std::string& group, std::span<const EditField> fields) {
  constexpr std::size_t width = 116;
  std::string text, line = "  " + group + ":";
  for (const EditField& field : fields) {
    const std::string unit = field.onAxis ? "mm or °" : field.unit.name;
    const std::string key = field.key + (unit.empty() ? "" : " (" + unit + ")");
    if (DisplayWidth(line + " " + key) > width) {
      text += line + "\n";
      line = "   ";
    }
    line += " " + key + (&field == &fields.back() ? "\n" : ",");
  }
  return text + line;
}

}  // namespace utdata::program
