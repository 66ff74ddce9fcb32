// A file system in memory that does nothing but keep files, for tests that open and write many
// thousands of them. A disk that fails or loses power is FaultyFileSystem.
//
// A view is a copy of the bytes, as long as they are, so that reading past them is seen by the
// address sanitizer. No file outgrows `largestFile`. It has no mappings that are shared and no
// addresses to reserve. One thread at a time.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "interfaces/os.h"

namespace utdata::test {

class MemoryFileSystem final : public os::FileSystem {
 public:
  using Content = std::vector<std::byte>;
  static constexpr std::uint64_t largestFile = std::uint64_t{64} << 20;

  MemoryFileSystem();
  MemoryFileSystem(const MemoryFileSystem&) = delete;
  MemoryFileSystem& operator=(const MemoryFileSystem&) = delete;
  ~MemoryFileSystem() override;

  /// Places a file, or gives the one that has the name other bytes.
  void Put(const std::wstring& path, Content content);
  /// REQUIRES: the file exists.
  [[nodiscard]] const Content& Get(const std::wstring& path) const;

  os::Error Open(const std::wstring& path,
                 os::OpenMode mode,
                 std::unique_ptr<os::File>& file) override;
  bool Exists(const std::wstring& path) override;
  os::Error Identify(const std::wstring& path, os::FileIdentity& identity) override;
  os::Error Rename(const std::wstring& from, const std::wstring& to, bool replace) override;
  os::Error Remove(const std::wstring& path) override;
  os::Error SyncDirectoryOf(const std::wstring& path) override;
  os::Error FreeSpace(const std::wstring& path, std::uint64_t& bytes) override;
  os::Error Reserve(std::size_t size, std::unique_ptr<os::AddressRange>& range) override;

 private:
  friend class MemoryFile;
  struct Inode;

  std::map<std::wstring, std::shared_ptr<Inode>> m_names;
  std::uint64_t m_made = 0;  ///< files so far
};

}  // namespace utdata::test
