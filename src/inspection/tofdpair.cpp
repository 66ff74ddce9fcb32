#include "src/inspection/tofdpair.h"

#include <cmath>
#include <numbers>

namespace utdata {
namespace {

/// Whether a quantity that loading repairs when it is missing is one that was stored or given.
bool IsKnown(const DataRow& row, float CGDataTypeFDD::*quantity) {
  const float stored = row.stored->*quantity;
  return (std::isfinite(stored) && stored > 0) ||
         row.taken.*quantity != row.item->idata1_GetGInfoRef()->*quantity;
}

/// A master's record is that of its elements, as their items took it.
const DataRow& RowWithRecord(const DataGroup& group, const std::vector<DataGroup>& elements) {
  return DataGroupInside::Row(group.IsMaster() && !elements.empty() ? elements.front() : group);
}

const char* ObstacleOfRoundPart(const CRDataTypeDD& record, const DataRow& row) {
  if (!IsKnown(row, &CGDataTypeFDD::inspectionRadius)) return "the radius of the part is not known";
  if (!(record.inspectionRadius > record.partThickness))
    return "the radius of the part is not above its thickness";
  const bool isOuter = record.geometryKind == 16 || record.geometryKind == 17;
  const float diameter = isOuter ? 2 * record.inspectionRadius
                                 : 2 * record.inspectionRadius - 2 * record.partThickness;
  return double{record.probeSeparation / diameter} < std::numbers::pi
             ? nullptr
             : "the probe separation is more than half of the circumference";
}

}  // namespace

bool IsSeparationKnown(const DataRow& row) { return IsKnown(row, &CGDataTypeFDD::probeSeparation); }

const char* TofdObstacle(const DataGroup& group) {
  if (!group.IsTofd()) return "it is no time-of-flight diffraction data";
  const std::vector<DataGroup> elements =
      group.IsMaster() ? group.Elements() : std::vector<DataGroup>();
  const DataRow& row = RowWithRecord(group, elements);
  if (!IsSeparationKnown(row)) return "the probe separation is not known";
  const CRDataTypeDD& record = group.Descriptor();
  const bool isRound = record.inspectionGeometry == gdata_GeometryAxial ||
                       record.inspectionGeometry == gdata_GeometryCircumferential;
  return isRound ? ObstacleOfRoundPart(record, row) : nullptr;
}

double LateralPath(const CIData& item) {
  double sagitta = 0;
  double half = double{item.Descriptor()->probeSeparation} / 2;
  item.GetCircularParameter(&sagitta, &half);  // leaves those of a flat part
  return half;
}

}  // namespace utdata
