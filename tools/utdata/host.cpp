#include "host.h"

#include <vector>

namespace utdata::program {

Host::Host(CFContTypeFileDescr& groups) : m_groups(groups), m_volume(this, unit_Length, L"", unit_Length, L"") {
  std::vector<kvt_enumAxis> angles;
  if (!groups.data.IsEmpty()) {
    const CGDataTypeFDD& first = *groups.data.GetHead();
    if (first.columnUnits == kvt_UnitDegree) angles.push_back(kvt_AxisColumn);
    if (first.rowUnits == kvt_UnitDegree) angles.push_back(kvt_AxisRow);
  }
  m_volume.vol_FillBaseUnits(angles);
}

void Host::OnDataGroupAdded(std::int32_t) {}

void Host::HandleParameterRequest(PellamServiceParam&, std::int32_t) {}

void Host::OnParametersChanged() {}

}  // namespace utdata::program
