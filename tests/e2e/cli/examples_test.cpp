#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

#include "tests/e2e/cli/checkout_fixture.h"

namespace vtdirect_test {
namespace {

// What has to be there before the examples of a command make sense.
const std::map<std::string, std::vector<std::vector<std::string>>> preparations = {
    {"checkin", {{"checkout", forkPath}, {"checkout", "//sim/?id=D1002"}}},
    {"undo", {{"checkout", forkPath}, {"checkout", "//sim/?id=D1002"}}},
    {"verify", {{"checkout", forkPath}, {"checkout", "//sim/?id=D1002"}}},
};

// These want what a test can't give: a mount, a terminal, or a server of the internet's.
const std::set<std::string> elsewhere = {"mount", "refresh", "unmount", "login"};

// These are about a work folder that is there, with a file that was changed.
const std::set<std::string> inWorkFolder = {"st", "pull", "commit", "revert", "diff", "log"};

std::string WithoutServerOfOthers(std::string line, const std::string& url) {
  const std::string other = "https://plm.example/vt";
  const std::size_t at = line.find(other);
  return at == std::string::npos ? line : line.replace(at, other.size(), url);
}

}  // namespace

/// The command lines at the end of the help texts, each run as it is there.
class Examples : public CheckoutTest {
 protected:
  // The commands with the lines, as --help shows them.
  [[nodiscard]] std::map<std::string, std::vector<std::string>> Shown() {
    std::map<std::string, std::vector<std::string>> shown;
    for (const std::string& command : Commands()) {
      std::vector<std::string> words = WordsOf(command);
      words.emplace_back("--help");
      const std::string help = Run(words).out;
      const std::size_t start = help.find("\nExamples:\n");
      EXPECT_NE(start, std::string::npos) << command;
      if (start == std::string::npos) continue;
      std::istringstream lines(help.substr(start + 11));
      for (std::string line; std::getline(lines, line);) shown[command].push_back(line.substr(2));
    }
    return shown;
  }

  static std::vector<std::string> WordsOf(const std::string& command) {
    std::istringstream stream(command);
    return {std::istream_iterator<std::string>(stream), {}};
  }

  // From the list of the program's own help.
  [[nodiscard]] std::vector<std::string> Commands() {
    std::vector<std::string> commands;
    std::istringstream help(Run({"--help"}).out);
    for (std::string line; std::getline(help, line);) {
      if (line.starts_with("Options")) break;
      if (!line.starts_with("  ") || line.starts_with("   ")) continue;
      const std::size_t end = line.find("  ", 2);
      commands.push_back(line.substr(2, end - 2));
    }
    return commands;
  }

  void PrepareFor(const std::string& command) {
    EndServer();
    Serve();
    std::filesystem::remove_all(Home(".local"));
    environment_["VTDIRECT_SERVER_plm"] = server().url();
    WriteFile(Here("drawing.lxz"), "a drawing of " + command);
    WriteFile(
        Here("manual.xlf"),
        "<xliff version='2.0' srcLang='en' xmlns='urn:oasis:names:tc:xliff:document:2.0'><file/></xliff>");
    std::filesystem::remove_all(Here("Frame"));
    if (inWorkFolder.contains(command)) {
      EXPECT_EQ(Run({"clone", "//plm/Products/Trekking Bike/Folders/Frame/", "Frame"}).status, 0) << command;
      WriteFile(Here("Frame/fork.lxz"), "changed");
    }
    const auto preparation = preparations.find(command);
    if (preparation == preparations.end()) return;
    for (const auto& words : preparation->second) {
      EXPECT_EQ(Run(words).status, 0) << command << ": " << testing::PrintToString(words);
    }
  }

  ProcessResult RunLine(const std::string& line, const std::string& directory) {
    Process process({"/bin/sh", "-c", WithoutServerOfOthers(line, server().url())},
                    ProcessOptions{environment_, directory, "", 0});
    return process.Wait();
  }
};

TEST_F(Examples, OfEveryHelpTextDoWhatTheySay) {
  Serve();
  // Programs under the names that the examples use.
  WriteHome("bin/lynx", "#!/bin/sh\nexit 0\n", 0755);
  WriteHome("bin/xdg-open", "#!/bin/sh\nexit 0\n", 0755);
  WriteHome("bin/code", "#!/bin/sh\nprintf edited > \"$2\"\n", 0755);
  WriteHome("bin/editor", "#!/bin/sh\nprintf edited > \"$1\"\n", 0755);
  ASSERT_EQ(symlink(VTDIRECT_PROGRAM, Home("bin/vtdirect").c_str()), 0);
  environment_["PATH"] = Home("bin") + ":/usr/bin:/bin";
  environment_["EDITOR"] = "editor";
  for (const auto& [command, lines] : Shown()) {
    EXPECT_GE(lines.size(), 2U) << command;
    EXPECT_LE(lines.size(), 3U) << command;
    if (elsewhere.contains(command)) continue;
    PrepareFor(command);
    for (std::string line : lines) {
      // A file that others may see is none for a test.
      const std::string own = Home("") + "/";
      for (std::size_t at = line.find("/tmp/"); at != std::string::npos;
           at = line.find("/tmp/", at + own.size())) {
        line.replace(at, 5, own);
      }
      const ProcessResult result = RunLine(line, Here(inWorkFolder.contains(command) ? "Frame" : ""));
      EXPECT_EQ(result.status, 0) << line << "\n" << result.err;
    }
  }
}

}  // namespace vtdirect_test
