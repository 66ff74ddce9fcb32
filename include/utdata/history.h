// The history of an inspection: what each write into its files changed, when, by what program, by
// whom and why.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "utdata/edits.h"

namespace utdata {

/// A group that a write added or changed.
struct GroupEvent {
  std::string group;  ///< "gate 1 of channel 0", by the ids that the file has
  bool isAdded = false;
  std::vector<FieldChange> changes;  ///< none of one that was added, or written anew alike
};

/// One write into one file. Its texts and its time are what the file says, and may be anything:
/// whoever prints them makes them fit for it.
struct WriteEvent {
  std::string file;                  ///< path
  std::uint64_t write = 0;           ///< of the file, from 1
  std::optional<std::int64_t> when;  ///< microseconds since the start of 1970, UTC
  std::string program;               ///< what is not known is empty
  std::string version;
  std::string author;
  std::string reason;
  std::vector<GroupEvent> groups;  ///< none of the first write of all: there it begins
};

/// The writes of all files of an inspection, in the order in which loading applies them.
/// Modifications that loading drops, and such of an inspection's own that are not saved, are not
/// among them. Throws Error when a file cannot be read.
[[nodiscard]] UTDATA_API std::vector<WriteEvent> HistoryOf(const Inspection& inspection);

/// "2026-11-23 14:05:12 UTC"; of a time outside the years 1 to 9999 "an impossible time".
[[nodiscard]] UTDATA_API std::string TimeText(std::int64_t microseconds);

}  // namespace utdata
