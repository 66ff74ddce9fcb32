#include "utdata/unit.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

constexpr int maxPrecision = 10;
constexpr double lowestLevel = -80;  ///< dB at which a logarithmic amplitude axis ends
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

std::uint32_t TagOf(const CUnit* unit) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(unit) & 0xFFFFFFFFu);
}

double PercentToBase(double percent) {
  if (percent == 0) return 0;
  const double level = std::max(20 * std::log10(std::fabs(percent) / 100), lowestLevel);
  return 100 + level / 80 * 100;
}

double PercentFromBase(double base) {
  if (base == 0) return 0;
  return base > 0 ? 100 * std::pow(10, (base - 100) / 100 * 80 / 20) : notANumber;
}

double DecibelFromBase(double base) {
  return base >= 0 && base <= 100 ? 20 * std::log10(base / 100) : notANumber;
}

}  // namespace

CUnit::CUnit() { SetParameters({}); }

CUnit::CUnit(unit_enumUnits family,
             unit_enumDataUnit dataUnit,
             unit_enumConversionType conversion,
             double slope,
             double offset,
             CUnit* parent)
    : m_parameters{.displayFormat = DisplayFormat::Initial, .precision = 1} {
  CUpdateUnit(family, dataUnit, conversion, slope, offset, parent);
}

CUnit::CUnit(unit_enumUnits family,
             unit_enumDataUnit dataUnit,
             double slope,
             double offset,
             double auxiliary,
             CUnit* parent)
    : m_parameters{.displayFormat = DisplayFormat::Initial, .precision = 1} {
  CUpdateUnit(family, dataUnit, slope, offset, auxiliary, parent);
}

CUnit::CUnit(const CUnit& other) : CObject(other) {
  SetParameters(other.m_parameters);
  ValidateObjectState();
}

CUnit::~CUnit() = default;

void CUnit::SetParameters(const Parameters& parameters) {
  m_parameters = parameters;
  m_tag = TagOf(this);
}

void CUnit::CUpdateUnit(unit_enumUnits family,
                        unit_enumDataUnit dataUnit,
                        unit_enumConversionType conversion,
                        double slope,
                        double offset,
                        CUnit* parent) {
  Parameters next = m_parameters;
  next.family = family;
  next.dataUnit = dataUnit;
  next.conversion = conversion;
  next.positiveSlope = next.negativeSlope = slope;
  next.offset = offset;
  next.parent = parent;
  SetParameters(next);
  ValidateObjectState();
}

void CUnit::CUpdateUnit(unit_enumUnits family,
                        unit_enumDataUnit dataUnit,
                        double slope,
                        double offset,
                        double auxiliary,
                        CUnit* parent) {
  m_parameters.auxiliary = auxiliary;
  CUpdateUnit(family, dataUnit, unit_ConversionFactors, slope, offset, parent);
}

void CUnit::SetLinearFactors(double slope, double offset) {
  SetLinearFactors(slope, slope, offset);
}

void CUnit::SetLinearFactors(double positiveSlope, double negativeSlope, double offset) {
  UTDATA_ASSERT(positiveSlope > 0 && negativeSlope > 0);
  if (positiveSlope == m_parameters.positiveSlope && negativeSlope == m_parameters.negativeSlope &&
      offset == m_parameters.offset)
    return;
  m_parameters.positiveSlope = positiveSlope;
  m_parameters.negativeSlope = negativeSlope;
  m_parameters.offset = offset;
  ValidateObjectState();
}

void CUnit::SetDBFactors(double slope, double offset, double auxiliary) {
  UTDATA_ASSERT(slope > 0);
  m_parameters.positiveSlope = m_parameters.negativeSlope = slope;
  m_parameters.offset = offset;
  m_parameters.auxiliary = auxiliary;
  ValidateObjectState();
}

void CUnit::SetTOFDFactors(double depthOffset,
                           double slope,
                           double rootConstant,
                           double pathOffset) {
  m_parameters.conversion = unit_ConversionTofd;
  m_parameters.positiveSlope = m_parameters.negativeSlope = slope;
  m_parameters.offset = rootConstant;
  m_parameters.depthOffset = depthOffset;
  m_parameters.pathOffset = pathOffset;
  ValidateObjectState();
}

void CUnit::SetDisplayPrecision(int digits) {
  UTDATA_ASSERT(digits >= 0 && digits <= maxPrecision);
  if (digits != m_parameters.precision) {
    m_parameters.precision = digits;
    m_parameters.displayFormat = DisplayFormat::Precise;
  }
  ValidateObjectState();
}

int CUnit::GetDisplayPrecision() const { return m_parameters.precision; }
CUnit* CUnit::GetParent() const { return m_parameters.parent; }

std::wstring CUnit::GetDisplayFormat() const {
  if (m_parameters.displayFormat == DisplayFormat::Precise)
    return L"%-12." + std::to_wstring(m_parameters.precision) + L"f";
  return m_parameters.displayFormat == DisplayFormat::Initial ? L"%.1f" : L"";
}

void CUnit::GetUnitType(unit_enumUnits& family, unit_enumDataUnit& dataUnit) const {
  family = m_parameters.family;
  dataUnit = m_parameters.dataUnit;
  ValidateObjectState();
}

double CUnit::TofdToBase(double displayed) const {
  UTDATA_ASSERT(m_parameters.positiveSlope != 0);
  if (m_parameters.positiveSlope == 0) return 0;
  const double depth = displayed - m_parameters.depthOffset;
  const double square =
      depth < 0 ? m_parameters.offset - depth * depth : m_parameters.offset + depth * depth;
  return (m_parameters.pathOffset + std::sqrt(std::fabs(square))) / m_parameters.positiveSlope;
}

double CUnit::ConvertToBase(const double& displayed) const {
  if (!m_parameters.parent) return displayed;
  switch (m_parameters.conversion) {
    case unit_ConversionLinear:
    case unit_ConversionFactors:
      return (displayed - m_parameters.offset) /
             (displayed >= 0 ? m_parameters.positiveSlope : m_parameters.negativeSlope);
    case unit_ConversionTofd:
      return TofdToBase(displayed);
    case unit_ConversionDecibel:
      return 100 * std::pow(10, -std::fabs(displayed) / 20);
    case unit_ConversionPercent:
      return PercentToBase(displayed);
    case unit_ConversionNone:
      break;
  }
  UTDATA_ASSERT(m_parameters.positiveSlope != 0);
  return m_parameters.positiveSlope == 0
             ? 0
             : (displayed - m_parameters.offset) / m_parameters.positiveSlope;
}

double CUnit::LinearFromBase(double base) const {
  const double above = base * m_parameters.positiveSlope + m_parameters.offset;
  if (above >= 0) return above;
  const double below = base * m_parameters.negativeSlope + m_parameters.offset;
  return below >= 0 ? 0 : below;  // NaN passes through
}

double CUnit::TofdFromBase(double base) const {
  const double root = base * m_parameters.positiveSlope - m_parameters.pathOffset;
  if (root < 0) return notANumber;
  // The base grows with the depth from -sqrt(offset) on; below that it falls again.
  const double square = root * root - m_parameters.offset;
  return m_parameters.depthOffset + (square < 0 ? -std::sqrt(-square) : std::sqrt(square));
}

double CUnit::ConvertFromBase(const double& base) const {
  if (!m_parameters.parent || std::isnan(base)) return base;
  switch (m_parameters.conversion) {
    case unit_ConversionLinear:
    case unit_ConversionFactors:
      return LinearFromBase(base);
    case unit_ConversionDecibel:
      return DecibelFromBase(base);
    case unit_ConversionPercent:
      return PercentFromBase(base);
    case unit_ConversionTofd:
    case unit_ConversionNone:
      break;
  }
  UTDATA_ASSERT(m_parameters.positiveSlope != 0);
  if (m_parameters.positiveSlope == 0) return 0;
  return m_parameters.conversion == unit_ConversionTofd
             ? TofdFromBase(base)
             : base * m_parameters.positiveSlope + m_parameters.offset;
}

const wchar_t* CUnit::GetSymbol() const {
  static constexpr const wchar_t* symbols[] = {L"",
                                               L"s",
                                               L"\u00b5s",
                                               L"m",
                                               L"mm",
                                               L"in",
                                               L"mil",
                                               L"\u00b0",
                                               L"rad",
                                               L"",
                                               L"%",
                                               L"dB",
                                               L"",
                                               L"",
                                               L""};
  return m_parameters.dataUnit < std::size(symbols) ? symbols[m_parameters.dataUnit] : L"";
}

std::wstring CUnit::FormatValue(double displayed) const {
  std::wstring text;
  if (std::isnan(displayed)) {
    text = L"---";
  } else {
    char digits[std::numeric_limits<double>::max_exponent10 + maxPrecision + 4];
    const int precision = std::clamp<int>(m_parameters.precision, 0, maxPrecision);
    char* const end =
        std::to_chars(
            std::begin(digits), std::end(digits), displayed, std::chars_format::fixed, precision)
            .ptr;
    const bool isNegativeZero = digits[0] == '-' && std::all_of(digits + 1, end, [](char c) {
                                  return c == '0' || c == '.';
                                });
    text.assign(digits + (isNegativeZero ? 1 : 0), end);
  }
  const std::wstring symbol = GetSymbol();
  if (!symbol.empty() && m_parameters.dataUnit != unit_Degree) text += L' ';
  return text + symbol;
}

void CUnit::ValidateObjectState() const {
  UTDATA_ASSERT(m_tag == TagOf(this));
  UTDATA_ASSERT(m_parameters.precision >= 0 && m_parameters.precision <= maxPrecision);
  UTDATA_ASSERT(m_parameters.positiveSlope > 0);
  UTDATA_ASSERT(m_parameters.negativeSlope > 0);
  UTDATA_ASSERT(m_parameters.conversion >= unit_ConversionLinear &&
                m_parameters.conversion <= unit_ConversionPercent);
  UTDATA_ASSERT(m_parameters.family <= unit_Reserved16);
  UTDATA_ASSERT(m_parameters.dataUnit <= unit_DataScaled);
}
