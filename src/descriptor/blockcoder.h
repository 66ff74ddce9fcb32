// Bulk conversion for one look-up table: finds arithmetic that gives the table's codes, proves it
// over every input when the table is built, and reads the table where there is none.
#pragma once

#include <cstddef>
#include <cstdint>

#include "src/descriptor/blockkernels.h"

namespace utdata {

class BlockCoder {
 public:
  /// @param dataType       kvt_enumDataType, one with a table
  /// @param conversion     lut_enumConversion of the table
  /// @param table          256 or 65536 codes; must outlive this and not change
  /// @param codesPerSample slope of a 16-bit table's codes over the corrected samples; any value:
  ///   it is only a guess
  BlockCoder(std::uint32_t dataType,
             std::uint32_t conversion,
             const std::uint8_t* table,
             double codesPerSample);

  /// Codes of 8-bit samples; REQUIRES a table of 256 codes.
  void Bytes(const std::uint8_t* samples, std::size_t count, std::uint8_t* codes) const;
  /// Codes of 16-bit samples; REQUIRES a table of 65536 codes.
  void Words(const std::uint16_t* samples, std::size_t count, std::uint8_t* codes) const;

  /// How the codes of 16-bit samples are computed.
  [[nodiscard]] const WordPlan& Plan() const { return m_plan; }

 private:
  enum class ByteMethod : std::uint8_t { Table, Copy, Fold };

  void ChooseByteMethod();

  const std::uint8_t* m_table;
  WordPlan m_plan;
  ByteMethod m_byteMethod = ByteMethod::Table;
  std::uint8_t m_byteFlip = 0;
};

/// Arithmetic that gives the codes of a 16-bit table on `path`, proven over all 65536 samples;
/// Method::Table when there is none.
/// @param isFolded whether codes are folded about zero amplitude (tables of signed samples)
[[nodiscard]] WordPlan FindWordPlan(VectorPath path,
                                    std::uint32_t conversion,
                                    bool isFolded,
                                    const std::uint8_t* table,
                                    double codesPerSample);

}  // namespace utdata
