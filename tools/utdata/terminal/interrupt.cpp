#include "terminal/interrupt.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <string_view>

#include "terminal/failure.h"

namespace utdata::program {
namespace {

constexpr std::array<int, 3> stopSignals = {SIGINT, SIGTERM, SIGHUP};
std::array<struct sigaction, stopSignals.size()> formerActions;
std::atomic<bool> stopAsked = false;
std::atomic<const char*> unfinishedPath = nullptr;
static_assert(std::atomic<const char*>::is_always_lock_free, "the signal handler reads it");

/// Calls only what is allowed in a signal handler.
extern "C" void OnStopSignal(int) {
  stopAsked = true;
  const char* path = unfinishedPath;
  if (!path) return;
  constexpr std::string_view line = "utdata: interrupted; nothing was written\n";
  if (unlink(path) == 0 && write(STDERR_FILENO, line.data(), line.size()) < 0)
    _exit(interruptedStatus);
  _exit(interruptedStatus);
}

}  // namespace

InterruptScope::InterruptScope() {
  stopAsked = false;
  struct sigaction action = {};
  action.sa_handler = OnStopSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  for (std::size_t index = 0; index < stopSignals.size(); ++index) {
    sigaction(stopSignals[index], nullptr, &formerActions[index]);
    if (formerActions[index].sa_handler != SIG_IGN) sigaction(stopSignals[index], &action, nullptr);
  }
}

InterruptScope::~InterruptScope() {
  for (std::size_t index = 0; index < stopSignals.size(); ++index)
    sigaction(stopSignals[index], &formerActions[index], nullptr);
}

void ThrowIfInterrupted() {
  if (stopAsked) throw Interrupted();
}

UnfinishedFileScope::UnfinishedFileScope(const std::string& path) : m_unfinished(path + ".part") {
  ThrowIfInterrupted();
  unfinishedPath = m_unfinished.c_str();
}

UnfinishedFileScope::~UnfinishedFileScope() { unfinishedPath = nullptr; }

}  // namespace utdata::program
