// Options that several verbs have.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "document/document.h"

namespace utdata::program {

/// A number from minimum to maximum.
[[nodiscard]] CLI::Validator Within(double minimum, double maximum);

/// Adds --in-memory.
void AddTables(CLI::App& verb, Tables& tables);

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

/// Writes the groups of `changes` where the user wants them. @return the path of the file written
std::string WriteChanges(Document& document,
                         CFContTypeFileDescr& changes,
                         const ChangeOutput& output);

}  // namespace utdata::program
