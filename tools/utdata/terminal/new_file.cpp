#include "terminal/new_file.h"

#include <filesystem>
#include <utility>

#include "terminal/failure.h"
#include "terminal/text.h"
#include "terminal/written.h"

namespace utdata::program {
namespace {

constexpr const char* cannotBeWritten = "cannot be written";
constexpr const char* forceReplaces = "--force replaces it";

void ThrowOn(os::Error error, const std::string& path) {
  if (error == os::Error::None) return;
  throw Failure(
      path, cannotBeWritten, os::ErrorText(error), error == os::Error::Exists ? forceReplaces : "");
}

}  // namespace

void CheckNewFile(const std::string& path, bool replace) {
  const std::filesystem::path target(path);
  std::error_code ignored;
  if (std::filesystem::is_directory(target, ignored))
    throw Failure(path, cannotBeWritten, "it is a folder");
  if (!replace && os::CurrentFileSystem().Exists(ToWide(path)))
    throw Failure(path, cannotBeWritten, "the file exists", forceReplaces);
  const std::filesystem::path folder = target.parent_path();
  if (!folder.empty() && !std::filesystem::is_directory(folder, ignored))
    throw Failure(path, cannotBeWritten, "its folder does not exist", "make the folder first");
}

NewFile::NewFile(std::string path, bool replace)
    : m_path(std::move(path)),
      m_name(ToWide(m_path)),
      m_partName(ToWide(UnfinishedPath())),
      m_replace(replace) {
  os::FileSystem& disk = os::CurrentFileSystem();
  std::string leftover = UnfinishedPath();
  os::Error error = disk.Open(m_partName, os::OpenMode::Create, m_file);
  if (error == os::Error::Exists && replace) {
    ThrowOn(disk.Remove(m_partName), leftover);
    error = disk.Open(m_partName, os::OpenMode::Create, m_file);
  }
  if (error == os::Error::Exists)
    throw Failure(m_path,
                  cannotBeWritten,
                  "'" + UnfinishedPath() + "' is in the way",
                  "move it away, or replace it with --force");
  ThrowOn(error, m_path);
  m_leftover.emplace(std::move(leftover));
}

NewFile::~NewFile() {
  if (m_file && !m_whole) static_cast<void>(os::CurrentFileSystem().Remove(m_partName));
}

void NewFile::Append(std::span<const std::byte> bytes) {
  ThrowOn(m_file->WriteAt(m_size, bytes), m_path);
  m_size += bytes.size();
}

void NewFile::Commit() {
  Finish();
  TakeName();
}

void NewFile::Finish() {
  os::FileSystem& disk = os::CurrentFileSystem();
  ThrowOn(m_file->Sync(), m_path);
  ThrowIfInterrupted();
  os::FileIdentity written;
  os::FileIdentity there;
  ThrowOn(m_file->Identify(written), m_path);
  ThrowOn(disk.Identify(m_partName, there), m_path);
  if (written != there)
    throw Failure(m_path, cannotBeWritten, "'" + UnfinishedPath() + "' was removed");
  if (m_replace)
    if (const os::Error error = m_file->CopyPermissionsOf(m_name); error != os::Error::NotFound)
      ThrowOn(error, m_path);
}

void NewFile::TakeName() {
  ThrowOn(os::CurrentFileSystem().Rename(m_partName, m_name, m_replace), m_path);
  m_whole = true;
  m_leftover.reset();
}

void NewFile::Withdraw() {
  static_cast<void>(os::CurrentFileSystem().Remove(m_whole ? m_name : m_partName));
  m_whole = true;
  m_leftover.reset();
}

void CommitTogether(NewFile& first, NewFile& second) {
  first.Finish();
  second.Finish();
  first.TakeName();
  try {
    second.TakeName();
  } catch (...) {
    first.Withdraw();
    throw;
  }
  NoteWritten(first.Path());
  NoteWritten(second.Path());
}

void WriteNewFile(const std::string& path, std::span<const std::byte> bytes, bool replace) {
  const UnfinishedFileScope scope(path);
  NewFile file(path, replace);
  file.Append(bytes);
  file.Commit();
  NoteWritten(path);
}

}  // namespace utdata::program
