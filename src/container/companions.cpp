#include "src/container/companions.h"

#include <new>

#include "interfaces/framework.h"

namespace utdata::container {
namespace {

using SCFile::FileOrigin;
using SCFile::FileState;

constexpr wchar_t letter = L'A';
constexpr int lastNumber = 99;
constexpr std::size_t driveSize = 3;
constexpr std::size_t partSize = 260;

std::wstring Name(const os::PathParts& parts, int number) {
  std::wstring name = parts.drive + parts.directory + parts.name + L'.';
  name += letter;
  name += static_cast<wchar_t>(L'0' + number / 10);
  name += static_cast<wchar_t>(L'0' + number % 10);
  return name;
}

/// A look that fails answers yes; a second one mostly knows.
bool IsThere(const std::wstring& name) {
  os::FileSystem& fileSystem = os::CurrentFileSystem();
  return fileSystem.Exists(name) && fileSystem.Exists(name);
}

/// A file that is read before a companion.
struct Predecessor {
  std::wstring path;
  FileState state;
};

/// Whether a file was read. Lack of memory says nothing about the file.
bool IsRead(int status) {
  if (status == SCFile::status_TooLarge) throw std::bad_alloc();
  return status == SCFile::status_Ok;
}

/// Whether the file of a predecessor was once in `state`.
bool WasIn(const Predecessor& before, const FileState& state) {
  SCFile::FileHandle file = nullptr;
  if (!IsRead(SCFile::file_OpenReadOnly(before.path.c_str(), &file))) return false;
  const bool was = SCFile::file_Contains(file, state);
  SCFile::file_Close(file);
  return was;
}

/// What is wrong with a companion of that number by its name; `what` is empty when all is well.
CompanionFault Judge(const FileOrigin& origin,
                     int number,
                     const FileOrigin& base,
                     const Predecessor& before) {
  const FileState& known = origin.predecessor;
  if (!origin.IsCompanion()) return {{}, "is an inspection of its own", false, true};
  if (origin.base != InspectionOf(base))
    return {{}, "is a companion of another inspection", false, true};
  if (origin.number != static_cast<std::uint32_t>(number))
    return {{}, "says that it is companion " + std::to_string(origin.number), false, false};
  if (known == before.state) return {};
  if (known.identity != before.state.identity)
    return {{}, "was written on another file than " + ShownName(before.path), false, false};
  if (!WasIn(before, known))
    return {
        {}, "was written on a state that " + ShownName(before.path) + " never had", false, false};
  return {{},
          "was written before the last writes of " + ShownName(before.path) +
              ", and counts where both change a value",
          true,
          false};
}

void ReportGap(Judgement& judgement,
               const std::wstring& missing,
               const std::vector<std::wstring>& behind) {
  if (behind.empty()) return;
  std::string what = "is missing; " + ShownName(behind.front());
  what += behind.size() > 1 ? " to " + ShownName(behind.back()) + " were" : " was";
  judgement.faults.push_back({missing, what + " not read", false, false});
}

}  // namespace

std::wstring CompanionName(const std::wstring& path, int number) {
  return Name(os::SplitPath(path), number);
}

std::string ShownName(const std::wstring& path) {
  const os::PathParts parts = os::SplitPath(path);
  return NarrowFromWide(parts.name + parts.extension);
}

std::vector<std::wstring> ListCompanions(const std::wstring& path) {
  const os::PathParts parts = os::SplitPath(path);
  std::vector<std::wstring> names;
  for (int next = 1; next < lastNumber; ++next) {
    std::wstring name = Name(parts, next);
    if (!IsThere(name)) break;
    names.push_back(std::move(name));
  }
  return names;
}

std::vector<std::wstring> CompanionsBehind(const std::wstring& path, int number) {
  const os::PathParts parts = os::SplitPath(path);
  std::vector<std::wstring> names;
  while (++number <= lastNumber)
    if (std::wstring name = Name(parts, number); IsThere(name)) names.push_back(std::move(name));
  return names;
}

bool HasCompanionName(const os::PathParts& parts) {
  const auto isDigit = [](wchar_t character) { return character >= L'0' && character <= L'9'; };
  const std::wstring& extension = parts.extension;
  return extension.size() == 4 && extension[1] == letter && isDigit(extension[2]) &&
         isDigit(extension[3]);
}

bool CompanionNameFits(const std::wstring& path) {
  const os::PathParts parts = os::SplitPath(path);
  return parts.drive.size() < driveSize && parts.directory.size() < partSize &&
         parts.name.size() < partSize && Name(parts, 1).size() < partSize;
}

Judgement JudgeCompanions(const std::wstring& path,
                          const FileOrigin& base,
                          const FileState& state) {
  Judgement judgement;
  Predecessor before{path, state};
  int number = 0;
  for (const std::wstring& name : ListCompanions(path)) {
    ++number;
    if (name == path) continue;
    FileOrigin origin;
    FileState its;
    if (!IsRead(SCFile::file_ReadOrigin(name.c_str(), &origin, &its))) {
      // Whoever reads it says why it cannot be read.
      judgement.own.push_back({name, {}});
      return judgement;
    }
    CompanionFault fault = Judge(origin, number, base, before);
    if (fault.what.empty() || fault.isRead) {
      judgement.own.push_back({name, origin.identity});
      before = {name, its};
    }
    if (fault.what.empty()) continue;
    fault.path = name;
    judgement.faults.push_back(std::move(fault));
  }
  const std::wstring next = CompanionName(path, number + 1);
  if (number + 1 < lastNumber)
    ReportGap(judgement, next, CompanionsBehind(path, number + 1));
  else if (os::CurrentFileSystem().Exists(next))
    judgement.faults.push_back({next, "is one companion too many", false, false});
  return judgement;
}

int FindPredecessor(const CFContTypeFileDescr& loaded, int number, FileState& predecessor) {
  const SCFile::FileHandle first = loaded.files.GetHead();
  const SCFile::FileIdentity inspection = InspectionOf(SCFile::file_Origin(first));
  predecessor = SCFile::file_State(first);
  while (--number > 0) {
    FileOrigin origin;
    FileState state;
    const std::wstring name = CompanionName(loaded.path, number);
    const int status = SCFile::file_ReadOrigin(name.c_str(), &origin, &state);
    if (status != SCFile::status_Ok) return status;
    if (!origin.IsCompanion() || origin.base != inspection) continue;
    predecessor = state;
    for (const SCFile::FileHandle file : loaded.files)
      if (SCFile::file_Origin(file).identity == origin.identity)
        predecessor = SCFile::file_State(file);
    break;
  }
  return SCFile::status_Ok;
}

}  // namespace utdata::container
