#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

#include "tests/e2e/cli/checkout_fixture.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {

/// What the installed scripts offer in a shell, with a server behind them.
class Completion : public CheckoutTest {
 protected:
  void SetUp() override {
    Serve();
    std::filesystem::create_directory(Home("bin"));
    ASSERT_EQ(symlink(VTDIRECT_PROGRAM, Home("bin/vtdirect").c_str()), 0);
    environment_["PATH"] = Home("bin") + ":/usr/bin:/bin";
    environment_["VTDIRECT_SERVER_plm"] = server().url();
  }

  [[nodiscard]] static bool HasShell(const std::string& shell) {
    return std::filesystem::exists("/usr/bin/" + shell) || std::filesystem::exists("/bin/" + shell);
  }

  [[nodiscard]] std::string Shell(const std::string& shell, const std::string& script) {
    Process process({"/usr/bin/env", shell, "-c", script}, ProcessOptions{environment_, Here(""), "", 0});
    return process.Wait().out;
  }

  // What bash offers for the last word of a line.
  [[nodiscard]] std::string InBash(const std::string& words, int at, const std::string& before = {}) {
    return Shell("bash",
                 before + "compopt() { :; }\nsource " CLI_FOLDER "/vtdirect.bash-completion\nCOMP_WORDS=(" +
                     words + ")\nCOMP_CWORD=" + std::to_string(at) +
                     "\n_vtdirect vtdirect\nprintf '%s\\n' \"${COMPREPLY[@]}\"\n");
  }

  [[nodiscard]] std::string InZsh(const std::string& words, int at, const std::string& prefix,
                                  const std::string& before = {}) {
    return Shell("zsh",
                 before +
                     "compadd() { while [[ \"$1\" != -- ]]; do shift; done; shift; print -rl -- \"$@\" }\n"
                     "_describe() { print -rl -- \"${(P@)2}\" }\n_files() { print local files }\n_message() "
                     "{ }\nwords=(" +
                     words + ")\nCURRENT=" + std::to_string(at) + "\nPREFIX=" + prefix +
                     "\nsource " CLI_FOLDER "/vtdirect.zsh-completion\n");
  }

  [[nodiscard]] std::string InFish(const std::string& line, const std::string& before = {}) {
    return Shell("fish",
                 before + "source " CLI_FOLDER "/vtdirect.fish-completion; complete -C \"" + line + "\"");
  }
};

TEST_F(Completion, OfBashOffersCommandsOptionsNicknamesAndWhatAFolderHolds) {
  EXPECT_THAT(InBash("vtdirect chec", 1), HasSubstr("checkout\n"));
  EXPECT_THAT(InBash("vtdirect get --out", 2), HasSubstr("--output\n"));
  EXPECT_EQ(InBash("vtdirect doctor pl", 2), "plm\n");
  EXPECT_EQ(InBash("vtdirect get //", 2), "//plm/\n");
  EXPECT_EQ(InBash("vtdirect get '//plm/Products/Trek'", 2), "//plm/Products/Trekking Bike/\n");
  EXPECT_EQ(InBash("vtdirect get '//plm/Products/Trekking Bike/Folders/Frame/fo'", 2),
            std::string("//plm") + (forkPath + 5) + "\n");
}

TEST_F(Completion, OfBashOffersLocalFilesWhereACommandTakesThem) {
  WriteFile(Here("drawing.lxz"), "");
  EXPECT_EQ(InBash("vtdirect put draw", 2), "drawing.lxz\n");
  EXPECT_EQ(InBash("vtdirect get draw", 2), "\n");
}

TEST_F(Completion, OfBashOffersTheValuesThatThereAre) {
  EXPECT_EQ(InBash("vtdirect servers --sort ''", 3), "nickname\nurl\n");
  EXPECT_EQ(InBash("vtdirect put --kind g", 3), "general\n");
  EXPECT_EQ(InBash("vtdirect checkouts --on p", 3), "plm\n");
}

// There the name of a file stands for its document.
TEST_F(Completion, OfBashOffersTheFilesOfAWorkFolder) {
  ASSERT_EQ(Run({"clone", "//sim/Products/Trekking Bike/Folders/Frame/"}).status, 0);
  const std::string go = "cd Frame; ";
  for (const char* command : {"checkout", "commit"}) {
    EXPECT_EQ(InBash(std::string("vtdirect ") + command + " fo", 2, go), "fork.lxz\n") << command;
    EXPECT_EQ(InBash(std::string("vtdirect ") + command + " .v", 2, go), "\n") << command;
  }
  EXPECT_EQ(InBash("vtdirect info //plm/Products/Trek", 2, go), "//plm/Products/Trekking Bike/\n");
  EXPECT_THAT(InBash("vtdirect info ''", 2, go), AllOf(HasSubstr("fork.lxz\n"), HasSubstr("//plm/\n")));
  if (HasShell("zsh")) {
    EXPECT_THAT(InZsh("vtdirect checkout fo", 3, "fo", go), HasSubstr("local files\n"));
  }
  if (HasShell("fish")) {
    EXPECT_THAT(InFish("vtdirect checkout fo", go), HasSubstr("fork.lxz\n"));
  }
}

// A line feed in its path must not keep the search for one going.
TEST_F(Completion, OfFishEndsInADirectoryOfAnyName) {
  if (!HasShell("fish")) GTEST_SKIP() << "fish is not installed";
  std::filesystem::create_directories(Here("a\nb/c"));
  EXPECT_THAT(InFish("vtdirect checkout //", "cd (printf 'a\\nb/c' | string collect); "),
              HasSubstr("//plm/\n"));
}

// A name is whatever somebody has called a document.
TEST_F(Completion, RunsNothingThatADocumentIsCalled) {
  WriteFile(Here("$(touch hacked)`touch hacked`.lxz"), "x");
  ASSERT_EQ(
      Run({"put", "$(touch hacked)`touch hacked`.lxz", "//sim/Products/Trekking Bike/Folders/Frame/"}).status,
      0);
  const std::string folder = "'//plm/Products/Trekking Bike/Folders/Frame/$'";
  EXPECT_THAT(InBash("vtdirect get " + folder, 2), HasSubstr("$(touch hacked)"));
  if (HasShell("zsh")) {
    EXPECT_THAT(InZsh("vtdirect get " + folder, 3, folder), HasSubstr("$(touch hacked)"));
  }
  EXPECT_FALSE(std::filesystem::exists(Here("hacked")));
}

TEST_F(Completion, OffersNothingOfAServerThatIsSilent) {
  Serve({"--fault", "GET *=stall"});
  environment_["VTDIRECT_SERVER_plm"] = server().url();
  EXPECT_EQ(InBash("vtdirect get //plm/Products/", 2), "\n");
  EXPECT_EQ(InBash("vtdirect get //", 2), "//plm/\n") << "nicknames take no server";
}

TEST_F(Completion, OfZshOffersTheSame) {
  if (!HasShell("zsh")) GTEST_SKIP() << "zsh is not installed";
  EXPECT_THAT(InZsh("vtdirect chec", 2, "chec"), HasSubstr("checkout:Check a document out\n"));
  EXPECT_THAT(InZsh("vtdirect xliff ''", 3, "''"), HasSubstr("publish:"));
  EXPECT_THAT(InZsh("vtdirect get --out", 3, "--out"), HasSubstr("--output:"));
  EXPECT_THAT(InZsh("vtdirect doctor pl", 3, "pl"), HasSubstr("plm\n"));
  EXPECT_EQ(InZsh("vtdirect put --kind g", 4, "g"), "fenlet\ngeneral\nugc\n");
  EXPECT_THAT(InZsh("vtdirect checkouts --on p", 4, "p"), HasSubstr("plm\n"));
  EXPECT_THAT(InZsh("vtdirect get //", 3, "//"), HasSubstr("//plm/\n"));
  EXPECT_THAT(InZsh("vtdirect get //plm/Products/", 3, "//plm/Products/"),
              HasSubstr("//plm/Products/Trekking Bike/\n"));
}

TEST_F(Completion, OfFishOffersTheSame) {
  if (!HasShell("fish")) GTEST_SKIP() << "fish is not installed";
  EXPECT_THAT(InFish("vtdirect chec"), HasSubstr("checkout\tCheck a document out\n"));
  EXPECT_THAT(InFish("vtdirect xliff "), HasSubstr("publish\t"));
  EXPECT_THAT(InFish("vtdirect get --out"), HasSubstr("--output"));
  EXPECT_THAT(InFish("vtdirect doctor pl"), HasSubstr("plm\n"));
  EXPECT_THAT(InFish("vtdirect put --kind g"), HasSubstr("general\t"));
  EXPECT_THAT(InFish("vtdirect checkouts --on p"), HasSubstr("plm"));
  EXPECT_THAT(InFish("vtdirect get //"), HasSubstr("//plm/\n"));
  EXPECT_THAT(InFish("vtdirect get //plm/Products/"), HasSubstr("//plm/Products/Trekking Bike/\n"));
}

}  // namespace vtdirect_test
