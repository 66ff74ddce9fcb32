#include "report/page.h"

#include <bit>

#define UTDATA_EMBEDDED(name)                    \
  extern const unsigned long long name##Words[]; \
  extern const unsigned long name##Size;

UTDATA_EMBEDDED(reportPage)
UTDATA_EMBEDDED(reportStyle)
UTDATA_EMBEDDED(reportPlots)
UTDATA_EMBEDDED(reportViews)
UTDATA_EMBEDDED(reportSector)
UTDATA_EMBEDDED(reportProjection)
UTDATA_EMBEDDED(reportCursor)
#undef UTDATA_EMBEDDED

namespace utdata::program {
namespace {

static_assert(std::endian::native == std::endian::little,
              "the page is embedded as little-endian words");

std::string_view Text(const unsigned long long* words, unsigned long size) {
  return {reinterpret_cast<const char*>(words), size};
}

}  // namespace

std::string_view PageText() { return Text(reportPageWords, reportPageSize); }
std::string_view StyleText() { return Text(reportStyleWords, reportStyleSize); }
std::string_view PlotsText() { return Text(reportPlotsWords, reportPlotsSize); }
std::string_view ViewsText() { return Text(reportViewsWords, reportViewsSize); }
std::string_view SectorText() { return Text(reportSectorWords, reportSectorSize); }
std::string_view ProjectionText() { return Text(reportProjectionWords, reportProjectionSize); }
std::string_view CursorText() { return Text(reportCursorWords, reportCursorSize); }

}  // namespace utdata::program
