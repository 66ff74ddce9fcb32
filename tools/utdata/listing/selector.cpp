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
    const auto field = record.find(pair.substr(0, equals));
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

}  // namespace

DataGroup SelectGroup(const Inspection& inspection, const std::string& selector) {
  if (inspection.Data().empty())
    throw Failure(inspection.Path(), "nothing can be selected", "it has no data group");
  std::vector<DataGroup> matches;
  std::size_t wanted = 0;
  const bool byIndex = IsIndex(selector, wanted);
  for (const DataGroup& group : inspection.Data())
    if (byIndex ? group.Index() == wanted : HasAllPairs(DataRowJson(group), selector))
      matches.push_back(group);
  if (matches.size() == 1) return matches.front();
  PrintResult(DataGroupTable(inspection));
  const std::string which =
      matches.empty() ? "matches no data group" : "matches " + std::to_string(matches.size());
  throw Failure(inspection.Path(),
                "'" + selector + "' " + which,
                "name one of those listed by its number, or by fields as in class=1,channel=0");
}

}  // namespace utdata::program
