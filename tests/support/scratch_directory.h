// A directory of a test's own, removed with all it holds.
#pragma once

#include <filesystem>
#include <random>
#include <string>

namespace utdata::test {

class ScratchDirectory {
 public:
  ScratchDirectory() {
    do {
      m_path = std::filesystem::temp_directory_path() / ("utdata-" + std::to_string(std::random_device()()));
    } while (!std::filesystem::create_directory(m_path));
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;
  ~ScratchDirectory() {
    std::error_code ignored;  // a file that stays behind is no fault of what is tested
    std::filesystem::remove_all(m_path, ignored);
  }

  [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }
  /// A path of that name in the directory, as the file functions take it.
  [[nodiscard]] std::wstring File(const std::wstring& name) const { return (m_path / name).wstring(); }

 private:
  std::filesystem::path m_path;
};

}  // namespace utdata::test
