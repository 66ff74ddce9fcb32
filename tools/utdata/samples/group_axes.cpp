#include "samples/group_axes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "document/data_group.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "utdata/enum.h"

namespace utdata::program {
namespace {

bool IsPositive(double value) { return std::isfinite(value) && value > 0; }

bool IsUnsigned(const CGDataTypeFDD& group) {
  return group.GetDataType() == kvt_UInt8 || group.GetDataType() == kvt_UInt16;
}

vset_groupId PrivateIdentity(const CGDataTypeFDD& group) {
  return {6,
          static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&group) & 0xFFFFFFFFU),
          0,
          0,
          0};
}

}  // namespace

double ZeroOfSamples(const CGDataTypeFDD& group) {
  const double minimum = group.dataMinimum;
  const double maximum = group.dataMaximum;
  const bool isAScan = enum_IsAscanData(static_cast<gdata_enumDataClass>(PlainClass(group))) != 0;
  const bool isWave =
      isAScan && IsUnsigned(group) && group.GetDataRectification() == gdata_RectifNone;
  return isWave && maximum > minimum ? minimum + (maximum - minimum) / 2 : 0;
}

std::string ShownAxis::Text(double index) const {
  const std::string number = Number(At(index));
  return symbol.empty() || symbol == "°" ? number + symbol : number + " " + symbol;
}

std::string ShownAxis::Spacing() const {
  if (quantity == 1 && first == 0) return "1";
  return std::to_string(quantity) + " × " + ShownAxis{symbol, step, 0, 1}.Text(0);
}

std::string ShownAxis::Range() const {
  if (quantity == 0) return "none";
  return quantity == 1 ? Text(0) : Number(At(0)) + " to " + Text(quantity - 1.0);
}

GroupAxes::GroupAxes(Host& host, const CGDataTypeFDD& group)
    : m_volume(*host.GetVolumeSet()),
      m_group(group),
      m_zero(ZeroOfSamples(group)),
      m_units(m_volume.vol_CreateUnitSet(PrivateIdentity(group), nullptr)) {
  AddScanUnits(kvt_AxisColumn);
  AddScanUnits(kvt_AxisRow);
  AddSampleUnits();
  AddAmplitudeUnits();
}

GroupAxes::~GroupAxes() { m_volume.vol_DeleteUnitSet(&m_units); }

void GroupAxes::AddScanUnits(kvt_enumAxis axis) {
  m_units->AddSubUnit(axis, unit_Length, 1, 0, 0);
  m_units->AddSubUnit(axis, unit_Angle, 1, 0, 0);
}

void GroupAxes::AddSampleUnits() {
  if (m_group.sampleUnits == kvt_UnitSecond && IsPositive(m_group.soundSpeed))
    m_basePerSecond = static_cast<double>(m_group.soundSpeed) / 2;
  m_units->AddSubUnit(kvt_AxisSample, unit_Time, 1 / m_basePerSecond, 0, 0);
  m_units->AddSubUnit(kvt_AxisSample, unit_HalfPath, 1, 0, 0);
  m_units->AddSubUnit(kvt_AxisSample, unit_Angle, 1, 0, 0);
}

void GroupAxes::AddAmplitudeUnits() {
  const double minimum = m_group.dataMinimum;
  const double maximum = m_group.dataMaximum;
  double positive = maximum;
  double negative = minimum < 0 ? -minimum : maximum;
  if (m_zero != 0) positive = negative = maximum - m_zero;
  m_units->AddAmplitudeSubUnit(1);
  if (!IsPositive(positive) || !IsPositive(negative)) return;
  m_units->AddSubUnit(kvt_AxisAmplitude, unit_Point, 1, 0, 0);
  m_units->AdjustSubUnit2(kvt_AxisAmplitude, unit_Point, positive / 100, negative / 100, 0, 0, 0);
}

ShownAxis GroupAxes::Shown(const CUnit* unit,
                           double base,
                           double baseStep,
                           std::uint32_t quantity) const {
  ShownAxis axis;
  axis.quantity = quantity;
  if (!unit) return axis;
  const double first = unit->ConvertFromBase(base);
  const double step = unit->ConvertFromBase(base + baseStep) - first;
  if (!std::isfinite(first) || !std::isfinite(step) || step == 0) return axis;
  axis.symbol = ToUtf8(unit->GetSymbol());
  axis.first = first;
  axis.step = unit->ConvertFromBase(baseStep) - unit->ConvertFromBase(0);
  return axis;
}

const CUnit* GroupAxes::ScanUnit(kvt_enumAxis axis, kvt_enumUnits units) const {
  if (units == kvt_UnitMetre) return m_units->GetUnit(axis, unit_Length, unit_Millimetre);
  if (units == kvt_UnitDegree) return m_units->GetUnit(axis, unit_Angle, unit_Degree);
  return nullptr;
}

ShownAxis GroupAxes::Columns() const {
  return Shown(ScanUnit(kvt_AxisColumn, m_group.columnUnits),
               m_group.columnOffset,
               m_group.columnResolution,
               m_group.columnQuantity);
}

ShownAxis GroupAxes::Rows() const {
  return Shown(ScanUnit(kvt_AxisRow, m_group.rowUnits),
               m_group.rowOffset,
               m_group.rowResolution,
               m_group.rowQuantity);
}

ShownAxis GroupAxes::Samples() const {
  return OnUltrasoundAxis(
      NaturalUnit(), m_group.sampleOffset, m_group.sampleResolution, m_group.sampleQuantity);
}

std::optional<ShownAxis> GroupAxes::HalfPath() const {
  return OnHalfPath(m_group.sampleOffset, m_group.sampleResolution, m_group.sampleQuantity);
}

ShownAxis GroupAxes::Positions() const {
  return OnUltrasoundAxis(NaturalUnit(), m_group.dataOffset, m_group.dataResolution, 1);
}

std::optional<ShownAxis> GroupAxes::PositionsOnHalfPath() const {
  return OnHalfPath(m_group.dataOffset, m_group.dataResolution, 1);
}

const CUnit* GroupAxes::NaturalUnit() const {
  if (m_group.sampleUnits == kvt_UnitSecond)
    return m_units->GetUnit(kvt_AxisSample, unit_Time, unit_Microsecond);
  if (m_group.sampleUnits == kvt_UnitMetre)
    return m_units->GetUnit(kvt_AxisSample, unit_HalfPath, unit_Millimetre);
  if (m_group.sampleUnits == kvt_UnitDegree)
    return m_units->GetUnit(kvt_AxisSample, unit_Angle, unit_Degree);
  return nullptr;
}

ShownAxis GroupAxes::OnUltrasoundAxis(const CUnit* unit,
                                      double offset,
                                      double step,
                                      std::uint32_t quantity) const {
  return Shown(unit, offset * m_basePerSecond, step * m_basePerSecond, quantity);
}

std::optional<ShownAxis> GroupAxes::OnHalfPath(double offset,
                                               double step,
                                               std::uint32_t quantity) const {
  if (m_group.sampleUnits != kvt_UnitSecond || !IsPositive(m_group.soundSpeed)) return std::nullopt;
  const ShownAxis axis = OnUltrasoundAxis(
      m_units->GetUnit(kvt_AxisSample, unit_HalfPath, unit_Millimetre), offset, step, quantity);
  return axis.symbol.empty() ? std::nullopt : std::optional(axis);
}

double GroupAxes::Percent(double value) const {
  const CUnit* points = m_units->GetUnit(kvt_AxisAmplitude, unit_Point, unit_DataPoint);
  return points ? points->ConvertToBase(value - m_zero) : std::nan("");
}

double GroupAxes::Decibels(double percent) const {
  return m_units->GetUnit(kvt_AxisAmplitude, unit_Decibel, unit_DataDecibel)
      ->ConvertFromBase(std::abs(percent));
}

double GroupAxes::PercentOfDecibels(double decibels) const {
  return m_units->GetUnit(kvt_AxisAmplitude, unit_Decibel, unit_DataDecibel)
      ->ConvertToBase(decibels);
}

std::string GroupAxes::DecibelText(double percent) const {
  return ToUtf8(m_units->GetUnit(kvt_AxisAmplitude, unit_Decibel, unit_DataDecibel)
                    ->FormatValue(Decibels(percent)));
}

std::string GroupAxes::PercentText(double percent) const {
  return ToUtf8(
      m_units->GetUnit(kvt_AxisAmplitude, unit_Percent, unit_DataPercent)->FormatValue(percent));
}

std::string GroupAxes::AmplitudeRange() const {
  const double low = Percent(m_group.dataMinimum);
  const double high = Percent(m_group.dataMaximum);
  const double smallest =
      std::abs(Percent(m_zero == std::floor(m_zero) ? m_zero + 1 : m_zero + 0.5));
  if (!std::isfinite(low) || !std::isfinite(high) || smallest > 100) return "no scale";
  const double largest = std::max(std::abs(low), std::abs(high));
  return Number(low) + " to " + utdata::program::Percent(high) + ", " +
         Number(std::round(Decibels(smallest) * 10) / 10) + " to " + DecibelText(largest);
}

}  // namespace utdata::program
