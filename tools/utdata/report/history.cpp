#include "report/history.h"

#include <array>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "listing/tree.h"
#include "report/fields.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

/// The fields that say which group of its type a group is; none where an inspection has one, or
/// where the type says nothing of keys.
struct TypeKeys {
  std::string_view type;
  std::array<std::string_view, 6> fields;
};
constexpr std::array<TypeKeys, 12> typeKeys = {{
    {"data group", {"dataClass", "channelId", "subChannelId", "gateId", "patchId"}},
    {"channel", {"channelId", "firstProbeId", "secondProbeId"}},
    {"sub-channel", {"channelId", "subChannelId"}},
    {"gate", {"gateId", "channelId"}},
    {"patch", {"patchId"}},
    {"probe", {"probeId"}},
    {"weld", {"weldId"}},
    {"contour", {"contourId", "channelId"}},
    {"reference adjustment", {"adjustmentId"}},
    {"DAC curve", {"dacId"}},
    {"weld scan plan", {"weldId", "planId"}},
    {"weld fill", {"weldId", "fillId"}},
}};

constexpr std::string_view modified = "modified ";

using Fields = std::map<std::string, Json>;

/// "C-scan amplitude" of a data group, else the type.
std::string Word(const std::string& type, const Fields& fields) {
  const auto dataClass = fields.find("dataClass");
  if (dataClass == fields.end() || !dataClass->second.is_number_unsigned()) return type;
  CGDataTypeFDD group;
  group.dataClass = static_cast<gdata_enumDataClass>(dataClass->second.get<std::uint32_t>());
  return ClassNameOf(group);
}

/// "gate 1, channel 0": the type, and the ids that tell it from others of its type.
std::string Identity(const std::string& type, const Fields& fields) {
  std::string text = Word(type, fields);
  for (const TypeKeys& keys : typeKeys) {
    if (keys.type != type) continue;
    for (const std::string_view key : keys.fields) {
      const auto field = fields.find(std::string(key));
      if (field == fields.end() || key == "dataClass") continue;
      const std::string spoken = SpokenField(key.substr(0, key.size() - 2));  // without "Id"
      text += (spoken == text ? " " : ", " + spoken + " ") + field->second.dump();
    }
  }
  return text;
}

class History {
 public:
  void Read(const Json& tree, const std::string& file) {
    std::size_t write = 0;
    for (const Json& top : tree["groups"]) {
      ++write;
      if (!top.contains("items")) continue;
      for (const Json& group : top["items"])
        if (group["type"] == "group") ReadGroup(group, file, write);
    }
    m_isFirstFile = false;
  }

  [[nodiscard]] const Json& Events() const { return m_events; }

 private:
  void ReadGroup(const Json& group, const std::string& file, std::size_t write) {
    std::string type = group["group_type"];
    const bool isModification = type.starts_with(modified);
    if (isModification) type.erase(0, modified.size());
    if (type.empty()) return;
    Fields fields;
    for (const Json& item : group["items"])
      if (item.contains("value") && !item["name"].get<std::string>().empty())
        fields[item["name"]] = item["value"];
    const std::string identity = Identity(type, fields);
    const auto [known, isNew] = m_state.try_emplace(identity, fields);
    const bool isOriginal = isNew && !isModification && m_isFirstFile && write == 1;
    if (isOriginal) return;
    Json event = {{"file", file},
                  {"write", write},
                  {"what", identity},
                  {"added", isNew},
                  {"changes", Json::array()}};
    if (!isNew) event["changes"] = Apply(type, fields, known->second);
    if (isNew || !event["changes"].empty()) m_events.push_back(std::move(event));
  }

  /// Takes the fields over into what was there. Returns those that differ, with both values.
  static Json Apply(const std::string& type, const Fields& fields, Fields& before) {
    Json changes = Json::array();
    for (const auto& [name, value] : fields) {
      Json& was = before[name];
      if (was == value) continue;
      changes.push_back({SpokenField(name),
                         ShownField(type, name, was, before),
                         ShownField(type, name, value, fields)});
      was = value;
    }
    return changes;
  }

  std::map<std::string, Fields> m_state;
  Json m_events = Json::array();
  bool m_isFirstFile = true;
};

}  // namespace

Json HistoryJson(const Inspection& inspection) {
  History history;
  for (const SCFile::FileHandle file : inspection.Descriptor().files) {
    const std::filesystem::path path(ToUtf8(SCFile::file_Path(file)));
    history.Read(TreeJson(file, false), path.filename().string());
  }
  return history.Events();
}

}  // namespace utdata::program
