// Options that several verbs have.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "utdata/edits.h"
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
  Signature signature;

  [[nodiscard]] bool IsNewFile() const { return as == "new"; }
};

/// Adds --author, which the environment's UTDATA_AUTHOR gives too, and --reason; the program is
/// this one.
void AddSignature(CLI::App& verb, Signature& signature);

/// Adds --as, -o, --force and what AddSignature adds.
void AddChangeOutput(CLI::App& verb, ChangeOutput& output);

/// Throws a usage error unless -o stands with --as new and nowhere else.
void CheckChangeOutput(const ChangeOutput& output);

/// Opens an inspection; its warnings go to the standard error stream, a line each.
[[nodiscard]] Inspection OpenInspection(const std::string& path,
                                        SampleTables tables = SampleTables::Mapped,
                                        bool quiet = false,
                                        bool acceptDamage = false);

/// Saves everything as a new file, of which an interrupt leaves nothing.
void SaveNew(Inspection& inspection,
             const std::string& path,
             bool replace,
             const Signature& signature);

/// Saves what has changed where the user wants it. @return the path of the file written
std::string Save(Inspection& inspection, const ChangeOutput& output);

/// What was edited, a line a field: "data group 0: partThickness 0 mm -> 20 mm".
[[nodiscard]] std::string ChangesText(const std::vector<FieldChange>& changes);

/// Fails when `path` is one of the inspection's own files, which must outlive what is made of them.
void CheckNotInput(const Inspection& inspection, const std::string& path);

}  // namespace utdata::program
