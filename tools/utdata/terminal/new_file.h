// A file of results: whole under its name, or not there at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "interfaces/os.h"

namespace utdata::program {

/// Fails when a file cannot be made at `path`: one of that name unless `replace` is true, or a
/// folder that is missing. Cheap, for a check before long work.
void CheckNewFile(const std::string& path, bool replace);

/// A file that is written piece by piece beside its name, and gets that name at the end; until then
/// its end takes it away. Every operation throws Failure.
class NewFile {
 public:
  /// Begins the unfinished form, empty.
  explicit NewFile(std::string path);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  [[nodiscard]] const std::string& Path() const { return m_path; }
  /// Where it is written until it is whole: for a library that writes the file itself.
  [[nodiscard]] std::string UnfinishedPath() const { return m_path + ".part"; }

  void Append(std::span<const std::byte> bytes);

  /// Brings everything to the medium and gives the file its name; what stood there is replaced only
  /// when `replace` is true. Throws Interrupted when the user has asked to stop.
  void Commit(bool replace);

 private:
  std::string m_path;
  std::unique_ptr<os::File> m_file;
  std::uint64_t m_size = 0;
  bool m_whole = false;
};

/// Writes the bytes as a NewFile. An interrupt leaves nothing behind. REQUIRES: an InterruptScope.
/// Throws Failure.
void WriteNewFile(const std::string& path, std::span<const std::byte> bytes, bool replace);

}  // namespace utdata::program
