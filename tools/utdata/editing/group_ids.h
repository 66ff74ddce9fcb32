// The ids of the groups that can be edited: what names one on the command line, in messages, and
// among the groups of its list.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "interfaces/kvtiff19.h"

namespace utdata::program {

/// (name, value) pairs, the group's own id first; none for a type that an inspection has one group
/// of.
using IdPairs = std::vector<std::pair<const char*, std::uint32_t>>;

inline IdPairs EditIds(const CGChanTypeDescr& channel) { return {{"channel", channel.channelId}}; }
inline IdPairs EditIds(const CGSubchanTypeDescr& subChannel) {
  return {{"sub_channel", subChannel.subChannelId}, {"channel", subChannel.channelId}};
}
inline IdPairs EditIds(const CGGateTypeDescr& gate) {
  return {{"gate", gate.gateId}, {"channel", gate.channelId}};
}
inline IdPairs EditIds(const CGProbeTypeDescr& probe) { return {{"probe", probe.probeId}}; }
inline IdPairs EditIds(const CGPatchTypeDescr& patch) { return {{"patch", patch.patchId}}; }
inline IdPairs EditIds(const CGDataTypeFDD& data) {
  return {{"class", data.dataClass},
          {"channel", data.channelId},
          {"sub_channel", data.subChannelId},
          {"gate", data.gateId},
          {"patch", data.GetPatchID()},
          {"bookmark", data.GetDataBookmarkType()}};
}
inline IdPairs EditIds(const CGInfoTypeDescr&) { return {}; }
inline IdPairs EditIds(const CGSpecmatTypeDescr&) { return {}; }

}  // namespace utdata::program
