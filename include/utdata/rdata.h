// The run-time description of a data group: its record, the byte sizes of its samples, its sample
// table, and what its data item keeps for viewers (links to the matching C-scans, point units,
// sample limits).
//
// A data item's descriptor is made on the heap and ended with Destroy. It has no lock: the data
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
  /// The table, or null: samples, or one 32-bit offset per cell with storage mode 1.
  [[nodiscard]] std::uint32_t* GetDiskTable() const;
  /// Whether the table may be read: neither null nor the all-ones pointer, which stands for a table
  /// that is not here.
  [[nodiscard]] bool HasTable() const;
  /// Attaches a table. Its first 36 bytes are cleared when they are a header of older writers
  /// (gdata_OldHeaderSize). Any thread may read the table as soon as GetDiskTable answers it. Its
  /// size: of a view of a block on disk that of the view, which is then attached as a table of
  /// stated size; of the record's data pointer the record's data size, when that is not 0; else
  /// what its cells need. What the record says of samples elsewhere does not count.
  /// @param table        null, the all-ones pointer, or samples; freed by Flush with delete[] of
  ///   std::byte, when owned and not mapped
  /// @param memoryMapped the table is a view of a file and is never freed here
  void SetDiskTable(char* table, bool memoryMapped);
  /// The same with the table's size. A table that is shorter than its layout is reported and not
  /// attached: the descriptor then has no table and is not loaded, IsTableRefused answers true, and
  /// the table stays the caller's.
  /// @param size bytes of the table; one of storage by cells has to hold every cell, one with
  ///   offsets the offsets and each cell that they name. Other storage modes are not measured
  /// @return whether it is attached
  bool SetDiskTable(char* table, bool memoryMapped, std::uint64_t size);
  /// Whether the last table to be attached was refused.
  [[nodiscard]] bool IsTableRefused() const;
  [[nodiscard]] unsigned long GetTableAllocationSize() const;
  void SetTableAllocationSize(unsigned long bytes);
  [[nodiscard]] int IsDataLoaded() const;
  void SetDataLoaded(bool loaded);
  [[nodiscard]] int IsVolumeLoaded() const;
  void SetVolumeLoaded(bool loaded);
  [[nodiscard]] bool GetUseMemoryMappedFilePointer() const;
  [[nodiscard]] std::int32_t IsDataOwned() const;
  /// Drops the table, freeing it when it is owned and not mapped. Loaded flags stay. The argument
  /// is not used.
  void Flush(int);

  // ---- record
  [[nodiscard]] gdata_enumDataClass GetDataClass() const;
  [[nodiscard]] std::uint32_t GetChannelID() const;
  [[nodiscard]] const wchar_t* GetChannelIDName() const;
  [[nodiscard]] std::uint32_t GetSubChannelID() const;
  [[nodiscard]] std::uint32_t GetGateId() const;
  [[nodiscard]] std::uint32_t GetColQty() const;
  [[nodiscard]] double GetColResol() const;  ///< m or degrees
  [[nodiscard]] double GetColOffs() const;   ///< m or degrees
  [[nodiscard]] kvt_enumUnits GetColUnits() const;
  [[nodiscard]] std::uint32_t GetRowQty() const;
  [[nodiscard]] double GetRowResol() const;  ///< m or degrees
  [[nodiscard]] double GetRowOffs() const;   ///< m or degrees
  [[nodiscard]] kvt_enumUnits GetRowUnits() const;
  void SetRowUnits(kvt_enumUnits units);
  [[nodiscard]] std::uint32_t GetSampleQty() const;
  [[nodiscard]] double GetSampleResol() const;  ///< s, two-way
  [[nodiscard]] double GetSampleOffs() const;   ///< s
  [[nodiscard]] std::uint32_t GetDataCompBits() const;
  [[nodiscard]] std::uint32_t GetDataCompLSBitsPos() const;
  [[nodiscard]] double GetDataMin() const;
  [[nodiscard]] double GetDataMax() const;
  [[nodiscard]] double GetDataResol() const;
  [[nodiscard]] double GetDataOffs() const;
  [[nodiscard]] double GetPartThickness() const;  ///< m
  [[nodiscard]] double GetInspRadius() const;     ///< m
  [[nodiscard]] double GetSoundSpeed() const;     ///< m/s
  [[nodiscard]] gdata_enumInspGeometry GetInspGeometry() const;
  [[nodiscard]] std::uint32_t GetCellSize() const;    ///< bytes
  [[nodiscard]] std::uint32_t GetSampleSize() const;  ///< bytes
  [[nodiscard]] gdata_bitmapFileOptions GetFileFormat() const;
  [[nodiscard]] kvt_enumStorMode GetStorageMode() const;
  [[nodiscard]] int IsSwapNeeded() const;

  // ---- fixed answers
  [[nodiscard]] std::uint32_t GetModeID() const;
  [[nodiscard]] std::uint32_t GetSubModeID() const;
  [[nodiscard]] double GetLAB() const;
  [[nodiscard]] double GetInUncontroled() const;
  [[nodiscard]] double GetInUncontroledPos() const;
  [[nodiscard]] double GetOutUncontroled() const;
  [[nodiscard]] double GetOutUncontroledPos() const;

  // ---- run-time fields
  [[nodiscard]] std::uint32_t GetVectorSize() const;  ///< bytes of one A-scan, modulo 2^32
  [[nodiscard]] std::uint32_t GetVolumeSize() const;  ///< bytes of all A-scans, modulo 2^32
  [[nodiscard]] std::uint32_t& GetGroupVersionNumber();
  [[nodiscard]] std::uint32_t GetGroupVersionNumber() const;
  /// The partner while it lives, else null; not owned.
  [[nodiscard]] CIData* GetMatchedCScan() const;
  void SetMatchedCScan(CIData* item);
  [[nodiscard]] CIData* GetMeridioAmpCscan() const;
  void SetMeridioAmpCscan(CIData* item);
  /// Divisor of the slopes of the sample axis's units. 0 until the owner of the descriptor sets it,
  /// which must be before units are updated; 1 gives the slopes as they are.
  [[nodiscard]] double GetSampleAxisScale() const;
  void SetSampleAxisScale(double scale);
  /// The native point unit of the column, row or sample axis, not owned; null until set, and for
  /// other axes.
  [[nodiscard]] CUnit* GetPointUnit(kvt_enumAxis axis) const;
  void SetPointUnits(CUnit* column, CUnit* row, CUnit* sample);
  [[nodiscard]] double GetSampleStart() const;  ///< first sample position in base units
  [[nodiscard]] double GetSampleStop() const;   ///< last sample position in base units
  void SetSampleLimits(float start, float stop);

  // ---- samples
  /// All bits of one sample: 0xFF, 0xFFFF, 0xFFFFFF, 0xFFFFFFFF for 1 to 4 bytes; 0 for none, as 4
  /// for more.
  [[nodiscard]] std::uint32_t GetFormatMask() const;
  [[nodiscard]] std::uint32_t FormatSample(unsigned int sample) const;
  /// The look-up table of this group's samples, shared with groups of equal channel, gate and
  /// conversion; null when the document is null or has no table factory. A data class other than 1,
  /// 2 and 3 raises an assertion.
  /// @return released through the factory by the caller
  [[nodiscard]] CLookUpTable* GetLookUpTable(IGDataSupplier* document) const;

  /// Bytes of the attached table; 0 without one, and when its size is not known.
  [[nodiscard]] std::uint64_t KnownTableSize() const;
  /// Bytes that a table has at least: for storage by cells those of all cells, for storage with
  /// offsets the offsets alone. 0 without cells and for other storage modes; the largest value when
  /// the product does not fit.
  [[nodiscard]] std::uint64_t NeededTableSize() const;

 protected:
  void ValidateDiskTable(char* table, std::uint64_t size) const;
  void UnlinkMatchingCScan();

 private:
  void DeriveSampleAxis();
  void StoreTable(char* table, bool memoryMapped, std::uint64_t size);
  [[nodiscard]] std::uint64_t TableSizeByRecord(const char* table) const;
  [[nodiscard]] bool HoldsItsCells(const char* table, std::uint64_t size) const;
  [[nodiscard]] std::uint64_t EndOfCells(const char* table, std::uint64_t size) const;
  [[nodiscard]] std::uint64_t CellExtent() const;

  static constexpr std::uint64_t unknownSize = ~std::uint64_t{0};

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
  std::atomic<std::uint64_t> m_tableSize{0};  ///< bytes, or unknownSize; published with the table
  std::atomic<bool> m_tableRefused{false};
  std::atomic<std::uint32_t*> m_diskTable{nullptr};
  std::atomic<bool> m_dataLoaded{false};
  std::atomic<bool> m_volumeLoaded{false};
};
