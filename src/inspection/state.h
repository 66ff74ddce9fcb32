// What an inspection holds: its descriptor, the items made of it, and the tables attached to them.
#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "src/inspection/celltable.h"
#include "utdata/companions.h"
#include "utdata/fset.h"
#include "utdata/inspection.h"
#include "utdata/spec.h"
#include "utdata/supplier.h"
#include "utdata/tablefactory.h"
#include "utdata/vset.h"

namespace utdata {

/// One data group: its record, its item, and its table once somebody asked for it.
struct DataRow {
  std::size_t index = 0;
  const CGDataTypeFDD* stored = nullptr;
  CGDataTypeFDD taken;  ///< the record as the item took it
  CIData* item = nullptr;
  bool isListed = true;

  std::unique_ptr<CGDataTypeFDD> added;  ///< the record of one that is not in the descriptor yet
  std::vector<std::byte> samples;        ///< of one that was added with its samples

  std::timed_mutex tableLock;
  std::span<const std::byte> table;        ///< empty until attached
  std::unique_ptr<std::byte[]> copy;       ///< of a table that is in memory
  void* mapped = nullptr;                  ///< of one that is mapped
  std::unique_ptr<const CellTable> cells;  ///< of the table
};

struct InspectionState final : IGDataSupplier {
  InspectionState(std::string filePath,
                  CFContTypeFileDescr* loaded,
                  const OpenOptions& openOptions);
  InspectionState(const InspectionState&) = delete;
  InspectionState& operator=(const InspectionState&) = delete;
  ~InspectionState();

  // What library objects reach back into.
  CFSet* GetFileSet() override { return &set; }
  CTableFactory* GetTableFactory() override { return &tables; }
  CVolumeSet* GetVolumeSet() override { return &volume; }
  CFContTypeFileDescr* GetFileDescriptor() override { return descriptor.get(); }
  void OnDataGroupAdded(std::int32_t) override {}
  /// Leaves every buffer at its preset: an inspection file carries no parameter database.
  void HandleParameterRequest(PellamServiceParam&, std::int32_t) override {}
  void OnParametersChanged() override {}

  /// Makes an item of a record, the last of `rows`. @param isNew as for CFSet::fset_AddGData
  DataRow& AddRow(const CGDataTypeFDD& stored, int isNew);
  /// REQUIRES: it is not listed.
  void RemoveLastRow();
  /// The row of an item, or of a master; null for an item of another inspection.
  DataRow* RowOf(const CIData* item);
  /// The table of a row, attached to its item when first asked for.
  std::span<const std::byte> TableOf(DataRow& row);
  const CellTable& CellsOf(DataRow& row);
  /// "FILE: data group 3", for failures.
  [[nodiscard]] std::string NameOf(const DataRow& row) const;

  struct Release {
    void operator()(CFContTypeFileDescr* groups) const;
  };

  std::string path;
  OpenOptions options;
  std::vector<std::string> warnings;
  std::vector<CompanionProblem> companionProblems;
  std::unique_ptr<CFContTypeFileDescr, Release> descriptor;
  CTableFactory tables;
  CVolumeSet volume{this, unit_Length, L"", unit_Length, L""};
  CSpec specimen;
  std::deque<DataRow> rows;  ///< before the set, whose items read from tables until they go
  std::deque<DataRow> masterRows;
  std::map<const CIData*, DataRow*> rowOfItem;
  std::vector<DataGroup> data;  ///< of `rows`
  std::set<const void*> saved;  ///< items that were new and stand in a file by now
  CFSet set{static_cast<IGDataSupplier*>(this)};

 private:
  void FillBaseUnits();
  void FillSet();
  void Attach(DataRow& row);
};

/// The changes of an inspection's items since it was opened or last saved, as groups to be written
/// against its descriptor. Refers to the items' records: the items may not change while it lives.
struct Changes {
  explicit Changes(InspectionState& inspection);
  Changes(const Changes&) = delete;
  Changes& operator=(const Changes&) = delete;
  /// Its lists own nothing.
  ~Changes() = default;

  CFContTypeFileDescr groups;
  std::deque<CGDataTypeFDD> records;  ///< of data groups, listed in `groups`
  std::vector<const void*> newItems;
  bool isEmpty = true;
};

/// Fills `copy` with the groups of a loaded descriptor, each replaced by its change where there is
/// one, and the groups that are new. It owns none of them.
void MergeInto(CFContTypeFileDescr& copy,
               const CFContTypeFileDescr& loaded,
               const CFContTypeFileDescr& changes);

}  // namespace utdata
