#include <gtest/gtest.h>

#include <random>
#include <set>

#include "src/foundation/hashtable.h"
#include "tests/support/report_capture.h"
#include "utdata/enum.h"
#include "utdata/error.h"

namespace {

using utdata::ReportKind;
using utdata::test::ReportCapture;

TEST(Error, ComposesTheTextsAndLocatesTheReport) {
  ReportCapture capture;
  err_Assert("m_pUnitInfo == NULL", "src/idata.cpp", 0);
  err_Assert("l\xE9ger\xC3\xA9", nullptr, 4294967295u);
  err_Warning(L"Vorsicht ⚠", "a.cpp", 12);
  err_Warning(nullptr, nullptr, 0);
  struct {
    ReportKind kind;
    const wchar_t* text;
  } const expected[] = {{ReportKind::Assertion, L"m_pUnitInfo == NULL\nsrc/idata.cpp, ligne 0"},
                        {ReportKind::Assertion, L"l\uFFFDgeré\n, ligne 4294967295"},
                        {ReportKind::Trace, L"Vorsicht ⚠\na.cpp - 12"},
                        {ReportKind::Trace, L"\n - 0"}};
  ASSERT_EQ(capture.Reports().size(), std::size(expected));
  for (std::size_t index = 0; index < std::size(expected); ++index) {
    EXPECT_EQ(capture.Reports()[index].kind, expected[index].kind);
    EXPECT_EQ(capture.Reports()[index].text, expected[index].text);
  }
  EXPECT_NE(capture.Reports()[0].file.find("error.cpp"), std::string::npos);
  EXPECT_GT(capture.Reports()[0].line, 0u);
}

TEST(Enum, SortsDataClassesIntoFamilies) {
  const auto belongs = [](std::uint32_t dataClass, std::initializer_list<std::uint32_t> family) {
    return std::find(family.begin(), family.end(), dataClass) != family.end();
  };
  for (const std::uint32_t bits : {0u, 0x8000u, 0x10000u})
    for (std::uint32_t number = 0; number < 2100; ++number) {
      const auto dataClass = static_cast<gdata_enumDataClass>(number | bits);
      EXPECT_EQ(enum_IsAscanData(dataClass) != 0, !bits && belongs(number, {1, 10, 11}))
          << dataClass;
      EXPECT_EQ(enum_IsCscanData(dataClass) != 0,
                !bits && belongs(number, {2, 3, 12, 13, 14, 15, 17}))
          << dataClass;
    }
}

TEST(Enum, GateIdsOfOneGateDifferByMultiplesOf2000) {
  EXPECT_EQ(utdata::GateNumber(3), 3u);
  EXPECT_EQ(utdata::GateNumber(2003), utdata::GateNumber(4003));
  EXPECT_EQ(utdata::GateNumber(2000), 0u);
}

struct NumberSlot {
  std::uint64_t number = 0;
  [[nodiscard]] bool IsEmpty() const { return number == 0; }
  [[nodiscard]] std::uint64_t Hash() const { return number % 7 + 12; }  // many alike, at the end
};

TEST(HashTable, FindsWhatIsInItAndStaysSmallWhileAsManyGoAsCome) {
  utdata::HashTable<NumberSlot> table;
  std::set<std::uint64_t> inside;
  std::mt19937 dice(5);
  std::set<const NumberSlot*> places;
  for (unsigned round = 0; round < 2000; ++round) {
    const NumberSlot wanted = {1 + dice() % 40};
    const auto isIt = [&](const NumberSlot& slot) { return slot.number == wanted.number; };
    const NumberSlot* const found = table.Find(wanted.Hash(), isIt);
    ASSERT_EQ(found != nullptr, inside.contains(wanted.number)) << round;
    if (found) {
      table.Remove(*found);
      inside.erase(wanted.number);
    } else if (inside.size() < 6) {
      table.Obtain(wanted.Hash(), isIt) = wanted;
      inside.insert(wanted.number);
    }
    if (inside.empty()) continue;
    const NumberSlot any = {*inside.begin()};
    const NumberSlot* const slot =
        table.Find(any.Hash(), [&](const NumberSlot& at) { return at.number == any.number; });
    ASSERT_NE(slot, nullptr) << round;
    places.insert(slot);
  }
  EXPECT_LE(places.size(), 16U) << "it grew";
}

}  // namespace
