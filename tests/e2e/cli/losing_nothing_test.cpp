#include <gmock/gmock.h>
#include <signal.h>

#include <atomic>
#include <filesystem>

#include "tests/e2e/cli/checkout_fixture.h"
#include "tests/e2e/cli/meddler.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {
namespace {

constexpr const char* kNewPath = "//sim/Products/Trekking Bike/Folders/Frame/new.lxz";
constexpr const char* kStoredBefore = "stored before";
constexpr const char* kNewContent = "new content";

// A command that changes something.
struct Change {
  const char* name;
  std::vector<std::string> words;
  bool isCheckedOut;  // before, with something stored in the working copy
};

const Change kChanges[] = {
    {"Checkout", {"checkout", kForkPath}, false},
    {"Checkin", {"checkin", kForkPath}, true},
    {"Undo", {"undo", kForkPath}, true},
    {"Store", {"put", "f", kForkPath}, true},
    {"StoreAndCheckIn", {"put", "f", kForkPath, "--checkin"}, true},
    {"Iterate", {"put", "f", kForkPath}, false},
    {"Create", {"put", "f", kNewPath}, false},
};

enum class Accident { KilledBefore, KilledAfter, Refused, Lost, Cut, Reset, Silent };

// A read has no consequence, so of it three ways stand for all.
[[nodiscard]] std::vector<Accident> AccidentsOf(bool isWrite) {
#ifdef __SANITIZE_ADDRESS__
  // A sanitized program takes long to start. The other build knows all of them.
  if (!isWrite) return {};
#endif
  if (!isWrite) return {Accident::KilledBefore, Accident::Refused, Accident::Lost};
  return {Accident::KilledBefore, Accident::KilledAfter, Accident::Refused, Accident::Lost,
          Accident::Cut,          Accident::Reset,       Accident::Silent};
}

}  // namespace

/// Every request of every command that changes something fails in every way, and the program is killed before
/// and after each. Afterwards the server or the disk has every byte that was stored or edited, `recover`
/// settles what was left open, and what is kept here agrees with the server.
class LosingNothing : public CheckoutTest, public testing::WithParamInterface<Change> {
 protected:
  // A killed program leaves its directory for temporary files.
  void RemoveWhatKilledProgramsLeave() {
    std::filesystem::remove_all(Home("../temporary"));
    std::filesystem::create_directory(Home("../temporary"));
  }

  void TearDown() override {
    RemoveWhatKilledProgramsLeave();
    CheckoutTest::TearDown();
  }

  void Begin() {
    environment_.erase("http_proxy");
    std::filesystem::remove_all(Home(".local"));
    EndServer();
    Serve();
    WriteFile(Here("f"), kNewContent);
    WriteFile(Here("g"), kStoredBefore);
    base_ = server().Get(kForkContent);
    if (!GetParam().isCheckedOut) return;
    CheckOut(kForkPath);
    ASSERT_EQ(Run({"put", "g", kForkPath}).status, 0);
  }

  // Runs the change with an accident at one of its requests. Gives whether that request came.
  bool RunWithAccident(int at, Accident accident, bool* isWrite) {
    int number = 0;
    bool came = false;
    std::atomic<Process*> process = nullptr;
    {
      Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
        if (number++ != at) return peer.Send(forward());
        came = true;
        *isWrite = request.method != "GET";
        EXPECT_TRUE(WaitUntil([&process] { return process != nullptr; }));
        Happen(accident, peer, forward, *process);
      });
      environment_["http_proxy"] = meddler.Url();
      const auto running = Start(Words());
      process = running.get();
      result_ = running->Wait();
    }
    environment_.erase("http_proxy");
    return came;
  }

  [[nodiscard]] static std::vector<std::string> Words() {
    std::vector<std::string> words = {"--stall-timeout", "1"};
    words.insert(words.end(), GetParam().words.begin(), GetParam().words.end());
    return words;
  }

  static void Happen(Accident accident, Peer& peer, const Meddler::Forward& forward, const Process& process) {
    if (accident == Accident::KilledBefore) return process.Signal(SIGKILL);
    if (accident == Accident::Refused) return peer.Answer(503, "{}");
    const std::string answer = forward();
    if (accident == Accident::KilledAfter) process.Signal(SIGKILL);
    if (accident == Accident::Cut) peer.Send(answer.substr(0, answer.size() - answer.size() / 4 - 1));
    if (accident == Accident::Reset) peer.Reset();
    if (accident == Accident::Silent) peer.StaySilent();
  }

  // What a reader of the path gets now, from the working copy if there is one.
  [[nodiscard]] std::string Content(const std::string& path) {
    const ProcessResult result = Run({"get", path, "-o", "-"});
    return result.status == 0 ? result.out : "(" + std::to_string(result.status) + ") " + result.err;
  }

  // What the content may be, by what was asked for and whether that was told to be done.
  [[nodiscard]] bool MayBe(const std::string& content, bool isHeld, bool done) const {
    const std::string command = GetParam().name;
    const bool isNew = content == kNewContent;
    if (command == "Checkout") return content == base_;
    if (command == "Checkin") return content == kStoredBefore;
    if (command == "Undo") return content == (isHeld ? std::string(kStoredBefore) : base_);
    if (command.starts_with("Store")) return isNew || (!done && content == kStoredBefore);
    if (command == "Iterate") return isNew || (!done && content == base_);
    return isNew || (!done && content.starts_with("(6)"));
  }

  void ExpectNothingIsLost() {
    EXPECT_EQ(ReadFile(Here("f")), kNewContent);
    EXPECT_EQ(ReadFile(Here("g")), kStoredBefore);
    const std::string command = GetParam().name;
    const bool isHeld = HolderOf("D1001") == "anna";
    const bool done = result_.status == 0;
    const std::string content = Content(command == "Create" ? kNewPath : kForkPath);
    if (command == "Checkout" || command == "Store") {
      EXPECT_TRUE(isHeld || (command == "Checkout" && !done));
    }
    EXPECT_TRUE(MayBe(content, isHeld, done)) << content;
    ExpectTheBookIsRight(isHeld);
  }

  // Whoever has it checked out can go on by the document's path; nobody else is told that they could.
  void ExpectTheBookIsRight(bool isHeld) {
    const ProcessResult verified = Run({"verify", kForkPath});
    EXPECT_EQ(verified.status, isHeld ? 0 : 1) << verified.err;
    const ProcessResult next = Run({isHeld ? "checkin" : "checkout", kForkPath});
    EXPECT_EQ(next.status, 0) << next.err;
  }

  void ExpectRecovery() {
    const ProcessResult recovered = Run({"recover"});
    EXPECT_EQ(recovered.status, 0) << recovered.out << recovered.err;
    EXPECT_THAT(recovered.out, Not(HasSubstr("could not be found out")));
    EXPECT_EQ(Run({"recover"}).out, "") << "nothing stays open";
  }

  std::string base_;
  ProcessResult result_;
};

INSTANTIATE_TEST_SUITE_P(Changes, LosingNothing, testing::ValuesIn(kChanges),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(LosingNothing, WhicheverRequestFailsInWhicheverWay) {
  bool came = true;
  for (int at = 0; came && !HasFailure(); ++at) {
    bool isWrite = false;
    Begin();
    came = RunWithAccident(at, Accident::KilledBefore, &isWrite);
    for (const Accident accident : AccidentsOf(isWrite)) {
      if (!came) break;
      SCOPED_TRACE("request " + std::to_string(at) + " accident " +
                   std::to_string(static_cast<int>(accident)));
      if (accident != Accident::KilledBefore) {
        Begin();
        RunWithAccident(at, accident, &isWrite);
      }
      SCOPED_TRACE("status " + std::to_string(result_.status) + ": " + result_.out + result_.err);
      ExpectRecovery();
      ExpectNothingIsLost();
    }
  }
}

/// What the next commands say of a change that was not confirmed.
class Recover : public CheckoutTest {};

TEST_F(Recover, FindsACheckoutWhoseAnswerNeverCame) {
  Serve({"--fault", "POST *checkout=stall*1"});
  std::atomic<Process*> process = nullptr;
  Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    const std::string answer = forward();
    if (request.target.ends_with("/checkout")) {
      EXPECT_TRUE(WaitUntil([&process] { return process != nullptr; }));
      process.load()->Signal(SIGKILL);
    }
    peer.Send(answer);
  });
  Restart({});
  environment_["http_proxy"] = meddler.Url();
  const auto running = Start({"checkout", kForkPath});
  process = running.get();
  EXPECT_EQ(running->Wait().status, -SIGKILL);
  environment_.erase("http_proxy");
  ASSERT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(Book(), "");

  const ProcessResult next = Run({"status", kForkPath});
  EXPECT_THAT(next.err, HasSubstr("warning: a checkout of " + std::string(kForkPath) + " was begun "));
  EXPECT_THAT(next.err, HasSubstr("was checked out; its working copy is "));
  EXPECT_EQ(Book(), "") << "it is only told";
  const ProcessResult recovered = Run({"recover"});
  EXPECT_EQ(recovered.status, 0);
  EXPECT_THAT(recovered.out, HasSubstr("\tcheckout\t" + std::string(kForkPath) + "\tyes\t"));
  EXPECT_THAT(Book(), HasSubstr("\tfork.lxz\t"));
  EXPECT_EQ(Run({"checkin", kForkPath}).status, 0);
  for (const auto& name : std::filesystem::directory_iterator(Home("../temporary")))
    std::filesystem::remove_all(name);
}

TEST_F(Recover, LeavesOpenWhatTheServerDoesNotTell) {
  Serve();
  const std::string uid = CheckOut(kForkPath);
  const std::string line =
      "1:1\t2026-01-31T09:00:00Z\tcheckin\t" + std::string(kForkPath) + "\t" + uid + "\t\t\n";
  WriteHome(".local/state/vtdirect/journal", "vtdirect-journal 1\n" + line, 0600);
  Restart({"--fault", "GET *dkm/documents/D*=503"});
  const ProcessResult result = Run({"recover"});
  EXPECT_EQ(result.status, 11);
  EXPECT_THAT(result.out,
              HasSubstr("\tno\twhere " + std::string(kForkPath) + " stands could not be found out"));
  EXPECT_EQ(ReadFile(Home(".local/state/vtdirect/journal")), "vtdirect-journal 1\n" + line);
  Restart({});
  EXPECT_THAT(Run({"recover"}).out,
              HasSubstr("\tyes\tyou still have " + std::string(kForkPath) + " checked out"));
  EXPECT_EQ(Run({"recover"}).out, "");
}

TEST_F(Recover, HasNothingToSettleWhenAllWasAnswered) {
  Serve();
  WriteFile(Here("f"), kNewContent);
  CheckOut(kForkPath);
  EXPECT_EQ(Run({"put", "f", kForkPath, "--checkin"}).status, 0);
  EXPECT_EQ(ReadFile(Home(".local/state/vtdirect/journal")), "vtdirect-journal 1\n");
  EXPECT_EQ(Run({"recover"}).out, "");
}

}  // namespace vtdirect_test
