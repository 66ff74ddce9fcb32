#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "tests/support/report_capture.h"
#include "utdata/supplier.h"
#include "utdata/vset.h"

namespace {

using utdata::test::ReportCapture;

class Document : public IGDataSupplier {
 public:
  void HandleParameterRequest(PellamServiceParam& request, std::int32_t) override {
    const std::uint8_t answer = 1;
    EXPECT_FALSE(request.Answer(&answer, 4)) << "not the size asked for";
    EXPECT_TRUE(request.Answer(&answer, 1));
  }
  void OnParametersChanged() override {}
  CFSet* GetFileSet() override { return nullptr; }
  CTableFactory* GetTableFactory() override { return nullptr; }
  CVolumeSet* GetVolumeSet() override { return nullptr; }
  CFContTypeFileDescr* GetFileDescriptor() override { return nullptr; }
  void OnDataGroupAdded(std::int32_t) override {}
};

struct UnitSets : testing::Test {
  Document document;
  CVolumeSet volume{&document, unit_Generic, L"", unit_Generic, L""};
  CUnitSet* Private() { return volume.vol_CreateUnitSet(vset_groupId(6, 0, 0, 0, 0), nullptr); }
};

using Type = std::pair<std::uint32_t, std::uint32_t>;

std::vector<Type> TypesOn(const CUnitSet& set, kvt_enumAxis axis) {
  std::vector<Type> types;
  for (const CUnit* unit : *set.GetUnits(axis)) {
    unit_enumUnits family;
    unit_enumDataUnit dataUnit;
    unit->GetUnitType(family, dataUnit);
    types.emplace_back(family, dataUnit);
  }
  return types;
}

TEST_F(UnitSets, AreSharedByIdentityAndCountedToDestruction) {
  int created = -1;
  const vset_groupId identity(5, 1, 2, 3, 4);
  CUnitSet* first = volume.vol_CreateUnitSet(identity, &created);
  EXPECT_EQ(created, 1);
  CUnitSet* second = volume.vol_CreateUnitSet(vset_groupId(5, 1, 2, 3, 99), &created);
  EXPECT_EQ(created, 0) << "the fourth value is not compared";
  EXPECT_EQ(first, second);
  EXPECT_EQ(first->GetReferenceCount(), 2);
  for (const vset_groupId& other : {vset_groupId(4, 1, 2, 3, 4),
                                    vset_groupId(5, 9, 2, 3, 4),
                                    vset_groupId(5, 1, 9, 3, 4),
                                    vset_groupId(5, 1, 2, 9, 4)})
    EXPECT_NE(volume.vol_CreateUnitSet(other, nullptr), first);
  EXPECT_NE(Private(), Private());

  volume.vol_DeleteUnitSet(&second);
  EXPECT_EQ(second, nullptr);
  EXPECT_EQ(first->GetReferenceCount(), 1);
  volume.vol_DeleteUnitSet(&first);
  static_cast<void>(volume.vol_CreateUnitSet(identity, &created));
  EXPECT_EQ(created, 1) << "the set was destroyed with its last reference";
  volume.vol_DeleteUnitSet(&first);
  volume.vol_DeleteUnitSet(nullptr);
}

// A set that is given back to the wrong volume set loses a reference and is not destroyed.
TEST_F(UnitSets, OfAnotherVolumeSetAreReportedOnceAndNotDestroyed) {
  CVolumeSet other(&document, unit_Generic, L"", unit_Generic, L"");
  CUnitSet* const set = Private();
  CUnitSet nobodys(vset_groupId(), &volume, nullptr);
  ReportCapture reports;
  for (CUnitSet* const foreign : {set, &nobodys}) {
    const std::size_t before = reports.Assertions();
    CUnitSet* given = foreign;
    other.vol_DeleteUnitSet(&given);
    EXPECT_EQ(given, nullptr);
    EXPECT_EQ(reports.Assertions(), before + 1);
    EXPECT_EQ(foreign->GetReferenceCount(), 0);
  }
}

TEST_F(UnitSets, FamiliesAddTheirUnitsInOrder) {
  const std::vector<std::tuple<unit_enumUnits, std::vector<std::uint32_t>>> families = {
      {unit_Generic, {0}},
      {unit_Time, {1, 2}},
      {unit_OneWayTime, {1, 2}},
      {unit_Length, {3, 4, 5, 6}},
      {unit_Path, {3, 4, 5, 6}},
      {unit_HalfPath, {3, 4, 5, 6}},
      {unit_Depth, {3, 4, 5, 6}},
      {unit_TofdDepth, {3, 4, 5, 6}},
      {unit_Angle, {7, 8}},
      {unit_Point, {9}}};
  CUnitSet* set = Private();
  std::vector<Type> expected;
  for (const auto& [family, dataUnits] : families) {
    CUnit* const added = set->AddSubUnit(kvt_AxisSample, family, 2, 0, 0);
    EXPECT_EQ(
        added,
        set->GetUnit(kvt_AxisSample, family, static_cast<unit_enumDataUnit>(dataUnits.front())));
    for (const std::uint32_t dataUnit : dataUnits) expected.emplace_back(family, dataUnit);
  }
  EXPECT_EQ(TypesOn(*set, kvt_AxisSample), expected);
}

TEST_F(UnitSets, WhatAUnitSetDoesNotTakeIsReported) {
  CUnitSet* set = Private();
  ReportCapture reports;
  EXPECT_NE(set->AddSubUnit(kvt_AxisAmplitude, unit_Percent, 1, 0, 0), nullptr);
  EXPECT_NE(set->AddSubUnit(kvt_AxisAmplitude, unit_Decibel, 1, 0, 0), nullptr);
  for (const std::uint32_t family : {6u, 7u, 14u, 99u})
    EXPECT_EQ(set->AddSubUnit(kvt_AxisAmplitude, static_cast<unit_enumUnits>(family), 1, 0, 0),
              nullptr);
  EXPECT_EQ(set->AddSubUnit(static_cast<kvt_enumAxis>(6), unit_Length, 1, 0, 0), nullptr);
  EXPECT_EQ(CUnitSet().AddSubUnit(kvt_AxisColumn, unit_Length, 1, 0, 0), nullptr);
  set->AdjustSubUnit(static_cast<kvt_enumAxis>(6), unit_Length, 1, 0, 0, 0);
  set->AdjustSubUnit(kvt_AxisColumn, unit_Generic, 1, 0, 0, 0);
  set->AdjustSubUnit(kvt_AxisColumn, unit_Scaled, 1, 0, 0, 0);
  EXPECT_EQ(CUnitSet().ModifyAmplitudeSubUnit(1), nullptr);
  EXPECT_EQ(set->AppendUnit(static_cast<kvt_enumAxis>(6), std::make_unique<CUnit>()), nullptr);
  EXPECT_EQ(set->AppendUnit(kvt_AxisColumn, nullptr), nullptr);
  EXPECT_EQ(reports.Assertions(), 13u);
  set->AdjustSubUnit(kvt_AxisColumn, unit_Reserved6, 1, 0, 0, 0);
  set->AdjustSubUnit(kvt_AxisColumn, unit_Length, 1, 0, 0, 0);
  EXPECT_EQ(reports.Assertions(), 13u) << "absent units are passed over";
  EXPECT_EQ(set->GetUnits(kvt_AxisAmplitude)->GetCount(), 2);
}

// Base values of one metre of half path, ten degrees and so on, after the factors were adjusted as
// data items do it.
TEST_F(UnitSets, AdjustedUnitsConvertBetweenEachOther) {
  EXPECT_EQ(volume.vol_FillBaseUnits(), 6);
  CUnitSet* set = Private();
  for (const auto family :
       {unit_HalfPath, unit_Path, unit_Time, unit_TofdDepth, unit_Point, unit_Angle})
    static_cast<void>(set->AddSubUnit(kvt_AxisSample, family, 1, 0, 0));
  const double c = 5920;
  set->AdjustSubUnit(kvt_AxisSample, unit_HalfPath, 1, 0, 0, 0);
  set->AdjustSubUnit(kvt_AxisSample, unit_Path, 2, 0, 0, 0);
  set->AdjustSubUnit(kvt_AxisSample, unit_Time, 2 / c, 0, 0, 0);
  set->AdjustSubUnit(kvt_AxisSample, unit_TofdDepth, 1, 0.0016, 0, 0);
  set->AdjustSubUnit2(kvt_AxisSample, unit_Point, 100, 50, -10, 0, 0);
  set->AdjustSubUnit(kvt_AxisSample, unit_Angle, 10, 20, 0, 0);
  const auto base = [&](unit_enumUnits family, unit_enumDataUnit dataUnit, double value) {
    return set->GetUnit(kvt_AxisSample, family, dataUnit)->ConvertToBase(value);
  };
  EXPECT_NEAR(base(unit_HalfPath, unit_Millimetre, 30), 0.03, 1e-15);
  EXPECT_NEAR(base(unit_HalfPath, unit_Inch, 39.37), 1, 1e-12);
  EXPECT_NEAR(base(unit_Path, unit_Mil, 39370), 0.5, 1e-12);
  EXPECT_NEAR(base(unit_Time, unit_Microsecond, 10), 10e-6 * c / 2, 1e-12);
  // 40 mm between the probes' index points and the centre, 30 mm deep: a path of 50 mm, in every
  // length unit.
  EXPECT_NEAR(base(unit_TofdDepth, unit_Metre, 0.03), 0.05, 1e-12);
  EXPECT_NEAR(base(unit_TofdDepth, unit_Millimetre, 30), 0.05, 1e-12);
  EXPECT_NEAR(base(unit_TofdDepth, unit_Inch, 0.03 * 39.37), 0.05, 1e-9);
  EXPECT_NEAR(base(unit_TofdDepth, unit_Mil, 0.03 * 39370), 0.05, 1e-9);
  EXPECT_EQ(base(unit_Point, unit_DataPoint, 90), 1);
  EXPECT_EQ(base(unit_Point, unit_DataPoint, -60), -1) << "its own slope below 0";
  EXPECT_NEAR(base(unit_Angle, unit_Radian, 0.017453292519943295 * 30), 1, 1e-12);
  EXPECT_EQ(set->GetUnit(kvt_AxisSample, unit_HalfPath, unit_Inch)->GetDisplayPrecision(), 3);
  EXPECT_EQ(set->GetUnit(kvt_AxisSample, unit_HalfPath, unit_Mil)->GetDisplayPrecision(), 1);
}

TEST_F(UnitSets, AmplitudesAreLinearOrLogarithmic) {
  static_cast<void>(volume.vol_FillBaseUnits());
  CUnitSet* set = Private();
  CUnit* const percent = set->AddAmplitudeSubUnit(1);
  CUnit* const decibel = set->GetUnit(kvt_AxisAmplitude, unit_Decibel, unit_DataDecibel);
  EXPECT_EQ(percent, set->GetUnit(kvt_AxisAmplitude, unit_Percent, unit_DataPercent));
  EXPECT_EQ(percent->ConvertToBase(40), 40);
  EXPECT_NEAR(decibel->ConvertToBase(-20), 10, 1e-12);

  decibel->SetDisplayPrecision(2);
  EXPECT_EQ(set->ModifyAmplitudeSubUnit(0), decibel);
  EXPECT_EQ(set->GetUnits(kvt_AxisAmplitude)->GetCount(), 2) << "the units are reused";
  EXPECT_EQ(decibel->GetDisplayPrecision(), 2);
  EXPECT_EQ(decibel->ConvertToBase(-20), -20);
  EXPECT_NEAR(percent->ConvertToBase(1), 50, 1e-12);

  CUnitSet* other = Private();
  const CUnit* const created = other->ModifyAmplitudeSubUnit(1);
  EXPECT_EQ(created, other->GetUnits(kvt_AxisAmplitude)->GetHead());
  EXPECT_EQ(TypesOn(*other, kvt_AxisAmplitude), (std::vector<Type>{{4, 10}, {5, 11}}));
}

TEST_F(UnitSets, ParentsAreTakenWhenUnitsAreCreated) {
  CUnitSet* set = Private();
  EXPECT_EQ(CUnitSet(vset_groupId(), nullptr, nullptr)
                .AddSubUnit(kvt_AxisColumn, unit_Length, 1000, 0, 0)
                ->GetParent(),
            nullptr);
  CUnit* const early = set->AddSubUnit(kvt_AxisColumn, unit_Length, 1000, 0, 0);
  EXPECT_EQ(early->ConvertToBase(5), 5) << "no base unit yet";
  const kvt_enumAxis angles[] = {kvt_AxisRow, kvt_AxisSample};
  EXPECT_EQ(volume.vol_FillBaseUnits(angles), 6);
  EXPECT_EQ(volume.vol_FillBaseUnits(), 0) << "filled axes stay";
  CUnit* const late = set->AddSubUnit(kvt_AxisColumn, unit_Length, 1000, 0, 0);
  EXPECT_EQ(early->ConvertToBase(5), 5);
  EXPECT_EQ(late->ConvertToBase(5), 0.005);
  const std::pair<kvt_enumAxis, Type> expected[] = {{kvt_AxisColumn, {2, 3}},
                                                    {kvt_AxisRow, {3, 7}},
                                                    {kvt_AxisSample, {11, 3}},
                                                    {kvt_AxisAmplitude, {4, 10}},
                                                    {kvt_AxisFifth, {2, 3}},
                                                    {kvt_AxisSixth, {2, 3}}};
  for (const auto& [axis, type] : expected) {
    unit_enumUnits family;
    unit_enumDataUnit dataUnit;
    volume.vol_GetBaseUnit(axis)->GetUnitType(family, dataUnit);
    EXPECT_EQ(Type(family, dataUnit), type) << axis;
  }
}

TEST_F(UnitSets, LimitsReachTheAxisOnlyWhenTheyAreFiniteEnough) {
  CAxe& axis = *volume.vol_GetAxis(kvt_AxisSample);
  for (const double bad : {1e15, -1e15, std::numeric_limits<double>::quiet_NaN()}) {
    volume.vol_SetLimits(kvt_AxisSample, 0, bad);
    volume.vol_SetLimits(kvt_AxisSample, bad, 0);
  }
  EXPECT_EQ(axis.LimitsEnabled(), 0);
  volume.vol_SetLimits(kvt_AxisSample, -5, 5);
  EXPECT_EQ(axis.LimitsEnabled(), 1);
  EXPECT_EQ(axis.GetRange(), 10);
  EXPECT_EQ(volume.vol_GetLimits(kvt_AxisSample), std::pair(-5.0, 5.0));
  volume.vol_SetLimits(static_cast<kvt_enumAxis>(6), 0, 1);
  EXPECT_EQ(volume.vol_GetAxis(static_cast<kvt_enumAxis>(6)), nullptr);
  EXPECT_EQ(volume.vol_GetLimits(static_cast<kvt_enumAxis>(6)), std::pair(0.0, 0.0));

  axis.SetStart(0);
  EXPECT_EQ(axis.GetStart(), 0);
  EXPECT_EQ(axis.GetEnd(), 10) << "the end moves with the start";
  EXPECT_TRUE(axis.IsValueInAxe(0) && axis.IsValueInAxe(10));
  EXPECT_FALSE(axis.IsValueInAxe(10.001) || axis.IsValueInAxe(-0.001));
  axis.SetRange(-1);
  EXPECT_FALSE(axis.IsValueInAxe(0) || axis.IsValueInAxe(-0.5));
}

TEST(Axe, NamesAreCutAndComparedWithUnits) {
  ReportCapture reports;
  CAxe a;
  CAxe b;
  EXPECT_FALSE(a == b) << "no names";
  const std::wstring longName(40, L'x');
  a.Create(longName.c_str(), static_cast<std_enumUnits>(4), 1, 2);
  EXPECT_EQ(reports.Assertions(), 1u);
  EXPECT_EQ(a.GetName(), std::wstring(31, L'x'));
  b.Create(a.GetName(), a.GetUnits());
  EXPECT_TRUE(a == b) << "limits are not compared";
  EXPECT_EQ(b.LimitsEnabled(), 0);
  b.Create(a.GetName(), static_cast<std_enumUnits>(5));
  EXPECT_FALSE(a == b);
  a.Create(a.GetName(), std_UnitNone);
  EXPECT_EQ(a.GetName(), std::wstring(31, L'x'));
  EXPECT_EQ(a.GetEnd(), 3);
  b = CAxe(a);
  EXPECT_TRUE(a == b);
  b.Create(nullptr, std_UnitNone);
  EXPECT_FALSE(a == b);
}

TEST(Supplier, AnswersAPreparedRequest) {
  Document document;
  IPellamSupplier& supplier = document;
  bool isMerged = false;
  PellamServiceParam request(0, 0, nullptr, nullptr, 0, 0, L"", nullptr, 1, 1, 0, false);
  PellamScandoraService::PellamReadVariable(request, PRM_ID_bLinearMerged, &isMerged, 1, 3);
  supplier.HandleParameterRequest(request, 0);
  EXPECT_TRUE(isMerged);
  EXPECT_EQ(request.index, 3u);
}

TEST(VolumeSet, MissingDocumentIsReported) {
  ReportCapture reports;
  CVolumeSet volume(nullptr, unit_Generic, nullptr, unit_Generic, nullptr);
  EXPECT_EQ(reports.Assertions(), 1u);
  EXPECT_EQ(volume.vol_GetBaseUnit(kvt_AxisColumn), nullptr);
}

}  // namespace
