// The machine's own file system, through POSIX calls.
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdio>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "interfaces/os.h"
#include "platform/os/path.h"
#include "platform/os/posix_error.h"
#include "platform/os/posix_mapping.h"

namespace utdata::os {
namespace {

FileIdentity IdentityOf(const struct stat& status) {
  return {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

/// A path as system calls take it, without memory of the heap: what is to be taken away or brought
/// to the disk is reached also when that has run out. One that is too long stays too long.
class PosixPath {
 public:
  explicit PosixPath(std::wstring_view path) noexcept { PutPath(*this, path); }
  void push_back(char byte) noexcept {
    if (m_size < PATH_MAX) m_bytes[m_size++] = byte;
  }
  [[nodiscard]] const char* c_str() const noexcept { return m_bytes; }
  [[nodiscard]] bool IsEmpty() const noexcept { return m_bytes[0] == '\0'; }
  /// "." and "/" stay as they are.
  void CutToParent() noexcept {
    while (m_size > 1 && m_bytes[m_size - 1] == '/') --m_size;
    const std::size_t separator = std::string_view(m_bytes, m_size).find_last_of('/');
    if (separator == std::string_view::npos) m_bytes[0] = '.';
    m_size = separator == std::string_view::npos ? 1 : std::max<std::size_t>(separator, 1);
    m_bytes[m_size] = '\0';
  }

 private:
  std::size_t m_size = 0;
  char m_bytes[PATH_MAX + 1] = {};  // the system takes one byte less
};

/// The directory that a path names; "." for a name alone.
PosixPath DirectoryOf(std::wstring_view path) {
  const std::size_t size = path.find_last_of(L'/') + 1;
  return PosixPath(size == 0 ? L"." : path.substr(0, size));
}

constexpr int firstOfOurs = 3;  ///< descriptors below are the standard streams, open or not

/// Occupies the standard streams that are closed, so that no file opened meanwhile becomes one of
/// them. Writing to one of them fails, as to a closed stream.
class ClosedStreamsTaken {
 public:
  ClosedStreamsTaken() {
    for (int stream = 0; stream < firstOfOurs; ++stream)
      if (::fcntl(stream, F_GETFD) < 0) Take();
  }
  ClosedStreamsTaken(const ClosedStreamsTaken&) = delete;
  ClosedStreamsTaken& operator=(const ClosedStreamsTaken&) = delete;
  ~ClosedStreamsTaken() {
    for (std::size_t index = 0; index < m_count; ++index) ::close(m_taken[index]);
  }

 private:
  void Take() {
    const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (descriptor >= 0) m_taken[m_count++] = descriptor;
  }

  int m_taken[firstOfOurs] = {};
  std::size_t m_count = 0;
};

/// open, with a descriptor that is no standard stream; -1 with errno as it has it.
int OpenDescriptor(const char* path, int flags) {
  // One that is only read may be a standard stream for a moment: nobody can write to it.
  std::optional<ClosedStreamsTaken> taken;
  if ((flags & O_ACCMODE) != O_RDONLY) taken.emplace();
  const int opened = Uninterrupted([&] { return ::open(path, flags | O_CLOEXEC, 0666); });
  if (opened < 0 || opened >= firstOfOurs) return opened;
  const int moved = ::fcntl(opened, F_DUPFD_CLOEXEC, firstOfOurs);
  const int number = errno;
  ::close(opened);
  errno = number;
  return moved;
}

class PosixFile final : public File {
 public:
  explicit PosixFile(int descriptor) : m_descriptor(descriptor) {}
  PosixFile(const PosixFile&) = delete;
  PosixFile& operator=(const PosixFile&) = delete;
  ~PosixFile() override { ::close(m_descriptor); }

  Error ReadAt(std::uint64_t offset, std::span<std::byte> buffer, std::size_t& done) override {
    done = 0;
    while (done < buffer.size()) {
      if (!FitsOffset(offset + done)) return Error::None;
      const auto got = Uninterrupted([&] {
        return ::pread(m_descriptor,
                       buffer.data() + done,
                       buffer.size() - done,
                       static_cast<off_t>(offset + done));
      });
      if (got < 0) return LastError();
      if (got == 0) return Error::None;
      done += static_cast<std::size_t>(got);
    }
    return Error::None;
  }

  Error WriteAt(std::uint64_t offset, std::span<const std::byte> bytes) override {
    while (!bytes.empty()) {
      if (!FitsOffset(offset) || !FitsOffset(offset + bytes.size())) return Fail(Error::DiskFull);
      const auto put = Uninterrupted([&] {
        return ::pwrite(m_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
      });
      if (put <= 0) return put < 0 ? LastError() : Fail(Error::Other);
      bytes = bytes.subspan(static_cast<std::size_t>(put));
      offset += static_cast<std::uint64_t>(put);
    }
    return Error::None;
  }

  Error Sync() override {
    return Uninterrupted([&] { return ::fdatasync(m_descriptor); }) == 0 ? Error::None
                                                                         : LastError();
  }

  Error Size(std::uint64_t& size) override {
    struct stat status {};
    if (::fstat(m_descriptor, &status) != 0) return LastError();
    size = static_cast<std::uint64_t>(status.st_size);
    return Error::None;
  }

  Error IsStored(std::uint64_t offset,
                 std::uint64_t size,
                 std::uint64_t least,
                 bool& isStored) override {
    isStored = true;
    if (!FitsOffset(offset) || !FitsOffset(size) || !FitsOffset(offset + size))
      return Fail(Error::BadArgument);
    const off_t before = ::lseek(m_descriptor, 0, SEEK_CUR);
    const auto end = static_cast<off_t>(offset + size);
    std::uint64_t stored = 0;
    for (auto at = static_cast<off_t>(offset); at < end && stored < least;) {
      const off_t data = ::lseek(m_descriptor, at, SEEK_DATA);
      if (data < 0 && errno != ENXIO) return ::lseek(m_descriptor, before, SEEK_SET), Error::None;
      if (data < 0 || data >= end) break;
      at = std::min(end, std::max<off_t>(::lseek(m_descriptor, data, SEEK_HOLE), data + 1));
      stored += static_cast<std::uint64_t>(at - data);
    }
    isStored = stored >= least;
    return ::lseek(m_descriptor, before, SEEK_SET) < 0 ? LastError() : Error::None;
  }

  Error Truncate(std::uint64_t size) override {
    if (!FitsOffset(size)) return Fail(Error::DiskFull);
    const auto cut = [&] { return ::ftruncate(m_descriptor, static_cast<off_t>(size)); };
    return Uninterrupted(cut) == 0 ? Error::None : LastError();
  }

  Error Seek(std::uint64_t position) override {
    if (!FitsOffset(position)) return Fail(Error::Other);
    return ::lseek(m_descriptor, static_cast<off_t>(position), SEEK_SET) >= 0 ? Error::None
                                                                              : LastError();
  }

  Error Allocate(std::uint64_t offset, std::uint64_t size) override {
    if (size == 0) return Error::None;
    if (!FitsOffset(offset) || !FitsOffset(size) || !FitsOffset(offset + size))
      return Fail(Error::DiskFull);
    // Not posix_fallocate, which writes to each block where the file system cannot allocate, and
    // does not say so.
    const auto allocate = [&] {
      return ::fallocate(m_descriptor, 0, static_cast<off_t>(offset), static_cast<off_t>(size));
    };
    return Uninterrupted(allocate) == 0 ? Error::None : LastError();
  }

  Error Map(std::uint64_t offset, std::size_t size, std::unique_ptr<Mapping>& mapping) override {
    return MapPrivately(m_descriptor, offset, size, mapping);
  }

  Error CreateMapping(std::uint64_t size, std::unique_ptr<FileMapping>& mapping) override {
    std::uint64_t present = 0;
    if (const Error error = Size(present); error != Error::None) return error;
    if (present < size)
      if (const Error error = Truncate(size); error != Error::None) return error;
    return NewFileMapping(m_descriptor, size, mapping);
  }

  Error TryLock() override {
    return Uninterrupted([&] { return ::flock(m_descriptor, LOCK_EX | LOCK_NB); }) == 0
               ? Error::None
               : LastError();
  }

  void Unlock() noexcept override { ::flock(m_descriptor, LOCK_UN); }

  Error Identify(FileIdentity& identity) override {
    struct stat status {};
    if (::fstat(m_descriptor, &status) != 0) return LastError();
    identity = IdentityOf(status);
    return Error::None;
  }

  Error CopyPermissionsOf(const std::wstring& path) override {
    constexpr mode_t permissions = 0777;
    struct stat status {};
    if (::stat(PosixPath(path).c_str(), &status) != 0) return LastError();
    return ::fchmod(m_descriptor, status.st_mode & permissions) == 0 ? Error::None : LastError();
  }

 private:
  int m_descriptor;
};

class PosixFileSystem final : public FileSystem {
 public:
  Error Open(const std::wstring& path, OpenMode mode, std::unique_ptr<File>& file) override {
    static constexpr int flagsOf[] = {
        O_RDONLY, O_RDWR, O_RDWR | O_NOFOLLOW, O_RDWR | O_CREAT | O_EXCL};
    // Without O_NONBLOCK, opening a pipe would wait for its other end.
    const int flags = flagsOf[static_cast<std::size_t>(mode)] | O_NONBLOCK | O_NOCTTY;
    const PosixPath narrow(path);
    if (narrow.IsEmpty()) return Fail(Error::NotFound);
    const int descriptor = OpenDescriptor(narrow.c_str(), flags);
    if (descriptor < 0) {
      const bool isLink = errno == ELOOP && mode == OpenMode::ReadWriteHere;
      return isLink ? Fail(Error::NotAFile) : LastError();
    }
    std::unique_ptr<File> opened(new (std::nothrow) PosixFile(descriptor));
    if (!opened) {
      ::close(descriptor);
      if (mode == OpenMode::Create) ::unlink(narrow.c_str());
      return Fail(Error::NoMemory);
    }
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) return LastError();
    if (!S_ISREG(status.st_mode)) return Fail(Error::NotAFile);
    file = std::move(opened);
    return Error::None;
  }

  bool Exists(const std::wstring& path) override {
    struct stat status {};
    return ::lstat(PosixPath(path).c_str(), &status) == 0 || MayExist(LastError());
  }

  Error Identify(const std::wstring& path, FileIdentity& identity) override {
    struct stat status {};
    if (::stat(PosixPath(path).c_str(), &status) != 0) return LastError();
    identity = IdentityOf(status);
    return Error::None;
  }

  Error Rename(const std::wstring& from, const std::wstring& to, bool replace) override {
    const PosixPath source(from);
    const PosixPath target(to);
    if (replace) return ::rename(source.c_str(), target.c_str()) == 0 ? Error::None : LastError();
    if (::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0)
      return Error::None;
    if (errno != EINVAL && errno != ENOSYS) return LastError();
    // A file system without that call: a second name is refused when it is taken.
    if (::link(source.c_str(), target.c_str()) != 0) return LastError();
    if (::unlink(source.c_str()) == 0) return Error::None;
    const Error error = LastError();
    ::unlink(target.c_str());
    return error;
  }

  Error Remove(const std::wstring& path) override {
    return ::unlink(PosixPath(path).c_str()) == 0 ? Error::None : LastError();
  }

  Error SyncDirectoryOf(const std::wstring& path) override {
    const int descriptor = OpenDescriptor(DirectoryOf(path).c_str(), O_RDONLY | O_DIRECTORY);
    if (descriptor < 0) return LastError();
    const int result = Uninterrupted([&] { return ::fsync(descriptor); });
    const Error error = result == 0 || errno == EINVAL
                            ? Error::None
                            : LastError();  // EINVAL: directories need no sync here
    ::close(descriptor);
    return error;
  }

  Error FreeSpace(const std::wstring& path, std::uint64_t& bytes) override {
    PosixPath directory = DirectoryOf(path);
    struct statvfs status {};
    while (Uninterrupted([&] { return ::statvfs(directory.c_str(), &status); }) != 0) {
      const std::string_view failed = directory.c_str();
      if (errno != ENOENT || failed == "." || failed == "/") return LastError();
      directory.CutToParent();
    }
    bytes = std::uint64_t{status.f_bavail} * status.f_frsize;
    return Error::None;
  }

  Error Reserve(std::size_t size, std::unique_ptr<AddressRange>& range) override {
    return ReserveRange(size, range);
  }
};

std::atomic<FileSystem*> replacedFileSystem{nullptr};

}  // namespace

std::vector<std::string> NamesIn(const std::wstring& directory) {
  constexpr auto close = [](DIR* opened) { ::closedir(opened); };
  const std::unique_ptr<DIR, decltype(close)> opened(
      ::opendir(directory.empty() ? "." : PosixPath(directory).c_str()));
  if (!opened && errno == ENOMEM) throw std::bad_alloc();
  std::vector<std::string> names;
  if (opened)
    while (const dirent* const entry = ::readdir(opened.get())) names.emplace_back(entry->d_name);
  return names;
}

FileSystem& CurrentFileSystem() noexcept {
  static PosixFileSystem own;
  FileSystem* replaced = replacedFileSystem.load(std::memory_order_acquire);
  return replaced ? *replaced : own;
}

FileSystem* SetFileSystem(FileSystem* fileSystem) noexcept {
  return replacedFileSystem.exchange(fileSystem, std::memory_order_acq_rel);
}

}  // namespace utdata::os
