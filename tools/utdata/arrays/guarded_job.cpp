#include "arrays/guarded_job.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <new>
#include <thread>

#include "terminal/failure.h"
#include "terminal/interrupt.h"

namespace utdata::program {
namespace {

/// What the child reports to its parent; all zeros before it starts.
struct Report {
  std::atomic<std::uint64_t> done;
  std::atomic<std::uint64_t> total;
  std::array<char, 4096> failure;  ///< the line of a Failure, terminated
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "two processes share it");

constexpr int jobDone = 0;
constexpr int jobFailed = 1;
constexpr int outOfMemory = 2;

/// A crash is expected: it leaves no core file and says nothing.
void PrepareChild(pid_t parent) {
#ifdef __linux__
  prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
  if (getppid() != parent) _exit(jobFailed);
  // A signal that asks the parent to stop ends the child at once, which has nothing to clean up.
  for (const int stop : {SIGINT, SIGTERM, SIGHUP, SIGBUS}) signal(stop, SIG_DFL);
  const rlimit none = {0, 0};
  setrlimit(RLIMIT_CORE, &none);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere >= 0) dup2(nowhere, STDERR_FILENO);
}

[[noreturn]] void RunChild(const std::function<void(const GatherProgress&)>& job,
                           Report& report,
                           pid_t parent) {
  PrepareChild(parent);
  int status = jobDone;
  try {
    job([&](std::uint64_t done, std::uint64_t total) {
      report.total = total;
      report.done = done;
    });
  } catch (const std::bad_alloc&) {
    status = outOfMemory;
  } catch (const Failure& failure) {
    std::strncpy(report.failure.data(), LineOf(failure).c_str(), report.failure.size() - 1);
    status = jobFailed;
  }
  _exit(status);
}

/// Ends the child, whatever happens, before its parent goes on.
class Child {
 public:
  explicit Child(pid_t id) : m_id(id) {}
  ~Child() {
    if (m_running) kill(m_id, SIGKILL);
    while (m_running && waitpid(m_id, &m_status, 0) < 0 && errno == EINTR) continue;
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  [[nodiscard]] bool HasEnded() {
    if (m_running && waitpid(m_id, &m_status, WNOHANG) == m_id) m_running = false;
    return !m_running;
  }
  /// Seconds of processor time that it has taken; of a child that has ended, 0.
  [[nodiscard]] double ProcessorTime() const {
    clockid_t clock = {};
    timespec time = {};
    if (clock_getcpuclockid(m_id, &clock) != 0 || clock_gettime(clock, &time) != 0) return 0;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
  }
  [[nodiscard]] int ExitStatus() const { return WIFEXITED(m_status) ? WEXITSTATUS(m_status) : -1; }

 private:
  pid_t m_id;
  int m_status = 0;
  bool m_running = true;
};

/// Finds out when a child has worked for too long without a sign of progress. Waiting for a slow
/// disk does not count as work.
class Watch {
 public:
  Watch(const Child& child, double patience) : m_child(child), m_patience(patience) {}

  [[nodiscard]] bool IsStuck(const Report& report) {
    const double now = m_child.ProcessorTime();
    const std::uint64_t done = report.done;
    if (done != m_done) m_since = now;
    m_done = done;
    return now - m_since > m_patience;
  }

 private:
  const Child& m_child;
  double m_patience;
  double m_since = 0;
  std::uint64_t m_done = 0;
};

}  // namespace

SharedMemory::SharedMemory(std::size_t size) : m_data(nullptr), m_size(size) {
  void* const mapped = mmap(
      nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (mapped == MAP_FAILED) throw std::bad_alloc();
  m_data = static_cast<std::byte*>(mapped);
}

SharedMemory::~SharedMemory() { munmap(m_data, m_size); }

void RunGuarded(const GuardedJob& name,
                const std::function<void(const GatherProgress& told)>& job,
                const GatherProgress& progress) {
  const SharedMemory memory(sizeof(Report));
  Report& report = *new (memory.Bytes().data()) Report{};
  const pid_t parent = getpid();
  const pid_t id = fork();
  if (id < 0) throw Failure("a second process", "cannot be started", std::strerror(errno));
  if (id == 0) RunChild(job, report, parent);
  Child child(id);
  Watch watch(child, name.patience);
  std::chrono::microseconds pause(200);
  while (!child.HasEnded()) {
    ThrowIfInterrupted();
    progress(report.done, report.total);
    if (watch.IsStuck(report))
      throw Failure(name.file, name.what, name.library + " comes to no end", name.advice);
    std::this_thread::sleep_for(pause);
    pause = std::min(pause * 2, std::chrono::microseconds(20000));
  }
  ThrowIfInterrupted();
  if (child.ExitStatus() == outOfMemory) throw std::bad_alloc();
  if (child.ExitStatus() == jobFailed && report.failure[0] != 0)
    throw Failure(report.failure.data(), "", "");
  if (child.ExitStatus() != jobDone)
    throw Failure(name.file, name.what, name.library + " crashed", name.advice);
}

}  // namespace utdata::program
