#include "platform/kvtiff19/structure.h"

#include <optional>

#include "platform/kvtiff19/items.h"
#include "platform/kvtiff19/text.h"

namespace utdata::kvtiff19 {
namespace {

std::string_view AsText(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Checks the items of one group against the rules of its type, which mostly come in the same
/// order.
class RuleCheck {
 public:
  explicit RuleCheck(std::uint32_t typeCode) : m_rules(RulesOfGroupType(typeCode)) {}

  /// Whether the type has rules.
  [[nodiscard]] bool Any() const { return !m_rules.empty(); }

  /// Goes past the first of the bytes that are left when it is what comes next by the rules, one
  /// number: one comparison instead of many, for most items of a file.
  bool GoesPast(Bytes& left) {
    constexpr std::size_t size = itemHeaderSize + oneNumberSize;
    if (m_next >= m_rules.size() || left.size() < size) return false;
    const std::uint64_t bit = std::uint64_t{1} << m_next;
    if (Load<std::uint64_t>(left.data()) != m_rules[m_next].numberHead || (m_met & bit) != 0)
      return false;
    m_met |= bit;
    ++m_next;
    left = left.subspan(size);
    return true;
  }

  /// Runs once per other item of the file when it is opened.
  bool Fits(const StoredItem& item) {
    if (m_next < m_rules.size() && m_rules[m_next].code == item.code) [[likely]]
      return Take(item, m_next);
    for (std::size_t at = 0; at < m_rules.size(); ++at)
      if (m_rules[at].code == item.code) return Take(item, at);
    return true;
  }

 private:
  bool Take(const StoredItem& item, std::size_t at) {
    const ItemRule& rule = m_rules[at];
    const std::uint64_t bit = std::uint64_t{1} << at;
    const bool isRepeated = (m_met & bit) != 0;
    m_met |= bit;
    m_next = at + 1;
    if (isRepeated || item.type != rule.type) return false;
    return (item.count == 1 && rule.maxCount == 1) || FitsCount(item, rule);
  }

  static bool FitsCount(const StoredItem& item, const ItemRule& rule) {
    if (item.count < rule.minCount || item.count > rule.maxCount) return false;
    if (rule.multipleOf > 1 && item.count % rule.multipleOf != 0) return false;
    return rule.maxCharacters == 0 || FitsPlace(AsText(item.data), rule.maxCharacters);
  }

  static bool FitsPlace(std::string_view text, std::size_t maxCharacters) {
    const auto length = WideLength(text);
    return length && *length <= maxCharacters && text.find('\0') == std::string_view::npos;
  }

  std::span<const ItemRule> m_rules;
  std::size_t m_next = 0;   ///< the rule after the last one met
  std::uint64_t m_met = 0;  ///< a bit per rule; there are maxRules at most
};

/// One pass over a segment; `m_problem` is null while all is well.
class StructureCheck {
 public:
  StructureCheck(std::uint64_t blockEnd, StructureFindings& findings)
      : m_blockEnd(blockEnd), m_findings(findings) {}

  bool CheckBody(Bytes body, std::uint16_t typeCode, unsigned depth) {
    if (depth > maxDepth) return Refuse("groups are nested too deep");
    if (body.size() < groupHeaderSize) return Refuse("a group is cut short");
    const auto nameSize = Load<std::uint32_t>(body.data());
    const auto itemCount = Load<std::uint32_t>(body.data() + 4);
    if (!CheckName(body.subspan(groupHeaderSize), nameSize)) return false;
    Bytes left = body.subspan(groupHeaderSize + static_cast<std::size_t>(RoundUp(nameSize, 4)));
    if (itemCount > left.size() / itemHeaderSize)
      return Refuse("a group counts more items than it has bytes for");
    const std::byte* first = left.data();
    const bool indexed = depth == 1;
    if (indexed) m_findings.itemOffsets.reserve(itemCount);
    RuleCheck rules(typeCode);
    bool fits = true;
    const bool known = rules.Any();
    for (std::uint32_t index = 0; index < itemCount; ++index) {
      if (indexed)
        m_findings.itemOffsets.push_back(static_cast<std::uint32_t>(left.data() - first));
      if (rules.GoesPast(left)) continue;
      StoredItem item;
      if (!TakeItem(left, depth, item)) return false;
      if (known) fits = rules.Fits(item) && fits;
    }
    if (!fits) m_findings.misfits.push_back(first);
    return left.empty() || Refuse("a group holds bytes after its last item");
  }

  [[nodiscard]] const char* Problem() const { return m_problem; }

 private:
  bool Refuse(const char* problem) {
    m_problem = problem;
    return false;
  }

  bool CheckName(Bytes left, std::uint32_t size) {
    if (RoundUp(std::uint64_t{size}, 4) > left.size())
      return Refuse("a group's name is longer than the group");
    if (size > maxNameSize) return Refuse("a group's name is too long");
    if (!IsUtf8(AsText(left.first(size)))) return Refuse("a group's name is not UTF-8");
    return CheckPadding(left, size);
  }

  /// REQUIRES: `left` holds the padding. All of it is in the word of four bytes that the value's
  /// end lies in.
  bool CheckPadding(Bytes left, std::uint64_t size) {
    if (size % 4 == 0) return true;
    const auto word =
        Load<std::uint32_t>(left.data() + static_cast<std::size_t>(size & ~std::uint64_t{3}));
    return (word >> (8 * (size % 4))) == 0 || Refuse("padding is not zero");
  }

  /// Runs once per item of the file when it is opened; plain numbers take the short way.
  bool TakeItem(Bytes& left, unsigned depth, StoredItem& item) {
    if (left.size() < itemHeaderSize) return Refuse("an item is cut short");
    const ItemHeader header = DecodeItemHeader(left.data());
    if (header.reserved != 0) return Refuse("a reserved byte of an item is not zero");
    if (IsOneNumber(header)) [[likely]] {
      if (left.size() < itemHeaderSize + oneNumberSize)
        return Refuse("an item is longer than its group");
      item = {header.code, header.type, 1, left.subspan(itemHeaderSize, oneNumberSize)};
      left = left.subspan(itemHeaderSize + oneNumberSize);
      return true;
    }
    return TakeOther(left, depth, header, item);
  }

  bool TakeOther(Bytes& left, unsigned depth, const ItemHeader& header, StoredItem& item) {
    if (!IsItemType(header.type)) return Refuse("an item has an unknown value type");
    const std::uint64_t size = DataSize(header.type, header.count);
    const std::uint64_t padded = RoundUp(size, 4);
    left = left.subspan(itemHeaderSize);
    if (padded > left.size()) return Refuse("an item is longer than its group");
    const Bytes data = left.first(static_cast<std::size_t>(size));
    const bool plain = header.type != 0 && header.type < SCFile::value_Text;
    if (!plain && !CheckContent(header, data, depth)) return false;
    item = {header.code, header.type, header.count, data};
    if (padded != size && !CheckPadding(left, size)) return false;
    left = left.subspan(static_cast<std::size_t>(padded));
    return true;
  }

  bool CheckContent(const ItemHeader& header, Bytes data, unsigned depth) {
    if (header.type == SCFile::value_Text)
      return IsUtf8(AsText(data)) || Refuse("a text is not UTF-8");
    if (header.type == SCFile::value_Block) return CheckBlock(data, header.count);
    if (data.size() % 4 != 0) return Refuse("a group's size is not a multiple of 4");
    return CheckBody(data, header.code, depth + 1);
  }

  bool CheckBlock(Bytes data, std::uint32_t count) {
    if (count != 1) return Refuse("a block item does not name one block");
    return IsBlockRefSound(DecodeBlockRef(data.data()), m_blockEnd) ||
           Refuse("a block lies outside the data before its group");
  }

  std::uint64_t m_blockEnd;
  StructureFindings& m_findings;
  const char* m_problem = nullptr;
};

}  // namespace

const char* CheckStructure(Bytes body,
                           std::uint16_t typeCode,
                           std::uint64_t blockEnd,
                           StructureFindings& findings) {
  StructureCheck check(blockEnd, findings);
  return check.CheckBody(body, typeCode, 1) ? nullptr : check.Problem();
}

bool CheckRules(const Node& group, std::string& problem) {
  RuleCheck rules(group.typeCode);
  StoredItem item;
  for (ItemWalk walk(group); walk.Next(item);) {
    if (rules.Fits(item)) continue;
    problem = "item " + std::to_string(item.code) + " of a group of type " +
              std::to_string(group.typeCode) + " does not fit that type";
    return false;
  }
  return true;
}

}  // namespace utdata::kvtiff19
