// An inspection file's groups made of an array of samples.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "arrays/gather.h"
#include "arrays/sample_type.h"
#include "document/document.h"

namespace utdata::program {

/// The record of a new data group of A-scans with nominal spacings: 1 mm between rows and columns,
/// 10 ns between samples, 5900 m/s.
[[nodiscard]] CGDataTypeFDD NominalRecord(const SampleType& type);

/// Gives a record the quantities and the type of its samples. A layout without an axis of samples
/// makes a C-scan of amplitudes of a record that is of A-scans, and the reverse.
void SetLayout(CGDataTypeFDD& record,
               const ArrayLayout& layout,
               const SampleType& type,
               bool hasSamples);

/// What an inspection says beside its samples.
struct InspectionTexts {
  std::string title;
  std::string nominal;  ///< the values that nobody gave, told in its comment
};

/// Adds one data group, its channel and probe, and the general information to a new inspection.
/// @param samples as many bytes as the record lays out; not copied, must outlive the writing
void AddScan(Document& document,
             const CGDataTypeFDD& record,
             std::byte* samples,
             const InspectionTexts& texts);

}  // namespace utdata::program
