// Which descriptor of a list a modification belongs to.
#pragma once

#include <algorithm>
#include <cstddef>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "src/container/grouptypes.h"

namespace utdata::container {

/// The descriptors of a list by identity: a match is found without a walk over the list.
template <class Descriptor>
class Matching {
 public:
  explicit Matching(const CList<Descriptor*>& list) {
    for (Descriptor* descriptor : list) Add(descriptor);
  }

  /// Adds a descriptor that was appended to the list.
  void Add(Descriptor* descriptor) { m_entries.insert(EntryOf(descriptor, m_count++)); }

  /// The first descriptor in list order whose ids are the modification's and whose kind is the same
  /// or 0; null when there is none.
  [[nodiscard]] Descriptor* Find(const Descriptor& modification) const {
    const auto found = FindEntry(modification);
    return found == m_entries.end() ? nullptr : found->descriptor;
  }

  /// The descriptors that have the modification's ids, whatever their kinds, in list order.
  [[nodiscard]] std::vector<Descriptor*> FindAll(const Descriptor& modification) const {
    const auto ids = SCFile::file_Identity(modification).ids;
    std::vector<Entry> entries;
    for (auto entry = m_entries.lower_bound({{ids, 0}, 0, nullptr});
         entry != m_entries.end() && entry->identity.ids == ids;
         ++entry)
      entries.push_back(*entry);
    std::ranges::sort(entries, {}, &Entry::place);
    std::vector<Descriptor*> descriptors;
    for (const Entry& entry : entries) descriptors.push_back(entry.descriptor);
    return descriptors;
  }

  /// Calls `change(descriptor)` on what Find gives; its kind may change by it. Returns what Find
  /// gave.
  template <class Change>
  Descriptor* ChangeMatch(const Descriptor& modification, Change change) {
    const auto found = FindEntry(modification);
    if (found == m_entries.end()) return nullptr;
    auto node = m_entries.extract(found);
    Entry& entry = node.value();
    change(entry.descriptor);
    entry = EntryOf(entry.descriptor, entry.place);
    Descriptor* const changed = entry.descriptor;
    m_entries.insert(std::move(node));
    return changed;
  }

 private:
  struct Entry {
    SCFile::GroupIdentity identity;
    std::size_t place;  ///< in the list
    Descriptor* descriptor;
    friend bool operator<(const Entry& a, const Entry& b) {
      return std::tie(a.identity.ids, a.identity.kind, a.place) <
             std::tie(b.identity.ids, b.identity.kind, b.place);
    }
  };
  using Entries = std::set<Entry>;

  Entry EntryOf(Descriptor* descriptor, std::size_t place) const {
    return {SCFile::file_Identity(*descriptor), place, descriptor};
  }

  typename Entries::const_iterator FindEntry(const Descriptor& modification) const {
    const SCFile::GroupIdentity wanted = SCFile::file_Identity(modification);
    const auto first = [&](const SCFile::GroupIdentity& identity) {
      const auto found = m_entries.lower_bound({identity, 0, nullptr});
      return found != m_entries.end() && found->identity == identity ? found : m_entries.end();
    };
    const auto same = first(wanted);
    const auto unassigned = first({wanted.ids, 0});
    if (same == m_entries.end()) return unassigned;
    if (unassigned == m_entries.end()) return same;
    return same->place < unassigned->place ? same : unassigned;
  }

  Entries m_entries;
  std::size_t m_count = 0;
};

/// Reads a modification's group into the descriptor that it belongs to, which goes on referring to
/// its own group. Returns the file layer's status; after a failure the descriptor is as it was.
template <class Descriptor>
[[nodiscard]] int ReadModification(SCFile::GroupHandle group, Descriptor* descriptor) {
  const SCFile::GroupHandle own = GetGroupHandle(*descriptor);
  const int status = Family<Descriptor>::Read(group, descriptor, true);
  SetGroupHandle(*descriptor, own);
  return status;
}

}  // namespace utdata::container
