// The data item: its dimensions, its value range and its samples.
#include <chrono>
#include <cmath>
#include <limits>
#include <thread>

#include "src/foundation/dataclass.h"
#include "src/items/idatainside.h"
#include "utdata/error.h"
#include "utdata/idata.h"
#include "utdata/idatalst.h"

namespace {

constexpr std::chrono::milliseconds tablePoll{50};

/// What a getter of the descriptor answers; 0 where there is none.
template <class Owner, class Value>
Value Read(const CRDataTypeDD* descriptor, Value (Owner::*get)() const) {
  return descriptor ? (descriptor->*get)() : Value{};
}

std::uint32_t Extent(const CGDataTypeFDD& record) {
  const double extent = double{record.dataMaximum} - record.dataMinimum;
  if (!(extent > 0)) return 0;
  constexpr auto largest = std::numeric_limits<std::uint32_t>::max();
  return extent < largest ? static_cast<std::uint32_t>(extent) : largest;
}

}  // namespace

std::uint32_t CIData::idata3_GetDimQty(kvt_enumAxis axis) const {
  if (!m_record) return 0;
  const LockScope lock(*this);
  switch (axis) {
    case kvt_AxisColumn:
      return m_record->columnQuantity;
    case kvt_AxisRow:
      return m_record->rowQuantity;
    case kvt_AxisSample:
      return m_record->sampleQuantity;
    case kvt_AxisAmplitude:
      return Extent(*m_record);
    default:
      err_Assert("FALSE", __FILE__, __LINE__);
      return 0;
  }
}

double CIData::idata3_GetDimResol(kvt_enumAxis axis) const {
  if (!m_descriptor) return 0;
  const LockScope lock(*this);
  switch (axis) {
    case kvt_AxisColumn:
      return m_descriptor->GetColResol();
    case kvt_AxisRow:
      return m_descriptor->GetRowResol();
    case kvt_AxisSample:
      return m_descriptor->GetSampleResol();
    case kvt_AxisAmplitude:
      return m_descriptor->GetDataResol();
    default:
      err_Assert("FALSE", __FILE__, __LINE__);
      return 0;
  }
}

double CIData::idata3_GetDimOffs(kvt_enumAxis axis) const {
  if (!m_record) return 0;
  const LockScope lock(*this);
  switch (axis) {
    case kvt_AxisColumn:
      return m_record->columnOffset;
    case kvt_AxisRow:
      return m_record->rowOffset;
    case kvt_AxisSample:
      return m_record->sampleOffset;
    case kvt_AxisAmplitude:
      return m_record->dataOffset;
    default:
      return 0;
  }
}

std::uint32_t CIData::idata3_GetColQty() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetColQty);
}
double CIData::idata3_GetColResol() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetColResol);
}
double CIData::idata3_GetColOffs() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetColOffs);
}
kvt_enumUnits CIData::idata3_GetColUnits() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetColUnits);
}
std::uint32_t CIData::idata3_GetRowQty() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetRowQty);
}
double CIData::idata3_GetRowResol() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetRowResol);
}
double CIData::idata3_GetRowOffs() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetRowOffs);
}
kvt_enumUnits CIData::idata3_GetRowUnits() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetRowUnits);
}
std::uint32_t CIData::idata3_GetSampleQty() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetSampleQty);
}
double CIData::idata3_GetSampleResol() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetSampleResol);
}
double CIData::idata3_GetSampleOffs() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetSampleOffs);
}
kvt_enumUnits CIData::idata3_GetSampleUnits() const {
  return m_descriptor ? m_descriptor->sampleUnits : kvt_UnitNone;
}
std::uint32_t CIData::idata3_GetSampleSize() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetSampleSize);
}
double CIData::idata3_GetSoundSpeed() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetSoundSpeed);
}
double CIData::idata3_GetDataMin() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetDataMin);
}
double CIData::idata3_GetDataMax() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetDataMax);
}
gdata_enumDataClass CIData::idata3_GetDataId() const {
  return Read(m_descriptor.get(), &CRDataTypeDD::GetDataClass);
}

kvt_enumDataType CIData::idata3_GetDataType() const {
  const LockScope lock(*this);
  return Read(m_descriptor.get(), &CRDataTypeDD::GetDataType);
}

kvt_enumUnitSystems CIData::idata3_GetUnitSystem() const {
  const LockScope lock(*this);
  return m_descriptor ? m_descriptor->unitSystem : kvt_SystemMetric;
}

void CIData::idata3_GetAbsoluteMinMax(float* minimum, float* maximum) const {
  UTDATA_ASSERT(minimum && maximum);
  if (!minimum || !maximum || !m_descriptor) return;
  const LockScope lock(*this);
  *minimum = m_descriptor->dataMinimum;
  *maximum = m_descriptor->dataMaximum;
}

int CIData::idata1_DataLoad(int volume) {
  if (!m_descriptor) return -1;
  if (m_loadStarted.load(std::memory_order_acquire) == 1) return 0;
  if (m_descriptor->IsVolumeLoaded()) return -1;
  if (m_descriptor->IsDataLoaded() && (volume || !idata1_DataIsVolume())) return -1;
  const LockScope lock(*this);
  if (!idata1_IsMultiChannelMaster()) return 0;
  UTDATA_ASSERT(m_elements != nullptr);
  if (!m_elements || m_loadStarted.exchange(1, std::memory_order_acq_rel) == 1) return 0;
  for (CIData* element : *m_elements) element->idata1_DataLoad(volume);
  return 0;
}

void CIData::idata1_GetGInfoCopy(CGDataTypeFDD* out) {
  UTDATA_ASSERT(out != nullptr);
  if (!out || !m_descriptor) return;
  idata1_DataLoad(0);
  const LockScope lock(*this);
  *out = *m_record;
  const bool hasTable = !idata1_IsMultiChannelMaster();
  out->dataPointer = hasTable ? m_descriptor->GetDiskTable() : nullptr;
  out->dataSize = hasTable ? m_descriptor->KnownTableSize() : 0;
}

void* CIData::idata3_GetDataTablePtr() const {
  UTDATA_ASSERT(m_descriptor != nullptr);
  if (!m_descriptor) return nullptr;
  for (;;) {
    if (void* const table = m_descriptor->GetDiskTable()) return table;
    if (m_descriptor->IsTableRefused()) return nullptr;
    std::this_thread::sleep_for(tablePoll);
  }
}

int CIData::IsDiskOrigin() const {
  return m_diskOrigin.load(std::memory_order_relaxed) == 1 ? 1 : 0;
}

void CIData::SetDiskOrigin() { m_diskOrigin.store(1, std::memory_order_relaxed); }

bool CIData::idata1_DataIsVolume() const {
  const gdata_enumDataClass c = idata3_GetDataId();
  return !utdata::IsMaster(c) && utdata::IsVolume(c);
}

bool CIData::idata3_isAmplitudeData() const { return utdata::IsAScan(idata3_GetDataId()); }

bool CIData::idata3_IsAnalogData() const {
  const gdata_enumDataClass c = idata3_GetDataId();
  return !utdata::IsMaster(c) && utdata::IsAnalog(c);
}

bool CIData::idata3_IsEddyCurrentData() const {
  const gdata_enumDataClass c = idata3_GetDataId();
  return !utdata::IsMaster(c) && utdata::IsEddyCurrent(c);
}

bool CIData::idata3_IsBeamSimulation() const { return idata3_GetDataId() == gdata_BeamSimulation; }

bool CIData::idata3_IsLABEnabled() const { return false; }
