// What a data group's record is held to before an item is made of it.
#pragma once

#include "interfaces/kvtiff19.h"

namespace utdata {

/// Replaces values that no record should have: sound speed (m/s), probe angle (degrees), axes of one row or column, sample types that
/// contradict the rectification and the range, inspection radius and probe separation (m). Any thread; takes no lock.
void NormaliseDataRecord(CGDataTypeFDD& record);

}  // namespace utdata
