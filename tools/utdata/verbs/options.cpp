#include "verbs/options.h"

#include <cstdio>
#include <filesystem>

#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/progress.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "terminal/written.h"

namespace utdata::program {

CLI::Validator Within(double minimum, double maximum) {
  const std::string range = Number(minimum) + " to " + Number(maximum);
  return {[=](const std::string& text) {
            double value = 0;
            const bool valid =
                CLI::detail::lexical_cast(text, value) && value >= minimum && value <= maximum;
            return valid ? std::string() : "'" + text + "' is not a number from " + range;
          },
          ""};
}

void AddTables(CLI::App& verb, SampleTables& tables) {
  verb.add_flag_callback(
      "--in-memory",
      [&tables] { tables = SampleTables::InMemory; },
      "Read samples into memory instead of mapping the file");
}

void AddSignature(CLI::App& verb, Signature& signature) {
  signature.program = "utdata";
  signature.version = UTDATA_VERSION;
  verb.add_option("--author", signature.author, "Who makes it, for the history")
      ->envname("UTDATA_AUTHOR");
  verb.add_option("--reason", signature.reason, "Why, for the history");
}

CLI::Option* AddAcceptDamage(CLI::App& verb, bool& acceptDamage) {
  return verb.add_flag(
      "--accept-damage",
      acceptDamage,
      "Go on when samples are damaged: their cells count as cells without samples, "
      "and are listed as warnings");
}

void AddChangeOutput(CLI::App& verb, ChangeOutput& output) {
  verb.add_option("-o,--output", output.path, "Inspection file to make, with --as new");
  verb.add_option("--as", output.as, "Where the change goes: append, companion, or new with -o")
      ->check(CLI::IsMember({"append", "companion", "new"}).description(""))
      ->capture_default_str()
      ->type_name("append|companion|new");
  verb.add_flag("--force", output.force, "Replace an existing file, with --as new");
  AddSignature(verb, output.signature);
}

void CheckChangeOutput(const ChangeOutput& output) {
  if (output.IsNewFile() == output.path.empty())
    throw CLI::ValidationError("--as new", "goes with -o OUT, and no other way does");
}

Inspection OpenInspection(const std::string& path,
                          SampleTables tables,
                          bool quiet,
                          bool acceptDamage) {
  OpenOptions options;
  options.tables = tables;
  options.acceptDamage = acceptDamage;
  options.watch = Watching(quiet);
  Inspection inspection = Inspection::Open(path, options);
  for (const std::string& warning : inspection.Warnings())
    std::fprintf(stderr, "warning: %s\n", Printable(warning).c_str());
  return inspection;
}

void SaveNew(Inspection& inspection,
             const std::string& path,
             bool replace,
             const Signature& signature) {
  const UnfinishedFileScope unfinished(path);
  inspection.SaveAs(path, replace, signature);
  NoteWritten(path);
}

std::string Save(Inspection& inspection, const ChangeOutput& output) {
  if (output.as == "append" || output.as == "companion") {
    std::string path = output.as == "append" ? inspection.SaveAppended(output.signature)
                                             : inspection.SaveCompanion(output.signature);
    NoteWritten(path);
    return path;
  }
  SaveNew(inspection, output.path, output.force, output.signature);
  return output.path;
}

std::string ChangesText(const std::vector<FieldChange>& changes) {
  std::string text;
  for (const FieldChange& change : changes)
    text += change.group + ": " +
            Printable(std::string(change.field->key) + " " + change.shownBefore + " -> " +
                      change.shownAfter) +
            "\n";
  return text;
}

void CheckNotInput(const Inspection& inspection, const std::string& path) {
  for (const std::string& file : inspection.Files()) {
    std::error_code ignored;
    if (std::filesystem::equivalent(file, path, ignored))
      throw Failure(
          path, "cannot be written", "it is the inspection file itself", "choose another name");
  }
}

}  // namespace utdata::program
