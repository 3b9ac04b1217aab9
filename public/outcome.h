#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#ifndef VTDIRECT_API
#define VTDIRECT_API __attribute__((visibility("default")))
#endif

/// Why something failed, as values. Statuses and results tell that a call failed; traces tell people why;
/// this tells a program why. All of it stays on this machine and in this process.
///
/// ```cpp
/// bool SaveOrExplain(const char* uid, const char* localPath) {
///   VtDirectManager::Outcome outcome;
///   std::string newUid;
///   if (VtDirectManager::GetFile(uid, localPath, newUid, {}, {})) return true;
///   const auto cause = outcome.Cause();
///   if (!cause) return false;
///   std::fprintf(stderr, "%s: %s", cause->step.c_str(), VtDirectManager::FailureKindText(cause->kind));
///   if (cause->httpStatus != 0) std::fprintf(stderr, " (HTTP %d)", cause->httpStatus);
///   if (cause->kind == VtDirectManager::FailureKind::CredentialsWanted) std::fputs(", log in again", stderr);
///   std::fputs("\n", stderr);
///   return false;
/// }
/// ```
namespace VtDirectManager {

/// What went wrong. docs/reasons.md says what each means for a host.
enum class FailureKind : std::int32_t {
  NotFound = 0,           ///< the object, or the server of an address, is not there
  Ambiguous = 1,          ///< a name or number names several documents
  CredentialsWanted = 2,  ///< HTTP 401: the server wants other credentials
  Refused = 3,            ///< the server said no, by any status without a kind of its own
  Unreachable = 4,        ///< no connection, no TLS session, or a server that a Session has written off
  TimedOut = 5,           ///< a time limit ran out
  AnswerBroken = 6,       ///< the answer was lost, cut short, or is not what the step needs
  UnsupportedServer = 7,  ///< the server is of a release that is not supported
  ServiceMissing = 8,     ///< the server lacks a service that the call needs
  Conflict = 9,           ///< the object's state forbids it: checked out already, exists already, locked
  TooLarge = 10,          ///< above the server's size limit
  LocalFile = 11,         ///< a local file could not be read or written
  Cancelled = 12,         ///< a progress function gave false
};

/// The kind in lower-case English words, "credentials wanted". The text lives as long as the process. A value
/// that is no kind gives "unknown". Makes no request; any thread.
[[nodiscard]] VTDIRECT_API const char* FailureKindText(FailureKind kind) noexcept;

/// The words that `Failure::step` has for the question whether a server answers. These and those below stay as
/// they are; docs/reasons.md has the words of all steps.
inline constexpr const char* stepAskWhetherServerAnswers = "ask whether the server answers";
/// For the check of a server, before anything of it is asked for.
inline constexpr const char* stepCheckServer = "check the server";
/// For the question for the version of a server.
inline constexpr const char* stepAskForVersion = "ask the server for its version";
/// For a download as a whole.
inline constexpr const char* stepDownload = "download";
/// For the content of a download.
inline constexpr const char* stepDownloadContent = "download the content";
/// For the nonce that a server wants with what changes something. It changes no document.
inline constexpr const char* stepFetchNonce = "fetch the nonce";
/// For the address that bytes are sent to. It changes no document.
inline constexpr const char* stepAskForUploadPlace = "ask for a place to upload to";
/// For the bytes of a document. They change no document before they are taken over.
inline constexpr const char* stepUploadContents = "upload the contents";
/// For the application that a document is made with. It changes no document.
inline constexpr const char* stepRegisterApplication = "register the application version";
/// For the list of a document's versions. Without it a document may count as its own newest version.
inline constexpr const char* stepListVersions = "list the versions";
/// For the workspace of a checkout.
inline constexpr const char* stepCreateWorkspace = "create a workspace";
/// For the end of the workspace of a checkout.
inline constexpr const char* stepDeleteWorkspace = "delete a workspace";

/// One thing that went wrong. A plain record, the host's to keep.
struct Failure {
  FailureKind kind = FailureKind::Refused;  ///< what went wrong
  std::string step;  ///< what was being done, in English words: "check out", "fetch the nonce"

  /// The status of the answer; 0 when there was no request or no whole answer.
  int httpStatus = 0;
  /// The platform's error code (du::http::ErrorCode in vtdirect/platform/http.h); 0 for a delivered answer,
  /// and when there was no request.
  int platformError = 0;
  /// The start of what the server said, at most 1024 bytes of valid UTF-8 without control characters; empty
  /// for a success that could not be read. If an "http" address was refused, the text names the setting that
  /// allows it (http_settings.h). The nonce, and a user and password of the server's URL, are replaced by
  /// "***". What else a server repeats of a request is its own affair.
  std::string serverText;
  /// Where the request went, without user, password and fragment; empty when there was no request. Values of
  /// query parameters that are not known to be harmless read "***". Of an address that a server gave, for a
  /// content or a next page, only scheme, host and port are told, then "/***".
  std::string url;
  /// Whether the request changes something on the server and may have been carried out although it failed:
  /// its answer was lost, cut or unreadable, came too late, or was a 5xx. A 4xx is a no. For the host to ask
  /// the server for the state of things, and not to send it again.
  bool mayHaveHappened = false;
  /// Whether this only tells what an entry before it led to: a check-out that failed because the request of
  /// the entry before it was refused. Its kind is then that of the entry before it, and it has no status,
  /// text or URL of its own.
  bool follows = false;
  /// Whether this did not decide how the call ended: clean-up after another failure, a look whose failure
  /// leaves a default, a source link that was left out. A host that cares for what was left behind reads
  /// these too.
  bool aside = false;
  /// What the exchange failed on, finer than `platformError` (du::http::FailureDetail in
  /// vtdirect/platform/failure_detail.h): an expired certificate, a refused port, a server that is none of
  /// this kind. 0 when no more is known. docs/troubleshooting.md says what to do about each.
  int platformDetail = 0;
  /// The same as an English sentence without a full stop, of at most 1024 printable bytes: "The server's
  /// certificate expired on 2026-10-01". Names hosts, ports and local files, and holds no secret. Empty when
  /// `platformDetail` is 0.
  std::string platformText;
};

/// Collects what goes wrong in the calls that this thread makes while the object lives, in order.
///
/// Put it on the stack around one call, or around several. A call that succeeds may leave entries too: a
/// source link that could not be resolved, a temporary workspace that stayed behind. So ask the result first.
///
/// Nested objects: the inner one collects, and so do all outer ones of the same thread. So a helper function
/// can look at its own calls without hiding them from its caller.
///
/// Tasks: what an asynchronous function hands to the task runner reports to the objects that were on the
/// stack when it was posted, on whatever thread it runs, as far as they still live; a host may destroy them
/// meanwhile. What the runner's thread has on its own stack collects too.
///
/// Threads: made and destroyed on one thread, in the reverse order of their making, as objects on a stack
/// are. The members may be called on any thread while others report.
///
/// Bounds: `maximumEntries` entries are kept, the first half and the last half of what came.
///
/// Cost: where no object is on the stack, one look at a variable of the thread for each step and failure.
class VTDIRECT_API Outcome {
 public:
  /// How many entries are kept.
  static constexpr std::size_t maximumEntries = 64;

  /// Collects from now on.
  Outcome();
  /// Ends it; tasks that still run report to nobody here.
  ~Outcome();
  Outcome(const Outcome&) = delete;
  Outcome(Outcome&&) = delete;
  Outcome& operator=(const Outcome&) = delete;
  Outcome& operator=(Outcome&&) = delete;
  static void* operator new(std::size_t) = delete;
  static void* operator new[](std::size_t) = delete;

  /// A copy of what has been collected, oldest first.
  [[nodiscard]] std::vector<Failure> Entries() const;

  /// The newest entry that neither follows from another nor was said aside, which is what ended the last call
  /// that failed. Without one the newest of all; nothing when nothing was collected.
  [[nodiscard]] std::optional<Failure> Cause() const;

  /// Whether any collected request may have been carried out although it failed.
  [[nodiscard]] bool MayHaveHappened() const;

  /// Whether nothing has been collected.
  [[nodiscard]] bool Empty() const;
  /// How many entries were dropped from the middle because there was no room for them.
  [[nodiscard]] std::size_t Dropped() const;

  /// Forgets what has been collected, for the next call. Outer objects keep theirs.
  void Clear();

 private:
  struct State;
  const std::unique_ptr<State> state_;
};

}  // namespace VtDirectManager
