// Channels, sub-channels, gates and DAC curves.
#include "platform/kvtiff19/families/channel_tables.h"
#include "platform/kvtiff19/families/record_operations.h"

UTDATA_DEFINE_FAMILY(gchan, CGChanTypeDescr)
UTDATA_DEFINE_FAMILY_READ(gchan, CGChanTypeDescr)
UTDATA_DEFINE_FAMILY_DUPLICATE(gchan, CGChanTypeDescr)

UTDATA_DEFINE_FAMILY(gsubchan, CGSubchanTypeDescr)
UTDATA_DEFINE_FAMILY_READ(gsubchan, CGSubchanTypeDescr)
UTDATA_DEFINE_FAMILY_DUPLICATE(gsubchan, CGSubchanTypeDescr)

UTDATA_DEFINE_FAMILY(ggate, CGGateTypeDescr)
UTDATA_DEFINE_FAMILY_DUPLICATE(ggate, CGGateTypeDescr)

int ggate_ReadGroupInfo(SCFile::GroupHandle group, CGGateTypeDescr* descriptor, bool modifier) {
  using namespace utdata::kvtiff19;
  if (modifier) return ReadRecordOver(group, descriptor);
  CGGateTypeDescr fresh;
  const int status = ReadRecordOver(group, descriptor ? &fresh : nullptr);
  if (status == SCFile::status_Ok) *descriptor = std::move(fresh);
  return status;
}

UTDATA_DEFINE_FAMILY(gdac, CGDacTypeDescr)
UTDATA_DEFINE_FAMILY_READ(gdac, CGDacTypeDescr)

// The place of this id in the record is part of the boundary.
static_assert(offsetof(CGDacTypeDescr, dacId) == sizeof(SCFile::GroupHandle));
