#include "tests/e2e/cli/accident.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>

#include "tests/e2e/cli/meddler.h"

namespace vtdirect_test {
namespace {

struct AccidentRun {
  ProcessResult result;
  bool came = false;     // whether there was such a request
  bool isWrite = false;  // whether it writes
};

void Happen(Accident accident, Peer& peer, const Meddler::Forward& forward, const Process& process) {
  if (accident == Accident::KilledBefore) return process.Signal(SIGKILL);
  if (accident == Accident::Refused) return peer.Answer(503, "{}");
  const std::string answer = forward();
  if (accident == Accident::KilledAfter) process.Signal(SIGKILL);
  if (accident == Accident::Cut) peer.Send(answer.substr(0, answer.size() - answer.size() / 4 - 1));
  if (accident == Accident::Reset) peer.Reset();
  if (accident == Accident::Silent) peer.StaySilent();
}

[[nodiscard]] AccidentRun RunWithAccident(const AccidentTrial& trial, int at, Accident accident) {
  AccidentRun run;
  std::atomic<int> number = 0;
  std::atomic<Process*> process = nullptr;
  trial.before();
  {
    Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
      if (number++ != at) return peer.Send(forward());
      run.came = true;
      run.isWrite = request.method != "GET";
      EXPECT_TRUE(WaitUntil([&process] { return process != nullptr; }));
      Happen(accident, peer, forward, *process);
    });
    const auto running = trial.start(meddler.Url());
    process = running.get();
    run.result = running->Wait();
  }
  return run;
}

void Check(const AccidentTrial& trial, const ProcessResult& result, int at, Accident accident) {
  SCOPED_TRACE("request " + std::to_string(at) + " accident " + std::to_string(static_cast<int>(accident)));
  SCOPED_TRACE("status " + std::to_string(result.status) + ": " + result.out + result.err);
  trial.check(result);
}

}  // namespace

int MeetEveryAccident(const AccidentTrial& trial) {
  for (int at = 0;; ++at) {
    // The first accident tells too whether there is such a request, and of which kind.
    AccidentRun run = RunWithAccident(trial, at, Accident::KilledBefore);
    if (!run.came) return at;
    for (const Accident accident : trial.accidentsOf(run.isWrite)) {
      if (accident != Accident::KilledBefore) run = RunWithAccident(trial, at, accident);
      Check(trial, run.result, at, accident);
      if (testing::Test::HasFailure()) return at;
    }
  }
}

}  // namespace vtdirect_test
