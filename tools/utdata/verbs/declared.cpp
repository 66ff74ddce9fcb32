#include "verbs/declared.h"

#include <algorithm>

namespace utdata::program {

std::vector<const CLI::App*> ListedVerbs(const CLI::App& program) {
  return program.get_subcommands(
      [](const CLI::App* verb) { return verb->get_group() != hiddenVerbs; });
}

std::vector<const CLI::Option*> OptionsOf(const CLI::App& verb) {
  return verb.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

std::vector<const CLI::Option*> PositionalsOf(const CLI::App& verb) {
  return verb.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::vector<std::string> ChoicesOf(const CLI::Option& option) {
  std::string type = option.get_type_name();
  if (const std::size_t open = type.find('{'); open != std::string::npos)
    type = type.substr(open + 1, type.find('}') - open - 1);
  else if (type.find('|') == std::string::npos)
    return {};
  std::replace(type.begin(), type.end(), '|', ',');
  return CLI::detail::split(type, ',');
}

}  // namespace utdata::program
