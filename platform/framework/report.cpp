// Where assertions and traces go. No lock is held while a sink runs: it may wait for another
// report. SetReportSink, outside a sink, returns one once no thread runs it.
#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

#include "interfaces/framework.h"
#include "interfaces/os.h"

namespace utdata {
namespace {

struct Installed {
  ReportSink sink;
  std::size_t running = 0;  // calls of it; guarded by Receiver::lock
};

struct Receiver {
  std::mutex lock;
  std::condition_variable left;          // a call of a sink has ended
  std::shared_ptr<Installed> installed;  // guarded by lock; null for the default
};

/// Never destroyed: objects that outlive main may still report.
Receiver& TheReceiver() {
  static auto* const receiver = new Receiver;
  return *receiver;
}

thread_local bool insideSink = false;
thread_local unsigned quietScopes = 0;

/// One line on the standard error stream, in checked builds only.
ReportAnswer DefaultSink([[maybe_unused]] const Report& report) {
#if defined(UTDATA_CHECKED)
  std::string text = NarrowFromWide(report.text);
  for (char& letter : text)
    if (letter == '\n' || letter == '\r') letter = ' ';
  if (report.kind == ReportKind::Assertion)
    std::fprintf(stderr,
                 "%s:%u: assertion failed%s%s\n",
                 report.file,
                 report.line,
                 text.empty() ? "" : ": ",
                 text.c_str());
  else
    std::fprintf(stderr, "%s\n", text.c_str());
#endif
  return ReportAnswer::Continue;
}

/// A call of the sink in place; of none when there is none.
class SinkCall {
 public:
  SinkCall() {
    const std::lock_guard<std::mutex> held(m_receiver.lock);
    m_installed = m_receiver.installed;
    if (m_installed) ++m_installed->running;
    insideSink = m_installed != nullptr;
  }
  SinkCall(const SinkCall&) = delete;
  SinkCall& operator=(const SinkCall&) = delete;
  ~SinkCall() {
    insideSink = false;
    if (!m_installed) return;
    const std::lock_guard<std::mutex> held(m_receiver.lock);
    --m_installed->running;
    m_receiver.left.notify_all();
  }
  ReportAnswer Run(const Report& report) const {
    return m_installed ? m_installed->sink(report) : DefaultSink(report);
  }

 private:
  Receiver& m_receiver = TheReceiver();
  std::shared_ptr<Installed> m_installed;
};

ReportAnswer Deliver(const Report& report) noexcept {
  if (quietScopes > 0) return ReportAnswer::Continue;
  try {
    return insideSink ? DefaultSink(report) : SinkCall().Run(report);
  } catch (...) {
    try {
      return DefaultSink(report);
    } catch (...) {
      return ReportAnswer::Continue;  // no memory for the line either; the caller must go on
    }
  }
}

}  // namespace

ReportSink SetReportSink(ReportSink sink) {
  std::shared_ptr<Installed> other;
  if (sink) other = std::make_shared<Installed>(Installed{std::move(sink)});
  Receiver& receiver = TheReceiver();
  std::unique_lock<std::mutex> held(receiver.lock);
  receiver.installed.swap(other);
  if (!other) return {};
  if (!insideSink) receiver.left.wait(held, [&] { return other->running == 0; });
  return other->sink;
}

QuietReports::QuietReports() noexcept { ++quietScopes; }
QuietReports::~QuietReports() { --quietScopes; }

void ReportAssertion(const char* file, unsigned line, std::wstring_view text) noexcept {
  [[maybe_unused]] const ReportAnswer answer =
      Deliver({ReportKind::Assertion, file ? file : "", line, text});
#if defined(UTDATA_CHECKED)
  if (answer == ReportAnswer::Break && os::DebuggerAttached()) os::DebuggerBreak();
#endif
}

void DebugTrace(std::wstring_view message) noexcept {
  Deliver({ReportKind::Trace, "", 0, message});
}

}  // namespace utdata
