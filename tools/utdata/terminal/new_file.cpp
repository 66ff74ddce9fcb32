#include "terminal/new_file.h"

#include <filesystem>
#include <utility>

#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/text.h"

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
  const std::filesystem::path target(ToWide(path));
  std::error_code ignored;
  if (std::filesystem::is_directory(target, ignored))
    throw Failure(path, cannotBeWritten, "it is a folder");
  if (!replace && os::CurrentFileSystem().Exists(ToWide(path)))
    throw Failure(path, cannotBeWritten, "the file exists", forceReplaces);
  const std::filesystem::path folder = target.parent_path();
  if (!folder.empty() && !std::filesystem::is_directory(folder, ignored))
    throw Failure(path, cannotBeWritten, "its folder does not exist", "make the folder first");
}

NewFile::NewFile(std::string path) : m_path(std::move(path)) {
  ThrowOn(
      os::CurrentFileSystem().Open(ToWide(UnfinishedPath()), os::OpenMode::OpenOrCreate, m_file),
      m_path);
  ThrowOn(m_file->Truncate(0), m_path);
}

NewFile::~NewFile() {
  if (m_file && !m_whole)
    static_cast<void>(os::CurrentFileSystem().Remove(ToWide(UnfinishedPath())));
}

void NewFile::Append(std::span<const std::byte> bytes) {
  ThrowOn(m_file->WriteAt(m_size, bytes), m_path);
  m_size += bytes.size();
}

void NewFile::Commit(bool replace) {
  ThrowOn(m_file->Sync(), m_path);
  ThrowIfInterrupted();
  ThrowOn(os::CurrentFileSystem().Rename(ToWide(UnfinishedPath()), ToWide(m_path), replace),
          m_path);
  m_whole = true;
}

void WriteNewFile(const std::string& path, std::span<const std::byte> bytes, bool replace) {
  const UnfinishedFileScope scope(path);
  NewFile file(path);
  file.Append(bytes);
  file.Commit(replace);
}

}  // namespace utdata::program
