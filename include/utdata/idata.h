// The data item: one data group of an inspection, with its identity, its place under a
// multi-channel master, its inspection parameters, its units on every axis and the way to its
// samples.
//
// A file set makes, owns and destroys its data items. An item owns a working copy of its group
// record and the run-time descriptor that is built from it; it refers to the volume set, which
// outlives it, and gives its unit set back to that.
//
// Locks. Each item has a re-entrant lock of its own; operations say whether they take it, and take
// no other but those of the items they concern. Of two items' locks a master's is taken before its
// element's, both after a file set's. Ids are read in one piece while another thread changes them.
// Units take no lock: the host serialises their use. Reads that take no lock are not protected from
// changes on another thread.
//
// Memory. Construction, operations that give texts or lists, and idata1_SubChannelAdd may let
// std::bad_alloc pass, and then have changed nothing, neither here nor in other items. Destruction,
// parameters, units and tables take none.
//
// Axes are those of kvt_enumAxis. A multi-channel master is a data item that gathers the data
// groups of one channel's sub-channels, its elements.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "interfaces/kvtiff19.h"
#include "interfaces/pellam.h"
#include "utdata/enum.h"
#include "utdata/idatatypes.h"
#include "utdata/item.h"
#include "utdata/rdata.h"
#include "utdata/unit.h"

class CFSet;  // holds the items; an item reaches it through the document
class CIDataLst;
class CUnitSet;
class CVolumeSet;
class IGDataSupplier;

/// One data group of a file set.
class UTDATA_API CIData : public utdata::PlacedItem {
 public:
  /// Makes the item of a group record. The parameter database is asked for the channel's electronic
  /// scanning through the document.
  ///
  /// The record is normalised first, so that whoever reads it may count, divide and walk by it:
  /// - sound speed not above 0, or not finite: reported, 5890 m/s; inspection radius and probe
  ///   separation likewise, without a report: 0.0573 m and 0.001 m; probe angle of 90 degrees or
  ///   more: a debug trace, 89.999 degrees
  /// - columns, rows and samples 0 or above 2^31 - 1: 1; a layout of 2^63 bytes or more: one
  ///   column, row and sample; sample size below that of the sample type: the type's
  /// - one column or row: its step is 0.001 and its units are metres when they are neither metres
  ///   nor degrees
  /// - a step that is 0 or not finite: 0.001 of columns and rows, 2e-8 s of samples; a negative
  ///   step of samples: its size (scan axes may run backwards). The step of position C-scans'
  ///   values, not above 0 or not finite: 2e-8 s
  /// - data range that is reversed: turned; minimum not finite: 0; maximum not finite: the largest
  ///   value of the sample type
  /// - any other float not finite: 0, of the data resolution 1; texts without a terminator: cut
  ///   after 31 characters
  /// - sample types follow the rectification and the range: unrectified unsigned samples from 0 on
  ///   become signed ones around 0, with gdata_OptionOffsetBinary set (not classes 3 and 17, not
  ///   16-bit scaled analog data); rectified signed samples from 0 on become unsigned ones when
  ///   their range fits (not class 17). A type that is not known is reported and stays
  /// @param record   normalised in place, and given a bookmark type when it has none; then copied.
  ///   Null is reported and makes a bare item
  /// @param data     kept, not interpreted
  /// @param volumes  gives the document and the units; not owned, outlives the item
  /// @param external not 0: the record's data pointer is a table of the caller's, which is
  ///   attached, as one of the record's data size unless that is 0, and never freed by the item
  /// @param reserved not used
  CIData(CGDataTypeFDD* record, void* data, CVolumeSet* volumes, int external, long* reserved);
  /// A bare item: no record, no descriptor, no units.
  CIData(void* data, CVolumeSet* volumes);
  CIData(const CIData&) = delete;
  CIData& operator=(const CIData&) = delete;
  /// Detaches an external table, leaves its master and releases its elements; links to the item
  /// answer null from then on.
  ~CIData() override;

  /// Destroys the item, which must have left its file set.
  void idata9_DeferDelete();
  /// Whether a data item lives at an address; any address may be asked, it is not read.
  [[nodiscard]] static bool IsValidObject(CIData* item);

  // ---- identity and status

  int idata0_Init();  ///< no effect
  [[nodiscard]] IGDataSupplier* GetDocument() const;
  /// A bare item leaves the record alone.
  void idata1_GetId(idata_typeId& id) const;
  /// A missing record is reported; a bare item leaves it alone.
  void idata1_GetName(idata_typeName* names) const;
  /// The record copy, owned by the item; null in a bare item.
  [[nodiscard]] CGDataTypeFDD* idata1_GetGInfoRef();
  [[nodiscard]] const CGDataTypeFDD* idata1_GetGInfoRef() const;
  /// The descriptor, owned by the item; null in a bare item. Ids may be changed through the
  /// pointer: the file set looks at the item in every look-up from then on. Who only reads takes
  /// Descriptor, who only attaches a table AttachTable, and look-ups stay fast.
  [[nodiscard]] CRDataTypeDD* idata1_GetInfoRef() const;
  /// The descriptor, to be read.
  [[nodiscard]] const CRDataTypeDD* Descriptor() const;
  /// Gives the descriptor a table as CRDataTypeDD::SetDiskTable does, and marks the data as loaded
  /// when there is one then. Null takes it away. Nothing for a bare item.
  void AttachTable(char* table, bool memoryMapped);
  /// The same with the table's size in bytes, and marks the volume as loaded too. A table that the
  /// layout does not fit is refused. @return whether the item has the table
  bool AttachTable(char* table, bool memoryMapped, std::uint64_t size);

  /// The modified and the new flag, under the lock. A bare item is not modified and is new.
  [[nodiscard]] int idata1_ModifGetStatus() const;
  void idata1_ModifClear();
  [[nodiscard]] int idata1_NewGetStatus() const;
  void idata1_NewClear();
  /// The flags as they stand, without the lock.
  [[nodiscard]] int idata3_IsModified() const;
  [[nodiscard]] int idata3_IsNew() const;
  void idata3_Modified();       ///< sets the modified flag, under the lock
  void idata3_New();            ///< sets the new flag, under the lock
  void idata3_ClearModified();  ///< under the lock
  void idata3_ClearNew();       ///< under the lock

  // ---- labels

  /// Channel, patch and gate as a viewer shows them, each followed by a space. Without the lock.
  /// @param label     by name, where there is one
  /// @param idLabel   by id: "C 1 P2 G3 "
  /// @param withPatch not 0: the patch is part of both
  /// A bare item or a missing output is reported, and nothing is written.
  void idata3_GetChannelIdName(std::wstring* label, std::wstring* idLabel, int withPatch) const;
  /// The channel, and the sub-channel of a sub-channel group that is no master: "C05 : [2]" without
  /// names. Under the lock.
  void idata3_GetChannelName(std::wstring* out) const;

  // ---- masters and elements

  /// Whether the data class has the multi-channel-master bit.
  [[nodiscard]] bool idata1_IsMultiChannelMaster() const;
  /// Whether the item is a sub-channel's data group, of a class that is gathered, with a master;
  /// which is the item itself when linear merging made it one and nobody has added it to another.
  [[nodiscard]] bool idata1_IsMultiChannelElement() const;
  /// Appends an element, whose master this item becomes, under the lock. An element that a master
  /// lists already, this one or another, leaves that list. The master takes the element's data
  /// type, and its sub-channel id when that is larger. An element that differs in layout is
  /// reported and added all the same. Null, a bare item, the item itself, one that lists this item
  /// directly or through others, and a call on an item that gathers none are reported and change
  /// nothing. Always true.
  bool idata1_SubChannelAdd(CIData* element);
  /// Takes an element out of this master's list, under the lock; the element goes on naming its
  /// master. One that is not in the list is reported. Always true.
  bool idata1_SubChannelRemove(CIData* element);
  /// The first element with a sub-channel id; the first element of all when `n` exceeds the number
  /// of elements or none has that id; null without elements. An item that has no list of elements
  /// answers with itself.
  [[nodiscard]] CIData* idata1_SubChannelGet(long n);
  [[nodiscard]] std::uint32_t idata1_SubChannelQty() const;
  /// The elements in the order of their adding, owned by the item, to be read only; null for an
  /// item that gathers none.
  [[nodiscard]] CIDataLst* idata1_SubChannelGetList() const;
  /// The master while it lives, which is the item itself for a master; null for an item without.
  [[nodiscard]] CIData* idata1_SubChannelMaster() const;
  [[nodiscard]] CIData* idata1_SubChannelLastModifiedGet() const;
  /// Replaces `out` with the elements ordered by bookmark type, channel, sub-channel and gate id;
  /// equal ones keep their order.
  void GetOrderedSubChannelList(CIDataLst* out) const;
  /// Makes the master's descriptor that of its first element, whose table it then shares without
  /// owning it. Identity as a master, links to C-scans and units stay the master's. Under the lock;
  /// nothing for an item that is no master or has no element.
  void idata1_UpdateMasterChannel();
  void NotifyChangeToConsList();  ///< no effect
  /// Gives a bookmark type to the item's master and to the elements that SubChannelGet finds for
  /// the numbers 1 to their quantity. Nothing for an item without a master.
  void SetDataBookmarkTypeofAssociatedChannel(const eDataBookmarkType& type);

  // ---- inspection parameters: of the descriptor; a bare item has none, answers 0 and takes none

  /// Fills in the parameters, skew and fourth value from 0 up to 360 degrees. Under the lock. Null
  /// is reported. Always 0.
  int idata3_GetInspParam(idata_typeInspParams* params) const;
  /// Gives descriptor and record copy all parameters but the resolutions; skew and fourth value are
  /// normalised. The record copy of an amplitude C-scan keeps its sample offset; position C-scans
  /// take it for their data offset too. Then the item is modified and its units follow. Under the
  /// lock. Null, or a value that is not finite, is reported and changes nothing. The integer is not
  /// used. Always 0.
  int idata1_ModifyInspParam(idata_typeInspParams* params, int);
  /// Under the lock. Null is reported.
  void idata3_GetTOFDParam(idata_typeTOFD* tofd) const;
  /// As idata1_ModifyInspParam, and gives descriptor and record copy the resolutions of columns and
  /// rows and what `tofd` holds, whose thickness and sound speed count; the sample offsets become
  /// smaller by its correction. Under the lock.
  void idata3_ModifyTOFDParam(idata_typeTOFD* tofd, idata_typeInspParams* params);
  [[nodiscard]] int idata3_IsTOFD() const;           ///< 1 or 0
  [[nodiscard]] float idata3_GetProbeAngle() const;  ///< degrees
  [[nodiscard]] float idata3_GetProbeSkew() const;   ///< from 0 up to 360 degrees; under the lock
  [[nodiscard]] float idata3_GetPartThickness() const;  ///< m
  /// In metres, finite: else reported and nothing. The descriptor's alone, under the lock; units
  /// follow with the next change.
  void idata3_SetPartThickness(float thickness);
  void idata3_SetPartOutsideDiameter(
      double diameter);  ///< likewise the inspection radius, which is half of it
  /// Where the chord between the two probes lies on a curved surface: on the outer one for geometry
  /// kinds 16 and 17, else on the inner.
  /// @param sagitta   m, of the surface above the chord; negative on the inner surface
  /// @param halfChord m
  /// @return 1; 0 with nothing written for a flat part, a missing output, and a surface of
  ///   diameter 0
  int GetCircularParameter(double* sagitta, double* halfChord) const;

  // ---- units: no lock unless stated; a bare item has none

  /// The item's units, made with it and destroyed with it. Each axis converts to the base of the
  /// volume set's axis: columns and rows to what the record has them in, samples to the one-way
  /// path in metres, amplitudes to percent of full scale.
  [[nodiscard]] CUnitSet* idata3_UnitsGet() const;
  [[nodiscard]] CVolumeSet* idata3_GetVSet() const;
  [[nodiscard]] kvt_enumUnitSystems idata3_GetUnitSystem() const;  ///< under the lock
  /// The item's unit of an axis; of family unit_Point whatever the data unit. Null where there is
  /// none. Lives as long as the item.
  [[nodiscard]] CUnit* idata3_GetUnit(kvt_enumAxis axis,
                                      unit_enumUnits family,
                                      unit_enumDataUnit unit) const;
  /// The unit chosen for an axis, null where none is. At first one is chosen for amplitudes, and
  /// for the samples of TOFD (mm of depth) and of angle C-scans in degrees.
  /// @param alternative not 0: the second choice that the sample axis has; without effect on other
  ///   axes
  [[nodiscard]] CUnit* idata3_GetCurrentUnit(kvt_enumAxis axis, int alternative) const;
  /// Chooses for this item alone. A unit that the axis does not have leaves the choice as it is.
  /// The last argument has no effect.
  void SetCurrentUnitType(kvt_enumAxis axis,
                          unit_enumUnits family,
                          unit_enumDataUnit unit,
                          int alternative,
                          int notify);
  /// Chooses for a master and all its elements, whichever of them is called; for any other item
  /// alone. Under the master's lock.
  void SetMasterCurrentUnitType(kvt_enumAxis axis,
                                unit_enumUnits family,
                                unit_enumDataUnit unit,
                                int alternative,
                                int notify);
  /// Chooses a unit of this type in the item and what is gathered with it, then in every
  /// multi-channel master of the channel. Null is reported. Queries the file set.
  void idata3_SetCurrentUnit(kvt_enumAxis axis, CUnit* unit, int alternative);
  void idata3_SetCurrentUnitWithoutNotification(kvt_enumAxis axis,
                                                CUnit* unit,
                                                int alternative);  ///< without the second step
  /// Digits after the decimal point of the chosen unit, if any: of the item, and of all that it is
  /// gathered with.
  void SetUnitPrecision(kvt_enumAxis axis, int alternative, long precision);
  void SetMasterUnitPrecision(kvt_enumAxis axis, int alternative, long precision);
  /// Applies a saved choice with its precision to the item and what it is gathered with;
  /// IsUnitRestored then answers 1.
  void idata3_RestoreUnit(kvt_enumAxis axis,
                          unit_enumUnits family,
                          unit_enumDataUnit unit,
                          long precision,
                          int alternative);
  /// Whether a saved choice was applied; an element answers with its master's flag.
  [[nodiscard]] int IsUnitRestored() const;
  void SetUnitRestored(int restored);  ///< of the item and what it is gathered with

  // ---- dimensions and data: 0 in a bare item

  /// Of columns, rows, samples and values (their range, cut to an integer), as the record copy has
  /// them: C-scans have the file's sample quantity here. Other axes are reported and have 0. Under
  /// the lock.
  [[nodiscard]] std::uint32_t idata3_GetDimQty(kvt_enumAxis axis) const;
  /// As the descriptor has them. Other axes are reported and have 0. Under the lock.
  [[nodiscard]] double idata3_GetDimResol(kvt_enumAxis axis) const;
  /// As the record copy has them. Other axes have 0. Under the lock.
  [[nodiscard]] double idata3_GetDimOffs(kvt_enumAxis axis) const;
  // The descriptor's values, which CRDataTypeDD explains, read without the lock.
  [[nodiscard]] std::uint32_t idata3_GetColQty() const;
  [[nodiscard]] double idata3_GetColResol() const;
  [[nodiscard]] double idata3_GetColOffs() const;
  [[nodiscard]] kvt_enumUnits idata3_GetColUnits() const;
  [[nodiscard]] std::uint32_t idata3_GetRowQty() const;
  [[nodiscard]] double idata3_GetRowResol() const;
  [[nodiscard]] double idata3_GetRowOffs() const;
  [[nodiscard]] kvt_enumUnits idata3_GetRowUnits() const;
  [[nodiscard]] std::uint32_t idata3_GetSampleQty() const;
  [[nodiscard]] double idata3_GetSampleResol() const;
  [[nodiscard]] double idata3_GetSampleOffs() const;
  [[nodiscard]] kvt_enumUnits idata3_GetSampleUnits() const;
  [[nodiscard]] std::uint32_t idata3_GetSampleSize() const;
  [[nodiscard]] double idata3_GetSoundSpeed() const;
  [[nodiscard]] double idata3_GetDataMin() const;
  [[nodiscard]] double idata3_GetDataMax() const;
  [[nodiscard]] gdata_enumDataClass idata3_GetDataId() const;  ///< data class, with the master bit
  [[nodiscard]] kvt_enumDataType idata3_GetDataType() const;   ///< under the lock
  /// The descriptor's data minimum and maximum, under the lock. A missing output is reported, and
  /// nothing is written.
  void idata3_GetAbsoluteMinMax(float* minimum, float* maximum) const;
  /// Makes a master load its elements, once; under its lock and each element's. An item that is no
  /// master loads nothing: its host attaches the table.
  /// @return 0; -1 for a bare item, when the volume is loaded, and when the data are loaded and
  ///   `volume` is not 0 or they are no volume
  int idata1_DataLoad(int volume);
  /// Loads, then copies the record copy, whose data pointer and data size become the table and its
  /// size (null and 0 for a master). Null is reported.
  void idata1_GetGInfoCopy(CGDataTypeFDD* out);
  /// The sample table, as soon as there is one: waits without limit, looking every 50 ms, until
  /// another thread attaches it. Takes no lock; the item has to outlive the call. A bare item is
  /// reported and has none. So as not to wait for ever, a host attaches every table before it asks,
  /// or asks idata1_GetInfoRef()->GetDiskTable() first, which never waits. Null when the last table
  /// to be attached was refused for being shorter than its layout.
  [[nodiscard]] void* idata3_GetDataTablePtr() const;
  [[nodiscard]] int IsDiskOrigin() const;
  void SetDiskOrigin();

  // By the descriptor's data class; only the amplitude test passes over the master bit.
  [[nodiscard]] bool idata1_DataIsVolume() const;
  [[nodiscard]] bool idata3_isAmplitudeData() const;
  [[nodiscard]] bool idata3_IsAnalogData() const;
  [[nodiscard]] bool idata3_IsEddyCurrentData() const;
  [[nodiscard]] bool idata3_IsBeamSimulation() const;
  [[nodiscard]] bool idata3_IsLABEnabled() const;

 private:
  friend struct utdata::ItemAccess;

  class LockScope;
  struct Inside;

  struct DestroyDescriptor {
    void operator()(CRDataTypeDD* descriptor) const;
  };

  /// What the parameter database knows of a channel.
  struct ChannelScanning {
    enumElectronicScanning mode = escan_Unknown;
    bool isLinearMerged = false;
  };

  static constexpr std::size_t alternativeSample =
      6;  ///< place of the alternative sample-axis unit among the current units

  [[nodiscard]] ChannelScanning ReadChannelScanning(std::uint32_t channelId) const;
  static void UpdateBookmarkType(const enumElectronicScanning& mode, CGDataTypeFDD* record);
  struct Partners;
  static void FindPartners(const CGDataTypeFDD& record, CVolumeSet& volumes, Partners& partners);
  static void FindForAmplitudes(const CGDataTypeFDD& record, CFSet& set, Partners& partners);
  static void FindForPositions(const CGDataTypeFDD& record, CFSet& set, Partners& partners);
  static void FindForEddyCurrent(const CGDataTypeFDD& record, CFSet& set, Partners& partners);
  /// Makes the links of both sides. Takes no memory.
  void Link(const Partners& partners);
  /// The part of every construction that the destructor answers for.
  CIData(void* data, CVolumeSet* volumes, int external);
  void TakeSampleAxisOf(const CGDataTypeFDD& position);
  [[nodiscard]] std::array<std::uint32_t, 6> Ids() const;
  void PublishIds();
  [[nodiscard]] CIData* ListedBy() const;
  [[nodiscard]] bool IsUnder(const CIData& item) const;
  bool TakeOut(CIData& element);
  void LeaveMaster();
  void LetElementsGo();
  void ReturnTableOf(const CIData& element);
  void GiveBookmarkType(eDataBookmarkType type);

  /// Makes the unit set with all its units and the point units. The descriptor must be there.
  /// Construction only.
  void InitializeUnits();
  /// Chooses the units of the data axis, and of the sample axis where the class or TOFD asks for
  /// it. Construction only.
  void ChooseInitialUnits();
  /// Gives descriptor and record copy another TOFD flag, and chooses the unit of the sample axis
  /// that an item made with that flag has; bookmark type and table stay. Then the item is modified.
  /// Nothing where the flag is the same. Under the lock. The descriptor must be there.
  UTDATA_LOCAL void TakeTofdFlag(std::int32_t tofd);
  [[nodiscard]] UTDATA_LOCAL CUnit* InitialSampleUnit() const;
  /// Brings every unit in line with the descriptor. Nothing for a bare item. Under the lock.
  void UpdateUnits();
  /// Hands an operation to whom it concerns: from an element to its master; from there to the
  /// elements in order, then to the master itself. An item without either gets it alone. Under the
  /// lock of the master.
  template <class Operation>
  void ForMasterAndElements(Operation operation);
  /// Makes a unit choice in every multi-channel master of the item's channel.
  void UpdateLinkedDatagroup(kvt_enumAxis axis,
                             unit_enumUnits family,
                             unit_enumDataUnit unit,
                             int alternative,
                             int notify);

  const std::unique_ptr<Inside> m_inside;  ///< locks, and links to other items
  std::atomic<std::int32_t> m_unitRestored{0};
  const std::int32_t m_external;
  std::atomic<std::int32_t> m_modified{0};
  std::atomic<std::int32_t> m_new{0};
  std::atomic<std::int32_t> m_diskOrigin{0};
  std::atomic<std::int32_t> m_loadStarted{0};  ///< 1 once a master has loaded its elements
  void* const m_data;                          ///< the host's, not interpreted
  CVolumeSet* const m_volumes;
  IGDataSupplier* const m_document;
  std::unique_ptr<CGDataTypeFDD> m_record;  ///< working copy; null in a bare item
  std::unique_ptr<CRDataTypeDD, DestroyDescriptor> m_descriptor;  ///< null in a bare item
  CUnitSet* m_pUnitInfo = nullptr;                                ///< owned through the volume set
  std::array<CUnit*, alternativeSample + 1>
      m_currentUnits{};  ///< by axis, then the alternative sample-axis unit; not owned
  std::array<CUnit*, 6> m_pointUnits{};   ///< by axis, not owned
  std::unique_ptr<CIDataLst> m_elements;  ///< present only in items that gather elements
};
