// What one load gathers before it reaches the file descriptor: the open file and one list per group
// type code.
#pragma once

#include "utdata/fcont.h"

/// Holds raw pointers and owns them only by convention: whoever fills it empties it, by handing the
/// descriptors on or by utdata::container::ReleaseAll.
struct fcontsec_typeFileDescriptor {
  SCFile::FileHandle file = nullptr;
  CList<CGDataTypeFDD*> data, modifiedData;
  CList<CGChanTypeDescr*> channels, modifiedChannels;
  CList<CGSubchanTypeDescr*> subChannels, modifiedSubChannels;
  CList<CGGateTypeDescr*> gates, modifiedGates;
  CList<CGPatchTypeDescr*> patches, modifiedPatches;
  CList<CGProbeTypeDescr*> probes, modifiedProbes;
  CList<CGSpecdimTypeDescr*> specimenDimensions, modifiedSpecimenDimensions;
  CList<CGSpecinfTypeDescr*> specimenInformation, modifiedSpecimenInformation;
  CList<CGSpecmatTypeDescr*> specimenMaterials, modifiedSpecimenMaterials;
  CList<CGWeldTypeDescr*> welds, modifiedWelds;
  CList<CGInfoTypeDescr*> infos, modifiedInfos;
  CList<CGContourTypeDescr*> contours, modifiedContours;
  CList<CGRefadjTypeDescr*> referenceAdjustments, modifiedReferenceAdjustments;
  CList<CGMeshTypeDescr*> meshes, modifiedMeshes;
  CList<CGSpecdefTypeDescr*> specimenDefinitions, modifiedSpecimenDefinitions;
  CList<CGDacTypeDescr*> dacs, modifiedDacs;
  CList<stDefectExtern*> defects;
  CList<CGWeldScanPlanDescr*> weldScanPlans;
  CList<CGWeldFillDescr*> weldFills;
};
