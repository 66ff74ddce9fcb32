// Where assertions and traces go. One lock is held while a sink runs, so that reports of several
// threads arrive one after the other and a replaced sink is never still in use; a thread that is
// inside a sink holds it already.
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

#include "interfaces/framework.h"
#include "interfaces/os.h"

namespace utdata {
namespace {

struct Receiver {
  std::mutex lock;
  std::shared_ptr<const ReportSink> sink;  // guarded by lock; null for the default
};

/// Never destroyed: objects that outlive main may still report.
Receiver& TheReceiver() {
  static auto* const receiver = new Receiver;
  return *receiver;
}

thread_local bool insideSink = false;

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

ReportAnswer CallSink(const Report& report) {
  Receiver& receiver = TheReceiver();
  const std::lock_guard<std::mutex> held(receiver.lock);
  const std::shared_ptr<const ReportSink> sink =
      receiver.sink;  // stays alive while it runs, even if it replaces itself
  if (!sink) return DefaultSink(report);
  struct Inside {
    Inside() { insideSink = true; }
    ~Inside() { insideSink = false; }
  } const inside;
  return (*sink)(report);
}

ReportAnswer Deliver(const Report& report) noexcept {
  try {
    return insideSink ? DefaultSink(report) : CallSink(report);
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
  auto next = sink ? std::make_shared<const ReportSink>(std::move(sink)) : nullptr;
  Receiver& receiver = TheReceiver();
  std::unique_lock<std::mutex> held(receiver.lock, std::defer_lock);
  if (!insideSink) held.lock();
  receiver.sink.swap(next);
  return next ? *next : ReportSink();
}

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

void AssertValidObject(const CObject* object, const char* file, unsigned line) {
  if (object)
    object->AssertValid();
  else
    ReportAssertion(file, line);
}

}  // namespace utdata
