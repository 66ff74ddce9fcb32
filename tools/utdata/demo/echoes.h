// What simulated A-scans are made of: pulses, the echoes of them, and grain noise.
#pragma once

#include <cstdint>
#include <numbers>
#include <random>
#include <span>
#include <vector>

namespace utdata::program {

/// The largest value of a simulated sample: full scale.
inline constexpr std::int16_t simulatedFullScale = 32767;

/// In a Gaussian exp(-halvingExponent * x * x), x is 1 where it has fallen to half.
inline constexpr double halvingExponent = std::numbers::ln2;

/// A sinusoid at the probe's frequency under a Gaussian envelope, the shape of a damped probe's
/// echo.
class Pulse {
 public:
  /// @param frequency in Hz
  /// @param bandwidth at -6 dB, percent of the frequency
  Pulse(double frequency, double bandwidth);

  [[nodiscard]] double At(double time) const;
  /// Beyond this time on either side of its middle nothing is left of it, s.
  [[nodiscard]] double HalfLength() const { return 4 * m_sigma; }

 private:
  double m_angularFrequency;
  double m_sigma;  ///< of the envelope, s
};

/// One A-scan that is being simulated.
struct EchoTrain {
  std::span<double> samples;
  double sampleStep = 0;  ///< s
  double start = 0;       ///< time of the first sample, s

  /// Adds an echo whose middle arrives at a time, s.
  void Add(const Pulse& pulse, double time, double amplitude) const;
};

/// Grain noise: many small echoes at random, that is, random numbers shaped by the pulse.
class GrainNoise {
 public:
  /// @param level root mean square, part of full scale
  GrainNoise(const Pulse& pulse, double sampleStep, double level, std::uint64_t seed);

  void AddTo(std::span<double> samples);

 private:
  [[nodiscard]] double Grain();

  std::mt19937_64 m_random;
  std::vector<double> m_shape;
  std::vector<double> m_grains;
};

/// How much of a two-way echo is left beside the middle of a beam.
/// @param halfAngle where the echo has fallen to half, in the unit of `angle`
[[nodiscard]] double BeamFactor(double angle, double halfAngle);

/// A part of full scale as a sample.
[[nodiscard]] std::int16_t Digitise(double value);

}  // namespace utdata::program
