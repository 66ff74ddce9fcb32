// The data items of an inspection: which one each data group has, and the samples attached to it.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "utdata/fset.h"
#include "utdata/vset.h"

namespace utdata::program {

class MappedSamples;

/// Where samples are while a program works with them.
enum class Tables {
  Mapped,   ///< in the file, of which the operating system brings what is read
  InMemory  ///< in memory of the program
};

/// Used by one thread.
class DataItems {
 public:
  /// A data group's place among the data groups of the inspection, its record as the file says it,
  /// and its item.
  struct Row {
    std::size_t index = 0;
    CGDataTypeFDD* group = nullptr;  ///< the document's
    CGDataTypeFDD taken;     ///< the record as the item took it: normalised, with a bookmark type
    CIData* item = nullptr;  ///< null: another group has its ids, or it says that it is a master
  };

  explicit DataItems(Tables tables);
  ~DataItems();
  DataItems(const DataItems&) = delete;
  DataItems& operator=(const DataItems&) = delete;

  /// Makes the item of a data group, of a copy of its record.
  /// @param group, set, volume not owned; the set has to go before this, the others after it
  void Add(CGDataTypeFDD& group, CFSet& set, CVolumeSet& volume);

  [[nodiscard]] const std::vector<std::unique_ptr<Row>>& Rows() const { return m_rows; }
  /// REQUIRES: a data group of the document that this was filled from.
  [[nodiscard]] const Row& RowOf(const CGDataTypeFDD& group) const {
    return *m_rowOfGroup.at(&group);
  }
  /// Null for an item that is not one of a data group: none at all, or a master.
  [[nodiscard]] const Row* RowOf(const CIData* item) const;

  /// The samples of a data group, attached to its item when first asked for. Throws Failure when it
  /// has none.
  [[nodiscard]] std::span<const std::byte> Table(const CGDataTypeFDD& group);

 private:
  struct Attached {
    std::unique_ptr<MappedSamples> mapped;
    std::unique_ptr<std::byte[]> copy;
    std::span<const std::byte> bytes;
  };

  void Attach(const Row& row, Attached& table) const;

  const Tables m_tables;
  std::vector<std::unique_ptr<Row>> m_rows;
  std::unordered_map<const CGDataTypeFDD*, const Row*> m_rowOfGroup;
  std::unordered_map<const CIData*, const Row*> m_rowOfItem;
  std::unordered_map<const CGDataTypeFDD*, Attached> m_attached;
};

}  // namespace utdata::program
