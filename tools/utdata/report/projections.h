// The top, side and end views of a report: pictures of the part with the sample behind each pixel.
#pragma once

#include <nlohmann/json.hpp>

#include "report/views.h"
#include "utdata/inspection.h"

namespace utdata::program {

/// One for each channel whose A-scans are among the views, with or without their samples, and have
/// sound paths; TOFD data have no beams. Packs its tables behind those of the views, and says among
/// what is missing why another has none. Throws when samples are damaged.
[[nodiscard]] nlohmann::ordered_json MakeProjections(const Inspection& inspection,
                                                     ReportViews& views,
                                                     bool quiet);

}  // namespace utdata::program
