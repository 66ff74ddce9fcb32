// Receives what the framework reports while it lives, in place of the sink before it. Made and
// destroyed by one thread; reports may come from any.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

#include "interfaces/framework.h"

namespace utdata::test {

struct CapturedReport {
  ReportKind kind;
  std::string file;
  unsigned line;
  std::wstring text;
};

class ReportCapture {
 public:
  ReportCapture() {
    m_former = SetReportSink([this](const Report& report) {
      const std::scoped_lock held(m_lock);
      m_reports.push_back({report.kind, report.file, report.line, std::wstring(report.text)});
      return ReportAnswer::Continue;
    });
  }
  ReportCapture(const ReportCapture&) = delete;
  ReportCapture& operator=(const ReportCapture&) = delete;
  ~ReportCapture() { SetReportSink(std::move(m_former)); }

  /// REQUIRES: no other thread reports meanwhile.
  [[nodiscard]] const std::vector<CapturedReport>& Reports() const { return m_reports; }
  [[nodiscard]] std::size_t Assertions() const {
    std::size_t count = 0;
    for (const CapturedReport& report : m_reports) count += report.kind == ReportKind::Assertion;
    return count;
  }

 private:
  std::mutex m_lock;
  std::vector<CapturedReport> m_reports;  // written inside the lock
  ReportSink m_former;
};

}  // namespace utdata::test
