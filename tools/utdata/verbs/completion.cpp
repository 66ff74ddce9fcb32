#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "terminal/output.h"
#include "verbs/declared.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

std::string Joined(const std::vector<std::string>& words) { return CLI::detail::join(words, " "); }

/// "-o" and "--output" of an option.
std::vector<std::string> Spellings(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& letter : option.get_snames()) names.push_back("-" + letter);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

/// The case of one verb: the words after an option that lists its own, else the verb's options;
/// files are left to the shell.
std::string VerbCase(const CLI::App& verb) {
  std::ostringstream text;
  std::vector<std::string> all;
  text << "    " << verb.get_name() << ")\n      case $before in\n";
  for (const CLI::Option* option : OptionsOf(verb)) {
    const std::vector<std::string> names = Spellings(*option);
    all.insert(all.end(), names.begin(), names.end());
    if (const auto choices = ChoicesOf(*option); !choices.empty())
      text << "        " << CLI::detail::join(names, "|") << ") words='" << Joined(choices)
           << "' ;;\n";
  }
  std::vector<std::string> positional;
  for (const CLI::Option* option : PositionalsOf(verb))
    for (const std::string& choice : ChoicesOf(*option)) positional.push_back(choice);
  text << "        *) if [[ $word == -* ]]; then words='" << Joined(all) << "'; else words='"
       << Joined(positional) << "'; fi ;;\n      esac ;;\n";
  return text.str();
}

std::string BashCompletion(const CLI::App& program) {
  std::vector<std::string> verbs;
  for (const CLI::App* verb : ListedVerbs(program)) verbs.push_back(verb->get_name());
  std::string cases;
  for (const CLI::App* verb : ListedVerbs(program)) cases += VerbCase(*verb);
  return "# bash completion of utdata, made by 'utdata completion bash'\n"
         "_utdata() {\n"
         "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} words=\n"
         "  COMPREPLY=()\n"
         "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
         "    mapfile -t COMPREPLY < <(compgen -W '" +
         Joined(verbs) +
         " --help --version' -- \"$word\")\n"
         "    return\n"
         "  fi\n"
         "  case ${COMP_WORDS[1]} in\n" +
         cases +
         "  esac\n"
         "  [ -z \"$words\" ] || mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n"
         "}\n"
         "complete -o default -F _utdata utdata\n";
}

}  // namespace

void AddCompletionVerb(CLI::App& program) {
  CLI::App& verb = *program.add_subcommand(
      "completion", "Prints a shell's completion, made from what the verbs declare");
  verb.group(hiddenVerbs);
  const auto shell = std::make_shared<std::string>();
  verb.add_option("SHELL", *shell, "The shell")->required()->check(CLI::IsMember({"bash"}));
  verb.footer("Example:\n  utdata completion bash > utdata.bash\n");
  verb.callback([&program, shell] { PrintResult(BashCompletion(program)); });
}

}  // namespace utdata::program
