#include "verbs/options.h"

#include "terminal/quantity.h"

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

void AddTables(CLI::App& verb, Tables& tables) {
  verb.add_flag_callback(
      "--in-memory",
      [&tables] { tables = Tables::InMemory; },
      "Read samples into memory instead of mapping the file");
}

void AddChangeOutput(CLI::App& verb, ChangeOutput& output) {
  verb.add_option("-o,--output", output.path, "Inspection file to make, with --as new");
  verb.add_option("--as", output.as, "Where the change goes: append, companion, or new with -o")
      ->check(CLI::IsMember({"append", "companion", "new"}).description(""))
      ->capture_default_str()
      ->type_name("append|companion|new");
  verb.add_flag("--force", output.force, "Replace an existing file, with --as new");
}

void CheckChangeOutput(const ChangeOutput& output) {
  if (output.IsNewFile() == output.path.empty())
    throw CLI::ValidationError("--as new", "goes with -o OUT, and no other way does");
}

std::string WriteChanges(Document& document,
                         CFContTypeFileDescr& changes,
                         const ChangeOutput& output) {
  if (output.as == "append") return document.Append(changes);
  if (output.as == "companion") return document.WriteCompanion(changes);
  document.WriteCopy(changes, output.path, output.force);
  return output.path;
}

}  // namespace utdata::program
