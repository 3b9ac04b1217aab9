#include "tests/e2e/cli/accident_fixture.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace vtdirect_test {
namespace {

constexpr const char* journalHead = "vtdirect-journal 1\n";

// Each command finds its document, and asks for something else about it at least.
constexpr int fewestRequests = 4;

[[nodiscard]] bool IsTried([[maybe_unused]] bool isWrite) {
#ifdef __SANITIZE_ADDRESS__
  // A sanitized program takes long to start. The other build knows all of them.
  return isWrite;
#else
  return true;
#endif
}

// A read has no consequence, so of it four ways stand for all: of what it gives, a part is the one that could be
// taken for the whole.
[[nodiscard]] std::vector<Accident> AccidentsOf(bool isWrite) {
  if (!IsTried(isWrite)) return {};
  if (!isWrite) return {Accident::KilledBefore, Accident::Refused, Accident::Lost, Accident::Cut};
  return {std::begin(everyAccident), std::end(everyAccident)};
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

void AccidentTest::MeetAccident(const std::vector<std::string>& words, Accident accident,
                                const std::function<void()>& check) {
  const auto thisOne = [accident](bool isWrite) {
    return IsTried(isWrite) ? std::vector{accident} : std::vector<Accident>{};
  };
  Meet(words, thisOne, check);
}

void AccidentTest::MeetEveryAccident(const std::vector<std::string>& words,
                                     const std::function<void()>& check) {
  Meet(words, AccidentsOf, check);
}

void AccidentTest::Meet(const std::vector<std::string>& words,
                        const std::function<std::vector<Accident>(bool isWrite)>& accidentsOf,
                        const std::function<void()>& check) {
  const auto start = [this, &words](const std::string& proxy, std::vector<std::string> all) {
    all.insert(all.end(), words.begin(), words.end());
    environment_["http_proxy"] = proxy;
    auto process = Start(all);
    environment_.erase("http_proxy");
    return process;
  };
  const int requests = vtdirect_test::MeetEveryAccident({start, accidentsOf, [this] { GoBackToBeginning(); },
                                                         [this, &check](const ProcessResult& result) {
                                                           result_ = result;
                                                           check();
                                                         }});
  EXPECT_TRUE(HasFailure() || requests >= fewestRequests) << "the command ended early: " << result_.err;
}

void AccidentTest::LeaveOpen(const std::string& step, const std::string& address, const std::string& uid) {
  WriteHome(".local/state/vtdirect/journal",
            journalHead + ("1:1\t2026-01-31T09:00:00Z\t" + step) + "\t" + address + "\t" + uid + "\t\t\n",
            0600);
}

std::string AccidentTest::OpenEntries() const {
  const std::string path = Home(".local/state/vtdirect/journal");
  const std::string journal = std::filesystem::exists(path) ? ReadFile(path) : journalHead;
  EXPECT_TRUE(journal.starts_with(journalHead)) << journal;
  return journal.substr(std::string(journalHead).size());
}

void AccidentTest::ExpectRecovery() {
  recovered_ = Run({"recover"});
  EXPECT_EQ(recovered_.status, 0) << recovered_.out << recovered_.err;
  EXPECT_THAT(recovered_.out, testing::Not(testing::HasSubstr("could not be found out")));
  EXPECT_EQ(OpenEntries(), "") << "nothing stays open";
}

}  // namespace vtdirect_test
