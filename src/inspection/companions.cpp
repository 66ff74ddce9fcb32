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

/// The files of a folder by their names, as they are when it is made. What a companion says of
/// itself is read when it is asked for.
class Folder {
 public:
  /// @param path of a file in it. Names that are no text are passed over: no companion is called
  ///   that
  explicit Folder(const std::wstring& path) {
    const std::wstring folder = os::SplitPath(path).directory;
    for (const std::string& name : os::NamesIn(folder)) {
      if (name == "." || name == "..") continue;
      try {
        const std::wstring wide = folder + ToWide(name);
        const os::PathParts parts = os::SplitPath(wide);
        const bool isCompanion = container::HasCompanionName(parts);
        (isCompanion ? m_companions[parts.extension] : m_others[parts.name]).push_back(wide);
      } catch (const Error&) {
        continue;
      }
    }
  }

  /// The companions of `identity` that are called after another file than `base`, in the order of
  /// their numbers' names; no copy of the base has them beside itself.
  [[nodiscard]] std::vector<std::wstring> Strays(const std::wstring& base,
                                                 const FileIdentity& identity,
                                                 std::optional<int> number) const {
    const std::wstring own = os::SplitPath(base).name;
    std::wstring wanted;
    if (number) wanted = os::SplitPath(container::CompanionName(base, *number)).extension;
    std::map<std::wstring, bool> hasBase;  // by name
    std::vector<std::wstring> strays;
    for (const auto& [extension, paths] : m_companions) {
      if (number && extension != wanted) continue;
      for (const std::wstring& path : paths) {
        const std::wstring name = os::SplitPath(path).name;
        if (name == own) continue;
        const auto origin = OriginOf(path);
        if (!origin || !origin->IsCompanion() || origin->base != identity) continue;
        const auto [has, isNew] = hasBase.try_emplace(name, false);
        if (isNew) has->second = !BaseNamed(name, identity).empty();
        if (!has->second) strays.push_back(path);
      }
    }
    std::sort(strays.begin(), strays.end());
    return strays;
  }

  /// A file of this name and identity that is no companion; empty when there is none.
  [[nodiscard]] std::wstring BaseNamed(const std::wstring& name,
                                       const FileIdentity& identity) const {
    const auto named = m_others.find(name);
    if (named == m_others.end()) return {};
    for (const std::wstring& path : named->second)
      if (const auto origin = OriginOf(path);
          origin && !origin->IsCompanion() && origin->identity == identity)
        return path;
    return {};
  }

  /// As BaseNamed, of any name; one of the name `preferred` before others.
  [[nodiscard]] std::wstring Base(const std::wstring& preferred,
                                  const FileIdentity& identity) const {
    std::wstring base = BaseNamed(preferred, identity);
    for (auto other = m_others.begin(); base.empty() && other != m_others.end(); ++other)
      base = BaseNamed(other->first, identity);
    return base;
  }

 private:
  std::map<std::wstring, std::vector<std::wstring>> m_companions;  ///< paths by extension
  std::map<std::wstring, std::vector<std::wstring>> m_others;      ///< paths by name
};

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

bool IsSameFile(const std::string& a, const std::string& b) {
  std::error_code ignored;
  return std::filesystem::equivalent(a, b, ignored);
}

/// A name that is free, with the extension of `target` under another file's name: when the renaming
/// is interrupted, the file is found again as what a renamed base leaves behind.
std::string NameOnTheWay(const std::string& target) {
  const os::PathParts parts = os::SplitPath(ToWide(target));
  constexpr int attempts = 99;
  for (int attempt = 1; attempt <= attempts; ++attempt) {
    const std::wstring name = parts.drive + parts.directory + parts.name + L"-adopt" +
                              std::to_wstring(attempt) + parts.extension;
    if (!os::CurrentFileSystem().Exists(name)) return ToUtf8(name);
  }
  throw Error(target, "cannot be renamed to", "another companion has its name meanwhile");
}

/// Puts renamings in an order in which each new name is free when its turn comes. Where files have
/// one another's names, one of them goes out of the way first.
std::vector<Renaming> InOrder(std::vector<Renaming> wanted) {
  std::vector<Renaming> ordered;
  while (!wanted.empty()) {
    const auto isFree = [&](const Renaming& renaming) {
      return std::ranges::none_of(wanted, [&](const Renaming& other) {
        return other.from != renaming.from && IsSameFile(other.from, renaming.to);
      });
    };
    if (const auto next = std::ranges::find_if(wanted, isFree); next != wanted.end()) {
      ordered.push_back(*next);
      wanted.erase(next);
      continue;
    }
    Renaming& first = wanted.front();
    const std::string away = NameOnTheWay(first.to);
    ordered.push_back({first.from, away});
    first.from = away;
  }
  return ordered;
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
  for (const std::wstring& stray : Folder(path).Strays(path, identity, next))
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
  const std::wstring found = Folder(wide).Base(os::SplitPath(wide).name, origin->base);
  const std::string base =
      found.empty() ? "an inspection that is not in its folder" : container::ShownName(found);
  return "companion " + std::to_string(origin->number) + " of " + base;
}

std::vector<Renaming> PlanAdoption(const std::string& base,
                                   const std::vector<std::string>& companions) {
  const FileOrigin origin = RequireOrigin(base);
  if (origin.IsCompanion()) throw Error(base, "cannot have companions", "it is a companion itself");
  std::vector<std::string> candidates = companions;
  if (companions.empty()) {
    const std::wstring wide = ToWide(base);
    for (const std::wstring& name : container::CompanionsBehind(wide, 0)) {
      FileOrigin its;
      const int status = SCFile::file_ReadOrigin(name.c_str(), &its, nullptr);
      // What cannot be read may be one of them; what is no inspection file, or damaged, is not.
      constexpr int known[] = {SCFile::status_Ok,
                               SCFile::status_NotFound,
                               SCFile::status_NotAFile,
                               SCFile::status_NotInspection,
                               SCFile::status_NewerVersion,
                               SCFile::status_Damaged};
      if (std::ranges::find(known, status) == std::end(known))
        throw Error::OfFileLayer(status, ToUtf8(name), "cannot be read");
      if (status == SCFile::status_Ok && its.base == origin.identity)
        candidates.push_back(ToUtf8(name));
    }
    for (const std::wstring& stray : Folder(wide).Strays(wide, origin.identity, {}))
      candidates.push_back(ToUtf8(stray));
  }
  std::vector<Renaming> renamings;
  std::map<std::wstring, std::string> taken;
  for (const std::string& companion : candidates) {
    const std::wstring target = TargetOf(base, origin, companion);
    const std::string to = ToUtf8(target);
    const auto [other, isFirst] = taken.emplace(target, companion);
    if (!isFirst) throw Error(companion, cannotBeRenamed, other->second + " has the same number");
    if (!IsSameFile(companion, to)) renamings.push_back({companion, to});
  }
  for (const auto& [from, to] : renamings) {
    const auto frees = [&, &name = to](const Renaming& other) {
      return IsSameFile(other.from, name);
    };
    if (os::CurrentFileSystem().Exists(ToWide(to)) && std::ranges::none_of(renamings, frees))
      throw Error(from, cannotBeRenamed, to + " exists", "move that file away first");
  }
  return InOrder(std::move(renamings));
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
