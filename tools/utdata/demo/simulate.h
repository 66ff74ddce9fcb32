// A simulated pulse-echo scan of a welded plate: deterministic, with echoes of a real pulse shape
// in grain noise.
#pragma once

#include <cstdint>
#include <vector>

namespace utdata::program {

/// A hole drilled through the plate along the weld, so that its echo is the same in every row.
struct SideDrilledHole {
  double x = 0;          ///< across the weld, m
  double depth = 0;      ///< of its axis, m
  double radius = 0;     ///< m
  double amplitude = 0;  ///< of its echo when the probe is above it, part of full scale
};

/// A crack that rises from the back wall in the plane across the weld at `x`, highest in its
/// middle.
struct Crack {
  double x = 0;             ///< m
  double centre = 0;        ///< along the weld, m
  double length = 0;        ///< along the weld, m
  double height = 0;        ///< of its middle above the back wall, m
  double tipAmplitude = 0;  ///< of the echo from its upper edge, part of full scale
  double cornerAmplitude =
      0;  ///< of the echo from where it meets the back wall, part of full scale
};

/// The plate, the probe and the raster. Columns run across the weld, rows along it; the probe looks
/// straight down with longitudinal waves.
struct WeldScan {
  std::uint32_t columns = 256;
  std::uint32_t rows = 10;
  std::uint32_t samples = 512;
  double columnStep = 0.5e-3;      ///< m
  double rowStep = 5e-3;           ///< m
  double sampleStep = 20e-9;       ///< s, two-way
  double thickness = 20e-3;        ///< m
  double soundSpeed = 5920;        ///< longitudinal, m/s
  double frequency = 5e6;          ///< of the probe, Hz
  double bandwidth = 60;           ///< at -6 dB, percent of the frequency
  double beamHalfAngle = 9;        ///< where the two-way echo has fallen to half, degrees
  double backWallAmplitude = 0.8;  ///< part of full scale
  double noise = 0.012;            ///< root mean square of the grain noise, part of full scale
  double weldCentre = 64e-3;       ///< across the columns, m
  std::vector<SideDrilledHole> holes = {{20e-3, 5e-3, 0.75e-3, 0.62},
                                        {36e-3, 10e-3, 0.75e-3, 0.48},
                                        {100e-3, 15e-3, 0.75e-3, 0.38}};
  Crack crack = {66e-3, 24e-3, 32e-3, 6e-3, 0.22, 0.45};
  std::uint64_t seed = 20;
};

/// The A-scans of a scan, not rectified: rows x columns cells in row-major order, each `samples`
/// values. Shows progress on long work; throws Interrupted.
/// @param quiet shows no progress
[[nodiscard]] std::vector<std::int16_t> Simulate(const WeldScan& scan, bool quiet);

/// When the echo of a hole arrives when the probe is above it, s after the pulse enters the plate.
[[nodiscard]] double EchoTime(const WeldScan& scan, const SideDrilledHole& hole);
/// When the back wall's echo arrives, s.
[[nodiscard]] double BackWallTime(const WeldScan& scan);

}  // namespace utdata::program
