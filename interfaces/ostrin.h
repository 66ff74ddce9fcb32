// The common utilities: the reader-writer lock of a file set, and the manager of mapped views for
// acquisition files.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "export.h"
#include "os.h"
#include "thread_safety.h"

/// Many readers or one writer, with time-outs.
///
/// - A thread that holds the writer side is granted both sides again at once; each grant is
///   released on its own. It may release the writer side first and go on reading.
/// - Readers and writers take turns: new readers wait as soon as a writer waits, and readers that
///   waited for a writer all go before the next writer. So neither side starves, and a reader waits
///   for the readers before it and one writer at most.
/// - Writers go in the order they came.
/// - A request that times out leaves no trace.
///
/// A thread that holds the reader side alone must not ask for the writer side (it would wait for
/// itself), and asks for the reader side again at the risk of waiting behind a writer. A thread
/// releases only what it was granted; anything else is reported as an assertion and ignored. No
/// thread may be inside when the lock is destroyed.
class UTDATA_API UTDATA_CAPABILITY("reader-writer lock") CReaderWriterLock {
 public:
  static constexpr std::uint32_t forEver = 0xFFFFFFFF;  ///< a time-out that never comes

  CReaderWriterLock() = default;
  CReaderWriterLock(const CReaderWriterLock&) = delete;
  CReaderWriterLock& operator=(const CReaderWriterLock&) = delete;

  /// @param timeoutMs milliseconds to wait at most; 0 does not wait
  /// @return non-zero when obtained
  int LockBufferReader(std::uint32_t timeoutMs) UTDATA_TRY_ACQUIRE_SHARED(true);
  void UnlockBufferReader() UTDATA_RELEASE_SHARED();
  /// As LockBufferReader.
  int LockBufferWriter(std::uint32_t timeoutMs) UTDATA_TRY_ACQUIRE(true);
  void UnlockBufferWriter() UTDATA_RELEASE();

 private:
  struct WaitingWriter;

  int WaitAsReader(std::uint32_t timeoutMs);
  void Enqueue(WaitingWriter& writer);
  void Withdraw(WaitingWriter& writer);
  void AdmitReaders();
  void HandOver();
  [[nodiscard]] bool HasReaders() const;

  static constexpr std::uint32_t closed = 0x80000000;

  /// The number of granted readers, and the `closed` bit: set while a writer holds the lock or
  /// waits for it, when readers have to queue. The bit changes, and the number grows under the bit,
  /// only with m_mutex held.
  std::atomic<std::uint32_t> m_state{0};

  std::mutex m_mutex;  ///< guards what follows
  std::condition_variable m_readersAdmitted;
  std::uint32_t m_waitingReaders = 0;
  std::uint64_t m_readerPhase = 0;         ///< grows each time the waiting readers are admitted
  WaitingWriter* m_firstWriter = nullptr;  ///< queue of waiting writers
  std::thread::id m_owner;                 ///< of the writer side; valid while m_depth > 0
  std::uint32_t m_depth = 0;               ///< grants of the writer side to m_owner
};

namespace utdata {

/// Holds the reader side for a scope. The analysis takes it for held; ask before touching anything.
class UTDATA_SCOPED_CAPABILITY ReaderScope {
 public:
  // A scope that may have failed is beyond the analysis, hence its unconditional annotation.
  ReaderScope(CReaderWriterLock& lock, std::uint32_t timeoutMs)
      UTDATA_ACQUIRE_SHARED(lock) UTDATA_NO_THREAD_SAFETY_ANALYSIS
      : m_lock(lock),
        m_obtained(lock.LockBufferReader(timeoutMs) != 0) {}
  ~ReaderScope() UTDATA_RELEASE_GENERIC() UTDATA_NO_THREAD_SAFETY_ANALYSIS {
    if (m_obtained) m_lock.UnlockBufferReader();
  }
  ReaderScope(const ReaderScope&) = delete;
  ReaderScope& operator=(const ReaderScope&) = delete;
  [[nodiscard]] explicit operator bool() const { return m_obtained; }

 private:
  CReaderWriterLock& m_lock;
  const bool m_obtained;
};

/// Holds the writer side for a scope, waiting for it as long as it takes.
class UTDATA_SCOPED_CAPABILITY WriterScope {
 public:
  // Waiting for ever cannot fail, which the analysis does not know.
  explicit WriterScope(CReaderWriterLock& lock)
      UTDATA_ACQUIRE(lock) UTDATA_NO_THREAD_SAFETY_ANALYSIS : m_lock(lock) {
    m_lock.LockBufferWriter(CReaderWriterLock::forEver);
  }
  ~WriterScope() UTDATA_RELEASE() UTDATA_NO_THREAD_SAFETY_ANALYSIS { m_lock.UnlockBufferWriter(); }
  WriterScope(const WriterScope&) = delete;
  WriterScope& operator=(const WriterScope&) = delete;

 private:
  CReaderWriterLock& m_lock;
};

}  // namespace utdata

// -------------------------------------------------------------------------------------------------
// views

/// How a view is used; the third argument of MapViewForData.
inline constexpr std::uint32_t view_ReadWrite = 2;

/// Keeps one range of addresses for the process and maps views of files into it. Views do not
/// overlap, and the place of one that is given back is free at once. The range holds eight views of
/// the reserved size; it is reserved with the first view, and costs addresses only. Any thread may
/// call at any time.
class UTDATA_API CViewMapManager {
 public:
  static constexpr std::size_t viewQuantity = 8;  ///< views of the reserved size in the range
  static constexpr std::uint64_t granularity = 0x10000;  ///< reserved sizes are multiples of this
  /// Views start at multiples of this, as the system's large pages do: elsewhere it has to map
  /// small ones, at many times the cost.
  static constexpr std::size_t placeAlignment = std::size_t{2} << 20;
  /// The reserved size unless the host chooses another, and the largest: 4 GiB - 64 KiB, so that
  /// every offset fits 32 bits.
  static constexpr std::uint64_t largestSize = 0xFFFF0000;

  CViewMapManager() = default;
  CViewMapManager(const CViewMapManager&) = delete;
  CViewMapManager& operator=(const CViewMapManager&) = delete;

  /// Bytes of the largest view, and so of the largest acquisition file.
  [[nodiscard]] std::uint64_t GetReservedSize() const;
  /// Chooses the reserved size; while no view is mapped, as before the first acquisition file.
  /// @param bytes a multiple of 65536, from 65536 to largestSize
  /// @return false, and nothing changes, for another size or while a view is mapped
  bool SetReservedSize(std::uint64_t bytes);

  /// Maps the start of a file inside the range.
  /// @param mapping of the file; needed during the call only, while its file must stay open and
  ///   long enough as long as the view is used
  /// @param size    bytes, at most the mapping's and the reserved size
  /// @param access  view_ReadWrite
  /// @return the view's first byte, given back with UnmapViewOfFileToReservedSpace; null when an
  ///         argument is refused, the range is full or the system fails (os::LastErrorNumber says
  ///         why)
  [[nodiscard]] void* MapViewForData(utdata::os::FileMapping* mapping,
                                     std::uint64_t size,
                                     std::uint32_t access);
  /// Gives a whole view back. Nothing is mapped there afterwards; what was stored in it is in the
  /// file.
  /// @param view from MapViewForData; an assertion is raised for anything else but null, which is
  ///   ignored
  /// @param size not used: the manager knows how long its views are
  void UnmapViewOfFileToReservedSpace(void* view, std::uint64_t size);

 private:
  [[nodiscard]] bool IsReserved() UTDATA_REQUIRES(m_mutex);
  [[nodiscard]] std::size_t FindRoom(std::size_t size) const UTDATA_REQUIRES(m_mutex);

  mutable utdata::Mutex m_mutex;
  std::uint64_t m_reservedSize UTDATA_GUARDED_BY(m_mutex) = largestSize;
  std::unique_ptr<utdata::os::AddressRange> m_range
      UTDATA_GUARDED_BY(m_mutex);  ///< null until the first view
  std::map<std::size_t, std::size_t> m_views
      UTDATA_GUARDED_BY(m_mutex);  ///< offset in the range, bytes of the place
};

/// The view manager of the process; it outlives everything else.
[[nodiscard]] UTDATA_API CViewMapManager& GetMapViewManager();
