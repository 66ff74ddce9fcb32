// The catalogue, made of the field tables: what a file's items have to look like, and what each
// group type and field is for whoever reads or changes it by name.
#include "interfaces/kvtiff19_catalogue.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <span>

#include "platform/kvtiff19/families/tables.h"

namespace utdata::kvtiff19 {
namespace {

using SCFile::FieldInfo;
using SCFile::GroupType;
using SCFile::GroupTypeInfo;
using SCFile::groupTypes;

template <class Record>
constexpr bool isData = std::is_same_v<Record, CGDataTypeFDD>;

/// A data group may also hold its samples, of any size.
constexpr ItemRule sampleBlockRule = {sampleBlockCode, SCFile::value_Block, 1, 1, 1, 0};

template <class Record>
constexpr auto rules = [] {
  std::array<ItemRule, fieldCount<Record> + isData<Record>> all;
  std::size_t count = 0;
  ForEachField<Record>([&](const auto& field) { all[count++] = field.Rule(); });
  if (isData<Record>) all[count] = sampleBlockRule;
  return all;
}();

struct TypeRules {
  std::uint32_t code = 0;
  std::span<const ItemRule> items;
};

/// Both codes of every type, ascending.
constexpr auto allRules = [] {
  std::array<TypeRules, 2 * std::tuple_size_v<decltype(groupTypes)>> all{};
  std::size_t count = 0;
  const auto add = [&]<class Record>(const GroupType<Record>& type) {
    static_assert(rules<Record>.size() <= maxRules);
    for (const std::uint32_t code : {type.primaryCode, type.modifierCode})
      all[count++] = {code, rules<Record>};
  };
  std::apply([&](const auto&... type) { (add(type), ...); }, groupTypes);
  std::sort(all.begin(), all.end(), [](const TypeRules& a, const TypeRules& b) {
    return a.code < b.code;
  });
  return all;
}();

// Access to the member of one row. A number is read as a double, which holds every value of a
// 32-bit member and every time in seconds.

/// The numbers that a list or tuple is made of, one after the other.
template <class Value, class Visit>
void VisitNumbers(Value& value, Visit&& visit) {
  if constexpr (std::is_arithmetic_v<std::remove_const_t<Value>>)
    visit(value);
  else
    for (auto& part : value) VisitNumbers(part, visit);
}

/// What a list or tuple is made of in the end.
template <class Value>
struct NumberOf {
  using Type = Value;
};
template <class Value>
requires requires(Value& value) { *std::begin(value); }
struct NumberOf<Value>
    : NumberOf<std::remove_cvref_t<decltype(*std::begin(std::declval<Value&>()))>> {};

/// Whether a number can be held as another type: whole and not too large.
template <class Number>
bool Holds(double value) {
  constexpr auto least = static_cast<double>(std::numeric_limits<Number>::lowest());
  constexpr auto most = static_cast<double>(std::numeric_limits<Number>::max());
  return value >= least && value <= most &&
         (std::is_floating_point_v<Number> || value == std::floor(value));
}

template <class Record, std::size_t index>
struct Access {
  static constexpr auto& field = std::get<index>(FieldTable<Record>::fields);
  using Member = typename std::remove_cvref_t<decltype(field)>::Member;
  static constexpr ValueShape shape = ValueCodec<Member>::shape;

  static Member& Of(void* record) { return static_cast<Record*>(record)->*field.member; }
  static const Member& Of(const void* record) {
    return static_cast<const Record*>(record)->*field.member;
  }

  static double Number(const void* record) { return static_cast<double>(Of(record)); }
  static void SetNumber(void* record, double value) {
    if constexpr (std::is_enum_v<Member>)
      Of(record) = static_cast<Member>(static_cast<std::underlying_type_t<Member>>(value));
    else
      Of(record) = static_cast<Member>(value);
  }

  static std::wstring Text(const void* record) {
    if constexpr (std::is_array_v<Member>)
      return std::wstring(ValueCodec<Member>::View(Of(record)));
    else
      return Of(record);
  }
  static bool SetText(void* record, std::wstring_view value) {
    if constexpr (std::is_array_v<Member>) {
      Member& place = Of(record);
      if (value.size() >= std::size(place) || value.find(L'\0') != value.npos) return false;
      std::fill(std::copy(value.begin(), value.end(), place), std::end(place), L'\0');
    } else {
      Of(record) = value;
    }
    return true;
  }

  static std::vector<double> Numbers(const void* record) {
    std::vector<double> numbers;
    VisitNumbers(Of(record), [&](auto number) { numbers.push_back(static_cast<double>(number)); });
    return numbers;
  }
  static bool SetNumbers(void* record, std::span<const double> values) {
    if (values.size() < shape.minCount || values.size() > shape.maxCount ||
        values.size() % shape.multipleOf != 0)
      return false;
    using Element = typename NumberOf<Member>::Type;
    if (!std::ranges::all_of(values, Holds<Element>)) return false;
    Member& list = Of(record);
    if constexpr (requires { list.resize(0); }) list.resize(values.size() / shape.multipleOf);
    auto next = values.begin();
    VisitNumbers(list, [&](Element& element) { element = static_cast<Element>(*next++); });
    return true;
  }

  static consteval SCFile::FieldAccess Functions() {
    if constexpr (shape.type == SCFile::value_Text)
      return {.text = Text, .setText = SetText};
    else if constexpr (std::is_arithmetic_v<Member> || std::is_enum_v<Member>)
      return {.number = Number, .setNumber = SetNumber};
    else
      return {.numbers = Numbers, .setNumbers = SetNumbers};
  }
};

/// Private members carry a prefix that means nothing outside.
consteval std::string_view KeyOf(std::string_view member) {
  return member.substr(member.starts_with("m_") ? 2 : 0);
}

consteval FieldInfo InfoOf(const SCFile::FieldForm& form,
                           const ItemRule& rule,
                           std::string_view key,
                           std::string_view meaning,
                           const SCFile::FieldAccess& access) {
  return {form,
          key,
          meaning,
          rule.code,
          rule.type,
          rule.minCount,
          rule.maxCount,
          rule.multipleOf,
          access};
}

template <class Record>
constexpr auto infos = []<std::size_t... index>(std::index_sequence<index...>) {
  const auto& fields = FieldTable<Record>::fields;
  std::array<FieldInfo, sizeof...(index) + isData<Record>> all = {
      InfoOf(std::get<index>(fields).form,
             std::get<index>(fields).Rule(),
             KeyOf(std::get<index>(fields).name),
             std::get<index>(fields).meaning,
             Access<Record, index>::Functions())...};
  if constexpr (isData<Record>)
    all.back() = InfoOf(form::samples,
                        sampleBlockRule,
                        "samples",
                        "laid out as the storage mode says; missing: no samples",
                        {});
  return all;
}
(std::make_index_sequence<fieldCount<Record>>{});

constexpr auto typeInfos = std::apply(
    []<class... Record>(const GroupType<Record>&... type) {
      return std::array{GroupTypeInfo{type, infos<Record>}...};
    },
    groupTypes);

}  // namespace

std::span<const ItemRule> RulesOfGroupType(std::uint32_t typeCode) {
  const auto found = std::lower_bound(
      allRules.begin(), allRules.end(), typeCode, [](const TypeRules& type, std::uint32_t code) {
        return type.code < code;
      });
  return found != allRules.end() && found->code == typeCode ? found->items
                                                            : std::span<const ItemRule>();
}

}  // namespace utdata::kvtiff19

namespace SCFile {

using utdata::kvtiff19::typeInfos;

const FieldUnit& UnitOf(kvt_enumUnits units) {
  namespace unit = utdata::kvtiff19::unit;
  static constexpr std::array<FieldUnit, 7> all = {unit::none,
                                                   unit::time,
                                                   unit::length,
                                                   unit::angle,
                                                   unit::percent,
                                                   unit::decibel,
                                                   unit::voltage};
  return units < all.size() ? all[units] : unit::none;
}

const FieldInfo* GroupTypeInfo::Find(std::string_view fieldKey) const {
  const auto found = std::find_if(
      fields.begin(), fields.end(), [=](const FieldInfo& field) { return field.key == fieldKey; });
  return found == fields.end() ? nullptr : &*found;
}

const FieldInfo* GroupTypeInfo::Find(std::uint32_t itemCode) const {
  const auto found = std::find_if(
      fields.begin(), fields.end(), [=](const FieldInfo& field) { return field.code == itemCode; });
  return found == fields.end() ? nullptr : &*found;
}

std::span<const GroupTypeInfo> file_GroupTypes() { return typeInfos; }

const GroupTypeInfo* file_GroupType(std::uint32_t typeCode) {
  const auto* found = std::find_if(typeInfos.begin(), typeInfos.end(), [=](const auto& type) {
    return type.primaryCode == typeCode || type.modifierCode == typeCode;
  });
  return found == typeInfos.end() ? nullptr : found;
}

}  // namespace SCFile
