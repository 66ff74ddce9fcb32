// Normalisation of a data group's record before an item is made of it.
#pragma once

#include "interfaces/kvtiff19.h"
#include "src/foundation/dataclass.h"

namespace utdata {

/// Replaces values that no record should have, so that whoever reads the record may count, divide
/// and walk by it. The constructor of CIData says which values those are and what stands in their
/// place. Any thread; takes no lock.
void NormaliseDataRecord(CGDataTypeFDD& record);

/// Bytes of one sample of a type (1 or 2); 0 for a type that is not known.
[[nodiscard]] std::uint32_t SampleSizeOf(kvt_enumDataType type);

}  // namespace utdata
