#include <gmock/gmock.h>
#include <rapidjson/document.h>
#include <signal.h>

#include <filesystem>
#include <set>
#include <sstream>

#include "tests/e2e/cli/checkout_fixture.h"

using testing::AnyOf;
using testing::ContainsRegex;
using testing::HasSubstr;

namespace vtdirect_test {
namespace {

// The requests of a piece of the server's log, each once, as patterns of a fault.
std::set<std::string> RequestsIn(const std::string& log) {
  std::set<std::string> requests;
  std::istringstream stream(log);
  for (std::string line; std::getline(stream, line);) {
    rapidjson::Document json;
    json.Parse(line.c_str());
    if (json.HasParseError()) continue;
    requests.insert(std::string(json["method"].GetString()) + " " + json["path"].GetString());
  }
  return requests;
}

struct Flow {
  const char* command;
  const char* checkedOutFrom;  // what was checked out before; null for nothing
  const char* name;
  bool isGone = false;  // the checkout was undone by other means
};

testing::Matcher<std::string> IsNotKnown() {
  return AnyOf(HasSubstr("is not known"), HasSubstr("could not be found out"));
}

constexpr Flow flows[] = {
    {"checkout", nullptr, "Checkout"},          {"checkin", forkPath, "Checkin"},
    {"checkin", forkOnBench, "CheckinOnBench"}, {"undo", forkPath, "Undo"},
    {"undo", forkOnBench, "UndoOnBench"},       {"verify", forkPath, "Verify"},
    {"verify", forkOnBench, "VerifyOnBench"},   {"verify", forkPath, "VerifyOfWhatIsGone", true}};

// What goes wrong.
struct Accident {
  const char* action;
  const char* name;
};

// A sanitized program takes long to start, and each accident starts hundreds. The other build knows all four.
constexpr Accident accidents[] = {{"503", "Refused"},
#ifndef __SANITIZE_ADDRESS__
                                  {"503*1", "RefusedOnce"},
                                  {"drop*1", "NotAnswered"},
#endif
                                  {"cut:1*1", "DoneAndAnsweredInPart"}};

}  // namespace

/// Lets every single request of a command fail, in one way after the other, and holds what the command says
/// against what the server then holds and what is kept.
class CheckoutFaults : public CheckoutTest, public testing::WithParamInterface<std::tuple<Flow, Accident>> {
 protected:
  // A server without a history, with what the flow needs.
  void Begin() {
    std::filesystem::remove_all(Home(".local"));
    EndServer();
    Serve();
    uid_ = flow_.checkedOutFrom == nullptr ? "" : CheckOut(flow_.checkedOutFrom);
    if (flow_.isGone) {
      EXPECT_EQ(RunElsewhere({"undo", uid_}).status, 0);
    }
  }

  // A verification is free to renew, and must not while the working copy is there.
  ProcessResult RunFlow() {
    if (std::string(flow_.command) == "verify") return Run({"verify", "--renew", Address()});
    return Run({flow_.command, Address()});
  }

  [[nodiscard]] std::string Address() const {
    return flow_.checkedOutFrom == nullptr ? forkPath : flow_.checkedOutFrom;
  }

  [[nodiscard]] std::set<std::string> RequestsOfFlow() {
    Begin();
    const std::size_t before = server().Log().size();
    EXPECT_EQ(RunFlow().status, 0);
    return RequestsIn(server().Log().substr(before));
  }

  void ExpectTruth(const ProcessResult& result) {
    if (result.status != 0 && result.status != 1) {
      EXPECT_THAT(result.status, AnyOf(3, 6))
          << "a server that can't be used, or an object that it keeps back";
    }
    const std::string command = flow_.command;
    if (command == "checkout") return ExpectTruthOfCheckout(result);
    if (command == "verify") return ExpectTruthOfVerify(result);
    ExpectTruthOfEnd(result);
  }

  void ExpectTruthOfCheckout(const ProcessResult& result) {
    const bool held = !HolderOf("D1001").empty();
    if (result.status == 0) {
      EXPECT_TRUE(held);
      EXPECT_THAT(Book(), HasSubstr("\t" + FirstLine(result.out) + "\t"));
      EXPECT_EQ(Run({"verify", forkPath}).out, result.out);
      return;
    }
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(Book(), AnyOf("", bookHead));
    if (result.status != 1) return;
    if (held) {
      EXPECT_THAT(result.err, AnyOf(HasSubstr("you have it checked out now"), IsNotKnown()));
    } else {
      EXPECT_THAT(result.err, AnyOf(HasSubstr("nothing was changed"), HasSubstr("may still be carried out"),
                                    IsNotKnown()));
      EXPECT_EQ(Run({"checkout", forkPath}).status, 0) << "the same command again";
    }
  }

  void ExpectTruthOfEnd(const ProcessResult& result) {
    const bool held = !HolderOf("D1001").empty();
    if (result.status == 0) {
      EXPECT_FALSE(held);
      EXPECT_EQ(Book(), bookHead);
      EXPECT_EQ(Run({"uid", FirstLine(result.out)}).status, 0);
      EXPECT_EQ(Run({"checkout", FirstLine(result.out)}).status, 0) << "the UID is one to go on with";
      return;
    }
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(Book(), HasSubstr("\t" + uid_ + "\t")) << "nothing is forgotten";
    if (held) {
      if (result.status == 1) {
        EXPECT_THAT(result.err, AnyOf(HasSubstr("you still have it checked out"), IsNotKnown()));
      }
      const ProcessResult again = RunFlow();
      EXPECT_EQ(again.status, 0) << "the same command again: " << again.err;
      return;
    }
    EXPECT_THAT(result.err, AnyOf(HasSubstr("may have been done"), IsNotKnown()));
    FollowAdvice();
  }

  // What has ended without an answer is put right by what the message says.
  void FollowAdvice() {
    const bool undoneInTemporary = std::string(flow_.command) == "undo" && flow_.checkedOutFrom == forkPath;
    const ProcessResult result = Run({undoneInTemporary ? "undo" : "verify", uid_});
    EXPECT_EQ(result.status, undoneInTemporary ? 0 : 1) << result.err;
    EXPECT_EQ(HolderOf("D1001"), "");
    EXPECT_EQ(Book(), bookHead);
    if (!undoneInTemporary && flow_.checkedOutFrom == forkPath) {
      EXPECT_THAT(result.err, HasSubstr("\"vtdirect undo '" + uid_ + "'\" clears away"));
      EXPECT_EQ(Run({"undo", uid_}).status, 0);
    }
    EXPECT_EQ(TemporaryWorkspaces(), 0U);
    EXPECT_EQ(Run({"checkout", FirstLine(result.out)}).status, 0) << "the UID is one to go on with";
  }

  void ExpectTruthOfVerify(const ProcessResult& result) {
    const bool held = !HolderOf("D1001").empty();
    if (!flow_.isGone) {
      EXPECT_EQ(Run({"verify", forkPath}).out, uid_ + "\n") << "the very working copy";
      EXPECT_EQ(TemporaryWorkspaces(), flow_.checkedOutFrom == forkPath ? 1U : 0U);
    }
    if (result.status != 0) {
      EXPECT_TRUE(!held || Book().find("\t" + uid_ + "\t") != std::string::npos) << "nothing is forgotten";
      return;
    }
    EXPECT_TRUE(held);
    const std::string uid = FirstLine(result.out);
    EXPECT_THAT(Book(), HasSubstr("\t" + uid + "\t"));
    if (uid != uid_) {
      EXPECT_THAT(result.err, HasSubstr("was gone, with all that was not checked in"));
    }
    EXPECT_EQ(Run({"verify", uid}).out, result.out);
    EXPECT_EQ(Run({"checkin", uid}).status, 0);
  }

  static std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

  const Flow flow_ = std::get<0>(GetParam());
  std::string uid_;
};

INSTANTIATE_TEST_SUITE_P(Flows, CheckoutFaults,
                         testing::Combine(testing::ValuesIn(flows), testing::ValuesIn(accidents)),
                         [](const auto& test) {
                           return std::string(std::get<0>(test.param).name) + std::get<1>(test.param).name;
                         });

TEST_P(CheckoutFaults, LeaveWhatTheCommandSaysWhicheverRequestFails) {
  const std::string action = std::get<1>(GetParam()).action;
  const std::set<std::string> requests = RequestsOfFlow();
  ASSERT_FALSE(requests.empty());
  int failures = 0;
  for (const std::string& request : requests) {
    SCOPED_TRACE(request + "=" + action);
    Begin();
    Restart({"--fault", request + "=" + action});
    const ProcessResult result = RunFlow();
    Restart({});
    SCOPED_TRACE("status " + std::to_string(result.status) + ": " + result.err);
    ExpectTruth(result);
    if (result.status != 0) ++failures;
  }
  // What is asked once more, or asked on another way, does not fail the command; a refusal of all of it does.
  if (action == "503") {
    EXPECT_GT(failures, 0);
  }
}

/// What the message says, for each way in which the request that changes something can end.
class CheckoutFailure : public CheckoutTest {
 protected:
  void SetUp() override { Serve(); }

  std::string Fail(const std::vector<std::string>& faults, const std::vector<std::string>& words) {
    std::vector<std::string> options;
    for (const std::string& fault : faults) options.insert(options.end(), {"--fault", fault});
    Restart(options);
    const ProcessResult result = Run(words);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    Restart({});
    return result.err;
  }

  // A server that has answered is done with a request. Without an answer it may come to it after it was asked what
  // is there.
  [[nodiscard]] static bool IsAnswered(const std::string& fault) {
    return fault.ends_with("=409") || fault.ends_with("=500");
  }

  const std::string path_ = forkPath;
  const std::string recover_ = "; \"vtdirect recover\" asks again, before the same command is given again\n";
};

TEST_F(CheckoutFailure, OfACheckoutSaysWhatIsThere) {
  for (const char* fault : {"POST *workspaces=500", "POST *checkout=500", "POST *checkout=409",
                            "POST *checkout=drop", "POST *checkout=cut:1"}) {
    const std::string err = Fail({fault}, {"checkout", path_});
    EXPECT_THAT(err, testing::StartsWith("vtdirect: the checkout of " + path_ + " failed ("));
    EXPECT_THAT(
        err, testing::EndsWith(IsAnswered(fault)
                                   ? "; nothing was changed, it is not checked out; the same command can be "
                                     "given again\n"
                                   : "; it is not checked out, but the checkout may still be carried out" +
                                         recover_));
    EXPECT_EQ(HolderOf("D1001"), "");
    EXPECT_EQ(TemporaryWorkspaces(), 0U);
    EXPECT_EQ(Book(), "");
    EXPECT_EQ(Run({"recover"}).status, 0);
  }
}

TEST_F(CheckoutFailure, OfACheckoutThatStandsSaysSo) {
  const std::string err = Fail({"POST *checkout=cut:1", "POST *delete=500"}, {"checkout", path_});
  const std::string uid = TemporaryUid("D1001", "fork.lxz");
  EXPECT_THAT(err,
              testing::ContainsRegex("; you have it checked out now, and its working copy is " + uid +
                                     "; go on with that, or \"vtdirect undo '" + uid + "'\" gives it up\n"));
  EXPECT_EQ(HolderOf("D1001"), "anna");
}

TEST_F(CheckoutFailure, OfACheckInOrAnUndoSaysThatTheWorkingCopyStays) {
  const std::string uid = CheckOut(path_);
  const std::string stays = "; you still have it checked out, and its working copy is " + uid;
  for (const char* fault : {"POST *checkin=500", "POST *checkin=409", "POST *checkin=drop"}) {
    const std::string err = Fail({fault}, {"checkin", path_});
    EXPECT_THAT(err, testing::StartsWith("vtdirect: the check-in of " + path_ + " failed ("));
    EXPECT_THAT(err,
                testing::EndsWith(stays + (IsAnswered(fault)
                                               ? "; the same command can be given again\n"
                                               : ", but the check-in may still be carried out" + recover_)));
    EXPECT_EQ(Run({"recover"}).status, 0);
  }
  const std::string err = Fail({"POST *undocheckout=500", "POST *delete=500"}, {"undo", path_});
  EXPECT_THAT(err, testing::StartsWith("vtdirect: the undo of " + path_ + " failed ("));
  EXPECT_THAT(err, testing::EndsWith(stays + "; the same command can be given again\n"));
  EXPECT_THAT(Book(), HasSubstr("\t" + uid + "\t"));
  EXPECT_EQ(Run({"checkin", path_}).status, 0);
}

TEST_F(CheckoutFailure, OfACheckInWhoseAnswerIsLostSaysThatItMayHaveBeenDone) {
  for (const char* address : {forkOnBench, forkPath}) {
    const std::string uid = CheckOut(address);
    EXPECT_THAT(
        Fail({"POST *checkin=cut:1"}, {"checkin", address}),
        testing::EndsWith("; its working copy is not there any more, so the check-in may have been done, and "
                          "only the answer lost; \"vtdirect verify '" +
                          uid + "'\" tells the state of the checkout\n"));
    EXPECT_EQ(HolderOf("D1001"), "");
    EXPECT_THAT(Book(), HasSubstr("\t" + uid + "\t"));
    EXPECT_EQ(Run({"verify", uid}).out, Run({"uid", address}).out);
    EXPECT_EQ(Book(), bookHead);
    if (address == forkPath) {
      EXPECT_EQ(Run({"undo", uid}).status, 0);
    }
    EXPECT_EQ(TemporaryWorkspaces(), 0U);
  }
}

TEST_F(CheckoutFailure, OfAnUndoInATemporaryWorkspaceIsNoneOnceThatIsGone) {
  CheckOut(path_);
  Restart({"--fault", "POST *undocheckout=500"});
  EXPECT_EQ(Run({"undo", path_}).out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_EQ(Book(), bookHead);
}

TEST_F(CheckoutFailure, IsNoneWhenOnlyTheTemporaryWorkspaceStays) {
  CheckOut(path_);
  Restart({"--fault", "POST *delete=500"});
  const ProcessResult result = Run({"checkin", path_});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, Run({"uid", path_}).out);
  EXPECT_THAT(
      result.err,
      ContainsRegex(
          "warning: the temporary workspace could not be deleted .*HTTP 500.*; it may stay on the server, at "
          "http://.*/workspaces/W[0-9]+/"));
  EXPECT_EQ(Book(), bookHead);
}

/// A user who has had enough of waiting for an answer.
class CheckoutInterrupted : public CheckoutTest {
 protected:
  std::string InterruptAt(const std::string& request, const std::vector<std::string>& words) {
    Restart({"--fault", request + "=stall"});
    const std::size_t before = server().Log().size();
    const auto process = Start(words);
    EXPECT_TRUE(WaitUntil([&] { return server().Log().find("csrf", before) != std::string::npos; }));
    // The request is on its way; nothing else tells when it has arrived.
    SleepMilliseconds(500);
    process->Signal(SIGINT);
    const ProcessResult result = process->Wait();
    EXPECT_EQ(result.status, 130);
    EXPECT_EQ(result.out, "");
    Restart({});
    return result.err;
  }
};

TEST_F(CheckoutInterrupted, TellsHowToFindOutState) {
  Serve();
  const std::string path = forkPath;
  EXPECT_EQ(InterruptAt("POST *checkout", {"checkout", path}),
            "vtdirect: interrupted; whether " + path + " is checked out is not known; \"vtdirect status '" +
                path + "'\" tells\n");
  EXPECT_EQ(Run({"recover"}).status, 0);
  EXPECT_EQ(Book(), "");
  const std::string uid = CheckOut(path);
  EXPECT_EQ(InterruptAt("POST *checkin", {"checkin", path}),
            "vtdirect: interrupted; whether the checkout of " + path +
                " has ended is not known; \"vtdirect verify '" + uid +
                "'\" tells the state of the checkout\n");
  EXPECT_EQ(Run({"recover"}).status, 0);
  EXPECT_EQ(InterruptAt("POST *undocheckout", {"undo", path}),
            "vtdirect: interrupted; whether the checkout of " + path +
                " has ended is not known; the same command can be given again\n");
  EXPECT_THAT(Book(), HasSubstr("\t" + uid + "\t"));
  EXPECT_EQ(Run({"verify", path}).out, uid + "\n");
}

}  // namespace vtdirect_test
