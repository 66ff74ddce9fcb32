// Files and groups in memory, behind the handles of the interface.
//
// A file owns every node below it until it is closed. Committed groups are views of the metadata
// bytes that were read or written; pending ones gather items until the next commit. One thread at a
// time per file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "interfaces/os.h"
#include "platform/kvtiff19/format.h"

namespace utdata::kvtiff19 {

struct OpenFile;

enum class NodeState : std::uint8_t {
  File,
  Committed,
  Pending,  ///< made since the last commit
  Dropped   ///< discarded, or its commit failed; holds nothing
};

/// A child group of a pending group.
struct PendingChild {
  std::size_t headerAt;  ///< where its header stands in the parent's items; its body joins them
                         ///< when they are committed
  std::uint32_t index;   ///< among the parent's items
  SCFile::Node* node;
};

/// What a pending group has gathered.
struct PendingGroup {
  std::string name;  ///< UTF-8
  std::vector<std::byte>
      items;  ///< as stored, except that child groups have a header without a body
  std::vector<PendingChild> children;
};

}  // namespace utdata::kvtiff19

struct SCFile::Node {
  utdata::kvtiff19::OpenFile* file = nullptr;
  SCFile::Node* parent = nullptr;  ///< null for a file
  utdata::kvtiff19::NodeState state = utdata::kvtiff19::NodeState::File;
  std::uint8_t depth = 0;  ///< 1 for a top group
  bool rulesHold = false;  ///< its items were found to fit its type
  std::uint16_t typeCode = 0;
  std::uint32_t itemCount = 0;       ///< of a group
  std::string_view name;             ///< UTF-8; of a committed group
  std::span<const std::byte> items;  ///< of a committed group
  std::unique_ptr<utdata::kvtiff19::PendingGroup> pending;
  mutable std::vector<std::uint32_t>
      itemOffsets;  ///< of items by index, as far as they were asked for
  std::vector<SCFile::Node*>
      children;  ///< opened child groups by item index; of a file its top groups
};

namespace utdata::kvtiff19 {

using SCFile::Node;

struct OpenFile : Node {
  std::wstring path;
  std::wstring partPath;  ///< of a new file: where it is until it has its name
  os::FileSystem* fileSystem = nullptr;
  std::unique_ptr<os::File> handle;
  bool readOnly = false;    ///< never to be written
  bool isWritable = false;  ///< the handle is open for writing too
  bool isNew = false;       ///< still under its ".part" name
  bool isWanted = false;    ///< of a new file: it is to exist once it is closed
  bool replace = false;     ///< a new file that may take the place of another
  bool writing = false;     ///< holds the writer's lock
  SCFile::FileOrigin origin;
  CommitRecord current;  ///< what is committed
  std::size_t committedTops = 0;
  std::uint64_t writeEnd = dataStart;  ///< where the next bytes are written while `writing`
  int failure = 0;  ///< status of the first write that failed since the last commit
  std::string failureText;
  std::deque<Node> groups;
  std::vector<std::unique_ptr<std::byte[]>> metadata;  ///< segments, each whole
  std::vector<const std::byte*>
      misfits;  ///< first items of groups read at opening that do not fit their type, in order
  std::vector<Link>
      segmentsRead;  ///< where the top groups found at opening stand, the last one first
  std::vector<std::unique_ptr<os::Mapping>> mappings;

  /// Whether `name` still leads to the open file.
  [[nodiscard]] os::Error IsAt(const std::wstring& name, bool& is) const;
  /// Whether a group that was read at opening fits its type.
  [[nodiscard]] bool FitsType(const Node& group) const;
  Node& AddGroup(Node& parent, NodeState newState, std::uint16_t code);
};

/// Makes `node` a view of a body whose structure was checked.
void ViewBody(Node& node, Bytes body) noexcept;

/// The item headers of a group, pending or not, from their first byte on.
[[nodiscard]] Bytes ItemBytes(const Node& node) noexcept;
/// Bytes from an item's header to the next item's. A pending group's child groups have no body yet.
[[nodiscard]] std::size_t ItemExtent(const Node& node, const ItemHeader& header) noexcept;
/// Where item `index` starts; REQUIRES: index < itemCount.
[[nodiscard]] const std::byte* ItemAt(const Node& node, std::uint32_t index);

/// A failure of one file: its path, then `what`. Returns the status.
int FailAt(const OpenFile& file, int status, std::string_view what) noexcept;
int FailAt(const std::wstring& path, int status, std::string_view what) noexcept;
/// A failure that the operating system reported: "`what`: its words". Returns the status that
/// corresponds to `error`.
int FailOs(const std::wstring& path, os::Error error, std::string_view what) noexcept;

}  // namespace utdata::kvtiff19
