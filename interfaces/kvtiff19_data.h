// The record of a data group: identity, layout, scaling and inspection parameters of one block of
// samples.
#pragma once

#include <cstddef>
#include <cstdint>

#include "export.h"
#include "kvtiff19_types.h"

namespace utdata::kvtiff19 {
template <class Record>
struct FieldTable;
}

/// The same direction from 0 up to 360 degrees, 360 not included, also as a 32-bit float; 0 for
/// what is not finite.
[[nodiscard]] UTDATA_API double NormalizeAngle(double degrees);

/// Where a record's samples lie on disk.
struct gdata_typeSampleRef {
  static constexpr std::uint64_t none = ~std::uint64_t{0};

  std::uint64_t offset =
      none;  ///< bytes from the start of the file; all ones when the record has no samples on disk
  std::uint64_t size = 0;  ///< bytes
  SCFile::GroupHandle group =
      nullptr;             ///< open group that holds the block; valid until its file is closed
  std::uint32_t item = 0;  ///< index of the block in that group
};

/// Texts are terminated and hold at most 31 characters. The public fields are those that a data
/// item reads and changes; the others are reached through accessors. Copying copies the data
/// pointer and the group handle, not the samples. Never owns what it points at.
class UTDATA_API CGDataTypeFDD {
 public:
  static constexpr std::size_t nameSize = 32;  ///< wide characters of a text with its terminator

  CGDataTypeFDD() = default;

  /// Every field gets the value of a new record; the group handle and the data pointer become null.
  void InitializeData();

  gdata_enumDataClass dataClass = gdata_AScan;  ///< key
  wchar_t dataName[nameSize] = {};
  wchar_t dataNameText[nameSize] = {};  ///< second line of the name
  std::uint32_t channelId = 0;          ///< from 0; key
  wchar_t channelName[nameSize] = {};
  std::uint32_t subChannelId = 0;  ///< 0: not a sub-channel group; key
  wchar_t subChannelName[nameSize] = {};
  std::uint32_t gateId = 0;  ///< gate number plus multiples of 2000; key
  wchar_t gateName[nameSize] = {};
  std::uint32_t layoutWords[4] = {};  ///< equal in a multi-channel master and its elements
  std::uint32_t columnQuantity = 0;
  float columnResolution = 0;  ///< m or degrees per column
  float columnOffset = 0;      ///< m or degrees
  kvt_enumUnits columnUnits = kvt_UnitMetre;
  std::uint32_t rowQuantity = 0;
  float rowResolution = 0;  ///< m or degrees per row
  float rowOffset = 0;      ///< m or degrees
  kvt_enumUnits rowUnits = kvt_UnitMetre;
  std::uint32_t sampleQuantity = 0;  ///< samples of one A-scan
  float sampleResolution = 0;        ///< s per sample, two-way
  float sampleOffset = 0;            ///< s
  kvt_enumUnits sampleUnits = kvt_UnitSecond;
  std::uint32_t compressionBits = 0;
  std::uint32_t compressionLSBit = 0;  ///< position of the least significant bit
  float dataMinimum = 0;               ///< of the sample values
  float dataMaximum = 0;               ///< of the sample values; full scale
  float dataResolution = 1;            ///< per sample value
  float dataOffset = 0;
  float probeAngle = 0;        ///< refracted, degrees
  float probeSkew = 0;         ///< degrees
  float probeThird = 0;        ///< carried, not interpreted
  float probeFourth = 0;       ///< an angle, degrees
  float tofdValue = 0;         ///< carried in the TOFD record
  float partThickness = 0;     ///< m
  float inspectionRadius = 0;  ///< m
  float probeSeparation = 0;   ///< between the two TOFD probes, m
  float soundSpeed = 0;        ///< m/s
  std::int32_t tofd = 0;       ///< 1: time-of-flight diffraction
  gdata_enumInspGeometry inspectionGeometry = gdata_GeometryFlat;
  std::uint32_t geometryKind = 0;  ///< 16 to 19 select the circular formulas
  void* dataPointer = nullptr;   ///< samples in memory, not owned; null when they are on disk only
  std::uint64_t dataSize = 0;    ///< bytes at dataPointer; 0: not stated
  std::uint32_t cellSize = 0;    ///< bytes of one cell
  std::uint32_t sampleSize = 0;  ///< bytes per sample
  gdata_bitmapFileOptions fileFormat = gdata_OptionNone;
  kvt_enumStorMode storageMode = kvt_StorCells;
  std::int32_t byteSwap = 0;  ///< non-zero: samples are stored most significant byte first
  kvt_enumUnitSystems unitSystem = kvt_SystemMetric;
  gdata_typeSampleRef samples;  ///< set by reading the record
  utdata::StoredIds stored;

  [[nodiscard]] kvt_enumDataType GetDataType() const { return m_dataType; }
  void SetDataType(kvt_enumDataType type) { m_dataType = type; }
  [[nodiscard]] gdata_enumRectif GetDataRectification() const { return m_rectification; }
  void SetDataRectification(gdata_enumRectif rectification) { m_rectification = rectification; }
  [[nodiscard]] gdata_enumDataScale GetDataScale() const { return m_dataScale; }
  void SetDataScale(gdata_enumDataScale scale) { m_dataScale = scale; }
  [[nodiscard]] kvt_enumUnits GetDataUnits() const { return m_dataUnits; }
  void SetDataUnits(kvt_enumUnits units) { m_dataUnits = units; }
  [[nodiscard]] eDataBookmarkType GetDataBookmarkType() const { return m_bookmarkType; }
  void SetDataBookmarkType(eDataBookmarkType type) { m_bookmarkType = type; }
  [[nodiscard]] std::uint32_t GetPatchID() const { return m_patchId; }
  void SetPatchID(std::uint32_t id) { m_patchId = id; }
  [[nodiscard]] std::uint32_t GetMaxPatchIDValue() const { return m_maxPatchId; }
  void SetMaxPatchIDValue(std::uint32_t id) { m_maxPatchId = id; }
  /// The length of the patch's name; 0 when it has none and `name` is then left alone. The text
  /// lives as long as the record.
  std::uint64_t GetPatchIDName(const wchar_t** name) const;
  /// At most 31 characters are kept.
  void SetPatchIDName(const wchar_t* name);

  /// The open group that the record was read from, or null.
  [[nodiscard]] SCFile::GroupHandle GetGroupHandle() const { return m_group; }
  void SetGroupHandle(SCFile::GroupHandle group) { m_group = group; }

  /// Bytes of a sample block that is stored by cells: columns x rows cells, each as wide as its
  /// samples (one of a C-scan) or as the cell size, whichever is more. False when the product does
  /// not fit 64 bits or the storage mode is another.
  [[nodiscard]] bool LayoutSize(std::uint64_t& size) const;

 private:
  template <class Record>
  friend struct utdata::kvtiff19::FieldTable;  // the file layer's table of a record's fields

  kvt_enumDataType m_dataType = kvt_UInt16;
  gdata_enumRectif m_rectification = gdata_RectifNone;
  gdata_enumDataScale m_dataScale = gdata_ScaleLinear;
  kvt_enumUnits m_dataUnits = kvt_UnitPercent;
  eDataBookmarkType m_bookmarkType = bookmark_None;
  std::uint32_t m_patchId = 0;
  std::uint32_t m_maxPatchId = 0;
  wchar_t m_patchName[nameSize] = {};
  SCFile::GroupHandle m_group = nullptr;
};
