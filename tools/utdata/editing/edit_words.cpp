#include "editing/edit_words.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace utdata::program {
namespace {

template <class Number>
bool IsWhole(const std::string& text, Number& value) {
  const char* end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && at == end;
}

}  // namespace

CLI::ValidationError WrongUsage(const std::string& about, const std::string& why) {
  return CLI::ValidationError(about, why);
}

EditWords SplitWords(const std::vector<std::string>& words, bool needsSelector) {
  EditWords split;
  auto word = words.begin();
  const bool selected =
      word != words.end() && (needsSelector || word->find('=') == std::string::npos);
  if (needsSelector && !selected) throw WrongUsage("SELECTOR", "is missing");
  split.selector = selected ? *word++ : "0";
  for (; word != words.end(); ++word) {
    const std::size_t equals = word->find('=');
    if (equals == std::string::npos) throw WrongUsage(*word, "is not KEY=VALUE");
    const std::string key = word->substr(0, equals);
    for (const auto& value : split.values)
      if (value.first == key) throw WrongUsage(key, "is given twice");
    split.values.emplace_back(key, word->substr(equals + 1));
  }
  return split;
}

bool IsIndex(const std::string& selector, std::size_t& index) { return IsWhole(selector, index); }

bool HasIds(const IdPairs& ids, const std::string& selector) {
  for (std::size_t at = 0; at <= selector.size();) {
    const std::size_t end = std::min(selector.find(',', at), selector.size());
    const std::string pair = selector.substr(at, end - at);
    const std::size_t equals = std::min(pair.find('='), pair.size());
    std::string name = pair.substr(0, equals);
    std::replace(name.begin(), name.end(), '-', '_');
    std::uint32_t value = 0;
    if (equals == pair.size() || !IsWhole(pair.substr(equals + 1), value)) return false;
    if (std::none_of(ids.begin(), ids.end(), [&](const auto& id) {
          return id.first == name && id.second == value;
        }))
      return false;
    at = end + 1;
  }
  return true;
}

}  // namespace utdata::program
