#include "hosts/cli/translation/xliff_subject.h"

#include <vtdirect/vt_direct_manager.h>

#include <map>

#include "hosts/cli/address.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/diagnosis.h"
#include "hosts/cli/interruption.h"
#include "hosts/cli/reasons.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::string ServerOf(const XliffSubject& subject) {
  return VtDirectManager::GetServerURL(subject.uid.c_str());
}

[[nodiscard]] Failure NoTranslation(Host& host, const XliffSubject& subject) {
  const std::string url = ServerOf(subject);
  if (auto failure = DiagnoseServer(host, url)) return *failure;
  return {ExitCode::ServerUnsupported,
          url + " offers no translation: servers do from 11.1 M010 CPS 1 on, with the add-on for it"};
}

[[nodiscard]] bool IsThere(const XliffSubject& subject, AddressKind kind) {
  if (subject.uid.empty()) return false;
  // A UID is found for a path only when the document is; one that was given may name anything.
  return !IsById(subject.address, kind) || VtDirectManager::FileExists(subject.uid.c_str());
}

}  // namespace

Result<XliffSubject> SettleSubject(Host& host, const Arguments& arguments) {
  XliffSubject subject{arguments.Text("ADDRESS"), {}};
  const auto kind = RequirePlacedAddress(arguments, subject.address);
  if (!kind) return kind.failure();
  ForgetReasons();
  subject.uid = VtDirectManager::GetUID(subject.address.c_str());
  if (!IsThere(subject, *kind)) return Diagnose(host, subject.address, true);
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
  const auto reason = LastReason();
  if (auto failure = DiagnoseServer(host, ServerOf(subject))) return *failure;
  const bool there = VtDirectManager::FileExists(subject.uid.c_str());
  Failure failure{ExitCode::NotFound, "not found: " + subject.address};
  if (there) failure = AnswersQuestions(subject) ? otherwise : Unanswered(subject, otherwise);
  if (Interrupted()) return InterruptedFailure();
  // That nothing was found is what the message says.
  const bool tellsMore = reason && reason->kind != VtDirectManager::FailureKind::NotFound;
  if (tellsMore) failure.message += " (" + WordsOf(*reason) + ")";
  failure.reason = reason;
  return failure;
}

bool AnswersQuestions(const XliffSubject& subject) {
  std::map<std::string, std::string> ignored;
  return VtDirectManager::GetXliffTranslations(subject.uid.c_str(), ignored) || !ignored.empty();
}

Failure Unanswered(const XliffSubject& subject, const Failure& otherwise) {
  const std::string text = "the server answers no question about the translations of " + subject.address +
                           ", and may lack its add-on for them";
  // What a server doesn't answer for can't be called missing.
  if (otherwise.code == ExitCode::NotFound) return {ExitCode::Failure, text};
  Failure failure = otherwise;
  failure.message += "; " + text;
  return failure;
}

SourceXliff FindSourceXliff(const XliffSubject& subject) {
  SourceXliff found;
  found.linked = VtDirectManager::GetUIDForSourceXliff(subject.uid.c_str(), found.uid, found.language);
  return found;
}

std::string XliffCommandFor(const std::string& command, const std::string& address) {
  return CommandToType("xliff " + command, address);
}

}  // namespace vtdirect_cli
