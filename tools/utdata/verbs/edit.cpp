#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "listing/selector.h"
#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/text.h"
#include "utdata/edits.h"
#include "verbs/options.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* editExplanation =
    R"(SELECTOR is the number of a group in the order of the file, from 0, or its ids (channel=0,
or gate=1,channel=0) that match exactly one. 'info' and 'material' need none; a data group
is named as 'render' names it. Without KEY=VALUE, the group's fields are shown with their
keys, units and ranges, and nothing is written. Values are in the units shown. A default is
what stands in for a value that the file lacks, and no measurement.

What repeats a value follows it: a channel has one sound speed, which its data groups take,
and is one of TOFD or not (tofd); a part thickness, a probe separation, and angles of a
channel or sub-channel, go to the data groups that had the same.

A change is appended to the last file (append), or written as the next numbered companion
(companion). General information is changed in a whole new file only (new).

Keys and their units:
)";

constexpr const char* editExample = R"(
Example:
  utdata demo --force
  utdata edit utdata-demo/weld.fpd gate gate=1 start=1.5 positiveLevel=25
)";

/// A type of groups as it is named on the command line, and its key in the catalogue.
struct GroupWord {
  const char* word;
  const char* key;
};
constexpr GroupWord groupWords[] = {{"channel", "channel"},
                                    {"gate", "gate"},
                                    {"probe", "probe"},
                                    {"patch", "patch"},
                                    {"sub-channel", "sub_channel"},
                                    {"data", "data"},
                                    {"info", "info"},
                                    {"material", "specimen_material"}};

struct EditOptions {
  std::string file;
  std::string group;
  std::vector<std::string> words;
  ChangeOutput output;
  bool json = false;
  bool quiet = false;
};

const SCFile::GroupTypeInfo& TypeOf(std::string_view key) {
  const auto types = EditableTypes();
  return **std::ranges::find(types, key, [](const auto* type) { return type->key; });
}

std::vector<Field> EditableIn(const Fields& fields) {
  std::vector<Field> editable = fields.All();
  std::erase_if(editable, [](const Field& field) { return !field.Info().IsEditable(); });
  return editable;
}

/// "gate: name, start (µs), ..." in lines that fit a page.
std::string KeysText(const GroupWord& group) {
  constexpr std::size_t width = 98;
  std::string text, line = "  " + std::string(group.word) + ":";
  for (const SCFile::FieldInfo& field : TypeOf(group.key).fields) {
    if (!field.IsEditable()) continue;
    const std::string unit(field.unitOf.empty() ? field.unit.shown : "mm or °");
    const std::string key = std::string(field.key) + (unit.empty() ? "" : " (" + unit + ")");
    if (DisplayWidth(line + " " + key) > width) {
      text += line + "\n";
      line = "   ";
    }
    line += " " + key + ",";
  }
  line.back() = '\n';
  return text + line;
}

struct EditWords {
  std::string selector = "0";  ///< of a type that an inspection has one group of
  std::vector<std::pair<std::string, std::string>> values;
};

/// The words of the command line: which group, and what changes. Throws a usage error.
EditWords SplitWords(const std::vector<std::string>& words, bool needsSelector) {
  EditWords split;
  auto word = words.begin();
  const bool selected =
      word != words.end() && (needsSelector || word->find('=') == std::string::npos);
  if (needsSelector && !selected) throw CLI::ValidationError("SELECTOR", "is missing");
  if (selected) split.selector = *word++;
  for (; word != words.end(); ++word) {
    const std::size_t equals = word->find('=');
    if (equals == std::string::npos) throw CLI::ValidationError(*word, "is not KEY=VALUE");
    const std::string key = word->substr(0, equals);
    for (const auto& value : split.values)
      if (value.first == key) throw CLI::ValidationError(key, "is given twice");
    split.values.emplace_back(key, word->substr(equals + 1));
  }
  return split;
}

Json IdsJson(const Fields& fields) {
  Json ids = Json::object();
  for (const auto& [name, value] : fields.Ids()) ids[name] = value;
  return ids;
}

/// A data group is named as everywhere else: by its row, or by fields of its JSON.
GroupHandle Choose(Inspection& inspection,
                   const EditOptions& options,
                   const SCFile::GroupTypeInfo& type,
                   const std::string& selector) {
  if (options.group == "data") return EditableGroup(inspection, SelectGroup(inspection, selector));
  const std::vector<GroupHandle> groups = EditableGroups(inspection, type);
  if (groups.empty())
    throw Failure(options.file, "its " + options.group + " cannot be edited", "it has none");
  std::vector<Json> ids;
  for (const GroupHandle& group : groups) ids.push_back(IdsJson(group.Values()));
  return groups[SelectRow(ids, selector, options.file, options.group, [&] {
    TextTable table({"#", "group", "name"});
    for (std::size_t index = 0; index < groups.size(); ++index)
      table.Add({std::to_string(index),
                 groups[index].Name(),
                 EditableIn(groups[index].Values()).front().Show()});
    return table.Text();
  })];
}

std::string FieldsText(const GroupHandle& group) {
  TextTable table({"key", "value", "range"});
  for (const Field& field : EditableIn(group.Values()))
    table.Add({field.Key(),
               field.Show() + (group.IsDefault(field.Key()) ? " (default)" : ""),
               field.Range()});
  return table.Text();
}

/// A value in base units.
Json ValueJson(const SCFile::FieldInfo& field, const FieldValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  const double number = std::get<double>(value);
  if (field.kind == SCFile::FieldKind::Quantity) return JsonNumber(static_cast<float>(number));
  return static_cast<std::int64_t>(number);
}

Json FieldsJson(const EditOptions& options, const GroupHandle& group) {
  const Fields fields = group.Values();
  Json values = Json::object(), defaults = Json::array();
  for (const Field& field : EditableIn(fields)) {
    values[field.Key()] = ValueJson(field.Info(), field.Value());
    if (group.IsDefault(field.Key())) defaults.push_back(field.Key());
  }
  return {{"path", options.file},
          {"group", options.group},
          {"ids", IdsJson(fields)},
          {"values", values},
          {"defaults", defaults}};
}

/// An unknown key lists those that there are.
std::vector<FieldChange> Change(const GroupHandle& group, const EditWords& words) {
  try {
    return group.Change(words.values);
  } catch (const Error& error) {
    for (const auto& [key, text] : words.values) {
      if (key != error.What()) continue;
      if (!group.Type().Find(key)) PrintResult(FieldsText(group));
      throw CLI::ValidationError(key, error.Why());
    }
    throw;
  }
}

void ReportEdit(const EditOptions& options,
                const GroupHandle& group,
                const std::vector<FieldChange>& changes,
                const std::string& written) {
  if (options.json) {
    Json result = FieldsJson(options, group);
    result["changes"] = Json::array();
    for (const FieldChange& change : changes) {
      Json entry = {{"key", change.field->key},
                    {"from", ValueJson(*change.field, change.before)},
                    {"to", ValueJson(*change.field, change.after)}};
      if (change.group != group.Name()) entry["group"] = change.group;
      result["changes"].push_back(std::move(entry));
    }
    result["written"] = written.empty() ? Json() : Json(written);
    return PrintResult(result.dump(2) + "\n");
  }
  if (options.quiet) return;
  PrintResult(ChangesText(changes) +
              (written.empty() ? group.Name() + ": has these values already; nothing is written\n"
                               : "written to " + Printable(written) + "\n"));
}

void Edit(const EditOptions& options) {
  CheckChangeOutput(options.output);
  const SCFile::GroupTypeInfo& type =
      TypeOf(std::ranges::find(groupWords, options.group, &GroupWord::word)->key);
  const bool hasIds = std::ranges::any_of(
      type.fields, [](const SCFile::FieldInfo& field) { return !field.idName.empty(); });
  const EditWords words = SplitWords(options.words, hasIds);
  const InterruptScope interrupts;
  if (options.output.IsNewFile()) CheckNewInspection(options.output.path, options.output.force);
  Inspection inspection = OpenInspection(options.file);
  const GroupHandle group = Choose(inspection, options, type, words.selector);
  if (words.values.empty())
    return PrintResult(options.json ? FieldsJson(options, group).dump(2) + "\n"
                                    : FieldsText(group));
  const std::vector<FieldChange> changes = Change(group, words);
  if (changes.empty()) return ReportEdit(options, group, changes, "");
  if (!type.isModified && !options.output.IsNewFile())
    throw Failure(options.file,
                  "its general information cannot be edited in place",
                  "it is part of a whole file only",
                  "'--as new -o OUT' writes one");
  ReportEdit(options, group, changes, Save(inspection, options.output));
}

}  // namespace

void AddEditVerb(CLI::App& program) {
  CLI::App& verb =
      *program.add_subcommand("edit", "Changes fields of a group and writes the change");
  const auto options = std::make_shared<EditOptions>();
  std::vector<std::string> names;
  std::string keys;
  for (const GroupWord& group : groupWords) {
    names.emplace_back(group.word);
    keys += KeysText(group);
  }
  verb.add_option("FILE", options->file, "Inspection file")->required();
  verb.add_option("GROUP",
                  options->group,
                  "channel, gate, probe, patch, sub-channel, data, info or material")
      ->required()
      ->check(CLI::IsMember(names).description(""))
      ->type_name("");
  verb.add_option("SELECTOR KEY=VALUE", options->words, "Which one, and its new values")
      ->type_name("");
  AddChangeOutput(verb, options->output);
  verb.add_flag("--json", options->json, "Print the result as JSON, quantities in base units");
  verb.add_flag("--quiet", options->quiet, "Print no result");
  verb.footer(editExplanation + keys + editExample);
  verb.callback([options] { Edit(*options); });
}

}  // namespace utdata::program
