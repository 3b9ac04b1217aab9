#include "public/outcome.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "base/failure_log.h"
#include "base/step_words.h"

namespace VtDirectManager {

using lxservices::cms_interface::FailureListener;
using lxservices::cms_interface::FailureLog;

static_assert(Outcome::maximumEntries == FailureLog::maximumEntries);
static_assert(static_cast<int>(FailureKind::Cancelled) ==
              static_cast<int>(lxservices::cms_interface::FailureKind::Cancelled));

// The library says its steps in the words that hosts compare.
namespace library = lxservices::cms_interface;
static_assert(std::string_view(stepAskWhetherServerAnswers) == library::stepAskWhetherServerAnswers);
static_assert(std::string_view(stepCheckServer) == library::stepCheckServer);
static_assert(std::string_view(stepAskForVersion) == library::stepAskForVersion);
static_assert(std::string_view(stepFetchNonce) == library::stepFetchNonce);
static_assert(std::string_view(stepDownload) == library::stepDownload);
static_assert(std::string_view(stepDownloadContent) == library::stepDownloadContent);
static_assert(std::string_view(stepAskForUploadPlace) == library::stepAskForUploadPlace);
static_assert(std::string_view(stepUploadContents) == library::stepUploadContents);
static_assert(std::string_view(stepRegisterApplication) == library::stepRegisterApplication);
static_assert(std::string_view(stepListVersions) == library::stepListVersions);
static_assert(std::string_view(stepCreateWorkspace) == library::stepCreateWorkspace);
static_assert(std::string_view(stepDeleteWorkspace) == library::stepDeleteWorkspace);

namespace {

Failure ForHost(lxservices::cms_interface::Failure failure) {
  return {static_cast<FailureKind>(failure.kind),
          std::move(failure.step),
          failure.httpStatus,
          failure.platformError,
          std::move(failure.serverText),
          std::move(failure.url),
          failure.mayHaveHappened,
          failure.follows,
          failure.aside,
          failure.platformDetail,
          std::move(failure.platformText)};
}

}  // namespace

const char* FailureKindText(FailureKind kind) noexcept {
  switch (kind) {
    case FailureKind::NotFound:
      return "not found";
    case FailureKind::Ambiguous:
      return "ambiguous";
    case FailureKind::CredentialsWanted:
      return "credentials wanted";
    case FailureKind::Refused:
      return "refused";
    case FailureKind::Unreachable:
      return "unreachable";
    case FailureKind::TimedOut:
      return "timed out";
    case FailureKind::AnswerBroken:
      return "answer broken";
    case FailureKind::UnsupportedServer:
      return "unsupported server";
    case FailureKind::ServiceMissing:
      return "service missing";
    case FailureKind::Conflict:
      return "conflict";
    case FailureKind::TooLarge:
      return "too large";
    case FailureKind::LocalFile:
      return "local file";
    case FailureKind::Cancelled:
      return "cancelled";
  }
  return "unknown";
}

struct Outcome::State {
  std::shared_ptr<FailureLog> log = std::make_shared<FailureLog>();
  FailureListener listener{log};
};

Outcome::Outcome() : state_(std::make_unique<State>()) {}

Outcome::~Outcome() = default;

std::vector<Failure> Outcome::Entries() const {
  std::vector<Failure> entries;
  for (auto& failure : state_->log->Entries()) entries.push_back(ForHost(std::move(failure)));
  return entries;
}

std::optional<Failure> Outcome::Cause() const {
  const std::vector<Failure> entries = Entries();
  if (entries.empty()) return std::nullopt;
  const auto cause = std::find_if(entries.rbegin(), entries.rend(),
                                  [](const Failure& failure) { return !failure.follows && !failure.aside; });
  return cause != entries.rend() ? *cause : entries.back();
}

bool Outcome::MayHaveHappened() const {
  const std::vector<Failure> entries = Entries();
  return std::any_of(entries.begin(), entries.end(),
                     [](const Failure& failure) { return failure.mayHaveHappened; });
}

bool Outcome::Empty() const {
  return state_->log->Entries().empty();
}

std::size_t Outcome::Dropped() const {
  return state_->log->Dropped();
}

void Outcome::Clear() {
  state_->log->Clear();
}

}  // namespace VtDirectManager
