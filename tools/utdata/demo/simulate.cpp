#include "demo/simulate.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>

#include "demo/echoes.h"
#include "terminal/progress.h"

namespace utdata::program {
namespace {

/// Adds up the echoes of one A-scan.
class AScan {
 public:
  AScan(std::span<double> samples, const WeldScan& scan, const Pulse& pulse)
      : m_samples(samples), m_scan(scan), m_pulse(pulse) {}

  void AddEcho(double time, double amplitude) {
    EchoTrain{m_samples, m_scan.sampleStep, 0}.Add(m_pulse, time, amplitude);
  }

  /// The echo of a small reflector `offset` beside the beam's axis: later and weaker than from
  /// straight above, so that it draws an arc over the columns.
  void AddReflector(double offset, double depth, double radius, double amplitude) {
    const double path = std::hypot(offset, depth) - radius;
    const double angle = std::atan2(std::abs(offset), depth) * 180 / std::numbers::pi;
    const double beam = BeamFactor(angle, m_scan.beamHalfAngle);
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

}  // namespace

std::vector<std::int16_t> Simulate(const WeldScan& scan, bool quiet) {
  const Pulse pulse(scan.frequency, scan.bandwidth);
  GrainNoise noise(pulse, scan.sampleStep, scan.noise, scan.seed);
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
