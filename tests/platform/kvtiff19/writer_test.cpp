// Who may write when, and what becomes of files that are not written to the end.
#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "interfaces/kvtiff19.h"
#include "tests/support/failing_file_system.h"
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
  EXPECT_EQ(file_Close(two), status_MovedOn) << "what it was to write is not in the file";
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
  EXPECT_EQ(file_Discard(file), status_Ok);
  EXPECT_EQ(file_Close(file), status_Ok);
  EXPECT_EQ(BytesOf(path), before) << "what was dropped leaves no trace";

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
  EXPECT_EQ(file_Discard(file), status_Ok);
  EXPECT_EQ(file_Commit(file), status_Ok) << "nothing is left to do";
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

TEST(Writer, ClosingCommitsOrSaysWhyNot) {
  const FileFolder folder;
  const std::wstring path = folder / L"weld.fpd";
  FileHandle file = nullptr;
  ASSERT_EQ(file_Create(path.c_str(), &file), status_Ok);
  EXPECT_EQ(file_Close(file), status_Ok);
  EXPECT_EQ(folder.Names(), Names{L"weld.fpd"});
  EXPECT_EQ(SnapshotOf(path), "") << "a file that was created exists: " << file_LastError();

  file = OpenFile(path);
  ASSERT_EQ(Append(file, L"first"), status_Ok);
  EXPECT_EQ(file_Close(file), status_Ok);
  const std::string first = "60000 type 0 count 0 first\n";
  EXPECT_EQ(SnapshotOf(path), first);

  FileHandle other = OpenFile(path);
  file = OpenFile(path);
  ASSERT_EQ(Append(other, L"second"), status_Ok);
  EXPECT_EQ(Append(file, L"refused"), status_Locked);
  EXPECT_EQ(file_Close(file), status_Locked);
  EXPECT_NE(file_LastError().find("another writer has the file"), std::string::npos);
  GroupHandle group = nullptr;
  ASSERT_EQ(file_GroupCreate(other, &group, anyGroup, nullptr), status_Ok);
  EXPECT_EQ(file_ItemValueWrite(group, 1, value_Text, 1, L"x"), status_BadArgument);
  EXPECT_EQ(file_Close(other), status_BadArgument) << "not without what could not be written";
  EXPECT_EQ(SnapshotOf(path), first);

  ASSERT_EQ(file_Create((folder / L"new.fpd").c_str(), &file), status_Ok);
  utdata::test::WriteBytes(folder / L"new.fpd", std::vector<std::byte>(10));
  EXPECT_EQ(file_Close(file), status_Exists);
  EXPECT_EQ(folder.Names(), (Names{L"new.fpd", L"weld.fpd"}));
}

/// The bytes of NAME.part while a file with a block is being written.
std::vector<std::byte> BytesOfUnfinished() {
  const FileFolder folder;
  const std::wstring path = folder / L"weld.fpd";
  FileHandle file = nullptr;
  GroupHandle group = nullptr;
  const std::vector<char> samples(300000, 'x');
  EXPECT_EQ(file_Create(path.c_str(), &file), status_Ok) << file_LastError();
  EXPECT_EQ(file_GroupCreate(file, &group, anyGroup, nullptr), status_Ok);
  EXPECT_EQ(file_BlockWrite(group, 1, samples.size(), samples.data()), status_Ok);
  auto bytes = BytesOf(path + L".part");
  EXPECT_EQ(file_Discard(file), status_Ok);
  EXPECT_EQ(file_Close(file), status_Ok);
  return bytes;
}

/// The bytes of NAME.part right before it gets its name.
std::vector<std::byte> BytesBeforeRename() {
  class NoRename final : public utdata::test::PassingFileSystem {
   public:
    utdata::os::Error Rename(const std::wstring& from, const std::wstring&, bool) override {
      bytes = BytesOf(from);
      return utdata::os::Error::Other;
    }
    std::vector<std::byte> bytes;
  };
  const FileFolder folder;
  NoRename disk;
  const utdata::test::FileSystemInPlace inPlace(disk);
  FileHandle file = nullptr;
  EXPECT_EQ(file_Create((folder / L"weld.fpd").c_str(), &file), status_Ok) << file_LastError();
  EXPECT_EQ(Append(file, L"first"), status_Ok);
  EXPECT_EQ(file_Close(file), status_InputOutput);
  return disk.bytes;
}

TEST(Writer, TakesAwayWhatAKilledWriterLeft) {
  for (const auto& left : {std::vector<std::byte>{}, BytesOfUnfinished(), BytesBeforeRename()}) {
    SCOPED_TRACE(left.size());
    const FileFolder folder;
    const std::wstring path = folder / L"weld.fpd";
    utdata::test::WriteBytes(path + L".part", left);
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
    EXPECT_EQ(folder.Names(), Names{L"weld.fpd"});
  }
}

TEST(Writer, LeavesAloneWhatIsNotItsOwn) {
  namespace fs = std::filesystem;
  const FileFolder folder;
  const fs::path victim = folder.Path() / "victim";
  const fs::path part = folder.Path() / "weld.fpd.part";
  const struct {
    const char* what;
    std::function<void()> make;
  } cases[] = {
      {"a symbolic link", [&] { fs::create_symlink(victim, part); }},
      {"a second name", [&] { fs::create_hard_link(victim, part); }},
      {"a link to nothing", [&] { fs::create_symlink(folder.Path() / "nothing", part); }},
      {"somebody's file", [&] { fs::copy(victim, part); }},
      {"somebody's inspection", [&] { MakeFile(utdata::os::WidePath(part.string()), L"first"); }},
      {"a folder", [&] { fs::create_directory(part); }},
  };
  const std::vector<std::byte> victimBytes(20000, std::byte{'v'});
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    utdata::test::WriteBytes(folder / L"victim", victimBytes);
    each.make();
    const auto before = folder.Names();
    const auto content = [&] {
      return fs::is_regular_file(part) ? BytesOf(folder / L"weld.fpd.part")
                                       : std::vector<std::byte>();
    };
    const auto bytes = content();
    for (const auto create : {file_Create, file_CreateEx}) {
      FileHandle file = nullptr;
      EXPECT_EQ(create((folder / L"weld.fpd").c_str(), &file), status_InTheWay);
      EXPECT_NE(file_LastError().find("weld.fpd.part is in the way"), std::string::npos);
      EXPECT_EQ(file, nullptr);
    }
    EXPECT_EQ(folder.Names(), before);
    EXPECT_EQ(content(), bytes);
    EXPECT_EQ(BytesOf(folder / L"victim"), victimBytes);
    fs::remove_all(part);
  }
}

/// Counts how files are opened.
class CountingFileSystem final : public utdata::test::PassingFileSystem {
 public:
  utdata::os::Error Open(const std::wstring& path,
                         utdata::os::OpenMode mode,
                         std::unique_ptr<utdata::os::File>& file) override {
    ++m_opened[mode];
    return PassingFileSystem::Open(path, mode, file);
  }
  int Opened(utdata::os::OpenMode mode) { return m_opened[mode]; }

 private:
  std::map<utdata::os::OpenMode, int> m_opened;
};

TEST(Writer, OpensForWritingWhenItWrites) {
  using utdata::os::OpenMode;
  const FileFolder folder;
  const std::wstring path = folder / L"weld.fpd";
  MakeFile(path, L"first");
  const auto first = BytesOf(path);
  CountingFileSystem disk;
  const utdata::test::FileSystemInPlace inPlace(disk);
  FileHandle file = OpenFile(path);
  EXPECT_EQ(disk.Opened(OpenMode::ReadWrite), 0);
  for (const wchar_t* name : {L"second", L"third"}) {
    ASSERT_EQ(Append(file, name), status_Ok) << file_LastError();
    ASSERT_EQ(file_Commit(file), status_Ok) << file_LastError();
    EXPECT_EQ(disk.Opened(OpenMode::ReadWrite), 1);
  }
  EXPECT_EQ(file_Close(file), status_Ok);

  // The same bytes under the same name are not the same file.
  file = OpenFile(path);
  const auto bytes = BytesOf(path);
  std::filesystem::rename(utdata::os::NarrowPath(path), utdata::os::NarrowPath(path + L".old"));
  EXPECT_EQ(Append(file, L"fourth"), status_MovedOn) << "it is gone";
  utdata::test::WriteBytes(path, bytes);
  EXPECT_EQ(Append(file, L"fourth"), status_MovedOn) << "it is another file";
  EXPECT_EQ(file_Discard(file), status_Ok);
  std::filesystem::rename(utdata::os::NarrowPath(path + L".old"), utdata::os::NarrowPath(path));
  EXPECT_EQ(Append(file, L"fourth"), status_Ok) << file_LastError();
  EXPECT_EQ(file_Discard(file), status_Ok);
  utdata::test::WriteBytes(path, first);
  EXPECT_EQ(Append(file, L"fourth"), status_MovedOn) << "it was changed in place";
  EXPECT_EQ(file_Discard(file), status_Ok);
  EXPECT_EQ(file_Close(file), status_Ok);
}

TEST(Writer, ReplacesAFileWithItsPermissions) {
  namespace fs = std::filesystem;
  const FileFolder folder;
  const std::wstring path = folder / L"weld.fpd";
  MakeFile(path, L"first");
  const auto permissions = static_cast<fs::perms>(0640);
  fs::permissions(utdata::os::NarrowPath(path), permissions);
  FileHandle file = nullptr;
  ASSERT_EQ(file_CreateEx(path.c_str(), &file), status_Ok);
  EXPECT_EQ(file_Close(file), status_Ok);
  EXPECT_EQ(fs::status(utdata::os::NarrowPath(path)).permissions(), permissions);
}

/// A new file whose directory cannot be synced stands whole under its name.
TEST(Writer, DistinguishesANameThatMayNotLastFromAFailure) {
  utdata::test::FaultyFileSystem disk;
  const utdata::test::FileSystemInPlace inPlace(disk);
  for (std::uint64_t call = 1; disk.FailedCall() != "sync directory"; ++call) {
    ASSERT_LT(call, 100u);
    static_cast<void>(disk.Remove(L"/weld.fpd"));
    FileHandle file = nullptr;
    disk.FailAt(call, utdata::os::Error::Other);
    if (const int created = file_Create(L"/weld.fpd", &file); created != status_Ok) {
      EXPECT_EQ(created, status_InputOutput) << disk.FailedCall();
      continue;
    }
    static_cast<void>(Append(file, L"first"));
    const int status = file_Close(file);
    EXPECT_EQ(status == status_NotDurable, disk.FailedCall() == "sync directory") << status;
    EXPECT_EQ(SnapshotOf(L"/weld.fpd").has_value(),
              status == status_Ok || status == status_NotDurable);
  }
  EXPECT_EQ(file_LastError(),
            "/weld.fpd: it is written, but its name cannot be brought to the disk: "
            "input/output error");
}

// Whoever finds a new file under its name must not append before its writer has cut its mark off.
TEST(Writer, KeepsItsNewFileLockedUntilItIsDone) {
  class Neighbour final : public utdata::test::PassingFileSystem {
   public:
    utdata::os::Error SyncDirectoryOf(const std::wstring& path) override {
      FileHandle file = OpenFile(path);
      GroupHandle group = nullptr;
      status = file_GroupCreate(file, &group, anyGroup, nullptr);
      file_Discard(file);
      file_Close(file);
      return PassingFileSystem::SyncDirectoryOf(path);
    }
    int status = status_Ok;
  };
  const FileFolder folder;
  Neighbour neighbour;
  const utdata::test::FileSystemInPlace inPlace(neighbour);
  MakeFile(folder / L"weld.fpd", L"first");
  EXPECT_EQ(neighbour.status, status_Locked);
}

TEST(Writer, CutsOffWhatStandsBehindTheCommittedEnd) {
  const FileFolder folder;
  const std::wstring path = folder / L"weld.fpd";
  MakeFile(path, L"first");
  FileHandle file = nullptr;
  GroupHandle group = nullptr;
  std::vector<char> samples(3 << 20);
  samples.back() = 1;
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
    EXPECT_EQ(file_Close(file), status_ReadOnly);
    file = OpenFile(L"/weld.fpd");
    ASSERT_EQ(disk.Rename(L"/weld.fpd", L"/other.fpd", false), utdata::os::Error::None);
    MakeFile(L"/weld.fpd", L"first");
    EXPECT_EQ(Append(file, L"second"), status_MovedOn)
        << "what is written would not be found under the path";
    EXPECT_EQ(file_Close(file), status_MovedOn);
    disk.Protect(L"/weld.fpd");
    file = OpenFile(L"/weld.fpd");
    EXPECT_EQ(Append(file, L"second"), status_ReadOnly);
    EXPECT_EQ(file_Close(file), status_ReadOnly);
    disk.Protect(L"/new.fpd.part");
    EXPECT_EQ(file_Create(L"/new.fpd", &file), status_AccessDenied);
    EXPECT_EQ(file_LastError(), "/new.fpd: cannot be created: permission denied");
  }
}

}  // namespace
