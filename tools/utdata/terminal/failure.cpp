#include "terminal/failure.h"

#include <algorithm>
#include <array>
#include <utility>

#include "interfaces/kvtiff19.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

constexpr std::array<std::pair<int, std::string_view>, 7> advices = {{
    {SCFile::status_Exists, "--force replaces it"},
    {SCFile::status_NewerVersion, "a newer version of this program reads it"},
    {SCFile::status_Damaged, "restore it from a copy"},
    {SCFile::status_NotInspection, "'utdata import' makes an inspection file from raw samples"},
    {SCFile::status_Locked, "end the other program that writes it, then try again"},
    {SCFile::status_DiskFull, "make room, then try again"},
    {SCFile::status_InTheWay, "move it away, then try again"},
}};

}  // namespace

Failure::Failure(std::string_view file,
                 std::string_view what,
                 std::string_view why,
                 std::string_view advice) {
  std::string line;
  for (const std::string_view part : {file, what, why}) {
    if (part.empty()) continue;
    if (!line.empty()) line += ": ";
    line += part;
  }
  if (!advice.empty()) line.append("; ").append(advice);
  m_line = Printable(line);
}

Failure Failure::OfLibrary(int status, std::string_view file, std::string_view what) {
  std::string why = SCFile::file_LastError();
  if (why.empty()) why = SCFile::file_StatusText(status);
  const std::string opening = std::string(file) + ": ";
  if (why.starts_with(opening)) why.erase(0, opening.size());
  constexpr std::string_view said = "cannot be opened: ";  // `what` tells it
  if (why.starts_with(said)) why.erase(0, said.size());
  if (status == SCFile::status_NotDurable) what = {};  // nothing failed but what `why` tells
  return {file, what, why, AdviceFor(status)};
}

std::string_view Failure::AdviceFor(int status) {
  const auto* found = std::find_if(
      advices.begin(), advices.end(), [=](const auto& entry) { return entry.first == status; });
  return found == advices.end() ? std::string_view{} : found->second;
}

}  // namespace utdata::program
