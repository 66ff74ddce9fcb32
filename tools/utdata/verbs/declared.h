// What the verbs declare of themselves, for texts that are made from it.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace utdata::program {

/// The group of verbs that people call once, if ever; the list of verbs leaves them out.
inline constexpr const char* hiddenVerbs = "";

/// The verbs that the program's help lists, in its order.
[[nodiscard]] std::vector<const CLI::App*> ListedVerbs(const CLI::App& program);

/// The options of a verb that begin with a dash, in its order.
[[nodiscard]] std::vector<const CLI::Option*> OptionsOf(const CLI::App& verb);
/// Its other arguments.
[[nodiscard]] std::vector<const CLI::Option*> PositionalsOf(const CLI::App& verb);

/// The words that an argument's type lists, "append|companion|new" or "TEXT:{time,path}"; empty
/// when it takes any.
[[nodiscard]] std::vector<std::string> ChoicesOf(const CLI::Option& option);

}  // namespace utdata::program
