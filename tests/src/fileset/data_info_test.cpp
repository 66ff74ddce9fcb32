// Copies of a data group with everything that belongs to it.
#include <functional>
#include <memory>

#include "tests/src/fileset/data_fixture.h"
#include "tests/support/report_capture.h"

namespace utdata::test {
namespace {

TEST_F(DataGroups, CopiesOfADataGroupsSurroundingsStandAlone) {
  CGPatchTypeDescr patch;
  patch.patchId = 9;
  CGChanTypeDescr channel;
  channel.channelId = 4;
  channel.firstProbeId = 1;
  channel.secondProbeId = 2;
  channel.name = L"a channel";
  CGProbeTypeDescr probes[2];
  probes[0].probeId = 1;
  probes[1].probeId = 2;
  CGGateTypeDescr gate;
  gate.gateId = 2003;
  gate.channelId = 4;
  CGSubchanTypeDescr subChannel;
  subChannel.subChannelId = 7;
  subChannel.channelId = 4;
  CIData* const item = Add(
      {.patchId = 9, .channelId = 4, .subChannelId = 7, .gateId = 2003, .dataClass = gdata_AScan});

  const auto copy = [&] {
    return std::unique_ptr<fset_typeDataInfoDescr, std::function<void(fset_typeDataInfoDescr*)>>(
        set.fset_DataInfoRequestCopy(item),
        [this](auto* info) { set.fset_DataInfoReleaseCopy(info); });
  };
  EXPECT_EQ(0, copy()->complete) << "nothing but the group is there";
  set.fset_AddGPatch(&patch, 0);
  set.fset_AddGChan(&channel, 0);
  set.fset_AddGProbe(&probes[0], 0);
  set.fset_AddGGate(&gate, 0);
  const auto halfProbed = copy();
  EXPECT_EQ(nullptr, halfProbed->firstProbe);
  EXPECT_EQ(nullptr, halfProbed->secondProbe);
  EXPECT_EQ(0, halfProbed->complete);
  set.fset_AddGProbe(&probes[1], 0);
  const auto whole = copy();
  EXPECT_EQ(1, whole->complete) << "without its sub-channel";
  EXPECT_EQ(nullptr, whole->subChannel);
  set.fset_AddGSubChan(&subChannel, 0);
  const auto all = copy();
  EXPECT_EQ(subChannel, *all->subChannel);
  set.fset_RemoveGChan(fset_All, 4);
  RemoveAll();
  EXPECT_EQ(channel, *all->channel);
  EXPECT_EQ(9U, all->data->GetPatchID());
  EXPECT_EQ(1, all->tofd->valid);
  EXPECT_FLOAT_EQ(5900, all->tofd->soundSpeed);
  EXPECT_EQ(2U, all->secondProbe->probeId);
  EXPECT_EQ(gate, *all->gate);
  EXPECT_EQ(patch, *all->patch);
}

TEST_F(DataGroups, ACopyTakesTheGateOfTheExactId) {
  CGChanTypeDescr channel;
  CGGateTypeDescr gate;
  gate.gateId = 3;
  channel.channelId = gate.channelId = 4;
  set.fset_AddGChan(&channel, 0);
  set.fset_AddGGate(&gate, 0);
  CIData* const item = Add(Id(gdata_AScan, 0, 2003));
  fset_typeDataInfoDescr* const info = set.fset_DataInfoRequestCopy(item);
  EXPECT_EQ(nullptr, info->gate);
  set.fset_DataInfoReleaseCopy(info);
  const ReportCapture reports;
  EXPECT_EQ(nullptr, set.fset_DataInfoRequestCopy(nullptr));
  set.fset_DataInfoReleaseCopy(nullptr);
  EXPECT_EQ(2U, reports.Assertions());
}

}  // namespace
}  // namespace utdata::test
