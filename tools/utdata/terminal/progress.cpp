#include "terminal/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

#include "terminal/interrupt.h"
#include "terminal/quantity.h"
#include "terminal/text.h"

namespace utdata::program {

Progress::Progress(std::string task, bool quiet)
    : m_task(Printable(task)), m_visible(!quiet && isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (m_drawn) std::fputs("\r\033[K", stderr);
}

void Progress::At(std::uint64_t done, std::uint64_t total) {
  ThrowIfInterrupted();
  if (!m_visible) return;
  const Clock::time_point now = Clock::now();
  if (now < m_nextDraw) return;
  m_nextDraw = now + std::chrono::milliseconds(100);
  Draw(done, total, std::chrono::duration<double>(now - m_start).count());
}

void Progress::Draw(std::uint64_t done, std::uint64_t total, double elapsed) {
  constexpr std::size_t width = 24;
  const double share =
      total == 0 ? 0 : std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
  const auto filled = static_cast<std::size_t>(share * static_cast<double>(width));
  const std::string bar = std::string(filled, '=') + std::string(width - filled, ' ');
  const double rate = static_cast<double>(done) / elapsed;
  std::string line = m_task + " [" + bar + "] " + Number(static_cast<int>(share * 100)) + " %  " +
                     Bytes(static_cast<std::uint64_t>(rate)) + "/s";
  if (done > 0) line += "  " + Duration(elapsed * (1 - share) / std::max(share, 1e-6)) + " left";
  std::fputs(("\r" + line + "\033[K").c_str(), stderr);
  m_drawn = true;
}

Watch Watching(bool quiet) {
  auto progress = std::make_shared<std::unique_ptr<Progress>>();
  return [progress, quiet](std::string_view task, std::uint64_t done, std::uint64_t total) {
    if (!*progress) *progress = std::make_unique<Progress>(std::string(task), quiet);
    (*progress)->At(done, total);
  };
}

}  // namespace utdata::program
