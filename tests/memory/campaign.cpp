#include "tests/memory/campaign.h"

#include <fcntl.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <random>
#include <utility>

#include "interfaces/kvtiff19.h"
#include "tests/support/effort.h"
#include "utdata/itemlink.h"

namespace utdata::test {
namespace {

/// How the attempts of an operation ended; in memory that the child shares with the test.
struct Figures {
  long places = 0;    ///< allocations of the operation
  long attempts = 0;  ///< places that failed, alone or with all after them
  long done = 0;      ///< all the same
  long answered = 0;
  long passed = 0;
  long aborted = 0;
  long leaked = 0;
  long halfDone = 0;  ///< what the trial checks did not hold
  // Where the child is.
  long number = 0;
  Shortage shortage = Shortage::Once;
  bool isOver = false;
};

/// The library notes all live data items by their addresses; its tables have their memory from here
/// on, wherever items are.
void GrowTables() {
  static bool areGrown = false;
  if (std::exchange(areGrown, true)) return;
  std::deque<LiveDataItem> items;
  for (std::uintptr_t address = 1; address < 8192; ++address)
    items.emplace_back(reinterpret_cast<CIData*>(16 * address));
}

void ShowWhere(const Figures& figures, const char* what) {
  std::fprintf(stderr,
               "%s: allocation %ld%s\n",
               what,
               figures.number,
               figures.shortage == Shortage::Once ? "" : " and all after it");
  ShowFailedAllocation();
}

Figures* shown = nullptr;  ///< for the handler of a signal

void ShowAbort(int signalNumber) {
  DisarmMemory();
  ShowWhere(*shown, "aborted");
  signal(signalNumber, SIG_DFL);
  raise(signalNumber);
}

/// The text of the last failure is kept by each thread: here it has its memory before anything is
/// counted.
void ForgetLastError() {
  SCFile::file_Fail(SCFile::status_Ok, std::string(4000, ' ').c_str());
  SCFile::file_Fail(SCFile::status_Ok, "");
}

/// The lowest number that is free for a descriptor: another one shows that a file stayed open.
int FreeDescriptor() {
  const int free = fcntl(STDERR_FILENO, F_DUPFD, 3);
  close(free);
  return free;
}

/// Whether each further attempt takes memory that it does not give back. What is kept on purpose is
/// kept once.
bool Leaks(const Figures& figures, const std::function<void(Trial&)>& trial) {
  for (int time = 0; time < 4; ++time) {
    ForgetLastError();
    const long before = LiveAllocations();
    Trial attempt(figures.number, figures.shortage);
    trial(attempt);
    if (LiveAllocations() <= before) return false;
  }
  return true;
}

/// One call of the trial. Returns whether memory failed in it.
bool Attempt(Figures& figures, const std::function<void(Trial&)>& trial) {
  ForgetLastError();
  const int freeBefore = FreeDescriptor();
  const long before = LiveAllocations();
  Trial attempt(figures.number, figures.shortage);
  testing::TestPartResultArray results;
  {
    const testing::ScopedFakeTestPartResultReporter reporter(
        testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &results);
    try {
      trial(attempt);
    } catch (const std::exception& other) {
      ADD_FAILURE() << "another exception: " << other.what();
    }
  }
  if (figures.number == 0) figures.places = attempt.places;
  if (figures.number != 0 && !HasMemoryFailed()) return false;
  ++figures.attempts;
  if (results.size() > 0) {
    ++figures.halfDone;
    ShowWhere(figures, "half done");
    for (int index = 0; index < std::min(results.size(), 3); ++index)
      std::fprintf(stderr, "  %s\n", results.GetTestPartResult(index).message());
  } else if (FreeDescriptor() != freeBefore) {
    ++figures.leaked;
    ShowWhere(figures, "leaked a descriptor");
  } else if (const long more = LiveAllocations() - before; more > 0 && Leaks(figures, trial)) {
    ++figures.leaked;
    ShowWhere(figures, ("leaked " + std::to_string(more)).c_str());
  }
  ++(attempt.outcome == Outcome::Done       ? figures.done
     : attempt.outcome == Outcome::Answered ? figures.answered
                                            : figures.passed);
  return true;
}

/// Goes on from the place where the figures are.
void GoOn(Figures& figures, long stride, long start, const std::function<void(Trial&)>& trial) {
  for (;; figures.number += stride) {
    alarm(100);
    if (Attempt(figures, trial)) continue;
    if (figures.shortage == Shortage::ForGood) break;
    figures.shortage = Shortage::ForGood;
    figures.number = start - stride;
  }
  figures.isOver = true;
}

/// In a child, as far as it comes.
void GoOnInChild(Figures& figures,
                 long stride,
                 long start,
                 const std::function<void(Trial&)>& trial) {
  std::fflush(nullptr);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    shown = &figures;
    for (const int end : {SIGABRT, SIGSEGV, SIGALRM}) signal(end, ShowAbort);
    GoOn(figures, stride, start, trial);
    std::fflush(nullptr);
    _exit(0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  if (status == 0 && figures.isOver) return;
  ++figures.attempts;
  ++figures.aborted;
  figures.number += stride;
}

}  // namespace

void RunCampaign(const std::string& operation, const std::function<void(Trial&)>& trial) {
  void* const shared =
      mmap(nullptr, sizeof(Figures), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(shared, MAP_FAILED);
  Figures& figures = *new (shared) Figures;
  GrowTables();
  // With memory, twice: what is made once is made, and the places are counted.
  for (int time = 0; time < 2; ++time) {
    Attempt(figures, trial);
    ASSERT_EQ(figures.halfDone + figures.leaked, 0) << operation << " fails with memory";
    ASSERT_EQ(figures.done, 1) << operation;
    figures = {.places = figures.places};
  }
  EXPECT_GT(figures.places, 0) << operation << " takes no memory";
  const long attempts = Rounds(40, 0);
  const bool isLong = CampaignFactor() > 0;
  const long stride = isLong ? 1 : std::max(1L, figures.places / attempts);
  const long start = 1 + static_cast<long>(std::random_device()()) % stride;
  figures.number = start;
  while (!figures.isOver && !testing::Test::HasFatalFailure())
    GoOnInChild(figures, stride, start, trial);
  const long lost = figures.aborted + figures.leaked + figures.halfDone;
  ReportCampaign(
      operation + ": " + std::to_string(figures.places) + " places, " +
          std::to_string(figures.attempts) + " attempts: " + std::to_string(figures.done) +
          " done, " + std::to_string(figures.answered) + " answered, " +
          std::to_string(figures.passed) + " std::bad_alloc passed, " +
          std::to_string(figures.aborted) + " aborted, " + std::to_string(figures.leaked) +
          " leaked, " + std::to_string(figures.halfDone) + " half done",
      static_cast<std::uint64_t>(lost));
  munmap(shared, sizeof(Figures));
}

}  // namespace utdata::test
