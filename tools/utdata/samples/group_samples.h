// The A-scans of a data group, ready to be shown: as display codes, and by their amplitudes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "document/document.h"
#include "document/host.h"
#include "utdata/lut.h"
#include "utdata/rdata.h"

namespace utdata::program {

/// Where the largest amplitude of some cells lies.
struct StrongestSample {
  std::uint64_t cell = 0;  ///< row x columns + column
  std::uint32_t sample = 0;
  double value = 0;  ///< corrected for byte order, compression and offset
};

/// Maps the samples and holds the group's look-up table. Host and group must outlive it; used by one thread.
class GroupSamples {
 public:
  /// Throws Failure, which begins with `name`, when the group has no samples or they are not of a kind that can be shown.
  /// @param name of the file and the group, for failures
  GroupSamples(Host& host, const CGDataTypeFDD& group, const std::string& name);
  ~GroupSamples();
  GroupSamples(const GroupSamples&) = delete;
  GroupSamples& operator=(const GroupSamples&) = delete;

  [[nodiscard]] std::uint64_t Cells() const;

  /// The sample farthest from `zero` among `count` cells from `first`; the first of several. Shows progress on long work.
  [[nodiscard]] StrongestSample FindStrongest(std::uint64_t first, std::uint64_t count, double zero, bool quiet) const;

  /// Display codes of `count` cells from `first`, one cell after the other.
  /// @param gain amplification by a whole number, 1 or more; 16-bit samples only
  [[nodiscard]] std::vector<std::uint8_t> Codes(std::uint64_t first, std::uint64_t count, std::uint32_t gain);

  /// Whether Codes amplifies: samples of 8 bits go through a table without amplification.
  [[nodiscard]] bool CanAmplify() const { return m_descriptor->GetSampleSize() == 2; }

 private:
  struct DestroyDescriptor {
    void operator()(CRDataTypeDD* descriptor) const { descriptor->Destroy(); }
  };

  void CheckLayout(const std::string& name) const;
  template <class Sample>
  StrongestSample Search(std::uint64_t first, std::uint64_t count, double zero, bool quiet) const;
  template <class Sample>
  bool Convert(std::uint64_t firstSample, std::vector<std::uint8_t>& codes) const;

  Host& m_host;
  MappedSamples m_samples;
  std::unique_ptr<CRDataTypeDD, DestroyDescriptor> m_descriptor;
  CLookUpTable* m_table;
};

}  // namespace utdata::program
