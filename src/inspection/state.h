// What an inspection holds: its descriptor, the items made of it, and the tables attached to them.
#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <unordered_map>
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
  bool isListed = true;  ///< the item is the file set's

  std::unique_ptr<CGDataTypeFDD> added;  ///< the record of one that is not in the descriptor yet
  std::vector<std::byte> samples;        ///< of one that was added with its samples

  std::timed_mutex tableLock;
  std::span<const std::byte> table;                    ///< empty until attached
  std::unique_ptr<std::byte[]> copy;                   ///< of a table that is in memory
  std::unique_ptr<ChunkCheck> chunks;                  ///< of a table from a file
  std::unique_ptr<const CellTable> cells;              ///< of the table
  std::atomic<const CellTable*> readyCells = nullptr;  ///< these, once they are there

  DataRow() = default;
  DataRow(const DataRow&) = delete;
  DataRow& operator=(const DataRow&) = delete;
  /// An item that stands alone goes with its row.
  ~DataRow() {
    if (!isListed && item) item->idata9_DeferDelete();
  }
};

struct ReleaseGroups {
  void operator()(CFContTypeFileDescr* groups) const;
};
using OwnedGroups = std::unique_ptr<CFContTypeFileDescr, ReleaseGroups>;

struct InspectionState final : IGDataSupplier {
  InspectionState(std::string filePath, OwnedGroups loaded, const OpenOptions& openOptions);
  InspectionState(const InspectionState&) = delete;
  InspectionState& operator=(const InspectionState&) = delete;
  ~InspectionState() = default;

  // What library objects reach back into.
  CFSet* GetFileSet() override { return &set; }
  CTableFactory* GetTableFactory() override { return &tables; }
  CVolumeSet* GetVolumeSet() override { return &volume; }
  CFContTypeFileDescr* GetFileDescriptor() override { return descriptor.get(); }
  void OnDataGroupAdded(std::int32_t) override {}
  /// Leaves every buffer at its preset: an inspection file carries no parameter database.
  void HandleParameterRequest(PellamServiceParam&, std::int32_t) override {}
  void OnParametersChanged() override {}

  /// Makes an item of a record, the last of `rows`. Throws std::bad_alloc, and changes nothing,
  /// when memory runs out. @param isNew as for CFSet::fset_AddGData
  DataRow& AddRow(const CGDataTypeFDD& stored, int isNew);
  void RemoveLastRow() noexcept;
  /// The row of an item, or of a master; null for an item of another inspection.
  DataRow* RowOf(const CIData* item);
  /// The table of a row, attached to its item when first asked for.
  std::span<const std::byte> TableOf(DataRow& row);
  const CellTable& CellsOf(DataRow& row);
  /// Checks part of a row's table. Throws when it is damaged, unless that is accepted.
  void CheckTable(DataRow& row, std::uint64_t from, std::uint64_t size);
  /// The damage that was found so far.
  [[nodiscard]] std::vector<DamagedSamples> FoundDamage();
  /// Checks the whole table of a row from a file, if it can be had. @return its first damage
  [[nodiscard]] std::optional<DamagedSamples> FirstDamage(DataRow& row);
  /// Adds a warning for each data group with values that loading has replaced.
  void WarnOfRepairs();
  /// "FILE: data group 3", for failures.
  [[nodiscard]] std::string NameOf(const DataRow& row) const;

  std::string path;
  OpenOptions options;
  std::vector<std::string> warnings;
  std::vector<CompanionProblem> companionProblems;
  OwnedGroups descriptor;
  CTableFactory tables;
  CVolumeSet volume{this, unit_Length, L"", unit_Length, L""};
  CSpec specimen;
  std::deque<DataRow> rows;  ///< before the set, whose items read from tables until they go; after
                             ///< the volume set, which has the units of items that stand alone
  std::deque<DataRow> masterRows;
  std::map<const CIData*, DataRow*> rowOfItem;
  std::vector<DataGroup> data;  ///< of `rows`
  std::set<const void*> saved;  ///< items that were new and stand in a file by now
  CFSet set{static_cast<IGDataSupplier*>(this)};

 private:
  void FillBaseUnits();
  void FillSet();
  void Attach(DataRow& row);
  void Load(DataRow& row, const std::byte* mapped);
  /// Throws about the first damaged chunk of a range, unless damage is accepted.
  void Refuse(DataRow& row, std::uint64_t from, std::uint64_t size);
  /// The damaged chunks from `chunk` on that were found one behind the other.
  [[nodiscard]] DamagedSamples DamageAt(DataRow& row, std::uint64_t chunk);

  std::mutex m_fileLock;  ///< a file is used by one thread at a time; taken after a row's
};

/// What this layer sees of a data group beyond its public operations.
struct DataGroupInside {
  [[nodiscard]] static InspectionState& State(const DataGroup& group) {
    return *group.m_inspection;
  }
  [[nodiscard]] static const DataRow& Row(const DataGroup& group) { return *group.m_row; }
  [[nodiscard]] static const CellTable& Cells(const DataGroup& group) {
    return group.m_inspection->CellsOf(*group.m_row);
  }
};

/// The changes of an inspection's items since it was opened or last saved, as groups to be written
/// against its descriptor. Refers to the items' records: the items may not change while it lives.
struct Changes {
  enum class Scope {
    Unsaved,
    SinceOpening  ///< with the groups that were added and saved since
  };
  explicit Changes(InspectionState& inspection, Scope scope = Scope::Unsaved);
  Changes(const Changes&) = delete;
  Changes& operator=(const Changes&) = delete;
  /// Its lists own nothing.
  ~Changes() = default;

  CFContTypeFileDescr groups;
  std::deque<CGDataTypeFDD> records;  ///< of data groups, listed in `groups`
  /// What the data groups of `groups` were made of: a record of the descriptor, or of none yet.
  std::unordered_map<const CGDataTypeFDD*, const CGDataTypeFDD*> bases;
  std::set<const void*> newItems;
  bool isEmpty = true;
};

/// Fills `copy` with the groups of a loaded descriptor, each replaced by its change where there is
/// one, and the groups that are new. It owns none of them.
void MergeInto(CFContTypeFileDescr& copy,
               const CFContTypeFileDescr& loaded,
               const Changes& changes);

}  // namespace utdata
