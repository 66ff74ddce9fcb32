// Annotations for clang's thread-safety analysis and the mutexes that carry them; other compilers
// see plain mutexes.
#pragma once

#include <mutex>

#if defined(__clang__)
#define UTDATA_THREAD_ANNOTATION(annotation) __attribute__((annotation))
#else
#define UTDATA_THREAD_ANNOTATION(annotation)
#endif

#define UTDATA_CAPABILITY(kind) UTDATA_THREAD_ANNOTATION(capability(kind))
#define UTDATA_SCOPED_CAPABILITY UTDATA_THREAD_ANNOTATION(scoped_lockable)
#define UTDATA_GUARDED_BY(lock) UTDATA_THREAD_ANNOTATION(guarded_by(lock))
#define UTDATA_ACQUIRED_BEFORE(...) UTDATA_THREAD_ANNOTATION(acquired_before(__VA_ARGS__))
#define UTDATA_REQUIRES(...) UTDATA_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define UTDATA_REQUIRES_SHARED(...) \
  UTDATA_THREAD_ANNOTATION(requires_shared_capability(__VA_ARGS__))
#define UTDATA_ACQUIRE(...) UTDATA_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define UTDATA_ACQUIRE_SHARED(...) UTDATA_THREAD_ANNOTATION(acquire_shared_capability(__VA_ARGS__))
#define UTDATA_TRY_ACQUIRE(...) UTDATA_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define UTDATA_TRY_ACQUIRE_SHARED(...) \
  UTDATA_THREAD_ANNOTATION(try_acquire_shared_capability(__VA_ARGS__))
#define UTDATA_RELEASE(...) UTDATA_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define UTDATA_RELEASE_SHARED(...) UTDATA_THREAD_ANNOTATION(release_shared_capability(__VA_ARGS__))
#define UTDATA_RELEASE_GENERIC(...) \
  UTDATA_THREAD_ANNOTATION(release_generic_capability(__VA_ARGS__))
/// On a function whose locking the analysis cannot follow; a comment beside it says why it is
/// right.
#define UTDATA_NO_THREAD_SAFETY_ANALYSIS UTDATA_THREAD_ANNOTATION(no_thread_safety_analysis)

namespace utdata {

/// A standard mutex that the analysis knows.
template <class StandardMutex>
class UTDATA_CAPABILITY("mutex") AnnotatedMutex {
 public:
  void lock() UTDATA_ACQUIRE() { m_mutex.lock(); }
  void unlock() UTDATA_RELEASE() { m_mutex.unlock(); }

 private:
  StandardMutex m_mutex;
};

using Mutex = AnnotatedMutex<std::mutex>;
using RecursiveMutex = AnnotatedMutex<std::recursive_mutex>;

/// Holds a mutex for a scope.
template <class Lockable>
class UTDATA_SCOPED_CAPABILITY MutexScope {
 public:
  explicit MutexScope(Lockable& mutex) UTDATA_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.lock(); }
  ~MutexScope() UTDATA_RELEASE() { m_mutex.unlock(); }
  MutexScope(const MutexScope&) = delete;
  MutexScope& operator=(const MutexScope&) = delete;

 private:
  Lockable& m_mutex;
};

}  // namespace utdata
