#include "utdata/companions.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <new>
#include <optional>

#include "interfaces/os.h"
#include "src/container/companions.h"
#include "src/inspection/companionwarnings.h"
#include "utdata/failure.h"

namespace utdata {
namespace {

using container::InspectionOf;
using SCFile::FileIdentity;
using SCFile::FileOrigin;

/// What the file at a path says of itself; nothing of one that cannot be read.
std::optional<FileOrigin> OriginOf(const std::wstring& path) {
  FileOrigin origin;
  const int status = SCFile::file_ReadOrigin(path.c_str(), &origin, nullptr);
  if (status == SCFile::status_TooLarge) throw std::bad_alloc();
  return status == SCFile::status_Ok ? std::optional(origin) : std::nullopt;
}

FileOrigin RequireOrigin(const std::string& path, SCFile::FileState* state = nullptr) {
  FileOrigin origin;
  const int status = SCFile::file_ReadOrigin(ToWide(path).c_str(), &origin, state);
  if (status != SCFile::status_Ok) throw Error::OfFileLayer(status, path, "cannot be read");
  return origin;
}

bool IsCompanionExtension(const std::wstring& extension) {
  const auto isDigit = [](wchar_t character) { return character >= L'0' && character <= L'9'; };
  return extension.size() == 4 && extension.starts_with(L".A") && isDigit(extension[2]) &&
         isDigit(extension[3]);
}

/// Calls `visit(path, parts)` for each file in the folder of `path`, with the folder written as
/// there. Names that are no text are passed over: no companion is called that.
template <class Visit>
void ForEachNeighbour(const std::wstring& path, Visit visit) {
  const std::wstring folder = os::SplitPath(path).directory;
  for (const std::string& name : os::NamesIn(folder)) {
    if (name == "." || name == "..") continue;
    std::wstring wide;
    try {
      wide = folder + ToWide(name);
    } catch (const Error&) {
      continue;
    }
    visit(wide, os::SplitPath(wide));
  }
}

/// Whether a file that is no companion has this identity and a name of which `companion` is one.
bool HasBaseBeside(const std::wstring& companion, const FileIdentity& identity) {
  const std::wstring name = os::SplitPath(companion).name;
  bool has = false;
  ForEachNeighbour(companion, [&](const std::wstring& path, const os::PathParts& parts) {
    if (has || parts.name != name || IsCompanionExtension(parts.extension)) return;
    const auto origin = OriginOf(path);
    has = origin && !origin->IsCompanion() && origin->identity == identity;
  });
  return has;
}

/// The companions of `identity` in the folder of `base` that are called after another file, by
/// number.
std::vector<std::wstring> FindStrays(const std::wstring& base,
                                     const FileIdentity& identity,
                                     std::optional<int> number) {
  const std::wstring name = os::SplitPath(base).name;
  std::wstring wanted;
  if (number) wanted = os::SplitPath(container::CompanionName(base, *number)).extension;
  std::vector<std::wstring> strays;
  ForEachNeighbour(base, [&](const std::wstring& path, const os::PathParts& parts) {
    if (parts.name == name || !IsCompanionExtension(parts.extension)) return;
    if (number && parts.extension != wanted) return;
    const auto origin = OriginOf(path);
    if (origin && origin->IsCompanion() && origin->base == identity) strays.push_back(path);
  });
  std::sort(strays.begin(), strays.end());
  return strays;
}

std::string FolderOf(const std::string& path) {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  return std::filesystem::weakly_canonical(folder.empty() ? "." : folder, error).string();
}

constexpr const char* cannotBeRenamed = "cannot be renamed";

/// The name that a companion has to have beside its base.
std::wstring TargetOf(const std::string& base,
                      const FileOrigin& baseOrigin,
                      const std::string& companion) {
  const FileOrigin origin = RequireOrigin(companion);
  if (!origin.IsCompanion()) throw Error(companion, cannotBeRenamed, "it is no companion");
  if (origin.base != baseOrigin.identity)
    throw Error(companion, cannotBeRenamed, "it is a companion of another inspection");
  if (FolderOf(companion) != FolderOf(base))
    throw Error(
        companion, cannotBeRenamed, "it is in another folder than " + base, "move it there first");
  return container::CompanionName(ToWide(base), static_cast<int>(origin.number));
}

}  // namespace

std::string CompanionProblem::Line() const {
  const std::string line = path + " " + what;
  return isRead || what.ends_with("not read") ? line : line + "; it was not read";
}

CompanionProblem ProblemOf(const CompanionFault& fault) {
  return {ToUtf8(fault.path), fault.what, fault.isRead, fault.isForeign};
}

std::vector<CompanionProblem> FindLostCompanions(const std::wstring& path,
                                                 const FileIdentity& identity,
                                                 std::size_t found) {
  std::vector<CompanionProblem> problems;
  const int next = static_cast<int>(found) + 1;
  for (const std::wstring& stray : FindStrays(path, identity, next))
    // A copy of the base has its companions beside itself.
    if (!HasBaseBeside(stray, identity))
      problems.push_back({ToUtf8(stray),
                          "is companion " + std::to_string(next) + " of " +
                              container::ShownName(path) + " under another file's name",
                          false,
                          false});
  return problems;
}

CompanionCheck CheckCompanions(const std::string& path) {
  SCFile::FileState state;
  const FileOrigin origin = RequireOrigin(path, &state);
  CompanionCheck check;
  if (origin.IsCompanion()) return check;
  const std::wstring wide = ToWide(path);
  for (const std::wstring& name : container::CompanionsBehind(wide, 0))
    if (name != wide) check.files.push_back(ToUtf8(name));
  const container::Judgement judgement = container::JudgeCompanions(wide, origin, state);
  for (const CompanionFault& fault : judgement.faults) check.problems.push_back(ProblemOf(fault));
  for (CompanionProblem& lost : FindLostCompanions(wide, origin.identity, judgement.own.size()))
    check.problems.push_back(std::move(lost));
  return check;
}

std::string DescribeCompanion(const std::string& path) {
  const std::wstring wide = ToWide(path);
  const auto origin = OriginOf(wide);
  if (!origin || !origin->IsCompanion()) return {};
  std::string base = "an inspection that is not in its folder";
  bool isBesideBase = false;
  const std::wstring own = os::SplitPath(wide).name;
  ForEachNeighbour(wide, [&](const std::wstring& neighbour, const os::PathParts& parts) {
    if (isBesideBase || IsCompanionExtension(parts.extension)) return;
    const auto its = OriginOf(neighbour);
    if (!its || its->IsCompanion() || its->identity != origin->base) return;
    base = container::ShownName(neighbour);
    isBesideBase = parts.name == own;
  });
  return "companion " + std::to_string(origin->number) + " of " + base;
}

std::vector<Renaming> PlanAdoption(const std::string& base,
                                   const std::vector<std::string>& companions) {
  const FileOrigin origin = RequireOrigin(base);
  if (origin.IsCompanion()) throw Error(base, "cannot have companions", "it is a companion itself");
  std::vector<std::string> candidates = companions;
  if (companions.empty()) {
    const std::wstring wide = ToWide(base);
    for (const std::wstring& name : container::CompanionsBehind(wide, 0))
      if (const auto its = OriginOf(name); its && its->base == origin.identity)
        candidates.push_back(ToUtf8(name));
    for (const std::wstring& stray : FindStrays(wide, origin.identity, {}))
      if (!HasBaseBeside(stray, origin.identity)) candidates.push_back(ToUtf8(stray));
  }
  std::vector<Renaming> renamings;
  std::map<std::wstring, std::string> taken;
  for (const std::string& companion : candidates) {
    const std::wstring target = TargetOf(base, origin, companion);
    const std::string to = ToUtf8(target);
    const auto [other, isFirst] = taken.emplace(target, companion);
    if (!isFirst) throw Error(companion, cannotBeRenamed, other->second + " has the same number");
    std::error_code ignored;
    if (std::filesystem::equivalent(companion, to, ignored)) continue;
    if (os::CurrentFileSystem().Exists(target))
      throw Error(companion, cannotBeRenamed, to + " exists", "move that file away first");
    renamings.push_back({companion, to});
  }
  return renamings;
}

void Rename(const std::vector<Renaming>& renamings) {
  os::FileSystem& fileSystem = os::CurrentFileSystem();
  const auto check = [](const std::string& path, os::Error error) {
    if (error != os::Error::None) throw Error(path, cannotBeRenamed, os::ErrorText(error));
  };
  for (const auto& [from, to] : renamings)
    check(from, fileSystem.Rename(ToWide(from), ToWide(to), false));
  if (!renamings.empty())
    check(renamings.back().to, fileSystem.SyncDirectoryOf(ToWide(renamings.back().to)));
}

}  // namespace utdata
