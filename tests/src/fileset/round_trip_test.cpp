// From file to items and back: an edit through one item of each type changes that group in the
// file, and nothing else.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "tests/src/container/inspection.h"
#include "tests/src/fileset/document.h"
#include "utdata/fset.h"
#include "utdata/spec.h"

namespace utdata::test {
namespace {

constexpr unsigned groupsPerType = 3;

/// An inspection loaded into a file set and a specimen, as a host does.
struct Session {
  explicit Session(const std::wstring& path) : loaded(Load(path)) {
    for (CGChanTypeDescr* channel : loaded->channels) set.fset_AddGChan(channel, 0);
    for (CGSubchanTypeDescr* subChannel : loaded->subChannels) set.fset_AddGSubChan(subChannel, 0);
    for (CGGateTypeDescr* gate : loaded->gates) set.fset_AddGGate(gate, 0);
    for (CGPatchTypeDescr* patch : loaded->patches) set.fset_AddGPatch(patch, 0);
    for (CGProbeTypeDescr* probe : loaded->probes) set.fset_AddGProbe(probe, 0);
    for (CGInfoTypeDescr* info : loaded->infos) set.fset_AddGInfo(info, 0);
    for (CGSpecmatTypeDescr* material : loaded->specimenMaterials)
      specimen.spec_SpecMatAdd(material, 0);
  }

  /// The working copies of the items that pass; owned by the items.
  void Gather(fset_enumFilters filter, CFContTypeFileDescr& out) {
    CIChanLst channels;
    CISubChanLst subChannels;
    CIGateLst gates;
    CIPatchLst patches;
    CIProbeLst probes;
    set.fset_GetIChanLst(&channels, filter, fset_AnyId);
    set.fset_GetISubChanLst(&subChannels, filter, fset_AnyId, fset_AnyId);
    set.fset_GetIGateLst(&gates, filter, fset_AnyId, fset_AnyId);
    set.fset_GetIPatchLst(&patches, filter, fset_AnyId);
    set.fset_GetIProbeLst(&probes, filter, fset_AnyId);
    for (CIChan* item : channels) out.channels.AddTail(item->ichan1_GetInfoRef());
    for (CISubChan* item : subChannels) out.subChannels.AddTail(item->ischa1_GetInfoRef());
    for (CIGate* item : gates) out.gates.AddTail(item->igate1_GetInfoRef());
    for (CIPatch* item : patches) out.patches.AddTail(item->ipatch1_GetInfoRef());
    for (CIProbe* item : probes) out.probes.AddTail(item->iprob1_GetInfoRef());
    if (CIInfo* item = set.fset_GetIInfo(filter)) out.infos.AddTail(item->iinfo1_GetInfoRef());
    if (CISpecMat* item = specimen.spec_SpecMatGet(static_cast<spec_enumFilters>(filter)))
      out.specimenMaterials.AddTail(item->ismat1_GetInfoRef());
  }

  Inspection loaded;
  CDocument document;
  CFSet set{&document};
  CSpec specimen;
};

/// What a file is expected to hold.
struct Content {
  std::vector<CGChanTypeDescr> channels;
  std::vector<CGSubchanTypeDescr> subChannels;
  std::vector<CGGateTypeDescr> gates;
  std::vector<CGPatchTypeDescr> patches;
  std::vector<CGProbeTypeDescr> probes;
  std::vector<CGInfoTypeDescr> infos;
  std::vector<CGSpecmatTypeDescr> materials;
};

template <class Record>
std::vector<Record> Values(const CList<Record*>& list) {
  std::vector<Record> values;
  for (const Record* record : list) values.push_back(*record);
  return values;
}

Content ContentOf(const CFContTypeFileDescr& file) {
  return {Values(file.channels),
          Values(file.subChannels),
          Values(file.gates),
          Values(file.patches),
          Values(file.probes),
          Values(file.infos),
          Values(file.specimenMaterials)};
}

void ExpectContent(const Content& expected, const std::wstring& path) {
  const Inspection file = Load(path);
  ASSERT_TRUE(file);
  const Content actual = ContentOf(*file);
  EXPECT_TRUE(expected.channels == actual.channels);
  EXPECT_TRUE(expected.subChannels == actual.subChannels);
  EXPECT_TRUE(expected.gates == actual.gates);
  EXPECT_TRUE(expected.patches == actual.patches);
  EXPECT_TRUE(expected.probes == actual.probes);
  EXPECT_TRUE(expected.infos == actual.infos);
  EXPECT_TRUE(expected.materials == actual.materials);
}

/// A file of several groups of each type, one of general information and one material.
Content WriteInspection(const std::wstring& path) {
  const Inspection file = MakeInspection(path);
  for (unsigned seed = 1; seed <= groupsPerType; ++seed) {
    Add(file->channels, MakeRecord<CGChanTypeDescr>(seed));
    Add(file->subChannels, MakeRecord<CGSubchanTypeDescr>(seed));
    Add(file->gates, MakeRecord<CGGateTypeDescr>(seed));
    Add(file->patches, MakeRecord<CGPatchTypeDescr>(seed));
    Add(file->probes, MakeRecord<CGProbeTypeDescr>(seed));
  }
  Add(file->infos, MakeRecord<CGInfoTypeDescr>(1));
  Add(file->specimenMaterials, MakeRecord<CGSpecmatTypeDescr>(1));
  EXPECT_EQ(WriteWholeFile(*file), 0);
  return ContentOf(*file);
}

/// Changes the record that is expected, and the item through its own operation.
struct Edit {
  const char* type;
  std::function<void(Session&, Content&, RandomEngine&)> apply;
};

template <class Record>
Record& Change(Record& record, RandomEngine& engine) {
  ChangeFields(record, engine);
  return record;
}

const std::vector<Edit> edits = {
    {"channel",
     [](Session& session, Content& content, RandomEngine& engine) {
       CGChanTypeDescr& record = content.channels[1];
       CIChan* item = session.set.fset_GetIChan(fset_All, record.channelId);
       item->ichan1_SetInfoCopy(&Change(record, engine));
     }},
    {"sub-channel",
     [](Session& session, Content& content, RandomEngine& engine) {
       CGSubchanTypeDescr& record = content.subChannels[1];
       CISubChan* item =
           session.set.fset_GetISubChan(fset_All, record.subChannelId, record.channelId);
       item->ischa1_SetInfoCopy(&Change(record, engine));
     }},
    {"gate",
     [](Session& session, Content& content, RandomEngine&) {
       CGGateTypeDescr& record = content.gates[1];
       CIGate* item = session.set.fset_GetIGate(fset_All, record.gateId, record.channelId);
       item->Start(record.start = 12.5e-6F);
       item->NLevel(record.negativeLevel = -0.0F);
     }},
    {"patch",
     [](Session& session, Content& content, RandomEngine& engine) {
       CGPatchTypeDescr& record = content.patches[1];
       CIPatch* item = session.set.fset_GetIPatch(fset_All, record.patchId);
       item->ipatch1_SetInfoCopy(&Change(record, engine));
     }},
    {"probe",
     [](Session& session, Content& content, RandomEngine& engine) {
       CGProbeTypeDescr& record = content.probes[1];
       CIProbe* item = session.set.fset_GetIProbe(fset_All, record.probeId);
       item->iprob1_SetInfoCopy(&Change(record, engine));
     }},
    {"material", [](Session& session, Content& content, RandomEngine& engine) {
       session.specimen.spec_SpecMatGet(spec_All)->ismat1_SetInfoCopy(
           &Change(content.materials[0], engine));
     }}};

TEST(RoundTrip, AnEditChangesItsGroupAndNothingElse) {
  RandomEngine engine(11);
  for (const Edit& edit : edits)
    for (const int asCompanion : {0, 1}) {
      SCOPED_TRACE(testing::Message()
                   << edit.type << (asCompanion ? " as companion" : " appended"));
      const ScratchDirectory directory;
      const std::wstring path = directory.File(L"weld.utd");
      Content content = WriteInspection(path);
      {
        Session session(path);
        edit.apply(session, content, engine);
        CFContTypeFileDescr changes;
        session.Gather(fset_Modified, changes);
        EXPECT_EQ(1,
                  changes.channels.GetCount() + changes.subChannels.GetCount() +
                      changes.gates.GetCount() + changes.patches.GetCount() +
                      changes.probes.GetCount() + changes.specimenMaterials.GetCount());
        SCFile::FileHandle file = nullptr;
        ASSERT_EQ(
            0, CFCont().FileWrite(session.loaded.get(), &changes, asCompanion, nullptr, &file, 1));
        session.set.fset_ClearModified();
        EXPECT_EQ(0, session.set.fset_IsModified());
      }
      if (!asCompanion) {
        ExpectContent(content, path);
        continue;
      }
      // The companion's changes come with it alone.
      constexpr int firstCompanion[8] = {0, 0, 0, 0, 1, 0, 0, 0};
      const Inspection plain = Load(path), updated = Load(path);
      ASSERT_EQ(0,
                CFCont().FileUpdate(path.c_str(), updated.get(), firstCompanion, nullptr, nullptr));
      const Content before = ContentOf(*plain), after = ContentOf(*updated);
      const auto differ = [](const auto& a, const auto& b) { return a == b ? 0 : 1; };
      EXPECT_EQ(
          1,
          differ(before.channels, after.channels) + differ(before.subChannels, after.subChannels) +
              differ(before.gates, after.gates) + differ(before.patches, after.patches) +
              differ(before.probes, after.probes) + differ(before.materials, after.materials));
      EXPECT_TRUE(content.channels == after.channels && content.subChannels == after.subChannels &&
                  content.gates == after.gates && content.patches == after.patches &&
                  content.probes == after.probes && content.materials == after.materials);
    }
}

TEST(RoundTrip, AWholeFileWrittenFromItemsHoldsEveryEdit) {
  const ScratchDirectory directory;
  const std::wstring path = directory.File(L"weld.utd"), copy = directory.File(L"copy.utd");
  Content content = WriteInspection(path);
  Session session(path);
  RandomEngine engine(12);
  for (const Edit& edit : edits) edit.apply(session, content, engine);
  session.set.fset_GetIInfo(fset_All)->iinfo1_SetInfoCopy(&Change(content.infos[0], engine));
  CFContTypeFileDescr whole;
  ASSERT_TRUE(whole.SetPath(copy));
  session.Gather(fset_All, whole);
  SCFile::FileHandle file = nullptr;
  ASSERT_EQ(0, CFCont().FileWrite(nullptr, &whole, 1, nullptr, &file, 1));
  ASSERT_EQ(0, SCFile::file_Close(file));
  ExpectContent(content, copy);
}

}  // namespace
}  // namespace utdata::test
