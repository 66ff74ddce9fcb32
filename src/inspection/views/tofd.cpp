#include <algorithm>
#include <cmath>

#include "src/inspection/state.h"
#include "src/inspection/views/sectorbeams.h"

namespace utdata {

std::optional<double> TofdScale::SampleAt(double depth) const {
  const auto first =
      std::find_if(depths.begin(), depths.end(), [](double known) { return !std::isnan(known); });
  const auto behind = std::lower_bound(first, depths.end(), depth);
  if (behind == depths.end() || depth < 0) return std::nullopt;
  const auto index = static_cast<double>(behind - depths.begin());
  // Before the first sample with a depth lies the lateral wave, whose depth is 0.
  const double before = behind == first ? 0 : *(behind - 1);
  const double from = behind == first ? std::min(lateralWave, index) : index - 1;
  return *behind > before ? from + (index - from) * (depth - before) / (*behind - before) : index;
}

std::optional<TofdScale> TofdScaleOf(const DataGroup& group) {
  const CRDataTypeDD& record = group.Descriptor();
  const std::optional<AxisScale> paths = group.HalfPaths();
  const bool isSeparationKnown =
      group.Stored().probeSeparation > 0 || group.Taken().probeSeparation != record.probeSeparation;
  if (!group.IsTofd() || !paths || !isSeparationKnown) return std::nullopt;
  double sagitta = 0;
  double half = double{record.probeSeparation} / 2;
  group.Item().GetCircularParameter(&sagitta, &half);  // leaves those of a flat part
  TofdScale scale;
  scale.lateralWave = paths->IndexOf(half * millimetre);
  scale.depths = group.TofdDepths();
  const double thickness = double{group.Item().idata3_GetPartThickness()} * millimetre;
  if (thickness > 0) scale.backWall = scale.SampleAt(thickness);
  return scale;
}

}  // namespace utdata
