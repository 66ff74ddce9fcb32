#include "utdata/rescue.h"

#include <filesystem>
#include <utility>

#include "interfaces/kvtiff19.h"
#include "interfaces/os.h"
#include "src/container/companions.h"
#include "utdata/inspection.h"

namespace utdata {

Rescued Rescue(const std::string& damaged, const std::string& output, bool replace) {
  std::error_code ignored;
  if (std::filesystem::equivalent(damaged, output, ignored))
    throw Error(output, "cannot be written", "it is the damaged file", "choose another name");
  // What is called as a companion stands among others.
  if (!container::HasCompanionName(os::SplitPath(ToWide(output))))
    CheckNewInspection(output, replace);
  SCFile::RescueFindings findings;
  const int status =
      SCFile::file_Rescue(ToWide(damaged).c_str(), ToWide(output).c_str(), replace, &findings);
  if (status != SCFile::status_Ok && status != SCFile::status_NotDurable) {
    const bool isOfInput = SCFile::file_LastError().starts_with(damaged + ": ");
    throw Error::OfFileLayer(status,
                             isOfInput ? damaged : output,
                             isOfInput ? "cannot be rescued" : "cannot be written");
  }
  return {std::move(findings.mended), std::move(findings.unchecked), std::move(findings.lost)};
}

}  // namespace utdata
