#include "tests/e2e/cli/accident.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <mutex>
#include <optional>

#include "tests/e2e/cli/meddler.h"

namespace vtdirect_test {
namespace {

void Happen(Accident accident, Peer& peer, const Meddler::Forward& forward, const Process& process) {
  if (accident == Accident::KilledBefore) return process.Signal(SIGKILL);
  if (accident == Accident::Refused) return peer.Answer(503, "{}");
  const std::string answer = forward();
  if (accident == Accident::KilledAfter) process.Signal(SIGKILL);
  if (accident == Accident::Cut) peer.Send(answer.substr(0, answer.size() - answer.size() / 4 - 1));
  if (accident == Accident::Reset) peer.Reset();
  if (accident == Accident::Silent) peer.StaySilent();
}

// Only a server that stays silent is to be given up soon. On a busy machine any other answer may take longer than that,
// which would be a second accident.
[[nodiscard]] std::vector<std::string> PatienceIn(std::optional<Accident> accident) {
  return {"--stall-timeout", accident == Accident::Silent ? "1" : "20"};
}

[[nodiscard]] ProcessResult RunWithAccident(const AccidentTrial& trial, int at, Accident accident) {
  std::atomic<int> number = 0;
  std::unique_ptr<Process> running;  // ends after all that speaks of it
  std::atomic<Process*> process = nullptr;
  trial.before();
  Meddler meddler([&](Peer& peer, const WireRequest& /*request*/, const Meddler::Forward& forward) {
    if (number++ != at) return peer.Send(forward());
    EXPECT_TRUE(WaitUntil([&process] { return process != nullptr; }));
    Happen(accident, peer, forward, *process);
  });
  running = trial.start(meddler.Url(), PatienceIn(accident));
  process = running.get();
  return running->Wait();
}

// Whether each of the requests writes.
[[nodiscard]] std::vector<bool> WritesOf(const AccidentTrial& trial) {
  std::mutex mutex;
  std::vector<bool> writes;
  trial.before();
  Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    {
      const std::lock_guard lock(mutex);
      writes.push_back(request.method != "GET");
    }
    peer.Send(forward());
  });
  static_cast<void>(trial.start(meddler.Url(), PatienceIn(std::nullopt))->Wait());
  return writes;
}

void Check(const AccidentTrial& trial, const ProcessResult& result, int at, Accident accident) {
  SCOPED_TRACE("request " + std::to_string(at) + " " + NameOf(accident));
  SCOPED_TRACE("status " + std::to_string(result.status) + ": " + result.out + result.err);
  trial.check(result);
}

}  // namespace

const char* NameOf(Accident accident) {
  constexpr const char* names[] = {"KilledBefore", "KilledAfter", "Refused", "Lost",
                                   "Cut",          "Reset",       "Silent"};
  return names[static_cast<int>(accident)];
}

void PrintTo(Accident accident, std::ostream* stream) {
  *stream << NameOf(accident);
}

int MeetEveryAccident(const AccidentTrial& trial) {
  const std::vector<bool> writes = WritesOf(trial);
  const int requests = static_cast<int>(writes.size());
  for (int at = 0; at < requests; ++at) {
    for (const Accident accident : trial.accidentsOf(writes[static_cast<std::size_t>(at)])) {
      Check(trial, RunWithAccident(trial, at, accident), at, accident);
      if (testing::Test::HasFailure()) return at;
    }
  }
  return requests;
}

}  // namespace vtdirect_test
