// Which file a file is, and what a companion says of its base and its predecessor.
#include <gtest/gtest.h>

#include <functional>

#include "interfaces/kvtiff19.h"
#include "platform/kvtiff19/format.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/file_forge.h"
#include "tests/support/known_surroundings.h"

namespace {

using namespace SCFile;
using utdata::test::FaultyFileSystem;
using utdata::test::FileSystemInPlace;
using utdata::test::KnownSurroundings;
using Opening = int (*)(const wchar_t*, FileHandle*);

FileIdentity Identity(std::uint8_t byte) {
  FileIdentity identity;
  identity.fill(byte);
  return identity;
}

FileOrigin BaseOf(std::uint8_t byte) {
  FileOrigin origin;
  origin.identity = Identity(byte);
  return origin;
}

/// Opens or makes a file, commits `commits` groups to it, and closes it.
void Write(const wchar_t* path, Opening opening, int commits, FileState* state = nullptr) {
  FileHandle file = nullptr;
  ASSERT_EQ(opening(path, &file), status_Ok) << file_LastError();
  for (int commit = 0; commit < commits; ++commit) {
    GroupHandle group = nullptr;
    ASSERT_EQ(file_GroupCreate(file, &group, 60000, L"group"), status_Ok);
    ASSERT_EQ(file_Commit(file), status_Ok) << file_LastError();
  }
  if (state) *state = file_State(file);
  ASSERT_EQ(file_Close(file), status_Ok);
}

FileOrigin OriginOf(const wchar_t* path) {
  FileOrigin origin;
  EXPECT_EQ(file_ReadOrigin(path, &origin, nullptr), status_Ok) << file_LastError();
  return origin;
}

TEST(Origin, AFileKeepsItsIdentityUntilAnotherTakesItsName) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  KnownSurroundings surroundings;
  Write(L"/a", file_Create, 1);
  Write(L"/b", file_Create, 1);
  EXPECT_EQ(OriginOf(L"/a"), BaseOf(1));
  EXPECT_EQ(OriginOf(L"/b"), BaseOf(2));
  Write(L"/a", file_Open, 3);
  EXPECT_EQ(OriginOf(L"/a").identity, Identity(1));
  disk.Put(L"/copy", *disk.Get(L"/a"));
  EXPECT_EQ(OriginOf(L"/copy").identity, Identity(1));
  Write(L"/a", file_CreateEx, 1);
  EXPECT_EQ(OriginOf(L"/a").identity, Identity(3));

  surroundings.randomError = utdata::os::Error::Other;
  FileHandle file = nullptr;
  EXPECT_EQ(file_Create(L"/c", &file), status_InputOutput);
  EXPECT_EQ(file, nullptr);
  EXPECT_FALSE(disk.Get(L"/c.part").has_value());
  surroundings.randomError = utdata::os::Error::None;
  surroundings.random = 0;
  Write(L"/c", file_Create, 1);
  EXPECT_EQ(file_Open(L"/c", &file), status_Damaged) << "a source that gives only zeros";
}

TEST(Origin, ACompanionSaysWhatItWasWrittenOn) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  FileState before;
  Write(L"/a.fpd", file_Create, 2, &before);
  EXPECT_EQ(before.commitNumber, 2U);
  FileHandle file = nullptr;
  ASSERT_EQ(file_Create(L"/a.A01", &file), status_Ok);
  const struct {
    std::uint32_t number;
    FileIdentity base;
    FileState predecessor;
  } wrong[] = {{0, before.identity, before},
               {100, before.identity, before},
               {1, {}, before},
               {1, before.identity, {{}, 2, 3}},
               {1, before.identity, {before.identity, 0, 0}}};
  for (const auto& each : wrong)
    EXPECT_EQ(file_MakeCompanion(file, each.number, each.base, each.predecessor),
              status_BadArgument);
  ASSERT_EQ(file_MakeCompanion(file, 1, before.identity, before), status_Ok);
  GroupHandle group = nullptr;
  ASSERT_EQ(file_GroupCreate(file, &group, 60000, L""), status_Ok);
  ASSERT_EQ(file_Commit(file), status_Ok);
  EXPECT_EQ(file_MakeCompanion(file, 2, before.identity, before), status_BadArgument)
      << "what is written is never rewritten";
  ASSERT_EQ(file_Close(file), status_Ok);
  Write(L"/a.A01", file_Open, 1);
  const FileOrigin origin = OriginOf(L"/a.A01");
  EXPECT_EQ(origin, (FileOrigin{origin.identity, 1, before.identity, before}));
  EXPECT_NE(origin.identity, before.identity);
}

TEST(Origin, AFileContainsEachStateThatItWasIn) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  std::vector<FileState> states(5);
  Write(L"/a", file_Create, 0, nullptr);  // a file without groups
  ASSERT_EQ(file_ReadOrigin(L"/a", nullptr, &states[0]), status_Ok);
  for (std::size_t at = 1; at < states.size(); ++at)
    Write(L"/a", file_Open, static_cast<int>(at), &states[at]);
  FileState forked;
  disk.Put(L"/fork", *disk.Get(L"/a"));
  Write(L"/fork", file_Open, 1, &forked);
  FileState other;
  Write(L"/b", file_Create, 2, &other);

  FileHandle file = nullptr;
  ASSERT_EQ(file_Open(L"/a", &file), status_Ok);
  for (const FileState& state : states) {
    EXPECT_TRUE(file_Contains(file, state)) << state.commitNumber;
    FileState wrong = state;
    ++wrong.commitChecksum;
    EXPECT_FALSE(file_Contains(file, wrong));
    wrong = state;
    ++wrong.commitNumber;
    EXPECT_FALSE(file_Contains(file, wrong));
  }
  EXPECT_FALSE(file_Contains(file, forked)) << "a copy that went on by itself";
  EXPECT_FALSE(file_Contains(file, other));
  ASSERT_EQ(file_Close(file), status_Ok);
}

TEST(Origin, AHeaderThatContradictsItselfIsDamaged) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  const FileState before{Identity(2), 1, 7};
  const FileOrigin cases[] = {{},
                              {Identity(1), 0, Identity(2), {}},
                              {Identity(1), 0, {}, before},
                              {Identity(1), 1, {}, before},
                              {Identity(1), 1, Identity(2), {}},
                              {Identity(1), 100, Identity(2), before}};
  for (const FileOrigin& origin : cases) {
    auto bytes = utdata::test::FileForge().Finish();
    const auto header = utdata::kvtiff19::EncodeHeader(origin);
    std::copy(header.begin(), header.end(), bytes.begin());
    disk.Put(L"/a", bytes);
    FileHandle file = nullptr;
    EXPECT_EQ(file_Open(L"/a", &file), status_Damaged) << origin.number;
    EXPECT_EQ(file_ReadOrigin(L"/a", nullptr, nullptr), status_Damaged);
  }
}

}  // namespace
