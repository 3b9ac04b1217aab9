#include "hosts/cli/failures/diagnosis.h"

#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/temporary_files.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/network_failures.h"

namespace vtdirect_cli {
namespace {

using VtDirectManager::FailureKind;

constexpr int firstOfServerErrors = 500;

[[nodiscard]] bool IsServerError(const Reason& reason) {
  return reason.kind == FailureKind::Refused && reason.httpStatus >= firstOfServerErrors;
}

// Whether the content was on its way: the object was found by then.
[[nodiscard]] bool IsOfContent(const Reason& reason) {
  return reason.step == VtDirectManager::stepDownload || reason.step == VtDirectManager::stepDownloadContent;
}

// That nothing was found is what the message says; what the server said of it may tell more.
[[nodiscard]] std::string WithWordsOf(const std::string& message, const std::optional<Reason>& reason) {
  const bool tellsMore = reason && (reason->kind != FailureKind::NotFound || !reason->serverText.empty());
  if (!tellsMore) return message;
  // What is known of the way to the server tells more than what the operation says that failed for it.
  const std::string hint = NetworkHint(reason);
  return message + " (" + (hint.empty() ? WordsOf(*reason) : hint) + ")";
}

// Whether a server that gave this answer can be used: it knows what it is asked.
[[nodiscard]] bool IsOfUsableServer(const Reason& reason) {
  return reason.kind == FailureKind::Conflict || reason.kind == FailureKind::TooLarge ||
         reason.kind == FailureKind::Ambiguous || reason.kind == FailureKind::Cancelled;
}

// What the failed call tells of the server by itself.
[[nodiscard]] std::optional<Failure> ServerFailureOfReason(const Host& host, const std::string& url,
                                                           const Reason& reason) {
  switch (reason.kind) {
    case FailureKind::CredentialsWanted:
      return ServerFailure(host, url, VtDirectManager::StatusServerRefused);
    case FailureKind::Unreachable:
      return ServerFailure(host, url, VtDirectManager::StatusConnectFailed);
    case FailureKind::UnsupportedServer:
      return ServerFailure(host, url, VtDirectManager::StatusServerUnsupported);
    default:
      return std::nullopt;
  }
}

// What the failed question for an object tells by itself, so that nothing more need be asked.
[[nodiscard]] std::optional<Failure> ObjectFailureByReason(const Host& host, const std::string& address,
                                                           const Reason& reason) {
  const std::string url = VtDirectManager::GetServerURL(address.c_str());
  if (auto failure = ServerFailureOfReason(host, url, reason)) return failure;
  if (IsOfContent(reason) && reason.kind != FailureKind::NotFound && reason.kind != FailureKind::LocalFile) {
    return Failure{ExitCode::DownloadFailed, WithWordsOf("the download of " + address + " failed", reason)};
  }
  // An answer that could not be kept says nothing of whether the object is there.
  if (reason.kind == FailureKind::LocalFile && !IsOfContent(reason)) {
    const auto failure = TemporaryFilesFailure();
    return failure ? *failure : AnswerNotKept(address);
  }
  if (reason.kind == FailureKind::TimedOut || reason.kind == FailureKind::AnswerBroken ||
      IsServerError(reason)) {
    return UnusableServer(url, reason, address);
  }
  if (reason.kind == FailureKind::Ambiguous) {
    return Failure{ExitCode::NotFound, WithWordsOf("not found: " + address, reason)};
  }
  return std::nullopt;
}

[[nodiscard]] Failure IsADocument(const std::string& address) {
  return {ExitCode::Failure,
          address + " is a document and no folder; vtdirect info and vtdirect versions tell of it"};
}

[[nodiscard]] Failure UnsupportedFailure(const std::string& url) {
  const auto reason = LastReason();
  Failure failure{ExitCode::ServerUnsupported,
                  url + " is not supported: it has to be of release 11.0 M030 or later"};
  // What is no server of this kind has no release that could be too old.
  if (!NetworkHint(reason).empty()) failure = UnusableServer(url, reason);
  failure.code = ExitCode::ServerUnsupported;
  return failure;
}

// The server may offer no way to log in that could ever be accepted.
[[nodiscard]] Failure RefusedLogin(const Host& host) {
  const std::string hint = NetworkHint(LastReason());
  const std::string refusal = host.authenticationRefusal();
  return WithReason({ExitCode::AuthenticationRefused, hint.empty() ? refusal : refusal + " (" + hint + ")"});
}

[[nodiscard]] Failure ServerFailureOfCode(const Host& host, const std::string& url, std::int32_t code) {
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
      return UnusableServer(url, LastReason());
  }
}

[[nodiscard]] Failure DiagnoseByQuestions(Host& host, const std::string& address, Seen seen,
                                          const std::optional<Reason>& reason) {
  if (const auto failure = DiagnoseServer(host, VtDirectManager::GetServerURL(address.c_str())))
    return *failure;
  // A server that can be used has said so already.
  const bool isKnown = reason && reason->kind == FailureKind::NotFound && !IsOfContent(*reason);
  if (seen == Seen::Missing || isKnown || !VtDirectManager::FileExists(address.c_str())) {
    if (Interrupted()) return InterruptedFailure();
    return {ExitCode::NotFound, WithWordsOf("not found: " + address, reason)};
  }
  std::string contentUrl;
  if (VtDirectManager::GetFileDownloadURL(address.c_str(), contentUrl, nullptr) && contentUrl.empty()) {
    return {ExitCode::DownloadFailed, address + " has no content"};
  }
  return {ExitCode::DownloadFailed, WithWordsOf("the download of " + address + " failed", reason)};
}

[[nodiscard]] Failure DiagnoseListing(Host& host, const std::string& path, std::uint64_t delivered,
                                      const std::optional<Reason>& reason) {
  const std::string url = VtDirectManager::GetServerURL(path.c_str());
  if (const auto failure = DiagnoseServer(host, url)) return *failure;
  if (delivered > 0) {
    const std::string text = "the listing of " + path + " broke off after " + std::to_string(delivered) +
                             (delivered == 1 ? " entry" : " entries");
    const std::string why = NetworkHint(reason);
    return {ExitCode::Incomplete, why.empty() ? text : text + ": " + why};
  }
  // FileExists and not FileOrFolderExists: that one is true of a folder's path without its "/", too.
  const std::string directory = WithClosingSlash(path);
  if (directory != path && VtDirectManager::FileExists(path.c_str())) return IsADocument(path);
  if (Interrupted()) return InterruptedFailure();
  const bool mayBeThere = reason && reason->kind != FailureKind::NotFound;
  if (mayBeThere || VtDirectManager::FileOrFolderExists(directory.c_str())) {
    return {ExitCode::Incomplete, WithWordsOf("the listing of " + path + " failed", reason)};
  }
  return {ExitCode::NotFound, "not found: " + path};
}

}  // namespace

Failure InterruptedFailure() {
  return {ExitCode::Interrupted, TimeIsOver() ? "the time for the command is over" : "interrupted"};
}

Failure ServerFailure(const Host& host, const std::string& url, std::int32_t code) {
  if (Interrupted()) return InterruptedFailure();
  return WithReason(ServerFailureOfCode(host, url, code));
}

std::optional<Failure> ServerFailureByReason(const Host& host, const std::string& url) {
  if (Interrupted()) return InterruptedFailure();
  if (host.authenticationRefused()) return RefusedLogin(host);
  const auto reason = LastReason();
  return reason ? ServerFailureOfReason(host, url, *reason) : std::nullopt;
}

std::optional<Failure> DiagnoseServer(Host& host, const std::string& url) {
  if (auto failure = ServerFailureByReason(host, url)) return failure;
  const auto reason = LastReason();
  if (reason && IsOfUsableServer(*reason)) return std::nullopt;
  VtDirectManager::StatusCode code = VtDirectManager::StatusOk;
  ForgetReasons();
  if (!VtDirectManager::ServerSupported(url.c_str(), &code, nullptr)) return ServerFailure(host, url, code);
  return std::nullopt;
}

Failure ObjectFailure(const Host& host, const std::string& address, const std::optional<Reason>& reason) {
  std::optional<Failure> failure;
  if (reason) failure = ObjectFailureByReason(host, address, *reason);
  if (!failure) failure = Failure{ExitCode::NotFound, WithWordsOf("not found: " + address, reason)};
  if (!failure->reason) failure->reason = reason;
  return *failure;
}

Failure Diagnose(Host& host, const std::string& address, Seen seen) {
  if (Interrupted()) return InterruptedFailure();
  const auto reason = LastReason();
  std::optional<Failure> failure;
  if (reason && !host.authenticationRefused()) failure = ObjectFailureByReason(host, address, *reason);
  if (!failure) failure = DiagnoseByQuestions(host, address, seen, reason);
  if (!failure->reason) failure->reason = reason;
  return *failure;
}

Failure DiagnoseObjectAsDirectory(Host& host, const std::string& address) {
  if (VtDirectManager::FileExists(address.c_str())) return IsADocument(address);
  return Diagnose(host, address, Seen::Missing);
}

Failure DiagnoseDirectory(Host& host, const std::string& path, std::uint64_t delivered) {
  const auto reason = LastReason();
  Failure failure = DiagnoseListing(host, path, delivered, reason);
  if (!failure.reason) failure.reason = reason;
  return failure;
}

}  // namespace vtdirect_cli
