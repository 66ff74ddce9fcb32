// The samples of one data group: as values, as display codes, and by their largest amplitudes.
//
// Values are corrected for byte order, compression and offset, as the item's descriptor calls for.
// A cell without samples counts as one without amplitude. Reading a cell with damaged samples
// throws, unless the inspection was opened to accept that.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "utdata/datagroup.h"
#include "utdata/lut.h"

namespace utdata {

/// Where the largest amplitude of some cells lies.
struct StrongestSample {
  std::uint64_t cell = 0;  ///< row x columns + column
  std::uint32_t sample = 0;
  double value = 0;
};

/// The largest amplitude of each of some cells, each half wave by its own full scale.
struct Peaks {
  std::vector<std::int32_t> values;  ///< one a cell
  StrongestSample strongest;         ///< the first of several
};

/// The values that display codes run over, without amplification.
struct CodeSpan {
  double low = 0;
  double high = 255;
  /// Codes count 0, -1, 1, -2, 2 ... from the middle of the span; else from its low end.
  bool isSigned = false;

  /// The place of a code on the span: 0 at its low end, 255 at its high end.
  [[nodiscard]] std::uint8_t PlaceOf(std::uint8_t code) const {
    return isSigned ? static_cast<std::uint8_t>(CLookUpTable::UnRectifySC(code) + 128) : code;
  }
};

/// Good while its inspection lives. Reading may run in several threads; Codes and CodesOf may not,
/// since a look-up table is shared by groups.
class UTDATA_API Samples {
 public:
  Samples(Samples&&) noexcept;
  Samples& operator=(Samples&&) noexcept;
  ~Samples();

  [[nodiscard]] std::uint64_t CellQuantity() const;
  [[nodiscard]] std::uint32_t SamplesPerCell() const;
  [[nodiscard]] bool IsSigned() const;  ///< of the values

  /// @param samples of each cell that are looked at; at least one of its samples, or it throws
  [[nodiscard]] Peaks FindPeaks(const CellRange& cells,
                                const Watch& watch = {},
                                const IndexRange& samples = {}) const;
  /// The values of one cell.
  [[nodiscard]] std::vector<std::int32_t> Values(std::uint64_t cell) const;
  /// Whether a cell counts as one without samples because they are damaged. Reads them.
  [[nodiscard]] bool IsDamaged(std::uint64_t cell) const;

  /// Display codes of the samples of some cells, one cell after the other.
  /// @param gain amplification by a whole number, 1 or more; without effect unless CanAmplify
  [[nodiscard]] std::vector<std::uint8_t> Codes(const CellRange& cells, std::uint32_t gain = 1);
  /// The same of values, one each.
  [[nodiscard]] std::vector<std::uint8_t> CodesOf(std::span<const std::int32_t> values,
                                                  std::uint32_t gain = 1);
  [[nodiscard]] CodeSpan Span() const;
  /// Whether Codes amplifies: samples of 8 bits go through a table without amplification.
  [[nodiscard]] bool CanAmplify() const;

 private:
  friend class DataGroup;
  struct Reader;
  explicit Samples(std::unique_ptr<Reader> reader);

  std::unique_ptr<Reader> m_reader;
};

/// How the codes of a group become the places of a colour scale, which rise evenly with the
/// amplitude.
struct CodeMeaning {
  std::array<std::uint8_t, 256> place{};
  double low = 0;        ///< percent at place 0, before soft gain
  double high = 100;     ///< percent at place 255, before soft gain
  bool hasSign = false;  ///< samples lie on both sides of zero
  bool isWave = false;   ///< they are shown so: zero lies in the middle
};

/// A time-of-flight diffraction scan is read by the phase of its echoes, and shown as a wave; of
/// other scans without rectification the size of the amplitude is shown.
[[nodiscard]] UTDATA_API CodeMeaning MeaningOf(const DataGroup& group, const CodeSpan& span);

/// The largest whole factor that keeps an amplitude, in percent of full scale, within the scale.
[[nodiscard]] UTDATA_API std::uint32_t FittingGain(double percent);

}  // namespace utdata
