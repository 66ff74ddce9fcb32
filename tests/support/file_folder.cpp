#include "tests/support/file_folder.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "tests/support/kept_files.h"

namespace utdata::test {

namespace fs = std::filesystem;

FileFolder::FileFolder() : FileFolder(ScratchRoot()) {}

FileFolder::FileFolder(const fs::path& root) {
  std::string pattern = (root / "utdata-test-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
  m_path = pattern;
}

FileFolder::~FileFolder() { RemoveScratch(m_path); }

std::vector<std::wstring> FileFolder::Names() const {
  std::vector<std::wstring> names;
  for (const auto& entry : fs::directory_iterator(m_path))
    names.push_back(os::WidePath(entry.path().filename().string()));
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::byte> BytesOf(const std::wstring& path) {
  std::ifstream stream(os::NarrowPath(path), std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  std::vector<std::byte> bytes(text.size());
  std::transform(text.begin(), text.end(), bytes.begin(), [](char each) {
    return static_cast<std::byte>(each);
  });
  return bytes;
}

void WriteBytes(const std::wstring& path, const std::vector<std::byte>& bytes) {
  std::ofstream stream(os::NarrowPath(path), std::ios::binary);
  stream.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

}  // namespace utdata::test
