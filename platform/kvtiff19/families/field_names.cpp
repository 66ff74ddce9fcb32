// What group types and their fields are called, for people who look into a file.
#include <cctype>
#include <string>
#include <string_view>

#include "platform/kvtiff19/families/channel_tables.h"
#include "platform/kvtiff19/families/data_table.h"
#include "platform/kvtiff19/families/group_types.h"
#include "platform/kvtiff19/families/probe_tables.h"
#include "platform/kvtiff19/families/specimen_tables.h"
#include "platform/kvtiff19/families/surface_tables.h"
#include "platform/kvtiff19/families/weld_tables.h"

namespace SCFile {
namespace {

using utdata::kvtiff19::ForEachField;
using utdata::kvtiff19::GroupType;
using utdata::kvtiff19::groupTypes;

/// Calls `visit` with the group type that has the code, if any.
template <class Visitor>
void WithTypeOf(std::uint32_t typeCode, Visitor&& visit) {
  const auto test = [&](const auto& type) {
    if (type.primary == typeCode || type.modifier == typeCode) visit(type);
  };
  std::apply([&](const auto&... type) { (test(type), ...); }, groupTypes);
}

}  // namespace

std::string file_TypeName(std::uint32_t typeCode) {
  std::string name;
  WithTypeOf(typeCode, [&](const auto& type) {
    name = type.title;
    if (name.size() > 1 && std::islower(static_cast<unsigned char>(name[1])) != 0)
      name[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(name[0])));
    if (type.primary != typeCode) name.insert(0, "modified ");
  });
  return name;
}

std::string file_FieldName(std::uint32_t typeCode, std::uint32_t itemCode) {
  std::string name;
  WithTypeOf(typeCode, [&]<class Record>(const GroupType<Record>&) {
    ForEachField<Record>([&](const auto& field) {
      if (field.code == itemCode) name = field.name.substr(field.name.starts_with("m_") ? 2 : 0);
    });
    if (std::is_same_v<Record, CGDataTypeFDD> && itemCode == utdata::kvtiff19::sampleBlockCode)
      name = "samples";
  });
  return name;
}

}  // namespace SCFile
