// Welds, their scan plans and their passes.
#include "platform/kvtiff19/families/record_operations.h"
#include "platform/kvtiff19/families/weld_tables.h"

UTDATA_DEFINE_FAMILY(gweld, CGWeldTypeDescr)
UTDATA_DEFINE_FAMILY_READ(gweld, CGWeldTypeDescr)

UTDATA_DEFINE_FAMILY(gweldsp, CGWeldScanPlanDescr)
UTDATA_DEFINE_FAMILY_READ(gweldsp, CGWeldScanPlanDescr)

UTDATA_DEFINE_FAMILY(gweldFill, CGWeldFillDescr)
UTDATA_DEFINE_FAMILY_READ(gweldFill, CGWeldFillDescr)

// The places of these ids in the records are part of the boundary: the weld's id stands first in
// all three; a fill's second id follows it, a scan plan's leaves one place between.
static_assert(offsetof(CGWeldTypeDescr, weldId) == sizeof(SCFile::GroupHandle));
static_assert(offsetof(CGWeldScanPlanDescr, weldId) == sizeof(SCFile::GroupHandle));
static_assert(offsetof(CGWeldScanPlanDescr, planId) ==
              offsetof(CGWeldScanPlanDescr, weldId) + 2 * sizeof(std::uint32_t));
static_assert(offsetof(CGWeldFillDescr, weldId) == sizeof(SCFile::GroupHandle));
static_assert(offsetof(CGWeldFillDescr, fillId) ==
              offsetof(CGWeldFillDescr, weldId) + sizeof(std::uint32_t));
