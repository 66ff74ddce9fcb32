// The ids of each group descriptor by which items are found, in the order in which look-ups name
// them.
#pragma once

#include <array>
#include <cstdint>

#include "interfaces/kvtiff19.h"

namespace utdata {

inline std::array<std::uint32_t, 1> IdsOf(const CGChanTypeDescr& d) { return {d.channelId}; }
inline std::array<std::uint32_t, 2> IdsOf(const CGGateTypeDescr& d) {
  return {d.gateId, d.channelId};
}
inline std::array<std::uint32_t, 0> IdsOf(const CGInfoTypeDescr&) { return {}; }
inline std::array<std::uint32_t, 1> IdsOf(const CGPatchTypeDescr& d) { return {d.patchId}; }
inline std::array<std::uint32_t, 1> IdsOf(const CGProbeTypeDescr& d) { return {d.probeId}; }
inline std::array<std::uint32_t, 0> IdsOf(const CGSpecmatTypeDescr&) { return {}; }
inline std::array<std::uint32_t, 2> IdsOf(const CGSubchanTypeDescr& d) {
  return {d.subChannelId, d.channelId};
}
inline std::array<std::uint32_t, 6> IdsOf(const CGDataTypeFDD& d) {
  return {
      d.GetDataBookmarkType(), d.GetPatchID(), d.channelId, d.subChannelId, d.gateId, d.dataClass};
}

}  // namespace utdata
