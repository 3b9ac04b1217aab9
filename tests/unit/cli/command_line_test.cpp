#include "hosts/cli/commands/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace vtdirect_cli {
namespace {

CommandLine Parse(std::vector<const char*> words) {
  words.insert(words.begin(), "vtdirect");
  return ParseCommandLine(static_cast<int>(words.size()), words.data());
}

void ExpectUsageFailure(std::vector<const char*> words) {
  const CommandLine line = Parse(std::move(words));
  ASSERT_TRUE(line.failure);
  EXPECT_EQ(line.failure->code, ExitCode::Usage);
}

}  // namespace

TEST(CommandLine, TakesGlobalOptionsInFrontOfTheCommandAndBehindIt) {
  const CommandLine line = Parse({"-s", "a=http://a/", "get", "//a/x", "--json", "--server=b=http://b/"});
  ASSERT_NE(line.command, nullptr);
  EXPECT_STREQ(line.command->name, "get");
  EXPECT_THAT(line.arguments.All("server"), ElementsAre("a=http://a/", "b=http://b/"));
  EXPECT_EQ(line.arguments.Text("ADDRESS"), "//a/x");
  EXPECT_TRUE(line.arguments.Has("json"));
  EXPECT_FALSE(line.arguments.Has("quiet"));
}

TEST(CommandLine, LetsTheLastOfSeveralValuesCount) {
  EXPECT_EQ(Parse({"servers", "--config", "a", "--config", "b"}).arguments.Text("config"), "b");
}

TEST(CommandLine, TakesADashAsAValueAndWhatIsAfterTwoDashesAsAnOperand) {
  EXPECT_EQ(Parse({"get", "-o", "-", "x"}).arguments.Text("output"), "-");
  EXPECT_EQ(Parse({"get", "-o-", "x"}).arguments.Text("output"), "-");
  EXPECT_EQ(Parse({"get", "--", "-x"}).arguments.Text("ADDRESS"), "-x");
}

TEST(CommandLine, TakesAnAddressByteByByte) {
  const char* const uid = "korvufenloom-vt://h/vt/?id=D1|W2&file=/a%7Cb [c],{d}=\\'\"\xFF";
  EXPECT_EQ(Parse({"uid", uid}).arguments.Text("ADDRESS"), uid);
}

TEST(CommandLine, TakesAnOperandThatMayBeLeftOut) {
  EXPECT_FALSE(Parse({"ls"}).arguments.Has("PATH"));
  EXPECT_EQ(Parse({"ls", "-l", "//a/"}).arguments.Text("PATH"), "//a/");
  EXPECT_EQ(Parse({"ls", "//a/", "--versions"}).arguments.Text("PATH"), "//a/");
  ExpectUsageFailure({"ls", "//a/", "//b/"});
}

TEST(CommandLine, TakesAnOperandSeveralTimes) {
  EXPECT_THAT(Parse({"status", "//a/x", "--json", "//a/y"}).arguments.All("ADDRESS"),
              ElementsAre("//a/x", "//a/y"));
  EXPECT_THAT(Parse({"status", "--", "-x", "y"}).arguments.All("ADDRESS"), ElementsAre("-x", "y"));
  ExpectUsageFailure({"status"});
}

TEST(CommandLine, TakesAListInPlaceOfAddresses) {
  EXPECT_FALSE(Parse({"info", "--from", "-"}).failure);
  EXPECT_THAT(Parse({"info", "--from", "a", "-0", "--from", "b", "//a/x"}).arguments.All("from"),
              ElementsAre("a", "b"));
  EXPECT_EQ(Parse({"info"}).failure->Text(), "ADDRESS is required; see vtdirect info --help");
  EXPECT_TRUE(Parse({"info", "--from", "-", "-0"}).arguments.Has("null"));
}

TEST(CommandLine, TakesTheLastOfSeveralOperandsForTheOneThatFollows) {
  const CommandLine several = Parse({"put", "a", "--checkin", "b", "c", "//s/f/"});
  EXPECT_THAT(several.arguments.All("FILE"), ElementsAre("a", "b", "c"));
  EXPECT_THAT(several.arguments.All("ADDRESS"), ElementsAre("//s/f/"));
  const CommandLine one = Parse({"put", "a", "//s/f/"});
  EXPECT_THAT(one.arguments.All("FILE"), ElementsAre("a"));
  EXPECT_THAT(one.arguments.All("ADDRESS"), ElementsAre("//s/f/"));
  const CommandLine listed = Parse({"put", "--from", "list", "//s/f/"});
  EXPECT_THAT(listed.arguments.All("FILE"), testing::IsEmpty());
  EXPECT_EQ(listed.arguments.Text("ADDRESS"), "//s/f/");
  EXPECT_EQ(Parse({"put", "--from", "list", "a", "//s/f/"}).arguments.Text("FILE"), "a");
  EXPECT_EQ(Parse({"put", "a"}).failure->Text(), "ADDRESS is required; see vtdirect put --help");
  EXPECT_EQ(Parse({"put"}).failure->Text(), "FILE is required; see vtdirect put --help");
}

TEST(CommandLine, ShowsHowOftenAnOperandIsGiven) {
  EXPECT_THAT(Parse({"ls", "--help"}).text, StartsWith("Usage: vtdirect [options] ls [options] [PATH]\n"));
  EXPECT_THAT(Parse({"status", "--help"}).text,
              StartsWith("Usage: vtdirect [options] status [options] ADDRESS...\n"));
}

TEST(CommandLine, RefusesWhatTheTableDoesNotHold) {
  ExpectUsageFailure({});
  ExpectUsageFailure({"bogus"});
  ExpectUsageFailure({"--bogus", "servers"});
  ExpectUsageFailure({"servers", "--output", "x"});
  ExpectUsageFailure({"uid"});
  ExpectUsageFailure({"uid", "a", "b"});
  ExpectUsageFailure({"servers", "--config"});
  ExpectUsageFailure({"--password", "x", "servers"});
}

TEST(CommandLine, ShowsTheHelpTextOfTheProgramOrOfTheCommand) {
  EXPECT_THAT(Parse({"--help"}).text, StartsWith("Usage: vtdirect [options] COMMAND"));
  EXPECT_THAT(Parse({"get", "--help"}).text,
              StartsWith("Usage: vtdirect [options] get [options] ADDRESS...\n"));
  EXPECT_THAT(Parse({"--help", "uid"}).text, StartsWith("Usage: vtdirect [options] "));
}

TEST(CommandLine, TakesACommandOfTwoWords) {
  const CommandLine line = Parse({"xliff", "-j", "put", "//a/x", "put", "--language", "en", "-q"});
  ASSERT_NE(line.command, nullptr);
  EXPECT_STREQ(line.command->name, "xliff put");
  EXPECT_EQ(line.arguments.Text("ADDRESS"), "//a/x");
  EXPECT_EQ(line.arguments.Text("FILE"), "put");
  EXPECT_EQ(line.arguments.Text("language"), "en");
  EXPECT_TRUE(line.arguments.Has("json"));
  EXPECT_TRUE(line.arguments.Has("quiet"));
  // The same second word as that of a command of one word.
  EXPECT_STREQ(Parse({"xliff", "get", "get"}).command->name, "xliff get");
  EXPECT_STREQ(Parse({"get", "xliff"}).command->name, "get");
}

TEST(CommandLine, WantsACommandOfTheGroup) {
  ASSERT_TRUE(Parse({"xliff"}).failure);
  EXPECT_EQ(Parse({"xliff"}).failure->Text(), "xliff takes one of its commands; see vtdirect xliff --help");
  ExpectUsageFailure({"xliff", "bogus"});
  ExpectUsageFailure({"xliff", "ls"});
  ExpectUsageFailure({"xliff", "put", "//a/x"});
  ExpectUsageFailure({"xliff put", "//a/x", "x"});
  ExpectUsageFailure({"source", "//a/x"});
}

TEST(CommandLine, ShowsTheHelpTextOfAGroup) {
  EXPECT_THAT(Parse({"xliff", "--help"}).text, StartsWith("Usage: vtdirect [options] xliff COMMAND"));
  EXPECT_THAT(Parse({"xliff", "--help"}).text, HasSubstr("\n  xliff put "));
  EXPECT_THAT(Parse({"xliff", "list", "--help"}).text,
              StartsWith("Usage: vtdirect [options] xliff list [options] ADDRESS\n"));
}

TEST(CommandLine, ShowsTheVersion) {
  EXPECT_THAT(Parse({"--version"}).text, StartsWith("vtdirect "));
}

TEST(CommandLine, TakesHelpAsAWord) {
  EXPECT_EQ(Parse({"help"}).text, Parse({"--help"}).text);
  EXPECT_EQ(Parse({"help", "get"}).text, Parse({"get", "--help"}).text);
  EXPECT_EQ(Parse({"help", "xliff", "get"}).text, Parse({"xliff", "get", "--help"}).text);
}

TEST(CommandLine, SaysThatThereIsNoCommandOfAName) {
  EXPECT_EQ(Parse({"bogusword"}).failure->Text(), "there is no command \"bogusword\"; see vtdirect --help");
  EXPECT_THAT(Parse({"push", "f", "//a/x"}).failure->Text(),
              StartsWith("there is no command \"push\"; did you mean put, or commit"));
  EXPECT_THAT(Parse({"download"}).failure->Text(), HasSubstr("did you mean get?"));
  for (const CommandLine& line : {Parse({"help", "chekout"}), Parse({"chekout", "--help"})}) {
    ASSERT_TRUE(line.failure);
    EXPECT_THAT(line.failure->Text(), HasSubstr("there is no command \"chekout\"; did you mean checkout?"));
    EXPECT_EQ(line.text, "");
  }
  EXPECT_THAT(Parse({"xliff", "lst"}).failure->Text(),
              HasSubstr("there is no command \"xliff lst\"; did you mean list?"));
}

TEST(CommandLine, TakesHelpAfterAGroup) {
  EXPECT_EQ(Parse({"xliff", "help"}).text, Parse({"xliff", "--help"}).text);
}

TEST(CommandLine, RefersToTheHelpOfTheCommandThatIsUsedWrongly) {
  EXPECT_THAT(Parse({"login"}).failure->Text(), HasSubstr("is required; see vtdirect login --help"));
  EXPECT_EQ(Parse({"find", "//a/", "--name"}).failure->Text(),
            "--name takes a PATTERN; see vtdirect find --help");
}

TEST(CommandLine, NamesUnexpectedWordsInTheirOrder) {
  const CommandLine line = Parse({"uid", "a", "b", "c"});
  ASSERT_TRUE(line.failure);
  EXPECT_EQ(line.failure->code, ExitCode::Usage);
  EXPECT_EQ(line.failure->Text(), "not expected: b c; see vtdirect uid --help");
}

TEST(CommandLine, TellsWhetherAFailureIsWantedAsJson) {
  for (const std::vector<const char*>& words : std::vector<std::vector<const char*>>{
           {"--json", "bogus"}, {"get", "--json"}, {"-j"}, {"-qj", "get"}, {"uid", "a", "b", "-jq"}}) {
    const CommandLine line = Parse(words);
    EXPECT_TRUE(line.failure);
    EXPECT_TRUE(line.json) << testing::PrintToString(words);
  }
  // The value of an option, and a word behind two dashes, are no options.
  for (const std::vector<const char*>& words :
       std::vector<std::vector<const char*>>{{"get"}, {"get", "-oj"}, {"uid", "a", "b", "--", "--json"}}) {
    const CommandLine line = Parse(words);
    EXPECT_TRUE(line.failure);
    EXPECT_FALSE(line.json) << testing::PrintToString(words);
  }
  EXPECT_TRUE(Parse({"ls", "-lj"}).json);
  EXPECT_FALSE(Parse({"ls", "--", "--json"}).json);
}

TEST(CommandLine, NamesTheCommandThatIsUsedWrongly) {
  EXPECT_EQ(Parse({"get"}).named, "get");
  EXPECT_EQ(Parse({"uid", "a", "b"}).named, "uid");
  EXPECT_EQ(Parse({"xliff", "list"}).named, "xliff list");
  EXPECT_EQ(Parse({"xliff"}).named, "xliff");
  EXPECT_EQ(Parse({"bogus"}).named, "");
  EXPECT_EQ(Parse({}).named, "");
}

}  // namespace vtdirect_cli
