#include "terminal/interrupt.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <exception>
#include <new>
#include <utility>

#include "interfaces/os.h"
#include "terminal/failure.h"
#include "terminal/text.h"
#include "terminal/written.h"

namespace utdata::program {
namespace {

constexpr std::array<int, 3> stopSignals = {SIGINT, SIGTERM, SIGHUP};
std::array<struct sigaction, stopSignals.size()> formerActions;
std::atomic<bool> stopAsked = false;
std::atomic<bool> stopAtOnce = false;
std::array<std::atomic<const char*>, 8> leftovers;
static_assert(std::atomic<const char*>::is_always_lock_free, "signal handlers read them");

/// Calls only what is allowed in a signal handler.
[[noreturn]] void EndAtOnce(std::string_view why, int status) {
  for (const std::atomic<const char*>& leftover : leftovers)
    if (const char* path = leftover) unlink(path);
  for (const std::string_view part :
       {std::string_view("utdata: "), why, WhatWasWritten(), std::string_view("\n")})
    if (write(STDERR_FILENO, part.data(), part.size()) < 0) break;
  _exit(status);
}

/// What no handler catches is lack of memory where none may be missing: in destructors of other
/// libraries, and in handlers of failures.
[[noreturn]] void EndWithoutMemory() {
  try {
    if (std::current_exception()) throw;
  } catch (const std::bad_alloc&) {
    EndAtOnce("out of memory", 1);
  } catch (...) {
    std::abort();
  }
  std::abort();
}

extern "C" void OnStopSignal(int) {
  stopAsked = true;
  if (stopAtOnce) EndAtOnce("interrupted", interruptedStatus);
}

extern "C" void OnBusError(int number, siginfo_t* info, void*) {
  if (info->si_code == BUS_ADRERR) EndAtOnce("a file was cut short or lost while it was read", 1);
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

std::string_view WhatWasWritten() noexcept {
  const std::string_view note = WrittenNote();
  return note.empty() ? "; nothing was written" : note;
}

void EndInOrderWithoutMemory() { std::set_terminate(EndWithoutMemory); }

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
