#include "utdata/unitset.h"

#include <new>
#include <span>
#include <utility>

#include "utdata/vset.h"

IMPLEMENT_DYNCREATE(CUnitSet, CObject)

namespace {

/// One data unit of a family, and how many of it make one base unit.
struct ScaledUnit {
  unit_enumDataUnit dataUnit;
  double scale;
  double squareScale;  ///< of the constant under a TOFD root; the product of the scales, rounded as
                       ///< instruments round it
};

constexpr ScaledUnit genericUnits[] = {{unit_DataGeneric, 1, 1}};
constexpr ScaledUnit times[] = {{unit_Second, 1, 1}, {unit_Microsecond, 1e6, 1e12}};
constexpr ScaledUnit lengths[] = {{unit_Metre, 1, 1},
                                  {unit_Millimetre, 1000, 1e6},
                                  {unit_Inch, 39.37, 1549.9969},
                                  {unit_Mil, 39370, 1549996900}};
constexpr ScaledUnit angles[] = {{unit_Degree, 1, 1},
                                 {unit_Radian, 0.017453292519943295, 0.00030461741978670857}};
constexpr ScaledUnit percents[] = {{unit_DataPercent, 1, 1}};
constexpr ScaledUnit decibels[] = {{unit_DataDecibel, 1, 1}};
constexpr ScaledUnit points[] = {{unit_DataPoint, 1, 1}};

/// Slope that TOFD depth units start with; their data item sets the true one before they are used.
constexpr double initialTofdSlope = 13.0;

/// How many units of each axis a data group has, for lists of the right size.
constexpr std::ptrdiff_t usualQuantity[CUnitSet::axisQuantity] = {7, 7, 21, 3, 7, 7};

std::span<const ScaledUnit> UnitsOfFamily(unit_enumUnits family) {
  switch (family) {
    case unit_Generic:
      return genericUnits;
    case unit_Time:
    case unit_OneWayTime:
      return times;
    case unit_Length:
    case unit_Path:
    case unit_HalfPath:
    case unit_Depth:
    case unit_TofdDepth:
      return lengths;
    case unit_Angle:
      return angles;
    case unit_Percent:
      return percents;
    case unit_Decibel:
      return decibels;
    case unit_Point:
      return points;
    default:
      return {};
  }
}

/// Makes `unit` the percent or dB unit of linear or logarithmic amplitudes; `unit` is new or has
/// served before.
void SetPercent(CUnit& unit, int linear, CUnit* base) {
  unit.CUpdateUnit(unit_Percent,
                   unit_DataPercent,
                   linear ? unit_ConversionLinear : unit_ConversionPercent,
                   1.0,
                   0.0,
                   base);
}
void SetDecibel(CUnit& unit, int linear, CUnit* base) {
  if (linear)
    unit.CUpdateUnit(unit_Decibel, unit_DataDecibel, unit_ConversionDecibel, 1.0, 0.0, base);
  else
    unit.CUpdateUnit(unit_Decibel, unit_DataDecibel, 1.0, 0.0, 0.0, base);
}

}  // namespace

vset_groupId::vset_groupId() = default;
vset_groupId::vset_groupId(std::uint32_t newKind,
                           std::uint32_t firstValue,
                           std::uint32_t secondValue,
                           std::uint32_t thirdValue,
                           std::uint32_t fourthValue)
    : kind(newKind),
      first(firstValue),
      second(secondValue),
      third(thirdValue),
      fourth(fourthValue) {}
vset_groupId::vset_groupId(const vset_groupId&) = default;
vset_groupId& vset_groupId::operator=(const vset_groupId&) = default;
vset_groupId::~vset_groupId() { kind = first = second = third = fourth = 0; }

CUnitSet::CUnitSet() = default;

CUnitSet::CUnitSet(const vset_groupId& identity, CVolumeSet* volumeSet, CUnitSet*)
    : m_identity(identity), m_volumeSet(volumeSet) {
  for (std::size_t axis = 0; axis < m_units.size(); ++axis)
    m_units[axis] = std::make_unique<CList<CUnit*>>(usualQuantity[axis]);
}

CUnitSet::~CUnitSet() = default;

const vset_groupId& CUnitSet::GetIdentity() const { return m_identity; }
std::int32_t CUnitSet::GetReferenceCount() const { return m_referenceCount; }

CUnit* CUnitSet::BaseUnit(kvt_enumAxis axis) const {
  return m_volumeSet ? m_volumeSet->vol_GetBaseUnit(axis) : nullptr;
}

const CList<CUnit*>* CUnitSet::GetUnits(kvt_enumAxis axis) const {
  return axis < axisQuantity ? m_units[axis].get() : nullptr;
}

CUnit* CUnitSet::AppendUnit(kvt_enumAxis axis, std::unique_ptr<CUnit> unit) {
  const bool hasAxis = axis < axisQuantity && m_units[axis];
  UTDATA_ASSERT(hasAxis);
  if (!hasAxis || !unit) return nullptr;
  try {
    m_units[axis]->Reserve(1);
    CUnit* const appended = m_given.emplace_back(std::move(unit)).get();
    m_units[axis]->AddTail(appended);
    return appended;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

/// Adds what `make` makes in m_made, all or, without memory, nothing. REQUIRES: the set has the
/// axis. @return the first unit made; null without memory
template <class Make>
CUnit* CUnitSet::AddMade(kvt_enumAxis axis, std::size_t quantity, Make make) {
  const std::size_t before = m_made.size();
  try {
    m_units[axis]->Reserve(static_cast<std::ptrdiff_t>(quantity));
    make();
  } catch (const std::bad_alloc&) {
    while (m_made.size() > before) m_made.pop_back();
    return nullptr;
  }
  for (std::size_t index = before; index < m_made.size(); ++index)
    m_units[axis]->AddTail(&m_made[index]);
  return &m_made[before];
}

CUnit* CUnitSet::AddSubUnit(kvt_enumAxis axis,
                            unit_enumUnits family,
                            double slope,
                            double offset,
                            double auxiliary) {
  const bool hasAxis = axis < axisQuantity && m_units[axis];
  UTDATA_ASSERT(hasAxis);
  if (!hasAxis) return nullptr;
  const std::span<const ScaledUnit> units = UnitsOfFamily(family);
  UTDATA_ASSERT(!units.empty() && family != unit_Percent && family != unit_Decibel);
  CUnit* const base = BaseUnit(axis);
  if (units.empty()) return nullptr;
  return AddMade(axis, units.size(), [&] {
    for (const auto& [dataUnit, scale, squareScale] : units) {
      const double scaledSlope = scale * slope;
      const double scaledOffset = scale * offset;
      if (family == unit_TofdDepth)
        m_made.emplace_back(family, dataUnit, initialTofdSlope, scaledSlope, scaledOffset, base);
      else if (family == unit_Decibel)
        m_made.emplace_back(family, dataUnit, slope, offset, auxiliary, base);
      else
        m_made.emplace_back(
            family, dataUnit, unit_ConversionLinear, scaledSlope, scaledOffset, base);
    }
  });
}

CUnit* CUnitSet::AddAmplitudeSubUnit(int linear) { return SetAmplitudes(linear, nullptr, nullptr); }

CUnit* CUnitSet::FindLast(kvt_enumAxis axis, unit_enumUnits family) const {
  CUnit* found = nullptr;
  if (const CList<CUnit*>* list = GetUnits(axis)) {
    for (CUnit* unit : *list) {
      unit_enumUnits unitFamily;
      unit_enumDataUnit dataUnit;
      unit->GetUnitType(unitFamily, dataUnit);
      if (unitFamily == family) found = unit;
    }
  }
  return found;
}

CUnit* CUnitSet::ModifyAmplitudeSubUnit(int linear) {
  return SetAmplitudes(
      linear, FindLast(kvt_AxisAmplitude, unit_Percent), FindLast(kvt_AxisAmplitude, unit_Decibel));
}

/// Sets the percent and dB units, which are made when they are not there. @return the reference
CUnit* CUnitSet::SetAmplitudes(int linear, CUnit* percent, CUnit* decibel) {
  const bool hasAxis = m_units[kvt_AxisAmplitude] != nullptr;
  UTDATA_ASSERT(hasAxis);
  if (!hasAxis) return nullptr;
  CUnit* const base = BaseUnit(kvt_AxisAmplitude);
  if (!percent || !decibel) {
    const std::size_t before = m_made.size();
    const auto make = [&] {
      if (!percent)
        m_made.emplace_back(unit_Percent, unit_DataPercent, unit_ConversionLinear, 1.0, 0.0, base);
      if (!decibel)
        m_made.emplace_back(unit_Decibel, unit_DataDecibel, unit_ConversionDecibel, 1.0, 0.0, base);
    };
    if (!AddMade(kvt_AxisAmplitude, 2, make)) return nullptr;
    if (!percent) percent = &m_made[before];
    if (!decibel) decibel = &m_made.back();
  }
  SetPercent(*percent, linear, base);
  SetDecibel(*decibel, linear, base);
  return linear ? percent : decibel;
}

void CUnitSet::AdjustSubUnit(kvt_enumAxis axis,
                             unit_enumUnits family,
                             double slope,
                             double offset,
                             double third,
                             double fourth) {
  AdjustSubUnit2(axis, family, slope, slope, offset, third, fourth);
}

void CUnitSet::AdjustSubUnit2(kvt_enumAxis axis,
                              unit_enumUnits family,
                              double positiveSlope,
                              double negativeSlope,
                              double offset,
                              double fourth,
                              double fifth) {
  const bool isKnown = axis < axisQuantity && family >= unit_Time && family <= unit_TofdDepth;
  UTDATA_ASSERT(isKnown);
  if (!isKnown) return;
  for (const auto& [dataUnit, scale, squareScale] : UnitsOfFamily(family)) {
    CUnit* const unit = GetUnit(axis, family, dataUnit);
    if (!unit) continue;
    if (dataUnit == unit_Inch) unit->SetDisplayPrecision(3);
    if (family == unit_TofdDepth)
      unit->SetTOFDFactors(
          scale * fourth, scale * positiveSlope, squareScale * offset, scale * fifth);
    else if (family == unit_Decibel)
      unit->SetDBFactors(positiveSlope, offset, fourth);
    else if (family == unit_Point)
      unit->SetLinearFactors(positiveSlope, negativeSlope, offset);
    else
      unit->SetLinearFactors(scale * positiveSlope, scale * offset);
  }
}

CUnit* CUnitSet::GetUnit(kvt_enumAxis axis,
                         unit_enumUnits family,
                         unit_enumDataUnit dataUnit) const {
  if (const CList<CUnit*>* list = GetUnits(axis)) {
    for (CUnit* unit : *list) {
      unit_enumUnits unitFamily;
      unit_enumDataUnit unitData;
      unit->GetUnitType(unitFamily, unitData);
      if (unitFamily == family && unitData == dataUnit) return unit;
    }
  }
  return nullptr;
}
