#include "hosts/cli/interruption_report.h"

#include <unistd.h>

#include <exception>

#include "hosts/cli/diagnosis.h"
#include "hosts/cli/texts/output.h"

namespace vtdirect_cli {
namespace {

// The catch at the top has nothing else of the command that was unwound.
std::string toldBeforeException;

}  // namespace

InterruptionReport::InterruptionReport(Host& host, const std::string& command)
    : host_(host), command_(command), atTheEnd_([this] { Write(); }) {
  Tell("nothing was changed");
}

InterruptionReport::~InterruptionReport() {
  atTheEnd_.Dismiss();
  if (std::uncaught_exceptions() > 0) toldBeforeException = whatStands_;
}

std::string InterruptionReport::ToldBeforeException() {
  return toldBeforeException;
}

void InterruptionReport::Tell(const std::string& whatStands) {
  const std::lock_guard lock(mutex_);
  whatStands_ = whatStands;
}

ExitCode InterruptionReport::Report() {
  // From here on the watch must not say it a second time.
  const InterruptionHold hold;
  atTheEnd_.Dismiss();
  Write();
  return ExitCode::Interrupted;
}

// By the descriptor: the stream may be in use on another thread.
void InterruptionReport::Write() {
  const std::lock_guard lock(mutex_);
  Failure failure = InterruptedFailure();
  failure.message += "; " + whatStands_;
  const std::string line = FailureLine(command_, host_.output().json(), failure);
  static_cast<void>(!write(STDERR_FILENO, line.data(), line.size()));
  TellNothingOfTheLimit();
}

}  // namespace vtdirect_cli
