// Companions that are not what their names promise: reported, never merged or passed over.
#include <gmock/gmock.h>

#include <functional>
#include <random>

#include "src/container/companions.h"
#include "tests/src/container/inspection.h"

namespace utdata::test {
namespace {

using Path = std::filesystem::path;

/// A new inspection of one channel with gain 100.
void MakeBase(const Path& path) {
  const Inspection written = MakeInspection(path.wstring());
  CGChanTypeDescr channel;
  channel.gain = 100;
  Add(written->channels, channel);
  ASSERT_EQ(WriteWholeFile(*written), 0) << SCFile::file_LastError();
}

/// Writes a gain: into the next companion, or behind the last file.
void PutGain(CFContTypeFileDescr& loaded, float gain, bool asCompanion = true) {
  const Inspection changed = MakeInspection();
  Add(changed->channels, *loaded.channels.GetHead())->gain = gain;
  ASSERT_EQ(CFCont().FileWrite(&loaded, changed.get(), asCompanion ? 1 : 0, nullptr, nullptr, 0), 0)
      << SCFile::file_LastError();
}

struct Updated {
  Inspection inspection;
  std::vector<CompanionFault> faults;

  [[nodiscard]] std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    for (const CompanionFault& fault : faults)
      lines.push_back(container::ShownName(fault.path) + " " + fault.what);
    return lines;
  }
};

Updated LoadOwn(const Path& path) {
  Updated updated{Load(path.wstring()), {}};
  if (!updated.inspection) return updated;
  CFContTypeFileDescr* const descriptor = updated.inspection.release();
  if (CFCont().UpdateFromCompanions(descriptor, nullptr, updated.faults) == 0)
    updated.inspection.reset(descriptor);
  return updated;
}

class CompanionFaults : public testing::Test {
 protected:
  /// weld.fpd and other.fpd with four companions each: gains 101 to 104.
  void SetUp() override {
    for (const char* name : {"weld.fpd", "other.fpd"}) {
      MakeBase(At(name));
      const Inspection loaded = Load(At(name).wstring());
      for (const float gain : {101.0F, 102.0F, 103.0F, 104.0F}) PutGain(*loaded, gain);
    }
  }

  [[nodiscard]] Path At(const std::string& name) const { return m_scratch.Path() / name; }
  void Move(const std::string& from, const std::string& to) const {
    std::filesystem::rename(At(from), At(to));
  }
  void Copy(const std::string& from, const std::string& to) const {
    std::filesystem::copy_file(At(from), At(to), std::filesystem::copy_options::overwrite_existing);
  }

  ScratchDirectory m_scratch;
};

struct FaultCase {
  const char* name;
  std::function<void(const Path&)> harm;
  float gain;  ///< of the last companion that is read
  std::vector<std::string> lines;
  int status;  ///< FileUpdate's
};

const FaultCase cases[] = {
    {"nothing", [](const Path&) {}, 104, {}, 0},
    // Which cannot be seen.
    {"the last one is missing",
     [](const Path& at) { std::filesystem::remove(at / "weld.A04"); },
     103,
     {},
     0},
    {"one is missing",
     [](const Path& at) { std::filesystem::remove(at / "weld.A02"); },
     101,
     {"weld.A02 is missing; weld.A03 to weld.A04 were not read"},
     0},
    {"several are missing",
     [](const Path& at) {
       std::filesystem::remove(at / "weld.A01");
       std::filesystem::remove(at / "weld.A02");
       std::filesystem::remove(at / "weld.A04");
     },
     100,
     {"weld.A01 is missing; weld.A03 was not read"},
     0},
    {"one of another inspection",
     [](const Path& at) { std::filesystem::rename(at / "other.A03", at / "weld.A03"); },
     102,
     {"weld.A03 is a companion of another inspection",
      "weld.A04 was written on another file than weld.A02"},
     1},
    {"one of another inspection behind the last",
     [](const Path& at) { std::filesystem::rename(at / "other.A04", at / "weld.A05"); },
     104,
     {"weld.A05 is a companion of another inspection"},
     1},
    {"a whole inspection",
     [](const Path& at) { std::filesystem::copy_file(at / "other.fpd", at / "weld.A05"); },
     104,
     {"weld.A05 is an inspection of its own"},
     1},
    {"two that changed places",
     [](const Path& at) {
       std::filesystem::rename(at / "weld.A02", at / "x");
       std::filesystem::rename(at / "weld.A03", at / "weld.A02");
       std::filesystem::rename(at / "x", at / "weld.A03");
     },
     101,
     {"weld.A02 says that it is companion 3",
      "weld.A03 says that it is companion 2",
      "weld.A04 was written on another file than weld.A01"},
     0},
    {"a copy under the next number",
     [](const Path& at) { std::filesystem::copy_file(at / "weld.A04", at / "weld.A05"); },
     104,
     {"weld.A05 says that it is companion 4"},
     0},
    {"all with the base",
     [](const Path& at) {
       for (const char* extension : {".fpd", ".A01", ".A02", ".A03", ".A04"}) {
         std::filesystem::remove(at / (std::string("other") + extension));
         std::filesystem::rename(at / (std::string("weld") + extension),
                                 at / (std::string("other") + extension));
         std::filesystem::copy_file(at / (std::string("other") + extension),
                                    at / (std::string("weld") + extension));
       }
     },
     104,
     {},
     0},
    {"the base of another",
     [](const Path& at) { std::filesystem::rename(at / "other.fpd", at / "weld.fpd"); },
     100,
     {"weld.A01 is a companion of another inspection",
      "weld.A02 is a companion of another inspection",
      "weld.A03 is a companion of another inspection",
      "weld.A04 is a companion of another inspection"},
     1},
};

TEST_F(CompanionFaults, AreReportedAndNothingElseIsRead) {
  for (const FaultCase& each : cases) {
    SCOPED_TRACE(each.name);
    const ScratchDirectory scratch;
    std::filesystem::copy(m_scratch.Path(), scratch.Path());
    each.harm(scratch.Path());
    const Updated updated = LoadOwn(scratch.Path() / "weld.fpd");
    ASSERT_TRUE(updated.inspection);
    EXPECT_EQ(updated.inspection->channels.GetHead()->gain, each.gain);
    EXPECT_EQ(updated.Lines(), each.lines);
    Inspection byName = Load(scratch.File(L"weld.fpd"));
    CFContTypeFileDescr* const descriptor = byName.release();
    const int status = CFCont().FileUpdate(descriptor->path, descriptor, readAll, nullptr, nullptr);
    EXPECT_EQ(status, each.status) << "FileUpdate goes by names, but never reads another's";
    if (status == 0) byName.reset(descriptor);
  }
}

TEST_F(CompanionFaults, ABaseThatWentOnOrBackIsReported) {
  {
    // Loaded without its companions, and appended to.
    const Inspection alone = Load(At("weld.fpd").wstring());
    Copy("weld.fpd", "before");
    PutGain(*alone, 150, false);
  }
  Updated updated = LoadOwn(At("weld.fpd"));
  EXPECT_EQ(updated.inspection->channels.GetHead()->gain, 104) << "they are read all the same";
  EXPECT_THAT(
      updated.Lines(),
      testing::ElementsAre("weld.A01 was written before the last writes of weld.fpd, and counts "
                           "where both change a value"));
  EXPECT_TRUE(updated.faults[0].isRead);
  // The next one knows what it was written on.
  PutGain(*updated.inspection, 105);
  updated = LoadOwn(At("weld.fpd"));
  EXPECT_EQ(updated.inspection->channels.GetHead()->gain, 105);
  EXPECT_EQ(updated.Lines().size(), 1U);
  // A copy from before, to which something else was appended: A01 belongs, and what it was written
  // on is in it too.
  Copy("weld.fpd", "appended");
  Copy("before", "weld.fpd");
  EXPECT_TRUE(LoadOwn(At("weld.fpd")).faults.empty());
}

TEST_F(CompanionFaults, AnOlderStateOfAPredecessorIsNotTheOneItWasWrittenOn) {
  Copy("weld.fpd", "older");
  for (int number = 1; number <= 4; ++number)
    std::filesystem::remove(At("weld.A0" + std::to_string(number)));
  {
    const Inspection loaded = Load(At("weld.fpd").wstring());
    PutGain(*loaded, 150, false);
    PutGain(*loaded, 151);
  }
  EXPECT_TRUE(LoadOwn(At("weld.fpd")).faults.empty());
  Copy("older", "weld.fpd");
  const Updated updated = LoadOwn(At("weld.fpd"));
  EXPECT_EQ(updated.inspection->channels.GetHead()->gain, 100);
  EXPECT_THAT(updated.Lines(),
              testing::ElementsAre("weld.A01 was written on a state that weld.fpd never had"));
}

TEST_F(CompanionFaults, NothingIsWrittenInBetween) {
  std::filesystem::remove(At("weld.A02"));
  std::filesystem::remove(At("weld.A03"));  // two in a row: the number after the next is free too
  const Inspection loaded = Load(At("weld.fpd").wstring());
  PutGain(*loaded, 150);
  EXPECT_EQ(loaded->files.GetCount(), 1);
  EXPECT_FALSE(std::filesystem::exists(At("weld.A02")));
}

// What a companion was written on is what lies there of the inspection, loaded or not.
TEST_F(CompanionFaults, OneThatIsWrittenWithoutItsPredecessorsStandsOnTheLastOfThem) {
  PutGain(*Load(At("weld.fpd").wstring()), 150);
  Updated updated = LoadOwn(At("weld.fpd"));
  EXPECT_EQ(updated.inspection->channels.GetHead()->gain, 150);
  EXPECT_TRUE(updated.faults.empty());
  Copy("other.A04", "weld.A05");
  std::ofstream(At("weld.A06")) << "no inspection";
  const Inspection changed = MakeInspection();
  Add(changed->channels, *updated.inspection->channels.GetHead())->gain = 151;
  EXPECT_NE(CFCont().FileWrite(updated.inspection.get(), changed.get(), 1, nullptr, nullptr, 0), 0)
      << "it may have been one of the inspection";
  EXPECT_FALSE(std::filesystem::exists(At("weld.A07")));
  Copy("other.A03", "weld.A06");
  PutGain(*updated.inspection, 151);
  updated = LoadOwn(At("weld.fpd"));
  EXPECT_EQ(updated.inspection->channels.GetHead()->gain, 151);
  EXPECT_THAT(updated.Lines(),
              testing::ElementsAre("weld.A05 is a companion of another inspection",
                                   "weld.A06 is a companion of another inspection"));
}

TEST_F(CompanionFaults, ABaseMayHaveTheNameOfACompanion) {
  MakeBase(At("base.A01"));
  const Updated updated = LoadOwn(At("base.A01"));
  ASSERT_TRUE(updated.inspection);
  EXPECT_EQ(updated.inspection->files.GetCount(), 1);
  EXPECT_TRUE(updated.faults.empty());
}

TEST_F(CompanionFaults, WithoutABaseTheFirstThatIsReadSaysWhichBelong) {
  Inspection inspection = MakeInspection(At("weld.fpd").wstring());
  CFContTypeFileDescr* const descriptor = inspection.release();
  ASSERT_EQ(CFCont().FileUpdate(descriptor->path, descriptor, readAll, nullptr, nullptr), 0);
  inspection.reset(descriptor);
  EXPECT_EQ(inspection->files.GetCount(), 4);
}

TEST_F(CompanionFaults, ACompanionAloneIsNoBase) {
  const Updated updated = LoadOwn(At("weld.A02"));
  ASSERT_TRUE(updated.inspection);
  EXPECT_EQ(updated.inspection->files.GetCount(), 1);
  EXPECT_TRUE(updated.faults.empty());
}

TEST_F(CompanionFaults, OneThatCannotBeReadEndsTheUpdate) {
  std::filesystem::resize_file(At("weld.A02"), 5000);
  EXPECT_FALSE(LoadOwn(At("weld.fpd")).inspection);
  std::filesystem::resize_file(At("weld.A02"), 0);
  EXPECT_FALSE(LoadOwn(At("weld.fpd")).inspection);
}

/// Sessions that load, append and write companions, and copies of what they made: every file
/// belongs, whatever the course.
TEST(Companions, BelongWhateverCourseTheyWereWrittenIn) {
  std::mt19937_64 dice(13);
  for (int course = 0; course < 40; ++course) {
    SCOPED_TRACE(course);
    const ScratchDirectory scratch;
    const Path path = scratch.Path() / "weld.fpd";
    MakeBase(path);
    Inspection session = LoadOwn(path).inspection;
    float gain = 200;
    std::ptrdiff_t files = 1;
    for (int step = 0; step < 12; ++step) {
      switch (dice() % 3) {
        case 0:
          session.reset();
          session = LoadOwn(path).inspection;
          break;
        case 1:
          PutGain(*session, ++gain, false);
          break;
        default:
          PutGain(*session, ++gain);
          ++files;
      }
      if (dice() % 4 == 0) {
        const Path other = scratch.Path() / ("renamed" + std::to_string(step) + ".fpd");
        for (std::ptrdiff_t number = 0; number < files; ++number) {
          const std::string digits = (number < 10 ? "0" : "") + std::to_string(number);
          const std::string extension = number == 0 ? ".fpd" : ".A" + digits;
          Path to = other;
          std::filesystem::copy_file(Path(path).replace_extension(extension),
                                     to.replace_extension(extension));
        }
        const Updated copied = LoadOwn(other);
        EXPECT_TRUE(copied.faults.empty()) << "a copy of all keeps its own";
        EXPECT_EQ(copied.inspection->files.GetCount(), files);
      }
    }
    const Updated again = LoadOwn(path);
    ASSERT_TRUE(again.inspection);
    EXPECT_THAT(again.Lines(), testing::IsEmpty());
    EXPECT_EQ(again.inspection->files.GetCount(), files);
    EXPECT_EQ(again.inspection->channels.GetHead()->gain, gain > 200 ? gain : 100);
  }
}

}  // namespace
}  // namespace utdata::test
