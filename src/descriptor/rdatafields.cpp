// What a descriptor answers from its fields.
#include "utdata/rdata.h"

// -------------------------------------------------------------------------------------------------
// sample table

std::uint32_t* CRDataTypeDD::GetDiskTable() const {
  return m_diskTable.load(std::memory_order_acquire);
}
bool CRDataTypeDD::HasTable() const { return gdata_IsTable(GetDiskTable()); }
bool CRDataTypeDD::IsTableRefused() const { return m_tableRefused.load(std::memory_order_acquire); }
unsigned long CRDataTypeDD::GetTableAllocationSize() const { return m_tableAllocationSize; }
void CRDataTypeDD::SetTableAllocationSize(unsigned long bytes) {
  m_tableAllocationSize = static_cast<std::uint32_t>(bytes);
}
int CRDataTypeDD::IsDataLoaded() const {
  return m_dataLoaded.load(std::memory_order_acquire) ? 1 : 0;
}
void CRDataTypeDD::SetDataLoaded(bool loaded) {
  m_dataLoaded.store(loaded, std::memory_order_release);
}
int CRDataTypeDD::IsVolumeLoaded() const {
  return m_volumeLoaded.load(std::memory_order_acquire) ? 1 : 0;
}
void CRDataTypeDD::SetVolumeLoaded(bool loaded) {
  m_volumeLoaded.store(loaded, std::memory_order_release);
}
bool CRDataTypeDD::GetUseMemoryMappedFilePointer() const {
  return m_useMemoryMapped.load(std::memory_order_relaxed);
}
std::int32_t CRDataTypeDD::IsDataOwned() const { return m_dataOwned; }

// -------------------------------------------------------------------------------------------------
// record

gdata_enumDataClass CRDataTypeDD::GetDataClass() const { return dataClass; }
std::uint32_t CRDataTypeDD::GetChannelID() const { return channelId; }
const wchar_t* CRDataTypeDD::GetChannelIDName() const { return channelName; }
std::uint32_t CRDataTypeDD::GetSubChannelID() const { return subChannelId; }
std::uint32_t CRDataTypeDD::GetGateId() const { return gateId; }
std::uint32_t CRDataTypeDD::GetColQty() const { return columnQuantity; }
double CRDataTypeDD::GetColResol() const { return columnResolution; }
double CRDataTypeDD::GetColOffs() const { return columnOffset; }
kvt_enumUnits CRDataTypeDD::GetColUnits() const { return columnUnits; }
std::uint32_t CRDataTypeDD::GetRowQty() const { return rowQuantity; }
double CRDataTypeDD::GetRowResol() const { return rowResolution; }
double CRDataTypeDD::GetRowOffs() const { return rowOffset; }
kvt_enumUnits CRDataTypeDD::GetRowUnits() const { return rowUnits; }
void CRDataTypeDD::SetRowUnits(kvt_enumUnits units) { rowUnits = units; }
std::uint32_t CRDataTypeDD::GetSampleQty() const { return sampleQuantity; }
double CRDataTypeDD::GetSampleResol() const { return sampleResolution; }
double CRDataTypeDD::GetSampleOffs() const { return sampleOffset; }
std::uint32_t CRDataTypeDD::GetDataCompBits() const { return compressionBits; }
std::uint32_t CRDataTypeDD::GetDataCompLSBitsPos() const { return compressionLSBit; }
double CRDataTypeDD::GetDataMin() const { return dataMinimum; }
double CRDataTypeDD::GetDataMax() const { return dataMaximum; }
double CRDataTypeDD::GetDataResol() const { return dataResolution; }
double CRDataTypeDD::GetDataOffs() const { return dataOffset; }
double CRDataTypeDD::GetPartThickness() const { return partThickness; }
double CRDataTypeDD::GetInspRadius() const { return inspectionRadius; }
double CRDataTypeDD::GetSoundSpeed() const { return soundSpeed; }
gdata_enumInspGeometry CRDataTypeDD::GetInspGeometry() const { return inspectionGeometry; }
std::uint32_t CRDataTypeDD::GetCellSize() const { return cellSize; }
std::uint32_t CRDataTypeDD::GetSampleSize() const { return sampleSize; }
gdata_bitmapFileOptions CRDataTypeDD::GetFileFormat() const { return fileFormat; }
kvt_enumStorMode CRDataTypeDD::GetStorageMode() const { return storageMode; }
int CRDataTypeDD::IsSwapNeeded() const { return byteSwap != 0 ? 1 : 0; }

// -------------------------------------------------------------------------------------------------
// fixed answers

std::uint32_t CRDataTypeDD::GetModeID() const { return 0; }
std::uint32_t CRDataTypeDD::GetSubModeID() const { return 0; }
double CRDataTypeDD::GetLAB() const { return 0.0; }
double CRDataTypeDD::GetInUncontroled() const { return 0.0; }
double CRDataTypeDD::GetInUncontroledPos() const { return 0.0; }
double CRDataTypeDD::GetOutUncontroled() const { return 0.0; }
double CRDataTypeDD::GetOutUncontroledPos() const { return 0.0; }

// -------------------------------------------------------------------------------------------------
// run-time fields

std::uint32_t CRDataTypeDD::GetVectorSize() const { return m_vectorSize; }
std::uint32_t CRDataTypeDD::GetVolumeSize() const { return m_volumeSize; }
std::uint32_t& CRDataTypeDD::GetGroupVersionNumber() { return m_groupVersion; }
std::uint32_t CRDataTypeDD::GetGroupVersionNumber() const { return m_groupVersion; }
CIData* CRDataTypeDD::GetMatchedCScan() const { return m_matchedCScan.Get(); }
void CRDataTypeDD::SetMatchedCScan(CIData* item) { m_matchedCScan = item; }
CIData* CRDataTypeDD::GetMeridioAmpCscan() const { return m_meridioAmpCScan.Get(); }
void CRDataTypeDD::SetMeridioAmpCscan(CIData* item) { m_meridioAmpCScan = item; }
double CRDataTypeDD::GetSampleAxisScale() const { return m_sampleAxisScale; }
void CRDataTypeDD::SetSampleAxisScale(double scale) { m_sampleAxisScale = scale; }
CUnit* CRDataTypeDD::GetPointUnit(kvt_enumAxis axis) const {
  return axis <= kvt_AxisSample ? m_pointUnits[axis] : nullptr;
}
double CRDataTypeDD::GetSampleStart() const { return m_sampleStart; }
double CRDataTypeDD::GetSampleStop() const { return m_sampleStop; }
std::uint32_t CRDataTypeDD::FormatSample(unsigned int sample) const {
  return sample & GetFormatMask();
}
