#include "document/data_items.h"

#include <algorithm>
#include <utility>

#include "document/document.h"

namespace utdata::program {
namespace {

/// While one exists, nobody hears what the library reports to its developers of a record that it
/// had to mend.
class QuietReports {
 public:
  QuietReports() : m_before(SetReportSink([](const Report&) { return ReportAnswer::Continue; })) {}
  ~QuietReports() { SetReportSink(std::move(m_before)); }
  QuietReports(const QuietReports&) = delete;
  QuietReports& operator=(const QuietReports&) = delete;

 private:
  ReportSink m_before;
};

}  // namespace

DataItems::DataItems(Tables tables) : m_tables(tables) {}
DataItems::~DataItems() = default;

void DataItems::Add(CGDataTypeFDD& group, CFSet& set, CVolumeSet& volume) {
  constexpr int ofTheFile = 0;
  auto row = std::make_unique<Row>(Row{m_rows.size(), &group, group, nullptr});
  {
    const QuietReports quiet;
    row->item = set.fset_AddGData(&row->taken, nullptr, &volume, ofTheFile);
  }
  // Some classes answer with the item that has the ids already.
  if (row->item && !m_rowOfItem.emplace(row->item, row.get()).second) row->item = nullptr;
  m_rowOfGroup.emplace(&group, row.get());
  m_rows.push_back(std::move(row));
}

const DataItems::Row* DataItems::RowOf(const CIData* item) const {
  const auto found = m_rowOfItem.find(item);
  return found == m_rowOfItem.end() ? nullptr : found->second;
}

std::span<const std::byte> DataItems::Table(const CGDataTypeFDD& group) {
  Attached& table = m_attached.try_emplace(&group).first->second;
  if (table.bytes.empty()) Attach(RowOf(group), table);
  return table.bytes;
}

// The item never frees a table that is called mapped, so that both kinds of table live as long as
// this.
void DataItems::Attach(const Row& row, Attached& table) const {
  auto mapped = std::make_unique<MappedSamples>(*row.group);
  char* bytes = mapped->Bytes();
  table.bytes = {mapped->Data(), mapped->Size()};
  if (m_tables == Tables::InMemory) {
    table.copy = std::make_unique<std::byte[]>(mapped->Size());
    std::copy(table.bytes.begin(), table.bytes.end(), table.copy.get());
    table.bytes = {table.copy.get(), mapped->Size()};
    bytes = reinterpret_cast<char*>(table.copy.get());
  } else {
    table.mapped = std::move(mapped);
  }
  if (!row.item) return;
  const QuietReports quiet;  // a table that is shorter than its layout is refused; whoever counts
                             // on the layout says so
  CRDataTypeDD& descriptor = *row.item->idata1_GetInfoRef();
  const bool isAttached = descriptor.SetDiskTable(bytes, true, table.bytes.size()) && bytes;
  descriptor.SetDataLoaded(isAttached);
  descriptor.SetVolumeLoaded(isAttached);
  if (m_tables == Tables::Mapped) row.item->SetDiskOrigin();
}

}  // namespace utdata::program
