#include <algorithm>
#include <sstream>
#include <string>

#include "terminal/output.h"
#include "verbs/declared.h"
#include "verbs/verbs.h"

namespace utdata::program {
namespace {

struct Escape {
  char character;
  const char* text;
};
constexpr Escape escapes[] =
    {{'\\', "\\e"}, {'-', "\\-"}, {'\'', "\\(aq"}, {'^', "\\(ha"}, {'~', "\\(ti"}, {'`', "\\(ga"}};

/// A text that troff takes literally, on lines of its own.
std::string Literal(const std::string& text) {
  std::string result;
  bool isLineStart = true;
  for (const char each : text) {
    if (isLineStart && (each == '.' || each == '\'')) result += "\\&";
    isLineStart = each == '\n';
    const auto* const known = std::ranges::find(escapes, each, &Escape::character);
    if (known != std::end(escapes))
      result += known->text;
    else
      result += each;
  }
  return result;
}

/// Lines that keep their breaks; leading and trailing empty lines go.
std::string Unfilled(const std::string& text) {
  const std::size_t first = text.find_first_not_of('\n');
  if (first == std::string::npos) return {};
  return ".nf\n" + Literal(text.substr(first, text.find_last_not_of('\n') + 1 - first)) + "\n.fi\n";
}

void Arguments(std::ostream& page, const CLI::App& verb) {
  const CLI::Formatter formatter;
  for (const bool isPositional : {true, false})
    for (const CLI::Option* option : isPositional ? PositionalsOf(verb) : OptionsOf(verb)) {
      page << ".TP\n.B " << Literal(formatter.make_option_name(option, isPositional)) << "\n";
      const std::string type = formatter.make_option_opts(option);
      if (const std::size_t at = type.find_first_not_of(' '); at != std::string::npos)
        page << ".RI ( "
             << "\"" << Literal(type.substr(at)) << "\" )\n";
      page << Literal(option->get_description()) << "\n";
    }
}

std::string Page(const CLI::App& program) {
  std::ostringstream page;
  page << ".TH UTDATA 1 \"\" \"utdata " UTDATA_VERSION "\" \"User Commands\"\n";
  page << ".SH NAME\nutdata \\- " << Literal(program.get_description()) << "\n";
  page << ".SH SYNOPSIS\n.B utdata\n.I VERB\n[\\fIOPTIONS\\fR] [\\fIARGUMENTS\\fR]\n.SH VERBS\n";
  for (const CLI::App* verb : ListedVerbs(program)) {
    page << ".SS utdata " << Literal(verb->get_name()) << "\n"
         << Literal(verb->get_description()) << ".\n";
    Arguments(page, *verb);
    if (!verb->get_footer().empty()) page << ".PP\n" << Unfilled(verb->get_footer());
  }
  page << ".SH NOTES\n" << Literal(program.get_footer()) << "\n";
  return page.str();
}

}  // namespace

void AddManualVerb(CLI::App& program) {
  CLI::App& verb =
      *program.add_subcommand("manual", "Prints the manual page, made from what the verbs declare");
  verb.group(hiddenVerbs);
  verb.footer("Example:\n  utdata manual > utdata.1\n");
  verb.callback([&program] { PrintResult(Page(program)); });
}

}  // namespace utdata::program
