// Taking the writer's lock, and the commit protocol.
#include "platform/kvtiff19/writer.h"

#include <initializer_list>
#include <utility>

#include "platform/kvtiff19/items.h"
#include "platform/kvtiff19/reader.h"
#include "platform/kvtiff19/serialise.h"

namespace utdata::kvtiff19 {
namespace {

using os::Error;

/// A page past the committed end while slots change: it marks the file as not at rest.
constexpr std::uint64_t restMark = pageSize;

Error WriteSlot(OpenFile& file, std::size_t slot, const CommitRecord& record) {
  return file.handle->WriteAt(slotOffsets[slot], EncodeSlot(record));
}

/// Writes the record to one slot, or both, and has it on the medium.
Error WriteSlotsAndSync(OpenFile& file,
                        std::initializer_list<std::size_t> slots,
                        const CommitRecord& record) {
  for (const std::size_t slot : slots)
    if (const Error error = WriteSlot(file, slot, record); error != Error::None) return error;
  return file.handle->Sync();
}

/// Brings a file that a writer left behind to rest. While the slots are written its size shows that
/// it is not at rest.
Error BringToRest(OpenFile& file) {
  Error error = WriteSlotsAndSync(file, {0, 1}, file.current);
  if (error == Error::None) error = file.handle->Truncate(file.current.end);
  return error;
}

/// status_MovedOn unless `path` still leads to the open file.
int CheckPlace(const OpenFile& file, const std::wstring& path, std::string_view gone) {
  bool isHere = false;
  if (const Error error = file.IsAt(path, isHere); error != Error::None)
    return FailOs(path, error, "cannot be looked at");
  return isHere ? SCFile::status_Ok : FailAt(file, SCFile::status_MovedOn, gone);
}

/// Takes the writer's lock on the file that was loaded, as it was loaded.
int LockUnmoved(OpenFile& file) {
  const Error locked = file.handle->TryLock();
  if (locked == Error::Busy)
    return FailAt(file, SCFile::status_Locked, "another writer has the file");
  if (locked != Error::None) return FailOs(file.path, locked, "cannot be locked");
  if (const int status = CheckPlace(file, file.path, "another file has taken its name"))
    return status;
  SlotState state;
  if (const int status = ReadSlots(file, state)) return status;
  if (state.record != file.current || state.origin != file.origin)
    return FailAt(file, SCFile::status_MovedOn, "it was changed since it was opened");
  if (state.atRest) return SCFile::status_Ok;
  std::uint64_t size = 0;
  Error error = file.handle->Size(size);
  if (error == Error::None) error = size > file.current.end ? BringToRest(file) : Error::Other;
  return error == Error::None ? SCFile::status_Ok
                              : FailOs(file.path, error, "cannot be made ready for writing");
}

/// Opens a loaded file once more, for writing, and checks that it is the same one.
int Reopen(const OpenFile& file, std::unique_ptr<os::File>& writable) {
  const Error error = file.fileSystem->Open(file.path, os::OpenMode::ReadWrite, writable);
  if (error == Error::AccessDenied)
    return FailAt(
        file, SCFile::status_ReadOnly, "it cannot be opened for writing: permission denied");
  if (error == Error::NotFound)
    return FailAt(file, SCFile::status_MovedOn, "it is not under its name any more");
  if (error != Error::None) return FailOs(file.path, error, "cannot be opened for writing");
  os::FileIdentity loaded;
  os::FileIdentity opened;
  for (const Error failure : {file.handle->Identify(loaded), writable->Identify(opened)})
    if (failure != Error::None) return FailOs(file.path, failure, "cannot be looked at");
  return loaded == opened ? SCFile::status_Ok
                          : FailAt(file, SCFile::status_MovedOn, "another file has taken its name");
}

/// Gives a new file, all of which is on the medium, its name.
int TakeName(OpenFile& file) {
  if (const int status = CheckPlace(file, file.partPath, "the file being written was taken away"))
    return status;
  if (file.replace)
    if (const Error error = file.handle->CopyPermissionsOf(file.path);
        error != Error::None && error != Error::NotFound)
      return FailOs(file.path, error, "its permissions cannot be kept");
  if (const Error error = file.fileSystem->Rename(file.partPath, file.path, file.replace);
      error != Error::None)
    return FailOs(file.path, error, "cannot take its name");
  file.isNew = false;
  return SCFile::status_Ok;
}

/// First commit of a new file: all of it on the medium, then the name. Until it has that, one of
/// its ends says that it is unfinished.
int CommitNew(OpenFile& file, const CommitRecord& record) {
  Error error = file.handle->WriteAt(record.end, EncodeUnfinishedMark());
  if (error == Error::None) error = file.handle->WriteAt(headerOffset, EncodeHeader(file.origin));
  for (const std::size_t slot : {0u, 1u})
    if (error == Error::None) error = WriteSlot(file, slot, record);
  if (error != Error::None) return FailOs(file.path, error, "cannot be written");
  error = file.handle->Sync();
  if (error != Error::None) return FailOs(file.path, error, "cannot be brought to the disk");
  return TakeName(file);
}

/// Puts the old record back after the new one could not be made durable; what stands behind the
/// committed end stays unless that worked, since the new record may still be on the medium.
void Revert(OpenFile& file) {
  if (WriteSlotsAndSync(file, {0}, file.current) == Error::None) return;
  file.handle->Unlock();
  file.writing = false;
}

int CommitAppend(OpenFile& file, const CommitRecord& record) {
  Error error = file.handle->Truncate(record.end + restMark);
  if (error == Error::None) error = file.handle->Sync();
  if (error != Error::None) return FailOs(file.path, error, "cannot be brought to the disk");
  error = WriteSlotsAndSync(file, {0}, record);
  if (error != Error::None) {
    Revert(file);
    return FailOs(file.path, error, "the commit record cannot be brought to the disk");
  }
  // The commit holds from here on. A second slot that could not be written leaves the mark behind
  // for the next writer to see.
  if (WriteSlotsAndSync(file, {1}, record) == Error::None)
    static_cast<void>(file.handle->Truncate(record.end));
  return SCFile::status_Ok;
}

/// Lets pending groups find their children by item index, as committed ones do.
void LinkChildren(const Segments& segments) {
  for (const auto& [node, start] : segments.bodies) {
    if (node->pending->children.empty()) continue;
    node->children.assign(node->itemCount, nullptr);
    for (const PendingChild& child : node->pending->children)
      node->children[child.index] = child.node;
  }
}

/// Makes the groups that were written views of their committed bytes.
void Adopt(OpenFile& file, Segments& segments) noexcept {
  for (const auto& [node, start] : segments.bodies) {
    const std::size_t size = DecodeItemHeader(segments.bytes.get() + start - itemHeaderSize).count;
    ViewBody(*node, Bytes(segments.bytes.get() + start, size));
    node->state = NodeState::Committed;
    node->itemOffsets.clear();
    node->pending.reset();
  }
  file.metadata.back() = std::move(segments.bytes);
  file.current = segments.record;
  file.committedTops = file.children.size();
}

/// Gives the writer's lock up at its end.
struct UnlockingScope {
  explicit UnlockingScope(OpenFile& lockedFile) : file(lockedFile) {}
  UnlockingScope(const UnlockingScope&) = delete;
  UnlockingScope& operator=(const UnlockingScope&) = delete;
  ~UnlockingScope() {
    file.handle->Unlock();
    file.writing = false;
  }
  OpenFile& file;
};

/// Writes what was gathered behind the committed end, then commits it.
int WriteGathered(OpenFile& file, Segments& segments) {
  const std::span<Node* const> tops = std::span(file.children).subspan(file.committedTops);
  const std::uint64_t offset = RoundUp(file.writeEnd, 4);
  if (!Serialise(tops, offset, file.current, segments))
    return FailAt(file, SCFile::status_TooLarge, "a group is larger than the format allows");
  LinkChildren(segments);
  file.metadata.emplace_back();
  ++segments.record.number;
  const Error error = file.handle->WriteAt(offset, {segments.bytes.get(), segments.size});
  if (error != Error::None) return FailOs(file.path, error, "cannot be written");
  return file.isNew ? CommitNew(file, segments.record) : CommitAppend(file, segments.record);
}

/// A file on its way to being written: it gives the lock and a second handle back unless it comes
/// to that.
class Beginning {
 public:
  Beginning(OpenFile& begun, std::unique_ptr<os::File> writable) : m_file(begun) {
    if (!writable) return;
    m_before = std::exchange(m_file.handle, std::move(writable));
  }
  Beginning(const Beginning&) = delete;
  Beginning& operator=(const Beginning&) = delete;
  ~Beginning() {
    if (m_file.writing) return;
    m_file.handle->Unlock();
    if (m_before) m_before.swap(m_file.handle);
  }

 private:
  OpenFile& m_file;
  std::unique_ptr<os::File> m_before;
};

}  // namespace

int BeginWrite(OpenFile& file) {
  if (file.writing) return SCFile::status_Ok;
  if (file.readOnly)
    return FailAt(file, SCFile::status_ReadOnly, "the file was opened for reading only");
  std::unique_ptr<os::File> writable;
  if (!file.isWritable)
    if (const int status = Reopen(file, writable)) return status;
  const Beginning beginning(file, std::move(writable));
  if (const int status = LockUnmoved(file)) return status;
  file.isWritable = file.writing = true;
  file.writeEnd = file.current.end;
  return SCFile::status_Ok;
}

int Commit(OpenFile& file) {
  if (file.failure) {
    const int status = Fail(file.failure, file.failureText);
    Drop(file);
    return status;
  }
  if (!file.writing || (file.isNew && !file.isWanted)) return SCFile::status_Ok;
  const bool wasNew = file.isNew;
  Segments segments;
  if (const int status = WriteGathered(file, segments)) {
    Drop(file);
    return status;
  }
  Adopt(file, segments);
  const UnlockingScope unlocking(file);
  if (!wasNew) return SCFile::status_Ok;
  // Still under the lock: from the renaming on, another writer may append.
  const Error error = file.fileSystem->SyncDirectoryOf(file.path);
  if (error == Error::None) {
    // The mark of an unfinished file goes; one that stays is a tail like any other.
    static_cast<void>(file.handle->Truncate(file.current.end));
    return SCFile::status_Ok;
  }
  FailOs(file.path, error, "it is written, but its name cannot be brought to the disk");
  return SCFile::status_NotDurable;
}

}  // namespace utdata::kvtiff19
