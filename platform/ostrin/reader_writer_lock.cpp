// The reader-writer lock: readers come and go on one atomic word while no writer holds the lock or
// waits; everything else happens under a mutex.
//
// The thread that releases a side grants it to the threads that wait, and only then wakes them.
#include <chrono>

#include "interfaces/framework.h"
#include "interfaces/ostrin.h"

/// One thread's place in the queue of writers; lives on that thread's stack while it waits.
struct CReaderWriterLock::WaitingWriter {
  std::thread::id thread;
  std::condition_variable granted;
  bool owns = false;
  WaitingWriter* next = nullptr;
};

namespace {

/// Waits until `done` holds; false when the time is up first.
template <class Condition>
bool WaitFor(std::condition_variable& signal,
             std::unique_lock<std::mutex>& lock,
             std::uint32_t timeoutMs,
             Condition done) {
  if (timeoutMs != CReaderWriterLock::forEver)
    return signal.wait_until(
        lock, std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs), done);
  signal.wait(lock, done);
  return true;
}

}  // namespace

bool CReaderWriterLock::HasReaders() const {
  return (m_state.load(std::memory_order_acquire) & ~closed) != 0;
}

int CReaderWriterLock::LockBufferReader(std::uint32_t timeoutMs) {
  std::uint32_t state = m_state.load(std::memory_order_relaxed);
  while (!(state & closed))
    if (m_state.compare_exchange_weak(
            state, state + 1, std::memory_order_acquire, std::memory_order_relaxed))
      return 1;
  return WaitAsReader(timeoutMs);
}

int CReaderWriterLock::WaitAsReader(std::uint32_t timeoutMs) {
  std::unique_lock lock(m_mutex);
  const bool open = !(m_state.load(std::memory_order_relaxed) & closed);
  const bool nested = m_depth > 0 && m_owner == std::this_thread::get_id();
  if (open || nested) {
    m_state.fetch_add(1, std::memory_order_acquire);
    return 1;
  }
  ++m_waitingReaders;
  if (WaitFor(m_readersAdmitted, lock, timeoutMs, [this, phase = m_readerPhase] {
        return m_readerPhase != phase;
      }))
    return 1;
  --m_waitingReaders;
  return 0;
}

void CReaderWriterLock::UnlockBufferReader() {
  std::uint32_t state = m_state.load(std::memory_order_relaxed);
  do {
    if (!(state & ~closed)) {
      utdata::ReportAssertion(__FILE__, __LINE__, L"reader side released without being held");
      return;
    }
  } while (!m_state.compare_exchange_weak(
      state, state - 1, std::memory_order_acq_rel, std::memory_order_relaxed));
  if (state == (closed | 1)) {  // the last reader, and a writer waits
    const std::lock_guard lock(m_mutex);
    HandOver();
  }
}

int CReaderWriterLock::LockBufferWriter(std::uint32_t timeoutMs) {
  std::unique_lock lock(m_mutex);
  const std::thread::id self = std::this_thread::get_id();
  if (m_depth > 0 && m_owner == self) {
    ++m_depth;
    return 1;
  }
  // From here on readers queue, so that a lock found without readers stays so.
  const bool hadReaders = (m_state.fetch_or(closed, std::memory_order_acq_rel) & ~closed) != 0;
  if (m_depth == 0 && !m_firstWriter && !hadReaders) {
    m_owner = self;
    m_depth = 1;
    return 1;
  }
  WaitingWriter place{self, {}};
  Enqueue(place);
  if (WaitFor(place.granted, lock, timeoutMs, [&place] { return place.owns; })) return 1;
  Withdraw(place);
  return 0;
}

void CReaderWriterLock::UnlockBufferWriter() {
  const std::lock_guard lock(m_mutex);
  if (m_depth == 0 || m_owner != std::this_thread::get_id()) {
    utdata::ReportAssertion(
        __FILE__, __LINE__, L"writer side released by a thread that does not hold it");
    return;
  }
  if (--m_depth > 0) return;
  AdmitReaders();
  HandOver();
}

void CReaderWriterLock::Enqueue(WaitingWriter& writer) {
  WaitingWriter** end = &m_firstWriter;
  while (*end) end = &(*end)->next;
  *end = &writer;
}

void CReaderWriterLock::Withdraw(WaitingWriter& writer) {
  WaitingWriter** link = &m_firstWriter;
  while (*link != &writer) link = &(*link)->next;
  *link = writer.next;
  if (m_depth > 0 || m_firstWriter) return;
  AdmitReaders();  // they waited for this writer alone
  HandOver();
}

void CReaderWriterLock::AdmitReaders() {
  if (m_waitingReaders == 0) return;
  m_state.fetch_add(m_waitingReaders, std::memory_order_relaxed);
  m_waitingReaders = 0;
  ++m_readerPhase;
  m_readersAdmitted.notify_all();
}

/// Once no reader and no writer holds the lock, grants it to the next writer; without one, opens it
/// to readers.
void CReaderWriterLock::HandOver() {
  if (m_depth > 0) return;
  if (!m_firstWriter) {
    m_state.fetch_and(~closed, std::memory_order_release);
    return;
  }
  if (HasReaders()) return;
  WaitingWriter& next = *m_firstWriter;
  m_firstWriter = next.next;
  m_owner = next.thread;
  m_depth = 1;
  next.owns = true;
  next.granted.notify_one();
}
