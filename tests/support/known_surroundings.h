// A clock and a source of random numbers that a test knows.
#pragma once

#include <algorithm>
#include <cstdint>

#include "interfaces/os.h"

namespace utdata::test {

/// In place of the machine's own for as long as it stands.
class KnownSurroundings final : public os::Surroundings {
 public:
  KnownSurroundings() : m_before(os::SetSurroundings(this)) {}
  KnownSurroundings(const KnownSurroundings&) = delete;
  KnownSurroundings& operator=(const KnownSurroundings&) = delete;
  ~KnownSurroundings() override { os::SetSurroundings(m_before); }

  /// One number in every byte, the next one each time.
  os::Error FillRandom(std::span<std::byte> bytes) noexcept override {
    if (randomError != os::Error::None) return os::Fail(randomError);
    std::ranges::fill(bytes, static_cast<std::byte>(random++));
    return os::Error::None;
  }
  std::int64_t Now() noexcept override { return now; }

  std::uint8_t random = 1;
  std::int64_t now = 0;
  os::Error randomError = os::Error::None;

 private:
  os::Surroundings* m_before;
};

}  // namespace utdata::test
