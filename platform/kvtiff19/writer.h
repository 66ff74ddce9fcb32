// Writing: pending groups gather their items in memory, blocks go to the file at once, and a commit
// makes both visible in one step. docs/file-format.md describes the protocol. One thread at a time
// per file.
#pragma once

#include "platform/kvtiff19/node.h"

namespace utdata::kvtiff19 {

/// Records that a write failed, so that the next commit fails too. Returns the status.
int FailWrite(OpenFile& file, int status, std::string_view what);
int FailWrite(OpenFile& file, os::Error error, std::string_view what);

/// Takes the writer's lock unless this file has it; status_ReadOnly, status_Locked or
/// status_MovedOn when that cannot be.
[[nodiscard]] int BeginWrite(OpenFile& file);

/// Makes NAME.part of a new file, marked as unfinished and locked. A failure leaves nothing of it
/// behind.
[[nodiscard]] int BeginNewFile(OpenFile& file);

/// Makes what is under NAME.part as BeginNewFile made it, also after a first commit that failed.
[[nodiscard]] os::Error EmptyNewFile(OpenFile& file) noexcept;

/// A new pending group under a file or a pending group. @param name UTF-8
[[nodiscard]] int AddPending(Node& parent, std::uint16_t typeCode, std::string name, Node*& group);

/// Appends a stored value whose form is right to a pending group.
[[nodiscard]] int AppendStored(Node& group,
                               std::uint16_t code,
                               std::uint8_t type,
                               std::uint32_t count,
                               Bytes data);

[[nodiscard]] int Commit(OpenFile& file);

/// Forgets what was gathered since the last commit, cuts the file back and gives the lock up. A new
/// file stays unfinished and locked.
void Drop(OpenFile& file) noexcept;

/// Drop, and a new file that was never committed leaves nothing behind.
void Abandon(OpenFile& file) noexcept;

}  // namespace utdata::kvtiff19
