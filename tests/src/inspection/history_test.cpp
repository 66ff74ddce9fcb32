// The history of an inspection: what each write says of itself, and what it changed.
#include "utdata/history.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>
#include <vector>

#include "tests/support/known_surroundings.h"
#include "tests/support/scratch_directory.h"
#include "utdata/fset.h"
#include "utdata/idata.h"
#include "utdata/igate.h"
#include "utdata/inspection.h"
#include "utdata/newscan.h"

namespace utdata {
namespace {

using test::KnownSurroundings;
using test::ScratchDirectory;

constexpr std::int64_t noon = 1'795'435'200'000'000;  // 2026-11-23 12:00:00 UTC

class History : public testing::Test {
 protected:
  void SetUp() override {
    surroundings.now = noon;
    Inspection inspection = Inspection::New(path);
    const SampleType& type = *FindSampleType(kvt_UInt8);
    CGDataTypeFDD record = NominalRecord(type);
    SetLayout(record, type, {3, 2, 10, true});
    inspection.AddData(record, std::vector<std::byte>(60));
    CGGateTypeDescr gate;
    gate.gateId = 1;
    gate.width = 1e-6F;
    inspection.FileSet().fset_AddGGate(&gate, 1);
    inspection.SaveAs(path, false, {.program = "host", .version = "3.1"});
  }

  [[nodiscard]] std::vector<WriteEvent> Events() const { return HistoryOf(Inspection::Open(path)); }

  /// Everything about one write, on one line.
  static std::string Line(const WriteEvent& event) {
    std::string line = std::filesystem::path(event.file).extension().string() + " " +
                       std::to_string(event.write) + " " + event.program + " " + event.version +
                       " " + event.author + " " + event.reason;
    for (const GroupEvent& group : event.groups) {
      line += "; " + group.group + (group.isAdded ? " added" : "");
      for (const FieldChange& change : group.changes)
        line += ", " + std::string(change.field->key) + " " + change.shownBefore + " -> " +
                change.shownAfter;
    }
    return line;
  }

  ScratchDirectory scratch;
  std::string path = scratch.Path().string() + "/weld.fpd";
  KnownSurroundings surroundings;
};

TEST_F(History, ListsEachWriteWithItsChanges) {
  {
    Inspection inspection = Inspection::Open(path);
    surroundings.now += 1'500'000;
    CIData& item = inspection.Data()[0].Item();
    idata_typeInspParams params;
    item.idata3_GetInspParam(&params);
    params.partThickness = 0.02F;
    item.idata1_ModifyInspParam(&params, 0);
    inspection.SaveCompanion({.author = "AB",
                              .reason = "measured \xC3\xBC"
                                        "ber"});
    surroundings.now -= 3'600'000'000;  // a clock that was set back
    inspection.Gate(0, 1).SetStart(1.2e-6);
    inspection.Gate(0, 1).SetLevel(12.5);
    inspection.SaveAppended({.reason = "moved"});
    EXPECT_EQ(HistoryOf(inspection).size(), 3U) << "what was saved is in it at once";
    inspection.Gate(0, 1).SetStart(1.20000012e-6);
    CGGateTypeDescr gate;
    gate.gateId = 2;
    inspection.FileSet().fset_AddGGate(&gate, 1);
    inspection.SaveCompanion();
  }
  const std::vector<WriteEvent> events = Events();
  ASSERT_EQ(events.size(), 4U);
  EXPECT_EQ(Line(events[0]), ".fpd 1 host 3.1  ");
  const std::string library = "libutdata " + events[1].version;
  EXPECT_FALSE(events[1].version.empty());
  EXPECT_TRUE(Line(events[1]).starts_with(".A01 1 " + library +
                                          " AB measured \xC3\xBC"
                                          "ber; A-scan of "))
      << Line(events[1]);
  EXPECT_TRUE(Line(events[1]).ends_with(", partThickness 0 mm -> 20 mm")) << Line(events[1]);
  EXPECT_EQ(Line(events[2]),
            ".A01 2 " + library +
                "  moved; gate 1 of channel 0, start 0 µs -> 1.2 µs, positiveLevel 0 % -> 12.5 %, "
                "negativeLevel 0 % -> 12.5 %");
  EXPECT_EQ(Line(events[3]),
            ".A02 1 " + library +
                "  ; gate 2 of channel 0 added; gate 1 of channel 0, start "
                "1.20000004 µs -> 1.20000016 µs");
  EXPECT_EQ(events[0].when, noon);
  EXPECT_EQ(events[1].when, noon + 1'500'000);
  EXPECT_EQ(TimeText(*events[2].when), "2026-11-23 11:00:01 UTC");
}

TEST_F(History, ADefectTableIsNewOnce) {
  for (int write = 0; write < 2; ++write) {
    const Inspection inspection = Inspection::Open(path);
    CFContTypeFileDescr changes;
    changes.defectTableFlag = 1;
    ASSERT_EQ(CFCont().FileWrite(&inspection.Descriptor(), &changes, 0, nullptr, nullptr, 0), 0);
  }
  const std::vector<WriteEvent> events = Events();
  ASSERT_EQ(events.size(), 3U);
  EXPECT_TRUE(Line(events[1]).ends_with("; defect table added")) << Line(events[1]);
  EXPECT_TRUE(Line(events[2]).ends_with("; defect table")) << Line(events[2]);
}

TEST_F(History, ATextThatIsNoneKeepsTheWriteFromBeingMade) {
  Inspection inspection = Inspection::Open(path);
  inspection.Gate(0, 1).SetStart(1.2e-6);
  for (const Signature& signature :
       {Signature{.author = "\xFF"}, Signature{.reason = std::string("a\0b", 3)}}) {
    EXPECT_THROW(inspection.SaveCompanion(signature), Error);
    EXPECT_THROW(inspection.SaveAppended(signature), Error);
    EXPECT_THROW(inspection.SaveAs(path + ".new", false, signature), Error);
  }
  EXPECT_TRUE(inspection.IsModified());
  EXPECT_EQ(Events().size(), 1U);
  EXPECT_FALSE(std::filesystem::exists(scratch.Path() / "weld.A01"));
}

/// The scope is the thread's own; the innermost counts.
TEST_F(History, GivenOperationsAreSignedByTheScopeThatStands) {
  const auto write = [&](const std::wstring& name) {
    CFContTypeFileDescr groups;
    SCFile::FileHandle file = nullptr;
    EXPECT_TRUE(groups.SetPath(scratch.File(name)));
    EXPECT_EQ(CFCont().FileWrite(nullptr, &groups, 1, nullptr, &file, 0), 0);
    SCFile::file_Close(file);
    return HistoryOf(Inspection::Open(scratch.Path().string() + "/" + ToUtf8(name)))[0];
  };
  {
    const SCFile::SigningScope outer({L"host", L"1", L"AB", L""});
    {
      const SCFile::SigningScope inner({L"", L"", L"CD", L"why"});
      EXPECT_EQ(write(L"a").author + write(L"b").reason, "CDwhy");
      std::thread([&] { EXPECT_EQ(write(L"c").author, ""); }).join();
    }
    EXPECT_EQ(write(L"d").program + write(L"e").author, "hostAB");
  }
  EXPECT_EQ(write(L"f").program, "libutdata");
}

TEST_F(History, WhatAFileSaysIsTakenAsItCan) {
  using namespace SCFile;
  const std::wstring hostile = scratch.File(L"hostile.fpd");
  FileHandle file = nullptr;
  ASSERT_EQ(file_Create(hostile.c_str(), &file), status_Ok);
  constexpr std::int64_t times[] = {std::numeric_limits<std::int64_t>::max(), 5};
  const auto add = [&](auto fill) {
    SCFile::GroupHandle top = nullptr;
    ASSERT_EQ(file_GroupCreate(file, &top, 0, L"FC"), status_Ok);
    fill(top);
    ASSERT_EQ(file_Commit(file), status_Ok);
  };
  add([](SCFile::GroupHandle) {});  // of a writer that says nothing
  add([&](SCFile::GroupHandle top) {
    file_ItemValueWrite(top, sign_When, value_Text, 2, L"x");
    file_ItemValueWrite(top, sign_When, value_Int64, 2, times);
    file_ItemValueWrite(top, sign_When, value_Int64, 1, times);
    file_ItemValueWrite(top, sign_When, value_Int64, 1, times + 1);
    file_ItemValueWrite(top, sign_Author, value_Int64, 1, times);
    file_ItemValueWrite(top, sign_Author, value_Text, 1, L"");
    file_ItemValueWrite(top, sign_Author, value_Text, 8, L"\x1b[2J\nme");
    file_ItemValueWrite(top, 77, value_Int64, 1, times);
  });
  ASSERT_EQ(file_Close(file), status_Ok);
  const std::vector<WriteEvent> events =
      HistoryOf(Inspection::Open(scratch.Path().string() + "/hostile.fpd"));
  ASSERT_EQ(events.size(), 2U);
  EXPECT_FALSE(events[0].when.has_value());
  EXPECT_EQ(events[0].program, "");
  EXPECT_EQ(events[1].when, times[0]);
  EXPECT_EQ(events[1].author, "\x1b[2J\nme");
}

TEST_F(History, AnyTimeHasAText) {
  constexpr std::int64_t second = 1'000'000, day = 86'400 * second;
  const std::pair<std::int64_t, const char*> cases[] = {
      {0, "1970-01-01 00:00:00 UTC"},
      {-1, "1969-12-31 23:59:59 UTC"},
      {noon + 1, "2026-11-23 12:00:00 UTC"},
      {2'932'896 * day + 86'399 * second, "9999-12-31 23:59:59 UTC"},
      {2'932'897 * day, "an impossible time"},
      {-719'162 * day, "0001-01-01 00:00:00 UTC"},
      {-719'162 * day - 1, "an impossible time"},
      {std::numeric_limits<std::int64_t>::min(), "an impossible time"},
      {std::numeric_limits<std::int64_t>::max(), "an impossible time"}};
  for (const auto& [time, text] : cases) EXPECT_EQ(TimeText(time), text) << time;
}

}  // namespace
}  // namespace utdata
