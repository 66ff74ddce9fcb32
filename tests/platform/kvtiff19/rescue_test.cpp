// Rescuing damaged files: what is whole comes back, what is not is listed, and nothing is wrong.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "interfaces/kvtiff19.h"
#include "platform/kvtiff19/format.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/file_forge.h"
#include "tests/support/file_snapshot.h"

namespace {

using namespace SCFile;
using namespace utdata::kvtiff19;
using utdata::test::FaultyFileSystem;
using utdata::test::FileSystemInPlace;
using utdata::test::SnapshotOf;

const std::wstring damagedPath = L"/damaged.fpd";
const std::wstring rescuedPath = L"/rescued.fpd";
constexpr std::size_t rescueBlockSize = 5000;
constexpr std::byte rescueSample{0x3C};

/// Three top groups of one value each, the first with a block too.
std::vector<std::byte> MakeThreeGroups(FaultyFileSystem& disk) {
  FileHandle file = nullptr;
  const std::vector<std::byte> samples(rescueBlockSize, rescueSample);
  EXPECT_EQ(file_Create(damagedPath.c_str(), &file), status_Ok);
  for (double value : {1.5, 2.5, 3.5}) {
    GroupHandle top = nullptr, inner = nullptr;
    EXPECT_EQ(file_GroupCreate(file, &top, 60000, L"FC"), status_Ok);
    EXPECT_EQ(file_GroupCreate(top, &inner, 60001, L"n\x00E9"), status_Ok);
    if (value < 2) {
      EXPECT_EQ(file_BlockWrite(inner, 1, samples.size(), samples.data()), status_Ok);
    }
    EXPECT_EQ(file_ItemValueWrite(inner, 3, value_Double, 1, &value), status_Ok);
    EXPECT_EQ(file_Commit(file), status_Ok);
  }
  EXPECT_EQ(file_Close(file), status_Ok);
  return disk.Get(damagedPath).value();
}

struct RescueOutcome {
  int status = 0;
  RescueFindings findings;
  std::string snapshot;
};

RescueOutcome RescueOf(FaultyFileSystem& disk, std::vector<std::byte> bytes) {
  disk.Put(damagedPath, std::move(bytes));
  RescueOutcome outcome;
  outcome.status = file_Rescue(damagedPath.c_str(), rescuedPath.c_str(), true, &outcome.findings);
  if (outcome.status != status_Ok) return outcome;
  std::string problem;
  EXPECT_EQ(file_Verify(rescuedPath.c_str(), &problem), status_Ok) << problem;
  outcome.snapshot = SnapshotOf(rescuedPath).value_or("");
  return outcome;
}

/// The values that a file holds, of those that MakeThreeGroups writes.
std::vector<double> ValuesOf(const std::wstring& path, bool& isBlockRight) {
  std::vector<double> values;
  isBlockRight = true;
  FileHandle file = nullptr;
  EXPECT_EQ(file_Open(path.c_str(), &file), status_Ok);
  for (std::uint32_t index = 0; index < file_ItemNbrGet(file); ++index) {
    GroupHandle top = nullptr, inner = nullptr;
    if (file_GroupOpen(file, &top, index) != status_Ok ||
        file_GroupOpen(top, &inner, 0) != status_Ok)
      continue;
    double value = 0;
    std::uint32_t count = 1;
    if (file_IndexValueRead(inner, file_ItemNbrGet(inner) - 1, value_Double, &value, &count) ==
        status_Ok)
      values.push_back(value);
    std::vector<std::byte> block(rescueBlockSize);
    if (file_ItemNbrGet(inner) == 2 &&
        file_BlockRead(inner, 0, 0, block.size(), block.data()) == status_Ok)
      for (const std::byte byte : block)
        isBlockRight = isBlockRight && (byte == rescueSample || byte == std::byte{0});
  }
  EXPECT_EQ(file_Close(file), status_Ok);
  return values;
}

TEST(Rescue, AWholeFileComesBackWhole) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  const auto whole = MakeThreeGroups(disk);
  const auto right = SnapshotOf(damagedPath);
  for (const std::size_t tail : {std::size_t{0}, std::size_t{5000}}) {
    auto bytes = whole;
    bytes.resize(whole.size() + tail, std::byte{7});
    const RescueOutcome outcome = RescueOf(disk, bytes);
    EXPECT_EQ(outcome.status, status_Ok);
    EXPECT_EQ(outcome.snapshot, right);
    EXPECT_TRUE(outcome.findings.lost.empty() && outcome.findings.mended.empty());
  }
}

// One wrong byte costs a chunk of samples, or nothing at all.
TEST(Rescue, EveryFlippedByteOfMetadataIsMended) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  const auto whole = MakeThreeGroups(disk);
  const auto right = SnapshotOf(damagedPath);
  const std::size_t blockEnd = dataStart + RoundUp(rescueBlockSize, 8) + 8;
  std::mt19937 dice(3);
  for (std::size_t at = 0; at < whole.size();
       at += at < 256 || at >= blockEnd ? 1 : 1 + dice() % 300) {
    auto bytes = whole;
    bytes[at] ^= static_cast<std::byte>(1 + dice() % 255);
    const RescueOutcome outcome = RescueOf(disk, bytes);
    // Another version is not guessed at.
    if (outcome.status == status_NewerVersion && at >= 8 && at < 12) continue;
    ASSERT_EQ(outcome.status, status_Ok) << at << file_LastError();
    const bool isInBlock = at >= dataStart && at < blockEnd;
    ASSERT_EQ(outcome.snapshot == right, !isInBlock || outcome.findings.lost.empty()) << at;
    ASSERT_TRUE(outcome.findings.lost.empty() || isInBlock) << at << outcome.findings.lost[0];
    ASSERT_TRUE(outcome.findings.unchecked.empty()) << at;
  }
}

TEST(Rescue, WhatIsLostOfCutAndTornFilesIsListed) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  const auto whole = MakeThreeGroups(disk);
  std::mt19937_64 dice(11);
  unsigned rescued = 0;
  for (unsigned round = 0; round < 1500; ++round) {
    auto bytes = whole;
    if (round % 3 == 0)
      bytes.resize(static_cast<std::size_t>(dice() % whole.size()));
    else
      for (std::uint64_t count = 1 + dice() % 3; count > 0; --count) {
        const auto from = static_cast<std::size_t>(dice() % 3 ? bytes.size() - 1 - dice() % 700
                                                              : dice() % bytes.size());
        const std::size_t size = std::min<std::size_t>(1 + dice() % 64, bytes.size() - from);
        for (std::size_t at = from; at < from + size; ++at)
          bytes[at] = static_cast<std::byte>(dice());
      }
    const RescueOutcome outcome = RescueOf(disk, bytes);
    if (outcome.status != status_Ok) continue;
    ++rescued;
    bool isBlockRight = false;
    const std::vector<double> values = ValuesOf(rescuedPath, isBlockRight);
    ASSERT_TRUE(isBlockRight) << round;
    const RescueFindings& findings = outcome.findings;
    if (values.size() < 3) {
      ASSERT_FALSE(findings.lost.empty()) << round;
    }
    if (!findings.unchecked.empty()) continue;
    for (std::size_t index = 0; index < values.size(); ++index)
      ASSERT_TRUE(values[index] == 1.5 || values[index] == 2.5 || values[index] == 3.5)
          << round << ": " << values[index];
  }
  EXPECT_GT(rescued, 500U);
}

TEST(Rescue, WithoutACommitRecordADamagedLastGroupIsListedToo) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  auto bytes = MakeThreeGroups(disk);
  for (const std::uint64_t slot : slotOffsets)
    std::memset(bytes.data() + slot, 0x55, static_cast<std::size_t>(slotSize));
  std::memset(bytes.data() + bytes.size() - 20, 0xA5, 20);
  const RescueOutcome outcome = RescueOf(disk, bytes);
  EXPECT_EQ(outcome.status, status_Ok);
  const auto names = [](const std::string& line) { return line.starts_with("top group 2 "); };
  EXPECT_EQ(std::ranges::count_if(outcome.findings.lost, names), 1)
      << testing::PrintToString(outcome.findings.lost);
}

// Samples may hold what begins like a group, even like one of a later write.
TEST(Rescue, SamplesThatLookLikeAGroupAreSamples) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  const auto empty = utdata::test::ByteText().Head(0, 0).Bytes();
  utdata::test::FileForge other, forge;
  std::size_t end = 0;
  for (unsigned ordinal = 0; ordinal < 4; ++ordinal) {
    end = other.Finish().size();
    other.AddTop(empty);
  }
  auto samples = other.Finish();
  samples.erase(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(end));
  const auto block = EncodeBlockRef(forge.AddBlock(samples));
  forge.AddTop(utdata::test::ByteText().Head(0, 1).Item(1, value_Block, 1).Append(block).Bytes());
  const std::size_t second = forge.Finish().size();
  forge.AddTop(empty);
  forge.AddTop(empty);
  auto bytes = forge.Finish();
  std::memset(bytes.data() + second + segmentHeaderSize, 0x5A, 9);
  const RescueFindings findings = RescueOf(disk, bytes).findings;
  EXPECT_TRUE(findings.unchecked.empty()) << findings.unchecked.front();
  ASSERT_EQ(findings.lost.size(), 1U);
  EXPECT_TRUE(findings.lost[0].starts_with("top group 1 ")) << findings.lost[0];
}

TEST(Rescue, BlocksOfOtherGroupsHoldZerosWhereTheyAreDamaged) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  FileHandle file = nullptr;
  GroupHandle top = nullptr, inner = nullptr;
  std::uint64_t offset = 0, size = 0;
  const std::vector<std::byte> samples(2 * chunkSize + 100, rescueSample);
  ASSERT_EQ(file_Create(damagedPath.c_str(), &file), status_Ok);
  ASSERT_EQ(file_GroupCreate(file, &top, 60000, L"FC"), status_Ok);
  ASSERT_EQ(file_GroupCreate(top, &inner, 60001, nullptr), status_Ok);
  ASSERT_EQ(file_BlockWrite(inner, 1, samples.size(), samples.data()), status_Ok);
  ASSERT_EQ(file_Commit(file), status_Ok);
  ASSERT_EQ(file_BlockInfo(inner, 0, &offset, &size), status_Ok);
  ASSERT_EQ(file_Close(file), status_Ok);
  auto bytes = disk.Get(damagedPath).value();
  const std::pair<std::uint64_t, std::string> cases[] = {
      {chunkSize + 7, std::to_string(chunkSize) + " bytes of the block of a group of type 60001"},
      {2 * chunkSize, std::to_string(chunkSize + 100) + " bytes of the block"},
      {0, "the block of a group of type 60001"}};
  for (const auto& [at, finding] : cases) {
    bytes[static_cast<std::size_t>(offset + at)] ^= std::byte{1};
    const RescueOutcome outcome = RescueOf(disk, bytes);
    ASSERT_EQ(outcome.findings.lost.size(), 1U);
    EXPECT_EQ(outcome.findings.lost[0].find(finding), 0U) << outcome.findings.lost[0];
  }
}

TEST(Rescue, WhatIsNoInspectionLeavesNothingBehind) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  MakeThreeGroups(disk);
  const std::vector<std::byte> text(20000, std::byte{'t'});
  EXPECT_EQ(RescueOf(disk, text).status, status_Damaged);
  EXPECT_EQ(RescueOf(disk, {}).status, status_Damaged);
  EXPECT_FALSE(disk.Get(rescuedPath).has_value());
  RescueFindings findings;
  EXPECT_EQ(file_Rescue(L"/missing.fpd", rescuedPath.c_str(), false, &findings), status_NotFound);
}

}  // namespace
