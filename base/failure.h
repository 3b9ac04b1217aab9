#pragma once

#include <cstdint>
#include <string>

namespace lxservices::cms_interface {

/// Why something failed. The kinds and the record that hosts see (public/outcome.h) are these.
enum class FailureKind : std::int32_t {
  NotFound = 0,
  Ambiguous = 1,
  CredentialsWanted = 2,
  Refused = 3,
  Unreachable = 4,
  TimedOut = 5,
  AnswerBroken = 6,
  UnsupportedServer = 7,
  ServiceMissing = 8,
  Conflict = 9,
  TooLarge = 10,
  LocalFile = 11,
  Cancelled = 12,
};

/// One thing that went wrong, free of secrets and bounded by whoever fills it in.
struct Failure {
  FailureKind kind = FailureKind::Refused;
  std::string step;
  int httpStatus = 0;     ///< 0 without a whole answer
  int platformError = 0;  ///< 0 for a delivered answer
  std::string serverText;
  std::string url;
  bool mayHaveHappened = false;
  bool follows = false;    ///< only tells what an entry before it led to
  bool aside = false;      ///< did not decide how the call ended
  int platformDetail = 0;  ///< what the platform, or the library, found to be its cause
  std::string platformText;
};

}  // namespace lxservices::cms_interface
