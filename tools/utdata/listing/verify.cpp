#include "listing/verify.h"

#include <algorithm>
#include <memory>
#include <new>

#include "interfaces/kvtiff19.h"
#include "interfaces/os.h"
#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/progress.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "utdata/companions.h"
#include "utdata/fcont.h"

namespace utdata::program {
namespace {

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    if (end > at) lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

/// How many commits and bytes a clean file holds.
void Measure(Verdict& verdict) {
  const std::wstring path = ToWide(verdict.path);
  SCFile::FileHandle file = nullptr;
  verdict.status = SCFile::file_OpenReadOnly(path.c_str(), &file);
  if (verdict.status != SCFile::status_Ok) {
    verdict.problems = {SCFile::file_LastError()};
    return;
  }
  verdict.commits = SCFile::file_CommitNumber(file);
  const std::uint64_t committed = SCFile::file_CommittedSize(file);
  SCFile::file_Close(file);
  std::unique_ptr<os::File> bytes;
  os::Error error = os::CurrentFileSystem().Open(path, os::OpenMode::Read, bytes);
  if (error == os::Error::None) error = bytes->Size(verdict.size);
  if (error != os::Error::None) throw Failure(verdict.path, "cannot be read", os::ErrorText(error));
  verdict.tail = verdict.size - std::min(verdict.size, committed);
}

/// A defect record whose items do not fit it has sound bytes, and yet comes back shortened.
void CheckDefects(Verdict& verdict) {
  CFCont container;
  const std::wstring path = ToWide(verdict.path);
  const std::unique_ptr<CFContTypeFileDescr> groups(
      container.FileLoad(path.c_str(), nullptr, nullptr));
  if (!groups) throw Failure(verdict.path, "cannot be loaded", SCFile::file_LastError());
  for (const ShortenedDefect& defect : ShortenedDefects(*groups))
    verdict.problems.push_back(defect.reason);
  if (!verdict.problems.empty()) verdict.status = SCFile::status_Damaged;
  DeleteGroups(*groups);
  container.FileClose(groups.get());
}

/// Handed to the layer, which no exception may cross.
bool ReportProgress(void* progress, std::uint64_t done, std::uint64_t total) {
  try {
    static_cast<Progress*>(progress)->At(done, total);
    return true;
  } catch (const Interrupted&) {
    return false;
  }
}

/// Every byte of one file.
Verdict VerifyBytes(const std::string& path, bool quiet) {
  Verdict verdict;
  verdict.path = path;
  std::string problem;
  {
    Progress progress("verifying " + path, quiet);
    verdict.status = SCFile::file_Verify(ToWide(path).c_str(), &problem, ReportProgress, &progress);
  }
  ThrowIfInterrupted();
  // That is no fault of the file.
  if (verdict.status == SCFile::status_TooLarge &&
      SCFile::file_LastError().ends_with(os::ErrorText(os::Error::NoMemory)))
    throw std::bad_alloc();
  if (verdict.status == SCFile::status_Ok) {
    CheckDefects(verdict);
    if (verdict.IsClean()) Measure(verdict);
    if (verdict.problems.empty()) return verdict;
  } else {
    verdict.problems = SplitLines(problem);
    if (verdict.problems.empty()) verdict.problems = {SCFile::file_LastError()};
  }
  for (std::string& line : verdict.problems)
    if (line.starts_with(path + ": ")) line.erase(0, path.size() + 2);
  return verdict;
}

void Add(std::vector<Verdict>& verdicts, const CompanionProblem& problem) {
  auto verdict = std::find_if(verdicts.begin(), verdicts.end(), [&](const Verdict& known) {
    return known.path == problem.path;
  });
  if (verdict == verdicts.end()) {
    verdicts.push_back({});
    verdict = std::prev(verdicts.end());
    verdict->path = problem.path;
  }
  const bool isMissing = !os::CurrentFileSystem().Exists(ToWide(problem.path));
  verdict->problems.push_back(problem.what);
  if (!verdict->IsClean()) return;
  verdict->misplaced = isMissing ? "missing" : problem.isRead ? "out of order" : "misplaced";
  verdict->status = SCFile::status_MovedOn;
}

}  // namespace

std::vector<Verdict> Verify(const std::string& path, bool quiet) {
  std::vector<Verdict> verdicts = {VerifyBytes(path, quiet)};
  CompanionCheck check;
  try {
    check = CheckCompanions(path);
  } catch (const Error&) {
    return verdicts;  // the file's own verdict says why it cannot be read
  }
  verdicts.front().role = DescribeCompanion(path);
  for (const std::string& file : check.files) {
    verdicts.push_back(VerifyBytes(file, quiet));
    verdicts.back().role = DescribeCompanion(file);
  }
  for (const CompanionProblem& problem : check.problems) Add(verdicts, problem);
  return verdicts;
}

std::string Verdict::Word() const {
  if (IsClean()) return "clean";
  if (!misplaced.empty()) return misplaced;
  return status == SCFile::status_Damaged ? "damaged" : SCFile::file_StatusText(status);
}

std::string Verdict::Line() const {
  std::string line = path + ": ";
  if (IsClean())
    line += "clean, " + std::to_string(commits) + (commits == 1 ? " commit, " : " commits, ") +
            Bytes(size) + (role.empty() ? "" : ", ") + role;
  else if (misplaced == "missing" ||
           (status != SCFile::status_Damaged && problems.front().ends_with(Word())))
    line += problems.front();
  else
    line += Word() + ": " + problems.front();
  if (tail > 0)
    line += "; a commit was interrupted or is being made, and the " + std::to_string(tail) +
            " bytes of its tail do not count";
  if (problems.size() > 1) line += " (and " + std::to_string(problems.size() - 1) + " more)";
  return Printable(line);
}

nlohmann::ordered_json Verdict::Json() const {
  nlohmann::ordered_json result = {{"path", path}, {"clean", IsClean()}};
  if (!role.empty()) result["role"] = role;
  if (IsClean()) {
    result["commits"] = commits;
    result["bytes"] = size;
    result["tail_bytes"] = tail;
  } else {
    result["status"] = Word();
    result["problems"] = problems;
  }
  return result;
}

}  // namespace utdata::program
