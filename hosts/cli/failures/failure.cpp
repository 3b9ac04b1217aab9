#include "hosts/cli/failures/failure.h"

namespace vtdirect_cli {
namespace {

using VtDirectManager::FailureKind;

constexpr int lockedStatus = 423;
constexpr int tooManyRequestsStatus = 429;
constexpr int firstOfServerErrors = 500;

// In the order of the enumeration, from the second of it on.
constexpr FailureClassRow rows[] = {
    {.name = "locked", .retryable = true, .meaning = "Somebody else has the document checked out."},
    {.name = "refused", .retryable = false, .meaning = "The server answered and said no."},
    {.name = "unavailable",
     .retryable = true,
     .meaning = "The server said that it can't answer now, or its answer broke off. Nothing was changed."},
    {.name = "conflict",
     .retryable = false,
     .meaning = "The state of the object does not allow it: checked out already, or there already."},
    {.name = "lost-answer",
     .retryable = false,
     .meaning =
         "A change was sent, and whether it was carried out is not known. To be looked at before it is sent "
         "again."},
};

// These tell more by their own names than any answer of the server does.
[[nodiscard]] bool IsByReason(ExitCode code) {
  return code == ExitCode::Failure || code == ExitCode::CannotConnect || code == ExitCode::NotFound;
}

[[nodiscard]] FailureClass ClassOfReason(const Reason& reason) {
  switch (reason.kind) {
    case FailureKind::Conflict:
      return reason.httpStatus == lockedStatus ? FailureClass::Locked : FailureClass::Conflict;
    case FailureKind::TimedOut:
    case FailureKind::Unreachable:
    case FailureKind::AnswerBroken:
      return FailureClass::Unavailable;
    case FailureKind::Refused:
      return reason.httpStatus >= firstOfServerErrors || reason.httpStatus == tooManyRequestsStatus
                 ? FailureClass::Unavailable
                 : FailureClass::Refused;
    case FailureKind::TooLarge:
    case FailureKind::CredentialsWanted:
      return FailureClass::Refused;
    default:
      return FailureClass::OfExitCode;
  }
}

[[nodiscard]] FailureClass FindClass(const Failure& failure) {
  if (failure.failureClass != FailureClass::OfExitCode) return failure.failureClass;
  if (!IsByReason(failure.code)) return FailureClass::OfExitCode;
  if (MayHaveHappened(failure).value_or(false)) return FailureClass::LostAnswer;
  if (!failure.reason) return FailureClass::OfExitCode;
  const FailureClass found = ClassOfReason(*failure.reason);
  // A server that was not reached has not answered.
  const bool wasReached = failure.reason->httpStatus != 0;
  if (failure.code == ExitCode::CannotConnect && found == FailureClass::Unavailable && !wasReached) {
    return FailureClass::OfExitCode;
  }
  return found;
}

[[nodiscard]] const FailureClassRow& RowOf(FailureClass failureClass) {
  return rows[static_cast<std::size_t>(failureClass) - 1];
}

}  // namespace

Failure WithNothing(const char* done, Failure failure) {
  if (!failure.saysNothingWasDone) failure.message += std::string("; nothing was ") + done;
  failure.saysNothingWasDone = true;
  return failure;
}

std::span<const FailureClassRow> FailureClasses() {
  return rows;
}

std::optional<bool> MayHaveHappened(const Failure& failure) {
  if (failure.changeIsOpen || !failure.reason) return failure.changeIsOpen;
  return failure.reason->mayHaveHappened;
}

const char* ClassOf(const Failure& failure) {
  const FailureClass found = FindClass(failure);
  return found == FailureClass::OfExitCode ? NameOf(failure.code) : RowOf(found).name;
}

bool IsRetryable(const Failure& failure) {
  if (MayHaveHappened(failure).value_or(false)) return false;
  const FailureClass found = FindClass(failure);
  if (found != FailureClass::OfExitCode) return RowOf(found).retryable;
  if (failure.code != ExitCode::DownloadFailed) return failure.code == ExitCode::CannotConnect;
  // A document without content stays so.
  return !failure.reason || ClassOfReason(*failure.reason) == FailureClass::Unavailable;
}

}  // namespace vtdirect_cli
