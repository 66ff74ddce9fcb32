#include <gmock/gmock.h>

#include <functional>

#include "tests/src/container/inspection.h"

namespace utdata::test {
namespace {

using SCFile::FileHandle;
using SCFile::GroupHandle;

/// Writes a file with the file layer's own calls: `fill` gets the file and one top group.
void WriteOddFile(const std::wstring& path,
                  const std::function<void(FileHandle, GroupHandle)>& fill) {
  FileHandle file = nullptr;
  ASSERT_EQ(SCFile::file_Create(path.c_str(), &file), 0);
  GroupHandle top = nullptr;
  ASSERT_EQ(SCFile::file_GroupCreate(file, &top, 0, L"FC"), 0);
  fill(file, top);
  ASSERT_EQ(SCFile::file_Commit(file), 0);
  ASSERT_EQ(SCFile::file_Close(file), 0);
}

GroupHandle Child(GroupHandle parent, std::uint32_t code) {
  GroupHandle group = nullptr;
  EXPECT_EQ(SCFile::file_GroupCreate(parent, &group, code, L""), 0);
  return group;
}

void WriteNumber(GroupHandle group, std::uint32_t code, std::uint32_t value) {
  EXPECT_EQ(SCFile::file_ItemValueWrite(group, code, SCFile::value_UInt32, 1, &value), 0);
}

void WriteText(GroupHandle group, std::uint32_t code, const std::wstring& text) {
  const auto count = static_cast<std::uint32_t>(text.size() + 1);
  EXPECT_EQ(SCFile::file_ItemValueWrite(group, code, SCFile::value_Text, count, text.c_str()), 0);
}

std::ptrdiff_t GroupsIn(const CFContTypeFileDescr& descriptor) {
  std::ptrdiff_t groups = descriptor.defects.GetCount();
  container::ForEachType([&](const auto& type) { groups += (descriptor.*type.list).GetCount(); });
  return groups;
}

TEST(Load, EveryTypeWrittenWholeComesBack) {
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"") + L"inspection \u00fc\u4e2d.fpd";
  const Inspection written = MakeInspection(path);
  Fill(*written);
  ASSERT_EQ(WriteWholeFile(*written), 0);

  const Inspection loaded = Load(path);
  ASSERT_TRUE(loaded) << SCFile::file_LastError();
  EXPECT_EQ(loaded->path, path);
  EXPECT_EQ(loaded->status, 0);
  EXPECT_EQ(loaded->defectTableFlag, 0);
  EXPECT_EQ(loaded->files.GetCount(), 1);
  ExpectSame(*written, *loaded);
  auto original = written->data.begin();
  for (const CGDataTypeFDD* data : loaded->data) {
    const auto samples = SamplesOf(*data);
    ASSERT_FALSE(samples.empty());
    EXPECT_EQ(std::memcmp(samples.data(), (*original++)->dataPointer, samples.size() * 2), 0);
    EXPECT_EQ(data->dataPointer, nullptr);
  }
}

TEST(Load, SavedElsewhereKeepsSamples) {
  const ScratchDirectory scratch;
  const Inspection written = MakeInspection(scratch.File(L"a.fpd"));
  Fill(*written);
  ASSERT_EQ(WriteWholeFile(*written), 0);
  const Inspection loaded = Load(scratch.File(L"a.fpd"));
  ASSERT_TRUE(loaded);
  ASSERT_TRUE(loaded->SetPath(scratch.File(L"b.fpd")));
  loaded->defectTableFlag = 1;
  ASSERT_EQ(WriteWholeFile(*loaded), 0);
  EXPECT_EQ(WriteWholeFile(*loaded), SCFile::status_Exists);

  const Inspection again = Load(scratch.File(L"b.fpd"));
  ASSERT_TRUE(again);
  ExpectSame(*written, *again);
  EXPECT_EQ(SamplesOf(*again->data.GetTail()), SamplesOf(*loaded->data.GetTail()));

  // Also over the very file that is loaded: its old content stays readable until it is closed.
  ASSERT_TRUE(loaded->SetPath(scratch.File(L"a.fpd")));
  ASSERT_EQ(WriteWholeFile(*loaded, 0), 0);
  const Inspection replaced = Load(scratch.File(L"a.fpd"));
  ASSERT_TRUE(replaced);
  EXPECT_EQ(SamplesOf(*replaced->data.GetHead()), SamplesOf(*loaded->data.GetHead()));
}

TEST(Load, OnlyKnownGroupsOfATopGroupCount) {
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"odd.fpd");
  WriteOddFile(path, [](FileHandle, GroupHandle top) {
    for (const std::uint32_t code :
         {0u, 1u, 10003u, 10005u, 10012u, 10015u, 10024u, 10037u, 10225u, 15696u, 15698u, 65535u})
      Child(top, code);
    Child(top, container::codeDefect);
    WriteNumber(top, 10009, 1);  // a value, though its code is that of channels
    Child(Child(top, 10005), 10009);
  });
  const Inspection loaded = Load(path);
  ASSERT_TRUE(loaded);
  EXPECT_EQ(GroupsIn(*loaded), 0);
  EXPECT_EQ(loaded->files.GetCount(), 1);
}

TEST(Load, AFileWithoutTopGroupsIsAnEmptyInspection) {
  const ScratchDirectory scratch;
  FileHandle file = nullptr;
  ASSERT_EQ(SCFile::file_Create(scratch.File(L"empty.fpd").c_str(), &file), 0);
  ASSERT_EQ(SCFile::file_Commit(file), 0);
  ASSERT_EQ(SCFile::file_Close(file), 0);
  const Inspection loaded = Load(scratch.File(L"empty.fpd"));
  ASSERT_TRUE(loaded);
  EXPECT_EQ(loaded->path, scratch.File(L"empty.fpd"));
  EXPECT_EQ(loaded->files.GetCount(), 1);
  EXPECT_EQ(GroupsIn(*loaded), 0);
}

TEST(Load, DefectTables) {
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"defects.fpd");
  WriteOddFile(path, [](FileHandle, GroupHandle top) {
    WriteNumber(Child(Child(top, container::codeDefectTable), container::codeDefect), 9, 1);
    const GroupHandle table = Child(top, container::codeDefectTable);
    Child(table, 10009);
    const GroupHandle first = Child(table, container::codeDefect);
    WriteText(first, 11, L"before any sub-entry");
    WriteText(first, 12, L"before any sub-entry");
    WriteNumber(first, 99, 5);
    WriteNumber(first, 10, 3);
    WriteText(first, 11, L"never ended");
    WriteNumber(first, 10, 4);
    WriteText(first, 12, L"");
    WriteNumber(first, 10, 5);  // begun and not ended
    const GroupHandle broken = Child(table, container::codeDefect);
    WriteNumber(broken, 13, 7);
    WriteText(broken, 14, L"not a number");
    WriteNumber(broken, 9, 8);
  });
  const Inspection loaded = Load(path);
  ASSERT_TRUE(loaded);
  ASSERT_EQ(loaded->defects.GetCount(), 2) << "the second table replaces the first";
  const std::vector<stDefectSubEntry> ended = {{4, L"", L""}};
  EXPECT_EQ(loaded->defects.GetHead()->subEntries, ended);
  stDefectExtern readSoFar;
  readSoFar.numbers[1] = 7;
  EXPECT_TRUE(*loaded->defects.GetTail() == readSoFar);
  EXPECT_EQ(loaded->channels.GetCount(), 0);
}

TEST(Load, WhatCannotBeReadIsNull) {
  const ScratchDirectory scratch;
  std::ofstream(scratch.Path() / "text") << "not an inspection";
  for (const wchar_t* name : {L"missing", L"", L"text"})
    EXPECT_FALSE(Load(scratch.File(name))) << SCFile::file_LastError();
  EXPECT_FALSE(Load(L""));
  EXPECT_FALSE(Load(scratch.File(std::wstring(CFContTypeFileDescr::pathSize, L'a'))));
  EXPECT_EQ(CFCont().FileLoad(nullptr, nullptr, nullptr), nullptr);
}

TEST(Descriptor, PathFitsToTheLastCharacter) {
  const auto descriptor = std::make_unique<CFContTypeFileDescr>();
  EXPECT_STREQ(descriptor->path, L"");
  const std::wstring longest(CFContTypeFileDescr::pathSize - 1, L'a');
  EXPECT_TRUE(descriptor->SetPath(longest));
  EXPECT_FALSE(descriptor->SetPath(longest + L'b'));
  EXPECT_EQ(descriptor->path, longest);
  descriptor->status = descriptor->defectTableFlag = 1;
  descriptor->initializeData();
  EXPECT_STREQ(descriptor->path, L"");
  EXPECT_EQ(descriptor->status + descriptor->defectTableFlag, 0);
}

}  // namespace
}  // namespace utdata::test
