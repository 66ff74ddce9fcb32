#include "report/tables.h"

#include <array>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "editing/group_ids.h"
#include "report/fields.h"
#include "terminal/quantity.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;
using Rows = std::vector<std::pair<std::string, std::string>>;

void AddTable(Json& tables, const std::string& title, const Rows& rows) {
  if (!rows.empty()) tables.push_back({{"title", title}, {"rows", rows}});
}

std::string Title(const char* type, const IdPairs& ids) {
  std::string title = type;
  for (const auto& [name, id] : ids)
    title +=
        (&name == &ids.front().first ? " " : ", " + std::string(name) + " ") + std::to_string(id);
  return title;
}

/// One table for each group of a type whose fields can be edited.
template <class Record>
void AddTables(Json& tables, const char* type, const CList<Record*>& list) {
  for (const Record* record : list)
    AddTable(tables, Title(type, EditIds(*record)), TellingFields(*record));
}

void AddText(Rows& rows, const char* name, const std::wstring& text) {
  if (!text.empty()) rows.emplace_back(name, ToUtf8(text));
}

void AddLength(Rows& rows, const char* name, float metres) {
  if (metres != 0 && std::isfinite(metres)) rows.emplace_back(name, Millimetres(metres));
}

template <std::size_t Size>
std::string Choice(const std::array<const char*, Size>& names, std::uint32_t value) {
  return value < Size ? names[value] : std::to_string(value);
}

Rows SpecimenRows(const CFContTypeFileDescr& groups) {
  constexpr std::array shapes = {"plate", "pipe", "bar", "sphere", "other"};
  Rows rows;
  for (const CGSpecinfTypeDescr* information : groups.specimenInformation) {
    AddText(rows, "name", information->name);
    AddText(rows, "serial number", information->serialNumber);
    AddText(rows, "drawing", information->drawing);
    AddText(rows, "customer", information->customer);
    AddText(rows, "location", information->location);
    AddText(rows, "surface", information->surfaceCondition);
    AddText(rows, "couplant", information->couplant);
    if (information->temperature != 0 && std::isfinite(information->temperature))
      rows.emplace_back("temperature", Number(information->temperature) + " °C");
    AddText(rows, "comment", information->comment);
  }
  for (const CGSpecdimTypeDescr* dimensions : groups.specimenDimensions) {
    rows.emplace_back("shape", Choice(shapes, dimensions->shape));
    AddLength(rows, "length", dimensions->length);
    AddLength(rows, "width", dimensions->width);
    AddLength(rows, "thickness", dimensions->thickness);
    AddLength(rows, "outside diameter", dimensions->outsideDiameter);
    AddLength(rows, "inside diameter", dimensions->insideDiameter);
  }
  return rows;
}

Rows WeldRows(const CGWeldTypeDescr& weld) {
  constexpr std::array preparations = {"I", "V", "X", "U", "J", "K"};
  Rows rows;
  AddText(rows, "name", weld.name);
  rows.emplace_back("preparation", Choice(preparations, weld.preparation));
  AddText(rows, "process", weld.process);
  AddLength(rows, "centre line at", weld.centerPosition);
  if (weld.bevelAngle != 0) rows.emplace_back("bevel angle", Degrees(weld.bevelAngle));
  AddLength(rows, "root gap", weld.rootGap);
  AddLength(rows, "root face", weld.rootFace);
  AddLength(rows, "cap width", weld.capWidth);
  AddLength(rows, "cap height", weld.capHeight);
  AddLength(rows, "heat-affected zone", weld.heatAffectedZone);
  AddLength(rows, "thickness", weld.thickness);
  return rows;
}

Rows DacRows(const CGDacTypeDescr& dac) {
  Rows rows;
  AddText(rows, "name", dac.name);
  rows.emplace_back("channel, gate",
                    std::to_string(dac.channelId) + ", " + std::to_string(dac.gateId));
  rows.emplace_back("reference",
                    Percent(dac.referenceLevel) + " at " + Decibels(dac.referenceGain));
  for (const auto& [time, level] : dac.points)
    rows.emplace_back("at " + Microseconds(time), Percent(std::round(10 * level) / 10));
  return rows;
}

}  // namespace

Json TablesJson(const Inspection& inspection) {
  const CFContTypeFileDescr& groups = inspection.Descriptor();
  Json tables = Json::array();
  AddTables(tables, "Inspection", groups.infos);
  AddTable(tables, "Specimen", SpecimenRows(groups));
  AddTables(tables, "Material", groups.specimenMaterials);
  for (const CGWeldTypeDescr* weld : groups.welds)
    AddTable(tables, "Weld " + std::to_string(weld->weldId), WeldRows(*weld));
  AddTables(tables, "Channel", groups.channels);
  AddTables(tables, "Sub-channel", groups.subChannels);
  AddTables(tables, "Probe", groups.probes);
  AddTables(tables, "Gate", groups.gates);
  for (const CGDacTypeDescr* dac : groups.dacs)
    AddTable(tables, "DAC curve " + std::to_string(dac->dacId), DacRows(*dac));
  AddTables(tables, "Patch", groups.patches);
  return tables;
}

Json DefectsJson(const Inspection& inspection) {
  Json columns = {"#", "text 1", "text 2"};
  for (int value = 1; value <= 8; ++value) columns.push_back("value " + std::to_string(value));
  for (int number = 1; number <= 3; ++number) columns.push_back("number " + std::to_string(number));
  columns.push_back("entries");
  Json rows = Json::array();
  for (const stDefectExtern* defect : inspection.Descriptor().defects) {
    Json row = {
        std::to_string(rows.size() + 1), ToUtf8(defect->firstText), ToUtf8(defect->secondText)};
    for (const double value : defect->values) row.push_back(Number(value));
    for (const std::uint32_t number : defect->numbers) row.push_back(std::to_string(number));
    row.push_back(std::to_string(defect->subEntries.size()));
    rows.push_back(std::move(row));
  }
  return {{"columns", std::move(columns)}, {"rows", std::move(rows)}};
}

}  // namespace utdata::program
