// The changes of one descriptor against a loaded one, on their way into a file.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <type_traits>
#include <vector>

#include "src/container/groupwriting.h"
#include "src/container/matching.h"
#include "src/container/subchannels.h"

namespace utdata::container {

/// Writes descriptors as modifications of the loaded ones that they match, or whole where they
/// match none. A data group without a match may leave a copy in the loaded descriptor, the base of
/// later writes; the copies are taken back unless the changes are settled.
class Changes {
 public:
  /// @param writeFlag handed to the data groups' writer; 0 leaves copies
  Changes(CFContTypeFileDescr& loadedDescriptor, int flag);
  Changes(const Changes&) = delete;
  Changes& operator=(const Changes&) = delete;
  ~Changes();

  /// Writes the descriptors of one type into a top group, in order.
  template <class Descriptor>
  void Write(SCFile::GroupHandle top,
             const GroupType<Descriptor>& type,
             const CList<Descriptor*>& descriptors) {
    if (descriptors.IsEmpty()) return;
    Matching<Descriptor> matching(m_loaded.*type.list);
    Bases<Descriptor> bases;
    for (Descriptor* descriptor : descriptors) {
      Descriptor* const base = FindBase(matching, *descriptor);
      const WrittenIds ids = IdsFor(base, *descriptor);
      if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>) {
        if (base) descriptor->cellSize = base->cellSize;
        KeepOthersApart(top, base, *descriptor, ids.subChannelId);
      }
      const SCFile::GroupHandle group = CreateGroup(top, type.modifierCode, type.modifierName);
      if (base && type.HasModifierCode())
        WriteModification(group, bases, base, *descriptor, ids);
      else
        WriteUnder<Descriptor>(group, nullptr, *descriptor, ids, m_writeFlag);
      if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>)
        if (!base && m_writeFlag == 0) matching.Add(LeaveCopy(group, *descriptor, ids));
    }
  }

  /// After all were written: a status other than status_Ok when a modification would be read into
  /// another group than the one that it is of.
  [[nodiscard]] int Check() const;

  /// Once the changes are on the medium: the loaded descriptors take over what their modifications
  /// say, so that the next changes are written against what the file then holds, and the copies
  /// stay. Allocates no memory.
  void Settle() noexcept;

 private:
  /// The bases of one type as this write leaves them; a second modification is written against what
  /// the first has made of its base.
  template <class Descriptor>
  using Bases = std::map<const Descriptor*, std::shared_ptr<Descriptor>>;

  /// The first descriptor that has the ids and the bookmark. Where numbering has given several
  /// beams of a channel one number: the one that the changed descriptor was read from, if a
  /// modification can name it.
  template <class Descriptor>
  Descriptor* FindBase(const Matching<Descriptor>& matching, const Descriptor& descriptor) const {
    Descriptor* const first = matching.Find(descriptor);
    if constexpr (hasSubChannelId<Descriptor>) {
      const SCFile::GroupHandle group = GetGroupHandle(descriptor);
      if (!first || !m_loaded.m_numbering || !group || GetGroupHandle(*first) == group)
        return first;
      const std::vector<Descriptor*> alike = matching.FindAll(descriptor);
      const auto own = std::ranges::find(
          alike, group, [](const Descriptor* each) { return GetGroupHandle(*each); });
      if (own == alike.end()) return first;
      const auto named = std::ranges::find_if(alike, [&](const Descriptor* each) {
        const std::uint32_t bookmark = SCFile::file_Identity(*each).kind;
        return StoredIdOf(*each) == StoredIdOf(**own) &&
               (bookmark == bookmark_None || bookmark == SCFile::file_Identity(descriptor).kind);
      });
      if (named != alike.end()) return *named;
    }
    return first;
  }

  /// The ids that a descriptor is written with: those of its base, or new ones.
  template <class Descriptor>
  WrittenIds IdsFor(const Descriptor* base, const Descriptor& descriptor) {
    WrittenIds ids{};
    if constexpr (hasSubChannelId<Descriptor>) {
      ids.subChannelId = base ? StoredIdOf(*base) : NewId(descriptor);
      if (m_loaded.m_numbering && !base) ids.number = descriptor.subChannelId;
    }
    if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>) {
      // A beam keeps its number when it gets a name or loses it.
      if (m_loaded.m_numbering && base && IsNamed(descriptor) != base->stored.isNamed)
        ids.number = descriptor.subChannelId;
    }
    if constexpr (std::is_same_v<Descriptor, CGChanTypeDescr>)
      if (m_loaded.m_numbering && !base) ids.number = 0;
    return ids;
  }

  template <class Descriptor>
  std::uint32_t NewId(const Descriptor& descriptor) {
    if (!m_loaded.m_numbering) return descriptor.subChannelId;
    if (!m_finder) m_finder.emplace(m_loaded, m_given);
    return m_finder->Find(descriptor);
  }

  template <class Descriptor>
  void WriteModification(SCFile::GroupHandle group,
                         Bases<Descriptor>& bases,
                         Descriptor* base,
                         const Descriptor& descriptor,
                         const WrittenIds& ids) {
    std::shared_ptr<Descriptor>& next = bases[base];
    const bool isFirst = !next;
    const Descriptor* const against = isFirst ? base : next.get();
    WriteUnder(group, against, descriptor, ids, m_writeFlag);
    auto changed = std::make_shared<Descriptor>(descriptor);
    SetGroupHandle(*changed, GetGroupHandle(*base));
    if constexpr (hasNumber<Descriptor>) changed->stored = base->stored;
    if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>) {
      changed->dataPointer = base->dataPointer;
      next = std::move(changed);
      m_settling.emplace_back(
          [group, base, isNamed = !ids.number] { TakeOver(group, *base, isNamed); });
    } else {
      if (isFirst)
        m_settling.emplace_back([base, changed] { *base = std::move(*changed); });
      else
        *next = std::move(*changed);
      if (isFirst) next = std::move(changed);
    }
  }

  /// Reads a modification that was just committed into its base, which keeps its number. Takes no
  /// memory.
  static void TakeOver(SCFile::GroupHandle group, CGDataTypeFDD& base, bool withName) noexcept;

  /// A listed group with the ids that a modification is written with, but with a bookmark that the
  /// file does not hold yet, would match the modification on loading. Writes its bookmark first.
  /// One that would match all the same makes the changes ones that cannot be written.
  void KeepOthersApart(SCFile::GroupHandle top,
                       const CGDataTypeFDD* base,
                       const CGDataTypeFDD& descriptor,
                       std::uint32_t subChannelId);

  /// The loaded data groups that have, in the file, the ids of a descriptor under a sub-channel id;
  /// in list order. In memory their numbers may differ.
  [[nodiscard]] const std::vector<CGDataTypeFDD*>& Namesakes(const CGDataTypeFDD& descriptor,
                                                             std::uint32_t subChannelId);

  /// The copy refers to its samples in the file, not in memory that is the host's and may be gone
  /// by the next write.
  CGDataTypeFDD* LeaveCopy(SCFile::GroupHandle group,
                           const CGDataTypeFDD& data,
                           const WrittenIds& ids);

  CFContTypeFileDescr& m_loaded;
  int m_writeFlag;
  std::vector<POSITION> m_copies;  ///< in the loaded data list; null while one is being made
  std::vector<std::function<void()>> m_settling;
  std::set<const CGDataTypeFDD*> m_keptApart;
  std::optional<std::map<Key, std::vector<CGDataTypeFDD*>>> m_namesakes;  ///< once asked for
  bool m_isAmbiguous = false;
  GivenIds m_given;  ///< the inspection's, and those of this write
  std::optional<IdFinder> m_finder;
};

}  // namespace utdata::container
