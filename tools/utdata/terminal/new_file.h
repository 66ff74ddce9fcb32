// A file of results: whole under its name, or not there at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "interfaces/os.h"
#include "terminal/interrupt.h"

namespace utdata::program {

/// Fails when a file cannot be made at `path`: one of that name unless `replace` is true, or a
/// folder that is missing. Cheap, for a check before long work.
void CheckNewFile(const std::string& path, bool replace);

/// A file that is written piece by piece beside its name, and gets that name at the end; until then
/// its end takes it away. Every operation throws Failure.
class NewFile {
 public:
  /// Makes the unfinished form, empty. What stands at its name already is never written into: it
  /// refuses the file, or is removed when `replace` is true.
  /// @param replace whether files that are there may be replaced
  NewFile(std::string path, bool replace);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  [[nodiscard]] const std::string& Path() const { return m_path; }
  /// Where it is written until it is whole: for a library that writes the file itself.
  [[nodiscard]] std::string UnfinishedPath() const { return m_path + ".part"; }

  void Append(std::span<const std::byte> bytes);

  /// Brings everything to the medium and gives the file its name, and the permissions of a file
  /// that it replaces. Throws Interrupted when the user has asked to stop.
  void Commit();
  // The two parts of it: everything that may fail but the naming itself, and the naming.
  void Finish();
  void TakeName();
  /// Takes the file away again.
  void Withdraw();

 private:
  std::string m_path;
  std::wstring m_name;      ///< the path as the file system takes it: no end needs memory
  std::wstring m_partName;  ///< of the unfinished form
  bool m_replace;
  std::optional<LeftoverScope> m_leftover;
  std::unique_ptr<os::File> m_file;
  std::uint64_t m_size = 0;
  bool m_whole = false;
};

/// Gives files their names, all of them or none.
void CommitTogether(NewFile& first, NewFile& second);

/// Writes the bytes as a NewFile. An interrupt leaves nothing behind. REQUIRES: an InterruptScope.
/// Throws Failure.
void WriteNewFile(const std::string& path, std::span<const std::byte> bytes, bool replace);

}  // namespace utdata::program
