#include "listing/history.h"

#include <cctype>
#include <filesystem>
#include <string_view>

#include "terminal/text.h"
#include "utdata/history.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

std::string FileName(const WriteEvent& event) {
  return std::filesystem::path(event.file).filename().string();
}

/// "weld.A01, write 2: 2026-11-23 14:05:12 UTC, utdata 0.1.0, by AB: gate moved".
std::string Heading(const WriteEvent& event) {
  std::string text = FileName(event);
  if (event.write > 1) text += ", write " + std::to_string(event.write);
  text += ": " + (event.when ? TimeText(*event.when) : "at an unknown time");
  if (!event.program.empty()) text += ", " + event.program;
  if (!event.program.empty() && !event.version.empty()) text += " " + event.version;
  if (!event.author.empty()) text += ", by " + event.author;
  if (!event.reason.empty()) text += ": " + event.reason;
  return text;
}

}  // namespace

std::string SpokenField(std::string_view key) {
  std::string spoken;
  for (const char character : key) {
    const bool isCapital = std::isupper(static_cast<unsigned char>(character)) != 0;
    if (isCapital && !spoken.empty()) spoken += ' ';
    spoken += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  }
  if (spoken.starts_with("tofd")) spoken.replace(0, 4, "TOFD");
  return spoken;
}

Json HistoryJson(const Inspection& inspection) {
  Json events = Json::array();
  for (const WriteEvent& event : HistoryOf(inspection)) {
    Json changes = Json::array();
    for (const GroupEvent& group : event.groups) {
      Json fields = Json::array();
      for (const FieldChange& change : group.changes)
        fields.push_back({{"field", SpokenField(change.field->key)},
                          {"before", change.shownBefore},
                          {"after", change.shownAfter}});
      changes.push_back({{"group", group.group}, {"added", group.isAdded}, {"fields", fields}});
    }
    events.push_back({{"file", FileName(event)},
                      {"write", event.write},
                      {"when", event.when ? Json(TimeText(*event.when)) : Json()},
                      {"microseconds", event.when ? Json(*event.when) : Json()},
                      {"program", event.program},
                      {"version", event.version},
                      {"author", event.author},
                      {"reason", event.reason},
                      {"changes", changes}});
  }
  return events;
}

std::string HistoryText(const Inspection& inspection) {
  std::string text;
  for (const WriteEvent& event : HistoryOf(inspection)) {
    text += Printable(Heading(event)) + "\n";
    for (const GroupEvent& group : event.groups) {
      if (group.changes.empty())
        text += "  " + Printable(group.group) + (group.isAdded ? " added\n" : " written anew\n");
      for (const FieldChange& change : group.changes)
        text += "  " +
                Printable(group.group + ": " + SpokenField(change.field->key) + " " +
                          change.shownBefore + " -> " + change.shownAfter) +
                "\n";
    }
  }
  return text;
}

}  // namespace utdata::program
