#include "utdata/lut.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "src/descriptor/blockcoder.h"
#include "utdata/error.h"

IMPLEMENT_DYNAMIC(CLookUpTable, CObject)

namespace {

constexpr std::uint32_t byteCodes = 256;
constexpr std::uint32_t wordCodes = 65536;

bool Has(lut_enumConversion conversion, std::uint32_t flag) { return (conversion & flag) != 0; }
bool HasAll(lut_enumConversion conversion, std::uint32_t flags) {
  return (conversion & flags) == flags;
}

signed char RemoveByteOffset(signed char sample) {
  return static_cast<signed char>(static_cast<unsigned char>(sample) ^ 0x80u);
}
short RemoveWordOffset(short sample) {
  return static_cast<short>(static_cast<std::uint16_t>(sample) ^ 0x8000u);
}

/// Whether a sample reaches the maximum, cut to an integer. None reaches one that is beyond its
/// type, or not a number.
bool Reaches(short sample, double maximum) { return sample >= std::trunc(maximum); }

/// Clamped; NaN gives the lower end.
double Clamp(double value, double low, double high) {
  return value >= low ? std::min(value, high) : low;
}

}  // namespace

CLookUpTable::CLookUpTable(const CRDataTypeDD* descriptor, const vset_groupId* identity) {
  if (identity) m_identity = std::make_unique<vset_groupId>(*identity);
  CreateLookUpTable(descriptor);
}

CLookUpTable::~CLookUpTable() = default;

namespace {

template <class Sample>
using Converter = unsigned char (CLookUpTable::*)(Sample) const;

/// Convert is inline in loops over samples, and here for whoever calls it by name.
[[gnu::used]] const struct {
  Converter<char> ofChar = &CLookUpTable::Convert;
  Converter<signed char> ofSignedChar = &CLookUpTable::Convert;
  Converter<unsigned char> ofUnsignedChar = &CLookUpTable::Convert;
  Converter<short> ofShort = &CLookUpTable::Convert;
  Converter<unsigned short> ofUnsignedShort = &CLookUpTable::Convert;
  Converter<int> ofInt = &CLookUpTable::Convert;
  Converter<unsigned int> ofUnsignedInt = &CLookUpTable::Convert;
} converters;

}  // namespace

std::uint32_t CLookUpTable::GetLAB() const { return LAB; }
std::int32_t CLookUpTable::AddRef() { return ++m_referenceCount; }

lut_enumConversion CLookUpTable::GetConversionStyle(const CRDataTypeDD* descriptor) {
  std::uint32_t style = 0;
  const kvt_enumDataType type = descriptor->GetDataType();
  const std::uint32_t options = descriptor->GetFileFormat();
  if (type == kvt_Int8 || type == kvt_UInt8) {
    style |= (type == kvt_Int8 ? lut_SignedByte : lut_UnsignedByte) | lut_IgnoreErrorCodes;
  } else {
    if (type == kvt_Int16) style |= lut_SignedWord;
    if (type == kvt_UInt16) style |= lut_UnsignedWord;
    if (descriptor->IsSwapNeeded()) style |= lut_SwapData;
    const gdata_enumDataClass dataClass = descriptor->GetDataClass();
    if ((options & gdata_OptionCompressed) != 0 && descriptor->GetGroupVersionNumber() == 1 &&
        (dataClass == gdata_AScan || dataClass == gdata_AScanMerged))
      style |= lut_RemoveSVcompression;
  }
  if ((options & gdata_OptionOffsetBinary) != 0 &&
      descriptor->GetDataRectification() == gdata_RectifNone)
    style |= lut_RemoveOffset;
  return static_cast<lut_enumConversion>(style);
}

void CLookUpTable::CreateLookUpTable(const CRDataTypeDD* descriptor) {
  m_conversion = GetConversionStyle(descriptor) & lut_TableMask;
  m_minimum = descriptor->GetDataMin();
  m_maximum = descriptor->GetDataMax();
  m_dataScale = descriptor->GetDataScale();
  m_dataType = descriptor->GetDataType();
  const auto conversion = static_cast<lut_enumConversion>(m_conversion);
  if (m_dataType == kvt_Int8 || m_dataType == kvt_UInt8) {
    m_codeQuantity = byteCodes;
    m_table = std::make_unique<unsigned char[]>(byteCodes);
    for (std::uint32_t raw = 0; raw < byteCodes; ++raw)
      m_table[raw] = m_dataType == kvt_Int8
                         ? GetCorrectedValue(static_cast<char>(raw), conversion)
                         : GetCorrectedValue(static_cast<unsigned char>(raw), conversion);
    m_block = std::make_unique<utdata::BlockCoder>(m_dataType, conversion, m_table.get(), 0);
  } else if (m_dataType == kvt_Int16 || m_dataType == kvt_UInt16) {
    m_codeQuantity = wordCodes;
    m_table = std::make_unique<unsigned char[]>(wordCodes);
    FillWords(descriptor->GetDataRectification() == gdata_RectifNone);
  }
}

void CLookUpTable::FillWords(bool isCentred) {
  const auto conversion = static_cast<lut_enumConversion>(m_conversion);
  for (std::uint32_t raw = 0; raw < wordCodes; ++raw)
    m_table[raw] =
        m_dataType == kvt_Int16
            ? GetCorrectedValue(static_cast<short>(raw), m_minimum, m_maximum, LAB, conversion)
            : GetCorrectedValue(static_cast<unsigned short>(raw),
                                m_minimum,
                                m_maximum,
                                LAB,
                                conversion,
                                isCentred ? 1 : 0);
  const double codesPerSample = 255 * static_cast<double>(LAB) / (m_maximum - m_minimum);
  m_block =
      std::make_unique<utdata::BlockCoder>(m_dataType, conversion, m_table.get(), codesPerSample);
}

const unsigned char* CLookUpTable::RemapLUT(const CRDataTypeDD* descriptor, std::uint32_t lab) {
  const double minimum = descriptor->GetDataMin();
  const double maximum = descriptor->GetDataMax();
  if (minimum == m_minimum && maximum == m_maximum && lab == LAB) return m_table.get();
  LAB = lab;
  if (m_codeQuantity == wordCodes) {
    m_minimum = minimum;
    m_maximum = maximum;
    FillWords(descriptor->GetDataRectification() == gdata_RectifNone);
  }
  return m_table.get();
}

std::int32_t CLookUpTable::Release() {
  const std::int32_t left = --m_referenceCount;
  if (left == 0) delete this;
  return left;
}

int CLookUpTable::Compare(const CRDataTypeDD* descriptor, const vset_groupId* identity) const {
  if ((GetConversionStyle(descriptor) & lut_TableMask) != m_conversion) return 0;
  if (descriptor->GetDataMin() != m_minimum || descriptor->GetDataMax() != m_maximum) return 0;
  if (static_cast<std::uint32_t>(descriptor->GetDataScale()) != m_dataScale) return 0;
  if (!identity || !m_identity) return !identity && !m_identity ? 1 : 0;
  if (identity->kind != m_identity->kind) return 0;
  switch (identity->kind) {
    case 1:
      return 1;
    case 3:
      return identity->first == m_identity->first ? 1 : 0;
    case 5:
      return identity->first == m_identity->first && identity->second == m_identity->second ? 1 : 0;
    default:
      return 0;
  }
}

// -------------------------------------------------------------------------------------------------
// raw sample to code

unsigned char CLookUpTable::GetCorrectedValue(char sample, lut_enumConversion conv) {
  if (!((conv & lut_SwapData) == 0 && (conv & lut_RemoveSVcompression) == 0))
    err_Assert(
        "(conv & lut_SwapData) == 0 &&(conv & lut_RemoveSVcompression) == 0", __FILE__, __LINE__);
  auto value = static_cast<signed char>(sample);
  if (Has(conv, lut_RemoveOffset)) value = RemoveByteOffset(value);
  if (Has(conv, lut_IgnoreErrorCodes)) value = IgnoreErrorCodes(value);
  return Rectify(value, conv);
}

unsigned char CLookUpTable::GetCorrectedValue(unsigned char sample, lut_enumConversion conv) {
  if (Has(conv, lut_RectifyBipolar | lut_SwapData | lut_RemoveSVcompression))
    err_Assert(
        "(conv & lut_RectifyBipolar ) == 0 && (conv & lut_RectifyPos ) == 0 && (conv & "
        "lut_RectifyNeg ) == 0 && "
        "(conv & lut_SwapData ) == 0 && (conv & lut_RemoveSVcompression) == 0",
        __FILE__,
        __LINE__);
  return Has(conv, lut_IgnoreErrorCodes) ? IgnoreErrorCodes(sample) : sample;
}

unsigned char CLookUpTable::GetCorrectedValue(short sample,
                                              double minimum,
                                              double maximum,
                                              std::uint32_t factor,
                                              lut_enumConversion conv) {
  if (Has(conv, lut_SwapData))
    sample = static_cast<short>(SwapData(static_cast<std::uint16_t>(sample)));
  if (Has(conv, lut_RemoveSVcompression)) sample = RemoveSVcompression(sample);
  if (Has(conv, lut_RemoveOffset)) sample = RemoveWordOffset(sample);
  if (Has(conv, lut_IgnoreErrorCodes)) sample = IgnoreErrorCodes(sample);
  return Rectify(CompressData(sample, minimum, maximum, factor), conv);
}

unsigned char CLookUpTable::GetCorrectedValue(unsigned short sample,
                                              double minimum,
                                              double maximum,
                                              std::uint32_t factor,
                                              lut_enumConversion conv,
                                              int isCentred) {
  if (Has(conv, lut_SwapData)) sample = SwapData(sample);
  if (Has(conv, lut_RemoveSVcompression)) sample = RemoveSVcompression(sample);
  if (Has(conv, lut_IgnoreErrorCodes)) sample = IgnoreErrorCodes(sample);
  return CompressData(sample, minimum, maximum, factor, isCentred);
}

signed char CLookUpTable::CompressData(short sample,
                                       double minimum,
                                       double maximum,
                                       std::uint32_t factor) {
  if (Reaches(sample, maximum)) return 127;
  const double x = static_cast<double>(sample) * factor;
  if (x > maximum) return 127;
  if (minimum > x) return -128;
  return static_cast<signed char>(
      Clamp(255 * (x - minimum) / (maximum - minimum) - 128, -128.0, 127.0));
}

unsigned char CLookUpTable::CompressData(unsigned short sample,
                                         double minimum,
                                         double maximum,
                                         std::uint32_t factor,
                                         int isCentred) {
  double x = static_cast<double>(sample) * factor;
  if (isCentred) {
    const double half = (maximum - minimum) / 2;
    x = (sample - half) * factor + half;
  }
  return static_cast<unsigned char>(Clamp(255 * (x - minimum) / (maximum - minimum), 0.0, 255.0));
}

signed char CLookUpTable::IgnoreErrorCodes(signed char sample) {
  return sample >= 0 && sample < 3 ? 3 : sample;
}
unsigned char CLookUpTable::IgnoreErrorCodes(unsigned char sample) {
  return std::max<unsigned char>(sample, 3);
}
short CLookUpTable::IgnoreErrorCodes(short sample) {
  return sample >= 0 && sample < 3 ? 3 : sample;
}
unsigned short CLookUpTable::IgnoreErrorCodes(unsigned short sample) {
  return std::max<unsigned short>(sample, 3);
}

unsigned char CLookUpTable::Rectify(signed char amplitude, lut_enumConversion conversion) {
  if (HasAll(conversion, lut_RectifyBipolar)) return RectifyBipolar(amplitude);
  if (Has(conversion, lut_RectifyPos)) return RectifyPos(amplitude);
  if (Has(conversion, lut_RectifyNeg)) return RectifyNeg(amplitude);
  return RectifySC(amplitude);
}

unsigned char CLookUpTable::RectifySC(signed char amplitude) {
  return static_cast<unsigned char>(amplitude >= 0 ? 2 * amplitude : -2 * amplitude - 1);
}

signed char CLookUpTable::UnRectifySC(unsigned char code) {
  return static_cast<signed char>(code % 2 ? -((code + 1) / 2) : code / 2);
}

unsigned char CLookUpTable::RectifyBipolar(signed char amplitude) {
  if (amplitude == -1 || amplitude == -2) return 3;
  return static_cast<unsigned char>(std::abs(static_cast<int>(amplitude)));
}

unsigned char CLookUpTable::RectifyPos(signed char amplitude) {
  return static_cast<unsigned char>(std::max<int>(amplitude, 0));
}

unsigned char CLookUpTable::RectifyNeg(signed char amplitude) {
  if (amplitude == -1 || amplitude == -2) return 3;
  if (amplitude < 0) return static_cast<unsigned char>(-static_cast<int>(amplitude));
  return static_cast<unsigned char>(amplitude < 3 ? amplitude : 0);
}

std::uint16_t CLookUpTable::SwapData(std::uint16_t sample) {
  return static_cast<std::uint16_t>((sample << 8) | (sample >> 8));
}

std::int16_t CLookUpTable::RemoveSVcompression(std::int16_t sample) {
  return static_cast<std::int16_t>(RemoveSVcompression(static_cast<std::uint16_t>(sample)));
}
std::uint16_t CLookUpTable::RemoveSVcompression(std::uint16_t sample) { return sample & 0xFFF0u; }

std::int32_t CLookUpTable::CorrectAmplitudeData(std::int32_t sample,
                                                lut_enumConversion conversion) {
  constexpr std::uint32_t wordFlags = lut_SwapData | lut_RemoveSVcompression;
  if (Has(conversion, lut_SignedByte)) {
    UTDATA_ASSERT(!Has(conversion, wordFlags));
    return Has(conversion, lut_RemoveOffset) ? RemoveByteOffset(static_cast<signed char>(sample))
                                             : sample;
  }
  if (Has(conversion, lut_UnsignedByte)) {
    UTDATA_ASSERT(!Has(conversion, wordFlags | lut_RectifyBipolar));
    return sample;
  }
  if (Has(conversion, lut_SignedWord | lut_UnsignedWord)) {
    const bool isSigned = Has(conversion, lut_SignedWord);
    if (Has(conversion, lut_SwapData)) sample = SwapData(static_cast<std::uint16_t>(sample));
    if (Has(conversion, lut_RemoveSVcompression))
      sample = isSigned ? std::int32_t{RemoveSVcompression(static_cast<std::int16_t>(sample))}
                        : std::int32_t{RemoveSVcompression(static_cast<std::uint16_t>(sample))};
    if (isSigned && Has(conversion, lut_RemoveOffset))
      sample = RemoveWordOffset(static_cast<short>(sample));
  }
  return sample;
}

// -------------------------------------------------------------------------------------------------
// many samples

bool CLookUpTable::ConvertBlock(const char* samples,
                                std::size_t count,
                                unsigned char* codes) const {
  if (m_dataType != kvt_Int8) return false;
  m_block->Bytes(reinterpret_cast<const std::uint8_t*>(samples), count, codes);
  return true;
}

bool CLookUpTable::ConvertBlock(const signed char* samples,
                                std::size_t count,
                                unsigned char* codes) const {
  return ConvertBlock(reinterpret_cast<const char*>(samples), count, codes);
}

bool CLookUpTable::ConvertBlock(const unsigned char* samples,
                                std::size_t count,
                                unsigned char* codes) const {
  if (m_dataType != kvt_UInt8) return false;
  m_block->Bytes(samples, count, codes);
  return true;
}

bool CLookUpTable::ConvertBlock(const short* samples,
                                std::size_t count,
                                unsigned char* codes) const {
  if (m_dataType != kvt_Int16) return false;
  m_block->Words(reinterpret_cast<const std::uint16_t*>(samples), count, codes);
  return true;
}

bool CLookUpTable::ConvertBlock(const unsigned short* samples,
                                std::size_t count,
                                unsigned char* codes) const {
  if (m_dataType != kvt_UInt16) return false;
  m_block->Words(samples, count, codes);
  return true;
}
