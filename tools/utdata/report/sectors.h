// The sector scans of a report: which samples of which views fall on which pixels.
#pragma once

#include <nlohmann/json.hpp>

#include "report/views.h"
#include "utdata/inspection.h"

namespace utdata::program {

/// One for each master whose beams are among the views with their A-scans. Packs its tables behind
/// those of the views, and says among what is missing why another has none.
[[nodiscard]] nlohmann::ordered_json MakeSectors(const Inspection& inspection,
                                                 ReportViews& views,
                                                 bool quiet);

}  // namespace utdata::program
