// A file that is read at any place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "interfaces/os.h"
#include "terminal/failure.h"

namespace utdata::program {

/// Throws Failure when the file cannot be opened or read.
class InputFile {
 public:
  explicit InputFile(std::string path) : m_path(std::move(path)) {
    ThrowOn(os::CurrentFileSystem().Open(ToWide(m_path), os::OpenMode::Read, m_file));
  }

  [[nodiscard]] const std::string& Path() const { return m_path; }
  [[nodiscard]] std::uint64_t Size() const {
    std::uint64_t size = 0;
    ThrowOn(m_file->Size(size));
    return size;
  }
  /// @return whether there were as many bytes as are wanted
  [[nodiscard]] bool Read(std::uint64_t offset, std::span<std::byte> bytes) const {
    std::size_t done = 0;
    ThrowOn(m_file->ReadAt(offset, bytes, done));
    return done == bytes.size();
  }

 private:
  void ThrowOn(os::Error error) const {
    if (error != os::Error::None)
      throw Failure(m_path, "cannot be read", std::string(os::ErrorText(error)));
  }

  std::string m_path;
  std::unique_ptr<os::File> m_file;
};

}  // namespace utdata::program
