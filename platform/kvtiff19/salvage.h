// Finding the top groups of a damaged file that are as they were written.
#pragma once

#include <map>
#include <optional>

#include "platform/kvtiff19/node.h"

namespace utdata::kvtiff19 {

/// Reads what ReadCommitted reads, and what is left of it where that refuses the file. A top group
/// counts as whole when a commit record or another top group names it with the checksum that its
/// bytes have; one wrong byte is found by that checksum and mended. A group whose name is lost with
/// what named it is taken when its structure is right, and listed as unchecked.
class Salvage {
 public:
  /// @param file just opened; receives nodes of the groups
  Salvage(OpenFile& file, SCFile::RescueFindings& findings) : m_file(file), m_findings(findings) {}

  /// Fails when the file cannot be read, or is of a newer version.
  [[nodiscard]] int Run();
  /// The groups that are whole, by their numbers in the file.
  [[nodiscard]] const std::map<std::uint64_t, Node*>& Tops() const { return m_tops; }

 private:
  [[nodiscard]] int ReadRecord();
  [[nodiscard]] bool Walk(Link link, std::uint64_t ordinal);
  [[nodiscard]] std::optional<SegmentHeader> Take(const Link& link, std::uint64_t ordinal);
  [[nodiscard]] bool IsBacked(const Link& link) const;
  [[nodiscard]] int Scan();
  void Note(std::uint64_t offset, Bytes head);
  [[nodiscard]] bool Mend(std::span<std::byte> segment, const Link& link, std::uint64_t ordinal);
  void TakeUnchecked(std::uint64_t ordinal, std::uint64_t offset);
  [[nodiscard]] std::optional<SegmentHeader> Keep(std::unique_ptr<std::byte[]> buffer,
                                                  const Link& link,
                                                  std::uint64_t ordinal);
  void ListLostGroups();

  OpenFile& m_file;
  SCFile::RescueFindings& m_findings;
  std::uint64_t m_size = 0;              ///< of the file
  std::optional<CommitRecord> m_record;  ///< the newest that is whole
  std::map<std::uint64_t, Node*> m_tops;
  std::multimap<std::uint64_t, Link> m_links;     ///< found in the file: of the group of a number
  std::map<std::uint64_t, std::uint64_t> m_seen;  ///< where groups of a number seem to begin
};

}  // namespace utdata::kvtiff19
