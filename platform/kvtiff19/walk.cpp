// Items of a group in order, and appending to one.
#include "platform/kvtiff19/items.h"
#include "platform/kvtiff19/text.h"
#include "platform/kvtiff19/writer.h"

namespace utdata::kvtiff19 {

ItemWalk::ItemWalk(const SCFile::Node& group)
    : m_at(group.items.data()), m_left(group.state == NodeState::Committed ? group.itemCount : 0) {}

int AppendItem(SCFile::Node& group,
               std::uint16_t code,
               SCFile::ValueType type,
               std::uint32_t count,
               Bytes data) {
  if (group.state != NodeState::Pending)
    return FailAt(*group.file, SCFile::status_BadArgument, "the group is not being written");
  const bool plain = type != SCFile::value_Block && ElementSize(type) != 0;
  if (!plain || data.size() != DataSize(type, count))
    return FailWrite(
        *group.file, SCFile::status_BadArgument, "an item's size contradicts its type");
  if (type == SCFile::value_Text &&
      !WideLength({reinterpret_cast<const char*>(data.data()), data.size()}))
    return FailWrite(
        *group.file, SCFile::status_BadText, "a text holds something that is not a character");
  return AppendStored(group, code, type, count, data);
}

}  // namespace utdata::kvtiff19
