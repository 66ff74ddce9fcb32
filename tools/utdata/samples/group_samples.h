// The samples of a data group, ready to be shown: as display codes, as values, and by their
// amplitudes.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "document/document.h"
#include "document/host.h"
#include "samples/cell_table.h"
#include "utdata/lut.h"
#include "utdata/rdata.h"

namespace utdata::program {

/// Where the largest amplitude of some cells lies.
struct StrongestSample {
  std::uint64_t cell = 0;  ///< row x columns + column
  std::uint32_t sample = 0;
  double value = 0;  ///< corrected for byte order, compression and offset
};

/// The largest amplitude of each of some cells.
struct Peaks {
  std::vector<std::uint16_t> raw;  ///< samples as they are stored, one a cell
  StrongestSample strongest;       ///< the first of several
};

/// Holds the group's table of samples and its look-up table. Host and group must outlive it; used
/// by one thread. A cell without samples counts as one without amplitude.
class GroupSamples {
 public:
  /// Throws Failure, which begins with `name`, when the group has no samples or they are not of a
  /// kind that can be shown. REQUIRES: the group is of class 1, 2 or 3.
  /// @param name of the file and the group, for failures
  GroupSamples(Host& host, const CGDataTypeFDD& group, const std::string& name);
  ~GroupSamples();
  GroupSamples(const GroupSamples&) = delete;
  GroupSamples& operator=(const GroupSamples&) = delete;

  [[nodiscard]] const CellTable& Cells() const { return m_cells; }

  /// The samples farthest from the zero of the group's samples, one of each cell. Shows progress on
  /// long work.
  [[nodiscard]] Peaks FindPeaks(const CellRange& cells, bool quiet) const;

  /// Display codes of the samples of some cells, one cell after the other.
  /// @param gain amplification by a whole number, 1 or more; 16-bit samples only
  [[nodiscard]] std::vector<std::uint8_t> Codes(const CellRange& cells, std::uint32_t gain);
  /// The same of samples as they are stored.
  [[nodiscard]] std::vector<std::uint8_t> CodesOf(std::span<const std::uint16_t> raw,
                                                  std::uint32_t gain);

  /// The samples of a cell, corrected for byte order, compression and offset.
  [[nodiscard]] std::vector<std::int32_t> Values(std::uint64_t cell) const;
  /// The same of one sample as it is stored.
  [[nodiscard]] std::int32_t ValueOf(std::uint16_t raw) const { return m_values[raw]; }

  /// Whether Codes amplifies: samples of 8 bits go through a table without amplification, and
  /// C-scans whose table would amplify about the middle of their range, though they begin at 0,
  /// through an unamplified one.
  [[nodiscard]] bool CanAmplify() const { return m_canAmplify; }

 private:
  struct DestroyDescriptor {
    void operator()(CRDataTypeDD* descriptor) const { descriptor->Destroy(); }
  };

  [[nodiscard]] bool IsWide() const { return m_descriptor->GetSampleSize() == 2; }
  void CheckKind(const std::string& name) const;
  void FillValues(const CGDataTypeFDD& group);
  template <class Raw>
  [[nodiscard]] Peaks Search(const CellRange& cells, bool quiet) const;
  template <class Sample>
  [[nodiscard]] bool Convert(const CellRange& cells, std::vector<std::uint8_t>& codes) const;

  Host& m_host;
  std::span<const std::byte> m_samples;
  CellTable m_cells;
  std::unique_ptr<CRDataTypeDD, DestroyDescriptor> m_descriptor;
  CLookUpTable* m_table;
  bool m_canAmplify;
  std::vector<std::int32_t> m_values;       ///< of every raw sample
  std::vector<std::uint32_t> m_amplitudes;  ///< of every raw sample: twice its distance from zero
  std::uint16_t m_silent = 0;               ///< the raw sample nearest to zero
};

}  // namespace utdata::program
