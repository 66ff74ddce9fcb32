// Descriptors written: whole, or as changes against a loaded one.
#include <cwchar>
#include <memory>
#include <new>

#include "src/container/changes.h"
#include "src/container/companions.h"
#include "src/container/defects.h"
#include "utdata/fcont.h"

using namespace utdata::container;

namespace {

/// Takes a new file away that did not become whole.
struct AbandonFile {
  void operator()(SCFile::FileHandle file) const {
    SCFile::file_Discard(file);
    SCFile::file_Close(file);
  }
};
using NewFile = std::unique_ptr<SCFile::Node, AbandonFile>;

/// Whether what was written is in the file, be its name on the medium or not.
bool IsCommitted(int status) {
  return status == SCFile::status_Ok || status == SCFile::status_NotDurable;
}

/// Drops what a file that goes on living has gathered, unless it was committed.
class Gathering {
 public:
  explicit Gathering(SCFile::FileHandle gatheringFile) : m_file(gatheringFile) {}
  Gathering(const Gathering&) = delete;
  Gathering& operator=(const Gathering&) = delete;
  ~Gathering() { SCFile::file_Discard(m_file); }

 private:
  SCFile::FileHandle m_file;
};

/// Why the defect table of a descriptor is not written: it would take the place of records that
/// were not read whole. Empty when nothing is lost.
/// @param appendedTo the descriptor whose last file gets it, null for a new file
std::string LossOfDefects(const CFContTypeFileDescr& descriptor,
                          const CFContTypeFileDescr* appendedTo) {
  if (descriptor.defectTableFlag == 0) return {};
  std::string loss = LossIn(descriptor.defects);
  if (loss.empty() && appendedTo) loss = LossInLastTable(appendedTo->files.GetTail());
  return loss.empty() ? loss : "the defect table is not written over a loss: " + loss;
}

/// Commits a file, and lets the loaded descriptor take the changes over where the commit stands:
/// also when the last step failed, which brings a new name to the disk.
int Commit(SCFile::FileHandle file, Changes& changes) {
  const std::uint64_t number = SCFile::file_CommitNumber(file);
  const int status = SCFile::file_Commit(file);
  if (SCFile::file_CommitNumber(file) != number) changes.Settle();
  return status;
}

template <class Descriptor>
WrittenIds IdsOf(const WholeIds& ids, const Descriptor& descriptor) {
  if constexpr (hasSubChannelId<Descriptor>) return ids.Of(&descriptor);
  if constexpr (std::is_same_v<Descriptor, CGChanTypeDescr>)
    if (descriptor.stored.fixedNumber != utdata::StoredIds::none)
      return {0, descriptor.stored.fixedNumber};
  return {};
}

template <class Descriptor>
void WriteWhole(SCFile::GroupHandle top,
                const GroupType<Descriptor>& type,
                const CList<Descriptor*>& descriptors,
                const WholeIds& ids,
                int writeFlag) {
  const wchar_t* const nameAtCreation = type.HasModifierCode() ? L"" : type.primaryName;
  for (const Descriptor* descriptor : descriptors) {
    const SCFile::GroupHandle group =
        CreateGroup(top, type.primaryCode, type.primaryName, nameAtCreation);
    WriteUnder<Descriptor>(group, nullptr, *descriptor, IdsOf(ids, *descriptor), writeFlag);
  }
}

}  // namespace

int CFCont::FileWrite(CFContTypeFileDescr* loaded,
                      CFContTypeFileDescr* descriptor,
                      int newFile,
                      SCFile::GroupHandle* topGroup,
                      SCFile::FileHandle* file,
                      int writeFlag) {
  if (topGroup) *topGroup = nullptr;
  if (file) *file = nullptr;
  if (!descriptor || (!loaded && !file)) return SCFile::status_BadArgument;
  try {
    const bool isAppended = loaded && !newFile && !loaded->files.IsEmpty();
    if (const std::string loss = LossOfDefects(*descriptor, isAppended ? loaded : nullptr);
        !loss.empty())
      return SCFile::file_Fail(SCFile::status_Damaged, loss.c_str());
    if (!loaded) return WriteNewFile(descriptor, newFile, topGroup, file, writeFlag);
    if (newFile) return WriteCompanion(loaded, descriptor, writeFlag);
    return WriteAppended(loaded, descriptor, file, writeFlag);
  } catch (const std::bad_alloc&) {
    return SCFile::file_Fail(SCFile::status_TooLarge, "out of memory on writing an inspection");
  }
}

int CFCont::WriteNewFile(CFContTypeFileDescr* descriptor,
                         int newFile,
                         SCFile::GroupHandle* topGroup,
                         SCFile::FileHandle* file,
                         int writeFlag) {
  SCFile::FileHandle created = nullptr;
  int status = newFile ? SCFile::file_Create(descriptor->path, &created)
                       : SCFile::file_CreateEx(descriptor->path, &created);
  if (status != SCFile::status_Ok) return status;
  NewFile owned(created);
  SCFile::file_SetCharacterFormat(created, 1);
  SCFile::GroupHandle top = nullptr;
  status = WriteNewFileDescriptor(created, descriptor, &top, writeFlag);
  if (status == SCFile::status_Ok) status = SCFile::file_Commit(created);
  if (!IsCommitted(status)) return status;
  if (topGroup) *topGroup = top;
  *file = owned.release();
  return status;
}

int CFCont::WriteCompanion(CFContTypeFileDescr* loaded,
                           CFContTypeFileDescr* descriptor,
                           int writeFlag) {
  const std::wstring path = loaded->path;
  if (!CompanionNameFits(path))
    return SCFile::file_Fail(
        SCFile::status_TooLarge, path, "the path is too long for the name of a companion");
  if (loaded->files.IsEmpty())
    return SCFile::file_Fail(SCFile::status_BadArgument, path, "it was not loaded from a file");
  const int number = static_cast<int>(ListCompanions(path).size()) + 1;
  if (!CompanionsBehind(path, number).empty()) return SCFile::status_Ok;
  SCFile::FileState predecessor;
  int status = FindPredecessor(*loaded, number, predecessor);
  if (status != SCFile::status_Ok) return status;
  const std::wstring name = CompanionName(path, number);
  SCFile::FileHandle created = nullptr;
  status = SCFile::file_Create(name.c_str(), &created);
  if (status != SCFile::status_Ok) return status;
  NewFile owned(created);
  status = SCFile::file_MakeCompanion(created,
                                      static_cast<std::uint32_t>(number),
                                      InspectionOf(SCFile::file_Origin(loaded->files.GetHead())),
                                      predecessor);
  if (status != SCFile::status_Ok) return status;
  Changes changes(*loaded, writeFlag);
  status = WriteExistingFileDescriptor(created, descriptor, &changes);
  if (status != SCFile::status_Ok) return status;
  SCFile::file_SetCharacterFormat(created, 1);
  const POSITION joined = loaded->files.AddTail(created);
  status = Commit(created, changes);
  if (SCFile::file_CommitNumber(created) == 0)
    loaded->files.RemoveAt(joined);
  else
    owned.release();
  return status;
}

int CFCont::WriteAppended(CFContTypeFileDescr* loaded,
                          CFContTypeFileDescr* descriptor,
                          SCFile::FileHandle* file,
                          int writeFlag) {
  if (loaded->files.IsEmpty()) return SCFile::status_BadArgument;
  const SCFile::FileHandle last = loaded->files.GetTail();
  if (file) *file = last;
  const Gathering gathering(last);
  Changes changes(*loaded, writeFlag);
  int status = WriteExistingFileDescriptor(last, descriptor, &changes);
  if (status == SCFile::status_Ok) status = Commit(last, changes);
  return status;
}

int CFCont::WriteNewFileDescriptor(SCFile::FileHandle file,
                                   CFContTypeFileDescr* descriptor,
                                   SCFile::GroupHandle* topGroup,
                                   int writeFlag) {
  const int status = SCFile::file_GroupCreate(file, topGroup, codeTop, nameTop);
  if (status != SCFile::status_Ok) return status;
  const WholeIds ids(*descriptor);
  const auto writeWhole = [&](const auto& type) {
    WriteWhole(*topGroup, type, descriptor->*type.list, ids, writeFlag);
  };
  ForEach(WrittenBeforeDefects(), writeWhole);
  if (descriptor->defectTableFlag != 0) WriteDefectTable(*topGroup, descriptor->defects);
  ForEach(WrittenAfterDefects(), writeWhole);
  return SCFile::file_Sign(*topGroup);
}

int CFCont::WriteExistingFileDescriptor(SCFile::FileHandle file,
                                        CFContTypeFileDescr* descriptor,
                                        Changes* changes) {
  SCFile::GroupHandle top = nullptr;
  const int status = SCFile::file_GroupCreate(file, &top, codeTop, nameTop);
  if (status != SCFile::status_Ok) return status;
  const auto writeChanges = [&](const auto& type) {
    changes->Write(top, type, descriptor->*type.list);
  };
  ForEach(Modified(), writeChanges);
  if (descriptor->defectTableFlag != 0) WriteDefectTable(top, descriptor->defects);
  ForEach(WrittenAfterDefects(), writeChanges);
  if (const int refused = changes->Check(); refused != SCFile::status_Ok) return refused;
  return SCFile::file_Sign(top);
}
