// How often random tests and campaigns repeat themselves.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace utdata::test {

/// `count`, and a tenth of it under a sanitizer, which takes about ten times as long for each.
constexpr int Repetitions(int count) {
#ifdef UTDATA_SANITIZED
  return count / 10;
#else
  return count;
#endif
}

/// What UTDATA_CAMPAIGN says: the factor of the long forms (scripts/campaigns); 0 for short forms.
inline double CampaignFactor() {
  static const char* const given = std::getenv("UTDATA_CAMPAIGN");
  return given ? std::max(0.0, std::strtod(given, nullptr)) : 0;
}

/// How often a campaign repeats what it does: its short form runs with all other tests.
inline int Rounds(int shortForm, int longForm) {
  const double factor = CampaignFactor();
  const int rounds = factor > 0 ? static_cast<int>(longForm * factor) : Repetitions(shortForm);
  return std::max(1, rounds);
}

/// Ends a campaign: the test fails when something was lost, and the long form prints its counts
/// ("1,000 kills, 30,000 commits") for scripts/campaigns.
inline void ReportCampaign(const std::string& counts, std::uint64_t lost) {
  if (CampaignFactor() > 0)
    std::printf(
        "campaign: %s; lost: %llu\n", counts.c_str(), static_cast<unsigned long long>(lost));
  EXPECT_EQ(lost, 0u) << counts;
}

}  // namespace utdata::test
