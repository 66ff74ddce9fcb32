// Random numbers and the time.
#include <sys/random.h>

#include <atomic>
#include <cerrno>
#include <chrono>

#include "interfaces/os.h"
#include "platform/os/posix_error.h"

namespace utdata::os {
namespace {

class MachineSurroundings final : public Surroundings {
 public:
  Error FillRandom(std::span<std::byte> bytes) noexcept override {
    while (!bytes.empty()) {
      const auto got = Uninterrupted([&] { return ::getrandom(bytes.data(), bytes.size(), 0); });
      if (got <= 0) return got < 0 ? LastError() : Fail(Error::Other);
      bytes = bytes.subspan(static_cast<std::size_t>(got));
    }
    return Error::None;
  }

  std::int64_t Now() noexcept override {
    using std::chrono::duration_cast, std::chrono::microseconds, std::chrono::system_clock;
    return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
  }
};

std::atomic<Surroundings*> replacedSurroundings{nullptr};

}  // namespace

Surroundings& CurrentSurroundings() noexcept {
  static MachineSurroundings own;
  Surroundings* replaced = replacedSurroundings.load(std::memory_order_acquire);
  return replaced ? *replaced : own;
}

Surroundings* SetSurroundings(Surroundings* surroundings) noexcept {
  return replacedSurroundings.exchange(surroundings, std::memory_order_acq_rel);
}

}  // namespace utdata::os
