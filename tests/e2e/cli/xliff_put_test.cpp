#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "tests/e2e/cli/meanwhile.h"
#include "tests/e2e/cli/xliff_fixture.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace vtdirect_test {

TEST_F(XliffTest, SendsTheFirstSourceXliffOfADocument) {
  Serve();
  const ProcessResult result = Put(bareManual);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "vtdirect: chain.xlf is the first source XLIFF of //sim/?id=D1032\n");
  const std::string id = LinkOf("D1032");
  EXPECT_EQ(result.out, server().Uid(id) + "&file=/chain.xlf\n");
  const ServerDocument document = DocumentOf(server(), id);
  EXPECT_EQ(document.bytes, English());
  EXPECT_EQ(document.name, "chain.xlf");
  EXPECT_EQ(document.folder, "/Trekking Bike/Translations");
  EXPECT_EQ(document.version, "A.1");
  EXPECT_EQ(document.attributes.at("ZVK_DD_LANGUAGE"), "en");
  EXPECT_THAT(HereNames(), ElementsAre("chain.xlf"));
}

TEST_F(XliffTest, UpdatesTheSourceXliffOfADocument) {
  Serve();
  const ProcessResult result = Put(manual);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "vtdirect: chain.xlf updated the source XLIFF of //sim/?id=D1028\n");
  const std::string id = LinkOf("D1028");
  EXPECT_NE(id, "D1029");
  EXPECT_EQ(result.out, server().Uid(id) + "&file=/welding%20manual.xlf\n");
  const ServerDocument document = DocumentOf(server(), id);
  EXPECT_EQ(document.bytes, English());
  EXPECT_EQ(document.version, "A.2");

  WriteFile(Here("chain.xlf"), English("Oil it again."));
  EXPECT_EQ(Put(manual).status, 0);
  EXPECT_NE(LinkOf("D1028"), id);
  EXPECT_EQ(DocumentOf(server(), LinkOf("D1028")).bytes, English("Oil it again."));
  EXPECT_EQ(DocumentOf(server(), LinkOf("D1028")).version, "A.3");
}

// White space at the end leaves it well-formed, so that nothing else keeps it from being sent.
TEST_F(XliffTest, SendsNothingOfAFileThatIsWrittenTo) {
  Serve({"--latency", "20"});
  ProcessResult result;
  {
    const Meanwhile writer([this] {
      std::ofstream(Here("chain.xlf"), std::ios::app) << "\n";
      SleepMilliseconds(1);
    });
    result = Put(bareManual);
  }
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err,
              HasSubstr("vtdirect: chain.xlf was written to while it was read; nothing was sent"));
  EXPECT_EQ(Writes(), "");
  EXPECT_EQ(LinkOf("D1032"), "");
}

TEST_F(XliffTest, SendsNothingOfAFileThatCannotBeCopiedWhole) {
  Serve();
  fileSizeLimit_ = 100'000;
  WriteFile(Here("chain.xlf"), English(std::string(fileSizeLimit_ + 1, 'x')));
  const ProcessResult result = Put(bareManual);
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err, HasSubstr("could not be copied whole to the directory for temporary files"));
  EXPECT_EQ(Writes(), "");
}

TEST_F(XliffTest, TakesAPathAndAUid) {
  Serve();
  const std::string path = "//sim/Products/Trekking Bike/Folders/Manuals/chain manual.xml";
  EXPECT_THAT(Put(path).err, HasSubstr("is the first source XLIFF of " + path));
  const std::string first = LinkOf("D1032");
  const ProcessResult update = Put(server().Uid("D1032") + "&file=/chain%20manual.xml");
  EXPECT_EQ(update.status, 0);
  EXPECT_THAT(update.err, HasSubstr("updated"));
  EXPECT_NE(LinkOf("D1032"), first);
}

TEST_F(XliffTest, FindsThePlaceOnPagesOfOneRow) {
  Serve({"--page-size", "1", "--page-port", "0"});
  EXPECT_EQ(Put(bareManual).status, 0);
  EXPECT_EQ(DocumentOf(server(), LinkOf("D1032")).folder, "/Trekking Bike/Translations");
  EXPECT_EQ(Put(manual).status, 0);
  EXPECT_EQ(DocumentOf(server(), LinkOf("D1028")).version, "A.2");
}

TEST_F(XliffTest, EndsTheSearchForAFolderThatIsNamedByAPath) {
  Serve({"--xliff-folder", "path"});
  EXPECT_EQ(Put(bareManual).status, 0);
  EXPECT_EQ(DocumentOf(server(), LinkOf("D1032")).folder, "/Trekking Bike/Translations");
  EXPECT_EQ(DocumentOf(server(), LinkOf("D1032")).bytes, English());
}

TEST_F(XliffTest, LeavesTheSearchWithoutAnEndToWhoAsksForIt) {
  environment_["FENLOOM_XLIFF_BOUNDED_FOLDER_SCAN"] = "";
  Serve({"--xliff-folder", "path"});
  const auto process = Start({"xliff", "put", bareManual, "chain.xlf", "-l", "en"});
  ASSERT_TRUE(
      WaitUntil([this] { return server().Log().find("/servlet/rest/v1/contexts\"") != std::string::npos; }));
  SleepMilliseconds(500);
  EXPECT_TRUE(process->Running());
  EXPECT_THAT(server().Log(), testing::Not(HasSubstr("DataAdmin/Containers")));
  process->Signal(SIGINT);
  const ProcessResult result = process->Wait();
  EXPECT_EQ(result.status, 130);
  EXPECT_THAT(result.err, AllOf(HasSubstr("interrupted; whether the server has taken chain.xlf is not known"),
                                HasSubstr("\"vtdirect xliff source '//sim/?id=D1032'\" tells")));
}

TEST_F(XliffTest, SendsNothingThatIsNoXliff) {
  Serve();
  WriteFile(Here("chain.xlf"), "<?xml version=\"1.0\"?>\n<tmx/>");
  const ProcessResult result = Put(bareManual);
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(
      result.err,
      "vtdirect: chain.xlf, line 2: it is no XLIFF file: its outermost element is \"tmx\" and not \"xliff\"; "
      "nothing was sent; --force sends the file all the same\n");
  EXPECT_EQ(server().Log(), "");
}

TEST_F(XliffTest, SendsNothingOfAnotherLanguage) {
  Serve();
  const ProcessResult result = Run({"xliff", "put", bareManual, "chain.xlf", "--language", "de"});
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err, StartsWith("vtdirect: chain.xlf, line 3: its <file> has the source language \"en\" "
                                     "(source-language), and --language is \"de\"; nothing was sent"));
  EXPECT_EQ(server().Log(), "");
  EXPECT_EQ(Run({"xliff", "put", bareManual, "chain.xlf", "--language", "EN_gb"}).status, 0);
}

TEST_F(XliffTest, SendsAnythingWhenItIsForcedTo) {
  Serve();
  WriteFile(Here("chain.xlf"), "no XML");
  const ProcessResult result = Run({"xliff", "put", bareManual, "chain.xlf", "-l", "en", "--force"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.err, AllOf(StartsWith("vtdirect: warning: chain.xlf, line 1: it is no XML file"),
                                HasSubstr("; it is sent all the same\n")));
  EXPECT_EQ(DocumentOf(server(), LinkOf("D1032")).bytes, "no XML");
}

TEST_F(XliffTest, RefusesWhatIsNoFileForcedOrNot) {
  Serve();
  ASSERT_EQ(mkdir(Here("d").c_str(), 0700), 0);
  ASSERT_EQ(mkfifo(Here("pipe").c_str(), 0600), 0);
  for (const char* file : {"none", "d", "pipe", ""}) {
    const ProcessResult result = Run({"xliff", "put", bareManual, file, "-l", "en", "--force"});
    EXPECT_EQ(result.status, 8) << file;
    EXPECT_THAT(result.err, StartsWith("vtdirect: cannot read " + std::string(file)));
  }
  EXPECT_EQ(server().Log(), "");
}

TEST_F(XliffTest, WantsALanguage) {
  Serve();
  for (const char* command : {"put", "get"}) {
    std::vector<std::string> words = {"xliff", command, bareManual};
    if (std::string(command) == "put") words.emplace_back("chain.xlf");
    EXPECT_EQ(Run(words).status, 2);
    EXPECT_THAT(Run(words).err, HasSubstr("--language is needed"));
    words.insert(words.end(), {"--language", ""});
    EXPECT_EQ(Run(words).status, 2);
  }
  EXPECT_EQ(server().Log(), "");
}

TEST_F(XliffTest, TellsADocumentThatIsNotThereBeforeAnythingIsSent) {
  Serve();
  for (const std::string address :
       {"//sim/?id=D9999", "//sim/Products/Trekking Bike/Folders/Manuals/none.xml"}) {
    const ProcessResult result = Put(address);
    EXPECT_EQ(result.status, 6);
    EXPECT_THAT(result.err, StartsWith("vtdirect: not found: " + address));
    EXPECT_EQ(Run({"xliff", "source", address}).status, 6);
    EXPECT_EQ(Run({"xliff", "list", address}).status, 6);
    EXPECT_EQ(Run({"xliff", "get", address, "-l", "de"}).status, 6);
    EXPECT_EQ(Run({"xliff", "publish", address}).status, 6);
  }
  EXPECT_EQ(Writes(), "");
  EXPECT_EQ(Run({"xliff", "list", "//other/x"}).status, 9);
  EXPECT_EQ(Run({"xliff", "list", "nonsense"}).status, 2);
}

}  // namespace vtdirect_test
