// What the library reaches back into while the program holds an inspection: look-up tables and units of its data groups.
#pragma once

#include "utdata/fcont.h"
#include "utdata/supplier.h"
#include "utdata/tablefactory.h"
#include "utdata/vset.h"

namespace utdata::program {

/// Serves one document, and lives as long as it. Used by one thread.
class Host final : public IGDataSupplier {
 public:
  /// @param groups the document's, not owned; a scan axis counts as an angle when the first data group says so
  explicit Host(CFContTypeFileDescr& groups);
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  CFSet* GetFileSet() override { return nullptr; }  ///< the program works on the descriptor's own lists
  CTableFactory* GetTableFactory() override { return &m_tables; }
  CVolumeSet* GetVolumeSet() override { return &m_volume; }
  CFContTypeFileDescr* GetFileDescriptor() override { return &m_groups; }
  void OnDataGroupAdded(std::int32_t hasPatch) override;
  /// Leaves every buffer at its preset: an inspection file carries no parameter database.
  void HandleParameterRequest(PellamServiceParam& request, std::int32_t flag) override;
  void OnParametersChanged() override;

 private:
  CFContTypeFileDescr& m_groups;
  CTableFactory m_tables;
  CVolumeSet m_volume;
};

}  // namespace utdata::program
