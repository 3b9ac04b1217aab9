#include "tests/e2e/cli/accident_fixture.h"

#include <gmock/gmock.h>
#include <signal.h>

#include <atomic>
#include <filesystem>

namespace vtdirect_test {
namespace {

constexpr const char* kJournalHead = "vtdirect-journal 1\n";

// Each command finds its document, asks for a nonce and writes.
constexpr int fewestRequests = 5;

// A read has no consequence, so of it four ways stand for all: of what it gives, a part is the one that could be
// taken for the whole.
[[nodiscard]] std::vector<Accident> AccidentsOf(bool isWrite) {
#ifdef __SANITIZE_ADDRESS__
  // A sanitized program takes long to start. The other build knows all of them.
  if (!isWrite) return {};
#endif
  if (!isWrite) return {Accident::KilledBefore, Accident::Refused, Accident::Lost, Accident::Cut};
  return {Accident::KilledBefore, Accident::KilledAfter, Accident::Refused, Accident::Lost,
          Accident::Cut,          Accident::Reset,       Accident::Silent};
}

void Happen(Accident accident, Peer& peer, const Meddler::Forward& forward, const Process& process) {
  if (accident == Accident::KilledBefore) return process.Signal(SIGKILL);
  if (accident == Accident::Refused) return peer.Answer(503, "{}");
  const std::string answer = forward();
  if (accident == Accident::KilledAfter) process.Signal(SIGKILL);
  if (accident == Accident::Cut) peer.Send(answer.substr(0, answer.size() - answer.size() / 4 - 1));
  if (accident == Accident::Reset) peer.Reset();
  if (accident == Accident::Silent) peer.StaySilent();
}

// What the program keeps from one run to the next, in place of what is there.
void ReplaceDirectory(const std::string& from, const std::string& to) {
  std::filesystem::remove_all(to);
  if (std::filesystem::exists(from)) {
    std::filesystem::copy(from, to, std::filesystem::copy_options::recursive);
  }
}

}  // namespace

void AccidentTest::SetUp() {
  Serve({"--admin-port", std::to_string(UnusedPort())});
}

void AccidentTest::TearDown() {
  RemoveWhatKilledProgramsLeave();
  CheckoutTest::TearDown();
}

// A killed program leaves its directory for temporary files.
void AccidentTest::RemoveWhatKilledProgramsLeave() {
  std::filesystem::remove_all(Home("../temporary"));
  std::filesystem::create_directory(Home("../temporary"));
}

void AccidentTest::KeepBeginning() {
  server().Control("PUT", "/snapshots/beginning");
  ReplaceDirectory(Home(".local"), Home("beginning"));
}

void AccidentTest::GoBackToBeginning() {
  RemoveWhatKilledProgramsLeave();
  server().Control("POST", "/snapshots/beginning");
  ReplaceDirectory(Home("beginning"), Home(".local"));
}

bool AccidentTest::RunWithAccident(const std::vector<std::string>& words, int at, Accident accident,
                                   bool* isWrite) {
  std::vector<std::string> all = {"--stall-timeout", "1"};
  all.insert(all.end(), words.begin(), words.end());
  std::atomic<int> number = 0;
  std::atomic<bool> came = false;
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
    const auto running = Start(all);
    process = running.get();
    result_ = running->Wait();
  }
  environment_.erase("http_proxy");
  return came;
}

void AccidentTest::MeetEveryAccident(const std::vector<std::string>& words,
                                     const std::function<void()>& check) {
  bool came = true;
  int at = 0;
  for (; came && !HasFailure(); ++at) {
    bool isWrite = false;
    GoBackToBeginning();
    came = RunWithAccident(words, at, Accident::KilledBefore, &isWrite);
    for (const Accident accident : AccidentsOf(isWrite)) {
      if (!came) break;
      SCOPED_TRACE("request " + std::to_string(at) + " accident " +
                   std::to_string(static_cast<int>(accident)));
      if (accident != Accident::KilledBefore) {
        GoBackToBeginning();
        static_cast<void>(RunWithAccident(words, at, accident, &isWrite));
      }
      SCOPED_TRACE("status " + std::to_string(result_.status) + ": " + result_.out + result_.err);
      check();
    }
  }
  EXPECT_GT(at, fewestRequests) << "the command ended early: " << result_.err;
}

std::string AccidentTest::OpenEntries() const {
  const std::string path = Home(".local/state/vtdirect/journal");
  const std::string journal = std::filesystem::exists(path) ? ReadFile(path) : kJournalHead;
  EXPECT_TRUE(journal.starts_with(kJournalHead)) << journal;
  return journal.substr(std::string(kJournalHead).size());
}

void AccidentTest::ExpectRecovery() {
  recovered_ = Run({"recover"});
  EXPECT_EQ(recovered_.status, 0) << recovered_.out << recovered_.err;
  EXPECT_THAT(recovered_.out, testing::Not(testing::HasSubstr("could not be found out")));
  EXPECT_EQ(OpenEntries(), "") << "nothing stays open";
}

}  // namespace vtdirect_test
