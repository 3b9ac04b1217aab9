#include <gmock/gmock.h>

#include "tests/e2e/cli/checkout_fixture.h"
#include "tests/e2e/cli/meddler.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {

/// A change that is answered by a success which does not tell of it: by a proxy, which has kept the request, or by a
/// server that keeps the document to itself.
class UnconfirmedChange : public CheckoutTest {
 protected:
  enum class Reaches { Server, Nobody };

  void SetUp() override {
    Serve();
    WriteFile(Here("f"), "new content");
  }

  ProcessResult RunWithAnswer(const std::vector<std::string>& words, const std::string& step,
                              const std::string& body, Reaches reaches = Reaches::Nobody) {
    const Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
      if (request.method != "POST" || !request.target.ends_with(step)) return peer.Send(forward());
      if (reaches == Reaches::Server) static_cast<void>(forward());
      peer.Answer(200, body);
    });
    environment_["http_proxy"] = meddler.Url();
    ProcessResult result = Run(words);
    environment_.erase("http_proxy");
    return result;
  }

  [[nodiscard]] std::string OpenEntries() const { return ReadFile(Home(".local/state/vtdirect/journal")); }
};

TEST_F(UnconfirmedChange, IsNoCheckin) {
  for (const char* address : {forkPath, forkOnBench}) {
    for (const char* body : {"{}", "[]", "<html>"}) {
      SCOPED_TRACE(std::string(address) + " " + body);
      const std::string uid = CheckOut(address);
      ASSERT_EQ(Run({"put", "f", uid}).status, 0);
      const ProcessResult result = RunWithAnswer({"checkin", address}, "/checkin", body);
      EXPECT_EQ(result.status, 11) << result.err;
      EXPECT_EQ(result.out, "");
      EXPECT_THAT(result.err, HasSubstr(std::string(address) +
                                        " was to be checked in, and whether it is checked in is not known"));
      EXPECT_THAT(OpenEntries(), HasSubstr("\tcheckin\t"));
      EXPECT_THAT(Book(), HasSubstr("\t" + uid + "\t"));
      static_cast<void>(Run({"recover"}));
      static_cast<void>(Run({"undo", uid}));
      EXPECT_EQ(Run({"get", address, "-o", "f"}).status, 8) << "its bytes are nowhere else";
      EXPECT_EQ(ReadFile(Here("f")), "new content");
    }
  }
}

// The content may be large, and the program be ended while it comes.
TEST_F(UnconfirmedChange, IsNoCheckinWhoseContentIsStillToBeRead) {
  const std::string uid = CheckOut(forkPath);
  ASSERT_EQ(Run({"put", "f", uid}).status, 0);
  std::string openWhenRead = "the content was not read";
  const Meddler meddler([&](Peer& peer, const WireRequest&, const Meddler::Forward& forward) {
    const std::string answer = forward();
    if (answer.ends_with("new content")) openWhenRead = OpenEntries() + Book();
    peer.Send(answer);
  });
  environment_["http_proxy"] = meddler.Url();
  EXPECT_EQ(Run({"checkin", forkPath}).status, 0);
  environment_.erase("http_proxy");
  EXPECT_THAT(openWhenRead, Not(HasSubstr("\tcheckin\t")));
  EXPECT_THAT(openWhenRead, Not(HasSubstr(uid)));
  EXPECT_THAT(openWhenRead, HasSubstr(bookHead));
  EXPECT_EQ(Run({"get", forkPath, "-o", "f"}).status, 0) << "its bytes are in the iteration";
}

TEST_F(UnconfirmedChange, IsACheckinWhenTheServerShowsItsIteration) {
  // In this order, since the copy on the bench does not follow the document.
  for (const char* address : {forkOnBench, forkPath}) {
    const std::string uid = CheckOut(address);
    ASSERT_EQ(Run({"put", "f", uid}).status, 0);
    const ProcessResult result = RunWithAnswer({"checkin", address}, "/checkin", "[]", Reaches::Server);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.err, HasSubstr("the server's answer named no document; this is the newest iteration"));
    EXPECT_EQ(Book(), bookHead);
    EXPECT_EQ(Run({"get", forkPath, "-o", "-"}).out, "new content");
    EXPECT_EQ(Run({"get", forkPath, "-o", "f"}).status, 0) << "the server has it";
  }
}

TEST_F(UnconfirmedChange, IsNoCheckinAfterAStore) {
  const std::string uid = CheckOut(forkPath);
  const ProcessResult result = RunWithAnswer({"put", "f", uid, "--checkin"}, "/checkin", "{}");
  EXPECT_EQ(result.status, 11) << result.err;
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("the file was stored in the working copy " + uid +
                                    ", and whether it is checked in is not known"));
  EXPECT_THAT(Book(), HasSubstr("\t" + uid + "\t"));
  EXPECT_EQ(Run({"get", forkPath, "-o", "f"}).status, 8) << "its bytes are nowhere else";
  const std::string next = CheckOut(forkPath);
  EXPECT_EQ(RunWithAnswer({"put", "f", next, "--checkin"}, "/checkin", "[]", Reaches::Server).status, 0);
  EXPECT_EQ(Run({"get", forkPath, "-o", "-"}).out, "new content");
}

TEST_F(UnconfirmedChange, IsNoStore) {
  const std::string uid = CheckOut(forkPath);
  const ProcessResult result = RunWithAnswer({"put", "f", uid, "--checkin"}, "/store", "{}");
  EXPECT_EQ(result.status, 11) << result.err;
  EXPECT_THAT(result.err, HasSubstr("and whether the file is stored in it is not known"));
  EXPECT_THAT(OpenEntries(), HasSubstr("\tstore\t"));
  EXPECT_THAT(server().Log(), Not(HasSubstr("/checkin")));
  EXPECT_EQ(Run({"get", uid, "-o", "f"}).status, 8) << "it was not stored";
}

TEST_F(UnconfirmedChange, IsNoNewIteration) {
  const ProcessResult result = RunWithAnswer({"put", "f", forkPath}, "dkm/documents", "{}");
  EXPECT_EQ(result.status, 11) << result.err;
  EXPECT_THAT(result.err, HasSubstr("B.1 is the newest iteration"));
  EXPECT_THAT(OpenEntries(), HasSubstr("\titerate\t"));
  EXPECT_EQ(Run({"get", forkPath, "-o", "f"}).status, 8) << "it was not stored";
  EXPECT_EQ(RunWithAnswer({"put", "f", forkPath}, "dkm/documents", "[]", Reaches::Server).status, 0);
  EXPECT_EQ(Run({"get", forkPath, "-o", "-"}).out, "new content");
}

/// What others store in a working copy here, without a word of it in what is kept.
class StoredByOthers : public UnconfirmedChange {
 protected:
  void SetUp() override {
    UnconfirmedChange::SetUp();
    uid_ = CheckOut(forkPath);
    ASSERT_EQ(Run({"put", "f", uid_}).status, 0);
    WriteFile(Home("theirs"), "theirs");
    ASSERT_EQ(RunElsewhere({"put", Home("theirs"), uid_}).status, 0);
  }

  std::string uid_;
};

TEST_F(StoredByOthers, TakesTheOnlyPlaceOfAFileThatIsThenNotReplaced) {
  const ProcessResult result = Run({"get", forkPath, "-o", "f"});
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err, HasSubstr("f has a content of the working copy " + uid_ +
                                    " that was replaced there by another one"));
  EXPECT_EQ(ReadFile(Here("f")), "new content");
  EXPECT_EQ(Run({"get", forkPath, "-o", "f", "--force"}).status, 0);
  EXPECT_EQ(ReadFile(Here("f")), "theirs");
  EXPECT_EQ(Run({"get", forkPath, "-o", "f"}).status, 0) << "it is that of the working copy now";
}

TEST_F(StoredByOthers, IsWhatACheckinKeepsAndTheFileIsNot) {
  ASSERT_EQ(Run({"checkin", forkPath}).status, 0);
  EXPECT_EQ(Run({"get", forkPath, "-o", "-"}).out, "theirs");
  EXPECT_EQ(Run({"get", forkPath, "-o", "f"}).status, 8);
  EXPECT_EQ(ReadFile(Here("f")), "new content");
}

}  // namespace vtdirect_test
