// One data group of an inspection: what it is, its axes, its samples, and what is read out of them.
//
// Everything here comes from the group's data item, its run-time descriptor, its units and its
// look-up table; Stored() gives the record as the file has it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "interfaces/kvtiff19.h"
#include "utdata/unit.h"

class CIData;
class CRDataTypeDD;

namespace utdata {

struct DataRow;
struct InspectionState;
class ReadOut;
class Samples;

/// Called now and then during long work, on the thread that does it: what is being done, and how
/// much of how many bytes. What it throws ends the work and reaches the caller; nothing is then
/// changed. Empty: nobody watches.
using Watch = std::function<void(std::string_view task, std::uint64_t done, std::uint64_t total)>;

/// Some cells of a data group, in row-major order: cell = row x columns + column.
struct CellRange {
  std::uint64_t first = 0;
  std::uint64_t count = 0;
  std::uint64_t step = 1;  ///< from one cell to the next

  [[nodiscard]] std::uint64_t At(std::uint64_t index) const { return first + index * step; }
};

/// Some indices of an axis, one after the other.
struct IndexRange {
  std::uint32_t first = 0;
  std::uint32_t count = ~std::uint32_t{0};  ///< as many as there are, where they are fewer

  [[nodiscard]] bool Holds(std::uint32_t index) const {
    return index >= first && index - first < count;
  }
};

/// An axis in one unit, its values evenly spaced.
struct AxisScale {
  std::string symbol;  ///< of the unit; empty for plain numbers
  double first = 0;    ///< value at index 0
  double step = 1;     ///< from one index to the next
  std::uint32_t quantity = 0;

  [[nodiscard]] double At(double index) const { return first + index * step; }
  [[nodiscard]] double IndexOf(double value) const { return (value - first) / step; }
  /// Those of its indices whose values lie between two others, or are one of them. None where the
  /// step is 0.
  [[nodiscard]] UTDATA_API IndexRange IndicesBetween(double from, double to) const;
};

/// A gate on the axis of A-scans.
struct PlacedGate {
  const CGGateTypeDescr* gate = nullptr;  ///< of its item, good while that is not changed
  bool isPlaced = false;                  ///< false: it follows another echo
  double from = 0;                        ///< sample index
  double to = 0;
};

/// How values of samples become percent of full scale, as coefficients: percent = value x above
/// from 0 on, value x below under it.
struct AmplitudeScale {
  double above = 0;
  double below = 0;

  [[nodiscard]] double Percent(double value) const { return value * (value < 0 ? below : above); }
};

/// A handle: cheap to copy, good while its inspection lives.
class UTDATA_API DataGroup {
 public:
  DataGroup(InspectionState& inspection, DataRow& row) : m_inspection(&inspection), m_row(&row) {}

  /// Its place among the data groups of the inspection, from 0; that of a master is its place among
  /// the masters.
  [[nodiscard]] std::size_t Index() const;
  [[nodiscard]] std::string Name() const;  ///< "FILE: data group 3", as failures call it
  /// The record as the file has it; a master's as its item has it.
  [[nodiscard]] const CGDataTypeFDD& Stored() const;
  /// The record as its item took it, before any change: normalised, with a bookmark type.
  [[nodiscard]] const CGDataTypeFDD& Taken() const;
  [[nodiscard]] CIData& Item() const;
  [[nodiscard]] const CRDataTypeDD& Descriptor() const;
  /// Whether the file set holds it. One whose ids another group has, or that says of itself that it
  /// is a master, has an item that stands alone.
  [[nodiscard]] bool IsListed() const;

  [[nodiscard]] bool IsMaster() const;
  [[nodiscard]] gdata_enumDataClass Class() const;  ///< without the master bit
  [[nodiscard]] std::string ClassName() const;      ///< "A-scan"
  [[nodiscard]] std::string TypeName() const;       ///< of the samples as stored: "u16"
  [[nodiscard]] std::string BookmarkName() const;   ///< "single", "TOFD"
  /// Channel and gate by name where they have one, else by number: "C 1 G0 ", "Left A ".
  [[nodiscard]] std::string Label() const;
  [[nodiscard]] std::string Caption() const;  ///< the same without blanks behind it: "C 1 G0"
  [[nodiscard]] std::string IdLabel() const;  ///< channel and gate by number
  [[nodiscard]] bool HoldsAmplitudes() const;
  [[nodiscard]] bool HoldsPositions() const;
  [[nodiscard]] bool HasAScans() const;  ///< of class 1
  [[nodiscard]] bool IsCScan() const;    ///< of any class with one value a cell
  [[nodiscard]] bool IsTofd() const;

  /// The C-scan of the same gate that holds positions to its amplitudes, or the reverse.
  [[nodiscard]] std::optional<DataGroup> Matched() const;
  /// Of a position C-scan of a Meridio gate, the amplitude C-scan that it belongs to.
  [[nodiscard]] std::optional<DataGroup> MeridioAmplitudes() const;
  [[nodiscard]] std::optional<DataGroup> Master() const;  ///< of an element
  /// Of a master, ordered by bookmark type, channel, sub-channel and gate.
  [[nodiscard]] std::vector<DataGroup> Elements() const;

  [[nodiscard]] std::uint32_t ColumnQuantity() const;
  [[nodiscard]] std::uint32_t RowQuantity() const;
  [[nodiscard]] std::uint32_t SampleQuantity() const;  ///< of a cell: 1 in C-scans
  [[nodiscard]] CellRange AllCells() const;
  [[nodiscard]] CellRange CellsOfRow(std::uint32_t row) const;
  [[nodiscard]] CellRange CellsOfColumn(std::uint32_t column) const;

  /// The scan axes in millimetres or degrees. An axis for which the stored record gives no usable
  /// step counts indices, here and below.
  [[nodiscard]] AxisScale Columns() const;
  [[nodiscard]] AxisScale Rows() const;
  /// The axis of the samples, in a position C-scan that of its values: microseconds of two-way time
  /// where they count time, else millimetres or degrees.
  [[nodiscard]] AxisScale Times() const;
  /// The same in millimetres of one-way sound path; none where they do not count time, or the file
  /// gives no sound speed.
  [[nodiscard]] std::optional<AxisScale> HalfPaths() const;
  /// The same in millimetres below the surface, along the first leg: path x cosine of the refracted
  /// angle. None as above.
  [[nodiscard]] std::optional<AxisScale> Depths() const;
  /// Millimetres of depth of a diffracting tip at each sample of TOFD data, through the item's
  /// unit; NaN before the lateral wave. Empty for other data, and where sound speed, probe
  /// separation or the radius of a round part is not known (utdata::WhyNoTofdScale).
  [[nodiscard]] std::vector<double> TofdDepths() const;
  [[nodiscard]] AmplitudeScale Amplitudes() const;
  /// Percent of full scale of a value, negative below zero; NaN where the range has no extent.
  [[nodiscard]] double Percent(double value) const;
  /// dB below full scale of an amplitude in percent; minus infinity for 0.
  [[nodiscard]] double Decibels(double percent) const;
  [[nodiscard]] double PercentOfDecibels(double decibels) const;
  /// An amplitude in percent as the item's unit prints it: "26.1 %", or with unit_DataDecibel
  /// "-11.7 dB".
  [[nodiscard]] std::string AmplitudeText(double percent, unit_enumDataUnit unit) const;
  /// The enabled gates of the channel, where they lie on the axis of the samples.
  [[nodiscard]] std::vector<PlacedGate> Gates() const;

  /// One A-scan, or the one value of a C-scan's cell, as stored: in the mapped file, not copied.
  /// Good while the inspection lives. Empty for a cell without samples. REQUIRES: `Sample` is the
  /// stored type; throws when it has another size. Throws when the samples are damaged; where that
  /// is accepted, it is empty.
  template <class Sample>
  [[nodiscard]] std::span<const Sample> AScan(std::uint32_t row, std::uint32_t column) const {
    const std::span<const std::byte> bytes = Cell(row, column, sizeof(Sample));
    return {reinterpret_cast<const Sample*>(bytes.data()), bytes.size() / sizeof(Sample)};
  }
  /// The whole table as it is stored, attached to the item when first asked for. Throws when the
  /// group has no samples, or any are damaged; where that is accepted, they are as they are.
  [[nodiscard]] std::span<const std::byte> Table() const;
  /// Part of the table, of which nothing else is checked. Throws as above, or when it is not there.
  [[nodiscard]] std::span<const std::byte> Table(std::uint64_t from, std::uint64_t size) const;
  /// Whether there is a table: on disk, or in memory.
  [[nodiscard]] bool HasTable() const;
  /// The bits of a sample without amplitude, as the table has them: what stands for a cell without
  /// samples.
  [[nodiscard]] std::uint16_t SilentSample() const;
  /// The samples as values, codes and peaks. Throws when there are none, or they are of a kind that
  /// has no codes.
  [[nodiscard]] utdata::Samples Samples() const;

  /// What one position holds. Throws when it is outside the data.
  [[nodiscard]] utdata::ReadOut ReadOut(std::uint32_t row,
                                        std::uint32_t column,
                                        std::uint32_t sample = 0) const;

 private:
  friend class utdata::Samples;
  friend struct DataGroupInside;

  [[nodiscard]] std::span<const std::byte> Cell(std::uint32_t row,
                                                std::uint32_t column,
                                                std::size_t sampleSize) const;

  InspectionState* m_inspection;
  DataRow* m_row;
};

/// "A-scan": what a record's data class is called, of a master with "(all sub-channels)".
[[nodiscard]] UTDATA_API std::string ClassNameOf(const CGDataTypeFDD& record);

}  // namespace utdata
