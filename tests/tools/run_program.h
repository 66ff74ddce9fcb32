// Runs the built program in a folder of its own.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "tests/support/kept_files.h"

namespace utdata::test {

struct ProgramResult {
  int status = -1;  ///< exit status; -1 when a signal ended the program
  std::string out;
  std::string error;
};

inline std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void WriteFile(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

/// A test in a new folder, which goes with it.
class ProgramTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (ScratchRoot() / "utdata-program-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    m_folder = pattern;
  }
  void TearDown() override {
    RemoveScratch(m_folder);
    std::filesystem::remove_all(m_folder.string() + ".streams");
  }

  [[nodiscard]] std::filesystem::path At(const std::string& name) const { return m_folder / name; }

  /// Runs `utdata ARGUMENTS` in the folder; the arguments are words of the shell.
  [[nodiscard]] ProgramResult Run(const std::string& arguments) const {
    return RunShell("sh", "'" UTDATA_PROGRAM "' " + arguments);
  }

  /// Runs a script in the folder, whose `utdata` is the program.
  [[nodiscard]] ProgramResult RunShell(const std::string& shell, const std::string& script) const {
    const std::filesystem::path streams = m_folder.string() + ".streams";
    std::filesystem::create_directories(streams);
    const std::string programs = std::filesystem::path(UTDATA_PROGRAM).parent_path().string();
    WriteFile(streams / "script",
              "cd '" + m_folder.string() + "' || exit 1\nPATH='" + programs + "':$PATH\n" + script +
                  "\n");
    const std::string command = shell + " '" + (streams / "script").string() + "' >'" +
                                (streams / "out").string() + "' 2>'" +
                                (streams / "error").string() + "' </dev/null";
    const int ended = std::system(command.c_str());
    return {WIFEXITED(ended) ? WEXITSTATUS(ended) : -1,
            ReadFile(streams / "out"),
            ReadFile(streams / "error")};
  }

  /// Runs a verb that must succeed and answer with JSON.
  [[nodiscard]] nlohmann::json RunJson(const std::string& arguments) const {
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.status, 0) << result.error;
    return nlohmann::json::parse(result.out, nullptr, false);
  }

  /// The names in the folder.
  [[nodiscard]] std::set<std::string> Names() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder))
      names.insert(entry.path().filename().string());
    return names;
  }

  std::filesystem::path m_folder;
};

/// A failed job: exit status 1 and, behind warnings, one line that names the file.
inline void ExpectOneLine(const ProgramResult& result, int status, const std::string& named) {
  EXPECT_EQ(result.status, status) << result.error;
  std::string line = result.error;
  while (line.starts_with("warning: ")) line.erase(0, line.find('\n') + 1);
  EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << result.error;
  EXPECT_NE(line.find(named), std::string::npos) << result.error;
}

}  // namespace utdata::test
