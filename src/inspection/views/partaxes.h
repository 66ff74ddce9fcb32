// The scan axes of data groups that are shown in the part.
#pragma once

#include <string>

#include "utdata/datagroup.h"
#include "utdata/failure.h"

namespace utdata {

inline constexpr const char* notProjected = "cannot be shown in the part";

/// A scan axis of a group. Throws when it is not in millimetres, unless it has one position only,
/// which then is 0.
[[nodiscard]] inline AxisScale InMillimetres(const DataGroup& group,
                                             AxisScale axis,
                                             const char* name) {
  if (axis.symbol == "mm") return axis;
  if (axis.quantity == 1) return {"mm", 0, 1, 1};
  throw Error(group.Name(), notProjected, std::string("its ") + name + " are not in millimetres");
}

}  // namespace utdata
