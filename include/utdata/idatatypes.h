// The records that a data item fills with its names and takes its parameters from.
#pragma once

#include <cstdint>

#include "interfaces/kvtiff19_types.h"

/// Names of a data item: terminated texts, empty ones where there is no name. They live as long as
/// the item.
struct idata_typeName {
  const wchar_t* patchName = L"";
  const wchar_t* channelName = L"";
  const wchar_t* subChannelName = L"";
  const wchar_t* gateName = L"";
  const wchar_t* dataName = L"";
  const wchar_t* dataNameText = L"";  ///< second line of the data name
};

/// Inspection parameters. Column and row values are metres or degrees, as the axis's units say.
struct idata_typeInspParams {
  float probeAngle = 0;     ///< refracted, degrees
  float probeSkew = 0;      ///< degrees
  float probeThird = 0;     ///< carried, not interpreted
  float probeFourth = 0;    ///< degrees
  float partThickness = 0;  ///< m
  float soundSpeed = 0;     ///< m/s
  float columnResolution = 0;
  float columnOffset = 0;
  float rowResolution = 0;
  float rowOffset = 0;
  float sampleOffset = 0;  ///< s
};

/// Time-of-flight-diffraction parameters.
struct idata_typeTOFD {
  std::int32_t valid = 0;  ///< 1 when filled
  gdata_enumInspGeometry inspectionGeometry = gdata_GeometryFlat;
  std::uint32_t geometryKind = 0;
  float inspectionRadius = 0;        ///< m
  float partThickness = 0;           ///< m
  float probeSeparation = 0;         ///< m
  float tofdValue = 0;               ///< carried, not interpreted
  float soundSpeed = 0;              ///< m/s
  float sampleOffsetCorrection = 0;  ///< s, taken off the sample offset by a change
};
