#include "platform/kvtiff19/node.h"

#include <algorithm>
#include <functional>

namespace utdata::kvtiff19 {

os::Error OpenFile::IsAt(const std::wstring& name, bool& is) const {
  is = false;
  os::FileIdentity mine;
  if (const os::Error error = handle->Identify(mine); error != os::Error::None) return error;
  os::FileIdentity there;
  const os::Error error = fileSystem->Identify(name, there);
  is = error == os::Error::None && mine == there;
  return error == os::Error::NotFound ? os::Error::None : error;
}

bool OpenFile::FitsType(const Node& group) const {
  return !std::binary_search(misfits.begin(), misfits.end(), group.items.data(), std::less<>());
}

Node& OpenFile::AddGroup(Node& parentNode, NodeState newState, std::uint16_t code) {
  Node& node = groups.emplace_back();
  node.file = this;
  node.parent = &parentNode;
  node.state = newState;
  node.depth = static_cast<std::uint8_t>(parentNode.depth + 1);
  node.typeCode = code;
  return node;
}

void ViewBody(Node& node, Bytes body) noexcept {
  const auto nameSize = Load<std::uint32_t>(body.data());
  node.itemCount = Load<std::uint32_t>(body.data() + 4);
  node.name = {reinterpret_cast<const char*>(body.data()) + groupHeaderSize, nameSize};
  node.items = body.subspan(groupHeaderSize + RoundUp(nameSize, 4));
}

Bytes ItemBytes(const Node& node) noexcept {
  return node.pending ? Bytes(node.pending->items) : node.items;
}

std::size_t ItemExtent(const Node& node, const ItemHeader& header) noexcept {
  if (header.type == 0 && node.pending) return itemHeaderSize;
  return itemHeaderSize + static_cast<std::size_t>(RoundUp(DataSize(header.type, header.count), 4));
}

const std::byte* ItemAt(const Node& node, std::uint32_t index) {
  auto& offsets = node.itemOffsets;
  const std::byte* base = ItemBytes(node).data();
  if (index == 0) return base;
  if (offsets.empty()) offsets.push_back(0);
  offsets.reserve(node.itemCount);
  while (offsets.size() <= index) {
    const std::size_t last = offsets.back();
    offsets.push_back(
        static_cast<std::uint32_t>(last + ItemExtent(node, DecodeItemHeader(base + last))));
  }
  return base + offsets[index];
}

}  // namespace utdata::kvtiff19
