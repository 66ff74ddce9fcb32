#include "listing/damage.h"

#include <cstdio>

#include "terminal/text.h"

namespace utdata::program {

std::vector<std::string> DamageLines(const Inspection& inspection) {
  constexpr std::size_t most = 20;
  std::vector<std::string> lines;
  const std::vector<DamagedSamples> found = inspection.Damage();
  for (const DamagedSamples& damage : found) {
    if (lines.size() == most) {
      lines.push_back(inspection.Path() + ": " + std::to_string(found.size() - most) +
                      " more places are damaged");
      break;
    }
    lines.push_back(inspection.Data()[damage.group].Name() + ": " + damage.why);
  }
  return lines;
}

void WarnOfDamage(const Inspection& inspection) {
  for (const std::string& line : DamageLines(inspection))
    std::fprintf(stderr, "warning: %s\n", Printable(line).c_str());
}

}  // namespace utdata::program
