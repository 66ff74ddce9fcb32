// An acquisition file while memory is short: it is made and closed, or its creation is refused.
#include <gtest/gtest.h>

#include "tests/memory/campaign.h"
#include "tests/src/acquisition/acquisition_samples.h"
#include "tests/support/file_folder.h"
#include "utdata/gdatamanager.h"

namespace utdata::test {
namespace {

TEST(NoMemory, Acquisition) {
  const ReservedSize reserved(std::uint64_t{1} << 20);
  RunCampaign("acquisition", [](Trial& trial) {
    const FileFolder folder;
    const Aurelis::Patch patch = MakePatch(0, 0, 3, 2);
    const MemoryAscanPatchBuffer ascans = MakeAscans(patch, 2, 20);
    const MemoryCscanPatchBuffer cscans = MakeCscans(patch);
    int files = 0;
    bool isWhole = false;
    const auto record = [&] {
      GDataManager writer(folder / (L"scan" + std::to_wstring(++files) + L".acq"));
      if (writer.FileCreate(Estimate(10000)) != 0) return false;
      const bool isSaved =
          writer.SavePatchBuffer(ascans) != GDataManager::ascan_Refused &&
          writer.SaveCscanBuffer(cscans, &CscanRecord::amplitude) != GDataManager::cscan_Refused;
      isWhole = writer.FileClose() == 0 && isSaved;
      return isWhole;
    };
    trial.Run(record);
    EXPECT_TRUE(record());
  });
}

}  // namespace
}  // namespace utdata::test
