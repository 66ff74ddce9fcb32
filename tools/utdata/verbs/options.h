// Options that several verbs have.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "utdata/inspection.h"

namespace utdata::program {

/// A number from minimum to maximum.
[[nodiscard]] CLI::Validator Within(double minimum, double maximum);

/// Adds --in-memory.
void AddTables(CLI::App& verb, SampleTables& tables);

/// Adds --accept-damage.
CLI::Option* AddAcceptDamage(CLI::App& verb, bool& acceptDamage);

/// Where the changes of a loaded inspection go.
struct ChangeOutput {
  std::string as = "append";  ///< append, companion or new
  std::string path;           ///< of a new file
  bool force = false;         ///< a new file may replace another

  [[nodiscard]] bool IsNewFile() const { return as == "new"; }
};

/// Adds --as, -o and --force.
void AddChangeOutput(CLI::App& verb, ChangeOutput& output);

/// Throws a usage error unless -o stands with --as new and nowhere else.
void CheckChangeOutput(const ChangeOutput& output);

/// Opens an inspection; its warnings go to the standard error stream, a line each.
[[nodiscard]] Inspection OpenInspection(const std::string& path,
                                        SampleTables tables = SampleTables::Mapped,
                                        bool quiet = false,
                                        bool acceptDamage = false);

/// Saves everything as a new file, of which an interrupt leaves nothing.
void SaveNew(Inspection& inspection, const std::string& path, bool replace);

/// Saves what has changed where the user wants it. @return the path of the file written
std::string Save(Inspection& inspection, const ChangeOutput& output);

/// Fails when `path` is one of the inspection's own files, which must outlive what is made of them.
void CheckNotInput(const Inspection& inspection, const std::string& path);

}  // namespace utdata::program
