#include "listing/verify.h"

#include <algorithm>
#include <memory>

#include "interfaces/kvtiff19.h"
#include "interfaces/os.h"
#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/progress.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
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

}  // namespace

Verdict Verify(const std::string& path, bool quiet) {
  Verdict verdict;
  verdict.path = path;
  std::string problem;
  {
    Progress progress("verifying " + path, quiet);
    verdict.status = SCFile::file_Verify(ToWide(path).c_str(), &problem, ReportProgress, &progress);
  }
  ThrowIfInterrupted();
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

std::string Verdict::Word() const {
  if (IsClean()) return "clean";
  return status == SCFile::status_Damaged ? "damaged" : SCFile::file_StatusText(status);
}

std::string Verdict::Line() const {
  std::string line = path + ": ";
  if (IsClean())
    line += "clean, " + std::to_string(commits) + (commits == 1 ? " commit, " : " commits, ") +
            Bytes(size);
  else if (status != SCFile::status_Damaged && problems.front().ends_with(Word()))
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
