// What happened to an inspection since it was first written: its modifications as they stand in its
// files, in the order in which loading applies them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "utdata/edits.h"

namespace utdata {

/// A group that a later write changed or added.
struct HistoryEvent {
  std::string file;                  ///< path
  std::size_t write = 0;             ///< of the file, from 1
  std::string group;                 ///< "gate 1 of channel 0", by the ids that the file has
  std::vector<FieldChange> changes;  ///< none of a group that came with this write
};

/// The events of all files. Modifications that loading drops, and such of an inspection's own that
/// are not saved, are not among them. Throws Error when a file cannot be read.
[[nodiscard]] UTDATA_API std::vector<HistoryEvent> HistoryOf(const Inspection& inspection);

}  // namespace utdata
