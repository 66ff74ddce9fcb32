#include "src/container/subchannels.h"

#include <algorithm>
#include <limits>
#include <set>
#include <vector>

namespace utdata::container {
namespace {

/// A sub-channel or data group as numbering sees it.
struct Beam {
  std::uint32_t channelId;
  std::uint32_t id;  ///< in the file
  std::optional<std::uint32_t> fixedNumber;
  bool isNamed;
  std::uint32_t number;  ///< the result
};

/// Everything that numbers depend on.
struct Beams {
  std::vector<Beam> subChannels;
  std::vector<Beam> data;
  std::size_t channels = 0;  ///< those added to a numbered inspection left out
};

using Ids = std::map<std::uint32_t, std::map<std::uint32_t, std::size_t>>;  ///< channel, id, count

template <class Descriptor>
Beam BeamOf(const Descriptor& descriptor) {
  const StoredIds& stored = descriptor.stored;
  if (!IsAsLoaded(descriptor))
    return {descriptor.channelId, descriptor.subChannelId, {}, IsNamed(descriptor), 0};
  return {descriptor.channelId,
          stored.subChannelId,
          stored.fixedNumber != StoredIds::none ? std::optional(stored.fixedNumber) : std::nullopt,
          stored.isNamed,
          0};
}

std::size_t CountChannels(const CList<CGChanTypeDescr*>& channels) {
  return static_cast<std::size_t>(
      std::ranges::count_if(channels, [](const CGChanTypeDescr* channel) {
        return channel->stored.fixedNumber == StoredIds::none;
      }));
}

Beams BeamsOf(const CFContTypeFileDescr& descriptor) {
  Beams beams;
  for (const CGSubchanTypeDescr* subChannel : descriptor.subChannels)
    beams.subChannels.push_back(BeamOf(*subChannel));
  for (const CGDataTypeFDD* data : descriptor.data) beams.data.push_back(BeamOf(*data));
  beams.channels = CountChannels(descriptor.channels);
  return beams;
}

/// Whether data groups show that sub-channels are in use: one has a name, or none has id 0.
struct NamesOfBeams {
  bool areSeen = false;
  bool areInUse = false;

  explicit NamesOfBeams(const std::vector<Beam>& data) {
    bool zeroSeen = false;
    for (const Beam& beam : data) {
      if (beam.fixedNumber) continue;
      areSeen = beam.isNamed;
      if (areSeen) break;
      zeroSeen = zeroSeen || beam.id == 0;
    }
    areInUse = areSeen || !zeroSeen;
  }
};

Ids CountIds(const std::vector<Beam>& subChannels) {
  Ids ids;
  for (const Beam& beam : subChannels)
    if (!beam.fixedNumber) ++ids[beam.channelId][beam.id];
  return ids;
}

std::size_t CountLinks(const std::vector<Beam>& data, const Ids& ids) {
  std::size_t links = 0;
  for (const Beam& beam : data) {
    if (beam.fixedNumber) continue;
    const auto channel = ids.find(beam.channelId);
    if (channel == ids.end()) continue;
    const auto count = channel->second.find(beam.id);
    if (count != channel->second.end()) links += count->second;
  }
  return links;
}

/// Whether a data group is one beam of its channel; else it is the whole channel's, and keeps id 0.
bool IsBeam(const Beam& data, const Ids& ids, bool namesSeen) {
  const auto channel = ids.find(data.channelId);
  if (channel == ids.end() || data.fixedNumber) return false;
  return data.id != 0 || (channel->second.contains(0) && (!namesSeen || data.isNamed));
}

/// The channels whose data groups are counted as their descriptors are: more ids of such groups
/// name a descriptor before the descriptors are shifted than after.
std::set<std::uint32_t> ChannelsCountedAlike(const std::vector<Beam>& data,
                                             const Ids& ids,
                                             bool namesSeen) {
  std::map<std::uint32_t, std::set<std::uint32_t>> beams;
  for (const Beam& beam : data)
    if (IsBeam(beam, ids, namesSeen)) beams[beam.channelId].insert(beam.id);
  std::set<std::uint32_t> channels;
  for (const auto& [channel, channelBeams] : beams) {
    const auto& named = ids.at(channel);
    const auto namesOne = [&named](std::uint32_t id) { return named.contains(id); };
    const auto namesOneLess = [&named](std::uint32_t id) { return id && named.contains(id - 1); };
    if (std::ranges::count_if(channelBeams, namesOne) >
        std::ranges::count_if(channelBeams, namesOneLess))
      channels.insert(channel);
  }
  return channels;
}

void Number(Beams& beams) {
  const NamesOfBeams names(beams.data);
  const Ids ids = CountIds(beams.subChannels);
  const bool isCleared = CountLinks(beams.data, ids) <= beams.channels && !names.areInUse;
  const bool isShifted = !isCleared && std::ranges::any_of(ids, [](const auto& channel) {
    return channel.second.contains(0);
  });
  const std::set<std::uint32_t> alike =
      isShifted ? ChannelsCountedAlike(beams.data, ids, names.areSeen) : std::set<std::uint32_t>();
  const auto give = [isCleared](Beam& beam, bool shift) {
    beam.number = isCleared ? 0 : beam.id + (shift ? 1 : 0);
    if (beam.fixedNumber) beam.number = *beam.fixedNumber;
  };
  for (Beam& beam : beams.subChannels) give(beam, isShifted);
  for (Beam& beam : beams.data)
    give(beam, alike.contains(beam.channelId) && IsBeam(beam, ids, names.areSeen));
}

template <class Descriptor>
constexpr bool isData = std::is_same_v<Descriptor, CGDataTypeFDD>;

/// Calls `visit(record, beam)` with each sub-channel, then with each data group.
template <class Visit>
void ForEachBeam(const CFContTypeFileDescr& descriptor, Beams& beams, Visit visit) {
  auto beam = beams.subChannels.begin();
  for (const CGSubchanTypeDescr* each : descriptor.subChannels) visit(*each, *beam++);
  beam = beams.data.begin();
  for (const CGDataTypeFDD* each : descriptor.data) visit(*each, *beam++);
}

/// Beams that no file knows keep their numbers beside those that one knows.
void KeepNumbersOfHost(const CFContTypeFileDescr& descriptor, Beams& beams) {
  const auto isLoaded = [](const auto* each) { return IsAsLoaded(*each); };
  if (!std::ranges::any_of(descriptor.subChannels, isLoaded) &&
      !std::ranges::any_of(descriptor.data, isLoaded))
    return;
  ForEachBeam(descriptor, beams, [](const auto& each, Beam& beam) {
    if (!IsAsLoaded(each)) beam.fixedNumber = each.subChannelId;
  });
}

template <class Descriptor>
void TakeNumbers(const CList<Descriptor*>& list, const std::vector<Beam>& beams) noexcept {
  auto beam = beams.begin();
  for (Descriptor* descriptor : list) {
    const std::uint32_t number = (beam++)->number;
    if (IsAsLoaded(*descriptor)) descriptor->stored.number = number;
    descriptor->subChannelId = number;
  }
}

template <class Descriptor>
void TakeBack(const CList<Descriptor*>& list) noexcept {
  for (Descriptor* descriptor : list) {
    if (!IsAsLoaded(*descriptor)) continue;
    descriptor->subChannelId = descriptor->stored.subChannelId;
    descriptor->stored.number = StoredIds::none;
  }
}

/// The number that a group states, or StoredIds::none.
std::uint32_t FixedNumberIn(SCFile::GroupHandle group) {
  std::uint32_t code = 0, number = 0, count = 1;
  if (SCFile::file_ItemNbrGet(group) == 0) return StoredIds::none;
  SCFile::file_ItemInfo(group, 0, &code, nullptr, nullptr, nullptr, nullptr, 0);
  if (code != itemNumber) return StoredIds::none;
  const int status = SCFile::file_IndexValueRead(group, 0, SCFile::value_UInt32, &number, &count);
  return status == SCFile::status_Ok && count == 1 ? number : StoredIds::none;
}

}  // namespace

void NoteStored(SCFile::GroupHandle group, CGDataTypeFDD& data) {
  data.stored = {data.subChannelId,
                 StoredIds::none,
                 FixedNumberIn(group),
                 data.GetDataBookmarkType(),
                 IsNamed(data)};
}

void NoteStored(SCFile::GroupHandle group, CGSubchanTypeDescr& subChannel) {
  subChannel.stored = {subChannel.subChannelId, StoredIds::none, FixedNumberIn(group), 0, false};
}

void NoteStored(SCFile::GroupHandle group, CGChanTypeDescr& channel) {
  channel.stored = {StoredIds::none, StoredIds::none, FixedNumberIn(group), 0, false};
}

void NoteModified(CGDataTypeFDD& data, const CGDataTypeFDD& modifier) {
  data.stored.bookmark = data.GetDataBookmarkType();
  if (modifier.stored.fixedNumber == StoredIds::none) data.stored.isNamed = IsNamed(data);
}

void NumberSubChannels(CFContTypeFileDescr& descriptor, bool again) {
  Beams beams = BeamsOf(descriptor);
  if (again) KeepNumbersOfHost(descriptor, beams);
  Number(beams);
  TakeNumbers(descriptor.subChannels, beams.subChannels);
  TakeNumbers(descriptor.data, beams.data);
}

void UnnumberSubChannels(CFContTypeFileDescr& descriptor) noexcept {
  TakeBack(descriptor.subChannels);
  TakeBack(descriptor.data);
}

IdFinder::IdFinder(const CFContTypeFileDescr& descriptor, GivenIds& givenIds) : m_given(givenIds) {
  Take(descriptor.subChannels);
  for (const auto& [list, beams] : m_beams)
    m_isShifted = m_isShifted || beams.isShifted.value_or(false);
  Take(descriptor.data);
  for (const auto& [name, given] : m_given) Take(name.first, given);
}

template <class Descriptor>
void IdFinder::Take(const CList<Descriptor*>& list) {
  for (const Descriptor* descriptor : list) {
    if (!IsAsLoaded(*descriptor)) continue;
    const StoredIds& stored = descriptor->stored;
    const std::uint32_t number = descriptor->subChannelId;
    Take(isData<Descriptor>,
         {descriptor->channelId,
          number,
          stored.subChannelId,
          KeyUnder(*descriptor, stored.subChannelId)});
    if (stored.fixedNumber == StoredIds::none && (number != 0 || stored.subChannelId != 0))
      m_beams[{isData<Descriptor>, descriptor->channelId}].isShifted =
          number == stored.subChannelId + 1;
  }
}

void IdFinder::Take(bool isDataGroup, const GivenId& given) {
  Beams& beams = m_beams[{isDataGroup, given.channelId}];
  beams.ids.emplace(given.number, given.id);
  beams.users.emplace(given.id, given.number);
  m_keys.emplace(isDataGroup, given.storedKey, given.number);
}

bool IdFinder::IsFree(const Beams& beams, std::uint32_t id, std::uint32_t number) {
  for (auto user = beams.users.lower_bound({id, 0}); user != beams.users.end() && user->first == id;
       ++user)
    if (user->second != number) return false;
  return true;
}

template <class Descriptor>
std::uint32_t IdFinder::Choose(const Descriptor& beam) {
  const std::uint32_t number = beam.subChannelId;
  const Beams& own = m_beams[{isData<Descriptor>, beam.channelId}];
  const Beams& others = m_beams[{!isData<Descriptor>, beam.channelId}];
  if (const auto same = own.ids.find(number); same != own.ids.end()) {
    const Key key = KeyUnder(beam, same->second);
    auto user = m_keys.lower_bound({isData<Descriptor>, key, 0});
    bool isOther = false;
    for (; user != m_keys.end() && std::get<Key>(*user) == key; ++user)
      isOther =
          isOther || (std::get<0>(*user) == isData<Descriptor> && std::get<2>(*user) != number);
    if (!isOther) return same->second;
  }
  const bool isShifted = own.isShifted.value_or(others.isShifted.value_or(m_isShifted));
  const std::uint32_t counted = number - (isShifted && number > 0 ? 1 : 0);
  if (IsFree(own, counted, number)) return counted;
  const auto other = others.ids.find(number);
  if (other != others.ids.end() && IsFree(own, other->second, number)) return other->second;
  std::uint32_t next = 0;
  for (const Beams* beams : {&own, &others})
    if (!beams->users.empty()) next = std::max(next, beams->users.rbegin()->first + 1);
  while (!IsFree(own, next, number) || next == StoredIds::none) ++next;
  return next;
}

template <class Descriptor>
std::uint32_t IdFinder::FindIn(const Descriptor& beam) {
  const std::pair name{isData<Descriptor>, SCFile::file_Identity(beam).ids};
  if (const auto given = m_given.find(name); given != m_given.end()) return given->second.id;
  const std::uint32_t id = Choose(beam);
  const GivenId given{beam.channelId, beam.subChannelId, id, KeyUnder(beam, id)};
  m_given.emplace(name, given);
  Take(isData<Descriptor>, given);
  return id;
}

std::uint32_t IdFinder::Find(const CGSubchanTypeDescr& subChannel) { return FindIn(subChannel); }

std::uint32_t IdFinder::Find(const CGDataTypeFDD& data) { return FindIn(data); }

WholeIds::WholeIds(const CFContTypeFileDescr& descriptor) {
  Beams beams = BeamsOf(descriptor);
  const auto isNumbered = [](const auto* each) {
    return IsAsLoaded(*each) && each->stored.number != StoredIds::none;
  };
  const bool areNumbered = std::ranges::any_of(descriptor.subChannels, isNumbered) ||
                           std::ranges::any_of(descriptor.data, isNumbered);
  Number(beams);
  GivenIds given;
  IdFinder finder(descriptor, given);
  std::vector<std::uint32_t> numbers;
  ForEachBeam(descriptor, beams, [&](const auto& each, Beam& beam) {
    if (areNumbered && !IsAsLoaded(each)) {
      beam.id = finder.Find(each);
      beam.fixedNumber = each.subChannelId;
    }
    numbers.push_back(areNumbered ? each.subChannelId : beam.number);
    beam.isNamed = IsNamed(each);
  });
  // Where numbering the new file would give other numbers, every group states its own.
  Number(beams);
  auto number = numbers.begin();
  bool isSame = true;
  ForEachBeam(descriptor, beams, [&](const auto&, const Beam& beam) {
    isSame = isSame && beam.number == *number++;
  });
  number = numbers.begin();
  ForEachBeam(descriptor, beams, [&](const auto& each, Beam& beam) {
    if (!isSame) beam.fixedNumber = *number++;
    m_ids.insert_or_assign(&each, WrittenIds{beam.id, beam.fixedNumber});
  });
}

}  // namespace utdata::container
