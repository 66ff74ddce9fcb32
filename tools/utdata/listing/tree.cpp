#include "listing/tree.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "interfaces/kvtiff19_catalogue.h"
#include "terminal/failure.h"
#include "terminal/output.h"
#include "terminal/quantity.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint32_t topCode = 0;             ///< of the groups that a write makes
constexpr std::uint32_t ofNoGroup = 0xFFFFFFFF;  ///< a file, which has no code
constexpr std::size_t shownElements = 8;         ///< of a long array
constexpr std::size_t shownCharacters = 60;      ///< of a long text

void Require(int status, const SCFile::Node* node) {
  if (status != SCFile::status_Ok)
    throw Failure::OfFileLayer(status, ToUtf8(SCFile::file_Path(node)), "cannot be listed");
}

struct Item {
  std::uint32_t code = 0;
  std::uint32_t kind = 0;
  std::uint32_t count = 0;
  std::uint32_t key = 0;
  std::uint32_t valueType = 0;
  std::string name;
};

Item ReadItem(const SCFile::Node* parent, std::uint32_t index) {
  Item item;
  static std::vector<wchar_t> name(65536);
  Require(SCFile::file_ItemInfo(parent,
                                index,
                                &item.code,
                                &item.kind,
                                &item.count,
                                &item.key,
                                name.data(),
                                static_cast<std::uint32_t>(name.size())),
          parent);
  item.name = ToUtf8(name.data());
  if (item.kind == SCFile::kind_Value)
    Require(SCFile::file_ItemValueType(parent, index, &item.valueType), parent);
  return item;
}

/// The elements of a value; one element alone is no array.
template <class Element>
Json ReadValue(const SCFile::Node* group, std::uint32_t index, const Item& item, bool full) {
  std::vector<Element> elements(item.count);
  std::uint32_t count = item.count;
  Require(SCFile::file_IndexValueRead(group, index, item.valueType, elements.data(), &count),
          group);
  const auto toJson = [](Element element) -> Json {
    if constexpr (std::is_same_v<Element, float>)
      return JsonNumber(element);
    else
      return element;
  };
  if (count == 1) return toJson(elements.front());
  const std::size_t shown = full ? count : std::min<std::size_t>(count, shownElements);
  Json array = Json::array();
  for (std::size_t at = 0; at < shown; ++at) array.push_back(toJson(elements[at]));
  return array;
}

Json ReadText(const SCFile::Node* group, std::uint32_t index, const Item& item, bool full) {
  std::vector<wchar_t> text(item.count + 1);
  auto count = static_cast<std::uint32_t>(text.size());
  Require(SCFile::file_IndexValueRead(group, index, item.valueType, text.data(), &count), group);
  std::wstring_view shown = text.data();
  if (full || shown.size() <= shownCharacters) return ToUtf8(shown);
  return ToUtf8(shown.substr(0, shownCharacters)) + "…";
}

/// What a value type is called, and what reads a value of it.
struct ValueType {
  const char* name;
  Json (*read)(const SCFile::Node*, std::uint32_t index, const Item&, bool full) = nullptr;
};
/// In the order of SCFile::ValueType.
constexpr ValueType valueTypes[] = {{"group"},
                                    {""},
                                    {"i8", ReadValue<std::int8_t>},
                                    {"u8", ReadValue<std::uint8_t>},
                                    {"i16", ReadValue<std::int16_t>},
                                    {"u16", ReadValue<std::uint16_t>},
                                    {"i32", ReadValue<std::int32_t>},
                                    {"u32", ReadValue<std::uint32_t>},
                                    {"i64", ReadValue<std::int64_t>},
                                    {"u64", ReadValue<std::uint64_t>},
                                    {"f32", ReadValue<float>},
                                    {"f64", ReadValue<double>},
                                    {"text", ReadText},
                                    {"block"}};

/// "channel", "modified channel"; empty for a type that is not known.
std::string TypeName(std::uint32_t code) {
  const SCFile::GroupTypeInfo* type = SCFile::file_GroupType(code);
  if (!type) return {};
  return (code == type->primaryCode ? "" : "modified ") + std::string(type->name);
}

std::string FieldName(std::uint32_t groupCode, std::uint32_t itemCode) {
  if (groupCode == topCode) return SCFile::file_SignatureItemName(itemCode);
  const SCFile::GroupTypeInfo* type = SCFile::file_GroupType(groupCode);
  const SCFile::FieldInfo* field = type ? type->Find(itemCode) : nullptr;
  return field ? std::string(field->key) : std::string();
}

Json ValueJson(const SCFile::Node* group,
               std::uint32_t groupCode,
               std::uint32_t index,
               const Item& item,
               bool full) {
  Json value = {{"code", item.code}, {"name", FieldName(groupCode, item.code)}};
  const ValueType& valueType =
      valueTypes[item.valueType < std::size(valueTypes) ? item.valueType : 1];
  value["type"] = valueType.name;
  if (item.valueType == SCFile::value_Block) {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    Require(SCFile::file_BlockInfo(group, index, &offset, &size), group);
    value["offset"] = offset;
    value["bytes"] = size;
    return value;
  }
  value["count"] = item.count;
  value["value"] = valueType.read ? valueType.read(group, index, item, full) : Json();
  return value;
}

std::string ValueText(const Json& item) {
  if (item.contains("bytes"))
    return std::to_string(item["bytes"].get<std::uint64_t>()) + " bytes at " +
           std::to_string(item["offset"].get<std::uint64_t>());
  const Json& value = item["value"];
  if (!value.is_array()) return Printable(value.dump());
  const auto count = item["count"].get<std::size_t>();
  std::string text = value.dump();
  if (value.size() < count) text.insert(text.size() - 1, ",…");
  return std::to_string(count) + " values " + text;
}

/// Gathers what is printed, a piece at a time.
class Printer {
 public:
  void Print(std::string_view text) {
    constexpr std::size_t pieceSize = std::size_t{1} << 16U;
    m_piece += text;
    if (m_piece.size() >= pieceSize) Flush();
  }
  void Flush() {
    PrintResult(m_piece);
    m_piece.clear();
  }

 private:
  std::string m_piece;
};

/// Prints items as elements of arrays.
class JsonItems {
 public:
  explicit JsonItems(Printer& printer) : m_printer(printer) {}

  void Value(const Json& value, std::size_t depth) {
    Separate(depth);
    m_printer.Print(Indented(value, depth));
  }
  void Begin(const Json& group, std::size_t depth) {
    Separate(depth);
    std::string text = Indented(group, depth);
    text.resize(text.find_last_not_of("}\n ") + 1);
    m_printer.Print(text + ",\n" + Margin(depth) + "  \"items\": [");
    m_isFirst = true;
  }
  void End(std::size_t depth) {
    m_printer.Print(m_isFirst ? "]" : "\n" + Margin(depth) + "  ]");
    m_printer.Print("\n" + Margin(depth) + "}");
    m_isFirst = false;
  }
  [[nodiscard]] bool IsEmpty() const { return m_isFirst; }

 private:
  /// Each group is an object in an array.
  static std::string Margin(std::size_t depth) { return std::string(4 * depth, ' '); }

  /// Texts in JSON have no line ends.
  static std::string Indented(const Json& json, std::size_t depth) {
    std::string text;
    for (const char character : json.dump(2)) {
      text += character;
      if (character == '\n') text += Margin(depth);
    }
    return text;
  }
  void Separate(std::size_t depth) {
    m_printer.Print((m_isFirst ? "\n" : ",\n") + Margin(depth));
    m_isFirst = false;
  }

  Printer& m_printer;
  bool m_isFirst = true;
};

/// Prints items as lines, indented by depth.
class TextItems {
 public:
  explicit TextItems(Printer& printer) : m_printer(printer) {}

  void Value(const Json& item, std::size_t depth) {
    const auto pad = [](const std::string& cell, std::size_t width) {
      return cell + std::string(width - std::min(width, cell.size()), ' ');
    };
    m_printer.Print(Start(item, depth, 5) + pad(Printable(item["name"].get<std::string>()), 22) +
                    pad(item["type"].get<std::string>(), 7) + ValueText(item) + "\n");
  }
  void Begin(const Json& group, std::size_t depth) {
    std::string text =
        Start(group, depth, 0) + " \"" + Printable(group["name"].get<std::string>()) + "\"";
    if (const auto type = group["group_type"].get<std::string>(); !type.empty())
      text += "  " + type;
    m_printer.Print(text + "\n");
  }
  void End(std::size_t) {}

 private:
  static std::string Start(const Json& item, std::size_t depth, std::size_t width) {
    const std::string code = std::to_string(item["code"].get<std::uint32_t>());
    return std::string(2 * depth, ' ') + code +
           std::string(width - std::min(width, code.size()), ' ');
  }

  Printer& m_printer;
};

/// Hands over every item below `parent`. The format bounds the depth of groups, and the file was
/// checked when it was opened.
template <class Items>
void Walk(SCFile::Node* parent, std::uint32_t code, bool full, std::size_t depth, Items& items) {
  for (std::uint32_t index = 0; index < SCFile::file_ItemNbrGet(parent); ++index) {
    const Item item = ReadItem(parent, index);
    if (item.kind == SCFile::kind_Value) {
      items.Value(ValueJson(parent, code, index, item, full), depth);
      continue;
    }
    SCFile::GroupHandle group = nullptr;
    Require(SCFile::file_GroupOpen(parent, &group, item.key), parent);
    items.Begin({{"code", item.code},
                 {"name", item.name},
                 {"type", "group"},
                 {"group_type", TypeName(item.code)}},
                depth);
    Walk(group, item.code, full, depth + 1, items);
    items.End(depth);
  }
}

}  // namespace

void PrintTreeJson(SCFile::FileHandle file, bool full) {
  const Json path = ToUtf8(SCFile::file_Path(file));
  Printer printer;
  printer.Print("{\n  \"path\": " + path.dump() + ",\n  \"commits\": " +
                std::to_string(SCFile::file_CommitNumber(file)) + ",\n  \"groups\": [");
  JsonItems items(printer);
  Walk(file, ofNoGroup, full, 1, items);
  printer.Print(items.IsEmpty() ? "]\n}\n" : "\n  ]\n}\n");
  printer.Flush();
}

void PrintTreeText(SCFile::FileHandle file, bool full) {
  Printer printer;
  printer.Print(Printable(ToUtf8(SCFile::file_Path(file))) + "\n");
  TextItems items(printer);
  Walk(file, ofNoGroup, full, 1, items);
  printer.Flush();
}

}  // namespace utdata::program
