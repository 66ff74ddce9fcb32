#include "report/report.h"

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "listing/damage.h"
#include "listing/history.h"
#include "report/page.h"
#include "report/projections.h"
#include "report/sectors.h"
#include "report/tables.h"
#include "report/views.h"
#include "terminal/text.h"
#include "utdata/arrays.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

std::string FileName(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}

/// JSON within a script element: nothing in it can end the element.
std::string JsonText(const Json& json) {
  std::string text;
  for (const char character : json.dump())
    if (character == '<')
      text += "\\u003c";
    else
      text += character;
  return text;
}

std::string TitleOf(const Inspection& inspection) {
  for (const CGInfoTypeDescr* info : inspection.Descriptor().infos)
    if (!info->title.empty()) return ToUtf8(info->title);
  return FileName(inspection.Path());
}

/// Levels in decibels are a straight line over the decades of percent: where it is at full scale,
/// and how far it rises a decade.
Json DecibelsJson(const Inspection& inspection) {
  for (const DataGroup& group : inspection.Data())
    if (group.HoldsAmplitudes())
      return {{"full", group.Decibels(100)},
              {"perDecade", group.Decibels(100) - group.Decibels(10)}};
  return nullptr;
}

/// Lines that are said of many beams alike, once.
std::vector<std::string> Gathered(const std::vector<std::string>& lines) {
  std::vector<std::string> gathered;
  for (auto line = lines.begin(); line != lines.end();) {
    const auto end =
        std::find_if(line, lines.end(), [&](const auto& other) { return other != *line; });
    const auto times = end - line;
    gathered.push_back(*line + (times > 1 ? " (" + std::to_string(times) + " times)" : ""));
    line = end;
  }
  return gathered;
}

void Replace(std::string& page, std::string_view mark, std::string_view text) {
  const std::size_t at = page.find(mark);
  if (at != std::string::npos) page.replace(at, mark.size(), text);
}

}  // namespace

Report MakeReport(const Inspection& inspection, const ReportOptions& options) {
  ReportViews views = MakeViews(inspection, options.sampleLimit, options.quiet);
  Json sectors = MakeSectors(inspection, views, options.quiet);
  Json projections = MakeProjections(inspection, views, options.quiet);
  for (std::string& line : DamageLines(inspection)) views.missing.push_back(std::move(line));
  views.missing = Gathered(views.missing);
  Json files = Json::array();
  for (const std::string& file : inspection.Files()) files.push_back(FileName(file));
  const Json facts = {
      {"title", TitleOf(inspection)},
      {"files", std::move(files)},
      {"maker", "utdata " UTDATA_VERSION},
      {"tables", TablesJson(inspection)},
      {"decibels", DecibelsJson(inspection)},
      {"millimetresPerInch", FindArrayUnit("mm")->perBase / FindArrayUnit("in")->perBase},
      {"views", views.views},
      {"sectors", std::move(sectors)},
      {"projections", std::move(projections)},
      {"missing", views.missing},
      {"defects", DefectsJson(inspection)},
      {"history", HistoryJson(inspection)}};
  std::string values;
  for (std::size_t index = 0; index < views.packed.size(); ++index)
    values += "<script type=\"text/plain\" id=\"values" + std::to_string(index) + "\">" +
              views.packed[index] + "</script>\n";
  Report report = {std::string(PageText()), views.views.size(), std::move(views.missing)};
  Replace(report.html, "/*STYLE*/", StyleText());
  Replace(report.html, "/*PLOTS*/", PlotsText());
  Replace(report.html, "/*VIEWS*/", ViewsText());
  Replace(report.html, "/*SECTOR*/", SectorText());
  Replace(report.html, "/*PROJECTION*/", ProjectionText());
  Replace(report.html, "/*CURSOR*/", CursorText());
  Replace(report.html, "<!--FACTS-->", JsonText(facts));
  Replace(report.html, "<!--VALUES-->", values);
  return report;
}

}  // namespace utdata::program
