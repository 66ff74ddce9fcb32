#include "utdata/unit.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

IMPLEMENT_DYNAMIC(CUnit, CObject)

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

CUnit::CUnit() {
  SetParameters(unit_Generic,
                unit_DataGeneric,
                unit_ConversionNone,
                1,
                1,
                0,
                nullptr,
                0,
                0,
                0,
                0,
                DisplayFormat::None);
}

CUnit::CUnit(unit_enumUnits family,
             unit_enumDataUnit dataUnit,
             unit_enumConversionType conversion,
             double slope,
             double offset,
             CUnit* parent) {
  SetParameters(family,
                dataUnit,
                conversion,
                slope,
                slope,
                offset,
                parent,
                1,
                0,
                0,
                0,
                DisplayFormat::Initial);
  ValidateObjectState();
}

CUnit::CUnit(unit_enumUnits family,
             unit_enumDataUnit dataUnit,
             double slope,
             double offset,
             double auxiliary,
             CUnit* parent) {
  SetParameters(family,
                dataUnit,
                unit_ConversionFactors,
                slope,
                slope,
                offset,
                parent,
                1,
                0,
                0,
                auxiliary,
                DisplayFormat::Initial);
  ValidateObjectState();
}

CUnit::CUnit(const CUnit& other) : CObject(other) {
  SetParameters(other.m_family,
                other.m_dataUnit,
                other.m_conversion,
                other.m_positiveSlope,
                other.m_negativeSlope,
                other.m_offset,
                other.m_parent,
                other.m_precision,
                other.m_depthOffset,
                other.m_pathOffset,
                other.m_auxiliary,
                other.m_displayFormat);
  ValidateObjectState();
}

CUnit::~CUnit() = default;

void CUnit::SetParameters(unit_enumUnits family,
                          unit_enumDataUnit dataUnit,
                          unit_enumConversionType conversion,
                          double positiveSlope,
                          double negativeSlope,
                          double offset,
                          CUnit* parent,
                          std::int32_t precision,
                          double depthOffset,
                          double pathOffset,
                          double auxiliary,
                          DisplayFormat displayFormat) {
  m_family = family;
  m_dataUnit = dataUnit;
  m_conversion = conversion;
  m_positiveSlope = positiveSlope;
  m_negativeSlope = negativeSlope;
  m_offset = offset;
  m_parent = parent;
  m_precision = precision;
  m_depthOffset = depthOffset;
  m_pathOffset = pathOffset;
  m_auxiliary = auxiliary;
  m_displayFormat = displayFormat;
  m_tag = TagOf(this);
}

void CUnit::CUpdateUnit(unit_enumUnits family,
                        unit_enumDataUnit dataUnit,
                        unit_enumConversionType conversion,
                        double slope,
                        double offset,
                        CUnit* parent) {
  SetParameters(family,
                dataUnit,
                conversion,
                slope,
                slope,
                offset,
                parent,
                m_precision,
                m_depthOffset,
                m_pathOffset,
                m_auxiliary,
                m_displayFormat);
  ValidateObjectState();
}

void CUnit::CUpdateUnit(unit_enumUnits family,
                        unit_enumDataUnit dataUnit,
                        double slope,
                        double offset,
                        double auxiliary,
                        CUnit* parent) {
  SetParameters(family,
                dataUnit,
                unit_ConversionFactors,
                slope,
                slope,
                offset,
                parent,
                m_precision,
                m_depthOffset,
                m_pathOffset,
                auxiliary,
                m_displayFormat);
  ValidateObjectState();
}

void CUnit::SetLinearFactors(double slope, double offset) {
  SetLinearFactors(slope, slope, offset);
}

void CUnit::SetLinearFactors(double positiveSlope, double negativeSlope, double offset) {
  UTDATA_ASSERT(positiveSlope > 0 && negativeSlope > 0);
  if (positiveSlope == m_positiveSlope && negativeSlope == m_negativeSlope && offset == m_offset)
    return;
  m_positiveSlope = positiveSlope;
  m_negativeSlope = negativeSlope;
  m_offset = offset;
  ValidateObjectState();
}

void CUnit::SetDBFactors(double slope, double offset, double auxiliary) {
  UTDATA_ASSERT(slope > 0);
  m_positiveSlope = m_negativeSlope = slope;
  m_offset = offset;
  m_auxiliary = auxiliary;
  ValidateObjectState();
}

void CUnit::SetTOFDFactors(double depthOffset,
                           double slope,
                           double rootConstant,
                           double pathOffset) {
  m_conversion = unit_ConversionTofd;
  m_positiveSlope = m_negativeSlope = slope;
  m_offset = rootConstant;
  m_depthOffset = depthOffset;
  m_pathOffset = pathOffset;
  ValidateObjectState();
}

void CUnit::SetDisplayPrecision(int digits) {
  UTDATA_ASSERT(digits >= 0 && digits <= maxPrecision);
  if (digits != m_precision) {
    m_precision = digits;
    m_displayFormat = DisplayFormat::Precise;
  }
  ValidateObjectState();
}

std::wstring CUnit::GetDisplayFormat() const {
  if (m_displayFormat == DisplayFormat::Precise)
    return L"%-12." + std::to_wstring(m_precision) + L"f";
  return m_displayFormat == DisplayFormat::Initial ? L"%.1f" : L"";
}

void CUnit::GetUnitType(unit_enumUnits& family, unit_enumDataUnit& dataUnit) const {
  family = m_family;
  dataUnit = m_dataUnit;
  ValidateObjectState();
}

double CUnit::TofdToBase(double displayed) const {
  UTDATA_ASSERT(m_positiveSlope != 0);
  if (m_positiveSlope == 0) return 0;
  const double depth = displayed - m_depthOffset;
  const double square = depth < 0 ? m_offset - depth * depth : m_offset + depth * depth;
  return (m_pathOffset + std::sqrt(std::fabs(square))) / m_positiveSlope;
}

double CUnit::ConvertToBase(const double& displayed) const {
  if (!m_parent) return displayed;
  switch (m_conversion) {
    case unit_ConversionLinear:
    case unit_ConversionFactors:
      return (displayed - m_offset) / (displayed >= 0 ? m_positiveSlope : m_negativeSlope);
    case unit_ConversionTofd:
      return TofdToBase(displayed);
    case unit_ConversionDecibel:
      return 100 * std::pow(10, -std::fabs(displayed) / 20);
    case unit_ConversionPercent:
      return PercentToBase(displayed);
    case unit_ConversionNone:
      break;
  }
  UTDATA_ASSERT(m_positiveSlope != 0);
  return m_positiveSlope == 0 ? 0 : (displayed - m_offset) / m_positiveSlope;
}

double CUnit::LinearFromBase(double base) const {
  const double above = base * m_positiveSlope + m_offset;
  if (above >= 0) return above;
  const double below = base * m_negativeSlope + m_offset;
  return below >= 0 ? 0 : below;  // NaN passes through
}

double CUnit::TofdFromBase(double base) const {
  const double root = base * m_positiveSlope - m_pathOffset;
  if (root < 0) return notANumber;
  // The base grows with the depth from -sqrt(offset) on; below that it falls again.
  const double square = root * root - m_offset;
  return m_depthOffset + (square < 0 ? -std::sqrt(-square) : std::sqrt(square));
}

double CUnit::ConvertFromBase(const double& base) const {
  if (!m_parent || std::isnan(base)) return base;
  switch (m_conversion) {
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
  UTDATA_ASSERT(m_positiveSlope != 0);
  if (m_positiveSlope == 0) return 0;
  return m_conversion == unit_ConversionTofd ? TofdFromBase(base)
                                             : base * m_positiveSlope + m_offset;
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
  return m_dataUnit < std::size(symbols) ? symbols[m_dataUnit] : L"";
}

std::wstring CUnit::FormatValue(double displayed) const {
  std::wstring text;
  if (std::isnan(displayed)) {
    text = L"---";
  } else {
    char digits[std::numeric_limits<double>::max_exponent10 + maxPrecision + 4];
    const int precision = std::clamp<int>(m_precision, 0, maxPrecision);
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
  if (!symbol.empty() && m_dataUnit != unit_Degree) text += L' ';
  return text + symbol;
}

void CUnit::ValidateObjectState() const {
  UTDATA_ASSERT(m_tag == TagOf(this));
  UTDATA_ASSERT(m_precision >= 0 && m_precision <= maxPrecision);
  UTDATA_ASSERT(m_positiveSlope > 0);
  UTDATA_ASSERT(m_negativeSlope > 0);
  UTDATA_ASSERT(m_conversion >= unit_ConversionLinear && m_conversion <= unit_ConversionPercent);
  UTDATA_ASSERT(m_family <= unit_Reserved16);
  UTDATA_ASSERT(m_dataUnit <= unit_DataScaled);
}
