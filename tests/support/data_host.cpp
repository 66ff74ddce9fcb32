#include "tests/support/data_host.h"

namespace utdata::test {

namespace {

void GiveIds(CGDataTypeFDD& record, const idata_typeId& id) {
  record.SetPatchID(id.patchId);
  record.channelId = id.channelId;
  record.subChannelId = id.subChannelId;
  record.gateId = id.gateId;
  record.dataClass = id.dataClass;
  record.SetDataBookmarkType(id.bookmarkType);
}

}  // namespace

DataHost::DataHost() : volumes(this, unit_Generic, nullptr, unit_Generic, nullptr), set(this) {
  volumes.vol_FillBaseUnits();
}

void DataHost::HandleParameterRequest(PellamServiceParam& request, std::int32_t) {
  requests.push_back(request);
  const auto found = scanning.find(request.index - 1);
  if (found == scanning.end()) return;
  if (request.variable == PRM_ID_ElectronicScanning) request.Answer(&found->second.mode, 4);
  if (request.variable == PRM_ID_bLinearMerged) request.Answer(&found->second.linearMerged, 1);
}

std::unique_ptr<CIData> DataHost::Make(CGDataTypeFDD record, int external) {
  return std::make_unique<CIData>(&record, nullptr, &volumes, external, nullptr);
}

CGDataTypeFDD SoundRecord(const idata_typeId& id) {
  CGDataTypeFDD record;
  GiveIds(record, id);
  record.columnQuantity = 10;
  record.rowQuantity = 5;
  record.columnResolution = record.rowResolution = 0.001f;
  record.sampleQuantity = 100;
  record.sampleResolution = 1e-8f;
  record.dataMaximum = 255;
  record.SetDataType(kvt_UInt8);
  record.SetDataRectification(gdata_RectifFull);
  record.sampleSize = 1;
  record.cellSize = 100;
  record.soundSpeed = 5900;
  record.probeAngle = 45;
  record.partThickness = 0.02f;
  record.inspectionRadius = 0.1f;
  record.probeSeparation = 0.05f;
  return record;
}

EditableItem::EditableItem(DataHost& host, const idata_typeId& id)
    : EditableItem(host, SoundRecord(id)) {
  SetId(id);  // construction may have assigned a bookmark type
}

void EditableItem::SetId(const idata_typeId& id) { GiveIds(*idata1_GetInfoRef(), id); }

}  // namespace utdata::test
