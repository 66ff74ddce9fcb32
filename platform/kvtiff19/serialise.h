// The bytes of pending groups, as a commit writes them.
#pragma once

#include <memory>
#include <vector>

#include "platform/kvtiff19/node.h"

namespace utdata::kvtiff19 {

/// All segments of one commit, one after the other.
struct Segments {
  std::unique_ptr<std::byte[]> bytes;
  std::size_t size = 0;
  CommitRecord record;  ///< `before` with these segments added; the number is the caller's
  std::vector<std::pair<Node*, std::size_t>>
      bodies;  ///< every group written, and where its body starts
};

/// Writes the pending top groups of a file, to stand at `offset`. False when a group is larger than
/// the format allows.
[[nodiscard]] bool Serialise(std::span<Node* const> tops,
                             std::uint64_t offset,
                             const CommitRecord& before,
                             Segments& segments);

}  // namespace utdata::kvtiff19
