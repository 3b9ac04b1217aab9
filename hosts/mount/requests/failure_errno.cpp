#include "hosts/mount/requests/failure_errno.h"

#include <cerrno>

namespace vtdirect_mount {

using VtDirectManager::FailureKind;

int ErrorOf(const VtDirectManager::Outcome& outcome) {
  const auto cause = outcome.Cause();
  if (!cause) return EIO;
  switch (cause->kind) {
    case FailureKind::NotFound:
      return ENOENT;
    case FailureKind::CredentialsWanted:
      return EACCES;
    case FailureKind::Refused:
      return cause->httpStatus == 403 ? EACCES : EIO;
    case FailureKind::TimedOut:
      return ETIMEDOUT;
    case FailureKind::Conflict:
      return EBUSY;
    case FailureKind::TooLarge:
      return EFBIG;
    case FailureKind::Cancelled:
      return EINTR;
    default:
      return EIO;
  }
}

bool IsOfTheServersAbsence(int error) {
  return error == EIO || error == ETIMEDOUT;
}

std::string WordsOf(const VtDirectManager::Outcome& outcome) {
  const auto cause = outcome.Cause();
  if (!cause) return "the server gave no reason";
  std::string words = cause->step + ": " + VtDirectManager::FailureKindText(cause->kind);
  if (cause->httpStatus != 0) words += ", HTTP " + std::to_string(cause->httpStatus);
  if (!cause->platformText.empty()) words += ": " + cause->platformText;
  if (!cause->serverText.empty()) words += ": " + cause->serverText;
  return words;
}

}  // namespace vtdirect_mount
