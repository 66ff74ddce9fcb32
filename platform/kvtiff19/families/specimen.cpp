// The inspection's general information, and its specimen's dimensions, information, material and
// definition.
#include "platform/kvtiff19/families/record_operations.h"
#include "platform/kvtiff19/families/specimen_tables.h"

UTDATA_DEFINE_FAMILY(ginfo, CGInfoTypeDescr)
UTDATA_DEFINE_FAMILY_READ(ginfo, CGInfoTypeDescr)
UTDATA_DEFINE_FAMILY_DUPLICATE(ginfo, CGInfoTypeDescr)

UTDATA_DEFINE_FAMILY(gspecdim, CGSpecdimTypeDescr)
UTDATA_DEFINE_FAMILY_READ(gspecdim, CGSpecdimTypeDescr)

UTDATA_DEFINE_FAMILY(gspecinf, CGSpecinfTypeDescr)
UTDATA_DEFINE_FAMILY_READ(gspecinf, CGSpecinfTypeDescr)

UTDATA_DEFINE_FAMILY(gspecmat, CGSpecmatTypeDescr)
UTDATA_DEFINE_FAMILY_READ(gspecmat, CGSpecmatTypeDescr)
UTDATA_DEFINE_FAMILY_DUPLICATE(gspecmat, CGSpecmatTypeDescr)

UTDATA_DEFINE_FAMILY(gspecdef, CGSpecdefTypeDescr)
UTDATA_DEFINE_FAMILY_READ(gspecdef, CGSpecdefTypeDescr)
