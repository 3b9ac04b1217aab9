#include "hosts/cli/failures/reasons.h"

#include <algorithm>
#include <string_view>

namespace vtdirect_cli {
namespace {

// The library collects on the stack of the thread, and so each thread has its own.
thread_local VtDirectManager::Outcome* theOutcome = nullptr;

// So much of what a server says fits into a message.
constexpr std::size_t longestServerText = 200;

constexpr int firstOfServerErrors = 500;
constexpr int badGateway = 502;
constexpr int gatewayTimeout = 504;

// Steps that bring bytes to the server or ask for a place for them. No document shows what they leave.
constexpr std::string_view stepsBeforeAChange[] = {
    VtDirectManager::stepFetchNonce, VtDirectManager::stepAskForUploadPlace,
    VtDirectManager::stepUploadContents, VtDirectManager::stepRegisterApplication};

[[nodiscard]] bool ComesBeforeAChange(const Reason& reason) {
  return std::find(std::begin(stepsBeforeAChange), std::end(stepsBeforeAChange), reason.step) !=
         std::end(stepsBeforeAChange);
}

template <typename Condition>
[[nodiscard]] bool AnyReason(Condition condition) {
  const auto reasons = Reasons();
  return std::any_of(reasons.begin(), reasons.end(), condition);
}

}  // namespace

ReasonCollector::ReasonCollector() : outer_(theOutcome) {
  theOutcome = &outcome_;
}

ReasonCollector::~ReasonCollector() {
  theOutcome = outer_;
}

std::vector<Reason> Reasons() {
  return theOutcome == nullptr ? std::vector<Reason>{} : theOutcome->Entries();
}

std::optional<Reason> LastReason() {
  auto reason = theOutcome == nullptr ? std::nullopt : theOutcome->Cause();
  // What was said aside alone ended nothing.
  if (!reason || reason->aside) return std::nullopt;
  reason->mayHaveHappened = ChangeMayHaveHappened();
  return reason;
}

bool AnswerIsMissing(const VtDirectManager::Outcome& outcome) {
  const auto cause = outcome.Cause();
  // That there are several is an answer as well.
  return cause && !cause->aside && cause->kind != VtDirectManager::FailureKind::NotFound &&
         cause->kind != VtDirectManager::FailureKind::Ambiguous;
}

bool AQuestionFailed(const VtDirectManager::Outcome& outcome) {
  using VtDirectManager::FailureKind;
  const auto entries = outcome.Entries();
  // Also one that was said aside: it left a default in the place of what the server has.
  return std::any_of(entries.begin(), entries.end(), [](const VtDirectManager::Failure& entry) {
    return entry.kind == FailureKind::AnswerBroken || entry.kind == FailureKind::TimedOut ||
           entry.kind == FailureKind::Unreachable ||
           (entry.kind == FailureKind::Refused && entry.httpStatus >= firstOfServerErrors);
  });
}

bool LastAnswerWasBroken() {
  const auto reason = LastReason();
  return reason && reason->kind == VtDirectManager::FailureKind::AnswerBroken;
}

Failure WithReason(Failure failure) {
  if (!failure.reason) failure.reason = LastReason();
  return failure;
}

std::string WordsOf(const Reason& reason) {
  std::string words = reason.step + ": " + VtDirectManager::FailureKindText(reason.kind);
  if (reason.httpStatus != 0) words += ", HTTP " + std::to_string(reason.httpStatus);
  if (!reason.platformText.empty()) words += ": " + reason.platformText;
  if (!reason.serverText.empty()) words += ": " + reason.serverText.substr(0, longestServerText);
  return words;
}

std::string WordsOfLastReason() {
  const auto reason = LastReason();
  return reason ? WordsOf(*reason) : "";
}

std::string WithWords(const std::string& message) {
  const std::string words = WordsOfLastReason();
  return words.empty() ? message : message + " (" + words + ")";
}

void ForgetReasons() {
  if (theOutcome != nullptr) theOutcome->Clear();
}

bool ChangeMayHaveHappened() {
  return AnyReason(
      [](const Reason& reason) { return reason.mayHaveHappened && !ComesBeforeAChange(reason); });
}

bool ChangeMayStillHappen() {
  return AnyReason([](const Reason& reason) {
    const bool isAnswered = reason.httpStatus >= firstOfServerErrors && reason.httpStatus != badGateway &&
                            reason.httpStatus != gatewayTimeout;
    return reason.mayHaveHappened && !ComesBeforeAChange(reason) && !isAnswered;
  });
}

bool LocalFileFailed() {
  return AnyReason(
      [](const Reason& reason) { return reason.kind == VtDirectManager::FailureKind::LocalFile; });
}

std::optional<Reason> WhyWorkspaceStays() {
  for (const Reason& reason : Reasons()) {
    if (reason.step == VtDirectManager::stepDeleteWorkspace) return reason;
  }
  return std::nullopt;
}

}  // namespace vtdirect_cli
