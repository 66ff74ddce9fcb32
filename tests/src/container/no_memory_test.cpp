// Memory that runs out at each allocation in turn, alone or for good: what is loaded is whole or
// not there, and what was written says the same in memory and in the file.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>

#include "tests/src/container/inspection.h"
#include "tests/support/report_capture.h"

namespace {

thread_local long allocationsLeft = -1;  ///< until the one that fails; negative: none does
thread_local bool failsForGood = false;
thread_local bool hasFailed = false;

bool Fails() {
  if (allocationsLeft < 0) return false;
  if (allocationsLeft > 0) --allocationsLeft;
  if (allocationsLeft > 0) return false;
  hasFailed = true;
  if (!failsForGood) allocationsLeft = -1;
  return true;
}

void* Allocate(std::size_t size) noexcept {
  return Fails() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void* AllocateOrThrow(std::size_t size) {
  if (void* const memory = Allocate(size)) return memory;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace utdata::test {
namespace {

/// Runs `attempt` with the first allocation failing, the second, and so on until none does; once
/// with that one alone failing, once with all after it too.
/// @param prepare before each attempt, with memory
/// @param check   after each, with memory
void WithEachFailure(const std::function<void()>& prepare,
                     const std::function<void()>& attempt,
                     const std::function<void()>& check) {
  for (const bool forGood : {false, true}) {
    long number = 0;
    do {
      ++number;
      SCOPED_TRACE("allocation " + std::to_string(number) + (forGood ? " and all after it" : ""));
      prepare();
      failsForGood = forGood;
      hasFailed = false;
      allocationsLeft = number;
      attempt();
      allocationsLeft = -1;
      check();
      ASSERT_LT(number, 100000);
    } while (hasFailed && !::testing::Test::HasFailure());
    EXPECT_GT(number, 20) << "the attempt takes no memory";
  }
}

/// A file of two groups of each type.
Inspection WriteBase(const std::wstring& path) {
  const Inspection written = MakeInspection(path);
  Fill(*written);
  EXPECT_EQ(WriteWholeFile(*written), 0);
  return Load(path);
}

/// Another value in each type that changes are written of, and a data group and channel more.
Inspection ChangesOf(const CFContTypeFileDescr& loaded, unsigned seed) {
  Inspection changes = MakeInspection();
  RandomEngine engine(seed);
  container::ForEach(container::Modified(), [&](const auto& type) {
    auto* const changed = Add((*changes).*type.list, *(loaded.*type.list).GetHead());
    ChangeFields(*changed, engine);
  });
  Add(changes->channels, MakeRecord<CGChanTypeDescr>(seed + 10));
  GiveSamples(*Add(changes->data, MakeRecord<CGDataTypeFDD>(seed + 10)), 3);
  return changes;
}

TEST(NoMemory, ALoadIsWholeOrFails) {
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"weld.fpd");
  Inspection expected = WriteBase(path);
  CFCont container;
  const Inspection appended = ChangesOf(*expected, 1), companion = ChangesOf(*expected, 2);
  ASSERT_EQ(container.FileWrite(expected.get(), appended.get(), 0, nullptr, nullptr, 0), 0);
  ASSERT_EQ(container.FileWrite(expected.get(), companion.get(), 1, nullptr, nullptr, 0), 0);
  const auto open = [&](Inspection& loaded) {
    CFContTypeFileDescr* const descriptor = container.FileLoad(path.c_str(), nullptr, nullptr);
    if (descriptor &&
        container.FileUpdate(path.c_str(), descriptor, readAll, nullptr, nullptr) == 0)
      loaded.reset(descriptor);
  };
  Inspection whole;
  open(whole);
  ASSERT_TRUE(whole);
  Inspection loaded;
  WithEachFailure(
      [&] {
        loaded.reset();
        SCFile::file_Fail(SCFile::status_Locked, "of an earlier call");
      },
      [&] { open(loaded); },
      [&] {
        if (loaded)
          ExpectSame(*whole, *loaded);
        else
          EXPECT_EQ(SCFile::file_LastError().find("of an earlier call"), std::string::npos);
      });
  EXPECT_TRUE(loaded);
}

TEST(NoMemory, WhatIsLoadedSaysWhatTheFilesSay) {
  for (const bool isNumbered : {false, true})
    for (const int newFile : {0, 1}) {
      const ScratchDirectory scratch;
      const std::wstring path = scratch.File(L"weld.fpd");
      WriteBase(path);
      const std::string bytes = FileBytes(path);
      CFCont container;
      Inspection loaded, changes, before;
      int status = 0;
      const auto number = [&](const Inspection& inspection) {
        if (isNumbered) container.UpdateSubChannelList(inspection.get());
      };
      WithEachFailure(
          [&] {
            loaded.reset();
            std::ofstream(std::filesystem::path(path), std::ios::binary) << bytes;
            std::filesystem::remove(scratch.File(L"weld.A01"));
            loaded = Load(path);
            number(loaded);
            before = CopyOf(*loaded);
            changes = ChangesOf(*loaded, 3);
          },
          [&] {
            SCFile::FileHandle file = nullptr;
            status = container.FileWrite(loaded.get(), changes.get(), newFile, nullptr, &file, 0);
          },
          [&] {
            // A new companion may stand, and only its name not be brought to the disk.
            const bool stands = status == 0 || loaded->files.GetCount() > 1;
            if (!stands) ExpectSame(*loaded, *before);
            CFContTypeFileDescr* const again = Load(path).release();
            ASSERT_EQ(container.FileUpdate(path.c_str(), again, readAll, nullptr, nullptr), 0);
            const Inspection found(again);
            number(found);
            EXPECT_EQ(found->files.GetCount(), loaded->files.GetCount());
            container::ForEachType([&](const auto& type) {
              // A new group other than a data group is in the file alone.
              if ((found.get()->*type.list).GetCount() == ((*loaded).*type.list).GetCount())
                ExpectSameList(found.get()->*type.list, (*loaded).*type.list, type.primaryName);
            });
            EXPECT_EQ(found->channels.GetCount(), stands ? 3 : 2);
            EXPECT_EQ(found->data.GetCount(), stands ? 3 : 2);
          });
      EXPECT_EQ(status, 0);
    }
}

TEST(NoMemory, NumbersAreAllGivenOrNone) {
  const ReportCapture reports;
  Inspection inspection;
  CFCont container;
  WithEachFailure(
      [&] {
        inspection = MakeInspection();
        for (std::uint32_t id = 0; id < 20; ++id) {
          Add(inspection->subChannels, CGSubchanTypeDescr())->subChannelId = id;
          Add(inspection->data, CGDataTypeFDD())->subChannelId = id;
        }
      },
      [&] { container.UpdateSubChannelList(inspection.get()); },
      [&] {
        std::uint32_t id = inspection->subChannels.GetHead()->subChannelId;
        for (const CGSubchanTypeDescr* each : inspection->subChannels)
          EXPECT_EQ(each->subChannelId, id++);
        id = inspection->subChannels.GetHead()->subChannelId;
        for (const CGDataTypeFDD* each : inspection->data) EXPECT_EQ(each->subChannelId, id++);
      });
  EXPECT_EQ(inspection->data.GetHead()->subChannelId, 1u);
}

}  // namespace
}  // namespace utdata::test
