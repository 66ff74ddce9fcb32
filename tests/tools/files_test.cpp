// What the program does to files around those that it is asked for: whatever is closed, in the way
// or oddly named, nothing is lost.
#include <filesystem>
#include <string>
#include <vector>

#include "platform/os/path.h"
#include "run_program.h"
#include "tests/support/effort.h"
#include "tests/support/small_disk.h"

namespace utdata::test {
namespace {

namespace fs = std::filesystem;

/// A command that reads NAME.fpd or NAME.raw, and what it makes.
struct Command {
  std::string arguments;
  std::string made;  ///< empty for nothing
  bool appends = false;
};

const std::vector<Command> allCommands = {
    {"info NAME.fpd", ""},
    {"tree NAME.fpd", ""},
    {"verify NAME.fpd", ""},
    {"render NAME.fpd --data 0 --view c -o NAME.png", "NAME.png"},
    {"report NAME.fpd -o NAME.html", "NAME.html"},
    {"export NAME.fpd --data 0 -o NAME.npy", "NAME.npy"},
    {"export NAME.fpd --data 0 -o NAME-2.npy", "NAME-2.json"},
    {"export NAME.fpd --data 0 -o NAME.h5", "NAME.h5"},
    {"import NAME.raw -o NAME-new.fpd --shape 4,5,60 --axes row,column,sample --dtype u8",
     "NAME-new.fpd"},
    {"gate NAME.fpd --channel 0 --gate 1 --start 0.1 --width 0.2 --as new -o NAME-gate.fpd",
     "NAME-gate.fpd"},
    {"edit NAME.fpd channel 0 gain=20 --as new -o NAME-edit.fpd", "NAME-edit.fpd"},
    {"edit NAME.fpd channel 0 gain=20 --as companion", "NAME.A01"},
    {"rescue NAME.fpd -o NAME-rescued.fpd", "NAME-rescued.fpd"},
};

/// What makes no file of its own, or several.
const std::vector<Command> otherCommands = {
    {"edit NAME.fpd channel 0 gain=20 --as append", "", true},
    {"gate NAME.fpd --channel 0 --gate 1 --start 0.1 --width 0.2 --as append", "", true},
    {"info NAME.fpd --json --hash --history", ""},
    {"edit NAME.fpd channel 0", ""},
    {"adopt NAME.fpd", ""},
    {"--version", ""},
    {"render --help", ""},
};

std::string Named(std::string text, const std::string& name) {
  for (std::size_t at = 0; (at = text.find("NAME", at)) != std::string::npos; at += name.size())
    text.replace(at, 4, name);
  return text;
}

class FilesTest : public ProgramTest {
 protected:
  void MakeInspection(const std::string& name) {
    WriteFile(At(name + ".raw"), std::string(1200, 'r'));
    ASSERT_EQ(Run("import '" + name + ".raw' -o '" + name +
                  ".fpd' --shape 4,5,60 --axes row,column,sample --dtype u8 --sample-step 20")
                  .status,
              0);
    m_made = Names();
  }
  void RemoveAllElse() const {
    for (const std::string& name : Names())
      if (!m_made.contains(name)) fs::remove_all(At(name));
  }
  /// Without what needs HDF5 where the program has none.
  [[nodiscard]] std::vector<Command> Commands() const {
    std::vector<Command> commands = allCommands;
    if (Run("export none.fpd --data 0 -o none.h5").error.find("needs HDF5") != std::string::npos)
      std::erase_if(commands, [](const Command& each) { return each.made.ends_with(".h5"); });
    return commands;
  }

  std::set<std::string> m_made;
};

TEST_F(FilesTest, ClosedStandardStreamsAreNotTakenForFiles) {
  MakeInspection("scan");
  const std::string content = ReadFile(At("scan.fpd"));
  std::vector<Command> commands = Commands();
  commands.insert(commands.end(), otherCommands.begin(), otherCommands.end());
  std::uint64_t runs = 0;
  for (const Command& command : commands) {
    const std::string arguments = Named(command.arguments, "scan");
    for (const std::string closed :
         {"0<&-", "1>&-", "2>&-", "0<&- 1>&-", "0<&- 2>&-", "1>&- 2>&-", "0<&- 1>&- 2>&-"}) {
      SCOPED_TRACE(arguments + " " + closed);
      // Where a run takes long, every third one.
      if (++runs % 3 != 0 && Repetitions(10) < 10) continue;
      const bool isHeard = closed.find("1>&-") == std::string::npos;
      EXPECT_EQ(Run(arguments + " " + closed).status, isHeard ? 0 : 1)
          << "a result that nobody can read is a failure";
      if (command.appends) {
        EXPECT_TRUE(ReadFile(At("scan.fpd")) != content);
        EXPECT_EQ(Run("verify scan.fpd").status, 0);
        WriteFile(At("scan.fpd"), content);
      }
      ASSERT_TRUE(ReadFile(At("scan.fpd")) == content);
      const std::string made = Named(command.made, "scan");
      if (!made.empty()) {
        EXPECT_TRUE(fs::exists(At(made)));
      }
      if (made.ends_with(".fpd")) {
        EXPECT_EQ(Run("verify " + made).status, 0);
      }
      RemoveAllElse();
    }
  }
  ReportCampaign(std::to_string(runs) + " runs with closed streams", 0);
}

TEST_F(FilesTest, NamesBeyondAsciiStandWhereverAPathCan) {
  const std::vector<std::string> more = {"import NAME.npy -o NAME-npy.fpd",
                                         "demo --out NAME-demo",
                                         "verify NAME-demo/weld.fpd NAME.fpd"};
  for (const std::string locale : {"C", "C.UTF-8"}) {
    const std::string name = "溶接 prüf";
    MakeInspection(name);
    const auto run = [&](const std::string& arguments) {
      return RunShell("sh", "LC_ALL=" + locale + " utdata " + Named(arguments, "'" + name + "'"));
    };
    for (const Command& command : Commands()) {
      const ProgramResult result = run(command.arguments);
      EXPECT_EQ(result.status, 0) << command.arguments << ": " << result.error;
      EXPECT_TRUE(fs::exists(At(Named(command.made, name))));
    }
    for (const std::string& arguments : more) {
      if (locale != "C") continue;  // they take long
      const ProgramResult result = run(arguments);
      EXPECT_EQ(result.status, 0) << arguments << ": " << result.error;
    }
    m_made.clear();
    RemoveAllElse();
  }
}

TEST_F(FilesTest, WhatStandsInTheWayStaysAsItIs) {
  MakeInspection("scan");
  const std::string victim(5000, 'v');
  WriteFile(At("victim"), victim);
  fs::create_directory(At("folder"));
  m_made.insert({"victim", "folder"});
  std::uint64_t runs = 0;
  for (const Command& command : Commands()) {
    if (command.made.empty()) continue;
    const std::string part = Named(command.made, "scan") + ".part";
    const std::string arguments = Named(command.arguments, "scan");
    for (const std::string make : {"ln -s victim",
                                   "ln victim",
                                   "cp victim",
                                   "ln -s nothing",
                                   "ln -s folder",
                                   "mkdir",
                                   "mkfifo"}) {
      SCOPED_TRACE(arguments + ", " + make);
      if (++runs % 3 != 0 && Repetitions(10) < 10) continue;
      ASSERT_EQ(RunShell("sh", make + " " + part).status, 0);
      ExpectOneLine(Run(arguments), 1, part);
      EXPECT_TRUE(fs::exists(fs::symlink_status(At(part))));
      if (!arguments.ends_with("companion")) {  // which knows no --force
        EXPECT_NE(Run(arguments + " --force").status, 2);
      }
      EXPECT_EQ(ReadFile(At("victim")), victim);
      EXPECT_FALSE(fs::exists(At("nothing")));
      EXPECT_TRUE(fs::is_empty(At("folder")));
      RemoveAllElse();
    }
  }
  ReportCampaign(std::to_string(runs) + " files in the way", 0);
}

/// What a killed writer left has no owner any more; what one at work has locked is his.
TEST_F(FilesTest, AnUnfinishedInspectionIsReplacedUnlessItsWriterIsAtWork) {
  MakeInspection("scan");
  std::string unfinished = "\xD5UTDpart: an unfinished inspection file\n";
  for (const Command& command : Commands()) {
    if (!command.made.ends_with(".fpd") && !command.made.ends_with(".A01")) continue;
    const fs::path part = At(Named(command.made, "scan") + ".part");
    const std::string arguments = Named(command.arguments, "scan");
    for (const std::size_t size : {std::size_t{0}, unfinished.size(), std::size_t{4096}}) {
      std::string left = unfinished;
      left.resize(size);
      WriteFile(part, left);
      ExpectOneLine(
          RunShell("sh",
                   "exec 9<'" + part.string() + "'; flock -n 9 || exit 9; utdata " + arguments),
          1,
          "another writer is creating it");
      EXPECT_EQ(ReadFile(part), left);
      EXPECT_EQ(Run(arguments).status, 0) << arguments << ", " << size << " bytes are left";
      EXPECT_FALSE(fs::exists(part));
      RemoveAllElse();
    }
  }
}

TEST_F(FilesTest, AFileThatIsReplacedHandsItsPermissionsOn) {
  MakeInspection("scan");
  const auto permissions = static_cast<fs::perms>(0640);
  for (const Command& command : Commands()) {
    if (command.made.empty() || command.made.ends_with(".A01")) continue;
    const std::string made = Named(command.made, "scan");
    WriteFile(At(made), "old");
    fs::permissions(At(made), permissions);
    EXPECT_EQ(Run(Named(command.arguments, "scan") + " --force").status, 0) << made;
    EXPECT_NE(ReadFile(At(made)), "old");
    EXPECT_EQ(fs::status(At(made)).permissions(), permissions) << made;
  }
}

/// Samples whose memory is gone when they are read, as those of a file that was cut: holes of a
/// file on a disk that is too full to fill them.
TEST_F(FilesTest, AFileThatIsCutWhileItIsReadEndsTheProgramInOrder) {
  const SmallDisk disk(1 << 20);
  if (!disk.IsMounted()) GTEST_SKIP() << "this machine mounts no file systems for a test";
  const std::string file = os::NarrowPath(disk / L"scan.fpd");
  WriteFile(At("zeros.raw"), std::string(8 << 20, '\0'));
  ASSERT_EQ(
      Run("import zeros.raw -o " + file + " --shape 64,64,2048 --axes row,column,sample --dtype u8")
          .status,
      0);
  WriteFile(os::NarrowPath(disk / L"rest"), std::string(1 << 20, 'x'));
  for (const std::string arguments :
       {"render FILE --data 0 --view c -o scan.png",
        "export FILE --data 0 -o scan.npy",
        "gate FILE --channel 0 --gate 1 --start 0.1 --width 0.2 --as new -o gate.fpd",
        "edit FILE channel 0 gain=20 --as new -o edit.fpd"}) {
    std::string words = arguments;
    ExpectOneLine(Run(words.replace(words.find("FILE"), 4, file)), 1, "was cut short or lost");
    EXPECT_EQ(Names(), std::set<std::string>{"zeros.raw"}) << arguments;
  }
}

}  // namespace
}  // namespace utdata::test
