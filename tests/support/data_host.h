// A host's document for tests of data items: a file set, a volume set with base units, and answers
// of the parameter database.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "utdata/fset.h"
#include "utdata/idata.h"
#include "utdata/supplier.h"
#include "utdata/vset.h"

namespace utdata::test {

class DataHost : public IGDataSupplier {
 public:
  /// What the parameter database says of a channel.
  struct Scanning {
    enumElectronicScanning mode = escan_Unknown;
    std::uint8_t linearMerged = 0;
  };

  DataHost();

  CFSet* GetFileSet() override { return hasFileSet ? &set : nullptr; }
  CTableFactory* GetTableFactory() override { return nullptr; }
  CVolumeSet* GetVolumeSet() override { return &volumes; }
  CFContTypeFileDescr* GetFileDescriptor() override { return nullptr; }
  void OnDataGroupAdded(std::int32_t hasPatch) override { additions.push_back(hasPatch); }
  void HandleParameterRequest(PellamServiceParam& request, std::int32_t flag) override;
  void OnParametersChanged() override {}

  /// An item of a copy of the record, in no file set.
  [[nodiscard]] std::unique_ptr<CIData> Make(CGDataTypeFDD record, int external = 0);

  std::map<std::uint32_t, Scanning> scanning;  ///< by channel id; about others nobody answers
  std::vector<PellamServiceParam> requests;    ///< as they came
  std::vector<std::int32_t> additions;         ///< arguments of OnDataGroupAdded
  bool hasFileSet = true;
  CVolumeSet volumes;  ///< outlives the items
  CFSet set;
};

/// A record as a sound file has it: rectified 8-bit amplitudes from 0 to 255 in 10 columns and 5
/// rows of 1 mm, 100 samples of 10 ns in steel.
[[nodiscard]] CGDataTypeFDD SoundRecord(const idata_typeId& id = {.dataClass = gdata_AScan});

/// A data item whose ids a test chooses and changes at will.
class EditableItem : public CIData {
 public:
  EditableItem(DataHost& host, const idata_typeId& id);

  /// Through the reference to the item's descriptor.
  void SetId(const idata_typeId& id);

 private:
  EditableItem(DataHost& host, CGDataTypeFDD record)
      : CIData(&record, nullptr, &host.volumes, 0, nullptr) {}
};

}  // namespace utdata::test
