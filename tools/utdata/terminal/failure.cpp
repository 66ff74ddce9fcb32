#include "terminal/failure.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "interfaces/kvtiff19.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

constexpr std::array<std::pair<int, std::string_view>, 7> remedies = {{
    {SCFile::status_Exists, "--force replaces it"},
    {SCFile::status_NewerVersion, "a newer version of this program reads it"},
    {SCFile::status_Damaged, "restore it from a copy, or save what is whole with 'utdata rescue'"},
    {SCFile::status_NotInspection, "'utdata import' makes an inspection file from raw samples"},
    {SCFile::status_Locked, "end the other program that writes it, then try again"},
    {SCFile::status_DiskFull, "free some space, then try again"},
    {SCFile::status_InTheWay, "move it away, then try again"},
}};

std::string RemedyFor(const Failure& failure) {
  if (!failure.Remedy().empty()) return failure.Remedy();
  const auto* found = std::find_if(remedies.begin(), remedies.end(), [&](const auto& entry) {
    return entry.first == failure.Status();
  });
  return found == remedies.end() ? std::string() : std::string(found->second);
}

}  // namespace

std::string LineOf(const Failure& failure) {
  std::string line = failure.what();
  if (const std::string remedy = RemedyFor(failure); !remedy.empty()) line += "; " + remedy;
  return Printable(line);
}

}  // namespace utdata::program
