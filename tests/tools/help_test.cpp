// What the program says of itself: help whose examples work when pasted, the manual page, the
// shell's completion.
#include <sstream>

#include "tests/tools/run_program.h"

namespace utdata::test {
namespace {

class HelpTest : public ProgramTest {
 protected:
  /// The verbs, as the program's help lists them.
  [[nodiscard]] std::vector<std::string> Verbs() const {
    std::istringstream help(Run("--help").out);
    std::vector<std::string> verbs;
    bool isListed = false;
    for (std::string line; std::getline(help, line);) {
      if (isListed && !line.starts_with("  ")) break;
      if (isListed && line[2] != ' ') verbs.push_back(line.substr(2, line.find(' ', 2) - 2));
      isListed = isListed || line == "Subcommands:";
    }
    return verbs;
  }

  /// The long options of a verb, as its help lists them.
  [[nodiscard]] std::vector<std::string> Options(const std::string& verb) const {
    std::istringstream help(Run(verb + " --help").out);
    std::vector<std::string> options;
    for (std::string line; std::getline(help, line);)
      if (const std::size_t at = line.find("--");
          line.starts_with("  -") && at != std::string::npos)
        options.push_back(line.substr(at, line.find(' ', at) - at));
    return options;
  }

  /// The commands under "Example:" in a verb's help, but those of other programs that need not be
  /// here.
  [[nodiscard]] std::string Example(const std::string& verb) const {
    std::istringstream help(Run(verb + " --help").out);
    std::string commands;
    bool isExample = false;
    for (std::string line; std::getline(help, line);) {
      if (isExample && line.starts_with("  ") && !line.starts_with("  python3 "))
        commands += line.substr(2) + "\n";
      isExample = isExample ? line.empty() || line.starts_with("  ") : line.starts_with("Example");
    }
    return commands;
  }
};

TEST_F(HelpTest, EveryExampleWorksWhenPasted) {
  const auto verbs = Verbs();
  ASSERT_FALSE(verbs.empty());
  for (const std::string& verb : verbs) {
    const std::string example = Example(verb);
    EXPECT_NE(example.find("utdata " + verb), std::string::npos) << verb << " has no example";
    const ProgramResult result =
        RunShell("sh", "mkdir " + verb + " && cd " + verb + " && set -e\n" + example);
    EXPECT_EQ(result.status, 0) << verb << ":\n" << example << result.error;
  }
}

TEST_F(HelpTest, TextsThatNobodyGetsAreAFailure) {
  for (const std::string arguments :
       {"--help", "--version", "render --help", "manual", "completion bash"}) {
    const ProgramResult result = Run(arguments + " >/dev/full");
    ExpectOneLine(result, 1, "standard output: cannot be written");
  }
}

TEST_F(HelpTest, ManualAndCompletionNameEveryVerbAndOption) {
  const ProgramResult manual = Run("manual");
  const ProgramResult completion = Run("completion bash");
  ASSERT_EQ(manual.status, 0) << manual.error;
  ASSERT_EQ(completion.status, 0) << completion.error;
  for (const std::string& verb : Verbs()) {
    const std::size_t section = manual.out.find(".SS utdata " + verb + "\n");
    ASSERT_NE(section, std::string::npos) << verb;
    const std::string page =
        manual.out.substr(section, manual.out.find("\n.S", section + 1) - section);
    const auto options = Options(verb);
    EXPECT_GE(options.size(), 2U) << verb;
    for (const std::string& option : options) {
      std::string escaped;
      for (const char each : option) escaped += each == '-' ? "\\-" : std::string(1, each);
      EXPECT_NE(page.find(escaped + "\n"), std::string::npos) << verb << " " << option;
      const ProgramResult completed =
          RunShell("bash",
                   "utdata completion bash > c && . ./c\nCOMP_WORDS=(utdata " + verb + " " +
                       option + ")\nCOMP_CWORD=2\n_utdata\necho \" ${COMPREPLY[*]} \"");
      EXPECT_NE(completed.out.find(" " + option + " "), std::string::npos)
          << verb << " " << completed.error;
    }
  }
}

TEST_F(HelpTest, CompletionOffersTheWordsThatAnOptionTakes) {
  const ProgramResult completed =
      RunShell("bash",
               "utdata completion bash > c && . ./c\nCOMP_WORDS=(utdata edit --as "
               "c)\nCOMP_CWORD=3\n_utdata\necho \"${COMPREPLY[*]}\"");
  EXPECT_EQ(completed.out, "companion\n") << completed.error;
}

}  // namespace
}  // namespace utdata::test
