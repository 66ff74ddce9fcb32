// Modifications applied to what a file holds, and the numbering of sub-channels.
#include <algorithm>
#include <map>
#include <new>
#include <type_traits>
#include <utility>

#include "src/container/matching.h"
#include "utdata/fcont.h"
#include "utdata/newdata.h"

namespace utdata::container {
namespace {

/// Applies the modifiers of one type in order and empties their list. One that matches nothing
/// joins the descriptor's list and is handed to `joined`; the others are deleted.
template <class Descriptor, class Joined>
void ApplyModifiers(CList<Descriptor*>& list, CList<Descriptor*>& modifiers, Joined joined) {
  if (modifiers.IsEmpty()) return;
  Matching<Descriptor> matching(list);
  while (!modifiers.IsEmpty()) {
    auto modifier = Hold(modifiers.RemoveHead());
    const auto apply = [&](Descriptor* match) {
      ReadModification(GetGroupHandle(*modifier), match);
    };
    if (matching.ChangeMatch(*modifier, apply)) continue;
    list.AddTail(modifier.get());
    Descriptor* const added = modifier.release();
    matching.Add(added);
    joined(added);
  }
}

/// Whether a data group is one beam of its channel. Where groups carry sub-channel names, one
/// without name and id is the channel's own.
bool IsBeam(const CGDataTypeFDD& data, bool namesSeen) {
  return !namesSeen || data.subChannelId != 0 || data.subChannelName[0] != L'\0';
}

/// Sub-channel descriptors by channel: how many there are of each id.
using SubChannelIds = std::map<std::uint32_t, std::map<std::uint32_t, std::size_t>>;

SubChannelIds CountSubChannels(const CFContTypeFileDescr& descriptor) {
  SubChannelIds ids;
  for (const CGSubchanTypeDescr* subChannel : descriptor.subChannels)
    ++ids[subChannel->channelId][subChannel->subChannelId];
  return ids;
}

std::size_t CountLinks(const CFContTypeFileDescr& descriptor, const SubChannelIds& ids) {
  std::size_t links = 0;
  for (const CGDataTypeFDD* data : descriptor.data) {
    const auto channel = ids.find(data->channelId);
    if (channel == ids.end()) continue;
    const auto count = channel->second.find(data->subChannelId);
    if (count != channel->second.end()) links += count->second;
  }
  return links;
}

/// Whether the beams of the data list are numbered from 0, as their descriptors are: one has id 0,
/// and each names a descriptor. One that names none shows that the data groups already count from
/// 1.
bool BeamsCountFromZero(const CFContTypeFileDescr& descriptor,
                        const SubChannelIds& ids,
                        bool namesSeen) {
  bool zeroSeen = false;
  for (const CGDataTypeFDD* data : descriptor.data) {
    const auto channel = ids.find(data->channelId);
    if (channel == ids.end() || !IsBeam(*data, namesSeen)) continue;
    if (!channel->second.contains(data->subChannelId)) return false;
    zeroSeen = zeroSeen || data->subChannelId == 0;
  }
  return zeroSeen;
}

void NumberFromZero(CFContTypeFileDescr& descriptor) {
  for (CGSubchanTypeDescr* subChannel : descriptor.subChannels) subChannel->subChannelId = 0;
  for (CGDataTypeFDD* data : descriptor.data) data->subChannelId = 0;
}

void NumberFromOne(CFContTypeFileDescr& descriptor, const SubChannelIds& ids, bool namesSeen) {
  if (BeamsCountFromZero(descriptor, ids, namesSeen)) {
    for (CGDataTypeFDD* data : descriptor.data)
      if (ids.contains(data->channelId) && IsBeam(*data, namesSeen)) ++data->subChannelId;
  }
  for (CGSubchanTypeDescr* subChannel : descriptor.subChannels) ++subChannel->subChannelId;
}

void NormaliseSubChannels(CFContTypeFileDescr& descriptor) {
  bool namesSeen = false, zeroSeen = false;
  for (const CGDataTypeFDD* data : descriptor.data) {
    namesSeen = data->subChannelName[0] != L'\0';
    if (namesSeen) break;
    zeroSeen = zeroSeen || data->subChannelId == 0;
  }
  const bool namesInUse = namesSeen || !zeroSeen;
  const SubChannelIds ids = CountSubChannels(descriptor);
  const auto channelCount = static_cast<std::size_t>(descriptor.channels.GetCount());
  if (CountLinks(descriptor, ids) <= channelCount && !namesInUse) {
    NumberFromZero(descriptor);
    return;
  }
  const bool fromZero =
      std::ranges::any_of(ids, [](const auto& channel) { return channel.second.contains(0); });
  if (fromZero) NumberFromOne(descriptor, ids, namesSeen);
}

}  // namespace
}  // namespace utdata::container

using namespace utdata::container;

void CFCont::UpdateModifierGroup(CFContTypeFileDescr* descriptor,
                                 fcontsec_typeFileDescriptor* work,
                                 const wchar_t* path,
                                 CDataNewGroup* newGroups) {
  const auto apply = [&](const auto& type) {
    ApplyModifiers(
        descriptor->*type.list, work->*type.modifiers, [&]([[maybe_unused]] auto* added) {
          if constexpr (std::is_same_v<decltype(added), CGDataTypeFDD*>)
            if (newGroups) newGroups->AddGData(added, path);
        });
  };
  ForEach(Modified(), apply);
  ForEach(Dropped(), [&](const auto& type) { Release(work->*type.modifiers); });
}

void CFCont::UpdateSubChannelList(CFContTypeFileDescr* descriptor) {
  try {
    NormaliseSubChannels(*descriptor);
  } catch (const std::bad_alloc&) {
    utdata::ReportAssertion(__FILE__, __LINE__, L"no memory to number the sub-channels");
  }
}
