#include "utdata/rdata.h"

#include <algorithm>
#include <cstring>

#include "interfaces/framework.h"
#include "src/foundation/dataclass.h"
#include "utdata/idata.h"
#include "utdata/supplier.h"
#include "utdata/tablefactory.h"
#include "utdata/unitset.h"

namespace {

constexpr double largestSampleQuantity = 100'000'000;

/// Of the class itself: a master of positions has the sample axis of its record.
bool IsPositionCScan(gdata_enumDataClass dataClass) {
  return utdata::HoldsPositions(dataClass) && !utdata::IsMaster(dataClass);
}

/// The quantity of samples that a data range stands for; 1 when it is out of bounds or not a
/// number.
std::uint32_t QuantityOfRange(double range) {
  return range > -1 && range < largestSampleQuantity + 1
             ? static_cast<std::uint32_t>(std::max(range, 0.0))
             : 1;
}

/// The descriptor of a linked item that lives and has one, else null. No id may be changed.
CRDataTypeDD* DescriptorOf(const utdata::DataItemLink& link) {
  const CIData* const item = link.Get();
  return item ? const_cast<CRDataTypeDD*>(item->Descriptor()) : nullptr;
}

std::uint32_t WordAt(const char* table, std::uint64_t index) {
  std::uint32_t word;
  std::memcpy(&word, table + index * sizeof word, sizeof word);
  return word;
}

}  // namespace

CRDataTypeDD::CRDataTypeDD() { initializeData(); }

CRDataTypeDD::CRDataTypeDD(const CGDataTypeFDD* record, CIData* matched, CIData* meridioAmp) {
  if (!record) return;
  initializeData();
  *this = *record;
  m_matchedCScan = matched;
  m_meridioAmpCScan = meridioAmp;
  DeriveSampleAxis();
  m_vectorSize = sampleSize * sampleQuantity;
  m_volumeSize = m_vectorSize * columnQuantity * rowQuantity;
  if (utdata::IsInNativeOrder(dataClass) && !utdata::IsMaster(dataClass)) byteSwap = 0;
}

CRDataTypeDD::CRDataTypeDD(const CRDataTypeDD& other) : CGDataTypeFDD() {
  initializeData();
  DuplicateDD_From(other);
}

CRDataTypeDD::~CRDataTypeDD() { initializeData(); }

/// A C-scan's cells hold one value each; its sample axis is the axis on which those values are
/// positions, or on which the partner's are.
void CRDataTypeDD::DeriveSampleAxis() {
  if (IsPositionCScan(dataClass)) {
    // In double precision: a difference of two floats need not be one.
    sampleQuantity = QuantityOfRange(GetDataMax() - GetDataMin());
    sampleResolution = dataResolution;
    sampleOffset = dataOffset;
  } else if (dataClass == gdata_CScanAmplitude) {
    const CRDataTypeDD* const partner = DescriptorOf(m_matchedCScan);
    sampleQuantity = partner ? QuantityOfRange(partner->GetDataMax()) : 1;
    sampleResolution = partner ? partner->dataResolution : 1.0f;
    sampleOffset = partner ? partner->dataOffset : 0.0f;
  }
}

CRDataTypeDD& CRDataTypeDD::operator=(const CGDataTypeFDD& record) {
  CGDataTypeFDD::operator=(record);
  return *this;
}

CRDataTypeDD& CRDataTypeDD::operator=(const CRDataTypeDD& other) { return DuplicateDD_From(other); }

CRDataTypeDD& CRDataTypeDD::DuplicateDD_From(const CRDataTypeDD& source) {
  if (&source == this) return *this;
  CGDataTypeFDD::operator=(source);
  m_vectorSize = source.m_vectorSize;
  m_volumeSize = source.m_volumeSize;
  m_reservedWord = source.m_reservedWord;
  m_groupVersion = source.m_groupVersion;
  std::copy(std::begin(source.m_reservedWords), std::end(source.m_reservedWords), m_reservedWords);
  m_matchedCScan = source.m_matchedCScan;
  m_meridioAmpCScan = source.m_meridioAmpCScan;
  SetDataLoaded(source.IsDataLoaded() != 0);
  SetVolumeLoaded(source.IsVolumeLoaded() != 0);
  StoreTable(reinterpret_cast<char*>(source.GetDiskTable()),
             source.GetUseMemoryMappedFilePointer(),
             source.m_tableSize.load(std::memory_order_relaxed));
  m_tableRefused.store(source.IsTableRefused(), std::memory_order_release);
  m_reservedValue = source.m_reservedValue;
  m_sampleAxisScale = source.m_sampleAxisScale;
  m_tableAllocationSize = source.sampleQuantity * 4;
  std::copy(std::begin(source.m_pointUnits), std::end(source.m_pointUnits), m_pointUnits);
  std::copy(
      std::begin(source.m_reservedFloats), std::end(source.m_reservedFloats), m_reservedFloats);
  m_sampleStart = source.m_sampleStart;
  m_sampleStop = source.m_sampleStop;
  std::copy(std::begin(source.m_trailingWords), std::end(source.m_trailingWords), m_trailingWords);
  m_dataOwned = 0;
  return *this;
}

CRDataTypeDD& CRDataTypeDD::AssociateProcessDD_From(CRDataTypeDD& source) {
  UTDATA_ASSERT(&source != this);
  return DuplicateDD_From(source);
}

void CRDataTypeDD::initializeData() {
  InitializeData();
  m_vectorSize = m_volumeSize = m_reservedWord = m_groupVersion = 0;
  std::fill(std::begin(m_reservedWords), std::end(m_reservedWords), 0u);
  m_matchedCScan = m_meridioAmpCScan = utdata::DataItemLink();
  SetDataLoaded(false);
  SetVolumeLoaded(false);
  SetDiskTable(nullptr, false);
  m_reservedValue = m_sampleAxisScale = 0.0;
  SetPointUnits(nullptr, nullptr, nullptr);
  std::fill(std::begin(m_reservedFloats), std::end(m_reservedFloats), 0.0f);
  SetSampleLimits(0.0f, 0.0f);
  std::fill(std::begin(m_trailingWords), std::end(m_trailingWords), 0u);
  m_tableAllocationSize = 0;
}

void CRDataTypeDD::Destroy() {
  UnlinkMatchingCScan();
  Flush(1);
  delete this;
}

void CRDataTypeDD::SetDiskTable(char* table, bool memoryMapped) {
  std::uint64_t viewSize = 0;
  if (gdata_IsTable(table) && SCFile::file_ViewSize(table, &viewSize))
    SetDiskTable(table, memoryMapped, viewSize);
  else
    StoreTable(table, memoryMapped, TableSizeByRecord(table));
}

bool CRDataTypeDD::SetDiskTable(char* table, bool memoryMapped, std::uint64_t size) {
  const bool isWhole = !gdata_IsTable(table) || HoldsItsCells(table, size);
  UTDATA_ASSERT(isWhole);
  StoreTable(isWhole ? table : nullptr, memoryMapped, size);
  if (isWhole) return true;
  SetDataLoaded(false);
  SetVolumeLoaded(false);
  m_tableRefused.store(true, std::memory_order_release);
  return false;
}

void CRDataTypeDD::StoreTable(char* table, bool memoryMapped, std::uint64_t size) {
  ValidateDiskTable(table, size);
  m_tableRefused.store(false, std::memory_order_relaxed);
  m_useMemoryMapped.store(memoryMapped, std::memory_order_relaxed);
  m_tableSize.store(gdata_IsTable(table) ? size : 0, std::memory_order_relaxed);
  m_diskTable.store(reinterpret_cast<std::uint32_t*>(table), std::memory_order_release);
}

/// The size of a table of which the host says nothing: what the record states of it when it is the
/// record's own, else as far as the cells reach.
std::uint64_t CRDataTypeDD::TableSizeByRecord(const char* table) const {
  if (!gdata_IsTable(table)) return 0;
  if (table == dataPointer && dataSize != 0) return dataSize;
  const std::uint64_t needed = NeededTableSize();
  if (needed == 0 || needed == unknownSize) return unknownSize;
  return storageMode == kvt_StorIndexed ? EndOfCells(table, unknownSize) : needed;
}

bool CRDataTypeDD::HoldsItsCells(const char* table, std::uint64_t size) const {
  if (size < NeededTableSize()) return false;
  return storageMode != kvt_StorIndexed || EndOfCells(table, size) <= size;
}

/// Where the last cell of a table with offsets ends, or the offsets do when all cells are without
/// samples. An old header at the start counts as zeros. REQUIRES: the offsets are there.
std::uint64_t CRDataTypeDD::EndOfCells(const char* table, std::uint64_t size) const {
  const std::uint64_t end = NeededTableSize();
  std::uint32_t last = 0;
  for (std::uint64_t word = gdata_OldHeaderSize(table, size) / sizeof last;
       word < end / sizeof last;
       ++word)
    last = std::max(last, WordAt(table, word));
  return last == 0 ? end : std::max(end, last + CellExtent());
}

std::uint64_t CRDataTypeDD::KnownTableSize() const {
  const std::uint64_t size = m_tableSize.load(std::memory_order_relaxed);
  return size == unknownSize ? 0 : size;
}

/// Bytes of a cell's samples. The cell size says how far apart cells lie that have no offsets.
std::uint64_t CRDataTypeDD::CellExtent() const {
  const std::uint32_t samplesOfCell = gdata_HoldsOneValuePerCell(dataClass) ? 1 : sampleQuantity;
  return std::uint64_t{sampleSize} * samplesOfCell;
}

std::uint64_t CRDataTypeDD::NeededTableSize() const {
  if (storageMode == kvt_StorIndexed) {
    const std::uint64_t cells = std::uint64_t{columnQuantity} * rowQuantity;
    return cells > UINT64_MAX / sizeof(std::uint32_t) ? UINT64_MAX : cells * sizeof(std::uint32_t);
  }
  std::uint64_t size = 0;
  return LayoutSize(size) || storageMode != kvt_StorCells ? size : UINT64_MAX;
}

void CRDataTypeDD::ValidateDiskTable(char* table, std::uint64_t size) const {
  if (gdata_IsTable(table))
    std::memset(table, 0, static_cast<std::size_t>(gdata_OldHeaderSize(table, size)));
}

void CRDataTypeDD::Flush(int) {
  std::uint32_t* const table = GetDiskTable();
  const bool isFreed = gdata_IsTable(table) && m_dataOwned && !GetUseMemoryMappedFilePointer();
  SetDiskTable(nullptr, isFreed ? false : GetUseMemoryMappedFilePointer());
  if (isFreed) delete[] reinterpret_cast<std::byte*>(table);
}

void CRDataTypeDD::UnlinkMatchingCScan() {
  if (CRDataTypeDD* const partner = DescriptorOf(m_matchedCScan)) partner->m_matchedCScan = nullptr;
}

void CRDataTypeDD::SetPointUnits(CUnit* column, CUnit* row, CUnit* sample) {
  m_pointUnits[kvt_AxisColumn] = column;
  m_pointUnits[kvt_AxisRow] = row;
  m_pointUnits[kvt_AxisSample] = sample;
}

void CRDataTypeDD::SetSampleLimits(float start, float stop) {
  m_sampleStart = start;
  m_sampleStop = stop;
}

std::uint32_t CRDataTypeDD::GetFormatMask() const {
  return sampleSize >= 4 ? 0xFFFFFFFFu : (std::uint32_t{1} << (8 * sampleSize)) - 1;
}

CLookUpTable* CRDataTypeDD::GetLookUpTable(IGDataSupplier* document) const {
  CTableFactory* const factory = document ? document->GetTableFactory() : nullptr;
  if (!factory) return nullptr;
  std::uint32_t classKind = 0;
  if (dataClass == gdata_CScanPosition)
    classKind = 2;
  else if (dataClass == gdata_AScan || dataClass == gdata_CScanAmplitude)
    classKind = 1;
  UTDATA_ASSERT(classKind != 0);
  const vset_groupId identity(5, channelId, gateId, 0, classKind);
  int created = 0;
  return factory->ObtainLUT(this, &created, &identity);
}
