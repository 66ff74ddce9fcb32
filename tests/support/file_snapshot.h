// An inspection file as a text, so that tests compare whole files in one line.
#pragma once

#include <optional>
#include <string>

#include "interfaces/kvtiff19.h"

namespace utdata::test {

/// Everything below a file or group: codes, names, value types, counts, values and block contents,
/// one line an item, read through the interface. A value that cannot be read shows its status.
[[nodiscard]] std::string Snapshot(SCFile::Node* parent);

/// The snapshot of a file's content; nothing when it cannot be opened.
[[nodiscard]] std::optional<std::string> SnapshotOf(const std::wstring& path);

}  // namespace utdata::test
