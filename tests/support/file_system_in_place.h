// Puts a file system of a test in place of the machine's own.
#pragma once

#include "interfaces/os.h"

namespace utdata::test {

/// In place while it lives.
class FileSystemInPlace {
 public:
  explicit FileSystemInPlace(os::FileSystem& fileSystem)
      : m_before(os::SetFileSystem(&fileSystem)) {}
  FileSystemInPlace(const FileSystemInPlace&) = delete;
  FileSystemInPlace& operator=(const FileSystemInPlace&) = delete;
  ~FileSystemInPlace() { os::SetFileSystem(m_before); }

 private:
  os::FileSystem* m_before;
};

}  // namespace utdata::test
