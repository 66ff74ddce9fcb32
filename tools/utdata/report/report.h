// A report of an inspection: one page that needs nothing but a browser.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "utdata/inspection.h"

namespace utdata::program {

struct ReportOptions {
  std::uint64_t sampleLimit =
      0;  ///< bytes of samples that the page may carry, two a sample, before they are packed
  bool quiet = false;  ///< shows no progress
};

struct Report {
  std::string html;       ///< UTF-8
  std::size_t views = 0;  ///< that the page draws
  std::vector<std::string>
      missing;  ///< what it does not show, and why, one line each; the page says so too
};

/// Throws Failure when the files cannot be read.
[[nodiscard]] Report MakeReport(const Inspection& inspection, const ReportOptions& options);

}  // namespace utdata::program
