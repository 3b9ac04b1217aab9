#include "hosts/cli/work_folder/why_failed.h"

#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/network_failures.h"

namespace vtdirect_cli {
namespace {

using VtDirectManager::FailureKind;

constexpr std::size_t longestServerText = 200;

[[nodiscard]] ExitCode CodeOf(FailureKind kind) {
  switch (kind) {
    case FailureKind::NotFound:
      return ExitCode::NotFound;
    case FailureKind::CredentialsWanted:
      return ExitCode::AuthenticationRefused;
    case FailureKind::Unreachable:
    case FailureKind::TimedOut:
      return ExitCode::CannotConnect;
    case FailureKind::UnsupportedServer:
    case FailureKind::ServiceMissing:
      return ExitCode::ServerUnsupported;
    case FailureKind::LocalFile:
      return ExitCode::LocalFile;
    default:
      return ExitCode::Incomplete;
  }
}

}  // namespace

Failure WhyFailed(const VtDirectManager::Outcome& outcome, const std::string& what) {
  if (Interrupted()) return {ExitCode::Interrupted, what + ": interrupted"};
  const auto cause = outcome.Cause();
  if (!cause) return {ExitCode::Incomplete, what};
  // What is known of the way to the server tells most, and what to do about it.
  const std::string hint = NetworkHint(cause);
  if (!hint.empty()) return {CodeOf(cause->kind), what + ": " + hint, {}, cause};
  std::string words = what + ": " + VtDirectManager::FailureKindText(cause->kind);
  if (cause->httpStatus != 0) words += ", HTTP " + std::to_string(cause->httpStatus);
  if (!cause->serverText.empty()) words += ": " + cause->serverText.substr(0, longestServerText);
  return {CodeOf(cause->kind), words, {}, cause};
}

}  // namespace vtdirect_cli
