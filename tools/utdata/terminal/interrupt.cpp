#include "terminal/interrupt.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <string_view>
#include <utility>

#include "interfaces/os.h"
#include "terminal/failure.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

constexpr std::array<int, 3> stopSignals = {SIGINT, SIGTERM, SIGHUP};
std::array<struct sigaction, stopSignals.size()> formerActions;
std::atomic<bool> stopAsked = false;
std::atomic<bool> stopAtOnce = false;
std::array<std::atomic<const char*>, 8> leftovers;
static_assert(std::atomic<const char*>::is_always_lock_free, "signal handlers read them");

/// Calls only what is allowed in a signal handler.
[[noreturn]] void EndAtOnce(std::string_view line, int status) {
  for (const std::atomic<const char*>& leftover : leftovers)
    if (const char* path = leftover) unlink(path);
  if (write(STDERR_FILENO, line.data(), line.size()) < 0) _exit(status);
  _exit(status);
}

extern "C" void OnStopSignal(int) {
  stopAsked = true;
  if (stopAtOnce) EndAtOnce("utdata: interrupted; nothing was written\n", interruptedStatus);
}

extern "C" void OnBusError(int number, siginfo_t* info, void*) {
  if (info->si_code == BUS_ADRERR)
    EndAtOnce("utdata: a file was cut short or lost while it was read; nothing was written\n", 1);
  signal(number, SIG_DFL);  // a fault of another kind happens again
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

void EndWhenAFileIsCut() {
  struct sigaction action = {};
  action.sa_sigaction = OnBusError;
  action.sa_flags = SA_SIGINFO;
  sigemptyset(&action.sa_mask);
  sigaction(SIGBUS, &action, nullptr);
}

LeftoverScope::LeftoverScope(std::string path) : m_path(std::move(path)), m_place(0) {
  for (; m_place < leftovers.size(); ++m_place) {
    const char* none = nullptr;
    if (leftovers[m_place].compare_exchange_strong(none, m_path.c_str())) return;
  }
}

LeftoverScope::~LeftoverScope() {
  if (m_place < leftovers.size()) leftovers[m_place] = nullptr;
}

UnfinishedFileScope::UnfinishedFileScope(const std::string& path) {
  ThrowIfInterrupted();
  const std::string unfinished = path + ".part";
  if (!os::CurrentFileSystem().Exists(ToWide(unfinished))) m_unfinished.emplace(unfinished);
  stopAtOnce = true;
}

UnfinishedFileScope::~UnfinishedFileScope() { stopAtOnce = false; }

}  // namespace utdata::program
