// A progress bar on the standard error stream, with rate and time left.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "utdata/datagroup.h"

namespace utdata::program {

/// Shows itself on a terminal only, and only for work that has run for a second; takes its line
/// away at its end. Used by one thread.
class Progress {
 public:
  /// @param task  what is being done ("importing scan.raw")
  /// @param quiet shows nothing
  Progress(std::string task, bool quiet);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Shows how far the work is, in bytes. Throws Interrupted when the user has asked to stop.
  void At(std::uint64_t done, std::uint64_t total);
  void operator()(std::uint64_t done, std::uint64_t total) { At(done, total); }

 private:
  using Clock = std::chrono::steady_clock;

  void Draw(std::uint64_t done, std::uint64_t total, double elapsed);

  std::string m_task;
  bool m_visible;
  bool m_drawn = false;
  Clock::time_point m_start = Clock::now();
  Clock::time_point m_nextDraw = m_start + std::chrono::seconds(1);
};

/// Shows the work that the library reports as a progress bar, and lets an interrupt end it.
[[nodiscard]] Watch Watching(bool quiet);

}  // namespace utdata::program
