#include "tests/e2e/cli/accident_fixture.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace vtdirect_test {
namespace {

constexpr const char* kJournalHead = "vtdirect-journal 1\n";

// Each command finds its document, and asks for something else about it at least.
constexpr std::size_t fewestRequests = 4;

// A read has no consequence, so of it four ways stand for all: of what it gives, a part is the one that could be
// taken for the whole.
[[nodiscard]] bool StandsForAllOfARead(Accident accident) {
  return accident == Accident::KilledBefore || accident == Accident::Refused || accident == Accident::Lost ||
         accident == Accident::Cut;
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

StartThrough AccidentTest::Starter(const std::vector<std::string>& words) {
  std::vector<std::string> all = {"--stall-timeout", "1"};
  all.insert(all.end(), words.begin(), words.end());
  return [this, all](const std::string& proxyUrl) {
    environment_["http_proxy"] = proxyUrl;
    auto process = Start(all);
    environment_.erase("http_proxy");
    return process;
  };
}

void AccidentTest::MeetAccident(const std::vector<std::string>& words, Accident accident,
                                const std::function<void()>& check, bool atReads) {
  const StartThrough start = Starter(words);
  GoBackToBeginning();
  const std::vector<bool> writes = WritesOf(start);
  EXPECT_GE(writes.size(), fewestRequests);
  for (std::size_t at = 0; at < writes.size() && !HasFailure(); ++at) {
    if (!IsTried(writes[at]) || !(writes[at] || atReads)) continue;
    GoBackToBeginning();
    result_ = RunWithAccident(static_cast<int>(at), accident, start);
    SCOPED_TRACE("request " + std::to_string(at) + " " + NameOf(accident) + ", status " +
                 std::to_string(result_.status) + ": " + result_.out + result_.err);
    check();
  }
}

void AccidentTest::MeetEveryAccident(const std::vector<std::string>& words,
                                     const std::function<void()>& check) {
  for (const Accident accident : everyAccident) {
    MeetAccident(words, accident, check, StandsForAllOfARead(accident));
  }
}

void AccidentTest::LeaveOpen(const std::string& step, const std::string& address, const std::string& uid) {
  WriteHome(".local/state/vtdirect/journal",
            kJournalHead + ("1:1\t2026-01-31T09:00:00Z\t" + step) + "\t" + address + "\t" + uid + "\t\t\n",
            0600);
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
