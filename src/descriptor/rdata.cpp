#include "utdata/rdata.h"

#include <algorithm>
#include <cstring>

#include "interfaces/framework.h"
#include "utdata/idata.h"
#include "utdata/supplier.h"
#include "utdata/tablefactory.h"
#include "utdata/unitset.h"

namespace {

constexpr double largestSampleQuantity = 100'000'000;

constexpr std::size_t headerSize =
    36;  ///< bytes of the header that older writers leave at the start of a table
constexpr std::uint16_t headerFirst = 0x3344;
constexpr std::uint16_t headerSecond = 0x5553;

/// Classes whose samples are already in the machine's byte order, whatever the record says.
constexpr std::uint32_t nativeOrderClasses[] = {2, 3, 5, 6, 7, 8, 9, 12, 13, 16, 17};

bool IsPositionCScan(gdata_enumDataClass c) {
  return c == gdata_CScanPosition || c == gdata_CScanPositionFirst || c == gdata_CScanPositionLast;
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

/// Whether a table is memory that may be read: the all-ones pointer stands for one that is not
/// here.
bool IsBlock(const char* table) {
  return table && reinterpret_cast<std::uintptr_t>(table) != ~std::uintptr_t{0};
}

std::uint16_t LowHalf(const char* word) {
  std::uint32_t value;
  std::memcpy(&value, word, sizeof value);
  return static_cast<std::uint16_t>(value & 0xFFFFu);
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
  if (std::find(std::begin(nativeOrderClasses), std::end(nativeOrderClasses), dataClass) !=
      std::end(nativeOrderClasses))
    byteSwap = 0;
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
  SetDiskTable(reinterpret_cast<char*>(source.GetDiskTable()),
               source.GetUseMemoryMappedFilePointer());
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
  if (IsBlock(table)) {
    const std::uint64_t stated = StatedTableSize();
    const bool isWhole = stated == 0 || stated >= NeededTableSize();
    UTDATA_ASSERT(isWhole);
    if (!isWhole) {
      SetDataLoaded(false);
      SetVolumeLoaded(false);
      table = nullptr;
    }
  }
  ValidateDiskTable(table);
  m_useMemoryMapped.store(memoryMapped, std::memory_order_relaxed);
  m_diskTable.store(reinterpret_cast<std::uint32_t*>(table), std::memory_order_release);
}

/// What the record says of the block that it names, in memory or on disk; 0 when it says nothing.
std::uint64_t CRDataTypeDD::StatedTableSize() const {
  if (dataSize != 0) return dataSize;
  return samples.offset != gdata_typeSampleRef::none ? samples.size : 0;
}

std::uint64_t CRDataTypeDD::KnownTableSize() const {
  const std::uint64_t stated = StatedTableSize();
  if (stated != 0 || samples.offset != gdata_typeSampleRef::none) return stated;
  const std::uint64_t needed = NeededTableSize();
  return storageMode == kvt_StorIndexed && needed < UINT64_MAX && needed != 0
             ? needed + m_vectorSize
             : needed;
}

std::uint64_t CRDataTypeDD::NeededTableSize() const {
  const std::uint64_t cells = std::uint64_t{columnQuantity} * rowQuantity;
  // The derived sample axis of a C-scan says nothing of its table, which has one value a cell.
  const auto elementClass =
      static_cast<gdata_enumDataClass>(dataClass & ~std::uint32_t{gdata_MultiChannelMaster});
  const std::uint64_t vector =
      std::uint64_t{sampleSize} * (enum_IsCscanData(elementClass) ? 1 : sampleQuantity);
  const std::uint64_t cell = storageMode == kvt_StorIndexed
                                 ? sizeof(std::uint32_t)
                                 : std::max<std::uint64_t>(cellSize, vector);
  return cells != 0 && cell > UINT64_MAX / cells ? UINT64_MAX : cells * cell;
}

void CRDataTypeDD::ValidateDiskTable(char* table) const {
  if (!IsBlock(table)) return;
  const std::uint64_t size = KnownTableSize();
  if (size != 0 && size < headerSize) return;
  if (LowHalf(table) == headerFirst && LowHalf(table + 4) == headerSecond)
    std::memset(table, 0, headerSize);
}

void CRDataTypeDD::Flush(int) {
  std::uint32_t* const table = GetDiskTable();
  const bool isFreed = table && m_dataOwned && !GetUseMemoryMappedFilePointer();
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

CLookUpTable* CRDataTypeDD::GetLookUpTable(IGDataSupplier* document) {
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
