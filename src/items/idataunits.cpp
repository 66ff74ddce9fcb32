// The data item: its units on every axis, made once and brought in line with its parameters after
// every change.
#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <numbers>

#include "utdata/error.h"
#include "utdata/idata.h"
#include "utdata/vset.h"

namespace {

constexpr std::uint32_t privateUnits = 6;  ///< kind of the identity of a set that is not shared
constexpr std::uint32_t innerKinds[] = {
    18,
    19};  ///< geometry kinds with the probes on the inner surface
constexpr double smallestCircumference =
    1e-10;  ///< m; stands for that of a part that is thicker than its radius
constexpr kvt_enumAxis scanAxes[] = {kvt_AxisColumn, kvt_AxisRow, kvt_AxisFifth, kvt_AxisSixth};

int IsLinear(const CRDataTypeDD& d) { return d.GetDataScale() == gdata_ScaleLinear ? 1 : 0; }

/// How far apart the scan positions of one degree lie on the surface that the probes are on,
/// metres.
double LengthOfDegree(const CRDataTypeDD& d) {
  const bool isInner = std::find(std::begin(innerKinds), std::end(innerKinds), d.geometryKind) !=
                       std::end(innerKinds);
  if (!isInner) return 2 * std::numbers::pi * d.GetInspRadius() / 360;
  const double circumference = (d.GetInspRadius() - d.GetPartThickness()) * 2 * std::numbers::pi;
  return (circumference > 0 ? circumference : smallestCircumference) / 360;
}

/// A column or row axis: points, and of length and angle the one that it is not in, which follows
/// from the part's circumference.
void UpdateScanAxis(CUnitSet& set,
                    kvt_enumAxis axis,
                    double resolution,
                    double offset,
                    kvt_enumUnits units,
                    double lengthOfDegree) {
  set.AdjustSubUnit(axis, unit_Point, 1 / resolution, -offset / resolution, 0, 0);
  if (units == kvt_UnitMetre) {
    set.AdjustSubUnit(axis, unit_Angle, 1 / lengthOfDegree, 0, 0, 0);
    set.AdjustSubUnit(axis, unit_Length, 1, 0, 0, 0);
  } else if (units == kvt_UnitDegree) {
    set.AdjustSubUnit(axis, unit_Length, lengthOfDegree, 0, 0, 0);
    set.AdjustSubUnit(axis, unit_Angle, 1, 0, 0, 0);
  } else {
    err_Assert("FALSE", __FILE__, __LINE__);
  }
}

/// The base of the sample axis is the one-way path in metres; the record counts two-way time.
void UpdateSampleAxis(CUnitSet& set, const CRDataTypeDD& d) {
  const double scale = d.GetSampleAxisScale();
  const double speed = d.GetSoundSpeed();
  const double resolution = d.GetSampleResol();
  set.AdjustSubUnit(kvt_AxisSample, unit_HalfPath, 1 / scale, 0, 0, 0);
  set.AdjustSubUnit(kvt_AxisSample, unit_Path, 2 / scale, 0, 0, 0);
  set.AdjustSubUnit(kvt_AxisSample, unit_Time, 2 / (speed * scale), 0, 0, 0);
  set.AdjustSubUnit(kvt_AxisSample, unit_OneWayTime, 1 / (speed * scale), 0, 0, 0);
  set.AdjustSubUnit(kvt_AxisSample,
                    unit_Point,
                    2 / (resolution * speed * scale),
                    -d.GetSampleOffs() / resolution,
                    0,
                    0);
}

/// The depth of a diffracting tip follows from the path over half the distance of the probes, which
/// on a curved surface is half a chord that lies above or below the surface.
void UpdateTofdDepth(CUnitSet& set, const CIData& item, const CRDataTypeDD& d) {
  double sagitta = 0;
  double half = double{d.probeSeparation} / 2;
  item.GetCircularParameter(&sagitta, &half);  // leaves those of a flat part
  set.AdjustSubUnit(
      kvt_AxisSample, unit_TofdDepth, 1 / d.GetSampleAxisScale(), half * half, sagitta, 0);
}

/// The samples of an angle C-scan are angles, which its sample axis shows instead of paths.
void UpdateAngleSamples(CUnitSet& set, double resolution) {
  set.AdjustSubUnit(kvt_AxisSample, unit_Length, resolution / 1000, 0, 0, 0);
  set.AdjustSubUnit(kvt_AxisSample, unit_Angle, resolution, 0, 0, 0);
  set.AdjustSubUnit(kvt_AxisSample, unit_Point, 1, 0, 0, 0);
}

/// What a volume set or unit set has made; without memory, nothing.
template <class Value>
Value* Made(Value* made) {
  if (!made) throw std::bad_alloc();
  return made;
}

CUnit* ObtainUnit(CUnitSet& set, unit_enumUnits family, unit_enumDataUnit dataUnit, CUnit* base) {
  if (CUnit* const present = set.GetUnit(kvt_AxisAmplitude, family, dataUnit)) return present;
  return Made(set.AppendUnit(
      kvt_AxisAmplitude,
      std::make_unique<CUnit>(family, dataUnit, unit_ConversionLinear, 1.0, 0.0, base)));
}

/// Scaled analog data show in their own scale and in percent; all other data in percent and
/// decibels.
void UpdateAmplitudes(CUnitSet& set, const CRDataTypeDD& d, CUnit* base) {
  if (d.GetDataClass() != gdata_AnalogScaled) {
    Made(set.ModifyAmplitudeSubUnit(IsLinear(d)));
    return;
  }
  ObtainUnit(set, unit_Scaled, unit_DataScaled, base)
      ->CUpdateUnit(unit_Scaled,
                    unit_DataScaled,
                    unit_ConversionLinear,
                    d.GetDataResol(),
                    d.GetDataOffs(),
                    base);
  ObtainUnit(set, unit_Percent, unit_DataPercent, base);
}

/// A sample value of the data maximum is 100 percent; of bipolar samples the minimum is 100 percent
/// below zero.
void UpdateAmplitudePoints(CUnitSet& set, const CRDataTypeDD& d) {
  const double maximum = d.GetDataMax();
  const double minimum = d.GetDataMin();
  const double below = minimum < 0 ? std::fabs(minimum) : maximum;
  UTDATA_ASSERT(maximum != 0 && below != 0);
  set.AdjustSubUnit2(kvt_AxisAmplitude, unit_Point, maximum / 100, below / 100, 0, 0, 0);
  if (IsLinear(d)) return;
  UTDATA_ASSERT(d.GetDataResol() != 0 && maximum != 0);
  set.AdjustSubUnit(
      kvt_AxisAmplitude, unit_Decibel, d.GetDataResol() * maximum / 100, 0, -d.GetDataOffs(), 0);
}

}  // namespace

void CIData::InitializeUnits() {
  if (m_pUnitInfo) err_Assert("m_pUnitInfo == NULL", __FILE__, __LINE__);
  const auto address =
      static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(this) & 0xFFFFFFFFu);
  m_pUnitInfo =
      Made(m_volumes->vol_CreateUnitSet(vset_groupId(privateUnits, address, 0, 0, 0), nullptr));
  const auto add = [this](kvt_enumAxis axis, unit_enumUnits family) {
    return Made(m_pUnitInfo->AddSubUnit(axis, family, 1.0, 0.0, 0.0));
  };
  for (const kvt_enumAxis axis : scanAxes) {
    m_pointUnits[axis] = add(axis, unit_Point);
    add(axis, unit_Angle);
    add(axis, unit_Length);
  }
  for (const unit_enumUnits family :
       {unit_HalfPath, unit_Path, unit_Time, unit_OneWayTime, unit_Depth})
    add(kvt_AxisSample, family);
  Made(m_pUnitInfo->AddSubUnit(kvt_AxisSample, unit_TofdDepth, 0.0, 1.0, 1.0));
  if (m_descriptor->GetDataClass() == gdata_CScanAngle)
    for (const unit_enumUnits family : {unit_Angle, unit_Length}) add(kvt_AxisSample, family);
  for (const kvt_enumAxis axis : {kvt_AxisSample, kvt_AxisAmplitude})
    m_pointUnits[axis] = add(axis, unit_Point);
  if (m_descriptor->GetDataClass() != gdata_AnalogScaled)
    Made(m_pUnitInfo->AddAmplitudeSubUnit(IsLinear(*m_descriptor)));
}

CUnit* CIData::InitialSampleUnit() const {
  if (m_descriptor->GetDataClass() == gdata_CScanAngle)
    return m_descriptor->sampleUnits == kvt_UnitDegree
               ? m_pUnitInfo->GetUnit(kvt_AxisSample, unit_Angle, unit_Degree)
               : nullptr;
  return idata3_IsTOFD() ? m_pUnitInfo->GetUnit(kvt_AxisSample, unit_TofdDepth, unit_Millimetre)
                         : nullptr;
}

void CIData::ChooseInitialUnits() {
  const CRDataTypeDD& d = *m_descriptor;
  m_currentUnits[kvt_AxisSample] = InitialSampleUnit();
  CUnit*& amplitude = m_currentUnits[kvt_AxisAmplitude];
  if (!IsLinear(d))
    amplitude = m_pUnitInfo->GetUnit(kvt_AxisAmplitude, unit_Decibel, unit_DataDecibel);
  else if (d.GetDataClass() == gdata_AnalogScaled)
    amplitude = m_pUnitInfo->GetUnit(kvt_AxisAmplitude, unit_Scaled, unit_DataScaled);
  else
    amplitude = m_pUnitInfo->GetUnit(kvt_AxisAmplitude, unit_Percent, unit_DataPercent);
}

void CIData::UpdateUnits() {
  if (!m_descriptor || !m_pUnitInfo) return;
  CRDataTypeDD& d = *m_descriptor;
  CUnitSet& set = *m_pUnitInfo;
  const double lengthOfDegree = LengthOfDegree(d);
  UpdateAmplitudes(set, d, m_volumes->vol_GetBaseUnit(kvt_AxisAmplitude));
  UpdateScanAxis(
      set, kvt_AxisColumn, d.GetColResol(), d.GetColOffs(), d.GetColUnits(), lengthOfDegree);
  UpdateScanAxis(
      set, kvt_AxisRow, d.GetRowResol(), d.GetRowOffs(), d.GetRowUnits(), lengthOfDegree);
  UpdateSampleAxis(set, d);
  UpdateTofdDepth(set, *this, d);
  if (d.GetDataClass() == gdata_CScanAngle) UpdateAngleSamples(set, d.GetSampleResol());
  UpdateAmplitudePoints(set, d);
  const CUnit* const samplePoint = m_pointUnits[kvt_AxisSample];
  d.SetPointUnits(
      m_pointUnits[kvt_AxisColumn], m_pointUnits[kvt_AxisRow], m_pointUnits[kvt_AxisSample]);
  d.SetSampleLimits(
      static_cast<float>(samplePoint->ConvertToBase(0.0)),
      static_cast<float>(samplePoint->ConvertToBase(static_cast<double>(d.sampleQuantity))));
}
