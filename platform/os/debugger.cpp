#include <csignal>
#include <fstream>
#include <string>

#include "interfaces/os.h"

namespace utdata::os {

bool DebuggerAttached() noexcept {
  try {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
      if (word == "TracerPid:") return status >> word && word != "0";
  } catch (...) {
    // Unknown counts as not attached: a stop without a debugger would end the program.
  }
  return false;
}

void DebuggerBreak() noexcept { std::raise(SIGTRAP); }

}  // namespace utdata::os
