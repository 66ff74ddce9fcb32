// The words of statuses, and what failed last on each thread.
#include <new>
#include <utility>

#include "platform/kvtiff19/items.h"
#include "platform/kvtiff19/node.h"
#include "platform/os/path.h"

namespace utdata::kvtiff19 {
namespace {

thread_local std::string lastError;

int StatusOf(os::Error error) {
  switch (error) {
    case os::Error::None:
      return SCFile::status_Ok;
    case os::Error::NotFound:
      return SCFile::status_NotFound;
    case os::Error::Exists:
      return SCFile::status_Exists;
    case os::Error::AccessDenied:
      return SCFile::status_AccessDenied;
    case os::Error::NotAFile:
      return SCFile::status_NotAFile;
    case os::Error::DiskFull:
      return SCFile::status_DiskFull;
    case os::Error::Busy:
      return SCFile::status_Locked;
    case os::Error::PathTooLong:
      return SCFile::status_BadArgument;
    case os::Error::BadArgument:
    case os::Error::NoMemory:
    case os::Error::NotSupported:
    case os::Error::Other:
      break;
  }
  return SCFile::status_InputOutput;
}

}  // namespace

int Fail(int status, std::string_view what) {
  try {
    lastError = what;
  } catch (const std::bad_alloc&) {
    lastError.clear();
  }
  return status;
}

int FailAt(const std::wstring& path, int status, std::string_view what) {
  try {
    return Fail(status, os::NarrowPath(path).append(": ").append(what));
  } catch (const std::bad_alloc&) {
    return Fail(status, {});
  }
}

int FailAt(const OpenFile& file, int status, std::string_view what) {
  return FailAt(file.path, status, what);
}

int FailOs(const std::wstring& path, os::Error error, std::string_view what) {
  try {
    return FailAt(
        path, StatusOf(error), std::string(what).append(": ").append(os::ErrorText(error)));
  } catch (const std::bad_alloc&) {
    return Fail(StatusOf(error), {});
  }
}

}  // namespace utdata::kvtiff19

namespace SCFile {

const char* file_StatusText(int status) noexcept {
  static constexpr const char* texts[] = {
      "done",                           // status_Ok
      "wrong argument",                 // status_BadArgument
      "no such file",                   // status_NotFound
      "the name is taken",              // status_Exists
      "permission denied",              // status_AccessDenied
      "not a file",                     // status_NotAFile
      "the disk is full",               // status_DiskFull
      "input/output error",             // status_InputOutput
      "not an inspection file",         // status_NotInspection
      "another version of the format",  // status_NewerVersion
      "damaged",                        // status_Damaged
      "another writer has it",          // status_Locked
      "changed since it was opened",    // status_MovedOn
      "opened for reading only",        // status_ReadOnly
      "a text that is not text",        // status_BadText
      "the buffer is too small",        // status_BufferTooSmall
      "too large for the format",       // status_TooLarge
      "stopped",                        // status_Stopped
      "another's file is in the way",   // status_InTheWay
      "may not outlive a power cut",    // status_NotDurable
  };
  const auto index = static_cast<std::size_t>(status);
  return index < std::size(texts) ? texts[index] : "unknown status";
}

std::string file_LastError() { return utdata::kvtiff19::lastError; }

int file_Fail(int status, const std::wstring& path, std::string_view why) noexcept {
  return utdata::kvtiff19::FailAt(path, status, why);
}

int file_Fail(int status, const char* what) noexcept {
  return utdata::kvtiff19::Fail(status, what ? what : "");
}

}  // namespace SCFile
