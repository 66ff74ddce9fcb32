#include "utdata/fields.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numeric>
#include <optional>

#include "utdata/failure.h"

namespace utdata {
namespace {

using SCFile::FieldChoice;
using SCFile::FieldInfo;
using SCFile::FieldKind;
using SCFile::FieldRole;
using SCFile::FieldUnit;
using SCFile::GroupTypeInfo;

constexpr int everyDigit = 15;  // of a double

std::string Digits(double value, int digits) {
  std::array<char, 40> text{};
  const auto end = std::to_chars(text.data(),
                                 text.data() + text.size(),
                                 value == 0 ? 0.0 : value,
                                 std::chars_format::general,
                                 digits)
                       .ptr;
  return {text.data(), end};
}

std::string ColorText(std::uint32_t color) {
  std::string text = "0x000000";
  for (std::size_t at = text.size(); at-- > 2; color >>= 4U)
    text[at] = "0123456789ABCDEF"[color & 15U];
  return text;
}

std::string WithUnit(const std::string& number, const FieldUnit& unit) {
  const std::string_view space = unit.shown.empty() || unit.shown.starts_with("°") ? "" : " ";
  return number + std::string(space) + std::string(unit.shown);
}

std::string Join(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : ", ") + part;
  return text;
}

std::string ChoicesText(const FieldInfo& field) {
  std::vector<std::string> names;
  for (const FieldChoice& choice : field.choices) names.emplace_back(choice.name);
  return Join(names);
}

/// The whole text as a number; a colour may be hexadecimal.
std::optional<double> ToNumber(const FieldInfo& field, const std::string& text) {
  const char* const end = text.data() + text.size();
  if (field.kind == FieldKind::Color && (text.starts_with("0x") || text.starts_with("0X"))) {
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

/// How many letters have to be put in, left out or replaced to make one word of another.
std::size_t Distance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t at = 0; at < from.size(); ++at) {
    std::size_t diagonal = row[0]++;
    for (std::size_t place = 0; place < to.size(); ++place) {
      const std::size_t replaced = diagonal + (from[at] == to[place] ? 0 : 1);
      diagonal = row[place + 1];
      row[place + 1] = std::min({replaced, row[place] + 1, row[place + 1] + 1});
    }
  }
  return row.back();
}

/// The fields whose names are most like one that there is not.
std::string NearKeys(const GroupTypeInfo& type, std::string_view key) {
  constexpr std::size_t most = 3;
  std::vector<std::pair<std::size_t, std::string>> near;
  for (const FieldInfo& field : type.fields) {
    const bool isPart = !key.empty() && field.key.find(key) != field.key.npos;
    const std::size_t distance = isPart ? 0 : Distance(key, field.key);
    if (distance <= std::max<std::size_t>(2, field.key.size() / 2))
      near.emplace_back(distance, field.key);
  }
  std::stable_sort(
      near.begin(), near.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> names;
  for (const auto& candidate : near)
    if (names.size() < most) names.push_back(candidate.second);
  return Join(names);
}

const FieldInfo& FindField(const GroupTypeInfo& type, std::string_view key) {
  if (const FieldInfo* found = type.Find(key)) return *found;
  const std::string near = NearKeys(type, key);
  throw Error(
      "",
      std::string(key),
      "is no field of a " + std::string(type.name) + (near.empty() ? "" : "; near ones: " + near));
}

/// Whether an id is the group's own, not that of what it belongs to: the one that its type is
/// called after, of a sub-channel not the channel's.
bool IsOwn(const GroupTypeInfo& type, const FieldInfo& id) {
  return type.key.ends_with(id.idName) &&
         std::ranges::none_of(type.fields, [&](const FieldInfo& other) {
           return other.idName.size() > id.idName.size() && type.key.ends_with(other.idName);
         });
}

/// The ids, the group's own first.
std::vector<const FieldInfo*> IdFields(const GroupTypeInfo& type) {
  std::vector<const FieldInfo*> ids;
  for (const FieldInfo& info : type.fields)
    if (!info.idName.empty()) ids.push_back(&info);
  std::stable_partition(
      ids.begin(), ids.end(), [&](const FieldInfo* id) { return IsOwn(type, *id); });
  return ids;
}

}  // namespace

std::string ChoiceName(const FieldInfo& field, double value) {
  for (const FieldChoice& choice : field.choices)
    if (choice.value == value) return std::string(choice.name);
  return {};
}

void Field::Refuse(const std::string& why) const { throw Error("", Key(), why); }

const FieldUnit& Field::Unit() const {
  const FieldInfo* says = m_info->unitOf.empty() ? nullptr : m_type->Find(m_info->unitOf);
  if (!says) return m_info->unit;
  return SCFile::UnitOf(static_cast<kvt_enumUnits>(says->access.number(m_group)));
}

double Field::Number() const {
  if (!m_info->access.number) Refuse("is not a number");
  return m_info->access.number(m_group);
}

std::string Field::Text() const {
  if (!m_info->access.text) Refuse("is not a text");
  return ToUtf8(m_info->access.text(m_group));
}

std::vector<double> Field::Numbers() const {
  if (!m_info->access.numbers) Refuse("is not a list of numbers");
  return m_info->access.numbers(m_group);
}

FieldValue Field::Value() const {
  if (m_info->access.number) return Number();
  return m_info->kind == FieldKind::Text ? Text() : Show();
}

std::string Field::Show(int digits) const {
  switch (m_info->kind) {
    case FieldKind::Text:
      return "\"" + Text() + "\"";
    case FieldKind::Choice: {
      const std::string name = ChoiceName(*m_info, Number());
      return name.empty() ? Digits(Number(), everyDigit) : name;
    }
    case FieldKind::Color:
      return ColorText(static_cast<std::uint32_t>(Number()));
    case FieldKind::Whole:
      return WithUnit(Digits(Number(), everyDigit), Unit());
    case FieldKind::Quantity:
      return WithUnit(Digits(Number() / Unit().scale, digits), Unit());
    case FieldKind::Numbers: {
      std::vector<std::string> parts;
      for (const double number : Numbers()) parts.push_back(Digits(number / Unit().scale, digits));
      return WithUnit(Join(parts), Unit());
    }
    case FieldKind::Block:
      break;
  }
  return {};
}

std::string Field::Range() const {
  switch (m_info->kind) {
    case FieldKind::Text:
      return "text";
    case FieldKind::Choice:
      return ChoicesText(*m_info);
    case FieldKind::Color:
      return "0x000000 to 0xFFFFFF";
    case FieldKind::Quantity:
    case FieldKind::Whole:
      return WithUnit(
          Digits(m_info->minimum, everyDigit) + " to " + Digits(m_info->maximum, everyDigit),
          Unit());
    case FieldKind::Numbers:
    case FieldKind::Block:
      break;
  }
  return "numbers";
}

bool Field::Takes(double number) const {
  if (m_info->kind == FieldKind::Choice)
    return std::ranges::any_of(m_info->choices,
                               [=](const FieldChoice& choice) { return choice.value == number; });
  // A bound that is converted on the way here stays within.
  constexpr double slack = 1e-12;
  const double low = m_info->minimum * Unit().scale, high = m_info->maximum * Unit().scale;
  return number >= low - slack * std::abs(low) && number <= high + slack * std::abs(high);
}

bool Field::SameAs(const Field& other) const {
  const SCFile::FieldAccess& access = m_info->access;
  const auto same = [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); };
  if (access.text) return access.text(m_group) == access.text(other.m_group);
  if (access.number) return same(access.number(m_group), access.number(other.m_group));
  if (access.numbers)
    return std::ranges::equal(access.numbers(m_group), access.numbers(other.m_group), same);
  return true;
}

void EditableField::CheckEditable() const {
  if (m_info->IsKey()) Refuse("says which group it is, and is not changed");
  if (m_info->role == FieldRole::Fixed)
    Refuse("stays as it was acquired: the samples would mean something else");
}

void EditableField::Set(double number) const {
  CheckEditable();
  if (!m_info->access.number) Refuse("is not a number");
  const std::string written = "'" + Digits(number / Unit().scale, everyDigit) + "'";
  if (!Takes(number))
    Refuse(written + (m_info->kind == FieldKind::Choice ? " is none of " : " is not within ") +
           Range());
  if (m_info->kind != FieldKind::Quantity && number != std::floor(number))
    Refuse(written + " is not a whole number");
  m_info->access.setNumber(m_changed, number);
}

void EditableField::Set(std::span<const double> numbers) const {
  CheckEditable();
  if (!m_info->access.setNumbers) Refuse("is not a list of numbers");
  if (!std::ranges::all_of(numbers, [](double number) { return std::isfinite(number); }))
    Refuse("takes finite numbers only");
  if (!m_info->access.setNumbers(m_changed, numbers))
    Refuse("does not take " + std::to_string(numbers.size()) + " numbers");
}

void EditableField::Set(const std::string& text) const {
  CheckEditable();
  if (m_info->kind == FieldKind::Text) {
    if (!m_info->access.setText(m_changed, ToWide(text))) Refuse("is too long");
    return;
  }
  if (m_info->kind == FieldKind::Choice) {
    for (const FieldChoice& choice : m_info->choices)
      if (choice.name == text) return m_info->access.setNumber(m_changed, choice.value);
    Refuse("'" + text + "' is none of " + ChoicesText(*m_info));
  }
  const std::optional<double> number = ToNumber(*m_info, text);
  if (!number) Refuse("'" + text + "' is not a number");
  Set(*number * Unit().scale);
}

std::vector<Field> Fields::All() const {
  std::vector<Field> all;
  for (const FieldInfo& info : m_type->fields)
    if (info.kind != FieldKind::Block) all.emplace_back(*m_type, info, m_group);
  return all;
}

Field Fields::operator[](std::string_view key) const {
  return {*m_type, FindField(*m_type, key), m_group};
}

std::vector<std::pair<std::string, std::uint32_t>> Fields::Ids() const {
  std::vector<std::pair<std::string, std::uint32_t>> ids;
  for (const FieldInfo* info : IdFields(*m_type))
    ids.emplace_back(info->idName, static_cast<std::uint32_t>(info->access.number(m_group)));
  return ids;
}

std::string Fields::Name() const {
  std::string text;
  std::size_t quantity = 0;
  for (const FieldInfo* info : IdFields(*m_type)) {
    if (quantity > 0) text += quantity == 1 ? " of " : ", ";
    const double id = info->access.number(m_group);
    std::string name = ChoiceName(*info, id);
    if (name.empty())
      name = std::string(IsOwn(*m_type, *info) ? m_type->name : info->idName) + " " +
             Digits(id, everyDigit);
    text += name;
    ++quantity;
  }
  std::replace(text.begin(), text.end(), '_', '-');
  return text.empty() ? std::string(m_type->name) : text;
}

EditableField EditableFields::operator[](std::string_view key) const {
  return {*m_type, FindField(*m_type, key), m_changed};
}

}  // namespace utdata
