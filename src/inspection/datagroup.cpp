#include "utdata/datagroup.h"

#include <string_view>

#include "src/foundation/dataclass.h"
#include "src/inspection/state.h"
#include "utdata/failure.h"
#include "utdata/fields.h"

namespace utdata {
namespace {

/// What a value of a record's field is called; "type N" for one without a name.
std::string NameOf(std::string_view key, std::uint32_t value) {
  const std::string name = ChoiceName(*SCFile::file_GroupTypeOf<CGDataTypeFDD>().Find(key), value);
  return name.empty() ? "type " + std::to_string(value) : name;
}

}  // namespace

std::size_t DataGroup::Index() const { return m_row->index; }
std::string DataGroup::Name() const { return m_inspection->NameOf(*m_row); }
const CGDataTypeFDD& DataGroup::Stored() const { return *m_row->stored; }
const CGDataTypeFDD& DataGroup::Taken() const { return m_row->taken; }
CIData& DataGroup::Item() const { return *m_row->item; }
const CRDataTypeDD& DataGroup::Descriptor() const { return *m_row->item->Descriptor(); }
bool DataGroup::IsListed() const { return m_row->isListed; }

bool DataGroup::IsMaster() const { return utdata::IsMaster(Stored().dataClass); }
gdata_enumDataClass DataGroup::Class() const { return ClassOfElements(Stored().dataClass); }
std::string DataGroup::ClassName() const { return ClassNameOf(Stored()); }

std::string DataGroup::TypeName() const { return NameOf("dataType", Stored().GetDataType()); }

std::string DataGroup::BookmarkName() const {
  return NameOf("bookmarkType", Descriptor().GetDataBookmarkType());
}

std::string DataGroup::Label() const {
  std::wstring label, idLabel;
  m_row->item->idata3_GetChannelIdName(&label, &idLabel, 0);
  return ToUtf8(label);
}

std::string DataGroup::Caption() const {
  std::string caption = Label();
  caption.erase(caption.find_last_not_of(' ') + 1);
  return caption;
}

std::string DataGroup::IdLabel() const {
  std::wstring label, idLabel;
  m_row->item->idata3_GetChannelIdName(&label, &idLabel, 0);
  return ToUtf8(idLabel);
}

bool DataGroup::HoldsAmplitudes() const { return utdata::HoldsAmplitudes(Class()); }
bool DataGroup::HoldsPositions() const { return utdata::HoldsPositions(Class()); }
bool DataGroup::HasAScans() const { return Class() == gdata_AScan; }
bool DataGroup::IsCScan() const { return utdata::IsCScan(Class()); }
bool DataGroup::IsTofd() const { return m_row->item->idata3_IsTOFD() != 0; }

std::optional<DataGroup> DataGroup::Matched() const {
  DataRow* row = m_inspection->RowOf(Descriptor().GetMatchedCScan());
  return row ? std::optional(DataGroup(*m_inspection, *row)) : std::nullopt;
}

std::optional<DataGroup> DataGroup::MeridioAmplitudes() const {
  DataRow* row = m_inspection->RowOf(Descriptor().GetMeridioAmpCscan());
  return row ? std::optional(DataGroup(*m_inspection, *row)) : std::nullopt;
}

std::optional<DataGroup> DataGroup::Master() const {
  if (!m_row->item->idata1_IsMultiChannelElement()) return std::nullopt;
  DataRow* row = m_inspection->RowOf(m_row->item->idata1_SubChannelMaster());
  return row ? std::optional(DataGroup(*m_inspection, *row)) : std::nullopt;
}

std::vector<DataGroup> DataGroup::Elements() const {
  CIDataLst list;
  m_row->item->GetOrderedSubChannelList(&list);
  std::vector<DataGroup> elements;
  for (const CIData* element : list)
    if (DataRow* row = m_inspection->RowOf(element)) elements.emplace_back(*m_inspection, *row);
  return elements;
}

std::uint32_t DataGroup::ColumnQuantity() const { return m_row->item->idata3_GetColQty(); }
std::uint32_t DataGroup::RowQuantity() const { return m_row->item->idata3_GetRowQty(); }
std::uint32_t DataGroup::SampleQuantity() const { return SamplesPerCell(Descriptor()); }

CellRange DataGroup::AllCells() const {
  return {0, std::uint64_t{RowQuantity()} * ColumnQuantity(), 1};
}

CellRange DataGroup::CellsOfRow(std::uint32_t row) const {
  return {std::uint64_t{row} * ColumnQuantity(), ColumnQuantity(), 1};
}

CellRange DataGroup::CellsOfColumn(std::uint32_t column) const {
  return {column, RowQuantity(), ColumnQuantity()};
}

bool DataGroup::HasTable() const { return Stored().samples.group || m_row->added; }

std::span<const std::byte> DataGroup::Table() const {
  return Table(0, m_inspection->TableOf(*m_row).size());
}

std::span<const std::byte> DataGroup::Table(std::uint64_t from, std::uint64_t size) const {
  const std::span<const std::byte> table = m_inspection->TableOf(*m_row);
  if (from > table.size() || size > table.size() - from)
    throw Error(
        Name(), "cannot be read", "its samples have " + std::to_string(table.size()) + " bytes");
  m_inspection->CheckTable(*m_row, from, size);
  return table.subspan(static_cast<std::size_t>(from), static_cast<std::size_t>(size));
}

std::span<const std::byte> DataGroup::Cell(std::uint32_t row,
                                           std::uint32_t column,
                                           std::size_t sampleSize) const {
  const CellTable& cells = m_inspection->CellsOf(*m_row);
  if (sampleSize != Descriptor().GetSampleSize())
    throw Error(Name(),
                "cannot be read",
                "its samples have " + std::to_string(Descriptor().GetSampleSize()) + " bytes");
  if (row >= RowQuantity() || column >= ColumnQuantity())
    throw Error(Name(),
                "cannot be read",
                "it has " + std::to_string(RowQuantity()) + " rows and " +
                    std::to_string(ColumnQuantity()) + " columns");
  const std::byte* begin = cells.Cell(std::uint64_t{row} * ColumnQuantity() + column);
  return begin ? std::span(begin, cells.VectorBytes()) : std::span<const std::byte>();
}

std::string ClassNameOf(const CGDataTypeFDD& record) {
  const std::string_view known = utdata::ClassName(record.dataClass);
  const std::string name = known.empty()
                               ? "class " + std::to_string(ClassOfElements(record.dataClass))
                               : std::string(known);
  return IsMaster(record.dataClass) ? name + " (all sub-channels)" : name;
}

}  // namespace utdata
