#include "interfaces/framework.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/support/report_capture.h"

namespace {

using utdata::test::ReportCapture;

class CShape : public CObject {
  DECLARE_DYNAMIC(CShape)
};
class CCircle : public CShape {
  DECLARE_DYNAMIC(CCircle)
};
IMPLEMENT_DYNAMIC(CShape, CObject)
IMPLEMENT_DYNCREATE(CCircle, CShape)

TEST(RuntimeClass, KnowsItsKindAndCreates) {
  const std::unique_ptr<CObject> circle(RUNTIME_CLASS(CCircle)->CreateObject());
  ASSERT_NE(circle, nullptr);
  EXPECT_EQ(circle->GetRuntimeClass(), RUNTIME_CLASS(CCircle));
  EXPECT_TRUE(circle->IsKindOf(RUNTIME_CLASS(CShape)));
  EXPECT_TRUE(circle->IsKindOf(RUNTIME_CLASS(CObject)));
  EXPECT_FALSE(CShape().IsKindOf(RUNTIME_CLASS(CCircle)));
  EXPECT_EQ(RUNTIME_CLASS(CShape)->CreateObject(), nullptr);
  EXPECT_EQ(RUNTIME_CLASS(CCircle)->objectSize, sizeof(CCircle));
  CDumpContext context;
  circle->Dump(context);
  context << std::wstring(L"wide") << static_cast<const char*>(nullptr);
  EXPECT_EQ(context.Text(), L"a CCircle\nwide");
}

TEST(List, PositionsStayWhileOthersComeAndGo) {
  CList<int> list(2);
  std::vector<POSITION> places;
  for (int value = 0; value < 9; ++value) places.push_back(list.AddTail(value));
  for (const std::size_t removed : {0u, 4u, 8u}) list.RemoveAt(places[removed]);
  list.AddHead(10);
  list.InsertAfter(places[3], 11);
  list.InsertBefore(places[7], 12);
  list.InsertBefore(nullptr, 13);
  list.InsertAfter(nullptr, 14);
  EXPECT_EQ(std::vector<int>(list.begin(), list.end()),
            (std::vector<int>{13, 10, 1, 2, 3, 11, 5, 6, 12, 7, 14}));
  EXPECT_EQ(list.GetCount(), 11);
  for (const std::size_t kept : {1u, 3u, 7u})
    EXPECT_EQ(list.GetAt(places[kept]), static_cast<int>(kept));

  std::vector<int> backwards;
  for (POSITION place = list.GetTailPosition(); place;) backwards.push_back(list.GetPrev(place));
  EXPECT_EQ(backwards,
            std::vector<int>(std::make_reverse_iterator(list.end()),
                             std::make_reverse_iterator(list.begin())));
  EXPECT_EQ(list.Find(12), list.Find(12, places[6]));
  EXPECT_EQ(list.Find(12, places[7]), nullptr);
  EXPECT_EQ(list.RemoveHead(), 13);
  list.RemoveAll();
  EXPECT_TRUE(list.IsEmpty());
  EXPECT_EQ(list.begin(), list.end());
  list.AddTail(1);
  EXPECT_EQ(list.GetHead(), list.GetTail());
}

TEST(List, GivesItsElementsMemoryBackAndManyBlocksDoNotNest) {
  const auto shared = std::make_shared<int>(1);
  CList<std::shared_ptr<int>> list(1);
  for (int count = 0; count < 200000; ++count) list.AddTail(shared);
  list.RemoveAt(list.GetHeadPosition());
  EXPECT_EQ(shared.use_count(), 200000);
  list.RemoveAll();
  EXPECT_EQ(shared.use_count(), 1);
}

TEST(Report, GoesToTheSinkInPlaceAndNestedOnesDoNotWait) {
  ReportCapture outer;
  {
    ReportCapture inner;
    UTDATA_ASSERT(1 + 1 == 2);
    UTDATA_ASSERT(1 + 1 == 3);
    utdata::DebugTrace(L"trace");
    ASSERT_EQ(inner.Reports().size(), 2u);
    EXPECT_EQ(inner.Reports()[0].line, static_cast<unsigned>(__LINE__ - 3));
    EXPECT_EQ(inner.Reports()[1].text, L"trace");
  }
  EXPECT_TRUE(outer.Reports().empty());

  // A sink that asserts itself, replaces itself and throws.
  int calls = 0;
  utdata::ReportSink former =
      utdata::SetReportSink([&](const utdata::Report&) -> utdata::ReportAnswer {
        ++calls;
        UTDATA_ASSERT(calls == 0);
        utdata::SetReportSink(
            [&](const utdata::Report&) { return ++calls, utdata::ReportAnswer::Break; });
        throw std::runtime_error("sink");
      });
  UTDATA_ASSERT(calls == -1);
  EXPECT_EQ(calls, 1);
  UTDATA_ASSERT(calls == -1);
  EXPECT_EQ(calls, 2);
  utdata::SetReportSink(std::move(former));
  UTDATA_ASSERT(calls == -1);
  EXPECT_EQ(outer.Assertions(), 1u);
}

TEST(Report, ArrivesFromManyThreadsWhileSinksChange) {
  std::atomic<bool> stop = false;
  std::atomic<int> reported = 0;
  std::vector<std::thread> threads;
  ReportCapture outer;
  for (int index = 0; index < 3; ++index)
    threads.emplace_back([&] {
      for (; !stop; ++reported) utdata::ReportAssertion("file", 1, L"text");
    });
  while (reported == 0) std::this_thread::yield();
  std::size_t seen = 0;
  for (int round = 0; round < 200; ++round) {
    // A sink still in use after its replacement would write here.
    std::atomic<std::size_t> count = 0;
    utdata::ReportSink former = utdata::SetReportSink([&](const utdata::Report& report) {
      count += report.text.size();
      return utdata::ReportAnswer::Continue;
    });
    std::this_thread::yield();
    utdata::SetReportSink(std::move(former));
    EXPECT_EQ(count % 4, 0u);
    seen += count;
  }
  stop = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_GT(outer.Reports().size() + seen, 0u);
}

/// As a sink does that shows a message through another thread, which reports something itself.
TEST(Report, WaitsForNoOtherThreadsSink) {
  std::promise<void> answered;
  std::atomic<int> calls = 0;
  std::atomic<bool> wasAnswered = false;
  utdata::ReportSink former = utdata::SetReportSink([&](const utdata::Report&) {
    if (++calls == 2) {
      answered.set_value();
      return utdata::ReportAnswer::Continue;
    }
    std::thread other([] { utdata::DebugTrace(L"shown"); });
    wasAnswered =
        answered.get_future().wait_for(std::chrono::seconds(5)) == std::future_status::ready;
    wasAnswered ? other.join() : other.detach();
    return utdata::ReportAnswer::Continue;
  });
  utdata::ReportAssertion("file", 1);
  EXPECT_TRUE(wasAnswered);
  utdata::SetReportSink(std::move(former));
}

TEST(DiagnosticText, KeepsCharactersAndMarksBrokenBytes) {
  struct {
    const char* narrow;
    std::wstring wide;
  } const cases[] = {{nullptr, L""},
                     {"plain", L"plain"},
                     {"Pr\xC3\xBC"
                      "f",
                      L"Prüf"},
                     {"\xE6\xBA\xB6\xF0\x9F\x94\x8A", L"溶\U0001F50A"},
                     {"a\xFF"
                      "b\x80",
                      L"a\uFFFDb\uFFFD"},
                     {"\xC0\xAF", L"\uFFFD\uFFFD"},
                     {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},
                     {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"},
                     {"\xE6\xBA", L"\uFFFD\uFFFD"}};
  for (const auto& text : cases) {
    EXPECT_EQ(utdata::WideFromNarrow(text.narrow), text.wide);
    EXPECT_EQ(utdata::WideFromNarrow(utdata::NarrowFromWide(text.wide).c_str()), text.wide);
  }
  EXPECT_EQ(utdata::NarrowFromWide(L"é溶\U0001F50A"), "\xC3\xA9\xE6\xBA\xB6\xF0\x9F\x94\x8A");
  EXPECT_EQ(utdata::NarrowFromWide(std::wstring(1, static_cast<wchar_t>(0xD800))), "\xEF\xBF\xBD");
}

}  // namespace
