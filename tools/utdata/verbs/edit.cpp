#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "editing/edit_data.h"
#include "editing/edit_fields.h"
#include "editing/edit_items.h"
#include "editing/edit_words.h"
#include "listing/selector.h"
#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/text.h"
#include "verbs/options.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* editExplanation =
    "SELECTOR is the number of a group in the order of the file, from 0, or its ids (channel=0, or "
    "gate=1,channel=0)\n"
    "that match exactly one. 'info' and 'material' need none; a data group is named as 'render' "
    "names it. Without\n"
    "KEY=VALUE, the group's fields are shown with their keys, units and ranges, and nothing is "
    "written. Values are in\n"
    "the units shown.\n"
    "\n"
    "A change is written behind what is there (append), or beside it as the next numbered "
    "companion. General\n"
    "information is changed in a whole new file only (new).\n"
    "\n"
    "Keys and their units:\n";

constexpr const char* editExample =
    "\n"
    "Example:\n"
    "  utdata demo --force && utdata edit utdata-demo/weld.fpd gate gate=1 start=1.5 "
    "positiveLevel=25\n";

struct EditOptions {
  std::string file;
  std::string group;
  std::vector<std::string> words;
  ChangeOutput output;
  bool json = false;
  bool quiet = false;
};

/// "gate 1 of channel 0"; of a type without ids its name.
template <class Record>
std::string Describe(const std::string& group, const Record& record) {
  std::string text;
  for (const auto& [name, value] : EditIds(record))
    text += (text.empty() ? "" : " of ") + std::string(name) + " " + std::to_string(value);
  std::replace(text.begin(), text.end(), '_', '-');
  return text.empty() ? group : text;
}

template <class Items>
std::size_t Select(const std::vector<typename Items::Item*>& items,
                   const EditOptions& options,
                   const std::string& selector) {
  const std::string what = "its " + options.group + " cannot be edited";
  if (items.empty()) throw Failure(options.file, what, "it has none");
  std::vector<std::size_t> matches;
  std::size_t wanted = 0;
  const bool byIndex = IsIndex(selector, wanted);
  for (std::size_t index = 0; index < items.size(); ++index)
    if (byIndex ? index == wanted : HasIds(EditIds(Items::Of(*items[index])), selector))
      matches.push_back(index);
  if (matches.size() == 1) return matches.front();
  TextTable table({"#", "group", "name"});
  const auto& name = EditFields(static_cast<typename Items::Record*>(nullptr)).front();
  for (std::size_t index = 0; index < items.size(); ++index) {
    const auto& record = Items::Of(*items[index]);
    table.Add({std::to_string(index), Describe(options.group, record), Shown(name, record)});
  }
  PrintResult(table.Text());
  throw Failure(options.file,
                "'" + selector + "' matches " +
                    (matches.empty() ? "no" : std::to_string(matches.size())) + " " +
                    options.group + (matches.empty() ? "" : "s"),
                "name one of those listed by its number or its ids");
}

template <class Record>
std::string FieldsText(const Record& record) {
  TextTable table({"key", "value", "range"});
  for (const auto& field : EditFields(&record))
    table.Add({field.key, Shown(field, record), RangeText(field, UnitOf(field, record))});
  return table.Text();
}

template <class Record>
Json FieldsJson(const EditOptions& options, const Record& record) {
  Json ids = Json::object(), values = Json::object();
  for (const auto& [name, value] : EditIds(record)) ids[name] = value;
  for (const auto& field : EditFields(&record)) values[field.key] = ValueJson(field, record);
  return {{"path", options.file}, {"group", options.group}, {"ids", ids}, {"values", values}};
}

/// The record with the values of the command line. An unknown key lists those that there are.
template <class Record>
Record Changed(const Record& before, const EditWords& words) {
  Record after = before;
  const auto fields = EditFields(&before);
  for (const auto& [key, text] : words.values) {
    const auto field = std::find_if(fields.begin(), fields.end(), [&name = key](const auto& known) {
      return name == known.key;
    });
    if (field == fields.end()) {
      PrintResult(FieldsText(before));
      throw WrongUsage(key, "is none of the keys listed");
    }
    try {
      Assign(*field, after, text);
    } catch (const WrongValue& wrong) {
      throw WrongUsage(key, wrong.what());
    }
  }
  return after;
}

/// One change in words; values that look alike are told with every digit that counts.
template <class Record>
std::string ChangeText(const RecordField<Record>& field,
                       const Record& before,
                       const Record& after) {
  constexpr int everyDigit = 9;
  const bool alike = Shown(field, before) == Shown(field, after);
  const int digits = alike ? everyDigit : 6;
  return std::string(field.key) + " " + Shown(field, before, digits) + " -> " +
         Shown(field, after, digits);
}

template <class Record>
void ReportEdit(const EditOptions& options,
                const std::string& what,
                const Record& before,
                const Record& after,
                const std::string& written) {
  std::string text;
  Json changes = Json::array();
  for (const auto& field : EditFields(&before)) {
    if (!Differs(field, before, after)) continue;
    text += what + ": " + Printable(ChangeText(field, before, after)) + "\n";
    changes.push_back(
        {{"key", field.key}, {"from", ValueJson(field, before)}, {"to", ValueJson(field, after)}});
  }
  text += written.empty() ? what + ": has these values already; nothing is written\n"
                          : "written to " + Printable(written) + "\n";
  if (options.json) {
    Json result = FieldsJson(options, after);
    result["changes"] = changes;
    result["written"] = written.empty() ? Json() : Json(written);
    PrintResult(result.dump(2) + "\n");
  } else if (!options.quiet) {
    PrintResult(text);
  }
}

/// The item that the selector names.
template <class Items>
typename Items::Item& Choose(Inspection& inspection,
                             const EditOptions& options,
                             const std::string& selector) {
  const auto items = Items::List(inspection, fset_All);
  return *items[Select<Items>(items, options, selector)];
}

/// A data group is named as everywhere else: by its row, or by fields of its JSON.
template <>
CIData& Choose<DataGroupItems>(Inspection& inspection,
                               const EditOptions& options,
                               const std::string& selector) {
  const DataGroup group = SelectGroup(inspection, selector);
  if (group.IsListed()) return group.Item();
  throw Failure(options.file,
                "its data group " + std::to_string(group.Index()) + " cannot be edited",
                "another data group has its ids");
}

/// What a message calls an item.
template <class Items>
std::string NameOf(const Inspection& inspection,
                   const EditOptions& options,
                   const typename Items::Item& item) {
  if constexpr (std::is_same_v<Items, DataGroupItems>) {
    const DataGroup group = *inspection.DataOf(&item);
    return group.IdLabel() + group.ClassName();
  } else {
    return Describe(options.group, Items::Of(item));
  }
}

template <class Items>
void CheckChange(const EditOptions& options,
                 const std::string& what,
                 const typename Items::Record& before,
                 const typename Items::Record& after) {
  if constexpr (std::is_same_v<Items, InfoItems>) {
    if (!options.output.IsNewFile())
      throw Failure(options.file,
                    "its general information cannot be edited in place",
                    "it is part of a whole file only",
                    "'--as new -o OUT' writes one");
  } else if constexpr (std::is_same_v<Items, DataGroupItems>) {
    const std::string why = WhyNot(before, after);
    if (!why.empty()) throw Failure(options.file, what + " cannot be edited so", why);
  }
}

template <class Items>
void EditOne(const EditOptions& options) {
  const bool needsSelector = !EditIds(typename Items::Record{}).empty();
  const EditWords words = SplitWords(options.words, needsSelector);
  const InterruptScope interrupts;
  if (options.output.IsNewFile()) CheckNewInspection(options.output.path, options.output.force);
  Inspection inspection = OpenInspection(options.file);
  typename Items::Item& item = Choose<Items>(inspection, options, words.selector);
  const typename Items::Record before = Items::Of(item);
  const std::string what = NameOf<Items>(inspection, options, item);
  if (words.values.empty()) {
    PrintResult(options.json ? FieldsJson(options, before).dump(2) + "\n" : FieldsText(before));
    return;
  }
  const typename Items::Record after = Changed(before, words);
  if (after == before) return ReportEdit(options, what, before, after, "");
  CheckChange<Items>(options, what, before, after);
  Items::Change(item, after);
  const typename Items::Record taken = Items::Of(item);
  ReportEdit(options, what, before, taken, Save(inspection, options.output));
}

struct EditGroup {
  const char* name;
  void (*edit)(const EditOptions&);
  std::string (*keys)(const std::string& group);
};
constexpr EditGroup editGroups[] = {
    {"channel", EditOne<ChannelItems>, KeysText<ChannelItems::Record>},
    {"gate", EditOne<GateItems>, KeysText<GateItems::Record>},
    {"probe", EditOne<ProbeItems>, KeysText<ProbeItems::Record>},
    {"patch", EditOne<PatchItems>, KeysText<PatchItems::Record>},
    {"sub-channel", EditOne<SubChannelItems>, KeysText<SubChannelItems::Record>},
    {"data", EditOne<DataGroupItems>, KeysText<DataGroupItems::Record>},
    {"info", EditOne<InfoItems>, KeysText<InfoItems::Record>},
    {"material", EditOne<MaterialItems>, KeysText<MaterialItems::Record>},
};

}  // namespace

void AddEditVerb(CLI::App& program) {
  CLI::App& verb =
      *program.add_subcommand("edit", "Changes fields of a group and writes the change");
  const auto options = std::make_shared<EditOptions>();
  std::vector<std::string> names;
  std::string keys;
  for (const EditGroup& group : editGroups) {
    names.emplace_back(group.name);
    keys += group.keys(group.name);
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
  verb.callback([options] {
    CheckChangeOutput(options->output);
    const auto* group =
        std::find_if(std::begin(editGroups), std::end(editGroups), [&](const EditGroup& known) {
          return options->group == known.name;
        });
    group->edit(*options);
  });
}

}  // namespace utdata::program
