#include "listing/selector.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <vector>

#include "listing/data_rows.h"
#include "listing/info.h"
#include "terminal/failure.h"
#include "terminal/output.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

std::string WithoutBlanksBehind(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

/// Whether a field has the value that a text names; texts count without the blanks behind them.
bool HasValue(const Json& field, const std::string& wanted) {
  if (field.is_string())
    return WithoutBlanksBehind(field.get<std::string>()) == WithoutBlanksBehind(wanted);
  const Json value = Json::parse(wanted, nullptr, false);
  return !value.is_discarded() && value == field;
}

bool HasAllPairs(const Json& record, const std::string& selector) {
  std::size_t at = 0;
  while (at <= selector.size()) {
    const std::size_t end = std::min(selector.find(',', at), selector.size());
    const std::string pair = selector.substr(at, end - at);
    const std::size_t equals = pair.find('=');
    if (equals == std::string::npos) return false;
    std::string name = pair.substr(0, equals);
    std::replace(name.begin(), name.end(), '-', '_');
    const auto field = record.find(name);
    if (field == record.end() || !HasValue(*field, pair.substr(equals + 1))) return false;
    at = end + 1;
  }
  return true;
}

bool IsIndex(const std::string& selector, std::size_t& index) {
  const char* end = selector.data() + selector.size();
  const auto [at, error] = std::from_chars(selector.data(), end, index);
  return error == std::errc() && at == end;
}

std::vector<std::size_t> Matches(const std::vector<Json>& rows, const std::string& selector) {
  std::vector<std::size_t> matches;
  std::size_t wanted = 0;
  const bool byIndex = IsIndex(selector, wanted);
  for (std::size_t index = 0; index < rows.size(); ++index)
    if (byIndex ? index == wanted : HasAllPairs(rows[index], selector)) matches.push_back(index);
  return matches;
}

std::vector<Json> RowsOf(const Inspection& inspection) {
  if (inspection.Data().empty())
    throw Failure(inspection.Path(), "nothing can be selected", "it has no data group");
  std::vector<Json> rows;
  for (const DataGroup& group : inspection.Data()) rows.push_back(DataRowJson(group));
  return rows;
}

}  // namespace

std::size_t SelectRow(const std::vector<Json>& rows,
                      const std::string& selector,
                      const std::string& file,
                      const std::string& what,
                      const std::function<std::string()>& list) {
  const std::vector<std::size_t> matches = Matches(rows, selector);
  if (matches.size() == 1) return matches.front();
  PrintResult(list());
  const std::string which =
      matches.empty() ? "no " + what : std::to_string(matches.size()) + " " + what + "s";
  throw Failure(file,
                "'" + selector + "' matches " + which,
                "name one of those listed by its number, or by ids as in class=1,channel=0");
}

DataGroup SelectGroup(const Inspection& inspection, const std::string& selector) {
  return inspection
      .Data()[SelectRow(RowsOf(inspection), selector, inspection.Path(), "data group", [&] {
        return DataGroupTable(inspection);
      })];
}

std::vector<DataGroup> SelectChannels(const Inspection& inspection, const std::string& selector) {
  std::vector<DataGroup> channels;
  for (const std::size_t index : Matches(RowsOf(inspection), selector)) {
    const DataGroup& group = inspection.Data()[index];
    if (!group.HasAScans()) continue;
    const DataGroup channel = group.Master().value_or(group);
    const bool isThere = std::any_of(channels.begin(), channels.end(), [&](const DataGroup& other) {
      return &other.Item() == &channel.Item();
    });
    if (!isThere) channels.push_back(channel);
  }
  if (channels.empty()) channels.push_back(SelectGroup(inspection, selector));
  return channels;
}

}  // namespace utdata::program
