// The run-time description of a data group: its record, the byte sizes of its samples, its sample
// table, and what its data item keeps for viewers (links to the matching C-scans, point units,
// sample limits).
//
// One descriptor per data item, made on the heap and ended with Destroy. It has no lock: the data
// item holds its own while it changes fields, and nothing serialises Flush against readers of the
// table. The table and the loaded flags are published: who sees a table that another thread
// attached sees what that thread wrote before.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "interfaces/kvtiff19.h"
#include "utdata/itemlink.h"

class CIData;  // a data item owns its descriptor; the descriptor only passes on links to other
               // items
class CLookUpTable;
class CUnit;
class IGDataSupplier;

class UTDATA_API CRDataTypeDD : public CGDataTypeFDD {
 public:
  CRDataTypeDD();
  /// Takes over a record: C-scans get their sample axis from their data range, or from that of the
  /// matching C-scan.
  /// @param record     copied; null leaves an empty descriptor
  /// @param matched    partner of the same channel and gate, not owned, may be null
  /// @param meridioAmp amplitude C-scan linked to a position C-scan of gate number 11, 21 or 31,
  ///   not owned, may be null
  CRDataTypeDD(const CGDataTypeFDD* record, CIData* matched, CIData* meridioAmp);
  CRDataTypeDD(const CRDataTypeDD& other);  ///< as DuplicateDD_From
  ~CRDataTypeDD();                          ///< does not free the table

  CRDataTypeDD& operator=(const CGDataTypeFDD& record);  ///< copies the record only
  CRDataTypeDD& operator=(const CRDataTypeDD& other);    ///< as DuplicateDD_From
  /// Copies everything; the table is shared without being owned, and its allocation size becomes
  /// four bytes per sample of one A-scan.
  CRDataTypeDD& DuplicateDD_From(const CRDataTypeDD& source);
  /// The same; this object as its own source raises an assertion.
  CRDataTypeDD& AssociateProcessDD_From(CRDataTypeDD& source);
  /// Resets record and run-time fields; the table is dropped without being freed, the owned word
  /// stays.
  void initializeData();
  /// Clears the matching C-scan's link back, frees an owned table and deletes this object.
  void Destroy();

  // ---- sample table
  /// The table, or null: 32-bit words by which it starts, or one offset per cell with storage mode
  /// 1.
  [[nodiscard]] std::uint32_t* GetDiskTable() const {
    return m_diskTable.load(std::memory_order_acquire);
  }
  /// Attaches a table. Its first 36 bytes are cleared when they are a stale header: 0x3344 in the
  /// low half of the first 32-bit word and 0x5553 in that of the second. A table that the record
  /// makes shorter than 36 bytes has none. Any thread may read the table as soon as GetDiskTable
  /// answers it. A block that the record tells to be smaller than its layout is reported and not
  /// attached: the descriptor is then without a table and not loaded, and the block stays the
  /// caller's.
  /// @param table        null, the all-ones pointer, or samples; freed by Flush with delete[] of
  ///   std::byte, when owned and not mapped
  /// @param memoryMapped the table is a view of a file and is never freed here
  void SetDiskTable(char* table, bool memoryMapped);
  [[nodiscard]] unsigned long GetTableAllocationSize() const { return m_tableAllocationSize; }
  void SetTableAllocationSize(unsigned long bytes) {
    m_tableAllocationSize = static_cast<std::uint32_t>(bytes);
  }
  [[nodiscard]] int IsDataLoaded() const {
    return m_dataLoaded.load(std::memory_order_acquire) ? 1 : 0;
  }
  void SetDataLoaded(bool loaded) { m_dataLoaded.store(loaded, std::memory_order_release); }
  [[nodiscard]] int IsVolumeLoaded() const {
    return m_volumeLoaded.load(std::memory_order_acquire) ? 1 : 0;
  }
  void SetVolumeLoaded(bool loaded) { m_volumeLoaded.store(loaded, std::memory_order_release); }
  [[nodiscard]] bool GetUseMemoryMappedFilePointer() const {
    return m_useMemoryMapped.load(std::memory_order_relaxed);
  }
  [[nodiscard]] std::int32_t IsDataOwned() const { return m_dataOwned; }
  /// Drops the table, freeing it when it is owned and not mapped. Loaded flags stay. The argument
  /// is not used.
  void Flush(int);

  // ---- record
  [[nodiscard]] gdata_enumDataClass GetDataClass() const { return dataClass; }
  [[nodiscard]] std::uint32_t GetChannelID() const { return channelId; }
  [[nodiscard]] const wchar_t* GetChannelIDName() const { return channelName; }
  [[nodiscard]] std::uint32_t GetSubChannelID() const { return subChannelId; }
  [[nodiscard]] std::uint32_t GetGateId() const { return gateId; }
  [[nodiscard]] std::uint32_t GetColQty() const { return columnQuantity; }
  [[nodiscard]] double GetColResol() const { return columnResolution; }  ///< m or degrees
  [[nodiscard]] double GetColOffs() const { return columnOffset; }       ///< m or degrees
  [[nodiscard]] kvt_enumUnits GetColUnits() const { return columnUnits; }
  [[nodiscard]] std::uint32_t GetRowQty() const { return rowQuantity; }
  [[nodiscard]] double GetRowResol() const { return rowResolution; }  ///< m or degrees
  [[nodiscard]] double GetRowOffs() const { return rowOffset; }       ///< m or degrees
  [[nodiscard]] kvt_enumUnits GetRowUnits() const { return rowUnits; }
  void SetRowUnits(kvt_enumUnits units) { rowUnits = units; }
  [[nodiscard]] std::uint32_t GetSampleQty() const { return sampleQuantity; }
  [[nodiscard]] double GetSampleResol() const { return sampleResolution; }  ///< s, two-way
  [[nodiscard]] double GetSampleOffs() const { return sampleOffset; }       ///< s
  [[nodiscard]] std::uint32_t GetDataCompBits() const { return compressionBits; }
  [[nodiscard]] std::uint32_t GetDataCompLSBitsPos() const { return compressionLSBit; }
  [[nodiscard]] double GetDataMin() const { return dataMinimum; }
  [[nodiscard]] double GetDataMax() const { return dataMaximum; }
  [[nodiscard]] double GetDataResol() const { return dataResolution; }
  [[nodiscard]] double GetDataOffs() const { return dataOffset; }
  [[nodiscard]] double GetPartThickness() const { return partThickness; }  ///< m
  [[nodiscard]] double GetInspRadius() const { return inspectionRadius; }  ///< m
  [[nodiscard]] double GetSoundSpeed() const { return soundSpeed; }        ///< m/s
  [[nodiscard]] gdata_enumInspGeometry GetInspGeometry() const { return inspectionGeometry; }
  [[nodiscard]] std::uint32_t GetCellSize() const { return cellSize; }      ///< bytes
  [[nodiscard]] std::uint32_t GetSampleSize() const { return sampleSize; }  ///< bytes
  [[nodiscard]] gdata_bitmapFileOptions GetFileFormat() const { return fileFormat; }
  [[nodiscard]] kvt_enumStorMode GetStorageMode() const { return storageMode; }
  [[nodiscard]] int IsSwapNeeded() const { return byteSwap != 0 ? 1 : 0; }

  // ---- fixed answers
  [[nodiscard]] std::uint32_t GetModeID() const { return 0; }
  [[nodiscard]] std::uint32_t GetSubModeID() const { return 0; }
  [[nodiscard]] double GetLAB() const { return 0.0; }
  [[nodiscard]] double GetInUncontroled() const { return 0.0; }
  [[nodiscard]] double GetInUncontroledPos() const { return 0.0; }
  [[nodiscard]] double GetOutUncontroled() const { return 0.0; }
  [[nodiscard]] double GetOutUncontroledPos() const { return 0.0; }

  // ---- run-time fields
  [[nodiscard]] std::uint32_t GetVectorSize() const {
    return m_vectorSize;
  }  ///< bytes of one A-scan, modulo 2^32
  [[nodiscard]] std::uint32_t GetVolumeSize() const {
    return m_volumeSize;
  }  ///< bytes of all A-scans, modulo 2^32
  [[nodiscard]] std::uint32_t& GetGroupVersionNumber() { return m_groupVersion; }
  [[nodiscard]] std::uint32_t GetGroupVersionNumber() const { return m_groupVersion; }
  /// The partner while it lives, else null; not owned.
  [[nodiscard]] CIData* GetMatchedCScan() const { return m_matchedCScan.Get(); }
  void SetMatchedCScan(CIData* item) { m_matchedCScan = item; }
  [[nodiscard]] CIData* GetMeridioAmpCscan() const { return m_meridioAmpCScan.Get(); }
  void SetMeridioAmpCscan(CIData* item) { m_meridioAmpCScan = item; }
  /// Divisor of the slopes of the sample axis's units. 0 until the owner of the descriptor sets it,
  /// which must be before units are updated; 1 gives the slopes as they are.
  [[nodiscard]] double GetSampleAxisScale() const { return m_sampleAxisScale; }
  void SetSampleAxisScale(double scale) { m_sampleAxisScale = scale; }
  /// The native point unit of the column, row or sample axis, not owned; null until set, and for
  /// other axes.
  [[nodiscard]] CUnit* GetPointUnit(kvt_enumAxis axis) const {
    return axis <= kvt_AxisSample ? m_pointUnits[axis] : nullptr;
  }
  void SetPointUnits(CUnit* column, CUnit* row, CUnit* sample);
  [[nodiscard]] double GetSampleStart() const {
    return m_sampleStart;
  }  ///< first sample position in base units
  [[nodiscard]] double GetSampleStop() const {
    return m_sampleStop;
  }  ///< last sample position in base units
  void SetSampleLimits(float start, float stop);

  // ---- samples
  /// All bits of one sample: 0xFF, 0xFFFF, 0xFFFFFF, 0xFFFFFFFF for 1 to 4 bytes; 0 for none, as 4
  /// for more.
  [[nodiscard]] std::uint32_t GetFormatMask() const;
  [[nodiscard]] std::uint32_t FormatSample(unsigned int sample) const {
    return sample & GetFormatMask();
  }
  /// The look-up table of this group's samples, shared with groups of equal channel, gate and
  /// conversion; null when the document is null or has no table factory. A data class other than 1,
  /// 2 and 3 raises an assertion.
  /// @return released through the factory by the caller
  [[nodiscard]] CLookUpTable* GetLookUpTable(IGDataSupplier* document);

  /// Bytes that the table has at least, as far as the record tells; 0 when it does not.
  [[nodiscard]] std::uint64_t KnownTableSize() const;
  /// Bytes that the cells take: for storage by cells all their samples, for storage with offsets
  /// the offsets alone. 0 without cells; the largest value when the product does not fit.
  [[nodiscard]] std::uint64_t NeededTableSize() const;

 protected:
  void ValidateDiskTable(char* table) const;
  void UnlinkMatchingCScan();

 private:
  void DeriveSampleAxis();
  [[nodiscard]] std::uint64_t StatedTableSize() const;

  std::uint32_t m_vectorSize = 0;
  std::uint32_t m_volumeSize = 0;
  std::uint32_t m_reservedWord = 0;
  std::uint32_t m_groupVersion = 0;
  std::uint32_t m_reservedWords[2] = {};
  utdata::DataItemLink m_matchedCScan;
  utdata::DataItemLink m_meridioAmpCScan;
  double m_reservedValue = 0;
  double m_sampleAxisScale = 0;
  CUnit* m_pointUnits[3] = {};  ///< column, row, sample
  float m_reservedFloats[4] = {};
  float m_sampleStart = 0;
  float m_sampleStop = 0;
  std::uint32_t m_trailingWords[2] = {};
  std::atomic<bool> m_useMemoryMapped{false};  ///< published with the table
  std::int32_t m_dataOwned = 1;
  std::uint32_t m_tableAllocationSize = 0;
  std::atomic<std::uint32_t*> m_diskTable{nullptr};
  std::atomic<bool> m_dataLoaded{false};
  std::atomic<bool> m_volumeLoaded{false};
};
