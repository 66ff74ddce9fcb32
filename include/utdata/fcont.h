// The file container: loads an inspection file into a descriptor of typed group lists, applies
// later modifications, reads the numbered companion files beside it, and writes descriptors back.
//
// CFCont keeps no state between calls and takes no lock: the host serialises loads, updates and
// writes of one descriptor. Different descriptors are independent.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "interfaces/framework.h"
#include "interfaces/kvtiff19.h"

class CDataNewGroup;
class CFContKVTiff;
class IGDataSupplier;
struct fcontsec_typeFileDescriptor;
namespace utdata::container {
class Changes;
struct Numbering;
}  // namespace utdata::container

/// One part of a defect record.
struct stDefectSubEntry {
  std::uint32_t number = 0;
  std::wstring firstText;
  std::wstring secondText;
  friend bool operator==(const stDefectSubEntry&, const stDefectSubEntry&) = default;
};

/// One record of the defect table.
struct stDefectExtern {
  double values[8] = {};  ///< in the order of the table's columns; their meaning is the host's
  std::wstring firstText;
  std::wstring secondText;
  std::uint32_t numbers[3] = {};
  std::vector<stDefectSubEntry> subEntries;  ///< in order
  /// Why reading the record ended before its last item, a line of UTF-8; empty for a whole one.
  /// What follows that item is lost in memory, not in the file: CFCont::FileWrite refuses it.
  std::string loss;
};

namespace utdata {

/// A numbered file beside an inspection file that is not the companion that its name promises.
struct CompanionFault {
  std::wstring path;  ///< of the file; of the first missing one where there is a gap
  std::string what;   ///< a line of UTF-8 that goes on behind its name
  bool isRead = false;
  bool isForeign = false;  ///< it belongs to another inspection
};

}  // namespace utdata

/// One opened inspection: its path, its open files and one list of group descriptors per group
/// type. The lists own nothing: descriptors belong to the file descriptor until the host hands them
/// to a file set, and are deleted with their family's `_Delete` (defect records with `delete`) by
/// whoever owns them then.
class UTDATA_API CFContTypeFileDescr {
 public:
  static constexpr std::size_t pathSize = 32767;  ///< wide characters of a path with its terminator

  CFContTypeFileDescr();
  CFContTypeFileDescr(const CFContTypeFileDescr&) = delete;
  CFContTypeFileDescr& operator=(const CFContTypeFileDescr&) = delete;
  /// Destroys the lists, last one first; deletes no descriptor and closes no file.
  ~CFContTypeFileDescr();

  /// Sets the status word and the defect-table flag to 0 and empties the path.
  void initializeData();
  /// Sets the path. False, and nothing is changed, when it does not fit.
  [[nodiscard]] bool SetPath(std::wstring_view newPath);

  std::int32_t status = 0;  ///< for the host; the container sets it to 0
  wchar_t path[pathSize];   ///< the loaded file, or the file to write; terminated
  CList<SCFile::FileHandle>
      files;  ///< open files, the loaded one first; closed by CFCont::FileClose
  CList<CGDataTypeFDD*> data;
  CList<CGChanTypeDescr*> channels;
  CList<CGSubchanTypeDescr*> subChannels;
  CList<CGGateTypeDescr*> gates;
  CList<CGPatchTypeDescr*> patches;
  CList<CGProbeTypeDescr*> probes;
  CList<CGSpecdimTypeDescr*> specimenDimensions;
  CList<CGSpecinfTypeDescr*> specimenInformation;
  CList<CGSpecmatTypeDescr*> specimenMaterials;
  CList<CGWeldTypeDescr*> welds;
  CList<CGInfoTypeDescr*> infos;
  CList<CGContourTypeDescr*> contours;
  CList<CGRefadjTypeDescr*> referenceAdjustments;
  CList<CGMeshTypeDescr*> meshes;
  CList<CGSpecdefTypeDescr*> specimenDefinitions;
  CList<CGDacTypeDescr*> dacs;
  CList<stDefectExtern*> defects;
  CList<CGWeldScanPlanDescr*> weldScanPlans;
  CList<CGWeldFillDescr*> weldFills;
  std::int32_t defectTableFlag =
      0;  ///< non-zero: writing emits the defect table. Set by the host; loading leaves it 0

  /// Whether UpdateSubChannelList has given numbers.
  [[nodiscard]] bool IsNumbered() const { return m_numbering != nullptr; }

 private:
  friend class CFCont;
  friend class utdata::container::Changes;

  std::unique_ptr<utdata::container::Numbering> m_numbering;  ///< null: not numbered
};

/// Loads, updates, writes and closes file descriptors.
class UTDATA_API CFCont {
 public:
  /// Initialises the file-format library once per process; may be called from several threads.
  CFCont();

  /// Loads one file, its modifier groups applied.
  /// @param path      of the file; one of 32767 characters or more is refused
  /// @param supplier  not used
  /// @param newGroups receives the data groups that arrived through modifiers, with the file's
  ///   path; may be null
  /// @return a descriptor owned by the caller, or null when the file or one of its groups cannot be
  ///   read: nothing is left open, what newGroups recorded of it is dead, and
  ///   SCFile::file_LastError says why. A defect record alone may come back shortened, see
  ///   utdata::ShortenedDefects
  [[nodiscard]] CFContTypeFileDescr* FileLoad(const wchar_t* path,
                                              IGDataSupplier* supplier,
                                              CDataNewGroup* newGroups);

  /// Closes the descriptor's files and empties its group lists without deleting the group
  /// descriptors, whose group handles, sample references and mapped samples are dead from then on.
  /// The handle list keeps its closed handles; the host destroys the descriptor afterwards.
  void FileClose(CFContTypeFileDescr* descriptor);

  /// Reads the numbered companion files (B.A01, B.A02, ... beside B) into a loaded descriptor, in
  /// order, without a gap.
  /// @param path    of the base file
  /// @param options eight integers; entry 4 non-zero reads ".A01", entry 5 non-zero reads ".A02",
  ///                the others have no effect ("A" is a capital letter, as the container writes it)
  /// @param newGroups as for FileLoad, with each companion's own path
  /// @return 0, or 1 when a companion cannot be read or belongs to another inspection: the
  ///         descriptor is then closed and deleted with everything in it, and what newGroups
  ///         recorded of it is dead
  ///
  /// A descriptor whose sub-channels are numbered stays so: the companions' groups are numbered
  /// with those that are there.
  [[nodiscard]] int FileUpdate(const wchar_t* path,
                               CFContTypeFileDescr* descriptor,
                               const int options[8],
                               IGDataSupplier* supplier,
                               CDataNewGroup* newGroups);

  /// Reads the companions that belong to a loaded descriptor: as FileUpdate with entries 4 and 5
  /// set, but where FileUpdate goes by the names, this goes by what the files say of themselves.
  /// One is read when it belongs to the descriptor's first file, has the number of its name, and
  /// was written on the file read before it. A descriptor of a companion alone gets none.
  /// @param faults receives what is wrong, in the order of the numbers: files that were not read,
  ///   numbers that are missing, and files that were written on an earlier state of the one before
  ///   them, which are read all the same
  /// @return as FileUpdate; 1 also when memory runs out
  [[nodiscard]] int UpdateFromCompanions(CFContTypeFileDescr* descriptor,
                                         CDataNewGroup* newGroups,
                                         std::vector<utdata::CompanionFault>& faults);

  /// Writes a descriptor and commits it, signed with the time and the SCFile::SigningScope that
  /// stands on this thread.
  /// - `loaded` null: a new file at the path of `descriptor`; `newFile` non-zero refuses an
  ///   existing file, zero replaces one. The file's handle is returned through `file` and belongs
  ///   to the caller, who closes it.
  /// - `loaded` given, `newFile` non-zero: the changes against `loaded`, into the next numbered
  ///   companion of its path, which joins the files of `loaded`. A gap in the numbering, any
  ///   higher number that exists, writes nothing and returns 0; the files of `loaded` are then no
  ///   more than before. Number 99 is
  ///   written after 98 listed ones, but FileUpdate lists no more than 98: what it holds does not
  ///   come back. A host stops at 98 and saves the whole under a new name. A path whose companion's
  ///   name does not fit 260 wide characters answers status_TooLarge.
  /// - `loaded` given, `newFile` zero: the changes against `loaded`, appended to the last file of
  ///   `loaded`, which is returned through `file` and stays that descriptor's.
  ///
  /// On success the descriptors of `loaded` that changes were written against take over their new
  /// values, so that the next changes are written against what the files then hold. A data group of
  /// `descriptor` that is written against another gets its cell size.
  ///
  /// Changed weld scan plans and fills have no modifier code: they are written whole and never
  /// applied. Loading lists the old one, then the new one, and CFSet::fset_AddGWeldScanPlan and
  /// fset_AddGWeldFill keep the first that they are given: a host takes the last of those with the
  /// same ids.
  ///
  /// The defect table of `descriptor` is written when its defect-table flag is set. Within one file
  /// the last table counts, so that an append must hold every record of that file; tables of
  /// several files add up, so that a companion must hold new records only. A shortened record
  /// (stDefectExtern::loss) is not written, nor is a table appended to a file whose own has one:
  /// status_Damaged.
  ///
  /// Sub-channels and data groups of a numbered descriptor are written under the ids that the files
  /// know them by, new ones so that loading and numbering gives them the numbers that they have now
  /// (see UpdateSubChannelList). A whole write goes by the records: those of a numbered descriptor,
  /// and copies of them, say what they were read as.
  /// @param topGroup receives the top group of a whole new file; may be null
  /// @param file     see above; may be null where the caller does not become its owner
  /// @param writeFlag 0: a data group that `loaded` lacks leaves a copy in its data list, the base
  ///                  of later writes. The copy belongs to `loaded` like every other; its samples
  ///                  are those in the file, its data pointer is null
  /// @return 0 when everything is on the medium. SCFile::status_NotDurable: all is written as after
  ///   0, and the new file stands under its name, which may not outlive a power cut. Any other
  ///   status is that of the call that failed: files and `loaded` are as before
  [[nodiscard]] int FileWrite(CFContTypeFileDescr* loaded,
                              CFContTypeFileDescr* descriptor,
                              int newFile,
                              SCFile::GroupHandle* topGroup,
                              SCFile::FileHandle* file,
                              int writeFlag);

  /// Normalises sub-channel numbering after loading: either no group has sub-channels and every id
  /// becomes 0, or ids count from 1. When a sub-channel descriptor has id 0, all of them are
  /// shifted by 1. The data groups of a channel are shifted with them where more of their ids so
  /// name a descriptor; else they count from 1 already. One with id 0 in a channel without
  /// sub-channel 0 is the channel's own and stays 0, and so does one without a name where data
  /// groups carry sub-channel names.
  ///
  /// Only memory is changed: the files keep their ids, and the number of a loaded group follows
  /// from them. Numbering again, or before and after FileUpdate, gives the same numbers.
  void UpdateSubChannelList(CFContTypeFileDescr* descriptor);

 private:
  void FcontClose(CFContTypeFileDescr* descriptor);
  bool ReadInto(CFContTypeFileDescr* descriptor,
                const wchar_t* path,
                CFContKVTiff* reader,
                fcontsec_typeFileDescriptor* work,
                CDataNewGroup* newGroups);
  bool Merge(CFContTypeFileDescr* descriptor,
             const wchar_t* path,
             fcontsec_typeFileDescriptor* work,
             CDataNewGroup* newGroups);
  bool ReadCompanions(CFContTypeFileDescr* descriptor,
                      const wchar_t* path,
                      const int options[8],
                      CDataNewGroup* newGroups);
  void UpdateFileDescriptor(CFContTypeFileDescr* descriptor, fcontsec_typeFileDescriptor* work);
  void ListRemoveAll(fcontsec_typeFileDescriptor* work);
  bool UpdateModifierGroup(CFContTypeFileDescr* descriptor,
                           fcontsec_typeFileDescriptor* work,
                           const wchar_t* path,
                           CDataNewGroup* newGroups);
  int WriteNewFile(CFContTypeFileDescr* descriptor,
                   int newFile,
                   SCFile::GroupHandle* topGroup,
                   SCFile::FileHandle* file,
                   int writeFlag);
  int WriteCompanion(CFContTypeFileDescr* loaded, CFContTypeFileDescr* descriptor, int writeFlag);
  int WriteAppended(CFContTypeFileDescr* loaded,
                    CFContTypeFileDescr* descriptor,
                    SCFile::FileHandle* file,
                    int writeFlag);
  int WriteNewFileDescriptor(SCFile::FileHandle file,
                             CFContTypeFileDescr* descriptor,
                             SCFile::GroupHandle* topGroup,
                             int writeFlag);
  int WriteExistingFileDescriptor(SCFile::FileHandle file,
                                  CFContTypeFileDescr* descriptor,
                                  utdata::container::Changes* changes);

  static std::int32_t m_init;  ///< 1 once the file-format library is initialised
};

namespace utdata {

/// A defect record that loading could not read whole.
struct ShortenedDefect {
  std::size_t place;   ///< in the descriptor's list of defect records, from 0
  std::string reason;  ///< a line of UTF-8
};

/// The defect records of a loaded descriptor that end where an item could not be read, in list
/// order; what follows in the file is not in memory.
[[nodiscard]] UTDATA_API std::vector<ShortenedDefect> ShortenedDefects(
    const CFContTypeFileDescr& descriptor);

/// Deletes every group descriptor and defect record that the lists hold, and empties the lists. For
/// a host that keeps the groups in the descriptor: call it before CFCont::FileClose, which forgets
/// them.
UTDATA_API void DeleteGroups(CFContTypeFileDescr& descriptor);

}  // namespace utdata
