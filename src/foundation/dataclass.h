// What a data class means: one row for each class of data groups.
//
// A multi-channel master has the class of what it gathers, with a bit added; the questions here
// pass over that bit unless they say otherwise. No locks, no state.
#pragma once

#include <string_view>

#include "interfaces/kvtiff19_types.h"

namespace utdata {

/// Without the multi-channel-master bit.
[[nodiscard]] constexpr gdata_enumDataClass ClassOfElements(gdata_enumDataClass dataClass) {
  return static_cast<gdata_enumDataClass>(dataClass & ~std::uint32_t{gdata_MultiChannelMaster});
}
[[nodiscard]] constexpr gdata_enumDataClass WithMasterBit(gdata_enumDataClass dataClass) {
  return static_cast<gdata_enumDataClass>(dataClass | gdata_MultiChannelMaster);
}
[[nodiscard]] constexpr bool IsMaster(gdata_enumDataClass dataClass) {
  return (dataClass & gdata_MultiChannelMaster) != 0;
}

/// Whether samples are amplitudes, so that percent of full scale and decibels mean something.
[[nodiscard]] bool HoldsAmplitudes(gdata_enumDataClass dataClass);
/// Whether samples are positions along the ultrasonic path.
[[nodiscard]] bool HoldsPositions(gdata_enumDataClass dataClass);
/// Whether a cell holds an A-scan.
[[nodiscard]] bool IsAScan(gdata_enumDataClass dataClass);
/// Whether a cell holds one value.
[[nodiscard]] bool IsCScan(gdata_enumDataClass dataClass);
/// Whether the samples fill a volume that loads apart from the rest.
[[nodiscard]] bool IsVolume(gdata_enumDataClass dataClass);
[[nodiscard]] bool IsAnalog(gdata_enumDataClass dataClass);
[[nodiscard]] bool IsEddyCurrent(gdata_enumDataClass dataClass);
/// Whether viewers show such data apart from A-scans and C-scans.
[[nodiscard]] bool IsSpecial(gdata_enumDataClass dataClass);
/// Whether adding a group whose ids are taken is answered with the item that has them.
[[nodiscard]] bool IsShared(gdata_enumDataClass dataClass);
/// Whether samples are in the machine's byte order, whatever the record says.
[[nodiscard]] bool IsInNativeOrder(gdata_enumDataClass dataClass);
/// Whether a master gathers the data groups of a channel's sub-channels: those of A-scans of a
/// channel, those of C-scans of a channel and gate. A master itself is gathered by none.
[[nodiscard]] bool IsGathered(gdata_enumDataClass dataClass);
/// "A-scan", as the catalogue of fields has it; empty for a class that is not known.
[[nodiscard]] std::string_view ClassName(gdata_enumDataClass dataClass);

}  // namespace utdata
