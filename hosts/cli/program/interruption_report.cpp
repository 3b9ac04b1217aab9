#include "hosts/cli/program/interruption_report.h"

#include <unistd.h>

#include <exception>

#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/texts/output.h"

namespace vtdirect_cli {
namespace {

// The catch at the top has nothing else of the command that was unwound.
std::optional<InterruptionReport::Told> toldBeforeException;

}  // namespace

InterruptionReport::InterruptionReport(Host& host, const std::string& command)
    : host_(host), command_(command), atTheEnd_([this] { Write(); }) {
  Tell("nothing was changed");
}

InterruptionReport::~InterruptionReport() {
  atTheEnd_.Dismiss();
  if (std::uncaught_exceptions() > 0) toldBeforeException = told_;
}

std::optional<InterruptionReport::Told> InterruptionReport::ToldBeforeException() {
  return toldBeforeException;
}

void InterruptionReport::Tell(const std::string& stateNow) {
  const std::lock_guard lock(mutex_);
  told_ = {.words = stateNow, .changeIsOpen = false};
}

void InterruptionReport::TellOfOpenChange(const std::string& howToFindOut) {
  const std::lock_guard lock(mutex_);
  told_ = {.words = howToFindOut, .changeIsOpen = true};
}

ExitCode InterruptionReport::Report() {
  // From here on the watch must not say it a second time.
  const InterruptionHold hold;
  atTheEnd_.Dismiss();
  Write();
  return ExitCode::Interrupted;
}

ExitCode InterruptionReport::Fail(const Failure& failure) {
  return Interrupted() ? Report() : host_.output().Fail(failure);
}

// By the descriptor: the stream may be in use on another thread.
void InterruptionReport::Write() {
  const std::lock_guard lock(mutex_);
  Failure failure = InterruptedFailure();
  failure.message += "; " + told_.words;
  failure.changeIsOpen = told_.changeIsOpen;
  const std::string line = FailureLine(command_, host_.output().json(), failure);
  static_cast<void>(!write(STDERR_FILENO, line.data(), line.size()));
  TellNothingOfTheLimit();
}

}  // namespace vtdirect_cli
