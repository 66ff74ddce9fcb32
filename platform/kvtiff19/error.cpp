// The words of statuses, and what failed last on each thread.
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/kvtiff19/items.h"
#include "platform/kvtiff19/node.h"
#include "platform/os/path.h"

namespace utdata::kvtiff19 {
namespace {

/// A line that takes no memory of the heap, neither for its letters nor, as a thread's own, for its
/// end. What does not fit is cut off.
class Line {
 public:
  void Clear() noexcept { m_size = 0; }
  void push_back(char letter) noexcept {
    if (m_size < sizeof m_letters) m_letters[m_size++] = letter;
  }
  void Append(std::string_view text) noexcept {
    for (const char letter : text) push_back(letter);
  }
  /// Ends with a whole character.
  [[nodiscard]] std::string_view Text() const noexcept {
    constexpr auto isTail = [](char letter) { return (letter & 0xC0) == 0x80; };
    std::size_t size = m_size;
    if (size == sizeof m_letters) {
      while (size > 0 && isTail(m_letters[size - 1])) --size;
      if (size > 0 && (m_letters[size - 1] & 0x80) != 0) --size;
    }
    return {m_letters, size};
  }

 private:
  std::size_t m_size = 0;
  char m_letters[6144] = {};  // the longest path and why
};

thread_local Line lastError;

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
    case os::Error::NoMemory:
      return SCFile::status_TooLarge;
    case os::Error::BadArgument:
    case os::Error::NotSupported:
    case os::Error::Other:
      break;
  }
  return SCFile::status_InputOutput;
}

}  // namespace

int Fail(int status, std::string_view what) noexcept {
  lastError.Clear();
  lastError.Append(what);
  return status;
}

int FailAt(const std::wstring& path, int status, std::string_view what) noexcept {
  lastError.Clear();
  os::PutPath(lastError, path);
  lastError.Append(": ");
  lastError.Append(what);
  return status;
}

int FailAt(const OpenFile& file, int status, std::string_view what) noexcept {
  return FailAt(file.path, status, what);
}

int FailOs(const std::wstring& path, os::Error error, std::string_view what) noexcept {
  FailAt(path, StatusOf(error), what);
  lastError.Append(": ");
  lastError.Append(os::ErrorText(error));
  return StatusOf(error);
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

std::string file_LastError() { return std::string(utdata::kvtiff19::lastError.Text()); }

int file_Fail(int status, const std::wstring& path, std::string_view why) noexcept {
  return utdata::kvtiff19::FailAt(path, status, why);
}

int file_Fail(int status, const char* what) noexcept {
  return utdata::kvtiff19::Fail(status, what ? what : "");
}

}  // namespace SCFile
