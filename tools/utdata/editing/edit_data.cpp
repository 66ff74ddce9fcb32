#include "editing/edit_data.h"

#include <array>

#include "editing/field_makers.h"

namespace utdata::program {
namespace {

using Record = CGDataTypeFDD;

constexpr double steepest = 89.999;  // degrees: a probe angle of 90 has no depth
constexpr double shortest = 1e-6;    // mm
constexpr std::array geometries = {"flat", "axial", "circumferential"};

constexpr std::array fields = {
    UTDATA_EDIT(Quantity, probeAngle, degree, -steepest, steepest),
    UTDATA_EDIT(Quantity, probeSkew, degree, -360, 360),
    UTDATA_EDIT(Quantity, probeThird, none, -farthest, farthest),
    UTDATA_EDIT(Quantity, probeFourth, degree, -360, 360),
    UTDATA_EDIT(Quantity, partThickness, millimetre, 0, farthest),
    UTDATA_EDIT(Quantity, soundSpeed, metrePerSecond, 1, 1e5),
    UTDATA_EDIT(OnAxis, columnResolution, &Record::columnUnits, shortest, farthest),
    UTDATA_EDIT(OnAxis, columnOffset, &Record::columnUnits, -farthest, farthest),
    UTDATA_EDIT(OnAxis, rowResolution, &Record::rowUnits, shortest, farthest),
    UTDATA_EDIT(OnAxis, rowOffset, &Record::rowUnits, -farthest, farthest),
    UTDATA_EDIT(Quantity, sampleOffset, microsecond, -farthest, farthest),
    UTDATA_EDIT(Choice, inspectionGeometry, geometries),
    UTDATA_EDIT(Whole, geometryKind, 0, largestId),
    UTDATA_EDIT(Quantity, inspectionRadius, millimetre, shortest, farthest),
    UTDATA_EDIT(Quantity, probeSeparation, millimetre, shortest, farthest),
    UTDATA_EDIT(Quantity, tofdValue, none, -farthest, farthest)};

/// Whether the change concerns what time-of-flight diffraction is measured by.
bool ChangesGeometry(const Record& before, const Record& after) {
  return before.columnResolution != after.columnResolution ||
         before.rowResolution != after.rowResolution ||
         before.inspectionGeometry != after.inspectionGeometry ||
         before.geometryKind != after.geometryKind ||
         before.inspectionRadius != after.inspectionRadius ||
         before.probeSeparation != after.probeSeparation || before.tofdValue != after.tofdValue;
}

idata_typeInspParams ParamsOf(const CIData& item, const Record& record) {
  idata_typeInspParams params;
  item.idata3_GetInspParam(&params);
  params.probeAngle = record.probeAngle;
  params.probeSkew = record.probeSkew;
  params.probeThird = record.probeThird;
  params.probeFourth = record.probeFourth;
  params.partThickness = record.partThickness;
  params.soundSpeed = record.soundSpeed;
  params.columnResolution = record.columnResolution;
  params.columnOffset = record.columnOffset;
  params.rowResolution = record.rowResolution;
  params.rowOffset = record.rowOffset;
  // A C-scan's descriptor has a sample axis of its own, which stays when nobody changed it.
  if (record.sampleOffset != item.idata1_GetGInfoRef()->sampleOffset)
    params.sampleOffset = record.sampleOffset;
  return params;
}

idata_typeTOFD GeometryOf(const CIData& item, const Record& record) {
  idata_typeTOFD tofd;
  item.idata3_GetTOFDParam(&tofd);
  tofd.inspectionGeometry = record.inspectionGeometry;
  tofd.geometryKind = record.geometryKind;
  tofd.inspectionRadius = record.inspectionRadius;
  tofd.partThickness = record.partThickness;
  tofd.probeSeparation = record.probeSeparation;
  tofd.tofdValue = record.tofdValue;
  tofd.soundSpeed = record.soundSpeed;
  tofd.sampleOffsetCorrection = 0;
  return tofd;
}

}  // namespace

std::span<const RecordField<CGDataTypeFDD>> EditFields(const CGDataTypeFDD*) { return fields; }

std::vector<CIData*> DataGroupItems::List(Inspection& inspection, fset_enumFilters filter) {
  std::vector<CIData*> items;
  for (const DataGroup& group : inspection.Data())
    if (group.IsListed() && (filter == fset_All || group.Item().idata1_ModifGetStatus() != 0))
      items.push_back(&group.Item());
  return items;
}

void DataGroupItems::Change(CIData& item, const CGDataTypeFDD& record) {
  idata_typeInspParams params = ParamsOf(item, record);
  idata_typeTOFD tofd = GeometryOf(item, record);
  if (ChangesGeometry(Of(item), record))
    item.idata3_ModifyTOFDParam(&tofd, &params);
  else
    item.idata1_ModifyInspParam(&params, 0);
}

std::string WhyNot(const CGDataTypeFDD& before, const CGDataTypeFDD& after) {
  if (before.dataClass == gdata_CScanAmplitude && before.sampleOffset != after.sampleOffset)
    return "an amplitude C-scan has the sample axis of its position C-scan; change sampleOffset "
           "there";
  return {};
}

}  // namespace utdata::program
