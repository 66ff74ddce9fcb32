// What the library reaches back into while the program holds an inspection: its items, and look-up
// tables and units of its data groups.
#pragma once

#include "document/data_items.h"
#include "utdata/fcont.h"
#include "utdata/fset.h"
#include "utdata/spec.h"
#include "utdata/supplier.h"
#include "utdata/tablefactory.h"
#include "utdata/vset.h"

/// What a file set knows its document as.
class CDocument : public IGDataSupplier {};

namespace utdata::program {

/// Serves one document, and lives as long as it. Used by one thread.
class Host final : public CDocument {
 public:
  /// Makes an item of each group of the types that a file set holds. Of several groups with the
  /// same ids the first one counts; of weld scan plans and fills the last one, which is the latest.
  /// @param groups the document's, not owned; has to outlive the host, whose items refer to its
  ///               descriptors. A scan axis counts as an angle when the first data group says so
  /// @param tables where the samples of data items are to be
  Host(CFContTypeFileDescr& groups, Tables tables);
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  CFSet* GetFileSet() override { return &m_set; }
  /// The specimen with its material, if the inspection tells it.
  [[nodiscard]] CSpec& GetSpecimen() { return m_specimen; }
  /// The data items, by the data groups that they were made of.
  [[nodiscard]] DataItems& Data() { return m_data; }
  CTableFactory* GetTableFactory() override { return &m_tables; }
  CVolumeSet* GetVolumeSet() override { return &m_volume; }
  CFContTypeFileDescr* GetFileDescriptor() override { return &m_groups; }
  void OnDataGroupAdded(std::int32_t hasPatch) override;
  /// Leaves every buffer at its preset: an inspection file carries no parameter database.
  void HandleParameterRequest(PellamServiceParam& request, std::int32_t flag) override;
  void OnParametersChanged() override;

 private:
  void FillSet();

  CFContTypeFileDescr& m_groups;
  CTableFactory m_tables;
  CVolumeSet m_volume;
  CSpec m_specimen;
  DataItems m_data;  ///< before the set, whose items read from the tables until they go
  CFSet m_set{this};
};

}  // namespace utdata::program
