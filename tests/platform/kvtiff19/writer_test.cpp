// Who may write when, and what becomes of files that are not written to the end.
#include <gtest/gtest.h>

#include "interfaces/kvtiff19.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/file_folder.h"
#include "tests/support/file_snapshot.h"

namespace {

using namespace SCFile;
using utdata::test::BytesOf;
using utdata::test::FileFolder;
using utdata::test::SnapshotOf;
using Names = std::vector<std::wstring>;

constexpr std::uint32_t anyGroup = 60000;

int Append(FileHandle file, const wchar_t* name) {
  GroupHandle group = nullptr;
  return file_GroupCreate(file, &group, anyGroup, name);
}

void MakeFile(const std::wstring& path, const wchar_t* name) {
  FileHandle file = nullptr;
  ASSERT_EQ(file_Create(path.c_str(), &file), status_Ok) << file_LastError();
  ASSERT_EQ(Append(file, name), status_Ok) << file_LastError();
  ASSERT_EQ(file_Commit(file), status_Ok) << file_LastError();
  ASSERT_EQ(file_Close(file), status_Ok);
}

FileHandle OpenFile(const std::wstring& path) {
  FileHandle file = nullptr;
  EXPECT_EQ(file_Open(path.c_str(), &file), status_Ok) << file_LastError();
  return file;
}

TEST(Writer, OnlyOneAndOnlyOnWhatItLoaded) {
  const FileFolder folder;
  const std::wstring path = folder / L"weld.fpd";
  MakeFile(path, L"first");
  FileHandle one = OpenFile(path);
  FileHandle two = OpenFile(path);
  ASSERT_EQ(Append(one, L"second"), status_Ok);
  EXPECT_EQ(Append(two, L"other"), status_Locked);
  EXPECT_EQ(file_Commit(two), status_Locked)
      << "a write that was refused must not look like a success";
  EXPECT_EQ(file_Commit(two), status_Ok) << "nothing is left to do";
  EXPECT_EQ(SnapshotOf(path), "60000 type 0 count 0 first\n") << "readers never wait";
  ASSERT_EQ(file_Commit(one), status_Ok);
  EXPECT_EQ(Append(two, L"other"), status_MovedOn);
  EXPECT_EQ(Append(one, L"third"), status_Ok)
      << "the lock is free again, and this handle knows the file";
  ASSERT_EQ(file_Commit(one), status_Ok);
  EXPECT_EQ(file_Close(one), status_Ok);
  EXPECT_EQ(file_Close(two), status_Ok);
  EXPECT_EQ(
      SnapshotOf(path),
      "60000 type 0 count 0 first\n60000 type 0 count 0 second\n60000 type 0 count 0 third\n");
}

TEST(Writer, AppendingChangesNothingButTheCommitRecord) {
  const FileFolder folder;
  const std::wstring path = folder / L"weld.fpd";
  MakeFile(path, L"first");
  const auto before = BytesOf(path);
  FileHandle file = OpenFile(path);
  GroupHandle group = nullptr;
  const std::vector<char> samples(100000, 'x');
  ASSERT_EQ(file_GroupCreate(file, &group, anyGroup, L"dropped"), status_Ok);
  ASSERT_EQ(file_BlockWrite(group, 1, samples.size(), samples.data()), status_Ok);
  EXPECT_GT(BytesOf(path).size(), before.size());
  EXPECT_EQ(file_Close(file), status_Ok);
  EXPECT_EQ(BytesOf(path), before) << "what was not committed leaves no trace";

  file = OpenFile(path);
  ASSERT_EQ(file_GroupCreate(file, &group, anyGroup, L"kept"), status_Ok);
  ASSERT_EQ(file_BlockWrite(group, 1, samples.size(), samples.data()), status_Ok);
  ASSERT_EQ(file_Commit(file), status_Ok);
  EXPECT_EQ(file_Close(file), status_Ok);
  auto after = BytesOf(path);
  ASSERT_GT(after.size(), before.size());
  after.resize(before.size());
  for (std::size_t at = 0; at < before.size(); ++at) {
    const bool inRecord = at >= 4096 && at < 12288 && at % 4096 < 64;
    ASSERT_TRUE(inRecord || after[at] == before[at]) << "byte " << at;
  }
}

TEST(Writer, NewFilesTakeTheirNameWithTheFirstCommit) {
  const FileFolder folder;
  const std::wstring path = folder / L"weld.fpd";
  FileHandle file = nullptr;
  FileHandle other = nullptr;
  ASSERT_EQ(file_Create(path.c_str(), &file), status_Ok);
  ASSERT_EQ(Append(file, L"first"), status_Ok);
  EXPECT_EQ(folder.Names(), Names{L"weld.fpd.part"});
  EXPECT_EQ(file_Create(path.c_str(), &other), status_Locked);
  EXPECT_EQ(file_CreateEx(path.c_str(), &other), status_Locked);
  EXPECT_EQ(other, nullptr);
  EXPECT_EQ(file_Close(file), status_Ok);
  EXPECT_EQ(folder.Names(), Names{});

  // The name is taken between creation and commit: by file_Create never replaced, by file_CreateEx
  // in one step.
  for (const auto create : {file_Create, file_CreateEx}) {
    std::filesystem::remove(utdata::os::NarrowPath(path));
    ASSERT_EQ(create(path.c_str(), &file), status_Ok);
    ASSERT_EQ(Append(file, L"mine"), status_Ok);
    utdata::test::WriteBytes(path, std::vector<std::byte>(10));
    const bool replaces = create == file_CreateEx;
    EXPECT_EQ(file_Commit(file), replaces ? status_Ok : status_Exists);
    EXPECT_EQ(file_Close(file), status_Ok);
    EXPECT_EQ(BytesOf(path).size() == 10, !replaces);
    EXPECT_EQ(folder.Names(), Names{L"weld.fpd"});
  }
  EXPECT_EQ(file_Create(path.c_str(), &file), status_Exists);
  EXPECT_EQ(file_Create((folder / L"no/such.fpd").c_str(), &file), status_NotFound);
  EXPECT_EQ(file_CreateEx((folder / L"").c_str(), &file), status_NotAFile);
  EXPECT_EQ(folder.Names(), Names{L"weld.fpd"});
}

TEST(Writer, TakesOverWhatAKilledWriterLeft) {
  const FileFolder folder;
  const std::wstring path = folder / L"weld.fpd";
  utdata::test::WriteBytes(path + L".part", std::vector<std::byte>(300000, std::byte{0x5A}));
  FileHandle file = nullptr;
  GroupHandle group = nullptr;
  std::vector<char> samples(3 << 20);
  samples.back() = 1;
  ASSERT_EQ(file_Create(path.c_str(), &file), status_Ok) << file_LastError();
  ASSERT_EQ(file_GroupCreate(file, &group, anyGroup, nullptr), status_Ok);
  ASSERT_EQ(file_BlockWrite(group, 1, samples.size(), samples.data()), status_Ok);
  ASSERT_EQ(file_Commit(file), status_Ok);
  EXPECT_EQ(file_Close(file), status_Ok);
  EXPECT_EQ(file_Verify(path.c_str(), nullptr), status_Ok)
      << "nothing old shows through holes: " << file_LastError();

  // A tail behind the committed end, too.
  auto bytes = BytesOf(path);
  const std::size_t committed = bytes.size();
  bytes.resize(committed + (2 << 20), std::byte{0x5A});
  utdata::test::WriteBytes(path, bytes);
  ASSERT_EQ(file_Verify(path.c_str(), nullptr), status_Ok) << file_LastError();
  file = OpenFile(path);
  ASSERT_EQ(file_GroupCreate(file, &group, anyGroup, nullptr), status_Ok);
  ASSERT_EQ(file_BlockWrite(group, 1, samples.size(), samples.data()), status_Ok);
  ASSERT_EQ(file_Commit(file), status_Ok);
  EXPECT_EQ(file_Close(file), status_Ok);
  EXPECT_EQ(file_Verify(path.c_str(), nullptr), status_Ok) << file_LastError();
}

TEST(Writer, NotOnReadOnlyFilesNorOnRenamedOnes) {
  utdata::test::FaultyFileSystem disk;
  {
    const utdata::test::FileSystemInPlace inPlace(disk);
    MakeFile(L"/weld.fpd", L"first");
    FileHandle file = nullptr;
    ASSERT_EQ(file_OpenReadOnly(L"/weld.fpd", &file), status_Ok);
    EXPECT_EQ(Append(file, L"second"), status_ReadOnly);
    EXPECT_EQ(file_Close(file), status_Ok);
    file = OpenFile(L"/weld.fpd");
    ASSERT_EQ(disk.Rename(L"/weld.fpd", L"/other.fpd", false), utdata::os::Error::None);
    MakeFile(L"/weld.fpd", L"first");
    EXPECT_EQ(Append(file, L"second"), status_MovedOn)
        << "what is written would not be found under the path";
    EXPECT_EQ(file_Close(file), status_Ok);
    disk.Protect(L"/weld.fpd");
    file = OpenFile(L"/weld.fpd");
    EXPECT_EQ(Append(file, L"second"), status_ReadOnly);
    EXPECT_EQ(file_Close(file), status_Ok);
    disk.Protect(L"/new.fpd.part");
    EXPECT_EQ(file_Create(L"/new.fpd", &file), status_AccessDenied);
    EXPECT_EQ(file_LastError(), "/new.fpd: cannot be created: permission denied");
  }
}

}  // namespace
