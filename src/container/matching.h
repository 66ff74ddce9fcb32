// Which descriptor of a list a modification belongs to.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "src/container/grouptypes.h"

namespace utdata::container {

/// What keeps two data groups of one key apart; 0 for the other types, and for a data group that is
/// not assigned yet.
template <class Descriptor>
std::uint32_t BookmarkOf(const Descriptor&) {
  return bookmark_None;
}
inline std::uint32_t BookmarkOf(const CGDataTypeFDD& data) { return data.GetDataBookmarkType(); }

/// The descriptors of a list by key, so that a file of many modifications is read in little more
/// than one pass.
template <class Descriptor>
class Matching {
 public:
  Matching(const GroupType<Descriptor>& groupType, const CList<Descriptor*>& list)
      : m_type(groupType) {
    for (Descriptor* descriptor : list) Add(descriptor);
  }

  /// Tells of a descriptor that was appended to the list.
  void Add(Descriptor* descriptor) { m_entries.insert(EntryOf(descriptor, m_count++)); }

  /// The first descriptor in list order whose key is the modification's and whose bookmark is the
  /// same or not assigned; null when there is none.
  [[nodiscard]] Descriptor* Find(const Descriptor& modification) const {
    const auto found = FindEntry(modification);
    return found == m_entries.end() ? nullptr : found->descriptor;
  }

  /// The descriptors that have the modification's key, whatever their bookmarks, in list order.
  [[nodiscard]] std::vector<Descriptor*> FindAll(const Descriptor& modification) const {
    const Key key = m_type.key(modification);
    std::vector<Entry> entries;
    for (auto entry = m_entries.lower_bound({key, 0, 0, nullptr});
         entry != m_entries.end() && entry->key == key;
         ++entry)
      entries.push_back(*entry);
    std::ranges::sort(entries, {}, &Entry::place);
    std::vector<Descriptor*> descriptors;
    for (const Entry& entry : entries) descriptors.push_back(entry.descriptor);
    return descriptors;
  }

  /// Calls `change(descriptor)` on what Find gives; the bookmark may change by it. Returns what
  /// Find gave.
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
    Key key;
    std::uint32_t bookmark;
    std::size_t place;  ///< in the list
    Descriptor* descriptor;
    friend bool operator<(const Entry& a, const Entry& b) {
      return std::tie(a.key, a.bookmark, a.place) < std::tie(b.key, b.bookmark, b.place);
    }
  };
  using Entries = std::set<Entry>;

  Entry EntryOf(Descriptor* descriptor, std::size_t place) const {
    return {m_type.key(*descriptor), BookmarkOf(*descriptor), place, descriptor};
  }

  typename Entries::const_iterator FindEntry(const Descriptor& modification) const {
    const Key key = m_type.key(modification);
    const auto first = [&](std::uint32_t bookmark) {
      const auto found = m_entries.lower_bound({key, bookmark, 0, nullptr});
      return found != m_entries.end() && found->key == key && found->bookmark == bookmark
                 ? found
                 : m_entries.end();
    };
    const auto same = first(BookmarkOf(modification));
    const auto unassigned = first(bookmark_None);
    if (same == m_entries.end()) return unassigned;
    if (unassigned == m_entries.end()) return same;
    return same->place < unassigned->place ? same : unassigned;
  }

  const GroupType<Descriptor>& m_type;
  Entries m_entries;
  std::size_t m_count = 0;
};

/// Reads a modification's group into the descriptor that it belongs to, which goes on referring to
/// its own group. Returns the file layer's status; after a failure the descriptor is as it was.
template <class Descriptor>
[[nodiscard]] int ReadModification(const GroupType<Descriptor>& type,
                                   SCFile::GroupHandle group,
                                   Descriptor* descriptor) {
  const SCFile::GroupHandle own = GetGroupHandle(*descriptor);
  const int status = type.read(group, descriptor, true);
  SetGroupHandle(*descriptor, own);
  return status;
}

}  // namespace utdata::container
