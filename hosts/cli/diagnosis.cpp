#include "hosts/cli/diagnosis.h"

#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/interruption.h"
#include "hosts/cli/trace_log.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::string WithHint(const std::string& message, const std::string& hint) {
  return hint.empty() ? message : message + " (" + hint + ")";
}

}  // namespace

Failure InterruptedFailure() {
  return {ExitCode::Interrupted, "interrupted"};
}

Failure ServerFailure(const Host& host, const std::string& url, std::int32_t code) {
  if (Interrupted()) return InterruptedFailure();
  // A refused user gets no version either, so the library reports a missing connection: the demand that went
  // without an answer tells more.
  if (host.authenticationRefused()) return {ExitCode::AuthenticationRefused, host.authenticationRefusal()};
  switch (code) {
    case VtDirectManager::StatusServerRefused:
      return {ExitCode::AuthenticationRefused, url + " refused the credentials"};
    case VtDirectManager::StatusServerUnsupported:
      return {ExitCode::ServerUnsupported, WithHint(url + " is not supported", FirstTracedError())};
    default:
      return {ExitCode::CannotConnect, "cannot connect to " + url};
  }
}

Failure Diagnose(Host& host, const std::string& address, bool missing) {
  if (Interrupted()) return InterruptedFailure();
  if (host.authenticationRefused()) return {ExitCode::AuthenticationRefused, host.authenticationRefusal()};
  const std::string hint = FirstTracedError();

  const std::string url = VtDirectManager::GetServerURL(address.c_str());
  VtDirectManager::StatusCode code = VtDirectManager::StatusOk;
  ForgetTracedErrors();
  if (!VtDirectManager::ServerSupported(url.c_str(), &code, nullptr)) return ServerFailure(host, url, code);
  if (missing || !VtDirectManager::FileExists(address.c_str())) {
    if (Interrupted()) return InterruptedFailure();
    return {ExitCode::NotFound, WithHint("not found: " + address, hint)};
  }
  std::string contentUrl;
  if (VtDirectManager::GetFileDownloadURL(address.c_str(), contentUrl, nullptr) && contentUrl.empty()) {
    return {ExitCode::DownloadFailed, address + " has no content"};
  }
  return {ExitCode::DownloadFailed, WithHint("the download of " + address + " failed", hint)};
}

}  // namespace vtdirect_cli
