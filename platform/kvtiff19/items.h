// How the group families see a group: its stored items in order, and a place to append new ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "interfaces/kvtiff19.h"
#include "platform/kvtiff19/format.h"

namespace utdata::kvtiff19 {

/// One item of a committed group, in place in the file's metadata.
struct StoredItem {
  std::uint16_t code;
  std::uint8_t type;    ///< SCFile::ValueType; 0 for a child group
  std::uint32_t count;  ///< elements as stored; of a text its UTF-8 bytes, without terminator
  std::span<const std::byte>
      data;  ///< the value's bytes, little-endian, not aligned; of a child group its body
};

/// Walks the items of a committed group from the first to the last; the structure was checked when
/// the file was opened.
class ItemWalk {
 public:
  explicit ItemWalk(const SCFile::Node& group);
  /// Items that are left.
  [[nodiscard]] std::uint32_t Left() const { return m_left; }
  /// The code of the next item. REQUIRES: one is left.
  [[nodiscard]] std::uint16_t Code() const { return Load<std::uint16_t>(m_at); }
  /// The next item, false after the last.
  bool Next(StoredItem& item) {
    if (m_left == 0) return false;
    --m_left;
    const ItemHeader header = DecodeItemHeader(m_at);
    if (IsOneNumber(header)) [[likely]] {
      item = {header.code, header.type, 1, {m_at + itemHeaderSize, oneNumberSize}};
      m_at += itemHeaderSize + oneNumberSize;
    } else {
      const auto size = static_cast<std::size_t>(DataSize(header.type, header.count));
      item = {header.code, header.type, header.count, {m_at + itemHeaderSize, size}};
      m_at += itemHeaderSize + static_cast<std::size_t>(RoundUp(size, 4));
    }
    return true;
  }
  /// The four bytes of the next item when its header is `head`, of one number, and goes on; else
  /// null.
  const std::byte* NextNumber(std::uint64_t head) {
    if (m_left == 0 || Load<std::uint64_t>(m_at) != head) return nullptr;
    --m_left;
    const std::byte* number = m_at + itemHeaderSize;
    m_at = number + oneNumberSize;
    return number;
  }

 private:
  const std::byte* m_at;
  std::uint32_t m_left;
};

/// Appends a value in its stored form to an uncommitted group. A failure also makes the next commit
/// of the file fail.
/// @param count elements as stored (of a text its UTF-8 bytes)
[[nodiscard]] int AppendItem(SCFile::Node& group,
                             std::uint16_t code,
                             SCFile::ValueType type,
                             std::uint32_t count,
                             std::span<const std::byte> data);

/// Makes the next commit of the file that `group` belongs to fail with `status`, as a failed write
/// does.
void MarkFailed(SCFile::Node& group, int status);

/// Appends the UTF-8 form of a text; false when it holds something that is not a character (nothing
/// is then appended). Surrogate pairs are joined where wchar_t has two bytes.
[[nodiscard]] bool AppendUtf8(std::string& utf8, std::wstring_view text);
/// The text of well-formed UTF-8; nothing when it is malformed.
[[nodiscard]] std::optional<std::wstring> FromUtf8(std::string_view utf8);

/// No item has this header.
inline constexpr std::uint64_t noNumber = ~std::uint64_t{0};

/// What a known group type asks of one of its items.
struct ItemRule {
  std::uint16_t code = 0;
  std::uint8_t type = 0;       ///< SCFile::ValueType
  std::uint32_t minCount = 0;  ///< elements as stored
  std::uint32_t maxCount = 0;
  std::uint32_t multipleOf = 0;  ///< of the elements; 1 for no rule
  /// Of a text for a fixed place, which holds no null character; 0 for no rule.
  std::uint32_t maxCharacters = 0;

  /// The header of an item that is one number of four bytes; of other items what no header is.
  std::uint64_t numberHead = maxCount == 1 && IsOneNumber({code, type, 0, minCount})
                                 ? OneNumberHead(code, type)
                                 : noNumber;
};

/// No group type has more rules than this.
inline constexpr std::size_t maxRules = 64;

/// The rules of a group type, ordered as its fields are stored; empty for a type without a family.
/// An item of a known code comes once at most; items of other codes are free. For text fields
/// maxCount bounds the UTF-8 bytes.
[[nodiscard]] std::span<const ItemRule> RulesOfGroupType(std::uint32_t typeCode);

/// Records what went wrong for SCFile::file_LastError of this thread, and returns the status.
int Fail(int status, std::string_view what) noexcept;

}  // namespace utdata::kvtiff19
