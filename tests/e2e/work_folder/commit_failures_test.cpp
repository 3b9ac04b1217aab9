#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <sstream>

#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/work_folder/work_folder_fixture.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {

/// What `commit` says and leaves when the server fails in the middle.
class CommitFailures : public WorkFolderTest {
 protected:
  void SetUp() override {
    Clone();
    WriteFile(Fork(), "mine");
  }

  ProcessResult CommitThrough(const Meddler::Meddle& meddle) {
    const Meddler meddler(meddle);
    environment_["http_proxy"] = meddler.Url();
    ProcessResult result = RunIn("Frame", {"commit"});
    environment_.erase("http_proxy");
    return result;
  }

  static bool Asks(const WireRequest& request, const char* part) {
    return request.method == "GET" && request.target.find(part) != std::string::npos;
  }
};

namespace {

constexpr const char* documents = "/dkm/documents/";

// The words of a command in quotes that a text tells to type, none of which has a quote in it.
[[nodiscard]] std::vector<std::string> WordsToType(const std::string& text) {
  const std::string begin = "\"vtdirect ";
  const std::size_t from = text.find(begin) + begin.size();
  std::istringstream command(text.substr(from, text.find('"', from) - from));
  std::vector<std::string> words;
  for (std::string word; command >> std::ws && !command.eof();) {
    const bool isQuoted = command.peek() == '\'';
    if (isQuoted) command.get();
    std::getline(command, word, isQuoted ? '\'' : ' ');
    words.push_back(word);
  }
  return words;
}

}  // namespace

TEST_F(CommitFailures, ChecksNothingInWhenTheServerHasNotTakenALink) {
  const auto links = DocumentOf(server(), "D1001").sources;
  ASSERT_EQ(links.count("frame.lxz"), 1U);
  std::atomic<bool> isStored = false;
  const ProcessResult result =
      CommitThrough([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
        std::string answer = forward();
        if (request.target.ends_with("/store")) isStored = true;
        const std::size_t member = answer.find("derivedSourceDependencies");
        if (isStored && Asks(request, documents) && member != std::string::npos) answer[member] = 'x';
        peer.Send(answer);
      });
  EXPECT_EQ(result.status, 11) << result.err;
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr(", which is checked out and was not checked in, but without the link "
                                    "frame.lxz; \"vtdirect put "));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_NE(ForkOnServer(), "mine");
  // The command that is told stores it with the link, and the work folder knows it for its own.
  const ProcessResult again = RunIn("Frame", WordsToType(result.err));
  EXPECT_EQ(again.status, 0) << again.err;
  EXPECT_EQ(ForkOnServer(), "mine");
  EXPECT_EQ(DocumentOf(server(), IdIn(again.out)).sources, links);
  EXPECT_EQ(RunIn("Frame", {"commit"}).out, "known\tB.2\tfork.lxz\n");
}

TEST_F(CommitFailures, ChecksNothingInWhileItIsNotKnownWhetherTheServerHasTheLinks) {
  std::atomic<bool> isStored = false;
  const ProcessResult result =
      CommitThrough([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
        if (isStored && Asks(request, documents)) return peer.Answer(503, "{}");
        peer.Send(forward());
        if (request.target.ends_with("/store")) isStored = true;
      });
  EXPECT_EQ(result.status, 11) << result.err;
  EXPECT_THAT(result.err,
              HasSubstr(", which is checked out and was not checked in; whether it has its source "
                        "links could not be found out"));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(Run({"checkin", forkPath}).status, 0) << "as it tells";
  EXPECT_EQ(ForkOnServer(), "mine");
}

TEST_F(CommitFailures, SaysThatADocumentWasCheckedOutOfWhichNothingWasSent) {
  std::atomic<bool> isCheckedOut = false;
  const ProcessResult result =
      CommitThrough([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
        if (isCheckedOut && Asks(request, "/dkm/documents/D1002")) return peer.Answer(503, "{}");
        peer.Send(forward());
        if (request.target.ends_with("/checkout")) isCheckedOut = true;
      });
  EXPECT_EQ(result.status, 1) << result.err;
  EXPECT_THAT(result.err, HasSubstr("nothing was sent; its document is checked out now; "));
  EXPECT_THAT(result.err, HasSubstr(" ends the checkout, and a further commit goes on with it"));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(RunIn("Frame", {"commit"}).status, 0);
  EXPECT_EQ(ForkOnServer(), "mine");
}

// The library takes a version for the newest when the server does not tell, and an undo for done that was refused.
TEST_F(CommitFailures, SendsNothingWhileTheNewestVersionIsNotToldAndTakesNoRefusedUndoForDone) {
  std::atomic<bool> isCheckedOut = false;
  const ProcessResult result =
      CommitThrough([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
        const bool isQuestion = Asks(request, "DynamicDocuments?") || Asks(request, "/versions?");
        if (isCheckedOut && (isQuestion || request.method == "POST")) return peer.Answer(503, "{}");
        peer.Send(forward());
        if (request.target.ends_with("/checkout")) isCheckedOut = true;
      });
  EXPECT_EQ(result.status, 3) << result.err;
  EXPECT_THAT(result.err,
              HasSubstr("fork.lxz was not sent: whether its document has a newer version could not "
                        "be found out"));
  EXPECT_THAT(result.err, HasSubstr("you still have it checked out"));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_NE(ForkOnServer(), "mine");
  EXPECT_THAT(Book(), HasSubstr("\tfork.lxz\t"));
  EXPECT_THAT(server().Log(), Not(HasSubstr("creationFactory")));
  EXPECT_EQ(Run({"recover"}).status, 0);
  EXPECT_EQ(RunIn("Frame", {"commit"}).status, 0);
  EXPECT_EQ(ForkOnServer(), "mine");
}

}  // namespace vtdirect_test
