// What a data group's record is held to before an item is made of it.
#pragma once

#include "interfaces/kvtiff19.h"

namespace utdata {

/// Replaces values that no record should have, so that whoever reads the record may count, divide
/// and walk by it. The constructor of CIData says which values those are and what stands in their
/// place. Any thread; takes no lock.
void NormaliseDataRecord(CGDataTypeFDD& record);

/// Bytes of one sample of a type (1 or 2); 0 for a type that is not known.
[[nodiscard]] std::uint32_t SampleSizeOf(kvt_enumDataType type);

/// A data class without the multi-channel-master bit.
[[nodiscard]] inline std::uint32_t ClassOfElements(gdata_enumDataClass dataClass) {
  return dataClass & ~std::uint32_t{gdata_MultiChannelMaster};
}

[[nodiscard]] inline gdata_enumDataClass WithMasterBit(gdata_enumDataClass dataClass) {
  return static_cast<gdata_enumDataClass>(dataClass | gdata_MultiChannelMaster);
}

/// Whether a master gathers the data groups of this class: those of A-scans of a channel, those of
/// C-scans of a channel and gate.
[[nodiscard]] bool IsGathered(gdata_enumDataClass dataClass);

/// Whether the samples of a class, with or without the multi-channel-master bit, are positions
/// along the ultrasonic path.
[[nodiscard]] bool HoldsPositions(gdata_enumDataClass dataClass);

}  // namespace utdata
