// Reading what is committed: header, commit record, and the chain of segments. Writes nothing.
#pragma once

#include "platform/kvtiff19/node.h"

namespace utdata::kvtiff19 {

/// What the header and the two commit slots say.
struct SlotState {
  SCFile::FileOrigin origin;
  CommitRecord record;  ///< the newest one
  bool atRest = false;  ///< the file ends where the record says, and both slots say the same; else
                        ///< a writer is or was at work
};

/// Reads header and commit slots. A writer may commit at the same time.
[[nodiscard]] int ReadSlots(const OpenFile& file, SlotState& state);

/// Reads and checks all metadata of a file just opened, and fills its top groups.
[[nodiscard]] int ReadCommitted(OpenFile& file);

/// Reads `buffer` whole; the end of the file before it is damage.
[[nodiscard]] int ReadWhole(const OpenFile& file,
                            std::uint64_t offset,
                            std::span<std::byte> buffer);

}  // namespace utdata::kvtiff19
