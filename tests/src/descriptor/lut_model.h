// A second implementation of look-up tables, on whole numbers and without the library's steps: what
// a display code must be.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

namespace lut_model {

struct Group {
  int bits = 16;
  bool isSigned = false;
  bool isSwapped = false;
  bool isCompressed = false;
  bool isOffset = false;
  bool isCentred = false;  // unsigned 16-bit, unrectified
  double minimum = 0;
  double maximum = 0;
  double factor = 1;
};

inline std::int64_t Wrap16(std::int64_t v) { return ((v + 32768) % 65536 + 65536) % 65536 - 32768; }

// Cut toward zero into [low, high]; what is not a number falls to the low end.
inline int Cut(double y, int low, int high) {
  if (!(y > low)) return low;
  if (y > high) return high;
  return static_cast<int>(std::trunc(y));
}

// Non-negative amplitudes take the even codes, negative ones the odd codes.
inline int Fold(int c) { return c < 0 ? -2 * c - 1 : 2 * c; }

inline int SignedLevel(const Group& g, double v) {
  const bool isReached = v >= std::trunc(g.maximum);
  const double x = v * g.factor;
  if (isReached || x > g.maximum) return 127;
  if (x < g.minimum) return -128;
  return Cut(255 * (x - g.minimum) / (g.maximum - g.minimum) - 128, -128, 127);
}

inline int UnsignedLevel(const Group& g, double v) {
  const double h = (g.maximum - g.minimum) / 2;
  const double x = g.isCentred ? (v - h) * g.factor + h : v * g.factor;
  return Cut(255 * (x - g.minimum) / (g.maximum - g.minimum), 0, 255);
}

// The code of a raw sample, given by its bits.
inline int Code(const Group& g, std::int64_t raw) {
  if (g.bits == 8) {
    if (!g.isSigned) return static_cast<int>(raw);
    std::int64_t v = raw < 128 ? raw : raw - 256;
    if (g.isOffset) v = v < 0 ? v + 128 : v - 128;
    return Fold(static_cast<int>(v));
  }
  std::int64_t v = raw;
  if (g.isSwapped) v = raw % 256 * 256 + raw / 256;
  if (g.isCompressed) v -= v % 16;
  if (!g.isSigned) return UnsignedLevel(g, static_cast<double>(v));
  return Fold(SignedLevel(g, static_cast<double>(Wrap16(g.isOffset ? v - 32768 : v))));
}

inline std::vector<std::uint8_t> Codes(const Group& g) {
  std::vector<std::uint8_t> codes(g.bits == 8 ? 256 : 65536);
  for (std::size_t raw = 0; raw < codes.size(); ++raw)
    codes[raw] = static_cast<std::uint8_t>(Code(g, static_cast<std::int64_t>(raw)));
  return codes;
}

}  // namespace lut_model
