// The machine's own file system, through POSIX calls.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <utility>

#include "interfaces/os.h"
#include "platform/os/path.h"

namespace utdata::os {
namespace {

Error FromErrno(int number) {
  static constexpr std::pair<int, Error> table[] = {
      {ENOENT, Error::NotFound},
      {ENOTDIR, Error::NotFound},
      {EEXIST, Error::Exists},
      {ENOTEMPTY, Error::Exists},
      {EACCES, Error::AccessDenied},
      {EPERM, Error::AccessDenied},
      {EROFS, Error::AccessDenied},
      {EISDIR, Error::NotAFile},
      {ENXIO, Error::NotAFile},
      {ENODEV, Error::NotAFile},
      {ENOSPC, Error::DiskFull},
      {EDQUOT, Error::DiskFull},
      {EFBIG, Error::DiskFull},
      {EWOULDBLOCK, Error::Busy},
      {ENAMETOOLONG, Error::PathTooLong},
  };
  const auto* found =
      std::find_if(std::begin(table), std::end(table), [&](const auto& row) { return row.first == number; });
  return found == std::end(table) ? Error::Other : found->second;
}

Error LastError() { return FromErrno(errno); }

/// Runs a system call until a signal no longer interrupts it.
template <class Call>
auto Uninterrupted(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

class PosixMapping final : public Mapping {
 public:
  /// `base` and `length` are what was mapped; the view starts `skip` bytes into it.
  PosixMapping(void* base, std::size_t length, std::size_t skip) : m_base(base), m_length(length), m_skip(skip) {}
  PosixMapping(const PosixMapping&) = delete;
  PosixMapping& operator=(const PosixMapping&) = delete;
  ~PosixMapping() override { ::munmap(m_base, m_length); }
  std::byte* Data() const noexcept override { return static_cast<std::byte*>(m_base) + m_skip; }
  std::size_t Size() const noexcept override { return m_length - m_skip; }

 private:
  void* m_base;
  std::size_t m_length;
  std::size_t m_skip;
};

bool FitsOffset(std::uint64_t offset) {
  return offset <= static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
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
        return ::pread(m_descriptor, buffer.data() + done, buffer.size() - done, static_cast<off_t>(offset + done));
      });
      if (got < 0) return LastError();
      if (got == 0) return Error::None;
      done += static_cast<std::size_t>(got);
    }
    return Error::None;
  }

  Error WriteAt(std::uint64_t offset, std::span<const std::byte> bytes) override {
    while (!bytes.empty()) {
      if (!FitsOffset(offset) || !FitsOffset(offset + bytes.size())) return Error::DiskFull;
      const auto put =
          Uninterrupted([&] { return ::pwrite(m_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset)); });
      if (put <= 0) return put < 0 ? LastError() : Error::Other;
      bytes = bytes.subspan(static_cast<std::size_t>(put));
      offset += static_cast<std::uint64_t>(put);
    }
    return Error::None;
  }

  Error Sync() override {
    return Uninterrupted([&] { return ::fdatasync(m_descriptor); }) == 0 ? Error::None : LastError();
  }

  Error Size(std::uint64_t& size) override {
    struct stat status {};
    if (::fstat(m_descriptor, &status) != 0) return LastError();
    size = static_cast<std::uint64_t>(status.st_size);
    return Error::None;
  }

  Error Truncate(std::uint64_t size) override {
    if (!FitsOffset(size)) return Error::DiskFull;
    const auto cut = [&] { return ::ftruncate(m_descriptor, static_cast<off_t>(size)); };
    return Uninterrupted(cut) == 0 ? Error::None : LastError();
  }

  Error Map(std::uint64_t offset, std::size_t size, std::unique_ptr<Mapping>& mapping) override {
    // Pages of the machine may be larger than those of a file.
    const auto page = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    const auto skip = static_cast<std::size_t>(offset % page);
    if (!FitsOffset(offset) || size > std::numeric_limits<std::size_t>::max() - skip) return Error::Other;
    void* base = ::mmap(nullptr,
                        size + skip,
                        PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_NORESERVE,
                        m_descriptor,
                        static_cast<off_t>(offset - skip));
    if (base == MAP_FAILED) return LastError();
    mapping = std::make_unique<PosixMapping>(base, size + skip, skip);
    return Error::None;
  }

  Error TryLock() override {
    return Uninterrupted([&] { return ::flock(m_descriptor, LOCK_EX | LOCK_NB); }) == 0 ? Error::None : LastError();
  }

  void Unlock() noexcept override { ::flock(m_descriptor, LOCK_UN); }

  bool IsAt(const std::wstring& path) override {
    struct stat here {};
    struct stat there {};
    return ::fstat(m_descriptor, &here) == 0 && ::stat(NarrowPath(path).c_str(), &there) == 0 &&
           here.st_dev == there.st_dev && here.st_ino == there.st_ino;
  }

 private:
  int m_descriptor;
};

class PosixFileSystem final : public FileSystem {
 public:
  Error Open(const std::wstring& path, OpenMode mode, std::unique_ptr<File>& file) override {
    static constexpr int flagsOf[] = {O_RDONLY, O_RDWR, O_RDWR | O_CREAT | O_EXCL, O_RDWR | O_CREAT};
    // Without O_NONBLOCK, opening a pipe would wait for its other end.
    const int flags = flagsOf[static_cast<std::size_t>(mode)] | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    const std::string narrow = NarrowPath(path);
    if (narrow.empty()) return Error::NotFound;
    const int descriptor = Uninterrupted([&] { return ::open(narrow.c_str(), flags, 0666); });
    if (descriptor < 0) return LastError();
    auto opened = std::make_unique<PosixFile>(descriptor);
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) return LastError();
    if (!S_ISREG(status.st_mode)) return Error::NotAFile;
    file = std::move(opened);
    return Error::None;
  }

  bool Exists(const std::wstring& path) override {
    struct stat status {};
    return ::lstat(NarrowPath(path).c_str(), &status) == 0;
  }

  Error Rename(const std::wstring& from, const std::wstring& to, bool replace) override {
    const std::string source = NarrowPath(from);
    const std::string target = NarrowPath(to);
    if (replace) return ::rename(source.c_str(), target.c_str()) == 0 ? Error::None : LastError();
    if (::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return Error::None;
    if (errno != EINVAL && errno != ENOSYS) return LastError();
    // A file system without that call: a second name is refused when it is taken.
    if (::link(source.c_str(), target.c_str()) != 0) return LastError();
    if (::unlink(source.c_str()) == 0) return Error::None;
    const Error error = LastError();
    ::unlink(target.c_str());
    return error;
  }

  Error Remove(const std::wstring& path) override {
    return ::unlink(NarrowPath(path).c_str()) == 0 ? Error::None : LastError();
  }

  Error SyncDirectoryOf(const std::wstring& path) override {
    const std::string directory = NarrowPath(SplitPath(path).directory);
    const int descriptor = Uninterrupted(
        [&] { return ::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (descriptor < 0) return LastError();
    const int result = Uninterrupted([&] { return ::fsync(descriptor); });
    const Error error =
        result == 0 || errno == EINVAL ? Error::None : LastError();  // EINVAL: directories need no sync here
    ::close(descriptor);
    return error;
  }
};

std::atomic<FileSystem*> replacedFileSystem{nullptr};

}  // namespace

std::string_view ErrorText(Error error) noexcept {
  static constexpr std::string_view texts[] = {"no error",
                                               "no such file",
                                               "the name is taken",
                                               "permission denied",
                                               "not a file",
                                               "the disk is full",
                                               "in use by another",
                                               "path too long",
                                               "input/output error"};
  const auto index = static_cast<std::size_t>(error);
  return index < std::size(texts) ? texts[index] : texts[std::size(texts) - 1];
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
