#include <gmock/gmock.h>

#include "interfaces/os.h"
#include "tests/src/container/inspection.h"
#include "tests/support/failing_file_system.h"

namespace utdata::test {
namespace {

/// A whole file of two groups of each type at `path`, loaded again.
Inspection WriteAndLoad(const std::wstring& path) {
  const Inspection written = MakeInspection(path);
  Fill(*written);
  EXPECT_EQ(WriteWholeFile(*written), 0);
  return Load(path);
}

Inspection LoadWithCompanions(const std::wstring& path,
                              const int (&options)[8],
                              CDataNewGroup* newGroups = nullptr) {
  Inspection inspection = Load(path);
  if (!inspection) return inspection;
  CFContTypeFileDescr* const descriptor = inspection.release();
  if (CFCont().FileUpdate(path.c_str(), descriptor, options, nullptr, newGroups) == 0)
    inspection.reset(descriptor);
  return inspection;
}

int WriteCompanion(CFContTypeFileDescr& loaded, CFContTypeFileDescr& changed, int writeFlag = 0) {
  return CFCont().FileWrite(&loaded, &changed, 1, nullptr, nullptr, writeFlag);
}

int Append(CFContTypeFileDescr& loaded, CFContTypeFileDescr& changed, int writeFlag = 0) {
  SCFile::FileHandle file = nullptr;
  const int status = CFCont().FileWrite(&loaded, &changed, 0, nullptr, &file, writeFlag);
  EXPECT_EQ(file, loaded.files.GetTail());
  return status;
}

/// A companion that changes the gain of the first channel.
void WriteGain(CFContTypeFileDescr& loaded, float gain) {
  const Inspection changed = MakeInspection();
  Add(changed->channels, *loaded.channels.GetHead())->gain = gain;
  ASSERT_EQ(WriteCompanion(loaded, *changed), 0);
}

/// Types without ids: a modification is always meant for the first.
template <class Descriptor>
constexpr bool isKeyless = std::is_same_v<Descriptor, CGSpecinfTypeDescr> ||
                           std::is_same_v<Descriptor, CGSpecmatTypeDescr>;

/// Changes about half of the fields of every descriptor, and adds a group of each type that the
/// loaded file lacks.
void ChangeAll(CFContTypeFileDescr& descriptor) {
  RandomEngine engine(7);
  container::ForEachType([&]<class Descriptor>(const container::GroupType<Descriptor>& type) {
    auto& list = descriptor.*type.list;
    if constexpr (isKeyless<Descriptor>) {
      SCFile::Family<Descriptor>::Delete(list.GetTail(), 1);
      list.RemoveAt(list.GetTailPosition());
    }
    for (Descriptor* each : list) {
      if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>) {
        const CGDataTypeFDD before = *each;
        ChangeFields(*each, engine);
        each->SetPatchID(before.GetPatchID());
        each->SetDataBookmarkType(before.GetDataBookmarkType());
        each->cellSize = before.cellSize;
      } else {
        ChangeFields(*each, engine);
      }
    }
    if constexpr (isKeyless<Descriptor>) return;
    Descriptor* const added = Add(list, MakeRecord<Descriptor>(9));
    if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>) GiveSamples(*added, 9);
  });
  descriptor.defects.GetHead()->secondText = L"judged";
}

/// What a changed copy gives after loading: types that changes do not carry are those of the file.
void ExpectChanged(const CFContTypeFileDescr& loaded,
                   const CFContTypeFileDescr& base,
                   const CFContTypeFileDescr& changed) {
  const auto expectChanged = [&]<class Descriptor>(const container::GroupType<Descriptor>& type) {
    const auto& list = loaded.*type.list;
    if constexpr (std::is_same_v<Descriptor, CGWeldScanPlanDescr> ||
                  std::is_same_v<Descriptor, CGWeldFillDescr>) {
      // What the file held, followed by what was written.
      CList<Descriptor*> expected;
      for (Descriptor* each : base.*type.list) expected.AddTail(each);
      for (Descriptor* each : changed.*type.list) expected.AddTail(each);
      ExpectSameList(list, expected, type.primaryName);
    } else if constexpr (isKeyless<Descriptor>) {
      EXPECT_TRUE(*list.GetHead() == *(changed.*type.list).GetHead());
      EXPECT_TRUE(*list.GetTail() == *(base.*type.list).GetTail());
    } else {
      ExpectSameList(list, changed.*type.list, type.primaryName);
    }
  };
  container::ForEach(container::Modified(), expectChanged);
  container::ForEach(container::WrittenAfterDefects(), expectChanged);
  ExpectSameList(loaded.infos, base.infos, L"Info");
  ExpectSameList(loaded.meshes, base.meshes, L"Mesh");
  ExpectSameList(loaded.specimenDimensions, base.specimenDimensions, L"Specdim");
  ExpectSameList(loaded.specimenDefinitions, base.specimenDefinitions, L"Specdef");
}

TEST(Write, ChangesOfEveryTypeInACompanion) {
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"weld.fpd");
  const Inspection base = WriteAndLoad(path);
  const std::string before = FileBytes(path);
  const Inspection changed = CopyOf(*base);
  const Inspection original = CopyOf(*base);
  ChangeAll(*changed);
  ASSERT_EQ(WriteCompanion(*base, *changed), 0) << SCFile::file_LastError();
  EXPECT_EQ(base->files.GetCount(), 2);
  EXPECT_TRUE(FileBytes(path) == before);

  CDataNewGroup newGroups;
  const Inspection again = LoadWithCompanions(path, readAll, &newGroups);
  ASSERT_TRUE(again);
  ExpectChanged(*again, *original, *changed);
  EXPECT_EQ(again->files.GetCount(), 2);
  EXPECT_EQ(newGroups.GetFileName(1), scratch.File(L"weld.A01"));
  EXPECT_EQ(newGroups.GetNumMapping(again->data.GetTail()), 1);
  // Unchanged samples are where they were, new ones in the companion.
  EXPECT_EQ(SamplesOf(*again->data.GetHead()), SamplesOf(*original->data.GetHead()));
  EXPECT_FALSE(SamplesOf(*again->data.GetTail()).empty());
  EXPECT_EQ(SCFile::file_OfGroup(again->data.GetTail()->samples.group), again->files.GetTail());
}

TEST(Write, ChangesOfEveryTypeAppended) {
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"weld.fpd");
  const Inspection base = WriteAndLoad(path);
  const Inspection changed = CopyOf(*base);
  const Inspection original = CopyOf(*base);
  ChangeAll(*changed);
  ASSERT_EQ(Append(*base, *changed), 0) << SCFile::file_LastError();
  const Inspection again = Load(path);
  ASSERT_TRUE(again);
  ExpectChanged(*again, *original, *changed);
  ExpectSameList(again->defects, base->defects, L"Defect");

  changed->defectTableFlag = 1;
  ASSERT_EQ(Append(*base, *changed), 0);
  const Inspection withDefects = Load(path);
  ASSERT_TRUE(withDefects);
  ExpectSameList(withDefects->defects, changed->defects, L"Defect");
}

TEST(Write, TakingAChangeBackIsAChange) {
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"weld.fpd");
  const Inspection base = WriteAndLoad(path);
  const float gain = base->channels.GetHead()->gain;
  WriteGain(*base, gain + 6);
  EXPECT_EQ(base->channels.GetHead()->gain, gain + 6);
  WriteGain(*base, gain);
  const Inspection again = LoadWithCompanions(path, readAll);
  ASSERT_TRUE(again);
  EXPECT_EQ(again->channels.GetHead()->gain, gain);
}

TEST(Write, ANewDataGroupLeavesACopyUnderFlagZero) {
  for (const int writeFlag : {0, 1}) {
    const ScratchDirectory scratch;
    const std::wstring path = scratch.File(L"weld.fpd");
    const Inspection base = WriteAndLoad(path);
    const Inspection changed = MakeInspection();
    CGDataTypeFDD* const added = Add(changed->data, MakeRecord<CGDataTypeFDD>(5));
    GiveSamples(*added, 5);
    ASSERT_EQ(Append(*base, *changed, writeFlag), 0);
    ASSERT_EQ(base->data.GetCount(), writeFlag == 0 ? 3 : 2);
    if (writeFlag != 0) continue;
    const CGDataTypeFDD& copy = *base->data.GetTail();
    EXPECT_TRUE(copy == *added);
    EXPECT_EQ(copy.dataPointer, nullptr) << "the samples in memory are the host's";
    EXPECT_EQ(copy.dataSize, 0u);
    EXPECT_EQ(SamplesOf(copy).size(),
              SamplesOf(*base->data.GetHead()).size() ? copy.samples.size / 2 : 0);

    // The next write of the group, without its samples, is written against the copy.
    added->dataPointer = nullptr;
    added->dataOffset += 1;
    ASSERT_EQ(Append(*base, *changed), 0);
    EXPECT_EQ(base->data.GetCount(), 3);
    const Inspection again = Load(path);
    ASSERT_TRUE(again);
    ASSERT_EQ(again->data.GetCount(), 3);
    EXPECT_TRUE(*again->data.GetTail() == *added);
    EXPECT_EQ(SamplesOf(*again->data.GetTail()), SamplesOf(copy));
  }
}

// A host gives a group that is stored without a bookmark one, and adds others that differ from it
// by their bookmarks alone: none is taken for another one.
TEST(Write, GroupsThatDifferByTheirBookmarksStayApart) {
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"weld.fpd");
  const Inspection written = MakeInspection(path);
  CGDataTypeFDD* const stored = Add(written->data, MakeRecord<CGDataTypeFDD>(1));
  stored->SetDataBookmarkType(bookmark_None);
  stored->dataOffset = 0;
  ASSERT_EQ(WriteWholeFile(*written), 0);
  const Inspection base = Load(path);
  base->data.GetHead()->SetDataBookmarkType(bookmark_Single);
  float offset = 0;
  for (const auto bookmark : {bookmark_Tofd, bookmark_Coupling}) {
    const Inspection changed = MakeInspection();
    CGDataTypeFDD* const added = Add(changed->data, *stored);
    added->SetDataBookmarkType(bookmark);
    added->dataOffset = ++offset;
    ASSERT_EQ(Append(*base, *changed), 0) << SCFile::file_LastError();
  }
  const Inspection again = Load(path);
  std::vector<std::pair<std::uint32_t, float>> found;
  for (const CGDataTypeFDD* each : again->data)
    found.emplace_back(each->GetDataBookmarkType(), each->dataOffset);
  EXPECT_THAT(found,
              testing::ElementsAre(std::pair(bookmark_Single, 0.0F),
                                   std::pair(bookmark_Tofd, 1.0F),
                                   std::pair(bookmark_Coupling, 2.0F)));
}

TEST(Write, ADefectTableIsWrittenOnDemandEvenEmpty) {
  const ScratchDirectory scratch;
  for (const int flag : {0, 1}) {
    const Inspection empty = MakeInspection(scratch.File(flag ? L"flag.fpd" : L"none.fpd"));
    empty->defectTableFlag = flag;
    SCFile::FileHandle file = nullptr;
    SCFile::GroupHandle top = nullptr;
    ASSERT_EQ(CFCont().FileWrite(nullptr, empty.get(), 1, &top, &file, 0), 0);
    wchar_t name[20];
    std::uint32_t type = 1, count = 0;
    ASSERT_EQ(SCFile::file_ItemInfo(file, 0, &type, nullptr, nullptr, nullptr, name, 20), 0);
    EXPECT_EQ(type, 0u);
    EXPECT_STREQ(name, L"FC");
    SCFile::WriteSignature signature;
    EXPECT_EQ(SCFile::file_ReadSignature(top, &signature), 0);
    EXPECT_EQ(signature.by.program, L"libutdata");
    ASSERT_EQ(SCFile::file_ItemNbrGet(top), (flag ? 1u : 0u) + 3u) << "when, program and version";
    if (flag) {
      ASSERT_EQ(SCFile::file_ItemInfo(top, 0, &type, nullptr, &count, nullptr, name, 20), 0);
      EXPECT_EQ(type, 10045u);
      EXPECT_EQ(count, 0u);
      EXPECT_STREQ(name, L"Defect Table Group");
    }
    EXPECT_EQ(SCFile::file_Close(file), 0);
  }
}

struct Group {
  std::uint32_t type;
  std::wstring name;
  friend bool operator==(const Group&, const Group&) = default;
};

std::vector<Group> GroupsOfLastTop(SCFile::FileHandle file) {
  std::vector<Group> groups;
  SCFile::GroupHandle top = nullptr;
  std::uint32_t key = 0;
  const std::uint32_t last = SCFile::file_ItemNbrGet(file) - 1;
  EXPECT_EQ(SCFile::file_ItemInfo(file, last, nullptr, nullptr, nullptr, &key, nullptr, 0), 0);
  EXPECT_EQ(SCFile::file_GroupOpen(file, &top, key), 0);
  for (std::uint32_t index = 0; index < SCFile::file_ItemNbrGet(top); ++index) {
    wchar_t name[40];
    std::uint32_t type = 0, kind = 0;
    EXPECT_EQ(SCFile::file_ItemInfo(top, index, &type, &kind, nullptr, nullptr, name, 40), 0);
    if (kind != SCFile::kind_Group) continue;
    if (groups.empty() || groups.back().type != type) groups.push_back({type, name});
  }
  return groups;
}

TEST(Write, GroupsStandInTheirOrderUnderTheirNames) {
  const ScratchDirectory scratch;
  const Inspection base = WriteAndLoad(scratch.File(L"weld.fpd"));
  const std::vector<Group> whole = {{10004, L"Data Group"},
                                    {10009, L"Channel"},
                                    {10020, L"Sub Channel"},
                                    {10224, L"Gate"},
                                    {10007, L"Patch"},
                                    {10008, L"Probe"},
                                    {10022, L"Weld"},
                                    {10006, L"Specdim"},
                                    {10028, L"Specinf"},
                                    {10026, L"Specmat"},
                                    {15697, L"Info"},
                                    {10011, L"Contour"},
                                    {10031, L"Refadj"},
                                    {10030, L"Mesh"},
                                    {10035, L"Specdef"},
                                    {10010, L"DAC"},
                                    {10045, L"Defect Table Group"},
                                    {10047, L"WeldScanPlan"},
                                    {10048, L"WeldFill"}};
  EXPECT_EQ(GroupsOfLastTop(base->files.GetTail()), whole);

  const Inspection changed = CopyOf(*base);
  changed->defectTableFlag = 1;
  ASSERT_EQ(Append(*base, *changed), 0);
  const std::vector<Group> changes = {{10018, L"Modified Data"},
                                      {10017, L"Modified Channel"},
                                      {10021, L""},
                                      {10025, L"Modified Gate"},
                                      {10014, L""},
                                      {10016, L""},
                                      {10023, L""},
                                      {10027, L""},
                                      {10029, L""},
                                      {10032, L"Modified Contour"},
                                      {10034, L""},
                                      {10039, L"Modified DAC"},
                                      {10045, L"Defect Table Group"},
                                      {10047, L""},
                                      {10048, L""}};
  EXPECT_EQ(GroupsOfLastTop(base->files.GetTail()), changes);
}

TEST(Companions, OptionsLeaveTheFirstTwoOut) {
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"weld.fpd");
  {
    const Inspection base = WriteAndLoad(path);
    for (const float gain : {101.0F, 102.0F, 103.0F}) WriteGain(*base, gain);
  }
  EXPECT_TRUE(std::filesystem::exists(scratch.File(L"weld.A03")));
  const struct {
    int first, second;
    std::vector<std::wstring> read;
  } cases[] = {{0, 0, {L"weld.A03"}},
               {1, 0, {L"weld.A01", L"weld.A03"}},
               {0, -1, {L"weld.A02", L"weld.A03"}},
               {1, 1, {L"weld.A01", L"weld.A02", L"weld.A03"}}};
  for (const auto& each : cases) {
    const int options[8] = {1, 1, 1, 1, each.first, each.second, 1, 1};
    const Inspection loaded = LoadWithCompanions(path, options);
    ASSERT_TRUE(loaded);
    std::vector<std::wstring> read;
    for (const SCFile::FileHandle file : loaded->files)
      read.push_back(std::filesystem::path(SCFile::file_Path(file)).filename().wstring());
    EXPECT_EQ(read.front(), L"weld.fpd");
    read.erase(read.begin());
    EXPECT_EQ(read, each.read);
    EXPECT_EQ(loaded->channels.GetHead()->gain, 103.0F);
  }
}

TEST(Companions, NinetyEightAreReadAndTheNextIsTheLast) {
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"weld.fpd");
  const Inspection base = WriteAndLoad(path);
  WriteGain(*base, 101.0F);
  for (int number = 2; number <= 98; ++number) {
    const std::string extension = ".A" + std::to_string(number / 10) + std::to_string(number % 10);
    std::filesystem::copy_file(scratch.File(L"weld.A01"), scratch.Path() / ("weld" + extension));
  }
  WriteGain(*base, 199.0F);
  EXPECT_TRUE(std::filesystem::exists(scratch.File(L"weld.A99")));
  const Inspection changed = MakeInspection();
  EXPECT_EQ(WriteCompanion(*base, *changed), SCFile::status_Exists);
  const Inspection loaded = LoadWithCompanions(path, readAll);
  ASSERT_TRUE(loaded);
  EXPECT_EQ(loaded->files.GetCount(), 99);
  EXPECT_EQ(loaded->channels.GetHead()->gain, 101.0F);
}

/// What a failed write may not have done.
void ExpectUntouched(const CFContTypeFileDescr& loaded,
                     const CFContTypeFileDescr& before,
                     const ScratchDirectory& scratch,
                     std::ptrdiff_t entries) {
  ExpectSame(loaded, before);
  EXPECT_EQ(loaded.files.GetCount(), 1);
  const auto found = std::distance(std::filesystem::directory_iterator(scratch.Path()), {});
  EXPECT_EQ(found, entries);
}

TEST(FailedWrite, LeavesNoFileAndNoCopy) {
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"weld.fpd");
  const Inspection base = WriteAndLoad(path);
  const Inspection before = CopyOf(*base);
  const std::string bytes = FileBytes(path);
  const Inspection changed = MakeInspection(path);
  Add(changed->channels, *base->channels.GetHead())->gain += 1;
  CGDataTypeFDD* const added = Add(changed->data, MakeRecord<CGDataTypeFDD>(5));
  GiveSamples(*added, 5);
  added->storageMode = kvt_StorIndexed;  // their size does not follow from the layout

  EXPECT_NE(WriteCompanion(*base, *changed), 0);
  ExpectUntouched(*base, *before, scratch, 1);
  EXPECT_NE(Append(*base, *changed), 0);
  ExpectUntouched(*base, *before, scratch, 1);
  EXPECT_TRUE(FileBytes(path) == bytes);
  EXPECT_NE(WriteWholeFile(*changed, 0), 0);
  ASSERT_TRUE(changed->SetPath(scratch.File(L"new.fpd")));
  EXPECT_NE(WriteWholeFile(*changed), 0);
  ASSERT_TRUE(changed->SetPath(scratch.File(L"no such folder/new.fpd")));
  EXPECT_EQ(WriteWholeFile(*changed), SCFile::status_NotFound);
  ExpectUntouched(*base, *before, scratch, 1);
  EXPECT_TRUE(FileBytes(path) == bytes);

  // The next write is a fresh one.
  added->dataSize = 16;
  ASSERT_EQ(Append(*base, *changed), 0) << SCFile::file_LastError();
  const Inspection again = Load(path);
  ASSERT_TRUE(again);
  EXPECT_EQ(again->data.GetCount(), 3);
}

/// A file system in which a companion is made by somebody else between its listing and its
/// creation.
class LateCompanion : public utdata::test::PassingFileSystem {
 public:
  explicit LateCompanion(std::wstring companion) : m_companion(std::move(companion)) {}
  os::Error Open(const std::wstring& path,
                 os::OpenMode mode,
                 std::unique_ptr<os::File>& file) override {
    if (mode != os::OpenMode::Read && path.ends_with(L".part"))
      std::ofstream(std::filesystem::path(m_companion)) << "theirs";
    return PassingFileSystem::Open(path, mode, file);
  }

 private:
  std::wstring m_companion;
};

TEST(FailedWrite, ACompanionThatAppearsMeanwhileStays) {
  const ScratchDirectory scratch;
  const Inspection base = WriteAndLoad(scratch.File(L"weld.fpd"));
  const Inspection before = CopyOf(*base);
  const Inspection changed = MakeInspection();
  Add(changed->channels, *base->channels.GetHead())->gain += 1;
  LateCompanion fileSystem(scratch.File(L"weld.A01"));
  os::SetFileSystem(&fileSystem);
  EXPECT_EQ(WriteCompanion(*base, *changed), SCFile::status_Exists);
  os::SetFileSystem(nullptr);
  ExpectUntouched(*base, *before, scratch, 2);
  EXPECT_EQ(FileBytes(scratch.File(L"weld.A01")), "theirs");
}

TEST(FailedWrite, ArgumentsThatMakeNoWriteAreRefused) {
  const Inspection loaded = MakeInspection(L"/" + std::wstring(255, L'd') + L"/weld.fpd");
  const Inspection changed = MakeInspection();
  EXPECT_EQ(WriteCompanion(*loaded, *changed), SCFile::status_TooLarge);
  EXPECT_TRUE(SCFile::file_LastError().ends_with(
      "weld.fpd: the path is too long for the name of a companion"));
  EXPECT_EQ(CFCont().FileWrite(loaded.get(), changed.get(), 0, nullptr, nullptr, 0),
            SCFile::status_BadArgument);
  EXPECT_EQ(CFCont().FileWrite(nullptr, changed.get(), 1, nullptr, nullptr, 0),
            SCFile::status_BadArgument);
  EXPECT_EQ(CFCont().FileWrite(loaded.get(), nullptr, 1, nullptr, nullptr, 0),
            SCFile::status_BadArgument);
  const Inspection ofNoFile = MakeInspection(L"weld.fpd");
  EXPECT_EQ(WriteCompanion(*ofNoFile, *changed), SCFile::status_BadArgument);
  EXPECT_EQ(CFCont().FileUpdate(
                nullptr, MakeInspection(L"weld.fpd").release(), readAll, nullptr, nullptr),
            1);
  EXPECT_EQ(CFCont().FileUpdate(
                L"weld.fpd", MakeInspection(L"weld.fpd").release(), nullptr, nullptr, nullptr),
            1);
  EXPECT_EQ(CFCont().FileUpdate(L"weld.fpd", nullptr, readAll, nullptr, nullptr), 1);
  std::vector<CompanionFault> faults;
  EXPECT_EQ(CFCont().UpdateFromCompanions(nullptr, nullptr, faults), 1);
  EXPECT_EQ(CFCont().UpdateFromCompanions(ofNoFile.get(), nullptr, faults), 1);
}

}  // namespace
}  // namespace utdata::test
