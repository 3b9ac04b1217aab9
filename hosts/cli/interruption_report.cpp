#include "hosts/cli/interruption_report.h"

#include <unistd.h>

#include "hosts/cli/diagnosis.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::string LineOf(bool json, const std::string& command, const std::string& message) {
  if (!json) return "vtdirect: " + Printable(message) + "\n";
  return JsonLine(command, {{"error", std::string(NameOf(ExitCode::Interrupted))},
                            {"exit", static_cast<std::uint64_t>(ExitCode::Interrupted)},
                            {"message", message}}) +
         "\n";
}

}  // namespace

InterruptionReport::InterruptionReport(Host& host, const std::string& command)
    : host_(host), command_(command), atTheEnd_([this] { Write(); }) {
  Tell("nothing was changed");
}

InterruptionReport::~InterruptionReport() {
  atTheEnd_.Dismiss();
}

void InterruptionReport::Tell(const std::string& whatStands) {
  const std::string message = InterruptedFailure().message + "; " + whatStands;
  std::string line = LineOf(host_.output().json(), command_, message);
  const std::lock_guard lock(mutex_);
  line_ = std::move(line);
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
  static_cast<void>(!write(STDERR_FILENO, line_.data(), line_.size()));
}

}  // namespace vtdirect_cli
