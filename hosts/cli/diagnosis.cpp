#include "hosts/cli/diagnosis.h"

#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/address.h"
#include "hosts/cli/files/temporary_files.h"
#include "hosts/cli/interruption.h"
#include "hosts/cli/reasons.h"
#include "hosts/cli/texts/network_failures.h"
#include "hosts/cli/trace_log.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::string WithHint(const std::string& message, const std::string& hint) {
  return hint.empty() ? message : message + " (" + hint + ")";
}

[[nodiscard]] Failure IsADocument(const std::string& address) {
  return {ExitCode::Failure,
          address + " is a document and no folder; vtdirect info and vtdirect versions tell of it"};
}

// What is known of the way to the server tells more than what the operation says that failed for it.
[[nodiscard]] std::string Hint() {
  const std::string hint = NetworkHint(LastReason());
  return hint.empty() ? FirstTracedError() : hint;
}

[[nodiscard]] Failure UnsupportedFailure(const std::string& url) {
  const auto reason = LastReason();
  // What is no server of this kind has no release that could be too old.
  if (!NetworkHint(reason).empty()) return {ExitCode::ServerUnsupported, UnusableServerText(url, reason)};
  return {ExitCode::ServerUnsupported, WithHint(url + " is not supported", FirstTracedError())};
}

// The server may offer no way to log in that could ever be accepted.
[[nodiscard]] Failure RefusedLogin(const Host& host) {
  return {ExitCode::AuthenticationRefused, WithHint(host.authenticationRefusal(), NetworkHint(LastReason()))};
}

}  // namespace

Failure InterruptedFailure() {
  return {ExitCode::Interrupted, TimeIsOver() ? "the time for the command is over" : "interrupted"};
}

Failure ServerFailure(const Host& host, const std::string& url, std::int32_t code) {
  if (Interrupted()) return InterruptedFailure();
  // A refused user gets no version either, so the library reports a missing connection: the demand that went
  // without an answer tells more.
  if (host.authenticationRefused()) return RefusedLogin(host);
  switch (code) {
    case VtDirectManager::StatusServerRefused:
      return {ExitCode::AuthenticationRefused, url + " refused the credentials"};
    case VtDirectManager::StatusServerUnsupported:
      return UnsupportedFailure(url);
    default:
      // What a server tells of itself passes through a temporary file, and counts as no answer when it can't
      // be kept.
      if (auto failure = TemporaryFilesFailure()) return *failure;
      return {ExitCode::CannotConnect, UnusableServerText(url, LastReason())};
  }
}

std::optional<Failure> DiagnoseServer(Host& host, const std::string& url) {
  if (Interrupted()) return InterruptedFailure();
  if (host.authenticationRefused()) return RefusedLogin(host);
  VtDirectManager::StatusCode code = VtDirectManager::StatusOk;
  ForgetTracedErrors();
  if (!VtDirectManager::ServerSupported(url.c_str(), &code, nullptr)) return ServerFailure(host, url, code);
  return std::nullopt;
}

Failure Diagnose(Host& host, const std::string& address, bool missing) {
  const std::string hint = Hint();
  const std::string url = VtDirectManager::GetServerURL(address.c_str());
  if (const auto failure = DiagnoseServer(host, url)) return *failure;
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

Failure DiagnoseObjectAsDirectory(Host& host, const std::string& address) {
  if (VtDirectManager::FileExists(address.c_str())) return IsADocument(address);
  return Diagnose(host, address, true);
}

Failure DiagnoseDirectory(Host& host, const std::string& path, std::uint64_t delivered) {
  const std::string url = VtDirectManager::GetServerURL(path.c_str());
  if (const auto failure = DiagnoseServer(host, url)) return *failure;
  if (delivered > 0) {
    return {ExitCode::Incomplete, "the listing of " + path + " broke off after " + std::to_string(delivered) +
                                      (delivered == 1 ? " entry" : " entries")};
  }
  // FileExists and not FileOrFolderExists: that one is true of a folder's path without its "/", too.
  const std::string directory = WithClosingSlash(path);
  if (directory != path && VtDirectManager::FileExists(path.c_str())) return IsADocument(path);
  if (Interrupted()) return InterruptedFailure();
  if (VtDirectManager::FileOrFolderExists(directory.c_str())) {
    return {ExitCode::Incomplete, "the listing of " + path + " failed"};
  }
  return {ExitCode::NotFound, "not found: " + path};
}

}  // namespace vtdirect_cli
