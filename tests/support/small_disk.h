// A small real file system, for tests of a full disk, mounted where only this process and those
// that it starts see it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/file_folder.h"

namespace utdata::test {

class SmallDisk {
 public:
  /// @param bytes capacity for the content of all files, a multiple of the machine's page
  /// @param kind  "tmpfs", in memory; or of a medium, a file: "ext4", "ext2", "xfs" (of 300 MB at
  ///   least)
  explicit SmallDisk(std::uint64_t bytes, const std::string& kind = "tmpfs");
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk();

  /// Whether this machine and user may mount one; where not, the disk is an ordinary folder and the
  /// test is to be skipped.
  [[nodiscard]] bool IsMounted() const { return m_isMounted; }
  /// Fills the disk with a file "filler" until an ordinary user has `bytes` left.
  void FillUpTo(std::uint64_t bytes) const;
  [[nodiscard]] const std::filesystem::path& Path() const { return m_folder.Path(); }
  [[nodiscard]] std::vector<std::wstring> Names() const { return m_folder.Names(); }
  [[nodiscard]] std::wstring operator/(const std::wstring& name) const { return m_folder / name; }

 private:
  FileFolder m_medium;  ///< of what is no tmpfs
  FileFolder m_folder;
  bool m_isMounted = false;
};

}  // namespace utdata::test
