// Contours and meshes.
#include "platform/kvtiff19/families/record_operations.h"
#include "platform/kvtiff19/families/surface_tables.h"

UTDATA_DEFINE_FAMILY(gcontour, CGContourTypeDescr)
UTDATA_DEFINE_FAMILY_READ(gcontour, CGContourTypeDescr)

UTDATA_DEFINE_FAMILY(gmesh, CGMeshTypeDescr)
UTDATA_DEFINE_FAMILY_READ(gmesh, CGMeshTypeDescr)

// The places of a contour's ids are part of the boundary: its third 32-bit field and the one 22
// places after it.
static_assert(offsetof(CGContourTypeDescr, contourId) ==
              sizeof(SCFile::GroupHandle) + 2 * sizeof(std::uint32_t));
static_assert(offsetof(CGContourTypeDescr, channelId) ==
              offsetof(CGContourTypeDescr, contourId) + 22 * sizeof(std::uint32_t));
