// Files that are not inspection files, damaged ones, and hostile ones: reported, and never
// read as a wrong value.
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "interfaces/kvtiff19.h"
#include "platform/kvtiff19/format.h"
#include "platform/kvtiff19/items.h"
#include "platform/os/path.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/file_folder.h"
#include "tests/support/file_forge.h"
#include "tests/support/file_snapshot.h"

namespace {

using namespace SCFile;
using namespace utdata::kvtiff19;
using utdata::test::ByteText;
using utdata::test::FaultyFileSystem;
using utdata::test::FileForge;
using utdata::test::FileSystemInPlace;
using utdata::test::SnapshotOf;

const std::wstring path = L"/weld.fpd";
constexpr std::size_t blockSize = 5000;

/// Two commits; a block, a nested group, texts and values. Returns the file's bytes.
std::vector<std::byte> MakeFile(FaultyFileSystem& disk) {
  FileHandle file = nullptr;
  GroupHandle group = nullptr, inner = nullptr;
  const std::vector<unsigned char> samples(blockSize, 0x3C);
  const double value = 2.5;
  EXPECT_EQ(file_Create(path.c_str(), &file), status_Ok);
  EXPECT_EQ(file_GroupCreate(file, &group, 60000, L"FC"), status_Ok);
  EXPECT_EQ(file_GroupCreate(group, &inner, 60001, L"n\x00E9"), status_Ok);
  EXPECT_EQ(file_BlockWrite(inner, 1, samples.size(), samples.data()), status_Ok);
  EXPECT_EQ(file_ItemValueWrite(inner, 2, value_Text, 4, L"\x6EB6 5"), status_Ok);
  EXPECT_EQ(file_Commit(file), status_Ok);
  EXPECT_EQ(file_GroupCreate(file, &group, 60000, L"FC"), status_Ok);
  EXPECT_EQ(file_ItemValueWrite(group, 3, value_Double, 1, &value), status_Ok);
  EXPECT_EQ(file_Commit(file), status_Ok);
  EXPECT_EQ(file_Close(file), status_Ok);
  return disk.Get(path).value();
}

int OpenStatus() {
  FileHandle file = nullptr;
  const int status = file_Open(path.c_str(), &file);
  EXPECT_EQ(status == status_Ok, file != nullptr);
  if (file) file_Close(file);
  return status;
}

TEST(Damage, EveryTruncationIsRefused) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  const auto whole = MakeFile(disk);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    disk.Put(path, {whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
    ASSERT_NE(OpenStatus(), status_Ok) << size << " of " << whole.size() << " bytes";
  }
  EXPECT_EQ(file_LastError().rfind("/weld.fpd: ", 0), 0u) << file_LastError();
}

TEST(Damage, EveryFlippedByteIsFoundOnOpeningOrByVerifying) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  const auto whole = MakeFile(disk);
  // The block's bytes and checksums, and the gap of its alignment, are left to the verification.
  const auto isMetadata = [&](std::size_t at) {
    return at < dataStart || at >= dataStart + RoundUp(blockSize, 8) + 8;
  };
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const unsigned pattern : {0x01u, 0xFFu}) {
      auto bytes = whole;
      bytes[at] ^= static_cast<std::byte>(pattern);
      disk.Put(path, std::move(bytes));
      ASSERT_EQ(OpenStatus() != status_Ok, isMetadata(at)) << "byte " << at << " xor " << pattern;
      // Each byte of the block costs a whole verification; a few suffice.
      if (isMetadata(at) || at % 16 < 13 || pattern == 1) continue;
      std::string problem;
      ASSERT_EQ(file_Verify(path.c_str(), &problem), status_Damaged) << "byte " << at;
      ASSERT_EQ(problem.find('\n'), std::string::npos) << problem;
    }
  }
}

TEST(Damage, RandomDamageNeverYieldsAWrongValue) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  const auto whole = MakeFile(disk);
  const auto right = SnapshotOf(path);
  std::mt19937_64 dice(7);
  for (unsigned round = 0; round < 3000; ++round) {
    auto bytes = whole;
    for (std::uint64_t count = 1 + dice() % 8; count > 0; --count) {
      const std::uint64_t at =
          dice() % 3 ? dice() % bytes.size() : slotOffsets[dice() % 2] + dice() % slotSize;
      bytes[static_cast<std::size_t>(at)] = static_cast<std::byte>(dice());
    }
    // Bytes behind the end make it look as if a writer had been at work.
    if (dice() % 2) bytes.resize(bytes.size() + dice() % 10000);
    disk.Put(path, std::move(bytes));
    const auto found = SnapshotOf(path);
    if (!found || found == right) continue;
    ASSERT_NE(found->find("status 10"), std::string::npos)
        << "only a block may be refused later: " << *found;
  }
}

TEST(Damage, OtherThingsThanInspectionFiles) {
  const utdata::test::FileFolder folder;
  FileHandle file = nullptr;
  utdata::test::WriteBytes(folder / L"empty", {});
  utdata::test::WriteBytes(folder / L"text", std::vector<std::byte>(20000, std::byte{'a'}));
  ASSERT_EQ(::mkfifo(utdata::os::NarrowPath(folder / L"pipe").c_str(), 0600), 0);
  SCFile::FileOrigin origin;
  origin.identity.fill(1);
  const auto header = EncodeHeader(origin);
  std::vector<std::byte> newer(header.begin(), header.end());
  newer[10] = std::byte{10};
  utdata::test::WriteBytes(folder / L"newer", newer);
  const std::tuple<std::wstring, int, const char*> cases[] = {
      {L"missing", status_NotFound, "cannot be opened: no such file"},
      {L"text/below", status_NotFound, "cannot be opened: no such file"},
      {L"", status_NotAFile, "cannot be opened: not a file"},
      {L"pipe", status_NotAFile, "cannot be opened: not a file"},
      {L"empty", status_NotInspection, "the file is empty"},
      {L"text", status_NotInspection, "not an inspection file"},
      {L"newer", status_NewerVersion, "written in another version of the format"},
      {std::wstring(300, L'x'), status_BadArgument, "cannot be opened: path too long"},
  };
  for (const auto& [name, status, words] : cases) {
    EXPECT_EQ(file_Open((folder / name).c_str(), &file), status) << words;
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(file_LastError(), utdata::os::NarrowPath(folder / name) + ": " + words);
    std::string problem;
    EXPECT_EQ(file_Verify((folder / name).c_str(), &problem), status);
    EXPECT_EQ(problem, file_LastError());
  }
  EXPECT_EQ(file_Open(L"/dev/zero", &file), status_NotAFile);
  EXPECT_EQ(file_Open(nullptr, &file), status_BadArgument);
  EXPECT_EQ(file_Open(path.c_str(), nullptr), status_BadArgument);
}

/// Body of a group without a name.
ByteText Body(std::uint32_t itemCount) { return ByteText().Head(0, itemCount); }

TEST(Damage, HostileBytesUnderRightChecksums) {
  ByteText deep;
  for (unsigned depth = 17; depth-- > 0;) {
    ByteText outer = Body(depth == 16 ? 0 : 1);
    if (depth < 16)
      outer.Item(1, 0, static_cast<std::uint32_t>(deep.Bytes().size())).Append(deep.Bytes());
    deep = outer;
  }
  const auto block = [](BlockRef ref) {
    return Body(1).Item(1, value_Block, 1).Append(EncodeBlockRef(ref));
  };
  constexpr std::uint64_t huge = ~std::uint64_t{0};
  const std::pair<ByteText, const char*> cases[] = {
      {ByteText(), "a group is cut short"},
      {ByteText().Put(std::uint32_t{0}), "a group is cut short"},
      {ByteText().Head(0xFFFFFFFF, 0), "a group's name is longer than the group"},
      {ByteText().Head(4, 0).Text("\xC3(ab"), "a group's name is not UTF-8"},
      {ByteText().Head(4, 0).Text("\xED\xA0\x80"
                                  "a"),
       "a group's name is not UTF-8"},
      {ByteText().Head(3, 0).Text("abcd"), "padding is not zero"},
      {ByteText().Head(131072, 0).Text(std::string(131072, 'a')), "a group's name is too long"},
      {Body(0xFFFFFFFF), "a group counts more items than it has bytes for"},
      {Body(2).Item(1, value_UInt8, 0).Text("abcdefgh"), "a reserved byte of an item is not zero"},
      {Body(1).Item(1, value_Double, 0xFFFFFFFF), "an item is longer than its group"},
      {Body(1).Item(1, value_Block, 0xFFFFFFFF), "an item is longer than its group"},
      {Body(1).Item(1, 1, 0), "an item has an unknown value type"},
      {Body(1).Item(1, 14, 0), "an item has an unknown value type"},
      {Body(1).Item(1, value_UInt8, 1).Text(std::string_view("a\0b\0", 4)), "padding is not zero"},
      {Body(1).Item(1, value_Text, 2).Text(std::string_view("\xC0\x80\0\0", 4)),
       "a text is not UTF-8"},
      {Body(1).Item(1, value_Text, 4).Text("\xF4\x90\x80\x80"), "a text is not UTF-8"},
      {Body(1).Item(1, 0, 9).Text(std::string(12, '\0')), "a group's size is not a multiple of 4"},
      {Body(0).Text("abcd"), "a group holds bytes after its last item"},
      {deep, "groups are nested too deep"},
      {Body(1).Item(1, value_Block, 0), "a block item does not name one block"},
      {block({0, 10, chunkSize, dataStart, 0}), "a block lies outside the data before its group"},
      {block({dataStart + 1, 0, chunkSize, dataStart + 8, 0}),
       "a block lies outside the data before its group"},
      {block({dataStart, huge, chunkSize, dataStart, 0}),
       "a block lies outside the data before its group"},
      {block({dataStart, 16, chunkSize, huge - 7, 0}),
       "a block lies outside the data before its group"},
      {block({dataStart, 4096, 0, dataStart + 4096, 0}),
       "a block lies outside the data before its group"},
      {block({dataStart, 4096, 3, dataStart + 4096, 0}),
       "a block lies outside the data before its group"},
      {block({dataStart, 4096, std::uint64_t{1} << 40, dataStart + 4096, 0}),
       "a block lies outside the data before its group"},
      {block({dataStart, 8192, 4096, dataStart + 8192, 0}),
       "a block lies outside the data before its group"},
  };
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  for (const auto& [body, words] : cases) {
    FileForge forge;
    forge.AddPages(std::vector<std::byte>(8192));
    forge.AddTop(body.Bytes());
    disk.Put(path, forge.Finish());
    EXPECT_EQ(OpenStatus(), status_Damaged) << words;
    EXPECT_EQ(file_LastError(), "/weld.fpd: top group 0 at byte 20480: " + std::string(words));
  }
}

TEST(Damage, HostileChainsAndRecords) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  const auto refused = [&](auto change) {
    FileForge forge;
    forge.AddTop(Body(0).Bytes());
    forge.AddTop(Body(0).Bytes());
    change(forge);
    disk.Put(path, forge.Finish());
    return OpenStatus() == status_Damaged;
  };
  EXPECT_FALSE(refused([](FileForge&) {}));
  EXPECT_TRUE(refused([](FileForge& forge) { forge.AddTop(Body(0).Bytes(), 1); }));
  EXPECT_TRUE(refused([](FileForge& forge) { forge.AddTop(Body(0).Bytes(), -4); }));
  EXPECT_TRUE(refused([](FileForge& forge) { forge.AddTop(Body(0).Bytes(), 0, 60000, 1); }));
  EXPECT_TRUE(refused([](FileForge& forge) { forge.record.segmentCount = 1; }));
  EXPECT_TRUE(refused([](FileForge& forge) { forge.record.segmentCount = ~std::uint64_t{0}; }));
  EXPECT_TRUE(refused([](FileForge& forge) { forge.record.segmentCount = 0; }));
  EXPECT_TRUE(refused([](FileForge& forge) { forge.record.number = 0; }));
  EXPECT_TRUE(refused([](FileForge& forge) { forge.record.end = 0; }));
  EXPECT_TRUE(refused([](FileForge& forge) { ++forge.record.end; }));
  EXPECT_TRUE(refused([](FileForge& forge) { forge.record.end -= 4; })) << "the rest is a tail";
  EXPECT_TRUE(refused([](FileForge& forge) { forge.record.newest.offset = ~std::uint64_t{3}; }));
  EXPECT_TRUE(refused([](FileForge& forge) { forge.record.newest.size = ~std::uint64_t{0}; }));
  EXPECT_TRUE(refused([](FileForge& forge) { forge.record.newest.size = 8; }));
  EXPECT_NE(file_LastError().find("its size is impossible"), std::string::npos);
  EXPECT_TRUE(refused([](FileForge& forge) { forge.record.newest.offset = 4096; }));
  // A group that names itself as the one before it, with every checksum right, would need a
  // checksum that contains itself; one that names the same segment twice is caught by its number.
  EXPECT_TRUE(refused([](FileForge& forge) {
    ++forge.record.segmentCount;
    forge.AddTop(Body(0).Bytes());
  }));
}

/// What a job answers in a process that may take 256 MiB more.
template <class Job>
int StatusWithLittleMemory(Job job) {
  const pid_t child = ::fork();
  if (child == 0) {
    std::ifstream statm("/proc/self/statm");
    rlim_t pages = 0;
    statm >> pages;
    const rlimit limit = {pages * 4096 + (256u << 20), RLIM_INFINITY};
    if (::setrlimit(RLIMIT_AS, &limit) != 0) ::_exit(99);
    ::_exit(job());
  }
  int status = -1;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Damage, AFewBytesThatClaimGibibytesCostLittle) {
#ifdef UTDATA_SANITIZED
  GTEST_SKIP() << "sanitizers need more addresses than the limit leaves";
#endif
  constexpr std::uint64_t claimed = std::uint64_t{3} << 30;
  const utdata::test::FileFolder folder;
  const std::wstring name = folder / L"sparse.fpd";
  for (const bool hasHead : {false, true}) {
    FileForge forge;
    if (hasHead) {
      forge.AddTop(Body(1).Bytes(),
                   static_cast<std::int64_t>(claimed - segmentHeaderSize - itemHeaderSize -
                                             groupHeaderSize));
    }
    forge.record.segmentCount = 1;
    forge.record.newest = {dataStart, claimed, 1};
    forge.record.end = dataStart + claimed;
    utdata::test::WriteBytes(name, forge.Finish());
    std::filesystem::resize_file(utdata::os::NarrowPath(name), forge.record.end);
    const auto open = [&] {
      FileHandle file = nullptr;
      return file_Open(name.c_str(), &file);
    };
    EXPECT_EQ(StatusWithLittleMemory(open), status_Damaged) << hasHead;
  }
}

// A block of 2^40 bytes in chunks of 4096 has a table of 2 GiB: the file claims all of it and
// stores a few pages.
TEST(Damage, ATableOfChecksumsThatIsNotStoredCostsLittle) {
#ifdef UTDATA_SANITIZED
  GTEST_SKIP() << "sanitizers need more addresses than the limit leaves";
#endif
  constexpr std::uint64_t blockBytes = std::uint64_t{1} << 40;
  const utdata::test::FileFolder folder;
  const std::wstring name = folder / L"table.fpd";
  const BlockRef block{dataStart, blockBytes, 4096, dataStart + blockBytes, 1};
  FileForge forge;
  ByteText body = Body(1);
  body.Item(1, value_Block, 1).Append(EncodeBlockRef(block));
  forge.AddTop(body.Bytes());
  const std::vector<std::byte> front = forge.Finish();
  const Bytes segment = Bytes(front).subspan(dataStart);
  forge.record.newest.offset = block.tableOffset + block.TableSize();
  forge.record.end = forge.record.newest.offset + segment.size();
  utdata::test::WriteBytes(name, forge.Finish());
  std::fstream file(utdata::os::NarrowPath(name), std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(static_cast<std::streamoff>(forge.record.newest.offset));
  file.write(reinterpret_cast<const char*>(segment.data()),
             static_cast<std::streamsize>(segment.size()));
  file.close();
  EXPECT_EQ(StatusWithLittleMemory([&] { return file_Verify(name.c_str(), nullptr); }),
            status_Damaged);
  const auto readChecksums = [&] {
    FileHandle opened = nullptr;
    GroupHandle top = nullptr;
    BlockChunks chunks;
    if (file_Open(name.c_str(), &opened) != status_Ok) return 98;
    if (file_GroupOpen(opened, &top, 0) != status_Ok) return 97;
    return file_BlockChunks(top, 0, &chunks);
  };
  EXPECT_EQ(StatusWithLittleMemory(readChecksums), status_Damaged);
  const auto rescue = [&] {
    RescueFindings findings;
    const int status = file_Rescue(name.c_str(), (folder / L"new.fpd").c_str(), false, &findings);
    return status == status_Ok && findings.lost.size() != 1 ? 96 : status;
  };
  EXPECT_EQ(StatusWithLittleMemory(rescue), status_Ok);
}

// Tables are read in pieces; each checksum is that of its own chunk all the same.
TEST(Damage, EveryChunkOfALongTableIsHeldAgainstItsOwnChecksum) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  constexpr std::uint64_t chunk = 4096, quantity = 20000;
  std::vector<std::byte> pages(static_cast<std::size_t>(chunk * quantity));
  std::vector<std::byte> table;
  for (std::uint64_t index = 0; index < quantity; ++index) {
    Store(pages.data() + index * chunk, index);
    ByteText entry;
    entry.Put(Checksum(Bytes(pages).subspan(static_cast<std::size_t>(index * chunk), chunk)));
    table.insert(table.end(), entry.Bytes().begin(), entry.Bytes().end());
  }
  const BlockRef ref{
      dataStart, pages.size(), chunk, dataStart + pages.size(), Checksum(Bytes(table))};
  pages.insert(pages.end(), table.begin(), table.end());
  FileForge forge;
  forge.AddPages(pages);
  ByteText body = Body(1);
  body.Item(1, value_Block, 1).Append(EncodeBlockRef(ref));
  forge.AddTop(body.Bytes());
  const std::vector<std::byte> whole = forge.Finish();
  disk.Put(path, whole);
  std::string problem;
  EXPECT_EQ(file_Verify(path.c_str(), &problem), status_Ok) << problem;
  for (const std::uint64_t index : {std::uint64_t{0}, quantity - 1}) {
    std::vector<std::byte> damaged = whole;
    damaged[static_cast<std::size_t>(dataStart + index * chunk + 9)] ^= std::byte{1};
    disk.Put(path, std::move(damaged));
    EXPECT_EQ(file_Verify(path.c_str(), &problem), status_Damaged);
    EXPECT_NE(problem.find("1 of 20000 chunks do not match, the first at byte " +
                           std::to_string(dataStart + index * chunk)),
              std::string::npos)
        << problem;
  }
}

TEST(Damage, AChunkIsHeldAgainstItsChecksumWhereverItsBytesAre) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  MakeFile(disk);
  FileHandle file = nullptr;
  GroupHandle top = nullptr, inner = nullptr;
  void* view = nullptr;
  ASSERT_EQ(file_Open(path.c_str(), &file), status_Ok);
  ASSERT_EQ(file_GroupOpen(file, &top, 0), status_Ok);
  ASSERT_EQ(file_GroupOpen(top, &inner, 0), status_Ok);
  BlockChunks chunks;
  ASSERT_EQ(file_BlockChunks(inner, 0, &chunks), status_Ok);
  EXPECT_EQ(chunks.size, blockSize);
  ASSERT_EQ(chunks.checksums.size(), 1u);
  ASSERT_EQ(file_BlockMap(inner, 0, &view), status_Ok);
  EXPECT_TRUE(file_IsChunkWhole(chunks, 0, view));
  std::vector<std::byte> copy(static_cast<std::byte*>(view),
                              static_cast<std::byte*>(view) + blockSize);
  copy.back() ^= std::byte{1};
  EXPECT_FALSE(file_IsChunkWhole(chunks, 0, copy.data()));
  EXPECT_EQ(file_BlockChunks(inner, 1, &chunks), status_BadArgument) << "a text";
  EXPECT_EQ(file_Close(file), status_Ok);
}

TEST(Damage, VerifyReportsBlocksThatOverlapAndBytesWithoutOwner) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  const std::vector<std::byte> samples(4096, std::byte{9});
  std::vector<std::byte> pages = samples;
  pages.resize(4096 + 8);
  Store(pages.data() + 4096, Checksum(samples));
  const BlockRef ref{
      dataStart, 4096, chunkSize, dataStart + 4096, Checksum(Bytes(pages).subspan(4096))};
  const auto verified = [&](unsigned blocks, std::size_t lostBytes) {
    FileForge forge;
    forge.AddPages(pages);
    if (lostBytes > 0) forge.AddPages(std::vector<std::byte>(lostBytes));
    ByteText body = Body(blocks);
    for (unsigned count = 0; count < blocks; ++count)
      body.Item(1, value_Block, 1).Append(EncodeBlockRef(ref));
    forge.AddTop(body.Bytes());
    disk.Put(path, forge.Finish());
    std::string problem;
    file_Verify(path.c_str(), &problem);
    return problem;
  };
  EXPECT_EQ(verified(1, 0), "");
  EXPECT_EQ(verified(2, 0),
            "/weld.fpd: bytes 12288 to 16384 belong to two owners\n/weld.fpd: bytes 16384 to 16392 "
            "belong to two owners");
  EXPECT_EQ(verified(1, 9000), "/weld.fpd: bytes 16392 to 29480 belong to nothing");
  EXPECT_EQ(verified(0, 0), "/weld.fpd: bytes 12288 to 16392 belong to nothing");
  pages[7] = std::byte{8};
  const std::string problem = verified(2, 0),
                    damage = "block at byte 12288: the checksums of 1 of 1 ";
  EXPECT_LT(problem.find(damage), problem.rfind(damage)) << "each block is read: " << problem;
}

TEST(Damage, GroupsThatDoNotFitTheirTypeAreRefusedAndTheOthersOpen) {
  std::uint32_t known = 0;
  while (RulesOfGroupType(known).empty()) ASSERT_LT(++known, 0x10000u);
  const ItemRule rule = RulesOfGroupType(known).front();
  const auto right = static_cast<std::uint8_t>(rule.type);
  const auto wrong = static_cast<std::uint8_t>(rule.type == value_Int8 ? value_UInt8 : value_Int8);
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  FileHandle file = nullptr;
  GroupHandle top = nullptr, group = nullptr;
  ASSERT_EQ(file_Create(path.c_str(), &file), status_Ok);
  ASSERT_EQ(file_GroupCreate(file, &top, 60000, nullptr), status_Ok);
  const std::vector<std::byte> value(std::size_t{rule.minCount} * ElementSize(right));
  for (const std::uint8_t type : {right, wrong, right}) {
    ASSERT_EQ(file_GroupCreate(top, &group, known, nullptr), status_Ok);
    const std::uint32_t count = type == right ? rule.minCount : 0;
    ASSERT_EQ(AppendItem(*group,
                         rule.code,
                         static_cast<ValueType>(type),
                         count,
                         type == right ? Bytes(value) : Bytes()),
              status_Ok);
  }
  ASSERT_EQ(file_Commit(file), status_Ok);
  for (const bool reopened : {false, true}) {
    if (reopened) {
      ASSERT_EQ(file_Close(file), status_Ok);
      ASSERT_EQ(file_Open(path.c_str(), &file), status_Ok);
      ASSERT_EQ(file_GroupOpen(file, &top, 0), status_Ok);
    }
    for (std::uint32_t index = 0; index < 3; ++index)
      EXPECT_EQ(file_GroupOpen(top, &group, index), index == 1 ? status_Damaged : status_Ok)
          << index << reopened;
  }
  ASSERT_EQ(file_Close(file), status_Ok);
  std::string problem;
  EXPECT_EQ(file_Verify(path.c_str(), &problem), status_Damaged);
  EXPECT_EQ(problem,
            "/weld.fpd: item " + std::to_string(rule.code) + " of a group of type " +
                std::to_string(known) + " does not fit that type");
}

TEST(Damage, VerifyReportsItsProgressAndStops) {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  MakeFile(disk);
  std::uint64_t last = 0;
  const auto progress = [](void* context, std::uint64_t done, std::uint64_t total) {
    *static_cast<std::uint64_t*>(context) = done;
    return done < total;
  };
  EXPECT_EQ(file_Verify(path.c_str(), nullptr, progress, &last), status_Stopped);
  EXPECT_EQ(last, blockSize);
}

}  // namespace
