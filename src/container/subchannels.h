// Sub-channel numbers: how the ids that a file stores become the numbers in memory, and which ids
// are written for them.
//
// A file keeps its ids for ever, since modifications find their group by them. Numbering changes
// the ids in memory alone; `stored` of each loaded descriptor says what the file calls it. These
// hold:
//   1. The number of a loaded descriptor is a function of what the files store, so that every load,
//      with numbering before, after or between its files, gives the same one.
//   2. A modification is written under the id that its base has in the file.
//   3. What is added to a numbered inspection is written with its number beside its id: numbering
//      gives it that number, and does not count it for all others.
//   4. A new id is one that no other beam of the channel has in the file.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <type_traits>
#include <utility>

#include "src/container/grouptypes.h"

namespace utdata::container {

/// Item of a channel, a sub-channel or a data group that was added to a numbered inspection, and of
/// a modification that names a data group's sub-channel there: the first of its group, the number.
inline constexpr std::uint32_t itemNumber = 200;

template <class Descriptor>
inline constexpr bool hasSubChannelId =
    std::is_same_v<Descriptor, CGDataTypeFDD> || std::is_same_v<Descriptor, CGSubchanTypeDescr>;

template <class Descriptor>
inline constexpr bool hasNumber =
    hasSubChannelId<Descriptor> || std::is_same_v<Descriptor, CGChanTypeDescr>;

/// The ids that distinguish groups of one type.
using Key = SCFile::GroupIdentity::Ids;

/// The key that a descriptor has under another sub-channel id.
template <class Descriptor>
Key KeyUnder(const Descriptor& descriptor, std::uint32_t id) {
  Descriptor renamed = descriptor;
  renamed.subChannelId = id;
  return SCFile::file_Identity(renamed).ids;
}

/// Whether a group names a sub-channel, as numbering looks for it: data groups alone.
[[nodiscard]] inline bool IsNamed(const CGDataTypeFDD& data) {
  return data.subChannelName[0] != L'\0';
}
[[nodiscard]] inline bool IsNamed(const CGSubchanTypeDescr&) { return false; }

/// Notes on a descriptor that was just read what its group says.
void NoteStored(SCFile::GroupHandle group, CGDataTypeFDD& data);
void NoteStored(SCFile::GroupHandle group, CGSubchanTypeDescr& subChannel);
void NoteStored(SCFile::GroupHandle group, CGChanTypeDescr& channel);

/// Notes that a modification was read into a descriptor of an inspection that is not numbered.
void NoteModified(CGDataTypeFDD& data, const CGDataTypeFDD& modifier);

/// The id that a loaded descriptor has in its file.
template <class Descriptor>
[[nodiscard]] std::uint32_t StoredIdOf(const Descriptor& loaded) {
  return loaded.stored.subChannelId != StoredIds::none ? loaded.stored.subChannelId
                                                       : loaded.subChannelId;
}

/// Whether `stored` is about the id that the descriptor has: its host has not given it another.
template <class Descriptor>
[[nodiscard]] bool IsAsLoaded(const Descriptor& descriptor) {
  const StoredIds& stored = descriptor.stored;
  return stored.subChannelId != StoredIds::none &&
         descriptor.subChannelId ==
             (stored.number != StoredIds::none ? stored.number : stored.subChannelId);
}

/// Gives every sub-channel and data group its number. All or nothing: throws std::bad_alloc before
/// any is changed.
/// @param again the inspection was numbered before: what its host has put into the lists since then
///   has a number
void NumberSubChannels(CFContTypeFileDescr& descriptor, bool again);

/// Gives loaded descriptors the ids of their files again.
void UnnumberSubChannels(CFContTypeFileDescr& descriptor) noexcept;

/// What ids and numbers a group is written with.
struct WrittenIds {
  std::uint32_t subChannelId;           ///< of a type that has one
  std::optional<std::uint32_t> number;  ///< as item of its own
};

/// Writes a descriptor under the ids that the file is to know it by.
template <class Descriptor>
void WriteUnder(SCFile::GroupHandle group,
                const Descriptor* base,
                const Descriptor& descriptor,
                const WrittenIds& ids,
                int writeFlag) {
  if (ids.number)
    SCFile::file_ItemValueWrite(group, itemNumber, SCFile::value_UInt32, 1, &*ids.number);
  if constexpr (hasSubChannelId<Descriptor>) {
    if (ids.subChannelId != descriptor.subChannelId) {
      Descriptor renamed = descriptor;
      renamed.subChannelId = ids.subChannelId;
      Family<Descriptor>::Write(group, base, &renamed, writeFlag);
      return;
    }
  }
  Family<Descriptor>::Write(group, base, &descriptor, writeFlag);
}

/// A beam that was added to a numbered inspection since it was loaded.
struct GivenId {
  std::uint32_t channelId;
  std::uint32_t number;
  std::uint32_t id;  ///< in the file
  Key storedKey;
};
using GivenIds = std::map<std::pair<bool, Key>, GivenId>;  ///< by data group or not, key in memory

/// What a numbered inspection remembers.
struct Numbering {
  GivenIds given;
};

/// Finds ids for beams that are new in a numbered inspection.
class IdFinder {
 public:
  /// @param given grows; outlives the finder
  IdFinder(const CFContTypeFileDescr& descriptor, GivenIds& givenIds);

  /// The id for a new beam, the same at each call: that of a listed beam of the same number; else
  /// the number itself, less 1 where the channel's numbers are ids plus 1; else, where another beam
  /// has that id, one that none has.
  std::uint32_t Find(const CGSubchanTypeDescr& subChannel);
  std::uint32_t Find(const CGDataTypeFDD& data);

 private:
  /// The sub-channels, or the data groups, of one channel.
  struct Beams {
    std::map<std::uint32_t, std::uint32_t> ids;               ///< by number, the first in the list
    std::set<std::pair<std::uint32_t, std::uint32_t>> users;  ///< id, number
    std::optional<bool> isShifted;  ///< whether numbers are one more than ids, where that shows
  };

  template <class Descriptor>
  void Take(const CList<Descriptor*>& list);
  void Take(bool isData, const GivenId& given);
  template <class Descriptor>
  std::uint32_t FindIn(const Descriptor& beam);
  template <class Descriptor>
  std::uint32_t Choose(const Descriptor& beam);
  [[nodiscard]] static bool IsFree(const Beams& beams, std::uint32_t id, std::uint32_t number);

  std::map<std::pair<bool, std::uint32_t>, Beams> m_beams;  ///< by data groups or not, channel
  std::set<std::tuple<bool, Key, std::uint32_t>> m_keys;    ///< in the file, with the number
  bool m_isShifted = false;                                 ///< of any sub-channel
  GivenIds& m_given;
};

/// The ids under which the sub-channels and data groups of a list are written whole, so that the
/// new file numbers them as they are numbered now.
class WholeIds {
 public:
  explicit WholeIds(const CFContTypeFileDescr& descriptor);
  [[nodiscard]] WrittenIds Of(const CGSubchanTypeDescr* subChannel) const {
    return m_ids.at(subChannel);
  }
  [[nodiscard]] WrittenIds Of(const CGDataTypeFDD* data) const { return m_ids.at(data); }

 private:
  std::map<const void*, WrittenIds> m_ids;
};

}  // namespace utdata::container
