// A simulated inspection of a butt weld as a crew records it: a sector scan from each side of the
// weld, and time-of-flight diffraction across it, along the weld's length.
//
// Positions are the part's own: x across the weld, y along it, depth below the surface. Echoes are
// placed by mirroring the part at its walls, without the library's geometry: views are checked
// against it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "utdata/inspection.h"

namespace utdata::program {

/// What sends an echo back. The same over its length, and gone beside its ends.
struct WeldFlaw {
  std::string name;
  double x = 0;                           ///< m
  double depth = 0;                       ///< m
  double from = 0;                        ///< along the weld, m
  double to = 0;                          ///< m
  std::array<double, 2> amplitudes = {};  ///< from the left and the right, parts of full scale
  double diffracted = 0;                  ///< in the TOFD scan, signed
};

inline constexpr std::size_t weldSides = 2;  ///< left and right

/// The plate with its weld, and what is done to it.
struct ButtWeld {
  double thickness = 20e-3;      ///< m
  double centre = 50e-3;         ///< of the weld, m
  double bevelAngle = 30;        ///< degrees from the vertical
  double rootGap = 2e-3;         ///< m
  double rootFace = 1.5e-3;      ///< m
  double probeDistance = 40e-3;  ///< of the index points of the beams from the centre, m
  double separation = 60e-3;     ///< of the index points of the TOFD probes, m
  double shearSpeed = 3240;      ///< m/s
  double longitudinalSpeed = 5920;
  std::uint32_t rows = 60;   ///< along the weld
  double rowStep = 2e-3;     ///< m
  std::uint32_t beams = 31;  ///< of either side
  double firstAngle = 40;    ///< degrees
  double angleStep = 1;
  double beamHalfAngle = 1.5;     ///< where the two-way echo has fallen to half, degrees
  double beamHalfWidth = 1.5e-3;  ///< along the weld, where it has, m
  double beamStart = 20e-3;       ///< half path of the first sample, m
  std::uint32_t samples = 926;    ///< of the beams
  double sampleStep = 40e-9;      ///< s
  double tofdStart = 9.5e-6;      ///< s
  std::uint32_t tofdSamples = 400;
  double tofdStep = 10e-9;      ///< s
  double referenceEcho = 0.5;   ///< of a side-drilled hole, part of full scale
  double frequency = 4e6;       ///< of the beams, Hz
  double tofdFrequency = 10e6;  ///< Hz
  double bandwidth = 60;        ///< at -6 dB, percent of the frequency
  double noise = 0.006;         ///< root mean square of the grain noise, part of full scale
  std::uint64_t seed = 40;
  std::vector<WeldFlaw> flaws;

  ButtWeld();

  [[nodiscard]] double AngleOf(std::uint32_t beam) const {  ///< degrees
    return firstAngle + beam * angleStep;
  }
  /// When the first sample of the beams is taken, s.
  [[nodiscard]] double BeamStartTime() const { return 2 * beamStart / shearSpeed; }
  /// Where the beams of a side enter the part, across the weld, m.
  [[nodiscard]] double IndexPoint(std::size_t side) const {
    return centre + (side == 0 ? -probeDistance : probeDistance);
  }
};

/// How a flaw is seen from one side: in a leg, at an angle and a half path.
struct Sight {
  int leg = 1;
  double angle = 0;     ///< degrees
  double halfPath = 0;  ///< m
};

/// All ways in up to three legs, whether a beam takes them or not. The part is mirrored at its
/// walls, so that each beam runs straight on.
[[nodiscard]] std::vector<Sight> SightsOf(const ButtWeld& weld,
                                          const WeldFlaw& flaw,
                                          std::size_t side);

/// Half of the way from TOFD probe to probe over a tip, m.
[[nodiscard]] double TofdHalfPath(const ButtWeld& weld, double x, double depth);

/// The A-scans along the weld of all that is recorded: of each beam, those of the left before those
/// of the right, and then of TOFD. Throws Interrupted.
[[nodiscard]] std::vector<std::vector<std::int16_t>> SimulateWeld(const ButtWeld& weld, bool quiet);

struct ButtWeldFiles {
  std::string acquisition;
  std::string inspection;
  std::string flaws;  ///< JSON: where each flaw was put, and where it is to be seen
};

/// Records the weld, builds the inspection of it, and writes where its flaws are. Throws
/// Interrupted. REQUIRES: an InterruptScope.
/// @param replace an existing inspection and JSON; the acquisition file must not be there
/// @return one line a flaw: where it is, and where it is seen best
std::vector<std::string> MakeButtWeld(const ButtWeldFiles& files,
                                      const ButtWeld& weld,
                                      const Signature& signature,
                                      bool replace,
                                      bool quiet);

}  // namespace utdata::program
