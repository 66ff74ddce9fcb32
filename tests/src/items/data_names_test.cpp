// Data items: identity, status, names and labels.
#include <gtest/gtest.h>

#include <cwchar>
#include <string>

#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"

namespace {

using utdata::test::DataHost;
using utdata::test::ReportCapture;
using utdata::test::SoundRecord;

void Name(wchar_t* text, const wchar_t* name) { std::wcscpy(text, name); }

TEST(DataItem, LabelsFallBackToIds) {
  struct Case {
    idata_typeId id;
    const wchar_t *channel, *patch, *gate;
    int withPatch;
    const wchar_t *label, *idLabel;
  };
  const Case cases[] = {
      {{.channelId = 0, .gateId = 3}, L"", L"", L"", 0, L"C 1 G3 ", L"C 1 G3 "},
      {{.channelId = 11, .gateId = 2003}, L"", L"", L"", 0, L"C12 G2003 ", L"C12 G2003 "},
      {{.patchId = 2, .gateId = 1}, L"Left", L"", L"A", 1, L"Left P2 A ", L"C 1 P2 G1 "},
      {{.patchId = 2, .gateId = 1}, L"Left", L"Weld", L"A", 1, L"Left Weld. A ", L"C 1 P2 G1 "},
      {{.patchId = 2, .gateId = 1}, L"Left", L"Weld", L"", 0, L"Left G1 ", L"C 1 G1 "},
  };
  DataHost host;
  for (const Case& c : cases) {
    CGDataTypeFDD record = SoundRecord(c.id);
    record.dataClass = gdata_AScan;
    Name(record.channelName, c.channel);
    Name(record.gateName, c.gate);
    record.SetPatchIDName(c.patch);
    std::wstring label = L"before", idLabel = L"before";
    host.Make(record)->idata3_GetChannelIdName(&label, &idLabel, c.withPatch);
    EXPECT_EQ(c.label, label);
    EXPECT_EQ(c.idLabel, idLabel);
  }
}

TEST(DataItem, ChannelNamesNameTheSubChannelOfAllButMasters) {
  struct Case {
    gdata_enumDataClass dataClass;
    std::uint32_t channelId, subChannelId;
    const wchar_t *channel, *subChannel, *name;
  };
  constexpr auto masterClass =
      static_cast<gdata_enumDataClass>(gdata_AScan | gdata_MultiChannelMaster);
  const Case cases[] = {{gdata_AScan, 4, 2, L"", L"", L"C05 : [2]"},
                        {masterClass, 4, 2, L"", L"", L"C05"},
                        {gdata_AScan, 4, 0, L"", L"Beam", L"C05"},
                        {gdata_AScan, 120, 2, L"", L"Beam", L"C121 : Beam"},
                        {gdata_AScan, 4, 2, L"Left", L"", L"Left : [2]"}};
  DataHost host;
  for (const Case& c : cases) {
    CGDataTypeFDD record = SoundRecord(
        {.channelId = c.channelId, .subChannelId = c.subChannelId, .dataClass = c.dataClass});
    Name(record.channelName, c.channel);
    Name(record.subChannelName, c.subChannel);
    std::wstring name;
    host.Make(record)->idata3_GetChannelName(&name);
    EXPECT_EQ(c.name, name);
  }
}

TEST(DataItem, NamesPointIntoTheItem) {
  DataHost host;
  CGDataTypeFDD record = SoundRecord();
  Name(record.channelName, L"Left");
  Name(record.subChannelName, L"Beam 3");
  Name(record.gateName, L"A");
  Name(record.dataName, L"Weld");
  Name(record.dataNameText, L"root");
  const auto item = host.Make(record);
  idata_typeName names;
  item->idata1_GetName(&names);
  EXPECT_STREQ(L"", names.patchName);
  EXPECT_STREQ(L"Left", names.channelName);
  EXPECT_STREQ(L"Beam 3", names.subChannelName);
  EXPECT_STREQ(L"A", names.gateName);
  EXPECT_STREQ(L"Weld", names.dataName);
  EXPECT_STREQ(L"root", names.dataNameText);
  Name(item->idata1_GetInfoRef()->gateName, L"B");
  EXPECT_STREQ(L"B", names.gateName);
}

TEST(DataItem, FlagsAreSetAndClearedOneByOne) {
  DataHost host;
  const auto item = host.Make(SoundRecord());
  const auto flags = [&] {
    EXPECT_EQ(item->idata3_IsModified(), item->idata1_ModifGetStatus());
    EXPECT_EQ(item->idata3_IsNew(), item->idata1_NewGetStatus());
    return item->idata3_IsModified() * 10 + item->idata3_IsNew();
  };
  EXPECT_EQ(0, flags()) << "as it comes from a file";
  item->idata3_New();
  EXPECT_EQ(1, flags());
  item->idata3_Modified();
  EXPECT_EQ(11, flags());
  item->idata1_NewClear();
  EXPECT_EQ(10, flags());
  item->idata1_ModifClear();
  EXPECT_EQ(0, flags());
  item->idata3_New();
  item->idata3_Modified();
  item->idata3_ClearModified();
  EXPECT_EQ(1, flags());
  item->idata3_ClearNew();
  EXPECT_EQ(0, flags());
}

}  // namespace
