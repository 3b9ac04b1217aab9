#include "hosts/cli/failures/retrying.h"

#include <algorithm>
#include <charconv>
#include <thread>

#include "hosts/cli/http_log/asked_pause.h"
#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {
namespace {

using std::chrono::milliseconds;
using VtDirectManager::FailureKind;

constexpr unsigned mostRetries = 20;
constexpr milliseconds firstPause(100);
constexpr milliseconds longestPause(10'000);
// Who is asked for more had better come back another time.
constexpr milliseconds longestAskedPause(60'000);
// A signal is seen so soon.
constexpr milliseconds step(20);

constexpr int tooManyRequests = 429;
constexpr int unavailable = 503;

[[nodiscard]] bool WasTooBusy(const Reason& reason) {
  return reason.httpStatus == unavailable || reason.httpStatus == tooManyRequests;
}

}  // namespace

OptionRow RetriesOption() {
  return {.name = "retries",
          .value = "N",
          .help =
              "Repeat a question so many times when its answer breaks off or the server is too busy; 3 "
              "unless given. "
              "What changes something is never repeated."};
}

Result<unsigned> ReadRetries(const Arguments& arguments) {
  if (!arguments.Has("retries")) return usualRetries;
  const std::string text = arguments.Text("retries");
  unsigned count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (error == std::errc() && end == text.data() + text.size() && count <= mostRetries) return count;
  return Failure{ExitCode::Usage, "--retries takes a number from 0 to " + std::to_string(mostRetries)};
}

bool MayBeAskedAgain(const Failure& failure) {
  if (!failure.reason) return false;
  const Reason& reason = *failure.reason;
  if (reason.kind == FailureKind::AnswerBroken) return reason.httpStatus == 0 || reason.httpStatus == 200;
  return WasTooBusy(reason);
}

milliseconds PauseBefore(unsigned repetition) {
  milliseconds pause = firstPause;
  for (; repetition > 0 && pause < longestPause; --repetition) pause *= 2;
  return std::min(pause, longestPause);
}

bool Pause(milliseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  while (!Interrupted() && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::min(step, time));
  }
  return !Interrupted();
}

std::optional<milliseconds> PauseFor(const Failure& failure, unsigned repetition,
                                     std::optional<std::chrono::seconds> asked) {
  const milliseconds usual = PauseBefore(repetition);
  if (!asked || !failure.reason || !WasTooBusy(*failure.reason)) return usual;
  if (*asked > longestAskedPause) return std::nullopt;
  return std::max<milliseconds>(*asked, usual);
}

bool IsToBeRepeated(const Failure& failure, unsigned repetition, unsigned retries) {
  const auto asked = TakeAskedPause();
  if (repetition >= retries || !MayBeAskedAgain(failure)) return false;
  const auto pause = PauseFor(failure, repetition, asked);
  return pause && Pause(*pause);
}

}  // namespace vtdirect_cli
