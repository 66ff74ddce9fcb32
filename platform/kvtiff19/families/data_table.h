// The field table of data groups. The group's block item, which is not a field, says where the
// samples are; the data pointer, its size and the group handle are of this process only and are not
// stored.
#pragma once

#include "platform/kvtiff19/families/field_table.h"

namespace utdata::kvtiff19 {

/// Item code of a data group's sample block.
inline constexpr std::uint16_t sampleBlockCode = 100;

template <>
struct FieldTable<CGDataTypeFDD> {
  using Record = CGDataTypeFDD;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{
        UTDATA_FIELD(1,
                     dataClass,
                     Id("class", OneOf(choice::dataClasses)),
                     "plus 0x8000 for a multi-channel master"),
        UTDATA_FIELD(2, dataName, Fixed(text), ""),
        UTDATA_FIELD(3, dataNameText, Fixed(text), "second line of the name"),
        UTDATA_FIELD(4, channelId, Id("channel"), "from 0"),
        UTDATA_FIELD(5, channelName, Fixed(text), ""),
        UTDATA_FIELD(6, subChannelId, Id("sub_channel"), "0: not a sub-channel group"),
        UTDATA_FIELD(7, subChannelName, Fixed(text), ""),
        UTDATA_FIELD(8, gateId, Id("gate"), "gate number plus multiples of 2000"),
        UTDATA_FIELD(9, gateName, Fixed(text), ""),
        UTDATA_FIELD(
            10, layoutWords, Fixed(List()), "equal in a multi-channel master and its elements"),
        UTDATA_FIELD(11, columnQuantity, Fixed(quantity), ""),
        UTDATA_FIELD(12, columnResolution, OnAxis("columnUnits", 1e-6), "per column"),
        UTDATA_FIELD(13, columnOffset, OnAxis("columnUnits", -farthest), ""),
        UTDATA_FIELD(14, columnUnits, Fixed(OneOf(choice::axisUnits)), ""),
        UTDATA_FIELD(15, rowQuantity, Fixed(quantity), ""),
        UTDATA_FIELD(16, rowResolution, OnAxis("rowUnits", 1e-6), "per row"),
        UTDATA_FIELD(17, rowOffset, OnAxis("rowUnits", -farthest), ""),
        UTDATA_FIELD(18, rowUnits, Fixed(OneOf(choice::axisUnits)), ""),
        UTDATA_FIELD(19, sampleQuantity, Fixed(quantity), "samples of one A-scan"),
        UTDATA_FIELD(20, sampleResolution, Fixed(duration), "per sample, two-way"),
        UTDATA_FIELD(21, sampleOffset, instant, ""),
        UTDATA_FIELD(22, sampleUnits, Fixed(OneOf(choice::axisUnits)), ""),
        UTDATA_FIELD(23, compressionBits, Fixed(quantity), "carried, not interpreted"),
        UTDATA_FIELD(24,
                     compressionLSBit,
                     Fixed(quantity),
                     "position of the least significant bit; carried, not interpreted"),
        UTDATA_FIELD(25,
                     dataMinimum,
                     Fixed(number),
                     "of the sample values; below zero it is full scale of negative ones"),
        UTDATA_FIELD(26, dataMaximum, Fixed(number), "of the sample values; full scale"),
        UTDATA_FIELD(27,
                     dataResolution,
                     Fixed(number),
                     "data units per sample value; amplitudes in percent do not use it"),
        UTDATA_FIELD(28, dataOffset, Fixed(number), "data units; at sample value 0"),
        UTDATA_FIELD(29,
                     probeAngle,
                     In(unit::angle, -89.999, 89.999),
                     "refracted; 90 degrees or more count as 89.999"),
        UTDATA_FIELD(30, probeSkew, turn, ""),
        UTDATA_FIELD(31, probeThird, number, "carried, not interpreted"),
        UTDATA_FIELD(32, probeFourth, turn, "an angle"),
        UTDATA_FIELD(33, tofdValue, number, "carried in the TOFD record"),
        UTDATA_FIELD(34, partThickness, length, ""),
        UTDATA_FIELD(
            35, inspectionRadius, In(unit::length, 1e-6, farthest), "of the outer surface"),
        UTDATA_FIELD(
            36, probeSeparation, In(unit::length, 1e-6, farthest), "between the two TOFD probes"),
        UTDATA_FIELD(37, soundSpeed, In(unit::soundSpeed, 1, 1e5), ""),
        UTDATA_FIELD(38, tofd, yesNo, "time-of-flight diffraction"),
        UTDATA_FIELD(39, inspectionGeometry, OneOf(choice::geometries), ""),
        UTDATA_FIELD(40,
                     geometryKind,
                     reference,
                     "16, 17 probes on the outer surface, 18, 19 on the inner one"),
        UTDATA_FIELD(41,
                     cellSize,
                     Fixed(quantity),
                     "bytes from one cell to the next, if more than its samples"),
        UTDATA_FIELD(42, sampleSize, Fixed(quantity), "bytes per sample"),
        UTDATA_FIELD(
            43,
            fileFormat,
            Fixed(quantity),
            "bits: 0x1 unrectified signed samples are stored as offset binary, 0x100 no meaning in "
            "a file"),
        UTDATA_FIELD(44,
                     storageMode,
                     Fixed(OneOf(choice::storageModes)),
                     "cells: one after the other; indexed: one 32-bit offset per cell from the "
                     "block's start (0: no samples), then the cells"),
        UTDATA_FIELD(
            45,
            byteSwap,
            Fixed(yesNo),
            "other than 0: 16-bit samples of some classes are stored most significant byte first"),
        UTDATA_FIELD(46, unitSystem, Fixed(OneOf(choice::unitSystems)), ""),
        UTDATA_FIELD(47,
                     m_dataType,
                     Fixed(OneOf(choice::sampleTypes)),
                     "signed and unsigned whole numbers of 8 and 16 bits"),
        UTDATA_FIELD(48, m_rectification, Fixed(OneOf(choice::rectifications)), ""),
        UTDATA_FIELD(49, m_dataScale, Fixed(OneOf(choice::dataScales)), ""),
        UTDATA_FIELD(50, m_dataUnits, Fixed(OneOf(choice::axisUnits)), ""),
        UTDATA_FIELD(51, m_bookmarkType, As(FieldRole::Kind, OneOf(choice::bookmarkTypes)), ""),
        UTDATA_FIELD(52, m_patchId, Id("patch"), ""),
        UTDATA_FIELD(53, m_maxPatchId, Fixed(reference), ""),
        UTDATA_FIELD(54, m_patchName, Fixed(text), "")};
  }();
};

}  // namespace utdata::kvtiff19
