#include "gating/cscan_records.h"

#include <algorithm>
#include <new>

#include "document/data_group.h"
#include "gating/gating.h"

namespace utdata::program {
namespace {

/// A C-scan over the cells of the A-scans: one unsigned 16-bit value each.
CGDataTypeFDD& AddCScan(Document& document,
                        const CGDataTypeFDD& ascans,
                        const CGGateTypeDescr& gate,
                        gdata_enumDataClass dataClass,
                        std::span<const std::uint16_t> values) {
  CGDataTypeFDD* cscan = gdata_Allocate(1, nullptr);
  if (!cscan) throw std::bad_alloc();
  document.Groups().data.AddTail(cscan);
  gdata_Duplicate(cscan, &ascans);
  cscan->samples = {};
  cscan->SetGroupHandle(nullptr);
  cscan->dataClass = dataClass;
  cscan->sampleQuantity = 1;
  cscan->storageMode = kvt_StorCells;
  cscan->compressionBits = cscan->compressionLSBit = 0;
  cscan->fileFormat = gdata_OptionNone;
  cscan->byteSwap = 0;
  cscan->SetDataType(kvt_UInt16);
  cscan->SetDataRectification(gdata_RectifFull);
  cscan->dataMinimum = 0;
  cscan->sampleSize = cscan->cellSize = sizeof(std::uint16_t);
  cscan->dataPointer =
      const_cast<std::uint16_t*>(values.data());  // read by the write, never changed
  cscan->dataSize = values.size_bytes();
  cscan->gateId = gate.gateId;
  const std::size_t length = std::min(gate.name.size(), CGDataTypeFDD::nameSize - 1);
  std::copy_n(gate.name.begin(), length, cscan->gateName);
  cscan->gateName[length] = 0;
  if (gate.gateId == couplingGate) cscan->SetDataBookmarkType(bookmark_Coupling);
  return *cscan;
}

}  // namespace

void AddCScans(Document& document,
               const CGDataTypeFDD& ascans,
               const CGGateTypeDescr& gate,
               const GateReadings& readings,
               double fullScale) {
  AddCScan(document, ascans, gate, gdata_CScanAmplitude, readings.amplitudes).dataMaximum =
      static_cast<float>(fullScale);
  CGDataTypeFDD& position =
      AddCScan(document, ascans, gate, gdata_CScanPosition, readings.positions);
  position.dataMaximum = static_cast<float>(std::min(ascans.sampleQuantity, positionEnd - 1));
  position.dataResolution = ascans.sampleResolution;
  position.dataOffset = ascans.sampleOffset;
  position.SetDataScale(gdata_ScaleLinear);
  position.SetDataUnits(ascans.sampleUnits);
}

}  // namespace utdata::program
