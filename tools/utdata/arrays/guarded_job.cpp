#include "arrays/guarded_job.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
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

namespace utdata::program {
namespace {

/// What the child tells its parent; all zeros before it starts.
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
void PrepareChild() {
#ifdef __linux__
  prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
  const rlimit none = {0, 0};
  setrlimit(RLIMIT_CORE, &none);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere >= 0) dup2(nowhere, STDERR_FILENO);
}

[[noreturn]] void RunChild(const std::function<void(const GatherProgress&)>& job, Report& report) {
  PrepareChild();
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
  [[nodiscard]] int ExitStatus() const { return WIFEXITED(m_status) ? WEXITSTATUS(m_status) : -1; }

 private:
  pid_t m_id;
  int m_status = 0;
  bool m_running = true;
};

}  // namespace

SharedMemory::SharedMemory(std::size_t size) : m_data(nullptr), m_size(size) {
  void* const mapped = mmap(
      nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (mapped == MAP_FAILED) throw std::bad_alloc();
  m_data = static_cast<std::byte*>(mapped);
}

SharedMemory::~SharedMemory() { munmap(m_data, m_size); }

void RunGuarded(const Failure& crashed,
                const std::function<void(const GatherProgress& told)>& job,
                const GatherProgress& progress) {
  const SharedMemory memory(sizeof(Report));
  Report& report = *new (memory.Bytes().data()) Report{};
  const pid_t id = fork();
  if (id < 0) throw Failure("a second process", "cannot be started", std::strerror(errno));
  if (id == 0) RunChild(job, report);
  Child child(id);
  std::chrono::microseconds pause(200);
  while (!child.HasEnded()) {
    progress(report.done, report.total);
    std::this_thread::sleep_for(pause);
    pause = std::min(pause * 2, std::chrono::microseconds(20000));
  }
  if (child.ExitStatus() == outOfMemory) throw std::bad_alloc();
  if (child.ExitStatus() == jobFailed && report.failure[0] != 0)
    throw Failure(report.failure.data(), "", "");
  if (child.ExitStatus() != jobDone) throw crashed;
}

}  // namespace utdata::program
