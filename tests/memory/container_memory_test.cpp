// Loads, updates and writes of inspections while memory is short: what is loaded is whole or not
// there, and what was written says the same in memory and in the file.
#include <gtest/gtest.h>

#include <array>
#include <functional>

#include "tests/memory/campaign.h"
#include "tests/src/container/inspection.h"
#include "tests/support/report_capture.h"

namespace utdata::test {
namespace {

/// Of all data groups here; none lays out more.
std::array<std::uint16_t, 4096> sampleTable;

void GiveSameSamples(CFContTypeFileDescr& descriptor) {
  for (CGDataTypeFDD* data : descriptor.data) data->dataPointer = sampleTable.data();
}

/// A descriptor of two groups of each type.
Inspection MakeFilled(const std::wstring& path) {
  Inspection filled = MakeInspection(path);
  container::ForEachType([&]<class Descriptor>(const container::GroupType<Descriptor>& type) {
    for (const unsigned seed : {1U, 2U}) Add((*filled).*type.list, MakeRecord<Descriptor>(seed));
  });
  for (const unsigned seed : {1U, 2U}) Add(filled->defects, MakeDefect(seed));
  filled->defectTableFlag = 1;
  GiveSameSamples(*filled);
  return filled;
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
  Add(changes->data, MakeRecord<CGDataTypeFDD>(seed + 10))->dataPointer = sampleTable.data();
  return changes;
}

/// The bytes of a file with appended changes, and of its companion.
struct Files {
  std::string base, companion;
  Files() {
    const ScratchDirectory scratch;
    const std::wstring path = scratch.File(L"weld.fpd");
    EXPECT_EQ(WriteWholeFile(*MakeFilled(path)), 0);
    const Inspection loaded = Load(path);
    CFCont container;
    for (const int newFile : {0, 1})
      EXPECT_EQ(container.FileWrite(loaded.get(),
                                    ChangesOf(*loaded, 1 + static_cast<unsigned>(newFile)).get(),
                                    newFile,
                                    nullptr,
                                    nullptr,
                                    0),
                0);
    base = FileBytes(path);
    companion = FileBytes(scratch.File(L"weld.A01"));
  }
};

/// A folder that holds them.
class Folder {
 public:
  explicit Folder(bool hasCompanion) {
    static const Files files;
    Put(path, files.base);
    if (hasCompanion) Put(companion, files.companion);
  }
  /// As a host loads it now; null when it cannot be loaded.
  [[nodiscard]] Inspection LoadAll() const {
    Inspection loaded;
    if (CFContTypeFileDescr* const base = Load(path).release())
      if (CFCont().FileUpdate(path.c_str(), base, readAll, nullptr, nullptr) == 0)
        loaded.reset(base);
    return loaded;
  }

 private:
  static void Put(const std::wstring& to, const std::string& bytes) {
    std::ofstream(std::filesystem::path(to), std::ios::binary) << bytes;
  }
  const ScratchDirectory m_scratch;

 public:
  const std::wstring path = m_scratch.File(L"weld.fpd");
  const std::wstring companion = m_scratch.File(L"weld.A01");
  [[nodiscard]] std::ptrdiff_t Quantity() const {
    return std::distance(std::filesystem::directory_iterator(m_scratch.Path()), {});
  }
};

TEST(NoMemory, Load) {
  RunCampaign("load", [](Trial& trial) {
    const Folder folder(true);
    const Inspection whole = folder.LoadAll();
    ASSERT_TRUE(whole);
    Inspection loaded;
    SCFile::file_Fail(SCFile::status_Locked, "of an earlier call");
    const auto load = [&] {
      CDataNewGroup newGroups;
      CFContTypeFileDescr* const descriptor =
          CFCont().FileLoad(folder.path.c_str(), nullptr, &newGroups);
      if (descriptor &&
          CFCont().FileUpdate(folder.path.c_str(), descriptor, readAll, nullptr, &newGroups) == 0)
        loaded.reset(descriptor);
      return loaded != nullptr;
    };
    if (trial.Run(load) != Outcome::Done) {
      EXPECT_EQ(trial.outcome, Outcome::Answered);
      EXPECT_EQ(SCFile::file_LastError().find("of an earlier call"), std::string::npos);
      EXPECT_TRUE(load());
    }
    if (loaded) ExpectSame(*whole, *loaded);
  });
}

TEST(NoMemory, LoadOfWhatBelongs) {
  RunCampaign("load by identity", [](Trial& trial) {
    const Folder folder(true);
    const Inspection whole = folder.LoadAll();
    Inspection loaded;
    std::vector<CompanionFault> faults;
    const auto load = [&] {
      CFContTypeFileDescr* const descriptor =
          CFCont().FileLoad(folder.path.c_str(), nullptr, nullptr);
      if (descriptor && CFCont().UpdateFromCompanions(descriptor, nullptr, faults) == 0)
        loaded.reset(descriptor);
      return loaded != nullptr;
    };
    if (trial.Run(load) != Outcome::Done) {
      EXPECT_EQ(trial.outcome, Outcome::Answered);
      EXPECT_TRUE(load());
    }
    EXPECT_TRUE(faults.empty());
    if (loaded) ExpectSame(*whole, *loaded);
  });
}

TEST(NoMemory, WholeWrite) {
  for (const bool isThere : {false, true})
    RunCampaign(isThere ? "replace" : "whole write", [isThere](Trial& trial) {
      const ScratchDirectory scratch;
      const std::wstring path = scratch.File(L"weld.fpd");
      if (isThere) {
        std::ofstream(std::filesystem::path(path)) << "something else";
      }
      const Inspection filled = MakeFilled(path);
      const auto write = [&] {
        SCFile::GroupHandle top = nullptr;
        SCFile::FileHandle file = nullptr;
        const int status =
            CFCont().FileWrite(nullptr, filled.get(), isThere ? 0 : 1, &top, &file, 0);
        return file && SCFile::file_Close(file) == SCFile::status_Ok && status == SCFile::status_Ok;
      };
      if (trial.Run(write) != Outcome::Done) {
        EXPECT_EQ(trial.outcome, Outcome::Answered);
        if (isThere)
          EXPECT_EQ(FileBytes(path), "something else");
        else
          EXPECT_FALSE(std::filesystem::exists(path));
        EXPECT_TRUE(write());
      }
      const Inspection loaded = Load(path);
      ASSERT_TRUE(loaded);
      ExpectSame(*filled, *loaded);
    });
}

TEST(NoMemory, Changes) {
  for (const bool isNumbered : {false, true})
    for (const int newFile : {0, 1})
      RunCampaign(
          std::string(newFile ? "companion" : "append") + (isNumbered ? ", numbered" : ""),
          [=](Trial& trial) {
            const Folder folder(false);
            const auto number = [=](const Inspection& inspection) {
              if (isNumbered) CFCont().UpdateSubChannelList(inspection.get());
            };
            const Inspection loaded = folder.LoadAll();
            ASSERT_TRUE(loaded);
            number(loaded);
            const Inspection before = CopyOf(*loaded);
            const Inspection changes = ChangesOf(*loaded, 3);
            const auto write = [&] {
              SCFile::FileHandle file = nullptr;
              return CFCont().FileWrite(loaded.get(), changes.get(), newFile, nullptr, &file, 0) ==
                     SCFile::status_Ok;
            };
            const auto compare = [&](std::ptrdiff_t channels) {
              const Inspection found = folder.LoadAll();
              ASSERT_TRUE(found);
              number(found);
              EXPECT_EQ(found->files.GetCount(), loaded->files.GetCount());
              container::ForEachType([&](const auto& type) {
                // A new group other than a data group is in the file alone.
                if ((found.get()->*type.list).GetCount() == ((*loaded).*type.list).GetCount())
                  ExpectSameList(found.get()->*type.list, (*loaded).*type.list, type.primaryName);
              });
              EXPECT_EQ(found->channels.GetCount(), channels);
              EXPECT_EQ(found->data.GetCount(), channels);
            };
            const auto filesBefore = loaded->files.GetCount();
            const Outcome outcome = trial.Run(write);
            EXPECT_NE(outcome, Outcome::Passed);
            // A new companion may stand, and only its name not be brought to the disk.
            const bool stands = outcome == Outcome::Done || loaded->files.GetCount() > filesBefore;
            if (!stands) ExpectSame(*loaded, *before);
            compare(stands ? 4 : 3);
            EXPECT_EQ(folder.Quantity(), loaded->files.GetCount());
            if (stands) return;
            EXPECT_TRUE(write());
            compare(4);
          });
}

TEST(NoMemory, Numbering) {
  RunCampaign("numbering", [](Trial& trial) {
    const ReportCapture reports;
    const Inspection inspection = MakeInspection();
    for (std::uint32_t id = 0; id < 20; ++id) {
      Add(inspection->subChannels, CGSubchanTypeDescr())->subChannelId = id;
      Add(inspection->data, CGDataTypeFDD())->subChannelId = id;
    }
    const auto number = [&] {
      CFCont().UpdateSubChannelList(inspection.get());
      return inspection->data.GetHead()->subChannelId == 1;
    };
    if (trial.Run(number) != Outcome::Done) {
      EXPECT_EQ(inspection->subChannels.GetHead()->subChannelId, 0U);
    }
    std::uint32_t id = inspection->subChannels.GetHead()->subChannelId;
    for (const CGSubchanTypeDescr* each : inspection->subChannels)
      EXPECT_EQ(each->subChannelId, id++);
    id = inspection->subChannels.GetHead()->subChannelId;
    for (const CGDataTypeFDD* each : inspection->data) EXPECT_EQ(each->subChannelId, id++);
    if (id == 20) {
      EXPECT_TRUE(number());
    }
  });
}

TEST(NoMemory, Samples) {
  RunCampaign("samples", [](Trial& trial) {
    const Folder folder(false);
    const Inspection loaded = folder.LoadAll();
    const CGDataTypeFDD& data = *loaded->data.GetHead();
    const auto read = [&] {
      std::byte* bytes = nullptr;
      std::uint64_t size = 0;
      void* mapped = nullptr;
      SCFile::BlockChunks chunks;
      const int readStatus = gdata_SamplesRead(&data, &bytes, &size);
      delete[] bytes;
      return readStatus == SCFile::status_Ok &&
             gdata_SamplesMap(&data, &mapped, &size) == SCFile::status_Ok &&
             SCFile::file_BlockChunks(data.samples.group, data.samples.item, &chunks) ==
                 SCFile::status_Ok;
    };
    if (trial.Run(read) != Outcome::Done) {
      EXPECT_EQ(trial.outcome, Outcome::Answered);
      EXPECT_TRUE(read());
    }
  });
}

TEST(NoMemory, Verification) {
  RunCampaign("verification", [](Trial& trial) {
    const Folder folder(false);
    std::string problem;
    const auto verify = [&] {
      return SCFile::file_Verify(folder.path.c_str(), &problem, nullptr, nullptr) ==
             SCFile::status_Ok;
    };
    if (trial.Run(verify) != Outcome::Done) {
      EXPECT_EQ(trial.outcome, Outcome::Answered);
      EXPECT_TRUE(verify()) << problem;
    }
  });
}

}  // namespace
}  // namespace utdata::test
