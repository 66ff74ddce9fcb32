// Makes a new inspection of samples that come without one: the record of their data group, and the
// groups that stand beside it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "utdata/inspection.h"

namespace utdata {

/// A kind of samples: a whole number of 8 or 16 bits.
struct SampleType {
  const char* name;  ///< "u16"
  kvt_enumDataType type;
  std::uint32_t size;  ///< bytes
  bool isSigned;
  float minimum;
  float maximum;
};

/// The sample type of a name, a record's type or a size; null when there is none.
[[nodiscard]] UTDATA_API const SampleType* FindSampleType(std::string_view name);
[[nodiscard]] UTDATA_API const SampleType* FindSampleType(kvt_enumDataType type);
[[nodiscard]] UTDATA_API const SampleType* FindSampleType(std::uint64_t size, bool isSigned);

/// Quantities of a scan whose cells lie one behind the other, row by row.
struct ScanLayout {
  std::uint32_t columns = 1;
  std::uint32_t rows = 1;
  std::uint32_t samples = 1;  ///< of a cell
  bool hasAScans = true;      ///< false: one value a cell, as in a C-scan
};

/// The record of a data group of A-scans with nominal scaling: 1 mm from row to row and from column
/// to column, 10 ns from sample to sample, 5900 m/s, the whole range of the type.
[[nodiscard]] UTDATA_API CGDataTypeFDD NominalRecord(const SampleType& type);

/// Gives a record quantities and the type of its samples. Where its class does not fit the layout
/// it becomes a record of A-scans, or of a C-scan of rectified amplitudes.
UTDATA_API void SetLayout(CGDataTypeFDD& record, const SampleType& type, const ScanLayout& layout);

/// Puts a text into a field of a record; what is longer than the field is cut.
UTDATA_API void SetName(wchar_t (&field)[CGDataTypeFDD::nameSize], const std::wstring& name);

/// What a new inspection says of itself, as UTF-8.
struct ScanTexts {
  std::string title;
  std::string software;  ///< that makes it
  std::string comment;
};

/// Adds a data group to a new inspection, with its channel, its probe and the general information.
/// Throws Error, and changes nothing, when the layout does not fit 64 bits or the samples.
/// @param record  with the sizes and quantities that SetLayout gives
/// @param samples stay where they are and must live as long as the inspection
UTDATA_API DataGroup AddScan(Inspection& inspection,
                             const CGDataTypeFDD& record,
                             std::span<std::byte> samples,
                             const ScanTexts& texts);

}  // namespace utdata
