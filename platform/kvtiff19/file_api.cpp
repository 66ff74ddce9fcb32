// Files: opened, created, committed and closed.
#include <algorithm>

#include "platform/kvtiff19/guard.h"
#include "platform/kvtiff19/reader.h"

namespace utdata::kvtiff19 {
namespace {

SCFile::FileState StateOf(const SCFile::FileOrigin& origin, const CommitRecord& record) {
  return {origin.identity, record.number, ChecksumOf(record)};
}

int StartFile(const wchar_t* path, Node** file, std::unique_ptr<OpenFile>& opened) {
  if (!file) return BadCall("no place for the file handle");
  *file = nullptr;
  if (!path || !*path) return BadCall("no path");
  opened = std::make_unique<OpenFile>();
  opened->file = opened.get();
  opened->path = path;
  opened->fileSystem = &os::CurrentFileSystem();
  return SCFile::status_Ok;
}

int OpenExisting(const wchar_t* path, Node** file, bool readOnly) {
  std::unique_ptr<OpenFile> opened;
  if (const int status = StartFile(path, file, opened)) return status;
  opened->readOnly = readOnly;
  if (const os::Error error =
          opened->fileSystem->Open(opened->path, os::OpenMode::Read, opened->handle);
      error != os::Error::None)
    return FailOs(opened->path, error, "cannot be opened");
  if (const int status = ReadCommitted(*opened)) return status;
  *file = opened.release();
  return SCFile::status_Ok;
}

int CommitOrDrop(OpenFile& file) {
  const int status = Guarded([&] { return Commit(file); });
  if (status == SCFile::status_TooLarge && file.writing) Drop(file);
  return status;
}

/// What stands at `path` refuses a new file there: anything where nothing may be replaced, else
/// what is not a file.
int CheckPlace(const OpenFile& created) {
  os::FileSystem& fileSystem = *created.fileSystem;
  // A look that fails answers yes; a second one mostly knows.
  if (!fileSystem.Exists(created.path) || !fileSystem.Exists(created.path))
    return SCFile::status_Ok;
  std::unique_ptr<os::File> there;
  if (!created.replace) {
    os::FileIdentity identity;
    const os::Error error = fileSystem.Identify(created.path, identity);
    const bool isTaken = error == os::Error::None || error == os::Error::NotFound;
    return FailOs(created.path, isTaken ? os::Error::Exists : error, "cannot be created");
  }
  const os::Error error = created.fileSystem->Open(created.path, os::OpenMode::Read, there);
  return error == os::Error::NotAFile ? FailOs(created.path, error, "cannot be replaced")
                                      : SCFile::status_Ok;
}

int CreateNew(const wchar_t* path, Node** file, bool replace) {
  std::unique_ptr<OpenFile> created;
  if (const int status = StartFile(path, file, created)) return status;
  created->partPath = created->path + L".part";
  created->replace = replace;
  const auto identity = std::as_writable_bytes(std::span(created->origin.identity));
  if (const os::Error error = os::CurrentSurroundings().FillRandom(identity);
      error != os::Error::None)
    return FailOs(created->path, error, "cannot be created without random numbers");
  if (const int status = CheckPlace(*created)) return status;
  if (const int status = BeginNewFile(*created)) return status;
  *file = created.release();
  return SCFile::status_Ok;
}

int ReadOrigin(const wchar_t* path, SCFile::FileOrigin* origin, SCFile::FileState* state) {
  Node* none = nullptr;
  std::unique_ptr<OpenFile> file;
  if (const int status = StartFile(path, &none, file)) return status;
  if (const os::Error error = file->fileSystem->Open(file->path, os::OpenMode::Read, file->handle);
      error != os::Error::None)
    return FailOs(file->path, error, "cannot be opened");
  SlotState slots;
  if (const int status = ReadSlots(*file, slots)) return status;
  Give(origin, slots.origin);
  Give(state, StateOf(slots.origin, slots.record));
  return SCFile::status_Ok;
}

/// Whether a state's record names the groups of a file up to one of them, or none of them.
bool Contains(const OpenFile& file, const SCFile::FileState& state) {
  if (state.identity != file.origin.identity || state.commitNumber > file.current.number)
    return false;
  if (StateOf(file.origin, file.current) == state) return true;
  CommitRecord past;
  past.number = state.commitNumber;
  if (ChecksumOf(past) == state.commitChecksum) return true;
  // Every commit ends with a segment, but that of a new file without groups.
  return std::any_of(
      file.segmentsRead.rbegin(), file.segmentsRead.rend(), [&](const Link& segment) {
        ++past.segmentCount;
        past.newest = segment;
        past.end = segment.offset + segment.size;
        return ChecksumOf(past) == state.commitChecksum;
      });
}

}  // namespace
}  // namespace utdata::kvtiff19

using namespace utdata::kvtiff19;

namespace SCFile {

int file_Init(LockCallback lock,
              LockCallback unlock,
              AllocCallback alloc,
              FreeCallback free,
              ErrorCallback error,
              ProgressCallback progress) {
  return lock || unlock || alloc || free || error || progress ? BadCall("callbacks are not used")
                                                              : status_Ok;
}

int file_Open(const wchar_t* path, FileHandle* file) {
  return Guarded([&] { return OpenExisting(path, file, false); });
}

int file_OpenReadOnly(const wchar_t* path, FileHandle* file) {
  return Guarded([&] { return OpenExisting(path, file, true); });
}

int file_Create(const wchar_t* path, FileHandle* file) {
  return Guarded([&] { return CreateNew(path, file, false); });
}

int file_CreateEx(const wchar_t* path, FileHandle* file) {
  return Guarded([&] { return CreateNew(path, file, true); });
}

int file_Commit(FileHandle file) {
  if (!IsFile(file)) return BadCall("not a file");
  return CommitOrDrop(*file->file);
}

int file_Discard(FileHandle file) {
  if (!IsFile(file)) return BadCall("not a file");
  Drop(*file->file);
  return status_Ok;
}

int file_Close(FileHandle file) {
  if (!IsFile(file)) return BadCall("not a file");
  const std::unique_ptr<OpenFile> closed(file->file);
  const int status = CommitOrDrop(*closed);
  Abandon(*closed);
  return status;
}

int file_SetCharacterFormat(FileHandle file, int format) {
  if (!IsFile(file)) return BadCall("not a file");
  return format == 1 ? status_Ok
                     : FailAt(*file->file, status_BadArgument, "only character format 1 is known");
}

FileHandle file_OfGroup(Node* group) { return group ? group->file : nullptr; }

const wchar_t* file_Path(const Node* file) { return file ? file->file->path.c_str() : nullptr; }

FileOrigin file_Origin(const Node* file) { return file->file->origin; }

FileState file_State(const Node* file) { return StateOf(file->file->origin, file->file->current); }

bool file_Contains(const Node* file, const FileState& state) {
  return file && Contains(*file->file, state);
}

int file_ReadOrigin(const wchar_t* path, FileOrigin* origin, FileState* state) {
  return Guarded([&] { return ReadOrigin(path, origin, state); });
}

int file_MakeCompanion(FileHandle file,
                       std::uint32_t number,
                       const FileIdentity& base,
                       const FileState& predecessor) {
  if (!IsFile(file) || !file->file->isNew) return BadCall("not a new file");
  FileOrigin origin{file->file->origin.identity, number, base, predecessor};
  if (!origin.IsCompanion() || !IsOriginSound(origin)) return BadCall("no companion is like that");
  file->file->origin = origin;
  return status_Ok;
}

std::uint64_t file_CommitNumber(const Node* file) { return file ? file->file->current.number : 0; }

std::uint64_t file_CommittedSize(const Node* file) { return file ? file->file->current.end : 0; }

}  // namespace SCFile
