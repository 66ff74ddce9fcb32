// The reader-writer lock under nested grants, time-outs, streams of either side and misuse.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>
#include <vector>

#include "interfaces/framework.h"
#include "interfaces/ostrin.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// Runs in another thread and waits for the result.
template <class Function>
auto Elsewhere(Function function) {
  return std::async(std::launch::async, function).get();
}

bool ReadableElsewhere(CReaderWriterLock& lock) {
  return Elsewhere([&lock]() UTDATA_NO_THREAD_SAFETY_ANALYSIS {
    if (!lock.LockBufferReader(0)) return false;
    lock.UnlockBufferReader();
    return true;
  });
}

bool WritableElsewhere(CReaderWriterLock& lock) {
  return Elsewhere([&lock]() UTDATA_NO_THREAD_SAFETY_ANALYSIS {
    if (!lock.LockBufferWriter(0)) return false;
    lock.UnlockBufferWriter();
    return true;
  });
}

TEST(ReaderWriterLock, SidesExcludeEachOtherAndReadersShare) UTDATA_NO_THREAD_SAFETY_ANALYSIS {
  CReaderWriterLock lock;
  ASSERT_TRUE(lock.LockBufferReader(0));
  EXPECT_TRUE(ReadableElsewhere(lock));
  EXPECT_FALSE(WritableElsewhere(lock));
  EXPECT_TRUE(ReadableElsewhere(lock)) << "the refused writer left a trace";
  lock.UnlockBufferReader();
  ASSERT_TRUE(lock.LockBufferWriter(0));
  EXPECT_FALSE(ReadableElsewhere(lock));
  EXPECT_FALSE(WritableElsewhere(lock));
  lock.UnlockBufferWriter();
  EXPECT_TRUE(ReadableElsewhere(lock));
  EXPECT_TRUE(WritableElsewhere(lock));
}

TEST(ReaderWriterLock, TheWriterIsGrantedBothSidesAgain) UTDATA_NO_THREAD_SAFETY_ANALYSIS {
  CReaderWriterLock lock;
  ASSERT_TRUE(lock.LockBufferWriter(CReaderWriterLock::forEver));
  ASSERT_TRUE(lock.LockBufferWriter(0));
  ASSERT_TRUE(lock.LockBufferReader(0));
  lock.UnlockBufferWriter();
  EXPECT_FALSE(ReadableElsewhere(lock)) << "one grant of the writer side is left";
  lock.UnlockBufferWriter();
  EXPECT_TRUE(ReadableElsewhere(lock)) << "the owner reads on, others may join";
  EXPECT_FALSE(WritableElsewhere(lock));
  lock.UnlockBufferReader();
  EXPECT_TRUE(WritableElsewhere(lock));
}

TEST(ReaderWriterLock, ATimeOutComesInTimeAndLeavesNoTrace) UTDATA_NO_THREAD_SAFETY_ANALYSIS {
  CReaderWriterLock lock;
  ASSERT_TRUE(lock.LockBufferWriter(0));
  const auto start = Clock::now();
  EXPECT_EQ(
      0, Elsewhere([&]() UTDATA_NO_THREAD_SAFETY_ANALYSIS { return lock.LockBufferReader(60); }));
  EXPECT_EQ(
      0, Elsewhere([&]() UTDATA_NO_THREAD_SAFETY_ANALYSIS { return lock.LockBufferWriter(60); }));
  EXPECT_GE(Clock::now() - start, 120ms);
  lock.UnlockBufferWriter();
  EXPECT_TRUE(WritableElsewhere(lock)) << "a reader that timed out still counts";
}

TEST(ReaderWriterLock, AWriterThatGivesUpLetsTheReadersBehindItIn)
UTDATA_NO_THREAD_SAFETY_ANALYSIS {
  CReaderWriterLock lock;
  ASSERT_TRUE(lock.LockBufferReader(0));
  auto writer = std::async(std::launch::async, [&]() UTDATA_NO_THREAD_SAFETY_ANALYSIS {
    return lock.LockBufferWriter(100);
  });
  while (ReadableElsewhere(lock)) std::this_thread::yield();  // until the writer waits
  auto reader = std::async(std::launch::async, [&]() UTDATA_NO_THREAD_SAFETY_ANALYSIS {
    const int obtained = lock.LockBufferReader(10000);
    if (obtained) lock.UnlockBufferReader();
    return obtained;
  });
  EXPECT_EQ(0, writer.get());
  EXPECT_EQ(std::future_status::ready, reader.wait_for(5s));
  EXPECT_NE(0, reader.get());
  lock.UnlockBufferReader();
  EXPECT_TRUE(WritableElsewhere(lock));
}

TEST(ReaderWriterLock, WhatWasNotGrantedCannotBeReleased) UTDATA_NO_THREAD_SAFETY_ANALYSIS {
  int reports = 0;
  const auto before = utdata::SetReportSink([&](const utdata::Report&) {
    ++reports;
    return utdata::ReportAnswer::Continue;
  });
  CReaderWriterLock lock;
  lock.UnlockBufferReader();
  lock.UnlockBufferWriter();
  EXPECT_EQ(2, reports);
  ASSERT_TRUE(lock.LockBufferWriter(0));
  std::thread([&]() UTDATA_NO_THREAD_SAFETY_ANALYSIS { lock.UnlockBufferWriter(); }).join();
  EXPECT_EQ(3, reports);
  EXPECT_FALSE(ReadableElsewhere(lock));
  lock.UnlockBufferWriter();
  utdata::SetReportSink(before);
}

/// Readers and writers in tight loops, several at once, holding the lock for a moment. `value` is
/// guarded by nothing but the lock.
TEST(ReaderWriterLock, NeitherSideStarvesNorMixes) {
  CReaderWriterLock lock;
  std::int64_t value[2] = {0, 0};
  std::atomic<bool> stop{false};
  std::atomic<std::int64_t> reads{0}, writes{0}, refused{0}, torn{0};
  std::vector<std::thread> threads;
  for (int reader = 0; reader < 8; ++reader)
    threads.emplace_back([&]() UTDATA_NO_THREAD_SAFETY_ANALYSIS {
      while (!stop) {
        if (!lock.LockBufferReader(500)) {
          ++refused;
          continue;
        }
        if (value[0] != value[1]) ++torn;
        ++reads;
        lock.UnlockBufferReader();
      }
    });
  for (int writer = 0; writer < 2; ++writer)
    threads.emplace_back([&, writer]() UTDATA_NO_THREAD_SAFETY_ANALYSIS {
      while (!stop) {
        if (!lock.LockBufferWriter(writer == 0 ? CReaderWriterLock::forEver : 1)) continue;
        ++value[0];
        if (writes % 64 == 0) std::this_thread::sleep_for(5ms);
        ++value[1];
        ++writes;
        lock.UnlockBufferWriter();
      }
    });
  std::this_thread::sleep_for(1s);
  stop = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, refused);
  EXPECT_EQ(0, torn);
  EXPECT_EQ(writes, value[0]);
  EXPECT_GT(reads, 100);
  EXPECT_GT(writes, 10);
}

}  // namespace
