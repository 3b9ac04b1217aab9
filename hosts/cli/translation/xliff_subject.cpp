#include "hosts/cli/translation/xliff_subject.h"

#include <vtdirect/vt_direct_manager.h>

#include <map>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

using VtDirectManager::FailureKind;

constexpr int notFound = 404;

[[nodiscard]] std::string ServerOf(const XliffSubject& subject) {
  return VtDirectManager::GetServerURL(subject.uid.c_str());
}

[[nodiscard]] Failure NoTranslation(Host& host, const XliffSubject& subject) {
  const std::string url = ServerOf(subject);
  const auto reason = LastReason();
  // A release without translation has told its number, and so can be used.
  const bool isKnown = reason && reason->kind == FailureKind::ServiceMissing;
  if (auto failure = isKnown ? std::nullopt : DiagnoseServer(host, url)) return *failure;
  return {ExitCode::ServerUnsupported,
          url + " offers no translation: servers do from 11.1 M010 CPS 1 on, with the add-on for it"};
}

[[nodiscard]] bool IsThere(const XliffSubject& subject, AddressKind kind) {
  if (subject.uid.empty()) return false;
  // A UID is found for a path only when the document is; one that was given may name anything.
  return !IsById(subject.address, kind) || VtDirectManager::FileExists(subject.uid.c_str());
}

// Whether the server answers questions about the translations of the document.
[[nodiscard]] bool AnswersQuestions(const XliffSubject& subject) {
  std::map<std::string, std::string> ignored;
  return VtDirectManager::GetXliffTranslations(subject.uid.c_str(), ignored) || !ignored.empty();
}

// A server without the add-on knows nothing of what it is asked. So does one with it when there is nothing, and
// only then another question tells the two apart.
[[nodiscard]] bool MayLackTranslation(const XliffSubject& subject, const std::optional<Reason>& reason) {
  if (!reason) return false;
  if (reason->kind == FailureKind::ServiceMissing) return true;
  const bool isUnknown = reason->kind == FailureKind::NotFound && reason->httpStatus == notFound;
  return isUnknown && !AnswersQuestions(subject);
}

[[nodiscard]] Failure Unanswered(const XliffSubject& subject, const Failure& otherwise) {
  const std::string text = "the server answers no question about the translations of " + subject.address +
                           ", and may lack its add-on for them";
  // What a server doesn't answer for can't be called missing.
  if (otherwise.code == ExitCode::NotFound) return {ExitCode::Failure, text};
  Failure failure = otherwise;
  failure.message += "; " + text;
  return failure;
}

}  // namespace

Result<XliffSubject> SettleSubject(Host& host, const Arguments& arguments) {
  XliffSubject subject{arguments.Text("ADDRESS"), {}};
  const auto kind = RequirePlacedAddress(host, arguments, subject.address);
  if (!kind) return kind.failure();
  ForgetReasons();
  subject.uid = VtDirectManager::GetUID(subject.address.c_str());
  if (!IsThere(subject, *kind)) return Diagnose(host, subject.address, Seen::Missing);
  if (!VtDirectManager::TranslationSupported(subject.uid.c_str())) return NoTranslation(host, subject);
  if (Interrupted()) return InterruptedFailure();
  return subject;
}

Result<std::string> ReadLanguage(const Arguments& arguments) {
  const std::string language = arguments.Text("language");
  if (!language.empty()) return language;
  return Failure{ExitCode::Usage, "--language is needed, with the name of a language, for example en-US"};
}

Failure DiagnoseXliff(Host& host, const XliffSubject& subject, const Failure& otherwise) {
  // The document was found on this server a moment ago: neither of them is asked for again.
  if (auto failure = ServerFailureByReason(host, ServerOf(subject))) return *failure;
  const auto reason = LastReason();
  Failure failure = MayLackTranslation(subject, reason) ? Unanswered(subject, otherwise) : otherwise;
  if (Interrupted()) return InterruptedFailure();
  // That nothing was found is what the message says.
  const bool tellsMore = reason && reason->kind != FailureKind::NotFound;
  if (tellsMore) failure.message += " (" + WordsOf(*reason) + ")";
  failure.reason = reason;
  return failure;
}

SourceXliff FindSourceXliff(const XliffSubject& subject) {
  SourceXliff found;
  found.linked = VtDirectManager::GetUIDForSourceXliff(subject.uid.c_str(), found.uid, found.language);
  return found;
}

std::optional<SourceXliff> AskForSourceXliff(const XliffSubject& subject) {
  // A question that fails may be answered the second time.
  for (int tries = 0; tries < 2; ++tries) {
    const VtDirectManager::Outcome outcome;
    const SourceXliff source = FindSourceXliff(subject);
    if (source.linked) return source;
    const auto reason = outcome.Cause();
    if (!reason || reason->kind != FailureKind::NotFound) continue;
    return MayLackTranslation(subject, reason) ? std::nullopt : std::optional(source);
  }
  return std::nullopt;
}

std::string XliffCommandFor(const std::string& command, const std::string& address) {
  return CommandToType("xliff " + command, address);
}

}  // namespace vtdirect_cli
