// The data item: inspection parameters and the geometry of time-of-flight diffraction.
#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "src/items/idatainside.h"
#include "src/items/idatarecord.h"
#include "utdata/idata.h"

namespace {

constexpr std::uint32_t outerKinds[] = {
    16,
    17};  ///< geometry kinds with the probes on the outer surface

bool AreFinite(std::initializer_list<float> values) {
  return std::all_of(
      values.begin(), values.end(), [](float value) { return std::isfinite(value); });
}

bool AreFinite(const idata_typeInspParams& p) {
  return AreFinite({p.probeAngle,
                    p.probeSkew,
                    p.probeThird,
                    p.probeFourth,
                    p.partThickness,
                    p.soundSpeed,
                    p.columnResolution,
                    p.columnOffset,
                    p.rowResolution,
                    p.rowOffset,
                    p.sampleOffset});
}

bool AreFinite(const idata_typeTOFD& t) {
  return AreFinite({t.inspectionRadius,
                    t.partThickness,
                    t.probeSeparation,
                    t.tofdValue,
                    t.soundSpeed,
                    t.sampleOffsetCorrection});
}

float Normalised(float angle) { return static_cast<float>(NormalizeAngle(double{angle})); }

/// What a record and its descriptor take alike.
void TakeParams(CGDataTypeFDD& record, const idata_typeInspParams& p) {
  record.probeAngle = p.probeAngle;
  record.probeSkew = Normalised(p.probeSkew);
  record.probeThird = p.probeThird;
  record.probeFourth = Normalised(p.probeFourth);
  record.partThickness = p.partThickness;
  record.soundSpeed = p.soundSpeed;
  record.columnOffset = p.columnOffset;
  record.rowOffset = p.rowOffset;
  if (utdata::HoldsPositions(record.dataClass)) record.dataOffset = p.sampleOffset;
}

/// The record copy of an amplitude C-scan keeps its own sample offset: its descriptor's is that of
/// the positions beside it.
void TakeParams(CGDataTypeFDD& record, CGDataTypeFDD& descriptor, const idata_typeInspParams& p) {
  TakeParams(record, p);
  TakeParams(descriptor, p);
  descriptor.sampleOffset = p.sampleOffset;
  if (utdata::ClassOfElements(record.dataClass) != gdata_CScanAmplitude)
    record.sampleOffset = p.sampleOffset;
}

void TakeTofd(CGDataTypeFDD& record, const idata_typeTOFD& t, const idata_typeInspParams& p) {
  record.columnResolution = p.columnResolution;
  record.rowResolution = p.rowResolution;
  record.inspectionGeometry = t.inspectionGeometry;
  record.geometryKind = t.geometryKind;
  record.inspectionRadius = t.inspectionRadius;
  record.partThickness = t.partThickness;
  record.probeSeparation = t.probeSeparation;
  record.tofdValue = t.tofdValue;
  record.soundSpeed = t.soundSpeed;
  record.sampleOffset -= t.sampleOffsetCorrection;
}

}  // namespace

int CIData::idata3_GetInspParam(idata_typeInspParams* params) const {
  UTDATA_ASSERT(params != nullptr);
  if (!params || !m_descriptor) return 0;
  const LockScope lock(*this);
  const CRDataTypeDD& d = *m_descriptor;
  *params = {d.probeAngle,
             Normalised(d.probeSkew),
             d.probeThird,
             Normalised(d.probeFourth),
             d.partThickness,
             d.soundSpeed,
             d.columnResolution,
             d.columnOffset,
             d.rowResolution,
             d.rowOffset,
             d.sampleOffset};
  return 0;
}

int CIData::idata1_ModifyInspParam(idata_typeInspParams* params, int) {
  const bool isFit = params && AreFinite(*params);
  UTDATA_ASSERT(isFit);
  if (!isFit || !m_descriptor) return 0;
  const LockScope lock(*this);
  TakeParams(*m_record, *m_descriptor, *params);
  idata3_Modified();
  UpdateUnits();
  return 0;
}

void CIData::idata3_GetTOFDParam(idata_typeTOFD* tofd) const {
  UTDATA_ASSERT(tofd != nullptr);
  if (!tofd || !m_descriptor) return;
  const LockScope lock(*this);
  const CRDataTypeDD& d = *m_descriptor;
  *tofd = {1,
           d.inspectionGeometry,
           d.geometryKind,
           d.inspectionRadius,
           d.partThickness,
           d.probeSeparation,
           d.tofdValue,
           d.soundSpeed,
           0};
}

void CIData::idata3_ModifyTOFDParam(idata_typeTOFD* tofd, idata_typeInspParams* params) {
  const bool isFit = tofd && params && AreFinite(*tofd) && AreFinite(*params);
  UTDATA_ASSERT(isFit);
  if (!isFit || !m_descriptor) return;
  const LockScope lock(*this);
  TakeParams(*m_record, *m_descriptor, *params);
  TakeTofd(*m_record, *tofd, *params);
  TakeTofd(*m_descriptor, *tofd, *params);
  idata3_Modified();
  UpdateUnits();
}

int CIData::idata3_IsTOFD() const { return m_descriptor && m_descriptor->tofd == 1 ? 1 : 0; }

void CIData::TakeTofdFlag(std::int32_t tofd) {
  const LockScope lock(*this);
  if (m_record->tofd == tofd) return;
  m_record->tofd = m_descriptor->tofd = tofd;
  m_currentUnits[kvt_AxisSample] = InitialSampleUnit();
  idata3_Modified();
}

float CIData::idata3_GetProbeAngle() const {
  return m_descriptor ? m_descriptor->probeAngle : 0.0f;
}

float CIData::idata3_GetProbeSkew() const {
  if (!m_descriptor) return 0;
  const LockScope lock(*this);
  return Normalised(m_descriptor->probeSkew);
}

float CIData::idata3_GetPartThickness() const {
  return m_descriptor ? m_descriptor->partThickness : 0.0f;
}

void CIData::idata3_SetPartThickness(float thickness) {
  UTDATA_ASSERT(std::isfinite(thickness));
  if (!std::isfinite(thickness) || !m_descriptor) return;
  const LockScope lock(*this);
  m_descriptor->partThickness = thickness;
}

void CIData::idata3_SetPartOutsideDiameter(double diameter) {
  const auto radius = static_cast<float>(diameter / 2);
  UTDATA_ASSERT(std::isfinite(radius));
  if (!std::isfinite(radius) || !m_descriptor) return;
  const LockScope lock(*this);
  m_descriptor->inspectionRadius = radius;
}

int CIData::GetCircularParameter(double* sagitta, double* halfChord) const {
  if (!m_descriptor || !sagitta || !halfChord) return 0;
  const CRDataTypeDD& d = *m_descriptor;
  if (d.inspectionGeometry != gdata_GeometryAxial &&
      d.inspectionGeometry != gdata_GeometryCircumferential)
    return 0;
  const bool isOuter = std::find(std::begin(outerKinds), std::end(outerKinds), d.geometryKind) !=
                       std::end(outerKinds);
  const float diameter =
      isOuter ? 2 * d.inspectionRadius : 2 * d.inspectionRadius - 2 * d.partThickness;
  const float theta = d.probeSeparation / diameter;
  if (!std::isfinite(theta)) return 0;
  // From outside, the surface between the probes rises above their chord; from inside it falls
  // below.
  const double height = double{diameter} / 2 * (1 - std::cos(double{theta}));
  *sagitta = isOuter ? height : -height;
  *halfChord = double{diameter} * std::sin(double{theta}) / 2;
  return 1;
}
