// The axes of a data group in everyday units, and what one position reads, through its item's
// units.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "src/foundation/dataclass.h"
#include "src/inspection/state.h"
#include "src/inspection/tofdpair.h"
#include "utdata/dac.h"
#include "utdata/readout.h"
#include "utdata/samples.h"

namespace utdata {
namespace {

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

bool IsUsable(double step) { return std::isfinite(step) && step != 0; }

/// A position along an axis: base value at index 0, and from one index to the next.
struct BaseAxis {
  double first = 0;
  double step = 0;
};

AxisScale Shown(const CUnit* unit,
                const BaseAxis& base,
                std::uint32_t quantity,
                double factor = 1) {
  AxisScale axis;
  axis.quantity = quantity;
  if (!unit) return axis;
  const double first = unit->ConvertFromBase(base.first * factor);
  const double step = unit->ConvertFromBase(base.step * factor) - unit->ConvertFromBase(0);
  if (!std::isfinite(first) || !IsUsable(step)) return axis;
  return {ToUtf8(unit->GetSymbol()), first, step, quantity};
}

struct Family {
  unit_enumUnits family = unit_Generic;
  unit_enumDataUnit unit = unit_DataGeneric;
};

Family ScanFamily(kvt_enumUnits units) {
  if (units == kvt_UnitMetre) return {unit_Length, unit_Millimetre};
  if (units == kvt_UnitDegree) return {unit_Angle, unit_Degree};
  return {};
}

AxisScale ScanAxis(const CIData& item,
                   kvt_enumAxis axis,
                   kvt_enumUnits units,
                   float storedStep,
                   const BaseAxis& base,
                   std::uint32_t quantity) {
  const Family family = ScanFamily(units);
  const bool hasUnit = family.family != unit_Generic && IsUsable(double{storedStep});
  return Shown(
      hasUnit ? item.idata3_GetUnit(axis, family.family, family.unit) : nullptr, base, quantity);
}

/// Where the samples of a data group, or the values of a position C-scan, lie on its sample axis:
/// in base units, which are metres of one-way path where they count time.
class SampleAxis {
 public:
  explicit SampleAxis(const DataGroup& group)
      : m_item(group.Item()), m_descriptor(group.Descriptor()) {
    const CGDataTypeFDD& stored = group.Stored();
    m_isTime = m_descriptor.sampleUnits == kvt_UnitSecond;
    m_isUsable =
        IsUsable(double{group.HoldsPositions() ? stored.dataResolution : stored.sampleResolution});
    const bool hasSpeed = std::isfinite(stored.soundSpeed) && stored.soundSpeed > 0;
    m_hasPath =
        m_isTime && m_isUsable && (hasSpeed || group.Taken().soundSpeed != m_descriptor.soundSpeed);
    const double pathPerUnit = m_isTime ? m_descriptor.GetSoundSpeed() / 2 : 1;
    // The descriptor of a C-scan has a sample axis of its own, that of its values.
    const CGDataTypeFDD& record = *m_item.idata1_GetGInfoRef();
    const bool isOfValues = group.HoldsPositions();
    m_base = {
        (isOfValues ? m_descriptor.GetDataOffs() : double{record.sampleOffset}) * pathPerUnit,
        (isOfValues ? m_descriptor.GetDataResol() : double{record.sampleResolution}) * pathPerUnit};
    m_quantity = isOfValues ? 1 : group.SampleQuantity();
  }

  [[nodiscard]] AxisScale Natural() const {
    const Family family = m_isTime ? Family{unit_Time, unit_Microsecond}
                          : m_descriptor.sampleUnits == kvt_UnitMetre
                              ? Family{unit_HalfPath, unit_Millimetre}
                              : Family{unit_Angle, unit_Degree};
    return Shown(m_isUsable ? Unit(family.family, family.unit) : nullptr, m_base, m_quantity);
  }

  [[nodiscard]] std::optional<AxisScale> HalfPath(double factor) const {
    if (!m_hasPath) return std::nullopt;
    AxisScale axis = Shown(Unit(unit_HalfPath, unit_Millimetre), m_base, m_quantity, factor);
    return axis.symbol.empty() ? std::nullopt : std::optional(std::move(axis));
  }

  [[nodiscard]] const CUnit* Unit(unit_enumUnits family, unit_enumDataUnit unit) const {
    return m_item.idata3_GetUnit(kvt_AxisSample, family, unit);
  }
  [[nodiscard]] double At(double index) const { return m_base.first + index * m_base.step; }
  [[nodiscard]] bool IsTime() const { return m_isTime && m_isUsable; }
  [[nodiscard]] bool HasPath() const { return m_hasPath; }
  [[nodiscard]] std::uint32_t Quantity() const { return m_quantity; }

 private:
  const CIData& m_item;
  const CRDataTypeDD& m_descriptor;
  bool m_isTime;
  bool m_isUsable;
  bool m_hasPath;  ///< the path of a sample is known
  BaseAxis m_base;
  std::uint32_t m_quantity;
};

/// How much deeper one metre of path leads: the cosine of the refracted angle.
double DepthOfPath(const CIData& item) {
  return std::cos(double{item.idata3_GetProbeAngle()} * std::numbers::pi / 180);
}

const CUnit* DecibelUnit(const CIData& item) {
  return item.idata3_GetUnit(kvt_AxisAmplitude, unit_Decibel, unit_DataDecibel);
}

}  // namespace

IndexRange AxisScale::IndicesBetween(double from, double to) const {
  constexpr double rounding = 1e-6;  // of an index, so that a value given as printed is inside
  if (quantity == 0 || !IsUsable(step)) return {0, 0};
  const auto [low, high] = std::minmax({IndexOf(from), IndexOf(to)});
  const double begin = std::max(std::ceil(low - rounding), 0.0);
  const double last = std::min(std::floor(high + rounding), quantity - 1.0);
  if (!(from <= to) || !(begin <= last)) return {0, 0};
  return {static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(last - begin) + 1};
}

AxisScale DataGroup::Columns() const {
  const CIData& item = Item();
  return ScanAxis(item,
                  kvt_AxisColumn,
                  Stored().columnUnits,
                  Stored().columnResolution,
                  {item.idata3_GetColOffs(), item.idata3_GetColResol()},
                  ColumnQuantity());
}

AxisScale DataGroup::Rows() const {
  const CIData& item = Item();
  return ScanAxis(item,
                  kvt_AxisRow,
                  Stored().rowUnits,
                  Stored().rowResolution,
                  {item.idata3_GetRowOffs(), item.idata3_GetRowResol()},
                  RowQuantity());
}

AxisScale DataGroup::Times() const { return SampleAxis(*this).Natural(); }

std::optional<AxisScale> DataGroup::HalfPaths() const { return SampleAxis(*this).HalfPath(1); }

std::optional<AxisScale> DataGroup::Depths() const {
  return SampleAxis(*this).HalfPath(DepthOfPath(Item()));
}

std::vector<double> DataGroup::TofdDepths() const {
  const SampleAxis samples(*this);
  std::vector<double> depths;
  if (!samples.HasPath() || TofdObstacle(*this)) return depths;
  const CUnit* unit = samples.Unit(unit_TofdDepth, unit_Millimetre);
  for (std::uint32_t sample = 0; sample < samples.Quantity(); ++sample) {
    const double path = samples.At(sample);
    depths.push_back(unit && path >= LateralPath(Item()) ? unit->ConvertFromBase(path) : unknown);
  }
  return depths;
}

double DataGroup::Percent(double value) const {
  const CRDataTypeDD& descriptor = Descriptor();
  const CUnit* points = Item().idata3_GetUnit(kvt_AxisAmplitude, unit_Point, unit_DataPoint);
  return points && descriptor.GetDataMax() > descriptor.GetDataMin() ? points->ConvertToBase(value)
                                                                     : unknown;
}

AmplitudeScale DataGroup::Amplitudes() const { return {Percent(1), -Percent(-1)}; }

double DataGroup::Decibels(double percent) const {
  const CUnit* unit = DecibelUnit(Item());
  return unit ? unit->ConvertFromBase(std::abs(percent)) : unknown;
}

double DataGroup::PercentOfDecibels(double decibels) const {
  const CUnit* unit = DecibelUnit(Item());
  return unit ? unit->ConvertToBase(decibels) : unknown;
}

std::string DataGroup::AmplitudeText(double percent, unit_enumDataUnit unit) const {
  const bool isDecibel = unit == unit_DataDecibel;
  const CUnit* shown =
      Item().idata3_GetUnit(kvt_AxisAmplitude, isDecibel ? unit_Decibel : unit_Percent, unit);
  return shown ? ToUtf8(shown->FormatValue(isDecibel ? Decibels(percent) : percent)) : "---";
}

std::vector<PlacedGate> DataGroup::Gates() const {
  std::vector<PlacedGate> gates;
  const CRDataTypeDD& ascans = Descriptor();
  if (ascans.sampleUnits != kvt_UnitSecond || !IsUsable(double{Stored().sampleResolution}))
    return gates;
  CIGateLst list;
  m_inspection->set.fset_GetIGateLst(&list, fset_All, fset_AnyId, ascans.GetChannelID());
  for (const CIGate* item : list) {
    const CGGateTypeDescr& gate = *item->igate1_GetInfoRef();
    if (gate.enabled == 0) continue;
    const double from = (double{gate.start} - ascans.GetSampleOffs()) / ascans.GetSampleResol();
    gates.push_back({&gate,
                     gate.reference == ggate_RefInitialPulse,
                     from,
                     from + double{gate.width} / ascans.GetSampleResol()});
  }
  return gates;
}

utdata::ReadOut DataGroup::ReadOut(std::uint32_t row,
                                   std::uint32_t column,
                                   std::uint32_t sample) const {
  const CIData& item = Item();
  const utdata::Samples samples = Samples();
  if (row >= RowQuantity() || column >= ColumnQuantity() || sample >= samples.SamplesPerCell())
    throw Error(Name(), "has no such position", "it is outside the data");
  utdata::ReadOut at;
  at.rowIndex = row;
  at.columnIndex = column;
  at.value = samples.Values(std::uint64_t{row} * ColumnQuantity() + column)[sample];
  at.sampleIndex = HoldsPositions() ? at.value : static_cast<double>(sample);
  const auto scan =
      [&](kvt_enumAxis axis, kvt_enumUnits units, const AxisScale& scale, double base) {
        const Family family = ScanFamily(units);
        return scale.symbol.empty() ? AxisValue() : AxisValue(item, axis, family.family, base);
      };
  at.column = scan(kvt_AxisColumn,
                   Stored().columnUnits,
                   Columns(),
                   item.idata3_GetColOffs() + column * item.idata3_GetColResol());
  at.row = scan(kvt_AxisRow,
                Stored().rowUnits,
                Rows(),
                item.idata3_GetRowOffs() + row * item.idata3_GetRowResol());
  const SampleAxis axis(*this);
  const double path = axis.At(at.sampleIndex);
  const bool hasSamples = HasAScans() || HoldsPositions();
  if (hasSamples && axis.IsTime()) at.time = {item, kvt_AxisSample, unit_Time, path};
  if (hasSamples && axis.HasPath()) {
    at.halfPath = {item, kvt_AxisSample, unit_HalfPath, path};
    at.depth = {item, kvt_AxisSample, unit_HalfPath, path * DepthOfPath(item)};
    if (!TofdObstacle(*this) && path >= LateralPath(item))
      at.tofdDepth = {item, kvt_AxisSample, unit_TofdDepth, path};
  }
  at.percent = HoldsPositions() ? unknown : Percent(at.value);
  at.decibels = HoldsPositions() ? unknown : Decibels(at.percent);
  const std::optional<DacCurve> dac = DacOf(*this);
  at.decibelsToDac =
      dac ? dac->DecibelsAt(at.percent, Times().At(sample)).value_or(unknown) : unknown;
  return at;
}

bool AxisValue::IsKnown() const { return m_item != nullptr; }

const CUnit* AxisValue::Unit(unit_enumDataUnit unit) const {
  return m_item ? m_item->idata3_GetUnit(m_axis, m_family, unit) : nullptr;
}

double AxisValue::In(unit_enumDataUnit unit) const {
  const CUnit* known = Unit(unit);
  return known ? known->ConvertFromBase(m_base) : unknown;
}

std::string AxisValue::Text(unit_enumDataUnit unit) const {
  const CUnit* known = Unit(unit);
  return known ? ToUtf8(known->FormatValue(known->ConvertFromBase(m_base))) : "---";
}

}  // namespace utdata
