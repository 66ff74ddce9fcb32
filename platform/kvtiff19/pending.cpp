// Pending groups: made, filled and dropped.
#include <algorithm>
#include <new>
#include <utility>

#include "platform/kvtiff19/items.h"
#include "platform/kvtiff19/writer.h"

namespace utdata::kvtiff19 {
namespace {

/// Keeps the first failure, which the commit then reports.
int Remember(OpenFile& file, int status) noexcept {
  if (file.failure != SCFile::status_Ok) return status;
  file.failure = status;
  try {
    file.failureText = SCFile::file_LastError();
  } catch (const std::bad_alloc&) {
    file.failureText.clear();  // the status alone must do
  }
  return status;
}

/// Forgets the groups gathered since the last commit, and that any of them failed.
void Forget(OpenFile& file) noexcept {
  for (Node& node : file.groups) {
    if (node.state != NodeState::Pending) continue;
    node.state = NodeState::Dropped;
    node.itemCount = 0;
    node.pending.reset();
    node.itemOffsets.clear();
  }
  file.children.resize(file.committedTops);
  file.failure = SCFile::status_Ok;
  file.failureText.clear();
  file.isWanted = false;
}

}  // namespace

int FailWrite(OpenFile& file, int status, std::string_view what) {
  return Remember(file, FailAt(file, status, what));
}

int FailWrite(OpenFile& file, os::Error error, std::string_view what) {
  return Remember(file, FailOs(file.path, error, what));
}

void MarkFailed(Node& group, int status) {
  Remember(*group.file, FailAt(*group.file, status, SCFile::file_StatusText(status)));
}

int AddPending(Node& parent, std::uint16_t typeCode, std::string name, Node*& group) {
  OpenFile& file = *parent.file;
  if (parent.depth >= maxDepth)
    return FailWrite(file, SCFile::status_TooLarge, "groups are nested too deep");
  if (parent.state == NodeState::File) {
    if (const int status = BeginWrite(file)) return Remember(file, status);
    file.isWanted = true;
  }
  Node& node = file.AddGroup(parent, NodeState::Pending, typeCode);
  node.pending = std::make_unique<PendingGroup>();
  node.pending->name = std::move(name);
  node.pending->items.reserve(512);
  if (parent.pending) {
    PendingGroup& gathered = *parent.pending;
    gathered.children.push_back({gathered.items.size(), parent.itemCount, &node});
    if (const int status = AppendStored(parent, typeCode, 0, 0, {})) return status;
  } else {
    file.children.push_back(&node);
  }
  group = &node;
  return SCFile::status_Ok;
}

int AppendStored(Node& group,
                 std::uint16_t code,
                 std::uint8_t type,
                 std::uint32_t count,
                 Bytes data) {
  std::vector<std::byte>& items = group.pending->items;
  const std::size_t start = items.size();
  const std::uint64_t end = start + itemHeaderSize + RoundUp(data.size(), 4);
  if (end > maxBodySize)
    return FailWrite(
        *group.file, SCFile::status_TooLarge, "a group is larger than the format allows");
  if (end > items.capacity())
    items.reserve(std::max(static_cast<std::size_t>(end), 2 * items.capacity()));
  items.resize(static_cast<std::size_t>(end));
  EncodeItemHeader(items.data() + start, code, type, count);
  if (!data.empty()) std::memcpy(items.data() + start + itemHeaderSize, data.data(), data.size());
  ++group.itemCount;
  return SCFile::status_Ok;
}

void Drop(OpenFile& file) noexcept {
  Forget(file);
  if (!file.writing) return;
  if (file.isNew) {
    if (const os::Error error = EmptyNewFile(file); error != os::Error::None)
      FailWrite(file, error, "what was written before cannot be cut off");
    return;
  }
  // Bytes that cannot be cut off are behind the committed end: the next writer cuts them.
  static_cast<void>(file.handle->Truncate(file.current.end));
  file.writeEnd = file.current.end;
  file.handle->Unlock();
  file.writing = false;
}

void Abandon(OpenFile& file) noexcept {
  if (!file.isNew) return Drop(file);
  Forget(file);
  // Removed while the lock is held, so that it cannot be another writer's.
  bool isOurs = false;
  if (file.IsAt(file.partPath, isOurs) == os::Error::None && isOurs)
    static_cast<void>(file.fileSystem->Remove(file.partPath));
}

}  // namespace utdata::kvtiff19
