// Scans of samples that come without an inspection: the records of their data groups, and what
// stands beside these: channel, probes, and of a channel of several beams a sub-channel each.
//
// A scan is added to a new inspection, or to one that was opened: what is added is written by its
// next save. The data groups of a channel's beams are gathered under a master
// (Inspection::Masters), and each has its own angle in its own record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

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

/// Adds a data group with its channel and its probe as SetupOf has them, and to a new inspection
/// the general information. Throws Error, and changes nothing, as AddBeams does.
/// @param record  with the sizes and quantities that SetLayout gives
/// @param samples stay where they are and must live as long as the inspection
/// @param texts   of a new inspection; one that was opened keeps its own
UTDATA_API DataGroup AddScan(Inspection& inspection,
                             const CGDataTypeFDD& record,
                             std::span<std::byte> samples,
                             const ScanTexts& texts);

/// Gives a new inspection its general information; one that has it keeps it, as one that was opened
/// does, whose companions cannot hold any.
UTDATA_API void AddTexts(Inspection& inspection, const ScanTexts& texts);

// ---- channels of several beams

/// The groups that the data of one channel stand on.
struct ChannelSetup {
  CGChanTypeDescr channel;
  /// The transmitter, and behind it the receiver where that is another probe. One whose id is taken
  /// gets the next free one, and the channel names them. None: the channel names probes that are
  /// there.
  std::vector<CGProbeTypeDescr> probes;
  /// A sub-channel for each beam, numbered from 1. None: the channel has one beam, its own.
  std::vector<CGSubchanTypeDescr> beams;
};

/// What a data group was recorded with, as far as its record says: a channel with its range, angle
/// and sound speed, one probe, or for TOFD data a pair of them; with a sub-channel id one beam.
[[nodiscard]] UTDATA_API ChannelSetup SetupOf(const CGDataTypeFDD& record);

/// The beams of a sector or of an electronic scan, with the range of the record: "Beam 1" and on,
/// or from the record's sub-channel id on where it has one.
/// @param angles refracted, degrees, one a beam
[[nodiscard]] UTDATA_API std::vector<CGSubchanTypeDescr> BeamsOf(const CGDataTypeFDD& record,
                                                                 std::span<const double> angles);

/// The record of one beam's data group: the channel's with the beam's id, name, angle and skew.
[[nodiscard]] UTDATA_API CGDataTypeFDD BeamRecord(const CGDataTypeFDD& record,
                                                  const CGSubchanTypeDescr& beam);

/// Adds a channel with its probes and sub-channels. A channel that is there stays as it is, and
/// gets the sub-channels that it lacks. Throws Error, and changes nothing, when the channel that is
/// there has another sound speed, one is of TOFD data and the other is not, a sub-channel that is
/// there has another angle or skew, a number is 0, or two beams have the same.
UTDATA_API void AddChannel(Inspection& inspection, const ChannelSetup& setup);

/// Adds the data groups of a channel, one for each beam, and what AddChannel adds. Throws Error,
/// and changes nothing, when another data group has the ids of one, the layout does not fit 64 bits
/// or the samples, and as AddChannel does.
/// @param record  of each data group but for what BeamRecord changes; of that channel, with the
///                sizes and quantities that SetLayout gives
/// @param samples of the beams one behind the other, in the order of the setup; they stay where
///                they are and must live as long as the inspection
/// @return in the order of the setup; without beams the one data group of the channel
UTDATA_API std::vector<DataGroup> AddBeams(Inspection& inspection,
                                           const CGDataTypeFDD& record,
                                           const ChannelSetup& setup,
                                           std::span<std::byte> samples);

}  // namespace utdata
