// A whole host, small: opens an inspection with its companions, lists its data groups, shows an
// A-scan in display codes and one position in everyday units, moves a gate, and saves the change as
// a companion, which it then reads back. Paths and texts are UTF-8.
//   minimal_host FILE
#include <cstdint>
#include <cstdio>
#include <string>

#include "utdata/inspection.h"
#include "utdata/readout.h"
#include "utdata/samples.h"

static void Show(const utdata::DataGroup& ascans) {
  utdata::Samples samples = ascans.Samples();
  const auto [cell, sample, value] = samples.FindPeaks(ascans.AllCells()).strongest;
  for (const std::uint8_t code : samples.Codes({cell, 1})) std::printf("%02x", code);
  const auto row = static_cast<std::uint32_t>(cell / ascans.ColumnQuantity());
  const auto column = static_cast<std::uint32_t>(cell % ascans.ColumnQuantity());
  const utdata::ReadOut at = ascans.ReadOut(row, column, sample);
  std::printf(
      "\nvalue %g at column %.1f mm, row %.1f mm: %.2f µs, depth %.1f mm, %.1f %%, %.1f dB\n",
      value,
      at.column.In(unit_Millimetre),
      at.row.In(unit_Millimetre),
      at.time.In(unit_Microsecond),
      at.depth.In(unit_Millimetre),
      at.percent,
      at.decibels);
}

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: minimal_host FILE\n");
    return 2;
  }
  try {
    auto inspection = utdata::Inspection::Open(argv[1]);
    for (const std::string& warning : inspection.Warnings())
      std::printf("warning: %s\n", warning.c_str());
    for (const utdata::DataGroup& group : inspection.Data())
      std::printf("%s%s\n", group.Label().c_str(), group.ClassName().c_str());
    Show(inspection.Data({.dataClass = gdata_AScan, .channel = 0}));

    const utdata::GateHandle gate = inspection.Gate(0, 1);
    gate.SetStart(gate.Start() + 0.1e-6);
    std::printf("gate moved, written to %s\n", inspection.SaveCompanion().c_str());
    const auto again = utdata::Inspection::Open(argv[1]);
    std::printf("it starts at %.2f µs now\n", again.Gate(0, 1).Start() * 1e6);
  } catch (const utdata::Error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
