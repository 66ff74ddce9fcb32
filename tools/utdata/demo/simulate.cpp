#include "demo/simulate.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <span>

#include "terminal/progress.h"

namespace utdata::program {
namespace {

constexpr double halvingExponent = std::numbers::ln2;

/// A sinusoid at the probe's frequency under a Gaussian envelope, the shape of a damped probe's
/// echo.
class Pulse {
 public:
  explicit Pulse(const WeldScan& scan)
      : m_angularFrequency(2 * std::numbers::pi * scan.frequency),
        m_sigma(std::sqrt(halvingExponent / 2) /
                (std::numbers::pi * scan.frequency * scan.bandwidth / 200)) {}

  [[nodiscard]] double At(double time) const {
    const double ratio = time / m_sigma;
    return std::cos(m_angularFrequency * time) * std::exp(-ratio * ratio / 2);
  }
  /// Beyond this time on either side of its middle nothing is left of it, s.
  [[nodiscard]] double HalfLength() const { return 4 * m_sigma; }

 private:
  double m_angularFrequency;
  double m_sigma;  ///< of the envelope, s
};

/// Adds up the echoes of one A-scan.
class AScan {
 public:
  AScan(std::span<double> samples, const WeldScan& scan, const Pulse& pulse)
      : m_samples(samples), m_scan(scan), m_pulse(pulse) {}

  void AddEcho(double time, double amplitude) {
    const double last = static_cast<double>(m_samples.size()) - 1;
    const double from = std::max(0.0, std::ceil((time - m_pulse.HalfLength()) / m_scan.sampleStep));
    const double to = std::min(last, std::floor((time + m_pulse.HalfLength()) / m_scan.sampleStep));
    for (double sample = from; sample <= to; ++sample)
      m_samples[static_cast<std::size_t>(sample)] +=
          amplitude * m_pulse.At(sample * m_scan.sampleStep - time);
  }

  /// The echo of a small reflector `offset` beside the beam's axis: later and weaker than from
  /// straight above, so that it draws an arc over the columns.
  void AddReflector(double offset, double depth, double radius, double amplitude) {
    const double path = std::hypot(offset, depth) - radius;
    const double angle =
        std::atan2(std::abs(offset), depth) * 180 / std::numbers::pi / m_scan.beamHalfAngle;
    const double beam = std::exp(-halvingExponent * angle * angle);
    AddEcho(2 * path / m_scan.soundSpeed, amplitude * beam * (depth - radius) / path);
  }

 private:
  std::span<double> m_samples;
  const WeldScan& m_scan;
  const Pulse& m_pulse;
};

/// Height of the crack's edge above the back wall at a position along the weld, m; 0 beyond its
/// ends.
double CrackHeight(const Crack& crack, double y) {
  const double part = 2 * (y - crack.centre) / crack.length;
  return part * part < 1 ? crack.height * std::sqrt(1 - part * part) : 0;
}

/// The back wall's echo, weakened where the crack stands in the beam.
void AddBackWall(AScan& ascan, const WeldScan& scan, double x, double crackHeight) {
  const double spread = scan.thickness * std::tan(scan.beamHalfAngle * std::numbers::pi / 180);
  const double distance = (x - scan.crack.x) / spread;
  const double shadow =
      0.6 * crackHeight / scan.crack.height * std::exp(-halvingExponent * distance * distance * 4);
  ascan.AddEcho(BackWallTime(scan), -scan.backWallAmplitude * (1 - shadow));
}

void AddEchoes(AScan& ascan, const WeldScan& scan, double x, double y) {
  ascan.AddEcho(0, 1);
  for (const SideDrilledHole& hole : scan.holes)
    ascan.AddReflector(x - hole.x, hole.depth, hole.radius, hole.amplitude);
  const double height = CrackHeight(scan.crack, y);
  AddBackWall(ascan, scan, x, height);
  if (height <= 0) return;
  const double part = height / scan.crack.height;
  ascan.AddReflector(x - scan.crack.x, scan.thickness - height, 0, scan.crack.tipAmplitude * part);
  ascan.AddReflector(x - scan.crack.x, scan.thickness, 0, -scan.crack.cornerAmplitude * part);
}

/// Grain noise: many small echoes at random, that is, random numbers shaped by the pulse.
class GrainNoise {
 public:
  GrainNoise(const WeldScan& scan, const Pulse& pulse) : m_random(scan.seed) {
    const auto reach = static_cast<int>(pulse.HalfLength() / scan.sampleStep);
    double energy = 0;
    for (int sample = -reach; sample <= reach; ++sample) {
      m_shape.push_back(pulse.At(sample * scan.sampleStep));
      energy += m_shape.back() * m_shape.back();
    }
    for (double& value : m_shape) value *= scan.noise / std::sqrt(energy);
  }

  void AddTo(std::span<double> samples) {
    m_grains.resize(samples.size() + m_shape.size());
    for (double& grain : m_grains) grain = Grain();
    for (std::size_t sample = 0; sample < samples.size(); ++sample)
      for (std::size_t index = 0; index < m_shape.size(); ++index)
        samples[sample] += m_grains[sample + index] * m_shape[index];
  }

 private:
  /// Nearly normal, of variance 1: the sum of four uniform numbers, the same on every machine.
  double Grain() {
    double sum = -2;
    for (int term = 0; term < 4; ++term) sum += static_cast<double>(m_random() >> 11U) * 0x1p-53;
    return sum * std::sqrt(3.0);
  }

  std::mt19937_64 m_random;
  std::vector<double> m_shape;
  std::vector<double> m_grains;
};

std::int16_t Digitise(double value) {
  constexpr double fullScale = simulatedFullScale;
  return static_cast<std::int16_t>(std::lround(std::clamp(value, -1.0, 1.0) * fullScale));
}

}  // namespace

std::vector<std::int16_t> Simulate(const WeldScan& scan, bool quiet) {
  const Pulse pulse(scan);
  GrainNoise noise(scan, pulse);
  std::vector<std::int16_t> digitised;
  digitised.reserve(std::size_t{scan.rows} * scan.columns * scan.samples);
  std::vector<double> samples(scan.samples);
  Progress progress("simulating", quiet);
  const std::size_t total = digitised.capacity() * sizeof digitised[0];
  for (std::uint32_t row = 0; row < scan.rows; ++row) {
    progress.At(digitised.size() * sizeof digitised[0], total);
    for (std::uint32_t column = 0; column < scan.columns; ++column) {
      std::fill(samples.begin(), samples.end(), 0);
      AScan ascan(samples, scan, pulse);
      AddEchoes(ascan, scan, column * scan.columnStep, row * scan.rowStep);
      noise.AddTo(samples);
      std::transform(samples.begin(), samples.end(), std::back_inserter(digitised), Digitise);
    }
  }
  return digitised;
}

double EchoTime(const WeldScan& scan, const SideDrilledHole& hole) {
  return 2 * (hole.depth - hole.radius) / scan.soundSpeed;
}
double BackWallTime(const WeldScan& scan) { return 2 * scan.thickness / scan.soundSpeed; }

}  // namespace utdata::program
