// A host's document for benchmarks of data groups: a file set and a volume set, and no answer to
// any question.
#pragma once

#include "utdata/fset.h"
#include "utdata/supplier.h"
#include "utdata/vset.h"

namespace utdata::bench {

class DataDocument : public IGDataSupplier {
 public:
  DataDocument() { volumes.vol_FillBaseUnits(); }

  CFSet* GetFileSet() override { return &set; }
  CTableFactory* GetTableFactory() override { return nullptr; }
  CVolumeSet* GetVolumeSet() override { return &volumes; }
  CFContTypeFileDescr* GetFileDescriptor() override { return nullptr; }
  void OnDataGroupAdded(std::int32_t) override {}
  void HandleParameterRequest(PellamServiceParam&, std::int32_t) override {}
  void OnParametersChanged() override {}

  /// Adds a data group of 20 columns and 10 rows of 1 mm with these ids; null when they are taken.
  CIData* Add(const idata_typeId& id) {
    CGDataTypeFDD record;
    record.SetPatchID(id.patchId);
    record.channelId = id.channelId;
    record.subChannelId = id.subChannelId;
    record.gateId = id.gateId;
    record.dataClass = id.dataClass;
    record.SetDataBookmarkType(id.bookmarkType);
    record.columnQuantity = 20;
    record.rowQuantity = 10;
    record.columnResolution = record.rowResolution = 0.001F;
    record.sampleQuantity = 1;
    record.sampleResolution = 1e-8F;
    record.soundSpeed = 5900;
    record.dataMaximum = 255;
    record.dataResolution = 1e-8F;
    record.SetDataType(kvt_UInt8);
    record.SetDataRectification(gdata_RectifFull);
    record.sampleSize = record.cellSize = 1;
    return set.fset_AddGData(&record, nullptr, &volumes, 0);
  }

  CVolumeSet volumes{this, unit_Generic, nullptr, unit_Generic, nullptr};  // outlives the items
  CFSet set{this};
};

}  // namespace utdata::bench
