// What each group type asks of its items.
#include "platform/kvtiff19/families/group_types.h"

#include <array>
#include <span>

#include "platform/kvtiff19/families/channel_tables.h"
#include "platform/kvtiff19/families/data_table.h"
#include "platform/kvtiff19/families/probe_tables.h"
#include "platform/kvtiff19/families/specimen_tables.h"
#include "platform/kvtiff19/families/surface_tables.h"
#include "platform/kvtiff19/families/weld_tables.h"

namespace utdata::kvtiff19 {
namespace {

template <class Record>
constexpr auto rules = RulesOfFields<Record>();

/// A data group may also hold its samples, of any size.
template <>
constexpr auto rules<CGDataTypeFDD> = [] {
  constexpr auto fields = RulesOfFields<CGDataTypeFDD>();
  std::array<ItemRule, fields.size() + 1> all{};
  std::copy(fields.begin(), fields.end(), all.begin());
  all.back() = {sampleBlockCode, SCFile::value_Block, 1, 1, 1, 0};
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
    for (const std::uint32_t code : {type.primary, type.modifier})
      all[count++] = {code, rules<Record>};
  };
  std::apply([&](const auto&... type) { (add(type), ...); }, groupTypes);
  std::sort(all.begin(), all.end(), [](const TypeRules& a, const TypeRules& b) {
    return a.code < b.code;
  });
  return all;
}();

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
