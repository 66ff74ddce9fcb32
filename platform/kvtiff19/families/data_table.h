// The field table of data groups. Where the samples are is told by the group's block item, which is
// not a field; the data pointer, its size and the group handle are of this process only and are not
// stored.
#pragma once

#include "platform/kvtiff19/families/field_table.h"

namespace utdata::kvtiff19 {

/// Item code of a data group's sample block.
inline constexpr std::uint16_t sampleBlockCode = 100;

template <>
struct FieldTable<CGDataTypeFDD> {
  using Record = CGDataTypeFDD;
  static constexpr std::tuple fields = {
      UTDATA_KEY(
          1,
          dataClass,
          "1 A-scan, 10 merged, 11 processed; C-scan: 2 amplitude, 3 position, 12 first position, "
          "13 last position, "
          "14 thickness, 15 statistic, 17 angle; eddy current: 5 X, 6 Y; 7 analog, 8 scaled, 9 "
          "counter; "
          "2000 beam simulation; 2001 advanced view; plus 0x8000 for a multi-channel master"),
      UTDATA_FIELD(2, dataName, ""),
      UTDATA_FIELD(3, dataNameText, "second line of the name"),
      UTDATA_KEY(4, channelId, "from 0"),
      UTDATA_FIELD(5, channelName, ""),
      UTDATA_KEY(6, subChannelId, "0: not a sub-channel group"),
      UTDATA_FIELD(7, subChannelName, ""),
      UTDATA_KEY(8, gateId, "gate number plus multiples of 2000"),
      UTDATA_FIELD(9, gateName, ""),
      UTDATA_FIELD(10, layoutWords, "equal in a multi-channel master and its elements"),
      UTDATA_FIELD(11, columnQuantity, ""),
      UTDATA_FIELD(12, columnResolution, "column units per column"),
      UTDATA_FIELD(13, columnOffset, "column units"),
      UTDATA_FIELD(14, columnUnits, "0 none, 1 s, 2 m, 3 degrees, 4 %, 5 dB, 6 V"),
      UTDATA_FIELD(15, rowQuantity, ""),
      UTDATA_FIELD(16, rowResolution, "row units per row"),
      UTDATA_FIELD(17, rowOffset, "row units"),
      UTDATA_FIELD(18, rowUnits, "as the column units"),
      UTDATA_FIELD(19, sampleQuantity, "samples of one A-scan"),
      UTDATA_FIELD(20, sampleResolution, "s per sample, two-way"),
      UTDATA_FIELD(21, sampleOffset, "s"),
      UTDATA_FIELD(22, sampleUnits, "as the column units"),
      UTDATA_FIELD(23, compressionBits, ""),
      UTDATA_FIELD(24, compressionLSBit, "position of the least significant bit"),
      UTDATA_FIELD(25, dataMinimum, "of the sample values"),
      UTDATA_FIELD(26, dataMaximum, "of the sample values; full scale"),
      UTDATA_FIELD(27, dataResolution, "data units per sample value"),
      UTDATA_FIELD(28, dataOffset, "data units"),
      UTDATA_FIELD(29, probeAngle, "refracted, degrees"),
      UTDATA_FIELD(30, probeSkew, "degrees"),
      UTDATA_FIELD(31, probeThird, "carried, not interpreted"),
      UTDATA_FIELD(32, probeFourth, "an angle, degrees"),
      UTDATA_FIELD(33, tofdValue, "carried in the TOFD record"),
      UTDATA_FIELD(34, partThickness, "m"),
      UTDATA_FIELD(35, inspectionRadius, "m"),
      UTDATA_FIELD(36, probeSeparation, "between the two TOFD probes, m"),
      UTDATA_FIELD(37, soundSpeed, "m/s"),
      UTDATA_FIELD(38, tofd, "1: time-of-flight diffraction"),
      UTDATA_FIELD(39, inspectionGeometry, "0 flat, 1 axial, 2 circumferential"),
      UTDATA_FIELD(40, geometryKind, "16 to 19: circular"),
      UTDATA_FIELD(41, cellSize, "bytes of one cell"),
      UTDATA_FIELD(42, sampleSize, "bytes per sample"),
      UTDATA_FIELD(43,
                   fileFormat,
                   "bits: 0x1 re-typed from offset binary, 0x100 low four bits carry no amplitude"),
      UTDATA_FIELD(44,
                   storageMode,
                   "0 cell after cell, 1 one 32-bit offset per cell from the block's start (0: no "
                   "samples), then the cells"),
      UTDATA_FIELD(45, byteSwap, "non-zero: samples are stored most significant byte first"),
      UTDATA_FIELD(46, unitSystem, "0 metric, 1 imperial"),
      UTDATA_FIELD(47,
                   m_dataType,
                   "2 signed 8-bit, 3 unsigned 8-bit, 4 signed 16-bit, 5 unsigned 16-bit"),
      UTDATA_FIELD(48, m_rectification, "0 none, 1 positive, 2 negative, 3 full wave"),
      UTDATA_FIELD(49, m_dataScale, "0 linear, 1 logarithmic"),
      UTDATA_FIELD(50, m_dataUnits, "as the column units"),
      UTDATA_KEY(51,
                 m_bookmarkType,
                 "0 none, 1 multi-channel, 2 single, 3 TOFD, 10 coupling, 17 multi-channel TOFD"),
      UTDATA_KEY(52, m_patchId, ""),
      UTDATA_FIELD(53, m_maxPatchId, ""),
      UTDATA_FIELD(54, m_patchName, "")};
};

}  // namespace utdata::kvtiff19
