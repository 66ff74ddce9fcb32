// Every call to the operating system fails in turn, alone or with all after it, under everything
// that the library does with files: what reported success is there, what reported a failure is
// there whole or not at all, and the same attempt succeeds once the fault is gone.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/src/container/inspection.h"
#include "tests/support/effort.h"
#include "tests/support/failing_file_system.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/file_folder.h"
#include "tests/support/file_snapshot.h"
#include "tests/support/known_surroundings.h"
#include "utdata/companions.h"
#include "utdata/edits.h"
#include "utdata/fset.h"
#include "utdata/gating.h"
#include "utdata/history.h"
#include "utdata/inspection.h"
#include "utdata/newscan.h"
#include "utdata/recording.h"
#include "utdata/rescue.h"
#include "utdata/samples.h"

namespace utdata {
namespace {

namespace fs = std::filesystem;
using test::FailingFileSystem;
using Call = FailingFileSystem::Call;

/// Names and what stands in the files; of an inspection file its groups.
using Files = std::map<std::string, std::string>;

/// One attempt at a job, and the next one with what is left of it.
struct Stage {
  [[nodiscard]] std::string operator/(const std::string& name) const { return folder + "/" + name; }

  std::string folder;
  bool isAgain = false;
  bool isChanged = false;
  std::optional<Inspection> inspection;
  test::Inspection groups;   ///< as a host of the given classes has them
  test::Inspection changes;  ///< of these
  std::string seen;          ///< what a reading job found
};

struct Job {
  const char* name;
  void (*prepare)(Stage& stage);  ///< makes the files, without faults
  void (*act)(Stage& stage);      ///< throws when it fails; what it began may be there again
  bool isAtomic = true;
  const char* left = "";  ///< what stays where it cannot be removed either
};

std::vector<std::byte> SamplesOf(unsigned seed) {
  std::vector<std::byte> samples(6 * 4 * 500);
  for (std::size_t at = 0; at < samples.size(); ++at)
    samples[at] = static_cast<std::byte>(at * 7 % 251 + seed);
  return samples;
}

void Fill(Inspection& inspection) {
  const SampleType& type = *FindSampleType("u8");
  CGDataTypeFDD record = NominalRecord(type);
  SetLayout(record, type, {6, 4, 500, true});
  inspection.AddData(record, SamplesOf(1));
  CGChanTypeDescr channel;
  CGGateTypeDescr gate;
  gate.gateId = 1;
  inspection.FileSet().fset_AddGChan(&channel, 1);
  inspection.FileSet().fset_AddGGate(&gate, 1);
}

void MakeBase(Stage& stage, const char* name = "weld.fpd") {
  Inspection inspection = Inspection::New(stage / name);
  Fill(inspection);
  inspection.SaveAs(stage / name);
}

void SetGain(Inspection& inspection, const char* gain) {
  const std::pair<std::string, std::string> values[] = {{"gain", gain}};
  EditableGroups(inspection, SCFile::file_GroupTypeOf<CGChanTypeDescr>()).at(0).Change(values);
}

void MakeWithCompanions(Stage& stage) {
  MakeBase(stage);
  Inspection inspection = Inspection::Open(stage / "weld.fpd");
  for (const char* gain : {"1", "2"}) {
    SetGain(inspection, gain);
    inspection.SaveCompanion();
  }
}

void Open(Stage& stage) {
  if (!stage.inspection) stage.inspection.emplace(Inspection::Open(stage / "weld.fpd"));
}

/// What a host sees of an inspection.
std::string Meaning(const std::string& path, SampleTables tables = SampleTables::Mapped) {
  OpenOptions options;
  options.tables = tables;
  Inspection inspection = Inspection::Open(path, options);
  std::string text = "files " + std::to_string(inspection.Files().size()) + ", writes " +
                     std::to_string(HistoryOf(inspection).size());
  for (const auto& [key, count] : inspection.CountGroups())
    if (count > 0) text += ", " + key + " " + std::to_string(count);
  for (const auto* type :
       {&SCFile::file_GroupTypeOf<CGChanTypeDescr>(), &SCFile::file_GroupTypeOf<CGGateTypeDescr>()})
    for (const GroupHandle& group : EditableGroups(inspection, *type))
      for (const Field& field : group.Values().All()) text += " " + field.Show();
  for (const DataGroup& group : inspection.Data()) {
    const std::span<const std::byte> table = group.Table();
    text += "\n";
    text.append(reinterpret_cast<const char*>(table.data()), table.size());
  }
  for (const std::string& warning : inspection.Warnings())
    text += "\n" + warning.substr(warning.rfind('/') + 1);
  return text;
}

void Check(int status) {
  if (status != SCFile::status_Ok)
    throw Error({}, "status " + std::to_string(status), SCFile::file_LastError());
}

template <int newFile>
void WriteThroughTheContainer(Stage& stage) {
  CFCont container;
  const std::wstring path = ToWide(stage / "weld.fpd");
  if (!stage.groups) {
    test::Inspection loaded = test::Load(path);
    if (!loaded) throw Error({}, "not loaded", SCFile::file_LastError());
    CFContTypeFileDescr* const descriptor = loaded.release();
    if (container.FileUpdate(path.c_str(), descriptor, test::readAll, nullptr, nullptr) != 0)
      throw Error({}, "not updated", SCFile::file_LastError());  // and deleted
    stage.groups.reset(descriptor);
  }
  if (!stage.changes) {
    stage.changes = test::MakeInspection();
    test::Add(stage.changes->channels, *stage.groups->channels.GetHead())->gain = 7;
  }
  if (stage.isChanged) return;
  const auto files = stage.groups->files.GetCount();
  const int status =
      container.FileWrite(stage.groups.get(), stage.changes.get(), newFile, nullptr, nullptr, 0);
  const bool isGap = newFile && stage.groups->files.GetCount() == files;
  stage.isChanged = !isGap && (status == SCFile::status_Ok || status == SCFile::status_NotDurable);
  Check(status);
  if (isGap) throw Error({}, "not written", "a gap");
}

void Acquire(Stage& stage) {
  const std::vector<std::int16_t> samples(3 * 2 * 40, 9);
  const std::vector<std::uint16_t> values(3 * 2, 5);
  const std::string path = stage / "weld.acq";
  if (stage.isAgain) fs::remove(path);
  static_cast<void>(RecordScan(path, {3, 2, 40, 1e-8}, samples, {1, values, values}));
}

const Job jobs[] = {
    {"new file",
     [](Stage&) {},
     [](Stage& stage) {
       if (!stage.inspection) stage.inspection.emplace(Inspection::New(stage / "weld.fpd"));
       if (!stage.isChanged) Fill(*stage.inspection);
       stage.isChanged = true;
       stage.inspection->SaveAs(stage / "weld.fpd", stage.isAgain);
     }},
    {"replaced file",
     [](Stage& stage) {
       MakeWithCompanions(stage);
       Inspection old = Inspection::New(stage / "out.fpd");
       old.SaveAs(stage / "out.fpd");
     },
     [](Stage& stage) {
       Open(stage);
       stage.inspection->SaveAs(stage / "out.fpd", true);
     }},
    {"append",
     MakeWithCompanions,
     [](Stage& stage) {
       Open(stage);
       if (!stage.isChanged) SetGain(*stage.inspection, "7");
       stage.isChanged = true;
       if (stage.inspection->IsModified()) stage.inspection->SaveAppended();
     }},
    {"companion with samples",
     MakeWithCompanions,
     [](Stage& stage) {
       Open(stage);
       if (!stage.isChanged) Gate(*stage.inspection, {0, 2, 1e-6, 1e-6, {}});
       stage.isChanged = true;
       if (stage.inspection->IsModified()) stage.inspection->SaveCompanion();
     }},
    {"container: append", MakeWithCompanions, WriteThroughTheContainer<0>},
    {"container: companion", MakeWithCompanions, WriteThroughTheContainer<1>},
    {"load, mapped",
     MakeWithCompanions,
     [](Stage& stage) { stage.seen = Meaning(stage / "weld.fpd"); }},
    {"load, in memory",
     MakeWithCompanions,
     [](Stage& stage) { stage.seen = Meaning(stage / "weld.fpd", SampleTables::InMemory); }},
    {"adopt",
     [](Stage& stage) {
       MakeWithCompanions(stage);
       fs::rename(stage / "weld.A01", stage / "x");
       fs::rename(stage / "weld.A02", stage / "weld.A01");
       fs::rename(stage / "x", stage / "weld.A02");
     },
     [](Stage& stage) { Rename(PlanAdoption(stage / "weld.fpd")); },
     false},
    {"rescue",
     [](Stage& stage) {
       MakeBase(stage);
       const std::uint64_t at =
           Inspection::Open(stage / "weld.fpd").Data()[0].Stored().samples.offset;
       std::vector<std::byte> bytes = test::BytesOf(ToWide(stage / "weld.fpd"));
       bytes[static_cast<std::size_t>(at) + 700] ^= std::byte{1};
       test::WriteBytes(ToWide(stage / "weld.fpd"), bytes);
     },
     [](Stage& stage) {
       const Rescued rescued = Rescue(stage / "weld.fpd", stage / "out.fpd", stage.isAgain);
       for (const std::string& line : rescued.lost) stage.seen += line + "\n";
     }},
    {"acquisition", [](Stage&) {}, Acquire, true, "weld.acq"},
    {"recording into a file",
     Acquire,
     [](Stage& stage) {
       Recording recording(stage / "weld.acq");
       Inspection inspection = Inspection::New(stage / "out.fpd");
       CGDataTypeFDD record = NominalRecord(*FindSampleType("i16"));
       SetLayout(record, *FindSampleType("i16"), {3, 2, 40, true});
       recording.AddAScans(inspection, record, 2048);
       inspection.SaveAs(stage / "out.fpd", stage.isAgain);
     }},
};

bool IsPart(const std::string& name) { return name.ends_with(".part"); }

bool IsInspection(const std::string& name) {
  return !IsPart(name) && (name.ends_with(".fpd") || name.find(".A0") != std::string::npos);
}

Files FilesIn(const std::string& folder) {
  Files files;
  for (const auto& entry : fs::directory_iterator(folder)) {
    const std::string name = entry.path().filename().string();
    const std::wstring path = ToWide(entry.path().string());
    if (IsInspection(name)) {
      files[name] = test::SnapshotOf(path).value_or("damaged");
      continue;
    }
    std::string start(1 << 20, '\0');  // an acquisition that failed may be all hole behind it
    std::ifstream stream(entry.path(), std::ios::binary);
    stream.read(start.data(), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(stream.gcount()));
    files[name] = std::to_string(entry.file_size()) + " bytes " + start;
  }
  return files;
}

std::multiset<std::string> ContentsOf(const Files& files) {
  std::multiset<std::string> contents;
  for (const auto& [name, content] : files) contents.insert(content);
  return contents;
}

/// What hosts see of each inspection file; of damaged ones, that they are.
std::string MeaningOf(const Files& files, const std::string& folder) {
  std::string text;
  for (const auto& [name, content] : files) {
    if (!IsInspection(name)) continue;
    text += name + ": ";
    try {
      text += Meaning(folder + "/" + name);
    } catch (const Error& error) {
      text += error.Why();
    }
    text += "\n";
  }
  return text;
}

std::size_t OpenDescriptors() {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

void Copy(const std::map<std::string, std::vector<std::byte>>& files, const std::string& folder) {
  for (const auto& entry : fs::directory_iterator(folder)) fs::remove(entry.path());
  for (const auto& [name, bytes] : files) test::WriteBytes(ToWide(folder + "/" + name), bytes);
}

class EveryCall : public testing::TestWithParam<Job> {
 protected:
  void SetUp() override {
    Stage stage = NewStage();
    GetParam().prepare(stage);
    stage = NewStage();
    for (const auto& entry : fs::directory_iterator(Folder()))
      m_prepared[entry.path().filename().string()] = test::BytesOf(ToWide(entry.path().string()));
    m_before = FilesIn(Folder());
    m_system.FailAt(0, os::Error::None, false);
    GetParam().act(stage);
    m_calls = m_system.Calls();
    m_seen = stage.seen;
    stage = NewStage();
    m_done = FilesIn(Folder());
    m_meaning = MeaningOf(m_done, Folder());
  }

  [[nodiscard]] std::string Folder() const { return m_folder.Path().string(); }
  Stage NewStage() {
    m_surroundings.random = 40;
    Stage stage;
    stage.folder = Folder();
    return stage;
  }

  /// Runs the job. @param why receives what it reports when it fails
  static bool Act(Stage& stage, std::string& why) {
    try {
      GetParam().act(stage);
      return true;
    } catch (const Error& error) {
      why = error.what();
      return false;
    }
  }

  /// What is wrong after an attempt with a fault; empty when nothing is.
  std::string ProblemOf(bool isReported, bool mayLeaveParts) {
    Files files = FilesIn(Folder());
    if (files == m_done) return {};
    if (mayLeaveParts)
      std::erase_if(files, [](const auto& each) {
        return IsPart(each.first) || (each.first == GetParam().left);
      });
    if (files == m_done) return {};
    if (isReported) return "success is reported, and the files are not so";
    if (files == m_before) return {};
    if (!GetParam().isAtomic && ContentsOf(files) == ContentsOf(m_before)) return {};
    std::string names;
    for (const auto& [name, content] : files) names += " " + name;
    return "the files are neither as before nor as they are to be:" + names;
  }

  /// One attempt with a fault, and one without on what is left. @return what is wrong then
  std::string Attempt(std::uint64_t call, os::Error error, bool andAllAfter) {
    Copy(m_prepared, Folder());
    Stage stage = NewStage();
    std::string why;
    m_system.FailAt(call, error, andAllAfter);
    const bool isReported = Act(stage, why);
    const std::optional<Call> failed = m_system.FailedCall();
    m_system.FailAt(0, os::Error::None, false);
    // What is done once in a process is not done again: there may be a call less.
    if (!failed) return isReported ? "" : "it fails without a fault: " + why;
    // This is no failure but an answer.
    if (failed == Call::Exists && !os::MayExist(error)) return {};
    if (isReported && stage.seen != m_seen) return "something else was read";
    // A file of which it is not known whose it is stays, and so does what cannot be removed.
    const bool mayLeaveParts = andAllAfter || failed == Call::Remove || failed == Call::Identify ||
                               failed == Call::IdentifyName || failed == Call::Lock;
    if (std::string problem = ProblemOf(isReported, mayLeaveParts); !problem.empty())
      return problem + " (" + why + ")";
    stage.isAgain = true;
    stage.seen.clear();
    const std::string reported = why;
    if (!isReported && !Act(stage, why))
      return "the next attempt fails: " + why + " (" + reported + ")";
    stage = {};
    if (MeaningOf(FilesIn(Folder()), Folder()) != m_meaning)
      return "the next attempt does not make good what was not done (" + reported + ")";
    return {};
  }

  test::FileFolder m_folder;
  FailingFileSystem m_system;
  test::FileSystemInPlace m_inPlace{m_system};
  test::KnownSurroundings m_surroundings;
  std::map<std::string, std::vector<std::byte>> m_prepared;
  Files m_before;
  Files m_done;
  std::string m_meaning;
  std::string m_seen;
  std::uint64_t m_calls = 0;
};

TEST_P(EveryCall, FailsInTurn) {
  // That a name is not there is no failure but an answer.
  const os::Error errors[] = {os::Error::Other,
                              os::Error::DiskFull,
                              os::Error::AccessDenied,
                              os::Error::NoMemory,
                              os::Error::Busy};
  // The short form takes some of them, another error from call to call.
  const std::uint64_t step = test::CampaignFactor() > 0 ? 1 : 290 / test::Repetitions(10);
  const std::size_t descriptors = OpenDescriptors();
  std::uint64_t attempts = 0, lost = 0, turn = 0;
  for (std::uint64_t call = 1; call <= m_calls; ++call)
    for (const os::Error error : errors)
      for (const bool andAllAfter : {false, true}) {
        if (turn++ % step != 0) continue;
        ++attempts;
        const std::string problem = Attempt(call, error, andAllAfter);
        EXPECT_EQ(OpenDescriptors(), descriptors) << "files stay open";
        if (problem.empty()) continue;
        ++lost;
        ADD_FAILURE() << "call " << call << (andAllAfter ? " and all after it" : "") << ", "
                      << os::ErrorText(error) << ": " << problem;
        if (lost == 5) return;
      }
  test::ReportCampaign(std::string(GetParam().name) + ": " + std::to_string(m_calls) + " calls, " +
                           std::to_string(attempts) + " failures",
                       lost);
}

INSTANTIATE_TEST_SUITE_P(Jobs, EveryCall, testing::ValuesIn(jobs), [](const auto& each) {
  std::string name = each.param.name;
  std::erase_if(name,
                [](char letter) { return !std::isalpha(static_cast<unsigned char>(letter)); });
  return name;
});

}  // namespace
}  // namespace utdata
