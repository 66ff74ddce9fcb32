// Groups and their items: listed, opened, read, and made.
#include <algorithm>
#include <limits>

#include "platform/kvtiff19/guard.h"
#include "platform/kvtiff19/structure.h"
#include "platform/kvtiff19/text.h"

namespace utdata::kvtiff19 {
namespace {

constexpr std::uint32_t maxCount = std::numeric_limits<std::uint32_t>::max();

std::uint32_t ItemCount(const Node& node) {
  return node.state == NodeState::File ? static_cast<std::uint32_t>(node.children.size())
                                       : node.itemCount;
}

/// The stored child group at an index that is known to be one; null when it was not opened yet.
Node* KnownChild(const Node& parent, std::uint32_t index) {
  if (parent.state == NodeState::Pending) {
    const auto& children = parent.pending->children;
    const auto isBefore = [](const PendingChild& child, std::uint32_t wanted) {
      return child.index < wanted;
    };
    return std::lower_bound(children.begin(), children.end(), index, isBefore)->node;
  }
  return index < parent.children.size() ? parent.children[index] : nullptr;
}

Bytes ChildBody(const std::byte* item) {
  return {item + itemHeaderSize, DecodeItemHeader(item).count};
}

std::string_view NameOf(const Node& group) {
  return group.pending ? std::string_view(group.pending->name) : group.name;
}

/// What file_ItemInfo gives of one item.
struct ItemFacts {
  std::uint32_t code = 0;
  std::uint8_t type = 0;
  std::uint32_t count = 0;
  std::string_view name;
};

ItemFacts FactsOfGroup(const Node& group) {
  return {group.typeCode, 0, group.itemCount, NameOf(group)};
}

ItemFacts FactsOf(const Node& parent, std::uint32_t index) {
  if (parent.state == NodeState::File) return FactsOfGroup(*parent.children[index]);
  const std::byte* item = ItemAt(parent, index);
  const ItemHeader header = DecodeItemHeader(item);
  const Bytes data(item + itemHeaderSize,
                   static_cast<std::size_t>(DataSize(header.type, header.count)));
  switch (header.type) {
    case 0: {
      if (const Node* child = KnownChild(parent, index)) return FactsOfGroup(*child);
      const auto nameSize = Load<std::uint32_t>(data.data());
      const std::string_view name(reinterpret_cast<const char*>(data.data()) + groupHeaderSize,
                                  nameSize);
      return {header.code, 0, Load<std::uint32_t>(data.data() + 4), name};
    }
    case SCFile::value_Text: {
      const std::size_t length =
          WideLength({reinterpret_cast<const char*>(data.data()), data.size()}).value_or(0) + 1;
      return {header.code,
              header.type,
              static_cast<std::uint32_t>(std::min<std::size_t>(length, maxCount)),
              {}};
    }
    case SCFile::value_Block:
      return {header.code,
              header.type,
              static_cast<std::uint32_t>(
                  std::min<std::uint64_t>(DecodeBlockRef(data.data()).size, maxCount)),
              {}};
    default:
      return {header.code, header.type, header.count, {}};
  }
}

int OpenChild(Node& parent, Node** group, std::uint32_t index) {
  if (index >= ItemCount(parent))
    return FailAt(*parent.file, SCFile::status_BadArgument, "no child group has that key");
  Node* child = nullptr;
  if (parent.state == NodeState::File) {
    child = parent.children[index];
  } else {
    const std::byte* item = ItemAt(parent, index);
    const ItemHeader header = DecodeItemHeader(item);
    if (header.type != 0)
      return FailAt(*parent.file, SCFile::status_BadArgument, "the item is not a group");
    child = KnownChild(parent, index);
    if (!child) {
      parent.children.resize(parent.itemCount);
      child = &parent.file->AddGroup(parent, NodeState::Committed, header.code);
      ViewBody(*child, ChildBody(item));
      child->rulesHold = parent.file->FitsType(*child);
      parent.children[index] = child;
    }
  }
  if (child->state == NodeState::Committed && !child->rulesHold) {
    std::string problem;
    if (!CheckRules(*child, problem)) return FailAt(*parent.file, SCFile::status_Damaged, problem);
    child->rulesHold = true;
  }
  *group = child;
  return SCFile::status_Ok;
}

/// UTF-8 of a group's name; the length in wide characters bounds it before a terminator does.
int EncodeName(OpenFile& file, const wchar_t* name, std::size_t length, std::string& utf8) {
  if (!name) return SCFile::status_Ok;
  const std::wstring_view wide(name, std::find(name, name + length, L'\0'));
  if (wide.size() > maxNameLength)
    return FailWrite(file, SCFile::status_TooLarge, "a group's name is too long");
  if (AppendUtf8(utf8, wide)) return SCFile::status_Ok;
  return FailWrite(
      file, SCFile::status_BadText, "a group's name holds something that is not a character");
}

int CreateGroup(Node& parent, Node** group, std::uint32_t typeCode, const wchar_t* name) {
  OpenFile& file = *parent.file;
  *group = nullptr;
  const bool open = parent.state == NodeState::File || parent.state == NodeState::Pending;
  if (!open) return FailWrite(file, SCFile::status_BadArgument, "the group is not being written");
  if (typeCode > 0xFFFF)
    return FailWrite(file, SCFile::status_BadArgument, "a type code has 16 bits");
  std::string utf8;
  if (const int status = EncodeName(file, name, name ? std::wcslen(name) : 0, utf8)) return status;
  return AddPending(parent, static_cast<std::uint16_t>(typeCode), std::move(utf8), *group);
}

}  // namespace
}  // namespace utdata::kvtiff19

using namespace utdata::kvtiff19;

namespace SCFile {

std::uint32_t file_ItemNbrGet(const Node* parent) { return parent ? ItemCount(*parent) : 0; }

int file_ItemInfo(const Node* parent,
                  std::uint32_t index,
                  std::uint32_t* type,
                  std::uint32_t* kind,
                  std::uint32_t* count,
                  std::uint32_t* key,
                  wchar_t* name,
                  std::uint32_t length) {
  if (!parent) return BadCall("no file or group");
  return Guarded([&] {
    if (index >= ItemCount(*parent))
      return FailAt(*parent->file, status_BadArgument, "no item has that index");
    const ItemFacts facts = FactsOf(*parent, index);
    Give(type, facts.code);
    Give(kind, std::uint32_t{facts.type == 0 ? kind_Group : kind_Value});
    Give(count, facts.count);
    Give(key, index);
    if (name && length > 0) CopyWide(facts.name, {name, length});
    return static_cast<int>(status_Ok);
  });
}

int file_ItemValueType(const Node* parent, std::uint32_t index, std::uint32_t* valueType) {
  if (!parent) return BadCall("no file or group");
  return Guarded([&] {
    if (index >= ItemCount(*parent))
      return FailAt(*parent->file, status_BadArgument, "no item has that index");
    const bool isTop = parent->state == NodeState::File;
    Give(valueType,
         std::uint32_t{isTop ? std::uint8_t{0} : DecodeItemHeader(ItemAt(*parent, index)).type});
    return static_cast<int>(status_Ok);
  });
}

int file_GroupOpen(Node* parent, GroupHandle* group, std::uint32_t key) {
  if (!parent || !group) return BadCall("no file or group");
  *group = nullptr;
  return Guarded([&] { return OpenChild(*parent, group, key); });
}

int file_GroupCreate(Node* parent,
                     GroupHandle* group,
                     std::uint32_t typeCode,
                     const wchar_t* name) {
  if (!parent || !group) return BadCall("no file or group");
  return Guarded([&] { return CreateGroup(*parent, group, typeCode, name); }, parent->file);
}

int file_GroupNameSet(GroupHandle group, const wchar_t* name, std::uint32_t length) {
  if (!IsGroup(group)) return BadCall("not a group");
  return Guarded(
      [&] {
        OpenFile& file = *group->file;
        if (!group->pending)
          return FailWrite(file, status_BadArgument, "the group is not being written");
        std::string utf8;
        if (const int status = EncodeName(file, name, length, utf8)) return status;
        group->pending->name = std::move(utf8);
        return static_cast<int>(status_Ok);
      },
      group->file);
}

}  // namespace SCFile
