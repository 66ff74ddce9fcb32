// One inspection as the program holds it: its file descriptor with everything in it, and the items
// made of it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "document/host.h"
#include "utdata/fcont.h"

namespace utdata::program {

/// Owns the descriptor, its open files and its group descriptors. Moved, never copied; used by one
/// thread. Every failure is thrown as a Failure that names the file.
class Document {
 public:
  Document(Document&&) = default;
  Document& operator=(Document&&) = delete;

  /// An inspection without groups, to be filled and written at `path`.
  [[nodiscard]] static Document New(const std::string& path);

  /// Loads an inspection file and the numbered companions beside it.
  /// @param tables where the samples of its data items are to be
  [[nodiscard]] static Document Load(const std::string& path, Tables tables = Tables::Mapped);

  /// The group lists; what is added to them belongs to the document from then on.
  [[nodiscard]] CFContTypeFileDescr& Groups() { return *m_groups; }
  [[nodiscard]] const CFContTypeFileDescr& Groups() const { return *m_groups; }

  [[nodiscard]] const std::string& Path() const { return m_path; }
  /// The paths of the files that it was read from, the named one first.
  [[nodiscard]] std::vector<std::string> Files() const;

  /// What the library reaches back into for this inspection, with an item for each group that is
  /// there when it is first asked for. Lives as long as the document.
  [[nodiscard]] Host& GetHost() const;

  /// Writes the whole inspection as a new file. An existing one stays, and the write fails, unless
  /// `replace` is true.
  void WriteNew(bool replace);

  /// Writes the groups of `changes` as modifications of this loaded inspection, into its next
  /// numbered companion.
  /// @return the companion's path
  std::string WriteCompanion(CFContTypeFileDescr& changes);

  /// The same at the end of the file that was read last.
  /// @return that file's path
  std::string Append(CFContTypeFileDescr& changes);

  /// Writes a whole new file of this loaded inspection, samples copied, with the groups of
  /// `changes` in the place of those with their ids. This document stays as it is.
  void WriteCopy(CFContTypeFileDescr& changes, const std::string& path, bool replace);

 private:
  struct Release {
    void operator()(CFContTypeFileDescr* groups) const;
  };

  [[nodiscard]] std::string LastFile() const;

  Document(std::string path, CFContTypeFileDescr* groups)
      : m_path(std::move(path)), m_groups(groups) {}

  std::string m_path;
  Tables m_tables = Tables::Mapped;
  std::unique_ptr<CFContTypeFileDescr, Release> m_groups;
  mutable std::unique_ptr<Host>
      m_host;  ///< behind the groups, since it goes first: its items refer to them
};

/// Fails when a new inspection file cannot stand at `path`: a file of that name unless `replace` is
/// true, a companion of another inspection that would be read with it, or a folder that is missing.
/// Cheap, for a check before long work.
void CheckNewPath(const std::string& path, bool replace);

/// Fails when `path` is one of the document's own files, which must outlive what is made of them.
void CheckNotInput(const Document& document, const std::string& path);

/// The samples of a data group, mapped for as long as this lives; the group's file must stay open.
/// Throws Failure when there are none.
class MappedSamples {
 public:
  explicit MappedSamples(const CGDataTypeFDD& group);
  ~MappedSamples();
  MappedSamples(const MappedSamples&) = delete;
  MappedSamples& operator=(const MappedSamples&) = delete;

  [[nodiscard]] const std::byte* Data() const { return static_cast<const std::byte*>(m_data); }
  [[nodiscard]] char* Bytes() const {
    return static_cast<char*>(m_data);
  }  ///< the same; changes stay in this process
  [[nodiscard]] std::uint64_t Size() const { return m_size; }  ///< bytes

 private:
  SCFile::FileHandle m_file;
  void* m_data = nullptr;
  std::uint64_t m_size = 0;
};

}  // namespace utdata::program
