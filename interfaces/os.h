// What the library asks of the operating system: files, mapped memory, paths, and a debugger to
// stop in.
//
// All file access goes through FileSystem and File, so that a test can put a faulty disk in their
// place. A File may be used by one thread at a time; a Mapping is plain memory. No operation
// throws; a failed one returns an Error other than None.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "export.h"

namespace utdata::os {

enum class Error : std::uint8_t {
  None,
  NotFound,
  Exists,
  AccessDenied,  ///< permission, or a read-only medium
  NotAFile,      ///< a directory, a device, a pipe
  DiskFull,      ///< no room, or the user's quota is used up
  Busy,          ///< another holder has the lock
  PathTooLong,
  BadArgument,
  NoMemory,      ///< neither memory nor address space is left
  NotSupported,  ///< the file system cannot do that
  Other          ///< input/output error
};

/// A few English words, without a full stop ("no such file").
[[nodiscard]] UTDATA_API std::string_view ErrorText(Error error) noexcept;

/// The platform's own number (errno) of the calling thread's last failure behind this interface; 0
/// before the first.
[[nodiscard]] UTDATA_API int LastErrorNumber() noexcept;
/// For whoever stands in for the operating system: makes the platform's number of `error` the last
/// one, and returns `error`.
UTDATA_API Error Fail(Error error) noexcept;

enum class OpenMode : std::uint8_t {
  Read,           ///< existing regular file, read only
  ReadWrite,      ///< existing regular file
  ReadWriteHere,  ///< as ReadWrite, but NotAFile when the name is a symbolic link
  Create          ///< new file for reading and writing; Exists when the name is taken
};

/// Distinguishes files: equal for two names of one file. Another file may get the identity of one
/// that is gone, so that only open files are compared, or open ones with names.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t number = 0;
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// A private copy-on-write view of part of a file. Unmapped by the destructor; outlives the File it
/// came from. Writing to it changes this process's memory only. The file must not shrink while a
/// view of it is read.
class Mapping {
 public:
  virtual ~Mapping() = default;
  [[nodiscard]] virtual std::byte* Data() const noexcept = 0;
  [[nodiscard]] virtual std::size_t Size() const noexcept = 0;
};

/// Addresses that the process keeps for itself, with no memory behind them: touching one ends the
/// process. Given up, with what is mapped into them, by the destructor. Different places may be
/// mapped and cleared by several threads at once.
class AddressRange {
 public:
  virtual ~AddressRange() = default;
  [[nodiscard]] virtual std::byte* Data() const noexcept = 0;
  [[nodiscard]] virtual std::size_t Size() const noexcept = 0;
  /// Takes away what is mapped at a place, which is kept without memory again.
  /// REQUIRES: inside the range; offset and size are multiples of 65536.
  [[nodiscard]] virtual Error Clear(std::size_t offset, std::size_t size) = 0;
};

/// A file made long enough to be mapped, shared with everyone who reads the file. Outlives neither
/// its File nor that file's size.
class FileMapping {
 public:
  virtual ~FileMapping() = default;
  [[nodiscard]] virtual std::uint64_t Size() const noexcept = 0;
  /// Maps the first `size` bytes for reading and writing at a place of a range. What is stored
  /// there is in the file, though not yet on the medium, even when the process is killed; storing
  /// where neither Allocate nor a write was before ends the process when the disk is full. After a
  /// failure the place holds nothing. REQUIRES: the place is inside the range and free; offset is a
  /// multiple of 65536; 0 < size <= Size().
  [[nodiscard]] virtual Error MapAt(AddressRange& range, std::size_t offset, std::size_t size) = 0;
};

/// An open regular file; closed by the destructor. It is never a standard stream, not even of a
/// process whose standard streams are closed: what somebody prints there does not go into it.
class File {
 public:
  virtual ~File() = default;
  /// Reads up to buffer.size() bytes at `offset`; `done` receives how many there were (fewer only
  /// at the end of the file).
  [[nodiscard]] virtual Error ReadAt(std::uint64_t offset,
                                     std::span<std::byte> buffer,
                                     std::size_t& done) = 0;
  /// Writes all bytes at `offset`, growing the file (with a hole where needed), or fails.
  [[nodiscard]] virtual Error WriteAt(std::uint64_t offset, std::span<const std::byte> bytes) = 0;
  /// Everything written so far is on the medium when this returns None.
  [[nodiscard]] virtual Error Sync() = 0;
  [[nodiscard]] virtual Error Size(std::uint64_t& size) = 0;
  /// Whether at least `least` bytes of a part of the file are stored, not holes, which read as
  /// zeros; true where the file system does not say. A few bytes can claim a file of any size.
  [[nodiscard]] virtual Error IsStored(std::uint64_t offset,
                                       std::uint64_t size,
                                       std::uint64_t least,
                                       bool& isStored) = 0;
  /// Cuts the file, or grows it with a hole.
  [[nodiscard]] virtual Error Truncate(std::uint64_t size) = 0;
  /// Moves the file's own position, which no operation here reads or changes.
  [[nodiscard]] virtual Error Seek(std::uint64_t position) = 0;
  /// Allocates the medium for bytes that read as before, growing the file to hold them: storing
  /// into them cannot fail for a full disk. NotSupported where the file system cannot promise that.
  [[nodiscard]] virtual Error Allocate(std::uint64_t offset, std::uint64_t size) = 0;
  /// REQUIRES: offset is a multiple of 4096, size > 0, offset + size within the file.
  [[nodiscard]] virtual Error Map(std::uint64_t offset,
                                  std::size_t size,
                                  std::unique_ptr<Mapping>& mapping) = 0;
  /// Prepares the first `size` bytes for mapping: a shorter file grows with a hole. REQUIRES: size
  /// > 0.
  [[nodiscard]] virtual Error CreateMapping(std::uint64_t size,
                                            std::unique_ptr<FileMapping>& mapping) = 0;
  /// Takes the advisory exclusive lock without waiting; Busy when another open file has it. Readers
  /// need none.
  [[nodiscard]] virtual Error TryLock() = 0;
  virtual void Unlock() noexcept = 0;
  [[nodiscard]] virtual Error Identify(FileIdentity& identity) = 0;
  /// From now on who may read and write this file is as for the file at `path`.
  [[nodiscard]] virtual Error CopyPermissionsOf(const std::wstring& path) = 0;
};

/// Whether a name may be taken after the look for it ended so. Where nobody may look, nothing can
/// be opened or made either, and whoever tries learns why.
[[nodiscard]] inline bool MayExist(Error error) noexcept {
  return error != Error::NotFound && error != Error::AccessDenied && error != Error::PathTooLong;
}

class FileSystem {
 public:
  virtual ~FileSystem() = default;
  [[nodiscard]] virtual Error Open(const std::wstring& path,
                                   OpenMode mode,
                                   std::unique_ptr<File>& file) = 0;
  /// Whether the name is taken, by a link that leads nowhere too; true also when that cannot be
  /// found out (MayExist): what is not seen must not be taken for what is not there.
  [[nodiscard]] virtual bool Exists(const std::wstring& path) = 0;
  /// Of the file that `path` leads to, through links as Open goes; NotFound when there is none.
  [[nodiscard]] virtual Error Identify(const std::wstring& path, FileIdentity& identity) = 0;
  /// Gives a file a new name in the same directory, in one step. With replace false an existing
  /// `to` makes it fail with Exists.
  [[nodiscard]] virtual Error Rename(const std::wstring& from,
                                     const std::wstring& to,
                                     bool replace) = 0;
  [[nodiscard]] virtual Error Remove(const std::wstring& path) = 0;
  /// Names made, changed or removed in the directory of `path` are on the medium when this returns
  /// None.
  [[nodiscard]] virtual Error SyncDirectoryOf(const std::wstring& path) = 0;
  /// Bytes that an ordinary user may still fill on the file system of `path`: that of the nearest
  /// directory above it which exists.
  [[nodiscard]] virtual Error FreeSpace(const std::wstring& path, std::uint64_t& bytes) = 0;
  /// Keeps addresses for mappings. REQUIRES: size > 0, a multiple of 65536.
  [[nodiscard]] virtual Error Reserve(std::size_t size, std::unique_ptr<AddressRange>& range) = 0;
};

/// The file system in use: the machine's own unless a test put another in its place.
[[nodiscard]] UTDATA_API FileSystem& CurrentFileSystem() noexcept;
/// Puts `fileSystem` (not owned; null restores the machine's own) in place for files opened from
/// then on; returns the one before, null for the machine's own. For tests, while no other thread
/// opens files.
UTDATA_API FileSystem* SetFileSystem(FileSystem* fileSystem) noexcept;

/// The names in a directory of the machine's own file system, in no order, as the system's bytes;
/// none when it cannot be read. An empty path is where the process is. May let std::bad_alloc pass.
[[nodiscard]] UTDATA_API std::vector<std::string> NamesIn(const std::wstring& directory);

/// What differs each time it is asked for.
class Surroundings {
 public:
  virtual ~Surroundings() = default;
  /// Fills `bytes` with random ones that nobody can foretell.
  [[nodiscard]] virtual Error FillRandom(std::span<std::byte> bytes) noexcept = 0;
  /// Microseconds since the start of 1970 in UTC, as the machine's clock has it.
  [[nodiscard]] virtual std::int64_t Now() noexcept = 0;
};

/// The machine's own unless a test put others in their place.
[[nodiscard]] UTDATA_API Surroundings& CurrentSurroundings() noexcept;
/// As SetFileSystem.
UTDATA_API Surroundings* SetSurroundings(Surroundings* surroundings) noexcept;

/// A path split as drive ("C:" where the system has drives, else empty), directory with its closing
/// separator, name without extension, extension with its dot.
struct PathParts {
  std::wstring drive;
  std::wstring directory;
  std::wstring name;
  std::wstring extension;
};
[[nodiscard]] UTDATA_API PathParts SplitPath(std::wstring_view path);

/// What the process and the machine have left, in bytes; 0 where that is not known.
struct MemoryStatus {
  std::uint32_t loadPercent;  ///< share of the physical memory in use
  std::uint64_t totalPhysical;
  std::uint64_t availablePhysical;  ///< without swapping
  std::uint64_t totalPaged;         ///< physical memory and swap space together
  std::uint64_t availablePaged;
  std::uint64_t totalVirtual;      ///< addresses that the process may use
  std::uint64_t availableVirtual;  ///< of these, not in use
};
[[nodiscard]] UTDATA_API MemoryStatus QueryMemoryStatus() noexcept;

/// Whether a debugger is attached to the process, and a stop in it.
[[nodiscard]] UTDATA_API bool DebuggerAttached() noexcept;
UTDATA_API void DebuggerBreak() noexcept;

}  // namespace utdata::os
