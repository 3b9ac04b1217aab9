#include "hosts/cli/interruption_report.h"

#include <unistd.h>

#include "hosts/cli/diagnosis.h"
#include "hosts/cli/texts/output.h"

namespace vtdirect_cli {
InterruptionReport::InterruptionReport(Host& host, const std::string& command)
    : host_(host), command_(command), atTheEnd_([this] { Write(); }) {
  Tell("nothing was changed");
}

InterruptionReport::~InterruptionReport() {
  atTheEnd_.Dismiss();
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
