#include "simulator/program_texts.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

#include "simulator/options.h"

using testing::HasSubstr;

namespace vantry_sim {
namespace {

std::string Shipped(const std::string& name) {
  std::ifstream file(VANTRY_SIM_FOLDER "/" + name);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

ProgramTexts Example() {
  return {{{{"--help", "-h"}, "", "Print this", ""},
           {{"--kind"}, "one|two", "Which kind", "one"},
           {{"--place"}, "DIR", "Where it's", ""}},
          {{{"--out"}, "FILE", "What is written", ""}}};
}

TEST(ProgramTexts, ManualTellsNameValueTextAndDefaultOfEachOption) {
  const std::string manual = Example().ManualPage();
  EXPECT_THAT(manual, HasSubstr(".TP\n.B \\-\\-help, \\-h\nPrint this.\n"));
  EXPECT_THAT(manual, HasSubstr(".TP\n.B \\-\\-kind \\fIone|two\\fP\nWhich kind. Without it: one.\n"));
  EXPECT_THAT(manual, HasSubstr(".B \\-\\-place \\fIDIR\\fP\nWhere it\\(aqs.\n"));
  EXPECT_GT(manual.find("\\-\\-out"), manual.find(".SH EXPORT"));
}

TEST(ProgramTexts, CompletionOffersWordsFilesAndDirectories) {
  const std::string completion = Example().BashCompletion();
  EXPECT_THAT(completion, HasSubstr("words=\"export --help --kind --place\""));
  EXPECT_THAT(completion, HasSubstr("--kind) mapfile -t COMPREPLY < <(compgen -W \"one two\""));
  EXPECT_THAT(completion, HasSubstr("--place) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d"));
  EXPECT_THAT(completion, HasSubstr("--out) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f"));
}

TEST(ProgramTexts, TellTheOptionsOfTheParser) {
  const ProgramTexts texts = TextsOfProgram();
  std::string all;
  for (const OptionText& option : texts.server) {
    all += option.names.front() + "=" + option.value + "=" + option.defaultValue + " ";
    EXPECT_NE(option.about, "") << option.names.front();
  }
  for (const char* one : {"--help== ", "--port=PORT=8080 ",
                          "--data=DIR= ", "--tls=CERT KEY= ", "--sessions== ", "--page-size=N=10000 ",
                          "--check=STATE= ", "--xliff-folder=cabinet|path=cabinet "})
    EXPECT_THAT(all, HasSubstr(one));
  EXPECT_EQ(texts.exportCommand.size(), 4U);
}

TEST(ProgramTexts, ShippedFilesAreThoseThatTheProgramMakes) {
  EXPECT_EQ(Shipped("vantry-sim.1"), TextsOfProgram().ManualPage()) << "vantry-sim --generate manual";
  EXPECT_EQ(Shipped("vantry-sim.bash-completion"), TextsOfProgram().BashCompletion())
      << "vantry-sim --generate completion";
}

TEST(ProgramTexts, RoutesThatReadComeBeforeThoseThatWrite) {
  EXPECT_EQ(
      RouteTable({{"POST", "a", "makes"}, {"GET", "b/{id}", "tells"}}),
      "| method | route | what |\n| --- | --- | --- |\n| GET | `b/{id}` | tells |\n| POST | `a` | makes |\n");
}

}  // namespace
}  // namespace vantry_sim
