// Processes that write the same inspection: one that is killed at any instant, and several at once.
// Every write that was reported is there, once, in the order of its writer.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/effort.h"
#include "tests/support/file_folder.h"
#include "utdata/companions.h"
#include "utdata/fset.h"
#include "utdata/history.h"
#include "utdata/inspection.h"

namespace utdata {
namespace {

constexpr std::uint32_t writers = 3;

/// What a process reports through its pipe: a write that succeeded, or what went wrong.
struct Note {
  std::uint32_t writer = 0;
  std::uint32_t number = 0;  ///< of the write, from 1; 0: `fault` says what is wrong
  char fault[120] = {};
};

/// A process of this program that reports through a pipe.
class Process {
 public:
  explicit Process(const std::function<void(int reports)>& work) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe(ends), 0);
    m_id = ::fork();
    if (m_id == 0) {
      ::close(ends[0]);
      work(ends[1]);
      ::_exit(0);
    }
    ::close(ends[1]);
    m_reports = ends[0];
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() {
    ::close(m_reports);
    ::kill(m_id, SIGKILL);
    ::waitpid(m_id, nullptr, 0);
  }

  void Kill() const { ::kill(m_id, SIGKILL); }
  /// Everything that it reports until it ends.
  [[nodiscard]] std::vector<Note> Notes() const {
    std::vector<Note> notes;
    for (Note note; ::read(m_reports, &note, sizeof note) == sizeof note;) notes.push_back(note);
    return notes;
  }

 private:
  pid_t m_id = -1;
  int m_reports = -1;
};

void Report(int reports, Note note, const std::string& fault = {}) {
  std::snprintf(note.fault, sizeof note.fault, "%s", fault.c_str());
  if (::write(reports, &note, sizeof note) != sizeof note) ::_exit(1);
}

/// An inspection of a gate for each writer.
void MakeGates(const std::string& path) {
  Inspection inspection = Inspection::New(path);
  CGChanTypeDescr channel;
  inspection.FileSet().fset_AddGChan(&channel, 1);
  for (std::uint32_t writer = 1; writer <= writers; ++writer) {
    CGGateTypeDescr gate;
    gate.gateId = writer;
    inspection.FileSet().fset_AddGGate(&gate, 1);
  }
  inspection.SaveAs(path);
}

/// A start of a gate for each number of a write.
double StartOf(std::uint32_t number) {
  return static_cast<double>(static_cast<float>(number * 1e-9));
}

enum class Way { Append, Companion, NewFile };

std::string Write(Inspection& inspection, Way way, std::uint32_t writer, std::uint32_t number) {
  inspection.Gate(0, writer).SetStart(StartOf(number));
  Signature signature;
  signature.author = std::to_string(writer);
  signature.reason = std::to_string(number);
  return way == Way::Companion ? inspection.SaveCompanion(signature)
                               : inspection.SaveAppended(signature);
}

/// The numbers of the writes that an inspection has, by writer, in order.
std::map<std::uint32_t, std::vector<std::uint32_t>> WritesOf(const Inspection& inspection) {
  std::map<std::uint32_t, std::vector<std::uint32_t>> writes;
  for (const WriteEvent& event : HistoryOf(inspection))
    if (!event.author.empty())
      writes[static_cast<std::uint32_t>(std::stoul(event.author))].push_back(
          static_cast<std::uint32_t>(std::stoul(event.reason)));
  return writes;
}

// ---- one that is killed

/// Writes from `number` on until it is killed, or there are as many companions as may be.
void WriteForEver(const std::string& path, Way way, std::uint32_t number, int reports) {
  try {
    if (way == Way::NewFile)
      for (;; ++number) {
        MakeGates(path + std::to_string(number) + ".fpd");
        Report(reports, {1, number});
      }
    Inspection inspection = Inspection::Open(path);
    for (std::uint32_t count = 0; way == Way::Append || count < 30; ++count, ++number) {
      Write(inspection, way, 1, number);
      Report(reports, {1, number});
    }
  } catch (const std::exception& error) {
    Report(reports, {1, 0}, error.what());
  }
}

/// What is wrong with the files after `last` was reported; empty when nothing is.
std::string LossAfterKill(const std::string& path,
                          Way way,
                          std::uint32_t last,
                          std::uint32_t& there) {
  if (way == Way::NewFile) {
    for (there = 0; std::filesystem::exists(path + std::to_string(there + 1) + ".fpd"); ++there)
      if (there + 10 > last)
        static_cast<void>(Inspection::Open(path + std::to_string(there + 1) + ".fpd"));
  } else {
    const Inspection inspection = Inspection::Open(path);
    if (!inspection.Warnings().empty()) return inspection.Warnings().front();
    auto writes = WritesOf(inspection);
    there = static_cast<std::uint32_t>(writes[1].size());
    for (std::uint32_t number = 1; number <= there; ++number)
      if (writes[1][number - 1] != number) return "write " + std::to_string(number) + " is missing";
    const double start = inspection.Gate(0, 1).Start();
    if (there > 0 && start != StartOf(there)) return "the last write is not applied";
  }
  if (there < last)
    return std::to_string(last) + " were reported, " + std::to_string(there) + " are there";
  if (there > last + 1) return "more writes than were begun";
  return {};
}

TEST(Processes, OneThatIsKilledLosesNothingThatItReported) {
  const int kills = test::Rounds(30, 1050);
  const int longest = test::CampaignFactor() > 0 ? 400000 : 20000;  // µs
  std::mt19937 dice(7);
  std::uint64_t lost = 0, commits = 0;
  for (int kill = 0; kill < kills;) {
    // The file system of the build, which is one with a medium.
    const test::FileFolder folder(std::filesystem::read_symlink("/proc/self/exe").parent_path());
    const Way way = std::array{Way::Append, Way::Companion, Way::NewFile}[dice() % 3];
    const std::string path = folder.Path().string() + "/weld.fpd";
    if (way != Way::NewFile) MakeGates(path);
    std::uint32_t last = 0;
    for (int turn = 0; turn < 3 && kill < kills; ++turn, ++kill) {
      SCOPED_TRACE("kill " + std::to_string(kill) + ", way " +
                   std::to_string(static_cast<int>(way)));
      std::vector<Note> notes;
      {
        const Process process([&](int reports) { WriteForEver(path, way, last + 1, reports); });
        std::this_thread::sleep_for(
            std::chrono::microseconds(dice() % static_cast<unsigned>(longest)));
        process.Kill();
        notes = process.Notes();
      }
      const std::uint32_t before = last;
      for (const Note& note : notes) {
        if (note.number == 0) {
          ADD_FAILURE() << "a write failed: " << note.fault;
          ++lost;
        }
        last = std::max(last, note.number);
      }
      commits += last - before;
      std::string loss;
      std::uint32_t there = last;
      try {
        loss = LossAfterKill(path, way, last, there);
      } catch (const Error& error) {
        loss = error.what();
      }
      if (!loss.empty()) ++lost;
      ASSERT_EQ(loss, "");
      last = there;
    }
  }
  test::ReportCampaign(std::to_string(kills) + " kills, " + std::to_string(commits) + " commits",
                       lost);
}

// ---- several at once

/// Whether a save was refused since another writer is at work or was faster: nothing is written.
bool IsRefusal(const Error& error) {
  const int status = error.Status();
  return status == SCFile::status_Locked || status == SCFile::status_MovedOn ||
         status == SCFile::status_Exists ||
         // Other writers were at work between two looks at the companions.
         error.Why().find("read") != std::string::npos ||
         error.Why().find("is missing") != std::string::npos;
}

void WriteAmongOthers(const std::string& path,
                      std::uint32_t writer,
                      std::uint32_t count,
                      int reports) {
  std::mt19937 dice(writer);
  for (std::uint32_t number = 1; number <= count;) {
    try {
      Inspection inspection = Inspection::Open(path);
      // Several writes of one opening, until another writer comes in between.
      for (unsigned more = 1 + dice() % 4; number <= count && more > 0; ++number, --more) {
        Write(inspection, dice() % 12 == 0 ? Way::Companion : Way::Append, writer, number);
        Report(reports, {writer, number});
      }
    } catch (const Error& error) {
      if (!IsRefusal(error)) return Report(reports, {writer, 0}, error.what());
      std::this_thread::sleep_for(std::chrono::microseconds(dice() % 2000));
    }
  }
}

/// Each opening shows a state that was committed, none older than the one before it.
void ReadAmongOthers(const std::string& path, int reports) {
  std::map<std::uint32_t, double> seen;
  for (std::uint32_t number = 1;; ++number) {
    try {
      const Inspection inspection = Inspection::Open(path);
      for (std::uint32_t writer = 1; writer <= writers; ++writer) {
        const double start = inspection.Gate(0, writer).Start();
        if (start < seen[writer]) Report(reports, {0, 0}, "a reader sees an older state");
        seen[writer] = start;
      }
      Report(reports, {0, number});
    } catch (const Error& error) {
      Report(reports, {0, 0}, error.what());
    }
  }
}

TEST(Processes, SeveralAtOnceLoseNothing) {
  const int rounds = test::Rounds(2, 200);
  constexpr std::uint32_t count = 100;
  std::uint64_t written = 0, read = 0, lost = 0;
  for (int round = 0; round < rounds; ++round) {
    const test::FileFolder folder;
    const std::string path = folder.Path().string() + "/weld.fpd";
    MakeGates(path);
    std::deque<Process> processes;
    for (std::uint32_t writer = 1; writer <= writers; ++writer)
      processes.emplace_back([&](int reports) { WriteAmongOthers(path, writer, count, reports); });
    Process reader([&](int reports) { ReadAmongOthers(path, reports); });
    std::vector<Note> readings;
    std::thread readerNotes([&] { readings = reader.Notes(); });
    std::vector<Note> notes;
    for (const Process& process : processes)
      for (const Note& note : process.Notes()) notes.push_back(note);
    reader.Kill();
    readerNotes.join();
    read += readings.size();
    for (const auto* list : {&notes, &readings})
      for (const Note& note : *list)
        if (note.number == 0) {
          ADD_FAILURE() << "writer " << note.writer << ": " << note.fault;
          ++lost;
        }
    const Inspection inspection = Inspection::Open(path);
    auto writes = WritesOf(inspection);
    for (const Note& note : notes) {
      written += note.number > 0;
      lost += note.number > 0 && std::ranges::count(writes[note.writer], note.number) != 1;
    }
    for (const auto& [writer, numbers] : writes)
      if (!std::ranges::is_sorted(numbers) || numbers.size() != count) ++lost;
    ASSERT_EQ(lost, 0u) << "round " << round;
  }
  test::ReportCampaign(std::to_string(writers) + " writers, " + std::to_string(written) +
                           " writes, " + std::to_string(read) + " openings by a reader",
                       lost);
}

}  // namespace
}  // namespace utdata
