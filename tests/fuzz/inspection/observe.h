// All that can be seen of an open inspection, in a form that is compared: of the same files, or of
// what a save made of them, everybody sees the same.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "interfaces/kvtiff19_catalogue.h"
#include "utdata/inspection.h"

namespace utdata::fuzz {

/// A field of a group, bit for bit.
struct SeenField {
  std::uint32_t group = 0;                   ///< counted over all types
  const SCFile::FieldInfo* field = nullptr;  ///< null for a defect record
  std::string value;
  friend bool operator==(const SeenField&, const SeenField&) = default;
};
using SeenFields = std::vector<SeenField>;

/// A data group as one line, and whether reading its samples was refused as damaged.
struct SeenData {
  std::string description;  ///< names, axes, units
  /// Whether its item is the file set's, and the groups that belong with it, by index. Both are
  /// found when the item is made, by a bookmark type that matches any where the file gives none,
  /// and a save writes the one that was assigned: after it other groups may be found.
  std::string partners;
  std::string samples;  ///< what is read of them, or why they are not
  bool isDamaged = false;
  friend bool operator==(const SeenData&, const SeenData&) = default;
};

struct Observation {
  SeenFields groups;  ///< of all types, as the file descriptor has them
  SeenFields items;   ///< of the types that can be edited, as their items have them
  std::vector<SeenData> data;
  std::vector<std::string> masters;  ///< made anew at each loading, so that edits show later
  std::vector<std::string> history;  ///< a line for each write, where asked for
};

/// What of an observation takes longer than all the rest.
struct Thoroughness {
  /// What takes tables of all samples of 16 bits: display codes, and values that are not what is
  /// stored.
  bool wideCodes = false;
  bool history = false;
};

[[nodiscard]] SeenFields SeeGroups(const Inspection& inspection);
[[nodiscard]] SeenFields SeeItems(Inspection& inspection);
[[nodiscard]] std::vector<std::string> SeeHistory(const Inspection& inspection);
[[nodiscard]] Observation Observe(Inspection& inspection, const Thoroughness& with = {});

/// Where two differ first; empty when they do not.
[[nodiscard]] std::string Difference(const SeenFields& a, const SeenFields& b);
[[nodiscard]] std::string Difference(const std::vector<SeenData>& a,
                                     const std::vector<SeenData>& b);
[[nodiscard]] std::string Difference(const std::vector<std::string>& a,
                                     const std::vector<std::string>& b);

}  // namespace utdata::fuzz
