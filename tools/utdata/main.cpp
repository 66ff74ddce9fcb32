// utdata: makes, shows and checks inspection files, one verb per job.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <new>
#include <sstream>
#include <string>

#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/text.h"
#include "terminal/written.h"
#include "verbs/verbs.h"

namespace {

using namespace utdata::program;

constexpr int jobFailed = 1;
constexpr int wrongUsage = 2;

void DescribeProgram(CLI::App& program) {
  program.set_version_flag("--version", "utdata " UTDATA_VERSION);
  program.require_subcommand(1);
  program.get_formatter()->column_width(34);
  program.footer(
      "'utdata VERB --help' explains a verb. Exit status: 0 done, 1 the job failed, 2 wrong "
      "usage.");
  AddAdoptVerb(program);
  AddCalibrateVerb(program);
  AddCompletionVerb(program);
  AddDemoVerb(program);
  AddEditVerb(program);
  AddExportVerb(program);
  AddGateVerb(program);
  AddImportVerb(program);
  AddInfoVerb(program);
  AddManualVerb(program);
  AddRenderVerb(program);
  AddReportVerb(program);
  AddTreeVerb(program);
  AddVerifyVerb(program);
  AddRescueVerb(program);
}

/// One line that says what is wrong with the command line and where help is.
std::string UsageLine(const CLI::App& program, const CLI::ParseError& error) {
  const auto chosen = program.get_subcommands();
  const std::string verb = chosen.empty() ? "" : " " + chosen.front()->get_name();
  return "utdata" + verb + ": " + Printable(error.what()) + "; see 'utdata" + verb + " --help'\n";
}

int Run(int argc, char** argv) {
  CLI::App program("Makes, shows, draws, exports and checks ultrasonic inspection files.",
                   "utdata");
  DescribeProgram(program);
  try {
    program.parse(argc, argv);
  } catch (const CLI::Success& help) {
    std::ostringstream text;
    const int status = program.exit(help, text, text);
    PrintResult(text.str());
    return status;
  } catch (const CLI::ParseError& error) {
    std::fputs(UsageLine(program, error).c_str(), stderr);
    return wrongUsage;
  }
  return 0;
}

/// Opens the standard streams that are closed, so that no other file becomes one of them; reading
/// and writing them fails, as on a closed stream.
void TakeClosedStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    const int useless = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    if (open("/dev/null", useless) < 0) return;
  }
}

int Fail(const char* why, int status) {
  std::fprintf(stderr, "utdata: %s%s\n", why, WrittenNote());
  return status;
}

int FailInterrupted(const Interrupted& interrupted) {
  std::fprintf(stderr, "utdata: %s%s\n", interrupted.what(), WhatWasWritten().data());
  return interruptedStatus;
}

}  // namespace

int main(int argc, char** argv) {
  TakeClosedStreams();
  EndWhenAFileIsCut();
  EndInOrderWithoutMemory();
  try {
    return Run(argc, argv);
  } catch (const Interrupted& interrupted) {
    return FailInterrupted(interrupted);
  } catch (const Failure& failure) {
    return Fail(LineOf(failure).c_str(), jobFailed);
  } catch (const std::bad_alloc&) {
    return Fail("out of memory", jobFailed);
  } catch (const std::exception& failure) {
    return Fail(failure.what(), jobFailed);
  }
}
