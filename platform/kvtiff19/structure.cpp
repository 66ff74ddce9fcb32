#include "platform/kvtiff19/structure.h"

#include <algorithm>
#include <optional>

#include "platform/kvtiff19/items.h"
#include "platform/kvtiff19/text.h"

namespace utdata::kvtiff19 {
namespace {

std::string_view AsText(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

/// One pass over a segment; `m_problem` is null while all is well.
class StructureCheck {
 public:
  explicit StructureCheck(std::uint64_t blockEnd) : m_blockEnd(blockEnd) {}

  bool CheckBody(Bytes body, unsigned depth, std::vector<std::uint32_t>* itemOffsets) {
    if (depth > maxDepth) return Refuse("groups are nested too deep");
    if (body.size() < groupHeaderSize) return Refuse("a group is cut short");
    const auto nameSize = Load<std::uint32_t>(body.data());
    const auto itemCount = Load<std::uint32_t>(body.data() + 4);
    if (!CheckName(body.subspan(groupHeaderSize), nameSize)) return false;
    Bytes left = body.subspan(groupHeaderSize + static_cast<std::size_t>(RoundUp(nameSize, 4)));
    if (itemCount > left.size() / itemHeaderSize) return Refuse("a group counts more items than it has bytes for");
    if (itemOffsets) itemOffsets->reserve(itemCount);
    const std::byte* first = left.data();
    for (std::uint32_t index = 0; index < itemCount; ++index) {
      if (itemOffsets) itemOffsets->push_back(static_cast<std::uint32_t>(left.data() - first));
      if (!TakeItem(left, depth)) return false;
    }
    return left.empty() || Refuse("a group holds bytes after its last item");
  }

  [[nodiscard]] const char* Problem() const { return m_problem; }

 private:
  bool Refuse(const char* problem) {
    m_problem = problem;
    return false;
  }

  bool CheckName(Bytes left, std::uint32_t size) {
    if (RoundUp(std::uint64_t{size}, 4) > left.size()) return Refuse("a group's name is longer than the group");
    const auto length = WideLength(AsText(left.first(size)));
    if (!length) return Refuse("a group's name is not UTF-8");
    if (*length > maxNameLength) return Refuse("a group's name is too long");
    return CheckPadding(left, size);
  }

  bool CheckPadding(Bytes left, std::uint64_t size) {
    const auto used = static_cast<std::size_t>(size);
    return AllZero(left.subspan(used, static_cast<std::size_t>(RoundUp(size, 4)) - used)) ||
           Refuse("padding is not zero");
  }

  bool TakeItem(Bytes& left, unsigned depth) {
    if (left.size() < itemHeaderSize) return Refuse("an item is cut short");
    const ItemHeader header = DecodeItemHeader(left.data());
    if (header.reserved != 0) return Refuse("a reserved byte of an item is not zero");
    if (header.type != 0 && ElementSize(header.type) == 0) return Refuse("an item has an unknown value type");
    const std::uint64_t size = DataSize(header.type, header.count);
    const std::uint64_t padded = RoundUp(size, 4);
    left = left.subspan(itemHeaderSize);
    if (padded > left.size()) return Refuse("an item is longer than its group");
    const Bytes data = left.first(static_cast<std::size_t>(size));
    if (header.type == 0) {
      if (padded != size) return Refuse("a group's size is not a multiple of 4");
      if (!CheckBody(data, depth + 1, nullptr)) return false;
    } else if (header.type == SCFile::value_Text) {
      if (!WideLength(AsText(data))) return Refuse("a text is not UTF-8");
    } else if (header.type == SCFile::value_Block) {
      if (!CheckBlock(data, header.count)) return false;
    }
    if (padded != size && !CheckPadding(left, size)) return false;
    left = left.subspan(static_cast<std::size_t>(padded));
    return true;
  }

  bool CheckBlock(Bytes data, std::uint32_t count) {
    if (count != 1) return Refuse("a block item does not name one block");
    return IsBlockRefSound(DecodeBlockRef(data.data()), m_blockEnd) ||
           Refuse("a block lies outside the data before its group");
  }

  std::uint64_t m_blockEnd;
  const char* m_problem = nullptr;
};

}  // namespace

bool CheckStructure(Bytes body, std::uint64_t blockEnd, std::vector<std::uint32_t>& itemOffsets, std::string& problem) {
  StructureCheck check(blockEnd);
  if (check.CheckBody(body, 1, &itemOffsets)) return true;
  problem = check.Problem();
  return false;
}

bool CheckRules(const Node& group, std::string& problem) {
  const std::span<const ItemRule> rules = RulesOfGroupType(group.typeCode);
  if (rules.empty()) return true;
  // Items mostly follow each other as the rules do; `expected` is the rule after the last one met.
  std::size_t expected = 0;
  StoredItem item;
  for (ItemWalk walk(group); walk.Next(item);) {
    auto rule = rules.begin() + static_cast<std::ptrdiff_t>(expected);
    if (rule == rules.end() || rule->code != item.code)
      rule = std::find_if(rules.begin(), rules.end(), [&](const ItemRule& each) { return each.code == item.code; });
    if (rule == rules.end()) continue;
    expected = static_cast<std::size_t>(rule - rules.begin()) + 1;
    const bool fits = item.type == rule->type && item.count >= rule->minCount && item.count <= rule->maxCount &&
                      (rule->multipleOf <= 1 || item.count % rule->multipleOf == 0);
    if (fits) continue;
    problem = "item " + std::to_string(item.code) + " of a group of type " + std::to_string(group.typeCode) +
              " does not fit that type";
    return false;
  }
  return true;
}

}  // namespace utdata::kvtiff19
