#include "utdata/fields.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "utdata/failure.h"

namespace utdata::test {
namespace {

/// Why a change is refused; empty when it is not.
template <class Change>
std::string WhyNot(Change change) {
  try {
    change();
    return {};
  } catch (const Error& error) {
    return error.Why();
  }
}

TEST(Fields, AreShownInUnitsOfTheTradeAndStoredInBaseUnits) {
  CGGateTypeDescr gate;
  gate.gateId = 1;
  const EditableFields fields(gate);
  fields["start"].Set("2.4");
  EXPECT_FLOAT_EQ(gate.start, 2.4e-6F);
  EXPECT_EQ(Fields(gate)["start"].Show(), "2.4 µs");
  EXPECT_EQ(fields["width"].Range(), "0 to 1000000 µs");
  fields["polarity"].Set("negative");
  EXPECT_EQ(gate.polarity, gdata_RectifNegative);
  fields["color"].Set("0xFF8000");
  EXPECT_EQ(gate.color, 0xFF8000U);
  EXPECT_EQ(fields["color"].Show(), "0xFF8000");
  fields["name"].Set("Prüf");
  EXPECT_EQ(gate.name, L"Pr\u00fcf");
  EXPECT_EQ(fields["name"].Show(), "\"Prüf\"");
  fields["width"].Set(1.0);  // the bound itself, which is not exact once it is converted
  EXPECT_EQ(gate.width, 1.0F);
  EXPECT_EQ(fields.Name(), "gate 1 of channel 0");
}

TEST(Fields, OnAnAxisHaveTheUnitThatTheirGroupSays) {
  CGPatchTypeDescr patch;
  const EditableFields fields(patch);
  fields["columnResolution"].Set("0.5");
  EXPECT_FLOAT_EQ(patch.columnResolution, 5e-4F);
  patch.columnUnits = kvt_UnitDegree;
  fields["columnResolution"].Set("0.5");
  EXPECT_EQ(patch.columnResolution, 0.5F);
  EXPECT_EQ(fields["columnResolution"].Show(), "0.5°");
  patch.columnUnits = static_cast<kvt_enumUnits>(99);
  EXPECT_EQ(fields["columnResolution"].Show(), "0.5");
}

TEST(Fields, RefuseWhatTheyDoNotTakeAndStayAsTheyWere) {
  CGChanTypeDescr channel;
  channel.gain = 7;
  const CGChanTypeDescr before = channel;
  CGDataTypeFDD data;
  CGWeldScanPlanDescr plan;
  CGWeldFillDescr fill;
  const EditableFields fields(channel), dataFields(data), planFields(plan), fillFields(fill);
  const double huge = std::numeric_limits<double>::max();
  const std::vector<std::pair<std::string, std::string>> refused = {
      {WhyNot([&] { fields["gain"].Set("201"); }), "-200 to 200 dB"},
      {WhyNot([&] { fields["gain"].Set("nan"); }), "-200 to 200 dB"},
      {WhyNot([&] { fields["gain"].Set(huge); }), "-200 to 200 dB"},
      {WhyNot([&] { fields["gain"].Set("3 dB"); }), "not a number"},
      {WhyNot([&] { fields["averaging"].Set("1.5"); }), "whole number"},
      {WhyNot([&] { fields["waveMode"].Set("lamb"); }), "longitudinal, shear, surface"},
      {WhyNot([&] { fields["waveMode"].Set(3.0); }), "longitudinal, shear, surface"},
      {WhyNot([&] { fields["channelId"].Set("4"); }), "says which group"},
      {WhyNot([&] { dataFields["dataType"].Set("i8"); }), "as it was acquired"},
      {WhyNot([&] { dataFields["samples"].Set("1"); }), "as it was acquired"},
      {WhyNot([&] { fields["soundspeed"].Set("1"); }), "soundSpeed"},
      {WhyNot([&] { fields["zzzzzzzzzzzzzzzzzz"].Set("1"); }), "no field of a channel"},
      {WhyNot([&] { planFields["channelIds"].Set(std::vector{0.5}); }), "does not take"},
      {WhyNot([&] { planFields["channelIds"].Set(std::vector{std::nan("")}); }), "finite"},
      {WhyNot([&] { planFields["channelIds"].Set("3"); }), "is not a number"},
      {WhyNot([&] { fillFields["outline"].Set(std::vector{1.0}); }), "does not take 1 numbers"},
      {WhyNot([&] { fields["gain"].Set(std::vector{1.0}); }), "not a list of numbers"},
      {WhyNot([&] { fields["name"].Set(1.0); }), "is not a number"},
      {WhyNot([&] { fields["color"].Set("0x12G"); }), "is not a number"},
      {WhyNot([&] { fields["color"].Set("0x"); }), "is not a number"},
      {WhyNot([&] { fields["ain"].Set("1"); }), "near ones: gain"},
      {WhyNot([&] { fields["gaxx"].Set("1"); }), "near ones: gain"},
      {WhyNot([&] { static_cast<void>(fields["gain"].Text()); }), "not a text"},
      {WhyNot([&] { static_cast<void>(fields["gain"].Numbers()); }), "not a list"},
      {WhyNot([&] { planFields["channelIds"].Set(std::vector{5e9}); }), "does not take"},
      {WhyNot([&] { static_cast<void>(fields["name"].Number()); }), "not a number"}};
  for (const auto& [why, expected] : refused)
    EXPECT_NE(why.find(expected), std::string::npos) << why << " / " << expected;
  EXPECT_TRUE(channel == before);
  planFields["channelIds"].Set(std::vector{3.0, 4.0});
  EXPECT_EQ(plan.channelIds, (std::vector<std::uint32_t>{3, 4}));
  EXPECT_EQ(planFields["channelIds"].Show(), "3, 4");
  EXPECT_EQ(planFields["channelIds"].Range(), "numbers");
  EXPECT_EQ(std::get<std::string>(planFields["channelIds"].Value()), "3, 4");
  EXPECT_EQ(std::get<std::string>(fields["name"].Value()), "");
  fields["color"].Set("255");
  EXPECT_EQ(channel.color, 0xFFU);
}

TEST(Fields, AreShownWhateverTheyHold) {
  CGChanTypeDescr channel;
  channel.tofd = -1;
  channel.gain = std::numeric_limits<float>::quiet_NaN();
  channel.waveMode = static_cast<gdata_enumWaveMode>(77);
  const Fields fields(channel);
  EXPECT_EQ(fields["tofd"].Show(), "-1");
  EXPECT_EQ(fields["waveMode"].Show(), "77");
  EXPECT_TRUE(fields["gain"].SameAs(Fields(CGChanTypeDescr(channel))["gain"]));
  for (const Field& field : fields.All()) static_cast<void>(field.Show());
}

}  // namespace
}  // namespace utdata::test
