#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <map>
#include <string>

#include "interfaces/os.h"

namespace utdata::os {
namespace {

/// The rows "Name:  1234 kB" of a status page of the system, in bytes.
std::map<std::string, std::uint64_t> ReadRows(const char* page) {
  std::map<std::string, std::uint64_t> rows;
  std::ifstream stream(page);
  for (std::string line; std::getline(stream, line);) {
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos || line.size() < 3 || line.substr(line.size() - 3) != " kB")
      continue;
    rows[line.substr(0, colon)] = 1024 * std::strtoull(line.c_str() + colon + 1, nullptr, 10);
  }
  return rows;
}

/// User addresses where nothing limits them: half of the 48 bits that processors translate.
constexpr std::uint64_t addressSpace =
    sizeof(void*) == 8 ? std::uint64_t{1} << 47 : std::numeric_limits<std::uint32_t>::max();

}  // namespace

MemoryStatus QueryMemoryStatus() noexcept {
  MemoryStatus status{};
  try {
    auto machine = ReadRows("/proc/meminfo");
    status.totalPhysical = machine["MemTotal"];
    status.availablePhysical = std::min(machine["MemAvailable"], status.totalPhysical);
    if (status.totalPhysical > 0)
      status.loadPercent = static_cast<std::uint32_t>(
          (status.totalPhysical - status.availablePhysical) * 100 / status.totalPhysical);
    status.totalPaged = status.totalPhysical + machine["SwapTotal"];
    status.availablePaged = status.availablePhysical + machine["SwapFree"];
    rlimit limit{};
    status.totalVirtual = addressSpace;
    if (::getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY)
      status.totalVirtual = std::min<std::uint64_t>(addressSpace, limit.rlim_cur);
    status.availableVirtual =
        status.totalVirtual -
        std::min(status.totalVirtual, ReadRows("/proc/self/status")["VmSize"]);
  } catch (...) {
    // No memory for the rest: what is known so far is returned.
  }
  return status;
}

}  // namespace utdata::os
