#include <gmock/gmock.h>
#include <signal.h>

#include <atomic>
#include <filesystem>

#include "tests/e2e/cli/accident_fixture.h"
#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/cli/server_document.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {
namespace {

constexpr const char* newPath = "//sim/Products/Trekking Bike/Folders/Frame/new.lxz";
// Another gear.lxz is in the folder Drivetrain.
constexpr const char* besideNamesake = "//sim/Products/Trekking Bike/Folders/Frame/gear.lxz";
constexpr const char* storedBefore = "stored before";
constexpr const char* newContent = "new content";
constexpr const char* base = "(that of before the checkout)";
constexpr const char* noConversion = "(none)";

// The state of the document before the command.
enum class Beginning {
  NotHeld,
  Held,       // by anna, with something stored in the working copy
  Undone,     // elsewhere, so that the checkout is kept here and gone
  NotKept,    // held, by a checkout whose answer was lost
  CheckedIn,  // by a check-in whose answer was lost
};

// A command that changes something.
struct Change {
  const char* name;
  std::vector<std::string> words;
  Beginning beginning;
  const char* path;    // of the document
  const char* before;  // what a reader of the path gets, from the working copy if there is one
  const char* after;   // once the command is done
};

void PrintTo(const Change& change, std::ostream* stream) {
  *stream << change.name;
}

const std::vector<std::string> whole = {
    "put", "f", forkPath, "--viewable", "view", "--metadata", "m", "--link", "made of=//sim/?id=D1003"};

[[nodiscard]] std::vector<std::string> WholeAndCheckin() {
  auto words = whole;
  words.emplace_back("--checkin");
  return words;
}

using enum Beginning;

const Change changes[] = {
    {"Checkout", {"checkout", forkPath}, NotHeld, forkPath, base, base},
    {"Checkin", {"checkin", forkPath}, Held, forkPath, storedBefore, storedBefore},
    {"Undo", {"undo", forkPath}, Held, forkPath, storedBefore, base},
    {"Store", {"put", "f", forkPath}, Held, forkPath, storedBefore, newContent},
    {"StoreAndCheckIn", {"put", "f", forkPath, "--checkin"}, Held, forkPath, storedBefore, newContent},
    {"StoreWholeAndCheckIn", WholeAndCheckin(), Held, forkPath, storedBefore, newContent},
    {"Iterate", {"put", "f", forkPath}, NotHeld, forkPath, base, newContent},
    {"IterateWhole", whole, NotHeld, forkPath, base, newContent},
    {"Create", {"put", "f", newPath}, NotHeld, newPath, noConversion, newContent},
    {"CreateBesideNamesake", {"put", "f", besideNamesake}, NotHeld, besideNamesake, noConversion, newContent},
    {"CheckoutOnBench", {"checkout", forkOnBench}, NotHeld, forkOnBench, base, base},
    {"CheckinOnBench", {"checkin", forkOnBench}, Held, forkOnBench, storedBefore, storedBefore},
    {"UndoOnBench", {"undo", forkOnBench}, Held, forkOnBench, storedBefore, base},
    {"StoreOnBench", {"put", "f", forkOnBench}, Held, forkOnBench, storedBefore, newContent},
    {"Renew", {"verify", "--renew", forkPath}, Undone, forkPath, base, base},
    {"RecoverCheckout", {"recover"}, NotKept, forkPath, storedBefore, storedBefore},
    {"RecoverCheckin", {"recover"}, CheckedIn, forkPath, storedBefore, storedBefore},
};

}  // namespace

/// Every request of every command that changes something fails in every way, and the program is killed before
/// and after each. Afterwards the server or the disk has every byte that was stored or edited, `recover`
/// settles what was left open, and what is kept here agrees with the server.
class LosingNothing : public AccidentTest, public testing::WithParamInterface<std::tuple<Change, Accident>> {
 protected:
  void SetUp() override {
    AccidentTest::SetUp();
    WriteFile(Here("f"), newContent);
    WriteFile(Here("g"), storedBefore);
    WriteFile(Here("view"), "new view");
    WriteFile(Here("m"), "new metadata");
    base_ = server().Get(forkContent);
    if (change_.beginning != NotHeld) Begin();
    KeepBeginning();
  }

  void Begin() {
    const std::string document = server().Uid("D1001");
    const std::string uid = CheckOut(change_.path);
    ASSERT_EQ(Run({"put", "g", uid}).status, 0);
    if (change_.beginning == Undone) {
      ASSERT_EQ(RunElsewhere({"undo", uid}).status, 0);
    }
    if (change_.beginning == NotKept) {
      std::filesystem::remove(BookPath());
      LeaveOpen("checkout", forkPath, document);
    }
    if (change_.beginning == CheckedIn) {
      ASSERT_EQ(RunElsewhere({"checkin", uid}).status, 0);
      LeaveOpen("checkin", forkPath, uid);
    }
  }

  [[nodiscard]] bool Changes(const std::string& command) const { return change_.words.front() == command; }

  // What a reader of the path gets now, from the working copy if there is one.
  [[nodiscard]] std::string Content() {
    const ProcessResult result = Run({"get", change_.path, "-o", "-"});
    if (result.status == 6) return noConversion;
    if (result.status != 0) return "(" + std::to_string(result.status) + ") " + result.err;
    return result.out == base_ ? base : result.out;
  }

  // By what was asked for and whether that was told to be done.
  void ExpectContent(const std::string& content, bool isHeld, bool done) const {
    const bool mayBeBefore = Changes("undo") ? isHeld : !done;
    const bool mayBeAfter = !Changes("undo") || !isHeld;
    EXPECT_TRUE((mayBeBefore && content == change_.before) || (mayBeAfter && content == change_.after))
        << content;
  }

  // What the command said before it ended. A killed one has said nothing.
  void ExpectTheWordsAreTrue(const std::string& content, bool isHeld) {
    if (Changes("recover")) return;
    const bool wasHeld = change_.beginning == Held;
    const bool isChanged = Changes("put") ? content == change_.after : isHeld != wasHeld;
    if (isChanged) {
      EXPECT_THAT(result_.err, Not(HasSubstr("nothing was ")));
    } else {
      EXPECT_NE(result_.status, 0);
    }
  }

  void ExpectNothingIsLost() {
    EXPECT_EQ(ReadFile(Here("f")), newContent);
    EXPECT_EQ(ReadFile(Here("g")), storedBefore);
    const bool isHeld = HolderOf("D1001") == "anna";
    const bool done = result_.status == 0;
    const bool staysHeld =
        change_.words == std::vector<std::string>{"put", "f", change_.path} && change_.beginning == Held;
    EXPECT_TRUE(isHeld || !staysHeld);
    EXPECT_TRUE(isHeld || !done || !(Changes("checkout") || Changes("verify")));
    if (Changes("recover")) {
      EXPECT_EQ(isHeld, change_.beginning == NotKept);
    }
    const std::string content = Content();
    ExpectContent(content, isHeld, done);
    ExpectTheWordsAreTrue(content, isHeld);
    ExpectTheBookIsRight(isHeld);
    if (change_.words.size() >= whole.size() && content == change_.after) ExpectTheWholeIsStored();
  }

  // Whoever has it checked out can go on by the document's path; nobody else is told that they could.
  void ExpectTheBookIsRight(bool isHeld) {
    const char* const subject = change_.path == forkOnBench ? forkOnBench : forkPath;
    // What is gone is kept until it is renewed or dropped.
    const bool isKept = isHeld || change_.beginning == Undone;
    EXPECT_EQ(Book().find("\tfork.lxz\t") != std::string::npos, isKept) << Book();
    const ProcessResult verified = Run({"verify", subject});
    EXPECT_EQ(verified.status, isHeld ? 0 : 1) << verified.err;
    const ProcessResult next = Run({isHeld ? "checkin" : "checkout", subject});
    EXPECT_EQ(next.status, 0) << next.err;
  }

  // Of what is sent together nothing is left out unless it is told. It is checked in by now.
  void ExpectTheWholeIsStored() {
    const ServerDocument document = DocumentOf(server(), IdIn(Run({"uid", forkPath}).out));
    ASSERT_EQ(document.bytes, newContent);
    ASSERT_EQ(document.secondary.size(), 2U);
    EXPECT_EQ(document.secondary[0].bytes, "new view");
    EXPECT_EQ(document.secondary[1].bytes, "new metadata");
    const bool isTold = result_.err.find("but without the link made of") != std::string::npos;
    EXPECT_TRUE(!isTold || result_.status == 11) << result_.status;
    EXPECT_EQ(document.sources.count("made of"), isTold ? 0U : 1U);
  }

  const Change change_ = std::get<Change>(GetParam());
  std::string base_;
};

INSTANTIATE_TEST_SUITE_P(Changes, LosingNothing,
                         testing::Combine(testing::ValuesIn(changes), testing::ValuesIn(everyAccident)),
                         [](const auto& test) {
                           return std::get<Change>(test.param).name +
                                  std::string(NameOf(std::get<Accident>(test.param)));
                         });

TEST_P(LosingNothing, WhicheverRequestMeetsWithTheAccident) {
  MeetAccident(change_.words, std::get<Accident>(GetParam()), [this] {
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
  const auto running = Start({"checkout", forkPath});
  process = running.get();
  EXPECT_EQ(running->Wait().status, -SIGKILL);
  environment_.erase("http_proxy");
  ASSERT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(Book(), "");

  const ProcessResult next = Run({"status", forkPath});
  EXPECT_THAT(next.err, HasSubstr("warning: a checkout of " + std::string(forkPath) + " was begun "));
  EXPECT_THAT(next.err, HasSubstr("was checked out; its working copy is "));
  EXPECT_EQ(Book(), "") << "it is only told";
  const ProcessResult recovered = Run({"recover"});
  EXPECT_EQ(recovered.status, 0);
  EXPECT_THAT(recovered.out, HasSubstr("\tcheckout\t" + std::string(forkPath) + "\tyes\t"));
  EXPECT_THAT(Book(), HasSubstr("\tfork.lxz\t"));
  EXPECT_EQ(Run({"checkin", forkPath}).status, 0);
  for (const auto& name : std::filesystem::directory_iterator(Home("../temporary")))
    std::filesystem::remove_all(name);
}

TEST_F(Recover, LeavesOpenWhatTheServerDoesNotTell) {
  Serve();
  const std::string uid = CheckOut(forkPath);
  const std::string line =
      "1:1\t2026-01-31T09:00:00Z\tcheckin\t" + std::string(forkPath) + "\t" + uid + "\t\t\n";
  WriteHome(".local/state/vtdirect/journal", "vtdirect-journal 1\n" + line, 0600);
  Restart({"--fault", "GET *dkm/documents/D*=503"});
  const ProcessResult result = Run({"recover"});
  EXPECT_EQ(result.status, 11);
  EXPECT_THAT(result.out,
              HasSubstr("\tno\tthe state of " + std::string(forkPath) + " could not be found out"));
  EXPECT_EQ(ReadFile(Home(".local/state/vtdirect/journal")), "vtdirect-journal 1\n" + line);
  Restart({});
  EXPECT_THAT(Run({"recover"}).out,
              HasSubstr("\tyes\tyou still have " + std::string(forkPath) + " checked out"));
  EXPECT_EQ(Run({"recover"}).out, "");
}

TEST_F(Recover, TellsOfLinesThatItDoesNotUnderstandAndKeepsThem) {
  Serve();
  const std::string uid = CheckOut(forkPath);
  const std::string strange = "1:1\t2026-01-31T09:00:00Z\tmove\ta\tb\tc\td\te\n";
  const std::string known =
      "1:1\t2026-01-31T09:00:00Z\tcheckin\t" + std::string(forkPath) + "\t" + uid + "\t\t\n";
  WriteHome(".local/state/vtdirect/journal", "vtdirect-journal 1\n" + strange + known, 0600);
  EXPECT_THAT(Run({"status", forkPath}).err,
              HasSubstr("lines that this release of vtdirect does not understand (1)"));
  const ProcessResult result = Run({"recover"});
  EXPECT_EQ(result.status, 11);
  EXPECT_THAT(result.out, HasSubstr("\tcheckin\t")) << "the other one is settled";
  EXPECT_THAT(result.err, HasSubstr("lines that this release of vtdirect does not understand (1)"));
  EXPECT_EQ(ReadFile(Home(".local/state/vtdirect/journal")), "vtdirect-journal 1\n" + strange);
}

TEST_F(Recover, AsksEachServerByTheWayThatIsSetForIt) {
  Serve();
  const std::string uid = CheckOut(forkPath);
  WriteHome(".local/state/vtdirect/journal",
            "vtdirect-journal 1\n1:1\t2026-01-31T09:00:00Z\tcheckin\t" + std::string(forkPath) + "\t" + uid +
                "\t\t\n",
            0600);
  WriteHome(".config/vtdirect/config", "[server sim]\nurl = " + server().url() + "\nproxy = none\n", 0600);
  environment_["http_proxy"] = "http://127.0.0.1:" + std::to_string(UnusedPort());
  const ProcessResult result = Run({"recover"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("\tyes\tyou still have " + std::string(forkPath) + " checked out"));
}

// Of a server whose settings can't be used nothing is found out, and the others are asked all the same.
TEST_F(Recover, LeavesOpenWhatIsOnAServerThatCantBeAsked) {
  Serve();
  const std::string line = "1:1\t2026-01-31T09:00:00Z\tcheckin\t//other/?id=D1001\t//other/?id=D1001\t\t\n";
  WriteHome(".local/state/vtdirect/journal", "vtdirect-journal 1\n" + line, 0600);
  WriteHome(".config/vtdirect/config",
            "[server other]\nurl = https://127.0.0.1:" + std::to_string(UnusedPort()) +
                "/vt\nca_file = " + Home("none") + "\n",
            0600);
  const ProcessResult result = Run({"recover"});
  EXPECT_EQ(result.status, 11);
  EXPECT_THAT(
      result.out,
      HasSubstr("\tno\tthe state of //other/?id=D1001 could not be found out (cannot read " + Home("none")));
  EXPECT_EQ(ReadFile(Home(".local/state/vtdirect/journal")), "vtdirect-journal 1\n" + line);
}

// A file in the place of the directory can be listed by nobody, root included.
TEST_F(Recover, FailsWhenWhatWaitsForAMountCanNotBeFoundOut) {
  Serve();
  WriteHome(".local/state/vtdirect/unstored", "", 0600);
  const ProcessResult result = Run({"recover"});
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err, HasSubstr("cannot read " + Home(".local/state/vtdirect/unstored")));
  const std::string uid = CheckOut(forkPath);
  const ProcessResult checkin = Run({"checkin", forkPath});
  EXPECT_EQ(checkin.status, 8);
  EXPECT_THAT(checkin.err, HasSubstr("; nothing was checked in"));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(Run({"undo", forkPath}).status, 0);
}

TEST_F(Recover, HasNothingToSettleWhenAllWasAnswered) {
  Serve();
  WriteFile(Here("f"), newContent);
  CheckOut(forkPath);
  EXPECT_EQ(Run({"put", "f", forkPath, "--checkin"}).status, 0);
  EXPECT_EQ(ReadFile(Home(".local/state/vtdirect/journal")), "vtdirect-journal 1\n");
  EXPECT_EQ(Run({"recover"}).out, "");
}

}  // namespace vtdirect_test
