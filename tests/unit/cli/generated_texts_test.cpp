#include "hosts/cli/texts/generated_texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>

#include "hosts/cli/failures/exit_code.h"
#include "tests/support/temporary_directory.h"

using testing::HasSubstr;

namespace vtdirect_cli {
namespace {

// "--no-prompt" as the manual page writes it.
std::string Set(std::string text) {
  for (std::size_t at = 0; (at = text.find('-', at)) != std::string::npos; at += 2) text.insert(at, "\\");
  return text;
}

void ExpectNamed(const OptionRow& row, const std::string& help) {
  const std::string name = "--" + std::string(row.name.text());
  EXPECT_THAT(help, HasSubstr(name));
  EXPECT_THAT(ManualPage(), HasSubstr(Set(name)));
  EXPECT_THAT(BashCompletion(), HasSubstr(name));
  EXPECT_THAT(ZshCompletion(), HasSubstr("'" + name + ":"));
  EXPECT_THAT(FishCompletion(), HasSubstr(" -l " + name.substr(2) + " "));
}

}  // namespace

TEST(GeneratedTexts, NameEveryCommandAndEveryOption) {
  for (const OptionRow& row : GlobalOptions()) ExpectNamed(row, HelpText(nullptr));
  for (const CommandRow& row : Commands()) {
    EXPECT_THAT(HelpText(nullptr), HasSubstr("\n  " + std::string(row.name) + " "));
    EXPECT_THAT(ManualPage(), HasSubstr(".SS vtdirect " + Set(row.name)));
    for (const OptionRow& option : row.options) ExpectNamed(option, HelpText(&row));
  }
}

TEST(GeneratedTexts, ListTheCommandsBelowHeadings) {
  const std::string help = HelpText(nullptr);
  EXPECT_THAT(help, HasSubstr("operands]\n\nLook around:\n  ls   "));
  EXPECT_THAT(help, HasSubstr("\n\nWork folders:\n  clone   "));
  for (const HeadingRow& row : Headings()) {
    EXPECT_THAT(help, HasSubstr("\n\n" + std::string(row.heading) + ":\n  " + row.first + " "));
  }
}

TEST(GeneratedTexts, AreAManualPageACommand) {
  for (const CommandRow& row : Commands()) {
    const std::string page = ManualPage(row);
    std::string name = std::string("vtdirect-") + row.name;
    std::replace(name.begin(), name.end(), ' ', '-');
    EXPECT_EQ(NameOfPage(row), name);
    EXPECT_THAT(page, testing::StartsWith(".TH VTDIRECT-")) << name;
    EXPECT_THAT(page, HasSubstr(".SH NAME\n" + Set(name) + " \\- ")) << name;
    for (const OptionRow& option : row.options) {
      EXPECT_THAT(page, HasSubstr("\\-\\-" + Set(option.name.text()))) << name;
    }
    EXPECT_THAT(page, HasSubstr(".SH EXAMPLES\n.PP\n.nf\n")) << name;
    EXPECT_THAT(ManualPage(), HasSubstr(".BR " + Set(name) + " (1)"));
  }
}

// As a formatter reads it: a line that begins with a dot or an apostrophe is a request, and all of them are known.
TEST(GeneratedTexts, HoldNoTextThatAFormatterTakesForARequest) {
  const std::set<std::string> known = {".TH", ".SH", ".SS", ".PP", ".TP", ".B", ".BR", ".I", ".nf", ".fi"};
  for (const CommandRow& row : Commands()) {
    std::istringstream page(ManualPage(row));
    for (std::string line; std::getline(page, line);) {
      EXPECT_FALSE(line.starts_with("'")) << line;
      const bool isRequest = line.starts_with(".");
      EXPECT_TRUE(!isRequest || known.contains(line.substr(0, line.find(' ')))) << line;
    }
  }
}

// A formatter fills no line of a list, so it has to fit into 80 columns beside the margin of 7. Commands stay whole.
TEST(GeneratedTexts, FitTheListsOfTheManualIntoATerminal) {
  std::istringstream page(ManualPage());
  bool isUnfilled = false;
  bool isInExamples = false;
  std::size_t lists = 0;
  for (std::string line; std::getline(page, line);) {
    if (line.starts_with(".SH")) isInExamples = line == ".SH EXAMPLES";
    if (line.starts_with(".")) isUnfilled = line == ".nf";
    if (!isUnfilled || isInExamples || line.starts_with("  vtdirect ")) continue;
    for (std::size_t at = 0; (at = line.find('\\', at)) != std::string::npos; ++at) {
      line.erase(at, line.compare(at, 2, "\\(") == 0 ? 3 : 1);
    }
    EXPECT_LE(line.size(), 73U) << line;
    ++lists;
  }
  EXPECT_GT(lists, 30U);
  EXPECT_THAT(ManualPage(), HasSubstr("\n                     asked by https, names"));
}

TEST(GeneratedTexts, NameEveryGroupAndItsCommands) {
  for (const GroupRow& group : Groups()) {
    EXPECT_THAT(BashCompletion(), HasSubstr("    " + std::string(group.name) + ") words=\""));
    std::istringstream help(HelpText(group));
    for (std::string line; std::getline(help, line);) EXPECT_LE(line.size(), 80U) << line;
  }
  const std::string words = "xliff) words=\"put source list get publish\" ;;";
  EXPECT_THAT(BashCompletion(), HasSubstr(words));
}

TEST(Tables, HoldEachGroupTogether) {
  std::set<std::string> met;
  std::string last;
  for (const CommandRow& row : Commands()) {
    const std::string group = GroupOf(row);
    const bool begins = !group.empty() && group != last;
    EXPECT_TRUE(!begins || met.insert(group).second) << group;
    last = group;
  }
  for (const GroupRow& group : Groups()) EXPECT_EQ(met.erase(group.name), 1U) << group.name;
  EXPECT_TRUE(met.empty());
}

TEST(GeneratedTexts, NameEveryColumnThatAListingIsSortedBy) {
  std::size_t listings = 0;
  for (const CommandRow& row : Commands()) {
    if (row.columns.empty()) continue;
    ++listings;
    ASSERT_STREQ(row.options.back().name.text(), "sort") << row.name;
    for (const char* column : row.columns)
      EXPECT_THAT(row.options.back().help, HasSubstr(column)) << row.name;
  }
  EXPECT_GT(listings, 0U);
}

TEST(GeneratedTexts, TellEveryExitStatus) {
  for (const ExitCodeRow& row : ExitCodes()) {
    const std::string number = std::to_string(static_cast<int>(row.code));
    EXPECT_THAT(HelpText(nullptr), HasSubstr("\n  " + number + " "));
    EXPECT_THAT(ManualPage(), HasSubstr(".B " + number + " " + Set(row.name)));
  }
}

TEST(GeneratedTexts, FitEightyColumns) {
  std::istringstream help(HelpText(nullptr));
  for (std::string line; std::getline(help, line);) EXPECT_LE(line.size(), 80U) << line;
}

TEST(GeneratedTexts, AreWhatIsInstalled) {
  // A difference here means: run "vtdirect --generate manual", "completion" and "json-output" again.
  EXPECT_EQ(vtdirect_test::ReadFile(CLI_FOLDER "/vtdirect.1"), ManualPage());
  EXPECT_EQ(vtdirect_test::ReadFile(CLI_FOLDER "/vtdirect.bash-completion"), BashCompletion());
  EXPECT_EQ(vtdirect_test::ReadFile(CLI_FOLDER "/vtdirect.zsh-completion"), ZshCompletion());
  EXPECT_EQ(vtdirect_test::ReadFile(CLI_FOLDER "/vtdirect.fish-completion"), FishCompletion());
  EXPECT_EQ(vtdirect_test::ReadFile(DOCS_FOLDER "/json-output.md"), JsonDocument());
}

TEST(GeneratedTexts, DescribeEveryMemberOfTheJson) {
  for (const CommandRow& command : Commands()) {
    EXPECT_FALSE(command.members.empty()) << command.name;
    const std::size_t start = JsonDocument().find("\n## " + std::string(command.name) + "\n");
    ASSERT_NE(start, std::string::npos) << command.name;
    const std::string section = JsonDocument().substr(start + 1);
    const std::string own = section.substr(0, section.find("\n## "));
    for (const MemberRow& row : command.members) {
      EXPECT_THAT(own, HasSubstr("| `" + std::string(row.name) + "` | " + NameOf(row.type) + " | "));
    }
  }
}

TEST(Tables, GiveEachMemberOnce) {
  for (const CommandRow& command : Commands()) {
    std::set<std::string> names;
    for (const MemberRow& row : CommonMembers()) names.insert(row.name);
    for (const MemberRow& row : command.members) {
      EXPECT_TRUE(names.insert(row.name).second) << command.name << " " << row.name;
    }
  }
}

// A reader of one command's lines must not have to learn another's.
TEST(Tables, GiveEachMemberOfTheVocabularyItsOneMeaning) {
  const std::set<std::string> oneText = {"address", "kind", "name", "title", "folder", "document"};
  for (const MemberRow& meaning : Vocabulary()) {
    for (const CommandRow& command : Commands()) {
      for (const MemberRow& row : command.members) {
        if (std::string(row.name) != meaning.name) continue;
        EXPECT_EQ(row.type, meaning.type) << command.name << " " << row.name;
        if (!oneText.contains(row.name)) continue;
        EXPECT_STREQ(row.help, meaning.help) << command.name << " " << row.name;
      }
    }
  }
}

TEST(Tables, GiveEachNameOnce) {
  std::set<std::string> names;
  for (const OptionRow& row : GlobalOptions())
    EXPECT_TRUE(names.insert(row.name.text()).second) << row.name.text();
  for (const CommandRow& command : Commands()) {
    std::set<std::string> own = names;
    for (const OptionRow& row : command.options) {
      EXPECT_TRUE(own.insert(row.name.text()).second) << row.name.text();
    }
  }
}

// A name that no row has would be an option that nobody can give.
TEST(Tables, HaveEveryNameThatCanBeAskedFor) {
  std::set<std::string> used;
  for (const OptionRow& row : GlobalOptions()) used.insert(row.name.text());
  for (const CommandRow& command : Commands()) {
    for (const OptionRow& row : command.options) used.insert(row.name.text());
    for (const OperandRow& row : command.operands) used.insert(row.name.text());
  }
  std::istringstream words{std::string(argumentNames)};
  EXPECT_EQ(used, (std::set<std::string>{std::istream_iterator<std::string>(words), {}}));
}

TEST(ExitCodes, AreTheNumbersThatScriptsRelyOn) {
  EXPECT_EQ(static_cast<int>(ExitCode::Usage), 2);
  EXPECT_EQ(static_cast<int>(ExitCode::CannotConnect), 3);
  EXPECT_EQ(static_cast<int>(ExitCode::AuthenticationRefused), 4);
  EXPECT_EQ(static_cast<int>(ExitCode::ServerUnsupported), 5);
  EXPECT_EQ(static_cast<int>(ExitCode::NotFound), 6);
  EXPECT_EQ(static_cast<int>(ExitCode::DownloadFailed), 7);
  EXPECT_EQ(static_cast<int>(ExitCode::LocalFile), 8);
  EXPECT_EQ(static_cast<int>(ExitCode::ServerNotListed), 9);
  EXPECT_EQ(static_cast<int>(ExitCode::Outdated), 10);
  EXPECT_EQ(static_cast<int>(ExitCode::Incomplete), 11);
  EXPECT_EQ(static_cast<int>(ExitCode::Interrupted), 130);
  EXPECT_STREQ(NameOf(ExitCode::NotFound), "not-found");
}

}  // namespace vtdirect_cli
