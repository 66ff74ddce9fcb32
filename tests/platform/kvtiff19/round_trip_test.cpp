// What is written is read back: trees, values, texts, blocks.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>

#include <sys/mman.h>
#include <sys/stat.h>

#include "interfaces/kvtiff19.h"
#include "platform/kvtiff19/format.h"
#include "platform/kvtiff19/items.h"
#include "platform/os/path.h"
#include "tests/support/file_folder.h"
#include "tests/support/file_snapshot.h"

namespace {

using namespace SCFile;
using utdata::kvtiff19::ElementSize;
using utdata::test::FileFolder;

constexpr std::uint32_t plainGroup = 60000;

#define ASSERT_OK(call) ASSERT_EQ(call, status_Ok) << file_LastError()

std::uint32_t CountOf(const Node* group, std::uint32_t index) {
  std::uint32_t count = 0;
  EXPECT_EQ(file_ItemInfo(group, index, nullptr, nullptr, &count, nullptr, nullptr, 0), status_Ok);
  return count;
}

TEST(RoundTrip, EveryValueTypeKeepsEveryBit) {
  const FileFolder folder;
  const std::wstring path = folder / L"values.fpd";
  unsigned char bits[5 * 8];
  for (std::size_t index = 0; index < sizeof bits; ++index)
    bits[index] = static_cast<unsigned char>(0xF7 - 13 * index);
  FileHandle file = nullptr;
  GroupHandle group = nullptr;
  ASSERT_OK(file_Create(path.c_str(), &file));
  ASSERT_OK(file_GroupCreate(file, &group, plainGroup, nullptr));
  for (std::uint32_t type = value_Int8; type <= value_Double; ++type)
    for (std::uint32_t count : {0u, 1u, 5u})
      ASSERT_OK(file_ItemValueWrite(group, 100 * type + count, type, count, bits));
  ASSERT_OK(file_Commit(file));
  ASSERT_OK(file_Close(file));

  ASSERT_OK(file_Open(path.c_str(), &file));
  ASSERT_OK(file_GroupOpen(file, &group, 0));
  ASSERT_EQ(file_ItemNbrGet(group), 30u);
  for (std::uint32_t index = 0; index < 30; ++index) {
    std::uint32_t code = 0;
    ASSERT_OK(file_ItemInfo(group, index, &code, nullptr, nullptr, nullptr, nullptr, 0));
    const std::uint32_t type = code / 100;
    unsigned char buffer[sizeof bits] = {};
    std::uint32_t count = 5;
    ASSERT_OK(file_IndexValueRead(group, index, type, buffer, &count));
    EXPECT_EQ(count, code % 100);
    EXPECT_EQ(std::memcmp(buffer, bits, count * ElementSize(type)), 0) << "type " << type;
    if (count > 0) {
      std::uint32_t tooFew = count - 1;
      EXPECT_EQ(file_IndexValueRead(group, index, type, buffer, &tooFew), status_BufferTooSmall);
    }
    EXPECT_EQ(
        file_IndexValueRead(group, index, type == value_Int8 ? type + 1 : type - 1, buffer, &count),
        status_BadArgument);
  }
  ASSERT_OK(file_Close(file));
}

TEST(RoundTrip, TextsOfAllPlanesAndTheirRoom) {
  const FileFolder folder;
  const std::wstring path = folder / L"texte \x00E9.fpd";
  const std::wstring texts[] = {
      L"", L"soudure \x00E0 45\x00B0", L"\x6EB6\x63A5", L"\U0001F527!", std::wstring(L"a\0b", 3)};
  FileHandle file = nullptr;
  GroupHandle group = nullptr;
  ASSERT_OK(file_Create(path.c_str(), &file));
  ASSERT_OK(file_GroupCreate(file, &group, plainGroup, L"\U0001F527 \x6EB6"));
  for (const std::wstring& text : texts)
    ASSERT_OK(file_ItemValueWrite(
        group, 1, value_Text, static_cast<std::uint32_t>(text.size() + 1), text.c_str()));
  ASSERT_OK(file_Commit(file));
  ASSERT_OK(file_Close(file));

  ASSERT_OK(file_Open(path.c_str(), &file));
  EXPECT_EQ(file_Path(file), path);
  ASSERT_OK(file_GroupOpen(file, &group, 0));
  for (std::uint32_t index = 0; index < std::size(texts); ++index) {
    std::uint32_t count = CountOf(group, index);
    EXPECT_EQ(count, texts[index].size() + 1);
    std::wstring text(count, L'?');
    std::uint32_t tooFew = count - 1;
    EXPECT_EQ(file_IndexValueRead(group, index, value_Text, text.data(), &tooFew),
              status_BufferTooSmall);
    ASSERT_OK(file_IndexValueRead(group, index, value_Text, text.data(), &count));
    EXPECT_EQ(text, texts[index] + L'\0');
  }
  for (const auto& [room, expected] :
       {std::pair{10u, L"\U0001F527 \x6EB6"}, {3u, L"\U0001F527 "}, {1u, L""}}) {
    wchar_t name[10];
    ASSERT_OK(file_ItemInfo(file, 0, nullptr, nullptr, nullptr, nullptr, name, room));
    EXPECT_STREQ(name, expected);
  }
  ASSERT_OK(file_Close(file));
}

TEST(RoundTrip, TreeKeepsOrderDuplicatesAndHandles) {
  const FileFolder folder;
  const std::wstring path = folder / L"tree.fpd";
  FileHandle file = nullptr;
  GroupHandle top = nullptr, first = nullptr, second = nullptr, inner = nullptr;
  const std::uint32_t one = 1;
  ASSERT_OK(file_CreateEx(path.c_str(), &file));
  ASSERT_OK(file_GroupCreate(file, &top, plainGroup, L"FC"));
  ASSERT_OK(file_GroupCreate(top, &first, plainGroup + 1, L"same"));
  ASSERT_OK(file_ItemValueWrite(top, 7, value_UInt32, 1, &one));
  ASSERT_OK(file_GroupCreate(top, &second, plainGroup + 1, L"same"));
  // Groups may be filled in any order, also after younger ones.
  ASSERT_OK(file_GroupCreate(second, &inner, plainGroup + 2, L"inner"));
  ASSERT_OK(file_ItemValueWrite(first, 8, value_UInt32, 1, &one));
  ASSERT_OK(file_ItemValueWrite(inner, 9, value_UInt32, 1, &one));
  ASSERT_OK(file_GroupNameSet(first, L"renamed", 8));
  EXPECT_EQ(file_ItemNbrGet(top), 3u) << "uncommitted groups count";
  GroupHandle again = nullptr;
  ASSERT_OK(file_GroupOpen(top, &again, 2));
  EXPECT_EQ(again, second);
  const std::string expected =
      "60000 type 0 count 3 FC\n"
      "  60001 type 0 count 1 renamed\n"
      "    8 type 7 count 1 01000000\n"
      "  7 type 7 count 1 01000000\n"
      "  60001 type 0 count 1 same\n"
      "    60002 type 0 count 1 inner\n"
      "      9 type 7 count 1 01000000\n";
  ASSERT_OK(file_Commit(file));
  EXPECT_EQ(utdata::test::Snapshot(file), expected)
      << "groups made before the commit stay readable";
  ASSERT_OK(file_GroupOpen(top, &again, 2));
  EXPECT_EQ(again, second);
  EXPECT_EQ(file_OfGroup(again), file);
  EXPECT_EQ(file_ItemValueWrite(top, 7, value_UInt32, 1, &one), status_BadArgument)
      << "what is committed never changes";
  EXPECT_EQ(file_Commit(file), status_BadArgument) << "a write that failed stops the next commit";
  ASSERT_OK(file_Close(file));
  EXPECT_EQ(utdata::test::SnapshotOf(path), expected);
  EXPECT_EQ(folder.Names(), std::vector<std::wstring>{L"tree.fpd"});
}

TEST(RoundTrip, LimitsOfTheFormat) {
  const FileFolder folder;
  FileHandle file = nullptr;
  GroupHandle group = nullptr;
  ASSERT_OK(file_Create((folder / L"limits.fpd").c_str(), &file));
  const std::wstring longest(32767, L'\x00E9');
  Node* parent = file;
  for (unsigned depth = 1; depth <= 16; ++depth, parent = group)
    ASSERT_OK(file_GroupCreate(parent, &group, 0xFFFF, longest.c_str())) << depth;
  ASSERT_OK(file_GroupNameSet(group, longest.c_str(), 32768)) << "the terminator counts as none";
  ASSERT_OK(file_Commit(file));
  EXPECT_EQ(utdata::test::Snapshot(file).find("status"), std::string::npos);
  const wchar_t surrogate[] = {static_cast<wchar_t>(0xD800), 0};
  const auto deeper = [&] {
    Node* at = file;
    for (unsigned depth = 1; depth <= 16; ++depth, at = group)
      if (const int status = file_GroupCreate(at, &group, 1, nullptr)) return status;
    return file_GroupCreate(at, &group, 1, nullptr);
  };
  const auto withGroup = [&](auto write) {
    return [&, write] { return file_GroupCreate(file, &group, 1, nullptr) ? -1 : write(); };
  };
  const std::pair<std::function<int()>, int> cases[] = {
      {deeper, status_TooLarge},
      {[&] { return file_GroupCreate(file, &group, 1, (longest + L"!").c_str()); },
       status_TooLarge},
      {[&] { return file_GroupCreate(file, &group, 0x10000, nullptr); }, status_BadArgument},
      {[&] { return file_GroupCreate(file, &group, 1, surrogate); }, status_BadText},
      {withGroup([&] { return file_ItemValueWrite(group, 1, value_Text, 2, surrogate); }),
       status_BadText},
      {withGroup([&] { return file_ItemValueWrite(group, 1, value_Text, 2, L"ab"); }),
       status_BadArgument},
      {withGroup([&] { return file_ItemValueWrite(group, 1, 1, 0, nullptr); }), status_BadArgument},
      {withGroup([&] { return file_ItemValueWrite(group, 1, value_Block, 0, nullptr); }),
       status_BadArgument},
      {withGroup([&] { return file_BlockWrite(group, 1, 1, nullptr); }), status_BadArgument},
  };
  for (const auto& [write, status] : cases) {
    EXPECT_EQ(write(), status);
    EXPECT_EQ(file_Commit(file), status) << "a write that failed stops the commit";
    EXPECT_EQ(file_ItemNbrGet(file), 1u);
    EXPECT_EQ(file_CommitNumber(file), 1u);
  }
  ASSERT_OK(file_Close(file));
}

// None of these calls can be done; none of them ends the process or changes the file.
TEST(RoundTrip, CallsThatMakeNoSenseAreRefused) {
  const FileFolder folder;
  const std::wstring path = folder / L"weld.fpd";
  FileHandle file = nullptr;
  GroupHandle group = nullptr, pending = nullptr, got = nullptr;
  const std::uint32_t number = 7;
  ASSERT_OK(file_Create(path.c_str(), &file));
  ASSERT_OK(file_GroupCreate(file, &group, plainGroup, L"group"));
  ASSERT_OK(file_ItemValueWrite(group, 1, value_UInt32, 1, &number));
  ASSERT_OK(file_BlockWrite(group, 2, sizeof number, &number));
  ASSERT_OK(file_Commit(file));
  const auto before = utdata::test::SnapshotOf(path);
  ASSERT_OK(file_GroupCreate(file, &pending, plainGroup, L"pending"));
  EXPECT_EQ(file_GroupNameSet(pending, L"renamed", 8), status_Ok);
  wchar_t name[3] = L"xx";
  EXPECT_EQ(file_ItemInfo(file, 0, nullptr, nullptr, nullptr, nullptr, name, 0), status_Ok);
  EXPECT_STREQ(name, L"xx") << "there is no room for a name";

  std::uint32_t type = 0, count = 1, value = 0;
  std::uint64_t size = 0;
  void* view = nullptr;
  std::byte* samples = nullptr;
  CGDataTypeFDD record;
  BlockChunks chunks;
  WriteSignature signature;
  const auto info = [&](const Node* node, std::uint32_t index) {
    return file_ItemInfo(node, index, &type, nullptr, nullptr, nullptr, nullptr, 0);
  };
  const auto rename = [&](GroupHandle node, const wchar_t* text, std::size_t length) {
    return file_GroupNameSet(node, text, static_cast<std::uint32_t>(length));
  };
  const std::function<int()> calls[] = {
      [&] { return file_Commit(nullptr); },
      [&] { return file_Commit(group); },
      [&] { return file_Discard(group); },
      [&] { return file_Close(group); },
      [&] { return file_SetCharacterFormat(group, 1); },
      [&] { return file_SetCharacterFormat(file, 0); },
      [&] { return file_MakeCompanion(group, 1, {}, {}); },
      [&] { return file_Init({}, {}, {}, {}, {}, [](std::uint64_t, std::uint64_t) {}); },
      [&] { return file_Rescue(nullptr, L"to", false, nullptr); },
      [&] { return file_Rescue(L"from", L"to", false, nullptr); },
      [&] { return info(nullptr, 0); },
      [&] { return info(file, 2); },
      [&] { return info(group, 2); },
      [&] { return file_ItemValueType(nullptr, 0, &type); },
      [&] { return file_ItemValueType(group, 2, &type); },
      [&] { return file_GroupOpen(nullptr, &got, 0); },
      [&] { return file_GroupOpen(file, nullptr, 0); },
      [&] { return file_GroupOpen(file, &got, 2); },
      [&] { return file_GroupOpen(group, &got, 0); },
      [&] { return file_GroupCreate(nullptr, &got, plainGroup, nullptr); },
      [&] { return file_GroupCreate(file, nullptr, plainGroup, nullptr); },
      [&] { return file_GroupCreate(group, &got, plainGroup, nullptr); },
      [&] { return rename(nullptr, L"x", 2); },
      [&] { return rename(file, L"x", 2); },
      [&] { return rename(group, L"x", 2); },
      [&] { return file_IndexValueRead(nullptr, 0, value_UInt32, &value, &count); },
      [&] { return file_IndexValueRead(file, 0, value_UInt32, &value, &count); },
      [&] { return file_IndexValueRead(group, 0, value_UInt32, nullptr, &count); },
      [&] { return file_IndexValueRead(group, 0, value_UInt32, &value, nullptr); },
      [&] { return file_IndexValueRead(group, 2, value_UInt32, &value, &count); },
      [&] { return file_IndexValueRead(group, 0, value_Float, &value, &count); },
      [&] { return file_IndexValueRead(group, 0, 0, &value, &count); },
      [&] { return file_IndexValueRead(group, 1, value_Block, &value, &count); },
      [&] { return file_IndexValueRead(pending, 0, value_UInt32, &value, &count); },
      [&] { return file_ItemValueWrite(nullptr, 1, value_UInt32, 1, &number); },
      [&] { return file_ItemValueWrite(group, 1, value_UInt32, 1, &number); },
      [&] { return file_ItemValueWrite(pending, 0x10000, value_UInt32, 1, &number); },
      [&] { return file_ItemValueWrite(pending, 1, value_Block, 1, &number); },
      [&] { return file_ItemValueWrite(pending, 1, value_UInt32, 1, nullptr); },
      [&] { return file_ItemValueWrite(pending, 1, value_Text, 0, L""); },
      [&] { return file_BlockWrite(nullptr, 1, 4, &number); },
      [&] { return file_BlockWrite(group, 1, 4, &number); },
      [&] { return file_BlockWrite(pending, 0x10000, 4, &number); },
      [&] { return file_BlockInfo(nullptr, 1, &size, &size); },
      [&] { return file_BlockInfo(group, 0, &size, &size); },
      [&] { return file_BlockInfo(group, 2, &size, &size); },
      [&] { return file_BlockInfo(pending, 0, &size, &size); },
      [&] { return file_BlockRead(group, 0, 0, 1, &value); },
      [&] { return file_BlockRead(group, 1, 5, 0, &value); },
      [&] { return file_BlockRead(group, 1, 2, 3, &value); },
      [&] { return file_BlockRead(group, 1, 0, 4, nullptr); },
      [&] { return file_BlockMap(group, 1, nullptr); },
      [&] { return file_BlockMap(group, 0, &view); },
      [&] { return file_BlockUnmap(group, &value); },
      [&] { return file_BlockChunks(group, 1, nullptr); },
      [&] { return file_BlockChunks(group, 0, &chunks); },
      [&] { return file_Sign(nullptr); },
      [&] { return file_ReadSignature(nullptr, &signature); },
      [&] { return gdata_SamplesMap(nullptr, &view, &size); },
      [&] { return gdata_SamplesMap(&record, nullptr, &size); },
      [&] { return gdata_SamplesMap(&record, &view, nullptr); },
      [&] { return gdata_SamplesRead(nullptr, &samples, &size); },
      [&] { return gdata_SamplesRead(&record, nullptr, &size); },
      [&] { return gdata_SamplesRead(&record, &samples, nullptr); },
      [&] { return gdata_ReadGroupInfo(nullptr, &record); },
      [&] { return gdata_ReadGroupInfo(group, nullptr); },
  };
  for (const auto& call : calls) EXPECT_EQ(call(), status_BadArgument) << &call - calls;
  EXPECT_EQ(file_SetCharacterFormat(file, 1), status_Ok);
  EXPECT_EQ(gdata_SamplesMap(&record, &view, &size), status_NotFound);
  EXPECT_EQ(gdata_SamplesRead(&record, &samples, &size), status_NotFound);
  EXPECT_EQ(file_ItemNbrGet(nullptr), 0u);
  EXPECT_EQ(file_OfGroup(nullptr), nullptr);
  EXPECT_EQ(file_Path(nullptr), nullptr);
  EXPECT_EQ(file_CommitNumber(nullptr), 0u);
  EXPECT_EQ(file_CommittedSize(nullptr), 0u);
  EXPECT_FALSE(file_Contains(nullptr, {}));
  EXPECT_FALSE(file_ViewSize(&value, &size));
  EXPECT_STREQ(file_StatusText(-1), "unknown status");
  EXPECT_EQ(file_Fail(status_Stopped, nullptr), status_Stopped);
  EXPECT_EQ(file_LastError(), "");
  EXPECT_EQ(file_Close(file), status_BadArgument) << "a write that failed is not committed";
  EXPECT_EQ(utdata::test::SnapshotOf(path), before);
}

TEST(RoundTrip, AnErrorThatIsTooLongEndsWithAWholeCharacter) {
  for (const std::size_t shift : {0u, 1u, 2u}) {
    std::string text(shift, 'a');
    while (text.size() < 10000) text += "\xE6\xBA\xB6";
    file_Fail(status_Stopped, text.c_str());
    const std::string error = file_LastError();
    EXPECT_TRUE(text.starts_with(error));
    EXPECT_EQ(error.size() % 3, shift);
    EXPECT_GT(error.size(), 5000u);
  }
}

TEST(RoundTrip, BlocksAreAlignedCheckedAndMappedAsPrivateCopies) {
  const FileFolder folder;
  const std::wstring path = folder / L"blocks.fpd";
  constexpr std::size_t chunk = utdata::kvtiff19::chunkSize;
  const std::size_t sizes[] = {0, 1, 4096, chunk - 1, chunk, 3 * chunk + 17};
  std::vector<unsigned char> samples(3 * chunk + 17);
  for (std::size_t index = 0; index < samples.size(); ++index)
    samples[index] = static_cast<unsigned char>(index * 31 >> 4);
  std::fill(samples.begin() + chunk, samples.begin() + 2 * chunk, static_cast<unsigned char>(0));
  FileHandle file = nullptr;
  GroupHandle group = nullptr;
  ASSERT_OK(file_Create(path.c_str(), &file));
  ASSERT_OK(file_GroupCreate(file, &group, plainGroup, nullptr));
  for (const std::size_t size : sizes) ASSERT_OK(file_BlockWrite(group, 5, size, samples.data()));
  ASSERT_OK(file_Commit(file));
  ASSERT_OK(file_Close(file));
  EXPECT_EQ(file_Verify(path.c_str(), nullptr), status_Ok) << file_LastError();

  ASSERT_OK(file_Open(path.c_str(), &file));
  ASSERT_OK(file_GroupOpen(file, &group, 0));
  const std::vector<std::byte> before = utdata::test::BytesOf(path);
  for (std::uint32_t index = 0; index < std::size(sizes); ++index) {
    std::uint64_t offset = 0, size = 0;
    ASSERT_OK(file_BlockInfo(group, index, &offset, &size));
    ASSERT_EQ(size, sizes[index]);
    EXPECT_EQ(CountOf(group, index), size);
    EXPECT_EQ(offset % 4096, 0u);
    EXPECT_EQ(std::memcmp(before.data() + offset, samples.data(), size), 0);
    void* view = nullptr;
    void* other = nullptr;
    ASSERT_OK(file_BlockMap(group, index, &view));
    ASSERT_OK(file_BlockMap(group, index, &other));
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(std::memcmp(view, samples.data(), size), 0);
    std::memset(view, 0xAA, size);
    EXPECT_EQ(std::memcmp(other, samples.data(), size), 0) << "a view is private";
    ASSERT_OK(file_BlockUnmap(file, view));
    EXPECT_EQ(file_BlockUnmap(file, view), status_BadArgument);
    for (const auto& [from, part] : {std::pair<std::uint64_t, std::uint64_t>{0, size},
                                     {size / 2, size - size / 2},
                                     {size / 3, size / 3}}) {
      std::vector<unsigned char> read(part + 1);
      ASSERT_OK(file_BlockRead(group, index, from, part, read.data()));
      EXPECT_EQ(std::memcmp(read.data(), samples.data() + from, part), 0);
    }
    unsigned char byte = 0;
    EXPECT_EQ(file_BlockRead(group, index, size, 1, &byte), status_BadArgument);
    EXPECT_EQ(file_BlockRead(group, index, std::numeric_limits<std::uint64_t>::max(), 2, &byte),
              status_BadArgument);
  }
  ASSERT_OK(file_Close(file));
  EXPECT_EQ(utdata::test::BytesOf(path), before);
}

std::uint64_t ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  std::uint64_t total = 0, resident = 0;
  statm >> total >> resident;
  return resident * 4096;
}

TEST(RoundTrip, BlockOfMoreThanEightGibibytes) {
#ifdef UTDATA_SANITIZED
  GTEST_SKIP() << "the sanitizers watch every byte of it";
#endif
  const FileFolder folder;
  const std::wstring path = folder / L"large.fpd";
  constexpr std::uint64_t size = (std::uint64_t{8} << 30) + 12345;
  FileHandle file = nullptr;
  GroupHandle group = nullptr;
  {
    void* samples = ::mmap(
        nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(samples, MAP_FAILED);
    static_cast<unsigned char*>(samples)[size - 1] = 77;
    ASSERT_OK(file_Create(path.c_str(), &file));
    ASSERT_OK(file_GroupCreate(file, &group, plainGroup, nullptr));
    const int written = file_BlockWrite(group, 1, size, samples);
    ::munmap(samples, size);
    if (written == status_DiskFull) {
      file_Close(file);
      GTEST_SKIP() << "no room for a file of 8 GiB with holes: " << file_LastError();
    }
    ASSERT_EQ(written, status_Ok) << file_LastError();
    ASSERT_OK(file_Commit(file));
    ASSERT_OK(file_Close(file));
  }
  const std::uint64_t residentBefore = ResidentBytes();
  ASSERT_OK(file_Open(path.c_str(), &file));
  ASSERT_OK(file_GroupOpen(file, &group, 0));
  void* view = nullptr;
  ASSERT_OK(file_BlockMap(group, 0, &view));
  EXPECT_EQ(static_cast<unsigned char*>(view)[size - 1], 77);
  EXPECT_EQ(CountOf(group, 0), std::numeric_limits<std::uint32_t>::max());
  EXPECT_LT(ResidentBytes(), residentBefore + (8u << 20));
  ASSERT_OK(file_Close(file));
  struct stat status {};
  ASSERT_EQ(::stat(utdata::os::NarrowPath(path).c_str(), &status), 0);
  if (static_cast<std::uint64_t>(status.st_blocks) * 512 > size / 2)
    GTEST_SKIP() << "this file system has no holes";
  EXPECT_LT(static_cast<std::uint64_t>(status.st_blocks) * 512, 4u << 20)
      << "zeros are left as holes";
}

}  // namespace
