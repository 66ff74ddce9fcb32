// The file container: loads an inspection file into a descriptor of typed group lists, applies
// later modifications, reads the numbered companion files beside it, and writes descriptors back.
//
// CFCont keeps no state between calls and takes no lock: the host serialises loads, updates and
// writes of one descriptor. Different descriptors are independent.
#pragma once

#include <cstdint>
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
}

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
};

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
  /// @return a descriptor owned by the caller, or null: nothing is left open, and
  ///   SCFile::file_LastError says why
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
  /// @return 0, or 1 when a companion cannot be read: the descriptor is then closed and deleted
  ///         with everything in it, and what newGroups recorded of it is dead
  [[nodiscard]] int FileUpdate(const wchar_t* path,
                               CFContTypeFileDescr* descriptor,
                               const int options[8],
                               IGDataSupplier* supplier,
                               CDataNewGroup* newGroups);

  /// Writes a descriptor and commits it.
  /// - `loaded` null: a new file at the path of `descriptor`; `newFile` non-zero refuses an
  ///   existing file, zero replaces one. The file's handle is returned through `file` and belongs
  ///   to the caller, who closes it.
  /// - `loaded` given, `newFile` non-zero: the changes against `loaded`, into the next numbered
  ///   companion of its path, which joins the files of `loaded`. A gap in the numbering writes
  ///   nothing and returns 0; the files of `loaded` are then no more than before. A path whose
  ///   companion's name does not fit 260 wide characters answers status_TooLarge.
  /// - `loaded` given, `newFile` zero: the changes against `loaded`, appended to the last file of
  ///   `loaded`, which is returned through `file` and stays that descriptor's. Changed weld scan
  ///   plans and fills have no modifier code: they are written whole, and loading lists them after
  ///   what they change, so that of several with the same ids the last one counts.
  /// @param topGroup receives the top group of a whole new file; may be null
  /// @param file     see above; may be null where the caller does not become its owner On success
  /// the descriptors of `loaded` that changes were written against take over their new values, so
  /// that the next changes are told against what the files now say. A data group of `descriptor`
  /// that is written against another gets its cell size.
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
  /// becomes 0, or ids count from 1. When sub-channel descriptors count from 0, all of them are
  /// shifted by 1. The data groups of their channels are shifted with them only when they count
  /// from 0 too: one of them has id 0, and each names a sub-channel descriptor as numbered before.
  /// One that names none shows that the data groups count from 1 already. Where data groups carry
  /// sub-channel names, one with neither name nor id is the channel's own and stays 0.
  void UpdateSubChannelList(CFContTypeFileDescr* descriptor);

 private:
  void FcontClose(CFContTypeFileDescr* descriptor);
  bool ReadInto(CFContTypeFileDescr* descriptor,
                const wchar_t* path,
                CFContKVTiff* reader,
                fcontsec_typeFileDescriptor* work,
                CDataNewGroup* newGroups);
  bool ReadCompanions(CFContTypeFileDescr* descriptor,
                      const wchar_t* path,
                      const int options[8],
                      CDataNewGroup* newGroups);
  void UpdateFileDescriptor(CFContTypeFileDescr* descriptor, fcontsec_typeFileDescriptor* work);
  void ListRemoveAll(fcontsec_typeFileDescriptor* work);
  void UpdateModifierGroup(CFContTypeFileDescr* descriptor,
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

/// Deletes every group descriptor and defect record that the lists hold, and empties the lists. For
/// a host that keeps the groups in the descriptor: call it before CFCont::FileClose, which forgets
/// them.
UTDATA_API void DeleteGroups(CFContTypeFileDescr& descriptor);

}  // namespace utdata
