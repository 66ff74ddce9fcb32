// A folder on the machine's own disk, removed with everything in it when the test ends.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/os/path.h"

namespace utdata::test {

class FileFolder {
 public:
  FileFolder();
  /// In a folder that exists.
  explicit FileFolder(const std::filesystem::path& root);
  FileFolder(const FileFolder&) = delete;
  FileFolder& operator=(const FileFolder&) = delete;
  ~FileFolder();

  [[nodiscard]] std::wstring operator/(const std::wstring& name) const {
    return os::WidePath(m_path.string()) + L"/" + name;
  }
  [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }
  /// Names of what the folder holds, in order.
  [[nodiscard]] std::vector<std::wstring> Names() const;

 private:
  std::filesystem::path m_path;
};

[[nodiscard]] std::vector<std::byte> BytesOf(const std::wstring& path);
void WriteBytes(const std::wstring& path, const std::vector<std::byte>& bytes);

}  // namespace utdata::test
