// Look-up tables: the 8-bit display code of every possible raw sample of a data group.
//
// Tables are made and shared by the table factory and counted by reference. No lock: conversions
// may run in several threads while nobody remaps or releases the table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "interfaces/framework.h"
#include "utdata/rdata.h"
#include "utdata/unitset.h"

namespace utdata {
class BlockCoder;
struct LookUpTableSteps;
}  // namespace utdata

/// How raw samples are corrected before display, as bits.
enum lut_enumConversion : std::uint32_t {
  lut_None = 0,
  lut_RectifyPos = 0x1,            ///< keep the positive half-wave
  lut_RectifyNeg = 0x2,            ///< keep the negative half-wave
  lut_RectifyBipolar = 0x3,        ///< full wave
  lut_SwapData = 0x10,             ///< 16-bit samples are stored with the other byte order
  lut_IgnoreErrorCodes = 0x20,     ///< sample codes 0, 1 and 2 are replaced by 3
  lut_RemoveSVcompression = 0x40,  ///< the low four bits of 16-bit samples are cleared
  lut_RemoveOffset = 0x200,        ///< samples are stored offset by half their range
  lut_SignedByte = 0x400,
  lut_UnsignedByte = 0x800,
  lut_SignedWord = 0x1000,
  lut_UnsignedWord = 0x2000,
  lut_TableMask =
      0x3E50  ///< what a table depends on: byte order, compression, offset and sample type
};

class UTDATA_API CLookUpTable : public CObject {
  DECLARE_DYNAMIC(CLookUpTable)

 public:
  /// Builds the table of a descriptor's sample type and range: 256 codes for 8-bit samples, 65536
  /// for 16-bit samples, none for others. Limits that are not finite, equal or in reverse order are
  /// allowed. A quotient that is not a number counts as below the range; a maximum that is not a
  /// number is reached by no sample.
  /// @param descriptor not null; read during the call only
  /// @param identity   copied; may be null
  CLookUpTable(const CRDataTypeDD* descriptor, const vset_groupId* identity);
  CLookUpTable(const CLookUpTable&) = delete;
  CLookUpTable& operator=(const CLookUpTable&) = delete;
  ~CLookUpTable() override;

  /// Display code of one raw sample, by the overload of the table's sample type. A single read
  /// without checks. REQUIRES: the table has codes (8-bit: 256; 16-bit: 65536) and the sample,
  /// taken as unsigned (int: its low 16 bits; unsigned int as given), is one of them. Anything else
  /// raises an assertion and gives 0 in checked builds (UTDATA_CHECKED); in others it is undefined.
  [[nodiscard]] UTDATA_INLINE_API unsigned char Convert(const char sample) const {
    return CodeAt(static_cast<unsigned char>(sample));
  }
  [[nodiscard]] UTDATA_INLINE_API unsigned char Convert(const signed char sample) const {
    return CodeAt(static_cast<unsigned char>(sample));
  }
  [[nodiscard]] UTDATA_INLINE_API unsigned char Convert(const unsigned char sample) const {
    return CodeAt(sample);
  }
  [[nodiscard]] UTDATA_INLINE_API unsigned char Convert(const short sample) const {
    return CodeAt(static_cast<std::uint16_t>(sample));
  }
  [[nodiscard]] UTDATA_INLINE_API unsigned char Convert(const unsigned short sample) const {
    return CodeAt(sample);
  }
  [[nodiscard]] UTDATA_INLINE_API unsigned char Convert(const int sample) const {
    return CodeAt(static_cast<std::uint32_t>(sample) & 0xFFFFu);
  }
  [[nodiscard]] UTDATA_INLINE_API unsigned char Convert(const unsigned int sample) const {
    return CodeAt(sample);
  }

  /// Display codes of many raw samples: exactly those of Convert, many samples an instruction where
  /// the table allows it.
  /// @param samples `count` raw samples of the table's sample type, aligned as their type
  /// @param codes   receives `count` codes; must not overlap the samples
  /// @return false, and nothing is written, when the samples are not of the table's type or the
  ///   table has no codes
  [[nodiscard]] bool ConvertBlock(const char* samples,
                                  std::size_t count,
                                  unsigned char* codes) const;
  [[nodiscard]] bool ConvertBlock(const signed char* samples,
                                  std::size_t count,
                                  unsigned char* codes) const;
  [[nodiscard]] bool ConvertBlock(const unsigned char* samples,
                                  std::size_t count,
                                  unsigned char* codes) const;
  [[nodiscard]] bool ConvertBlock(const short* samples,
                                  std::size_t count,
                                  unsigned char* codes) const;
  [[nodiscard]] bool ConvertBlock(const unsigned short* samples,
                                  std::size_t count,
                                  unsigned char* codes) const;

  /// Refills a 16-bit table with the descriptor's current range and a new amplification, and serves
  /// that range from then on; tables of 8-bit samples only note the amplification. Nothing happens
  /// when range and `lab` are the current ones. The change is seen by every group that shares the
  /// table.
  /// @return the codes, the same storage as before; null for a table without codes
  const unsigned char* RemapLUT(const CRDataTypeDD* descriptor, std::uint32_t lab);
  [[nodiscard]] std::uint32_t GetLAB() const;

  std::int32_t AddRef();
  /// Gives back one reference. @return the count left; 0: the table has been destroyed
  std::int32_t Release();

  /// 1 when this table serves a descriptor: equal conversion, range and scale (a NaN equals
  /// nothing), and identities that are both absent or of one kind: kind 1 always, kind 3 with equal
  /// first value, kind 5 with equal first and second values. Else 0.
  [[nodiscard]] virtual int Compare(const CRDataTypeDD* descriptor,
                                    const vset_groupId* identity) const;

  [[nodiscard]] static lut_enumConversion GetConversionStyle(const CRDataTypeDD* descriptor);
  /// A raw sample corrected for byte order, compression and offset, as its table would before it is
  /// compressed to a code. Flags that its type must not have raise an assertion.
  [[nodiscard]] static std::int32_t CorrectAmplitudeData(std::int32_t sample,
                                                         lut_enumConversion conversion);
  [[nodiscard]] static std::uint16_t SwapData(std::uint16_t sample);
  [[nodiscard]] static std::int16_t RemoveSVcompression(std::int16_t sample);
  [[nodiscard]] static std::uint16_t RemoveSVcompression(std::uint16_t sample);
  /// Code of a signed amplitude: 0, -1, 1, -2, 2 ... become 0, 1, 2, 3, 4 ...
  [[nodiscard]] static unsigned char RectifySC(signed char amplitude);
  /// Signed amplitude of a code: the inverse of RectifySC.
  [[nodiscard]] static signed char UnRectifySC(unsigned char code);

 private:
  friend struct utdata::LookUpTableSteps;  // tests reach the steps one by one

  void CreateLookUpTable(const CRDataTypeDD* descriptor);
  void FillWords(bool isCentred);

  static unsigned char GetCorrectedValue(char sample, lut_enumConversion conversion);
  static unsigned char GetCorrectedValue(unsigned char sample, lut_enumConversion conversion);
  static unsigned char GetCorrectedValue(short sample,
                                         double minimum,
                                         double maximum,
                                         std::uint32_t factor,
                                         lut_enumConversion conversion);
  static unsigned char GetCorrectedValue(unsigned short sample,
                                         double minimum,
                                         double maximum,
                                         std::uint32_t factor,
                                         lut_enumConversion conversion,
                                         int isCentred);
  static signed char CompressData(short sample,
                                  double minimum,
                                  double maximum,
                                  std::uint32_t factor);
  static unsigned char CompressData(unsigned short sample,
                                    double minimum,
                                    double maximum,
                                    std::uint32_t factor,
                                    int isCentred);
  static signed char IgnoreErrorCodes(signed char sample);
  static unsigned char IgnoreErrorCodes(unsigned char sample);
  static short IgnoreErrorCodes(short sample);
  static unsigned short IgnoreErrorCodes(unsigned short sample);
  static unsigned char Rectify(signed char amplitude, lut_enumConversion conversion);
  static unsigned char RectifyBipolar(signed char amplitude);
  static unsigned char RectifyPos(signed char amplitude);
  static unsigned char RectifyNeg(signed char amplitude);

  [[nodiscard]] unsigned char CodeAt(std::uint32_t index) const {
#if defined(UTDATA_CHECKED)
    UTDATA_ASSERT(index < m_codeQuantity);
    if (index >= m_codeQuantity) return 0;
#endif
    return m_table[index];
  }

  std::unique_ptr<unsigned char[]> m_table;
  std::uint32_t m_conversion = 0;  ///< lut_enumConversion, table bits only
  std::uint32_t m_dataType = 0;    ///< kvt_enumDataType
  double m_minimum = 0;            ///< of the samples that the codes span
  double m_maximum = 0;
  std::uint32_t m_dataScale = 0;  ///< gdata_enumDataScale
  std::uint32_t LAB = 1;          ///< integer amplification of 16-bit samples
  std::unique_ptr<vset_groupId> m_identity;
  std::int32_t m_referenceCount = 1;
  std::uint32_t m_codeQuantity = 0;
  std::unique_ptr<utdata::BlockCoder>
      m_block;  ///< how ConvertBlock computes the codes of this table
};
