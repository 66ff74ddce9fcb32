// What the library asks of the operating system: files, paths, and a debugger to stop in.
//
// All file access goes through FileSystem and File, so that a test can put a faulty disk in their place. A File may be used by one
// thread at a time; a Mapping is plain memory. No operation throws; a failed one returns an Error other than None.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "interfaces/export.h"

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
  Other  ///< input/output error
};

/// A few English words, without a full stop ("no such file").
[[nodiscard]] UTDATA_API std::string_view ErrorText(Error error) noexcept;

enum class OpenMode : std::uint8_t {
  Read,         ///< existing regular file, read only
  ReadWrite,    ///< existing regular file
  Create,       ///< new file for reading and writing; Exists when the name is taken
  OpenOrCreate  ///< for reading and writing, made when missing, content kept
};

/// A private copy-on-write view of part of a file. Unmapped by the destructor; outlives the File it came from. Writing to it changes
/// this process's memory only. The file must not shrink while a view of it is read.
class Mapping {
 public:
  virtual ~Mapping() = default;
  [[nodiscard]] virtual std::byte* Data() const noexcept = 0;
  [[nodiscard]] virtual std::size_t Size() const noexcept = 0;
};

/// An open regular file; closed by the destructor.
class File {
 public:
  virtual ~File() = default;
  /// Reads up to buffer.size() bytes at `offset`; `done` receives how many there were (fewer only at the end of the file).
  [[nodiscard]] virtual Error ReadAt(std::uint64_t offset, std::span<std::byte> buffer, std::size_t& done) = 0;
  /// Writes all bytes at `offset`, growing the file (with a hole where needed), or fails.
  [[nodiscard]] virtual Error WriteAt(std::uint64_t offset, std::span<const std::byte> bytes) = 0;
  /// Everything written so far is on the medium when this returns None.
  [[nodiscard]] virtual Error Sync() = 0;
  [[nodiscard]] virtual Error Size(std::uint64_t& size) = 0;
  /// Cuts the file, or grows it with a hole.
  [[nodiscard]] virtual Error Truncate(std::uint64_t size) = 0;
  /// REQUIRES: offset is a multiple of 4096, size > 0, offset + size within the file.
  [[nodiscard]] virtual Error Map(std::uint64_t offset, std::size_t size, std::unique_ptr<Mapping>& mapping) = 0;
  /// Takes the advisory exclusive lock without waiting; Busy when another open file has it. Readers need none.
  [[nodiscard]] virtual Error TryLock() = 0;
  virtual void Unlock() noexcept = 0;
  /// Whether `path` still names this very file.
  [[nodiscard]] virtual bool IsAt(const std::wstring& path) = 0;
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;
  [[nodiscard]] virtual Error Open(const std::wstring& path, OpenMode mode, std::unique_ptr<File>& file) = 0;
  [[nodiscard]] virtual bool Exists(const std::wstring& path) = 0;
  /// Gives a file a new name in the same directory, in one step. With replace false an existing `to` makes it fail with Exists.
  [[nodiscard]] virtual Error Rename(const std::wstring& from, const std::wstring& to, bool replace) = 0;
  [[nodiscard]] virtual Error Remove(const std::wstring& path) = 0;
  /// Names made, changed or removed in the directory of `path` are on the medium when this returns None.
  [[nodiscard]] virtual Error SyncDirectoryOf(const std::wstring& path) = 0;
};

/// The file system in use: the machine's own unless a test put another in its place.
[[nodiscard]] UTDATA_API FileSystem& CurrentFileSystem() noexcept;
/// Puts `fileSystem` (not owned; null restores the machine's own) in place for files opened from then on; returns the one before,
/// null for the machine's own. For tests, while no other thread opens files.
UTDATA_API FileSystem* SetFileSystem(FileSystem* fileSystem) noexcept;

/// A path split as drive ("C:" where the system has drives, else empty), directory with its closing separator, name without
/// extension, extension with its dot.
struct PathParts {
  std::wstring drive;
  std::wstring directory;
  std::wstring name;
  std::wstring extension;
};
[[nodiscard]] UTDATA_API PathParts SplitPath(std::wstring_view path);

/// Whether a debugger is attached to the process, and a stop in it.
[[nodiscard]] UTDATA_API bool DebuggerAttached() noexcept;
UTDATA_API void DebuggerBreak() noexcept;

}  // namespace utdata::os
