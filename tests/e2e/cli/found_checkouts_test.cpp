#include <gmock/gmock.h>

#include "tests/e2e/cli/checkout_fixture.h"
#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/cli/server_document.h"

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace vtdirect_test {

/// Checkouts that are not kept where they are looked for: a run "elsewhere" is one on another machine.
class FoundCheckouts : public CheckoutTest {
 protected:
  void SetUp() override {
    Serve();
    WriteFile(Here("f"), "an hour's work");
  }

  // How many requests the server has got that write.
  [[nodiscard]] std::size_t Posts() const {
    const std::string log = server().Log();
    std::size_t count = 0;
    for (std::size_t at = 0; (at = log.find("\"POST\"", at)) != std::string::npos; ++at) ++count;
    return count;
  }

  void ExpectNothingWasChanged(const std::string& uid) {
    EXPECT_EQ(HolderOf("D1001"), "anna");
    EXPECT_EQ(TemporaryWorkspaces(), 1U);
    EXPECT_EQ(Run({"verify", uid}).status, 0);
  }

  const std::string path_ = forkPath;
};

TEST_F(FoundCheckouts, AreListedByTheirServer) {
  EXPECT_EQ(Run({"checkouts", "--on", "sim"}).out, "");
  const std::string uid = CheckOut(path_);
  const ProcessResult elsewhere = RunElsewhere({"checkouts", "--on", "sim"});
  EXPECT_EQ(elsewhere.status, 0) << elsewhere.err;
  EXPECT_EQ(elsewhere.out, "-\tanna\tfork.lxz\t" + uid + "\n");
  EXPECT_EQ(RunElsewhere({"checkouts"}).out, "") << "they are only shown";
  EXPECT_THAT(Run({"checkouts", "--on", "sim"}).out, StartsWith("2"));
  EXPECT_THAT(Run({"checkouts", "--on", "sim"}).out, EndsWith("\tanna\tfork.lxz\t" + uid + "\n"));
  const std::string json = RunElsewhere({"checkouts", "--on", "sim", "--json"}).out;
  EXPECT_THAT(json, HasSubstr("\"since\":\"\",\"user\":\"anna\",\"name\":\"fork.lxz\",\"uid\":\"" + uid +
                              "\",\"document\":\"" + server().Uid("D1001") + "&file=/fork.lxz\""));
  EXPECT_THAT(json, HasSubstr("\"workspace\":\"FenloomTMP"));
  EXPECT_THAT(json, HasSubstr("\"version\":\"B.1\",\"kept\":false}"));
  EXPECT_THAT(Run({"checkouts", "--on", "sim", "--json"}).out, HasSubstr("\"kept\":true}"));
}

TEST_F(FoundCheckouts, AreNoneOnlyWhenTheServerHasSaidSo) {
  CheckOut(path_);
  for (const char* fault : {"GET *dkm/workspaces?*=503", "GET *workspaces/W*/documents=500",
                            "GET *documents/search*=cut:10", "* *=drop"}) {
    Restart({"--fault", fault});
    const ProcessResult result = RunElsewhere({"checkouts", "--on", "sim"});
    EXPECT_TRUE(result.status == 1 || result.status == 3) << fault << ": " << result.status;
    EXPECT_EQ(result.out, "") << fault;
  }
  EXPECT_EQ(Run({"checkouts", "--on", "nowhere"}).status, 9);
  EXPECT_EQ(Run({"checkouts", "--on", "sim", "--forget", "x"}).status, 2);
}

TEST_F(FoundCheckouts, AreEndedByTheDocumentsPath) {
  for (const char* command : {"undo", "checkin"}) {
    for (const std::string& address : {path_, server().Uid("D1001")}) {
      const std::string uid = CheckOut(path_);
      const ProcessResult result = RunElsewhere({command, address});
      EXPECT_EQ(result.status, 0) << command << address << ": " << result.err;
      EXPECT_THAT(result.err, HasSubstr("is not kept here; its working copy is " + uid + "\n"));
      EXPECT_EQ(TemporaryWorkspaces(), 0U);
      ASSERT_EQ(Run({"verify", path_}).status, 1);
      if (std::string(command) == "checkin") return;
    }
  }
}

TEST_F(FoundCheckouts, TakeAStoreAndAreKeptFromThenOn) {
  const std::string uid = CheckOut(path_);
  const ProcessResult result = RunElsewhere({"put", "f", path_});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, uid + "\n");
  EXPECT_THAT(result.err, HasSubstr("is not kept here; its working copy is " + uid + "\n"));
  EXPECT_THAT(RunElsewhere({"checkouts"}).out, EndsWith("\tanna\tfork.lxz\t" + uid + "\n"));
  EXPECT_EQ(Run({"get", path_, "-o", "-"}).out, "an hour's work");
  const ProcessResult checkin = RunElsewhere({"checkin", path_});
  EXPECT_EQ(DocumentOf(server(), IdIn(checkin.out)).bytes, "an hour's work");
}

TEST_F(FoundCheckouts, AreFetchedInPlaceOfTheDocument) {
  CheckOut(path_);
  ASSERT_EQ(Run({"put", "f", path_}).status, 0);
  const ProcessResult result = RunElsewhere({"get", path_, "-o", "-"});
  EXPECT_EQ(result.out, "an hour's work");
  EXPECT_THAT(result.err, HasSubstr("is not kept here; its working copy is "));
  EXPECT_THAT(RunElsewhere({"get", "--base", path_, "-o", "-"}).out, StartsWith(forkHead));
}

TEST_F(FoundCheckouts, AreConfirmedAndKeptByVerify) {
  const std::string uid = CheckOut(path_);
  const ProcessResult result = RunElsewhere({"verify", path_});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, uid + "\n");
  EXPECT_THAT(RunElsewhere({"checkouts"}).out, EndsWith("\t" + uid + "\n"));
}

TEST_F(FoundCheckouts, AreNamedWhenTheDocumentIsCheckedOutAgain) {
  const std::string uid = CheckOut(path_);
  const ProcessResult result = RunElsewhere({"checkout", path_});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("which is not kept here; its working copy is " + uid +
                                    "; nothing was changed; go on with that, or \"vtdirect undo '" + uid +
                                    "'\" gives it up"));
  ExpectNothingWasChanged(uid);
}

TEST_F(FoundCheckouts, AreLeftAloneWhenAQuestionFails) {
  const std::string uid = CheckOut(path_);
  const std::size_t posts = Posts();
  for (const char* fault : {"GET *dkm/workspaces?*=503", "GET *workspaces/W*/documents=500",
                            "GET *workspaces/W*/documents=drop"}) {
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"undo", path_}, {"checkin", path_}, {"put", "f", path_}, {"get", path_}}) {
      Restart({"--fault", fault});
      const ProcessResult result = RunElsewhere(words);
      EXPECT_EQ(result.status, 1) << fault << words.front();
      EXPECT_EQ(result.out, "");
      EXPECT_THAT(result.err, HasSubstr("and its working copy could not be found out")) << fault;
      EXPECT_THAT(result.err, HasSubstr("; nothing was changed; ")) << fault;
      EXPECT_EQ(Posts(), posts) << fault;
    }
  }
  Restart({});
  ExpectNothingWasChanged(uid);
}

// The server itself has one working copy of a document; the answer that names two stands for one that has more.
TEST_F(FoundCheckouts, AreNamedAndRefusedWhenThereAreTwo) {
  const std::string uid = CheckOut(path_);
  Meddler meddler([](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    const std::string answer = forward();
    if (request.target.find("/workspaces/W") == std::string::npos) return peer.Send(answer);
    const std::string list = answer.substr(answer.find("\r\n\r\n") + 4);
    const std::string one = list.substr(list.find('{'), list.rfind('}') - list.find('{') + 1);
    peer.Answer(200, "[" + one + "," + one + "]", "Content-Type: application/json\r\n");
  });
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"undo", path_}, {"checkin", path_}, {"put", "f", path_}}) {
    environment_["http_proxy"] = meddler.Url();
    const ProcessResult result = RunElsewhere(words);
    environment_.erase("http_proxy");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err,
                HasSubstr("there are several working copies of " + path_ + ", and none is kept here: " + uid +
                          " and " + uid + "; nothing was changed; give the UID of the one that is meant\n"));
    ExpectNothingWasChanged(uid);
  }
}

// The bench shows the document, and its working copy is in a temporary workspace.
TEST_F(FoundCheckouts, AreNotWhatAnotherWorkspaceOnlyShows) {
  const std::string uid = CheckOut(path_);
  const std::size_t posts = Posts();
  const std::string words = std::string(forkOnBench) +
                            " is no working copy: the workspace only shows the document, which you have "
                            "checked out in the temporary workspace FenloomTMP";
  for (const std::vector<std::string>& command : {std::vector<std::string>{"verify", forkOnBench},
                                                  {"put", "f", forkOnBench},
                                                  {"undo", forkOnBench},
                                                  {"checkin", forkOnBench},
                                                  {"get", forkOnBench}}) {
    const ProcessResult result = RunElsewhere(command);
    EXPECT_EQ(result.status, 1) << command.front();
    EXPECT_THAT(result.err, HasSubstr(words)) << command.front();
    EXPECT_THAT(result.err, HasSubstr("; its working copy is " + uid));
    EXPECT_EQ(Posts(), posts);
    EXPECT_EQ(RunElsewhere({"checkouts"}).out, "") << "it is not kept";
  }
  ExpectNothingWasChanged(uid);
}

}  // namespace vtdirect_test
