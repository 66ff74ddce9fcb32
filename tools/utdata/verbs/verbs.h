// The verbs of the program, one file each. Adding a verb declares its options; its job runs when
// the command line names it.
#pragma once

#include <CLI/CLI.hpp>

namespace utdata::program {

void AddAdoptVerb(CLI::App& program);
void AddCalibrateVerb(CLI::App& program);
void AddCompletionVerb(CLI::App& program);
void AddDemoVerb(CLI::App& program);
void AddEditVerb(CLI::App& program);
void AddExportVerb(CLI::App& program);
void AddGateVerb(CLI::App& program);
void AddImportVerb(CLI::App& program);
void AddInfoVerb(CLI::App& program);
void AddManualVerb(CLI::App& program);
void AddRenderVerb(CLI::App& program);
void AddReportVerb(CLI::App& program);
void AddRescueVerb(CLI::App& program);
void AddTreeVerb(CLI::App& program);
void AddVerifyVerb(CLI::App& program);

}  // namespace utdata::program
