#include "tests/e2e/cli/accident.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <mutex>

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

}  // namespace

const char* NameOf(Accident accident) {
  constexpr const char* names[] = {"KilledBefore", "KilledAfter", "Refused", "Lost",
                                   "Cut",          "Reset",       "Silent"};
  return names[static_cast<int>(accident)];
}

void PrintTo(Accident accident, std::ostream* stream) {
  *stream << NameOf(accident);
}

ProcessResult RunWithAccident(int at, Accident accident, const StartThrough& start) {
  std::atomic<int> number = 0;
  std::unique_ptr<Process> running;  // ends after all that speaks of it
  std::atomic<Process*> process = nullptr;
  Meddler meddler([&](Peer& peer, const WireRequest& /*request*/, const Meddler::Forward& forward) {
    if (number++ != at) return peer.Send(forward());
    EXPECT_TRUE(WaitUntil([&process] { return process != nullptr; }));
    Happen(accident, peer, forward, *process);
  });
  running = start(meddler.Url());
  process = running.get();
  return running->Wait();
}

std::vector<bool> WritesOf(const StartThrough& start) {
  std::vector<bool> writes;
  std::mutex mutex;
  Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    {
      const std::lock_guard lock(mutex);
      writes.push_back(request.method != "GET");
    }
    peer.Send(forward());
  });
  const ProcessResult result = start(meddler.Url())->Wait();
  EXPECT_EQ(result.status, 0) << result.err;
  return writes;
}

bool IsTried([[maybe_unused]] bool isWrite) {
#ifdef __SANITIZE_ADDRESS__
  // A sanitized program takes long to start. The other build knows all of them.
  return isWrite;
#else
  return true;
#endif
}

}  // namespace vtdirect_test
