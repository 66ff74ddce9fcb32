#include "terminal/new_file.h"

#include <filesystem>
#include <memory>

#include "interfaces/os.h"
#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

constexpr const char* cannotBeWritten = "cannot be written";
constexpr const char* forceReplaces = "--force replaces it";

void ThrowOn(os::Error error, const std::string& path) {
  if (error == os::Error::None) return;
  throw Failure(path, cannotBeWritten, os::ErrorText(error), error == os::Error::Exists ? forceReplaces : "");
}

void WriteAll(const std::wstring& path, std::span<const std::byte> bytes, const std::string& named) {
  std::unique_ptr<os::File> file;
  ThrowOn(os::CurrentFileSystem().Open(path, os::OpenMode::OpenOrCreate, file), named);
  ThrowOn(file->Truncate(0), named);
  ThrowOn(file->WriteAt(0, bytes), named);
  ThrowOn(file->Sync(), named);
}

}  // namespace

void CheckNewFile(const std::string& path, bool replace) {
  const std::filesystem::path target(ToWide(path));
  std::error_code ignored;
  if (std::filesystem::is_directory(target, ignored)) throw Failure(path, cannotBeWritten, "it is a folder");
  if (!replace && os::CurrentFileSystem().Exists(ToWide(path)))
    throw Failure(path, cannotBeWritten, "the file exists", forceReplaces);
  const std::filesystem::path folder = target.parent_path();
  if (!folder.empty() && !std::filesystem::is_directory(folder, ignored))
    throw Failure(path, cannotBeWritten, "its folder does not exist", "make the folder first");
}

void WriteNewFile(const std::string& path, std::span<const std::byte> bytes, bool replace) {
  const std::wstring target = ToWide(path);
  const std::wstring unfinished = target + L".part";
  const UnfinishedFileScope scope(path);
  os::FileSystem& files = os::CurrentFileSystem();
  try {
    WriteAll(unfinished, bytes, path);
    ThrowOn(files.Rename(unfinished, target, replace), path);
  } catch (const Failure&) {
    static_cast<void>(files.Remove(unfinished));  // the failure that is told is the one that counts
    throw;
  }
}

}  // namespace utdata::program
