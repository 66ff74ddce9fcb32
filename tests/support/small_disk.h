// A small real file system, for tests of a full disk: memory of the machine, mounted where only
// this process sees it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/file_folder.h"

namespace utdata::test {

class SmallDisk {
 public:
  /// @param bytes capacity for the content of all files, a multiple of the machine's page
  explicit SmallDisk(std::uint64_t bytes);
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk();

  /// Whether this machine and user may mount one; where not, the disk is an ordinary folder and the
  /// test is to be skipped.
  [[nodiscard]] bool IsMounted() const { return m_isMounted; }
  [[nodiscard]] std::vector<std::wstring> Names() const { return m_folder.Names(); }
  [[nodiscard]] std::wstring operator/(const std::wstring& name) const { return m_folder / name; }

 private:
  FileFolder m_folder;
  bool m_isMounted = false;
};

}  // namespace utdata::test
