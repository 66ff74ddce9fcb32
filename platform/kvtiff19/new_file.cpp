// NAME.part, the form of a new file until it is whole: made, emptied, and taken away when a killed
// writer left it.
#include <algorithm>

#include "platform/kvtiff19/writer.h"
#include "platform/os/path.h"

namespace utdata::kvtiff19 {
namespace {

using os::Error;

/// Whether NAME.part is what a killed writer left: empty, or marked as unfinished at its beginning
/// or its end. The mark may be cut short behind its text: no more of it was written.
Error IsUnfinished(os::File& part, bool& is) {
  is = false;
  std::uint64_t size = 0;
  if (const Error error = part.Size(size); error != Error::None || size == 0) {
    is = error == Error::None;
    return error;
  }
  const auto mark = EncodeUnfinishedMark();
  const auto text = std::find(mark.begin(), mark.end(), std::byte{0}) - mark.begin();
  const std::uint64_t least = size < pageSize ? static_cast<std::uint64_t>(text) : pageSize;
  for (const std::uint64_t at : {std::uint64_t{0}, size - std::min(size, pageSize)}) {
    std::array<std::byte, pageSize> page;
    std::size_t done = 0;
    if (const Error error = part.ReadAt(at, page, done); error != Error::None) return error;
    const auto got = page.begin() + static_cast<std::ptrdiff_t>(done);
    is = is || (done >= least && std::equal(page.begin(), got, mark.begin()));
  }
  return Error::None;
}

int RefusePart(const OpenFile& file) {
  const os::PathParts parts = os::SplitPath(file.partPath);
  return FailAt(file,
                SCFile::status_InTheWay,
                "cannot be created: " + os::NarrowPath(parts.name + parts.extension) +
                    " is in the way, and is no unfinished inspection file");
}

/// Removes NAME.part when a killed writer left it; afterwards another may already stand there.
/// Nothing is ever written into it: it may be a second name of somebody's file.
int RemoveUnfinished(const OpenFile& file) {
  const std::wstring& path = file.partPath;
  std::unique_ptr<os::File> part;
  Error error = file.fileSystem->Open(path, os::OpenMode::ReadWriteHere, part);
  if (error == Error::NotFound) return SCFile::status_Ok;
  if (error == Error::NotAFile || error == Error::AccessDenied) return RefusePart(file);
  if (error == Error::None) error = part->TryLock();
  if (error == Error::Busy)
    return FailAt(file, SCFile::status_Locked, "another writer is creating it");
  os::FileIdentity opened;
  os::FileIdentity there;
  if (error == Error::None) error = part->Identify(opened);
  if (error == Error::None) error = file.fileSystem->Identify(path, there);
  if (error == Error::NotFound || (error == Error::None && opened != there))
    return SCFile::status_Ok;  // its writer was done just now
  bool isOurs = false;
  if (error == Error::None) error = IsUnfinished(*part, isOurs);
  if (error == Error::None && !isOurs) return RefusePart(file);
  if (error == Error::None) error = file.fileSystem->Remove(path);
  return error == Error::None ? SCFile::status_Ok : FailOs(file.path, error, "cannot be created");
}

/// Makes NAME.part, locks it and marks it; `isMade` says whether its name is still this file's.
int MakePart(OpenFile& file, bool& isMade) {
  const Error locked = file.handle->TryLock();
  if (locked == Error::Busy)  // by one who takes it for what a killed writer left, and removes it
    return FailAt(file, SCFile::status_Locked, "another writer is creating it");
  Error error = locked;
  if (error == Error::None) error = file.IsAt(file.partPath, isMade);
  if (error == Error::None && isMade) error = EmptyNewFile(file);
  if (error == Error::None) return SCFile::status_Ok;
  if (isMade || locked != Error::None) static_cast<void>(file.fileSystem->Remove(file.partPath));
  return FailOs(file.path, error, "cannot be created");
}

}  // namespace

Error EmptyNewFile(OpenFile& file) noexcept {
  // Old bytes would show through holes.
  const Error error = file.handle->WriteAt(0, EncodeUnfinishedMark());
  file.writeEnd = dataStart;
  return error == Error::None ? file.handle->Truncate(pageSize) : error;
}

int BeginNewFile(OpenFile& file) {
  // Another writer's file may take its name between our looking and our making; then the name is
  // free again.
  constexpr int attempts = 64;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    const Error error = file.fileSystem->Open(file.partPath, os::OpenMode::Create, file.handle);
    if (error == Error::Exists) {
      if (const int status = RemoveUnfinished(file)) return status;
      continue;
    }
    if (error != Error::None) return FailOs(file.path, error, "cannot be created");
    bool isMade = false;
    if (const int status = MakePart(file, isMade)) return status;
    if (!isMade) continue;
    file.isNew = file.isWanted = file.isWritable = file.writing = true;
    return SCFile::status_Ok;
  }
  return FailAt(file, SCFile::status_Locked, "other writers keep creating it");
}

}  // namespace utdata::kvtiff19
