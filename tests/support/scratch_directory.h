// A directory of a test's own, removed with all it holds.
#pragma once

#include <filesystem>
#include <random>
#include <string>

#include "tests/support/kept_files.h"

namespace utdata::test {

class ScratchDirectory {
 public:
  ScratchDirectory() {
    do {
      m_path = ScratchRoot() / ("utdata-" + std::to_string(std::random_device()()));
    } while (!std::filesystem::create_directory(m_path));
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;
  ~ScratchDirectory() { RemoveScratch(m_path); }

  [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }
  /// A path of that name in the directory, as the file functions take it.
  [[nodiscard]] std::wstring File(const std::wstring& name) const {
    return (m_path / name).wstring();
  }

 private:
  std::filesystem::path m_path;
};

}  // namespace utdata::test
