// Items, lists, file sets, data items, units and display codes while memory is short: an addition
// is whole or answers null, a list gets all matches or none, and nothing that goes needs memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "tests/memory/campaign.h"
#include "tests/support/data_host.h"
#include "tests/support/record_samples.h"
#include "tests/support/report_capture.h"
#include "utdata/error.h"
#include "utdata/fset.h"
#include "utdata/idatalst.h"
#include "utdata/spec.h"
#include "utdata/tablefactory.h"
#include "utdata/unitset.h"

namespace utdata::test {
namespace {

/// Records of every type that a file set holds, with ids from 0; enough of each for its index.
struct Records {
  static constexpr std::uint32_t quantity = 40;
  std::vector<CGChanTypeDescr> channels;
  std::vector<CGGateTypeDescr> gates;
  std::vector<CGPatchTypeDescr> patches;
  std::vector<CGProbeTypeDescr> probes;
  std::vector<CGSubchanTypeDescr> subChannels;
  std::vector<CGDataTypeFDD> data;
  CGInfoTypeDescr info = MakeRecord<CGInfoTypeDescr>(1);
  CGWeldScanPlanDescr plan = MakeRecord<CGWeldScanPlanDescr>(1);
  CGWeldFillDescr fill = MakeRecord<CGWeldFillDescr>(1);

  explicit Records(std::uint32_t count = quantity) {
    for (std::uint32_t id = 0; id < count; ++id) {
      channels.push_back(MakeRecord<CGChanTypeDescr>(id));
      channels.back().channelId = id;
      gates.push_back(MakeRecord<CGGateTypeDescr>(id));
      gates.back().gateId = id;
      patches.push_back(MakeRecord<CGPatchTypeDescr>(id));
      patches.back().patchId = id;
      probes.push_back(MakeRecord<CGProbeTypeDescr>(id));
      probes.back().probeId = id;
      subChannels.push_back(MakeRecord<CGSubchanTypeDescr>(id));
      subChannels.back().subChannelId = id;
      data.push_back(SoundRecord({.channelId = id / 4, .subChannelId = id % 4}));
      data.back().dataClass = id % 8 == 1   ? gdata_CScanAmplitude
                              : id % 8 == 5 ? gdata_CScanPosition
                                            : gdata_AScan;
    }
  }
};

/// Adds everything that is not there yet. @return whether all of it is there
bool AddAll(DataHost& host, Records& records) {
  CFSet& set = host.set;
  bool isWhole = true;
  const auto add = [&](auto& all, auto get, auto put) {
    for (auto& record : all) isWhole = (get(record) || put(record)) && isWhole;
  };
  add(
      records.channels,
      [&](auto& r) { return set.fset_GetIChan(fset_All, r.channelId); },
      [&](auto& r) { return set.fset_AddGChan(&r, 0); });
  add(
      records.gates,
      [&](auto& r) { return set.fset_GetIGate(fset_All, r.gateId, r.channelId); },
      [&](auto& r) { return set.fset_AddGGate(&r, 0); });
  add(
      records.patches,
      [&](auto& r) { return set.fset_GetIPatch(fset_All, r.patchId); },
      [&](auto& r) { return set.fset_AddGPatch(&r, 0); });
  add(
      records.probes,
      [&](auto& r) { return set.fset_GetIProbe(fset_All, r.probeId); },
      [&](auto& r) { return set.fset_AddGProbe(&r, 0); });
  add(
      records.subChannels,
      [&](auto& r) { return set.fset_GetISubChan(fset_All, r.subChannelId, r.channelId); },
      [&](auto& r) { return set.fset_AddGSubChan(&r, 0); });
  isWhole = (set.fset_GetIInfo(fset_All) || set.fset_AddGInfo(&records.info, 0)) && isWhole;
  isWhole = set.fset_AddGWeldScanPlan(&records.plan) && isWhole;
  isWhole = set.fset_AddGWeldFill(&records.fill) && isWhole;
  return isWhole;
}

/// The same of the data groups.
bool AddData(DataHost& host, Records& records) {
  bool isWhole = true;
  for (CGDataTypeFDD& record : records.data) {
    const auto find = [&] {
      return host.set.fset_GetIData(
          fset_All, 0, 0, record.channelId, record.subChannelId, record.gateId, record.dataClass);
    };
    if (find()) continue;
    const bool isAdded = host.set.fset_AddGData(&record, nullptr, &host.volumes, 0) != nullptr;
    EXPECT_EQ(find() != nullptr, isAdded);
    isWhole = isAdded && isWhole;
  }
  return isWhole;
}

/// Every element is in the list of the master that it names, and a master has one at least.
void ExpectMastersAreWhole(CFSet& set) {
  CIDataLst masters, items;
  set.fset_GetMSCIDataLst(&masters);
  set.fset_GetIDataLst(&items);
  std::size_t elements = 0;
  for (CIData* master : masters) {
    EXPECT_GT(master->idata1_SubChannelQty(), 0U);
    elements += master->idata1_SubChannelQty();
    for (CIData* element : *master->idata1_SubChannelGetList()) {
      EXPECT_EQ(element->idata1_SubChannelMaster(), master);
      EXPECT_TRUE(items.Find(element));
    }
  }
  EXPECT_EQ(elements,
            static_cast<std::size_t>(std::count_if(items.begin(), items.end(), [](auto* i) {
              return i->idata1_IsMultiChannelElement();
            })));
}

TEST(NoMemory, FileSetFilled) {
  RunCampaign("file set filled", [](Trial& trial) {
    DataHost host;
    Records records(4);
    const auto add = [&] { return AddAll(host, records); };
    EXPECT_NE(trial.Run(add), Outcome::Passed);
    EXPECT_TRUE(add());
    EXPECT_EQ(host.set.fset_GetIChanCount(), 4U);
  });
}

TEST(NoMemory, FileSetGone) {
  // The set's own end, and removals, take no memory at all.
  DataHost host;
  Records records;
  ASSERT_TRUE(AddAll(host, records) && AddData(host, records));
  auto set = std::make_unique<CFSet>(static_cast<IGDataSupplier*>(&host));
  for (CGChanTypeDescr& channel : records.channels) set->fset_AddGChan(&channel, 0);
  ArmMemory(1, Shortage::ForGood);
  const std::uint32_t removed[] = {
      host.set.fset_RemoveGData(fset_All, 0, fset_AnyId, 3, fset_AnyId, fset_AnyId, fset_AnyId),
      host.set.fset_RemoveGChan(fset_All, 7),
      host.set.fset_RemoveGGate(fset_All, fset_AnyId, fset_AnyId),
      host.set.fset_RemoveGInfo(fset_All)};
  host.set.fset_ClearModified();
  host.set.fset_ClearNew();
  set.reset();
  DisarmMemory();
  for (const std::uint32_t nothing : removed) EXPECT_EQ(nothing, 0U);
  EXPECT_EQ(host.set.fset_GetIChanCount(), Records::quantity - 1);
  EXPECT_EQ(host.set.fset_GetIChan(fset_All, 7), nullptr);
  ExpectMastersAreWhole(host.set);
}

TEST(NoMemory, FileSetQueries) {
  RunCampaign("file set asked", [](Trial& trial) {
    DataHost host;
    Records records;
    ASSERT_TRUE(AddAll(host, records) && AddData(host, records));
    CIDataLst all, ofChannel, ofProbe, special, masters, ofGate;
    CIChanLst channels;
    const auto ask = [&] {
      CFSet& set = host.set;
      if (all.IsEmpty()) set.fset_GetIDataLst(&all);
      if (ofChannel.IsEmpty()) set.fset_GetSpecificChannelSortedIDataList(2, &ofChannel);
      if (ofProbe.IsEmpty()) set.fset_GetIDataLst(&ofProbe, records.channels[2].firstProbeId);
      set.fset_GetSpecialIDataList(&special);
      if (masters.IsEmpty()) set.fset_GetMSCIDataLst(&masters);
      if (ofGate.IsEmpty())
        set.fset_GetGateSpecificIDataList(
            &ofGate, fset_All, fset_AnyId, 1, fset_AnyId, fset_AnyId, gdata_AScan);
      if (channels.IsEmpty()) set.fset_GetIChanLst(&channels, fset_All, fset_AnyId);
      return set.fset_GetIChan(fset_All, 5) &&
             set.fset_GetIGate(fset_All, 3, records.gates[3].channelId) &&
             set.fset_IsModified() == 0;
    };
    trial.Run(ask);
    // A list has all matches or none.
    for (const auto& [list, whole] : {std::pair{&all, 40}, {&ofChannel, 4}, {&ofGate, 3}})
      EXPECT_TRUE(list->IsEmpty() || list->GetCount() == whole) << list->GetCount();
    EXPECT_TRUE(channels.IsEmpty() || channels.GetCount() == 40);
    EXPECT_TRUE(ask());
    EXPECT_EQ(all.GetCount(), 40);
    EXPECT_EQ(ofChannel.GetCount(), 4);
    EXPECT_EQ(ofGate.GetCount(), 3);
  });
}

/// A host whose answers take no memory.
struct FrugalHost : DataHost {
  void OnDataGroupAdded(std::int32_t) override {}
};

TEST(NoMemory, DataItems) {
  RunCampaign("data items added", [](Trial& trial) {
    const ReportCapture reports;
    FrugalHost host;
    Records records(10);
    const auto add = [&] { return AddData(host, records); };
    EXPECT_NE(trial.Run(add), Outcome::Passed);
    ExpectMastersAreWhole(host.set);
    EXPECT_TRUE(add());
    ExpectMastersAreWhole(host.set);
    const CIData* const amplitudes =
        host.set.fset_GetIData(fset_All, 0, 0, 0, 1, 0, gdata_CScanAmplitude);
    EXPECT_TRUE(amplitudes);
  });
}

TEST(NoMemory, DataItemAlone) {
  RunCampaign("data item", [](Trial& trial) {
    const ReportCapture reports;
    DataHost host;
    std::unique_ptr<CIData> item;
    std::wstring label, idLabel, name;
    std::unique_ptr<fset_typeDataInfoDescr, std::function<void(fset_typeDataInfoDescr*)>> copy(
        nullptr, [&](auto* info) { host.set.fset_DataInfoReleaseCopy(info); });
    const auto use = [&] {
      if (!item) item = host.Make(SoundRecord());
      item->idata3_GetChannelIdName(&label, &idLabel, 1);
      item->idata3_GetChannelName(&name);
      idata_typeInspParams params;
      item->idata3_GetInspParam(&params);
      params.soundSpeed = 3240;
      item->idata1_ModifyInspParam(&params, 0);
      item->idata3_SetCurrentUnit(
          kvt_AxisSample, item->idata3_GetUnit(kvt_AxisSample, unit_Time, unit_Microsecond), 0);
      if (!copy) copy.reset(host.set.fset_DataInfoRequestCopy(item.get()));
      return copy != nullptr;
    };
    trial.Run(use);
    if (item) {
      EXPECT_TRUE(item->idata3_UnitsGet());
    }
    EXPECT_TRUE(use());
    EXPECT_EQ(item->idata3_GetSoundSpeed(), 3240);
    EXPECT_EQ(idLabel, L"C 1 P0 G0 ");
  });
}

TEST(NoMemory, Items) {
  RunCampaign("item changed", [](Trial& trial) {
    CGChanTypeDescr fileSide = MakeRecord<CGChanTypeDescr>(1);
    CIChan item(&fileSide, 0);
    const CGChanTypeDescr before = fileSide;
    CGChanTypeDescr changed = MakeRecord<CGChanTypeDescr>(2);
    const CGChanTypeDescr replaced = MakeRecord<CGChanTypeDescr>(3);
    CGChanTypeDescr copy;
    ichan_name name;
    int done = 0;
    const auto use = [&] {
      if (done == 0) item.ichan1_SetInfoCopy(&changed);
      done = std::max(done, 1);
      item.ichan1_GetInfoCopy(&copy);
      item.ichan1_GetName(&name);
      if (done == 1) item.ichan1_ReplaceGInfo(&replaced);
      done = 2;
      return true;
    };
    trial.Run(use);
    CGChanTypeDescr working;
    item.ichan1_GetInfoCopy(&working);
    EXPECT_EQ(working, done == 0 ? before : done == 1 ? changed : replaced);
    EXPECT_EQ(fileSide, done == 2 ? replaced : before);
    EXPECT_TRUE(use());
    EXPECT_EQ(fileSide, replaced);
  });
}

TEST(NoMemory, Lists) {
  RunCampaign("items moved between lists", [](Trial& trial) {
    Records records(12);
    std::vector<std::unique_ptr<CIChan>> items;
    CIChanLst list, out;
    for (CGChanTypeDescr& channel : records.channels) {
      items.push_back(std::make_unique<CIChan>(&channel, 0));
      list.AddTail(items.back().get());
    }
    const auto move = [&] {
      list.RemoveIChan(fset_All, &out, fset_AnyId);
      return true;
    };
    if (trial.Run(move) != Outcome::Done) {
      EXPECT_EQ(list.GetCount(), 12);
      EXPECT_EQ(out.GetCount(), 0);
      EXPECT_TRUE(move());
    }
    EXPECT_EQ(out.GetCount(), 12);
    EXPECT_TRUE(list.IsEmpty());
  });
}

TEST(NoMemory, Units) {
  RunCampaign("units", [](Trial& trial) {
    DataHost host;
    std::optional<CVolumeSet> volumes;
    CUnitSet* units = nullptr;
    bool hasLengths = false, hasAmplitudes = false;
    std::wstring shown;
    const auto make = [&] {
      if (!volumes) volumes.emplace(&host, unit_Length, L"", unit_Length, L"");
      volumes->vol_FillBaseUnits();
      if (!units) units = volumes->vol_CreateUnitSet(vset_groupId(6, 1, 0, 0, 0), nullptr);
      if (!units) return false;
      hasLengths = hasLengths || units->AddSubUnit(kvt_AxisColumn, unit_Length, 1, 0, 0);
      hasAmplitudes = hasAmplitudes || units->AddAmplitudeSubUnit(1);
      if (!hasLengths || !hasAmplitudes) return false;
      shown = units->GetUnit(kvt_AxisColumn, unit_Length, unit_Millimetre)->FormatValue(12.5);
      return true;
    };
    trial.Run(make);
    if (units) {
      EXPECT_EQ(units->GetUnits(kvt_AxisColumn)->GetCount(), hasLengths ? 4 : 0);
      EXPECT_EQ(units->GetUnits(kvt_AxisAmplitude)->GetCount(), hasAmplitudes ? 2 : 0);
    }
    EXPECT_TRUE(make());
    EXPECT_EQ(units->GetUnits(kvt_AxisColumn)->GetCount(), 4);
    EXPECT_FALSE(shown.empty());
    for (const kvt_enumAxis axis : {kvt_AxisColumn, kvt_AxisSample, kvt_AxisAmplitude})
      EXPECT_TRUE(volumes->vol_GetBaseUnit(axis));
    volumes->vol_DeleteUnitSet(&units);
  });
}

TEST(NoMemory, Codes) {
  RunCampaign("codes", [](Trial& trial) {
    DataHost host;
    CTableFactory factory;
    CGDataTypeFDD record = SoundRecord();
    record.SetDataType(kvt_Int16);
    record.SetDataRectification(gdata_RectifNone);
    record.sampleSize = 2;
    record.dataMinimum = -32768;
    record.dataMaximum = 32767;
    const std::unique_ptr<CIData> item = host.Make(record);
    CLookUpTable* table = nullptr;
    const short samples[] = {-32768, 0, 32767};
    unsigned char codes[3] = {};
    const auto convert = [&] {
      const vset_groupId identity(5, 1, 0, 0, 1);
      if (!table) table = factory.ObtainLUT(item->Descriptor(), nullptr, &identity);
      return table && table->RemapLUT(item->Descriptor(), 2) &&
             table->ConvertBlock(samples, 3, codes);
    };
    if (trial.Run(convert) != Outcome::Done) {
      EXPECT_EQ(factory.GetTableQty(), table ? 1 : 0);
      EXPECT_TRUE(convert());
    }
    EXPECT_NE(codes[0], codes[2]);
    factory.ReleaseLUT(table);
  });
}

TEST(NoMemory, Specimen) {
  RunCampaign("specimen", [](Trial& trial) {
    CGSpecmatTypeDescr material = MakeRecord<CGSpecmatTypeDescr>(1);
    CSpec specimen;
    const auto add = [&] {
      return specimen.spec_SpecMatGet(spec_All) || specimen.spec_SpecMatAdd(&material, 0);
    };
    trial.Run(add);
    EXPECT_TRUE(add());
  });
}

TEST(NoMemory, Reports) {
  RunCampaign("reports", [](Trial& trial) {
    int seen = 0;
    const auto report = [&] {
      ReportSink before = SetReportSink([&seen](const Report&) {
        ++seen;
        return ReportAnswer::Continue;
      });
      err_Warning(L"a warning of some length, so that its text takes memory", "file.cpp", 3);
      return true;
    };
    trial.Run(report);
    ReportAssertion("file.cpp", 1, L"seen by whoever is there");
    SetReportSink({});
    EXPECT_TRUE(report());
    SetReportSink({});
    EXPECT_GT(seen, 0);
  });
}

}  // namespace
}  // namespace utdata::test
