#include <gmock/gmock.h>

#include <algorithm>
#include <ostream>
#include <string>

#include "tests/e2e/cli/xliff_fixture.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace vtdirect_test {
namespace {

// A request that fails, and what the user is told.
struct Step {
  const char* request;
  int status;
  const char* text;
};

std::ostream& operator<<(std::ostream& stream, const Step& step) {
  return stream << step.request;
}

constexpr const char* preferences =
    "no source XLIFF is linked to the document; where a first one goes is said by the "
    "server's XLIFF preferences for en";

constexpr const char* putRight =
    "no source XLIFF is linked to the document; once that is put right, the same command can be given again";

// Those of a first upload before the document is on the server, in their order.
constexpr Step beforeText[] = {
    {"GET *dkm/documents/D1032", 3, " for //sim/?id=D1032"},
    {"GET */OrvetGW", 3, "no usable answer from "},
    {"GET *XliffPreferences*", 1, putRight},
    {"GET *DataAdmin/Containers*", 1, putRight},
    {"GET *csrf", 1, "sending chain.xlf as the source XLIFF of //sim/?id=D1032 failed ("},
    {"POST *creationFactory", 1, "the same command can be given again"},
    {"POST *content/upload/*", 1, "the same command can be given again"},
    {"POST *dkm/documents", 1, "the same command can be given again"}};

// Those of an update before the new iteration is on the server.
constexpr Step beforeUpdate[] = {
    {"GET *dkm/documents/D1028", 3, " for //sim/?id=D1028"},
    {"GET */OrvetGW", 3, "no usable answer from "},
    {"GET *dkm/documents/D1029", 1, "the state on the server could not be found out"},
    {"GET *csrf", 1, "D1029&file=/welding%20manual.xlf as before"},
    {"POST *creationFactory", 1, "D1029&file=/welding%20manual.xlf as before"},
    {"POST *content/upload/*", 1, "D1029&file=/welding%20manual.xlf as before"},
    {"POST *dkm/documents", 1, "D1029&file=/welding%20manual.xlf as before"}};

const std::string refusals[] = {"503", "drop"};

}  // namespace

class XliffStep : public XliffTest, public testing::WithParamInterface<std::tuple<Step, std::string>> {
 protected:
  [[nodiscard]] static Step step() { return std::get<0>(GetParam()); }
  void ServeWithFault() { Serve({"--fault", std::string(step().request) + "=" + std::get<1>(GetParam())}); }
  void ExpectFailure(const ProcessResult& result) {
    EXPECT_EQ(result.status, step().status) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr(step().text));
    EXPECT_THAT(HereNames(), ElementsAre("chain.xlf"));
  }
};

class FirstXliffStep : public XliffStep {};
class UpdateXliffStep : public XliffStep {};

INSTANTIATE_TEST_SUITE_P(Steps, FirstXliffStep,
                         testing::Combine(testing::ValuesIn(beforeText), testing::ValuesIn(refusals)));
INSTANTIATE_TEST_SUITE_P(Steps, UpdateXliffStep,
                         testing::Combine(testing::ValuesIn(beforeUpdate), testing::ValuesIn(refusals)));

TEST_P(FirstXliffStep, FailsWithWordsAndLinksNothing) {
  ServeWithFault();
  ExpectFailure(Put(bareManual));
  EXPECT_EQ(LinkOf("D1032"), "");
}

TEST_P(UpdateXliffStep, FailsWithWordsAndLeavesTheSourceAsItWas) {
  ServeWithFault();
  ExpectFailure(Put(manual));
  EXPECT_EQ(LinkOf("D1028"), "D1029");
}

TEST_F(XliffTest, TellsAFirstXliffThatCouldNotBeLinked) {
  Serve({"--fault", "POST *CreateXliffLink=500"});
  const ProcessResult result = Put(bareManual);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(
      result.err,
      AllOf(StartsWith("vtdirect: the server has taken chain.xlf as a new document, but //sim/?id=D1032 does "
                       "not show it as its source XLIFF; "),
            HasSubstr("its administrator has to link that document or to remove it")));
  EXPECT_EQ(LinkOf("D1032"), "");
}

TEST_F(XliffTest, TellsAnUpdateThatCouldNotBeLinkedAndMayStandInTheWay) {
  Serve({"--fault", "POST *CreateXliffLink=500*1"});
  const ProcessResult result = Put(manual);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err,
              HasSubstr("the server has taken chain.xlf, but //sim/?id=D1028 still shows the source XLIFF "
                        "from before, " +
                        server().Uid("D1029")));
  EXPECT_THAT(result.err, HasSubstr("until its administrator has linked it, a further one may be refused"));
  EXPECT_EQ(LinkOf("D1028"), "D1029");

  // The link leads to an iteration that is not the newest any more.
  const ProcessResult again = Put(manual);
  EXPECT_EQ(again.status, 1);
  EXPECT_THAT(again.err, HasSubstr("D1029 has a newer version"));
  EXPECT_EQ(LinkOf("D1028"), "D1029");
}

TEST_F(XliffTest, TellsThatAFileMayBeThereWithoutALinkWhenTheAnswerIsLost) {
  for (const char* address : {bareManual, manual}) {
    EndServer();
    Serve({"--fault", "POST *dkm/documents=cut:10*1"});
    const ProcessResult lost = Put(address);
    EXPECT_EQ(lost.status, 1);
    EXPECT_THAT(lost.err,
                HasSubstr("; if only the answer was lost, chain.xlf is on the server without a link; "));
    // It is: a server that has said why it refuses has not taken anything.
    const ProcessResult again = Put(address);
    EXPECT_EQ(again.status, 1);
    EXPECT_THAT(again.err, AllOf(HasSubstr("HTTP 409"), testing::Not(HasSubstr("answer was lost"))));
  }
}

TEST_F(XliffTest, TellsASourceXliffThatCameMeanwhile) {
  Serve({"--fault", "POST *creationFactory=stall*1"});
  const auto first = Start({"xliff", "put", bareManual, "chain.xlf", "-l", "en", "--stall-timeout", "3"});
  ASSERT_TRUE(WaitUntil([this] { return server().Log().find("security/csrf") != std::string::npos; }));
  EXPECT_EQ(Put(bareManual).status, 0);
  const ProcessResult result = first->Wait();
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr(LinkOf("D1032") + "&file=/chain.xlf now: only the answer may have been "
                                                      "lost, or somebody else has sent one"));
}

TEST_F(XliffTest, TellsAnXliffWhoseUidCanNotBeFoundOut) {
  Serve({"--fault", "GET *dkm/documents/D100000*=500"});
  const ProcessResult result = Put(bareManual);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err,
              AllOf(HasSubstr("the server has taken chain.xlf, but its UID could not be found out"),
                    HasSubstr("\"vtdirect xliff source '//sim/?id=D1032'\" asks again")));
  EXPECT_NE(LinkOf("D1032"), "");
  const ProcessResult source = Run({"xliff", "source", bareManual});
  EXPECT_EQ(source.status, 6);
  EXPECT_THAT(source.err, StartsWith("vtdirect: warning: an xliff put of //sim/?id=D1032 was begun "));
  EXPECT_THAT(source.err, HasSubstr("vtdirect: the source XLIFF of //sim/?id=D1032 could not be read"));
}

// The file is on the server, and sending it again would make another document of it.
TEST_F(XliffTest, SaysThatTheFileWasTakenWhenTheServerCanNotBeAskedAfterThat) {
  Serve({"--fault", "GET *dkm/documents/D100000*=401"});
  const ProcessResult result =
      Run({"--json", "--no-prompt", "xliff", "put", bareManual, "chain.xlf", "-l", "en"});
  EXPECT_NE(result.status, 0);
  EXPECT_THAT(result.err,
              AllOf(HasSubstr("the server has taken chain.xlf, but its UID could not be found out"),
                    HasSubstr("credentials"), HasSubstr("\"may_have_happened\":true"),
                    HasSubstr("\"retryable\":false")));
  EXPECT_NE(LinkOf("D1032"), "");
}

TEST_F(XliffTest, DoesNotTakeAFailedQuestionForADocumentWithoutASource) {
  Serve({"--fault", "GET *DynamicDocuments('D1028')/Xliff=503*1"});
  EXPECT_THAT(Put(manual).err, HasSubstr("updated"));
}

TEST_F(XliffTest, NeedsNoneOfTheQuestionsThatOnlyInform) {
  Serve({"--fault", "GET *IsAssemblyInstalled*=500", "--fault", "GET /servlet/odata/=500"});
  EXPECT_EQ(Put(bareManual).status, 0);
}

/// A reason that the failed call tells is not asked for again.
class XliffReason : public XliffTest {
 protected:
  // How many requests come after the one whose target has this part.
  [[nodiscard]] std::size_t RequestsAfter(const std::string& part) const {
    const std::string log = server().Log();
    const std::size_t at = log.rfind(part);
    EXPECT_NE(at, std::string::npos) << log;
    return static_cast<std::size_t>(
               std::count(log.begin() + static_cast<std::ptrdiff_t>(at), log.end(), '\n')) -
           1;
  }
};

TEST_F(XliffReason, OfARefusedListIsNotAskedFor) {
  Serve({"--fault", "GET *expand=Translations=500"});
  EXPECT_THAT(Run({"xliff", "list", manual}).err, HasSubstr("(list the translations: refused, HTTP 500"));
  EXPECT_EQ(RequestsAfter("expand=Translations"), 0U);
}

TEST_F(XliffReason, OfASourceThatIsNotThereIsNotAskedFor) {
  Serve();
  EXPECT_EQ(Run({"xliff", "source", bareManual}).status, 6);
  EXPECT_EQ(RequestsAfter("('D1032')/Xliff"), 0U);
}

TEST_F(XliffReason, OfADocumentWithoutASourceIsTheAnswerAndIsNotAskedFor) {
  Serve();
  EXPECT_EQ(Put(bareManual).status, 0);
  EXPECT_THAT(server().Log(), testing::Not(HasSubstr("expand=Translations")));
}

TEST_F(XliffReason, OfAMarkThatWasRefusedIsNotAskedFor) {
  Serve({"--fault", "PATCH *=500"});
  const ProcessResult result = Run({"--json", "xliff", "publish", "//sim/?id=D1031"});
  EXPECT_THAT(result.err, AllOf(HasSubstr("\"error\":\"lost-answer\""), HasSubstr("\"http_status\":500"),
                                HasSubstr("\"may_have_happened\":true")));
  EXPECT_EQ(RequestsAfter("\"PATCH\""), 0U);
}

TEST_F(XliffReason, OfAnUploadThatCouldNotLookBeforehandIsTold) {
  Serve({"--fault", "GET *DynamicDocuments('D1028')/Xliff=503"});
  const ProcessResult result = Put(manual);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err,
              HasSubstr("whether //sim/?id=D1028 has a source XLIFF could not be found out; nothing "
                        "was sent (find the source XLIFF: refused, HTTP 503"));
  EXPECT_EQ(Writes(), "");
}

class XliffListFault : public XliffTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Faults, XliffListFault, testing::Values("500", "drop", "cut:20"));

TEST_P(XliffListFault, IsToldAsAListThatDoesNotCome) {
  Serve({"--fault", "GET *expand=Translations=" + std::string(GetParam())});
  for (const ProcessResult& result :
       {Run({"xliff", "list", manual}), Run({"xliff", "get", manual, "-l", "de"})}) {
    EXPECT_EQ(result.status, 11);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("the translations of //sim/?id=D1028 could not be read"));
  }
}

TEST_F(XliffTest, TellsADocumentThatWasNotMarked) {
  Serve({"--fault", "PATCH *=500"});
  const ProcessResult result = Run({"xliff", "publish", "//sim/?id=D1031"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("the server did not mark //sim/?id=D1031 as published"));
  EXPECT_EQ(DocumentOf(server(), "D1031").attributes.at("ZVK_DD_EXTENDED_DOC_TYPE"), "x-raomTranslated");
}

// The commands, each on the document that it is for.
class XliffCommands : public XliffTest {
 protected:
  void ExpectEach(int status, const std::string& text) {
    const std::vector<std::vector<std::string>> calls = {{"put", manual, "chain.xlf", "-l", "en"},
                                                         {"source", manual},
                                                         {"list", manual},
                                                         {"get", manual, "-l", "de"},
                                                         {"publish", "//sim/?id=D1031"}};
    for (std::vector<std::string> words : calls) {
      words.insert(words.begin(), "xliff");
      const ProcessResult result = Run(words);
      const bool listing = words[1] == "list" || words[1] == "get";
      EXPECT_EQ(result.status, status == 1 && listing ? 11 : status) << words[1] << result.err;
      EXPECT_EQ(result.out, "");
      EXPECT_THAT(result.err, HasSubstr(text));
    }
    EXPECT_THAT(HereNames(), ElementsAre("chain.xlf"));
  }
};

TEST_F(XliffCommands, TellAServerThatIsTooOld) {
  Serve({"--version", "11.1.10.0"});
  ExpectEach(5, server().url() + " offers no translation: servers do from 11.1 M010 CPS 1 on");
  EXPECT_EQ(Writes(), "");
}

TEST_F(XliffCommands, TellAServerWithoutTheAddOn) {
  Serve({"--without-translation"});
  ExpectEach(1, "may lack its add-on for them");
  EXPECT_THAT(Writes(), testing::Not(HasSubstr("POST")));
}

TEST_F(XliffCommands, TellAServerOfTheOldestGeneration) {
  Serve({"--generation", "gateway"});
  ExpectEach(1, "may lack its add-on for them");
  EXPECT_THAT(Writes(), testing::Not(HasSubstr("POST")));
}

TEST_F(XliffCommands, TellAServerThatCanNotBeReached) {
  Serve({"--fault", "* *=drop"});
  ExpectEach(3, "no usable answer from " + server().url() + " for //sim/");
}

class XliffPreference : public XliffTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Names, XliffPreference,
                         testing::Values("DB_CONTEXT_TYPE", "DB_CONTEXT_NAME", "CABINET_OID",
                                         "ZVK_DD_TRANSLATE", "ZVK_DD_LANGUAGE", "ZVK_DD_EXTENDED_DOC_TYPE",
                                         "UPLOAD_SOFT_TYPE"));

TEST_P(XliffPreference, IsNamedAsALikelyReasonAndNothingIsSentWithoutIt) {
  Serve({"--without-preference", GetParam()});
  const ProcessResult result = Put(bareManual);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr(preferences));
  EXPECT_EQ(Writes(), "");
  // An update has its place already.
  EXPECT_EQ(Put(manual).status, 0);
}

TEST_F(XliffTest, PutsTheFileIntoTheRootWhenThePreferencesNameNoFolder) {
  Serve({"--without-preference", "SUB_FOLDER_OID"});
  EXPECT_EQ(Put(bareManual).status, 0);
  EXPECT_EQ(DocumentOf(server(), LinkOf("D1032")).folder, "/Trekking Bike");
}

}  // namespace vtdirect_test
