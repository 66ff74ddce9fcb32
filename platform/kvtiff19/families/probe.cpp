// Probes, patches and reference adjustments.
#include "platform/kvtiff19/families/probe_tables.h"
#include "platform/kvtiff19/families/record_operations.h"

UTDATA_DEFINE_FAMILY(gprobe, CGProbeTypeDescr)
UTDATA_DEFINE_FAMILY_READ(gprobe, CGProbeTypeDescr)
UTDATA_DEFINE_FAMILY_DUPLICATE(gprobe, CGProbeTypeDescr)

UTDATA_DEFINE_FAMILY(gpatch, CGPatchTypeDescr)
UTDATA_DEFINE_FAMILY_READ(gpatch, CGPatchTypeDescr)
UTDATA_DEFINE_FAMILY_DUPLICATE(gpatch, CGPatchTypeDescr)

UTDATA_DEFINE_FAMILY(grefadj, CGRefadjTypeDescr)
UTDATA_DEFINE_FAMILY_READ(grefadj, CGRefadjTypeDescr)

// The places of these ids in the records are part of the boundary.
static_assert(offsetof(CGProbeTypeDescr, probeId) == sizeof(SCFile::GroupHandle));
static_assert(offsetof(CGPatchTypeDescr, patchId) == sizeof(SCFile::GroupHandle));
static_assert(offsetof(CGRefadjTypeDescr, adjustmentId) == sizeof(SCFile::GroupHandle));
