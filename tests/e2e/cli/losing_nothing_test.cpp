#include <gmock/gmock.h>
#include <signal.h>

#include <atomic>
#include <filesystem>

#include "tests/e2e/cli/accident_fixture.h"
#include "tests/e2e/cli/meddler.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {
namespace {

constexpr const char* kNewPath = "//sim/Products/Trekking Bike/Folders/Frame/new.lxz";
// Another gear.lxz is in the folder Drivetrain.
constexpr const char* kBesideNamesake = "//sim/Products/Trekking Bike/Folders/Frame/gear.lxz";
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
    {"CreateBesideNamesake", {"put", "f", kBesideNamesake}, false},
};

}  // namespace

/// Every request of every command that changes something fails in every way, and the program is killed before
/// and after each. Afterwards the server or the disk has every byte that was stored or edited, `recover`
/// settles what was left open, and what is kept here agrees with the server.
class LosingNothing : public AccidentTest, public testing::WithParamInterface<Change> {
 protected:
  void SetUp() override {
    AccidentTest::SetUp();
    WriteFile(Here("f"), kNewContent);
    WriteFile(Here("g"), kStoredBefore);
    base_ = server().Get(kForkContent);
    if (GetParam().isCheckedOut) {
      CheckOut(kForkPath);
      ASSERT_EQ(Run({"put", "g", kForkPath}).status, 0);
    }
    KeepBeginning();
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

  // What the command said before it ended. A killed one has said nothing.
  void ExpectTheWordsAreTrue(const std::string& content, bool isHeld) {
    const std::string command = GetParam().name;
    const bool stores = command.starts_with("Store") || command == "Iterate" || command.starts_with("Create");
    const bool isChanged = stores ? content == kNewContent : isHeld != GetParam().isCheckedOut;
    if (isChanged) {
      EXPECT_THAT(result_.err, Not(HasSubstr("nothing was ")));
    } else {
      EXPECT_NE(result_.status, 0);
    }
  }

  void ExpectNothingIsLost() {
    EXPECT_EQ(ReadFile(Here("f")), kNewContent);
    EXPECT_EQ(ReadFile(Here("g")), kStoredBefore);
    const std::string command = GetParam().name;
    const bool isHeld = HolderOf("D1001") == "anna";
    const bool done = result_.status == 0;
    const std::string content = Content(command.starts_with("Create") ? GetParam().words.back() : kForkPath);
    if (command == "Checkout" || command == "Store") {
      EXPECT_TRUE(isHeld || (command == "Checkout" && !done));
    }
    EXPECT_TRUE(MayBe(content, isHeld, done)) << content;
    ExpectTheWordsAreTrue(content, isHeld);
    ExpectTheBookIsRight(isHeld);
  }

  // Whoever has it checked out can go on by the document's path; nobody else is told that they could.
  void ExpectTheBookIsRight(bool isHeld) {
    EXPECT_EQ(Book().find("\tfork.lxz\t") != std::string::npos, isHeld) << Book();
    const ProcessResult verified = Run({"verify", kForkPath});
    EXPECT_EQ(verified.status, isHeld ? 0 : 1) << verified.err;
    const ProcessResult next = Run({isHeld ? "checkin" : "checkout", kForkPath});
    EXPECT_EQ(next.status, 0) << next.err;
  }

  std::string base_;
};

INSTANTIATE_TEST_SUITE_P(Changes, LosingNothing, testing::ValuesIn(kChanges),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(LosingNothing, WhicheverRequestFailsInWhicheverWay) {
  MeetEveryAccident(GetParam().words, [this] {
    ExpectRecovery();
    ExpectNothingIsLost();
  });
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

TEST_F(Recover, TellsOfLinesThatItDoesNotUnderstandAndKeepsThem) {
  Serve();
  const std::string uid = CheckOut(kForkPath);
  const std::string strange = "1:1\t2026-01-31T09:00:00Z\tmove\ta\tb\tc\td\te\n";
  const std::string known =
      "1:1\t2026-01-31T09:00:00Z\tcheckin\t" + std::string(kForkPath) + "\t" + uid + "\t\t\n";
  WriteHome(".local/state/vtdirect/journal", "vtdirect-journal 1\n" + strange + known, 0600);
  EXPECT_THAT(Run({"status", kForkPath}).err,
              HasSubstr("lines that this release of vtdirect does not understand (1)"));
  const ProcessResult result = Run({"recover"});
  EXPECT_EQ(result.status, 11);
  EXPECT_THAT(result.out, HasSubstr("\tcheckin\t")) << "the other one is settled";
  EXPECT_THAT(result.err, HasSubstr("lines that this release of vtdirect does not understand (1)"));
  EXPECT_EQ(ReadFile(Home(".local/state/vtdirect/journal")), "vtdirect-journal 1\n" + strange);
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
