#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/checkouts/journaled_step.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/commands/dry_run.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/sha256.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/program/interruption_report.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/translation/xliff_check.h"
#include "hosts/cli/translation/xliff_put_failure.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::optional<Failure> CheckFile(Host& host, const Arguments& arguments, const XliffPut& put) {
  const auto check = CheckXliffFile(put.file.path, put.language);
  if (!check) return check.failure();
  const std::optional<XliffFault>& fault = *check;
  if (!fault) return std::nullopt;
  const std::string text = put.file.path + ", line " + std::to_string(fault->line) + ": " + fault->what;
  if (!arguments.Has("force")) {
    return Failure{ExitCode::LocalFile, text + "; nothing was sent", "--force sends the file all the same"};
  }
  host.output().Warning(text + "; it is sent all the same");
  return std::nullopt;
}

// What is sent to a server that doesn't answer would be taken for a first source XLIFF, whatever is there. What
// is said of the upload rests on this as well.
[[nodiscard]] Result<SourceXliff> LookAtSource(Host& host, const XliffSubject& subject) {
  ForgetReasons();
  if (const auto source = AskForSourceXliff(subject)) return *source;
  return DiagnoseXliff(
      host, subject,
      {ExitCode::Failure,
       "whether " + subject.address + " has a source XLIFF could not be found out; nothing was sent"});
}

[[nodiscard]] Result<XliffPut> Settle(Host& host, const Arguments& arguments) {
  const auto language = ReadLanguage(arguments);
  if (!language) return language.failure();
  const auto file = InspectSource(arguments.Text("FILE"));
  if (!file) return file.failure();
  XliffPut put{{}, *file, *language, {}};
  if (auto failure = CheckFile(host, arguments, put)) return *failure;
  const auto subject = SettleSubject(host, arguments);
  if (!subject) return subject.failure();
  if (auto failure = RefusalOfAnotherPlace(subject->address, subject->uid)) return *failure;
  const auto before = LookAtSource(host, *subject);
  if (!before) return before.failure();
  if (Interrupted()) return InterruptedFailure();
  put.subject = *subject;
  put.before = *before;
  return put;
}

[[nodiscard]] std::string UnknownEnd(const XliffPut& put) {
  return "whether the server has taken " + put.file.path + " is not known; " +
         XliffCommandFor("source", put.subject.address) + " tells";
}

void Report(Host& host, const XliffPut& put, const SourceXliff& after) {
  const bool first = !put.before.linked;
  host.output().Row({{"uid", after.uid}}, {{"address", put.subject.address},
                                           {"uid", after.uid},
                                           {"file", put.file.path},
                                           {"language", put.language},
                                           {"action", std::string(first ? "created" : "updated")}});
  host.output().Note(put.file.path +
                     (first ? " is the first source XLIFF of " : " updated the source XLIFF of ") +
                     put.subject.address);
}

[[nodiscard]] ExitCode TellXliffPut(Host& host, const XliffPut& put) {
  const bool first = !put.before.linked;
  host.output().Row({{"would", std::string(first ? "would create" : "would update")},
                     {"file", put.file.path},
                     {"address", put.subject.address}},
                    {{"address", put.subject.address},
                     {"file", put.file.path},
                     {"language", put.language},
                     {"action", std::string(first ? "created" : "updated")},
                     {"dry_run", true}});
  return ExitCode::Ok;
}

ExitCode RunXliffPut(Host& host, const Arguments& arguments) {
  InterruptionReport report(host, "xliff put");
  const auto settled = Settle(host, arguments);
  if (!settled) return report.Fail(settled.failure());
  const XliffPut& put = *settled;
  if (IsDryRun(arguments)) return TellXliffPut(host, put);
  // What was looked at is what is sent, whoever writes to the file meanwhile.
  const auto copy = CopySource(put.file, host.workDirectory() + "/sent");
  if (!copy) return report.Fail(copy.failure());
  report.TellOfOpenChange(UnknownEnd(put));
  const Patience::WhileSending patience(*host.patience(), put.file.size());
  ForgetReasons();
  const std::string& file = put.file.path;
  JournaledStep step(host, {"xliff put", put.subject.address, put.subject.uid, file, Sha256OfFile(*copy)});
  if (!VtDirectManager::UploadSourceXliff(put.subject.uid.c_str(), copy->c_str(), put.language.c_str())) {
    step.SettleUnlessUnknown();
    if (Interrupted()) return report.Report();
    return report.Fail(SendingFailure(host, put));
  }
  report.Tell("the server has taken " + put.file.path + "; " +
              XliffCommandFor("source", put.subject.address) + " tells its UID");
  const SourceXliff after = FindSourceXliff(put.subject);
  if (Interrupted()) return report.Report();
  // Of an upload that went through, its link alone can be open.
  if (!after.uid.empty()) step.Settle();
  if (after.uid.empty() || after.uid == put.before.uid) {
    return report.Fail(UnlinkedFailure(host, put, after));
  }
  Report(host, put, after);
  return ExitCode::Ok;
}

}  // namespace

CommandRow XliffPutCommand() {
  return {
      "xliff put",
      "Send a source XLIFF for a document",
      "Sends FILE as the source XLIFF of the document at ADDRESS: its first source XLIFF, or a new iteration "
      "of the one that it has. Prints the UID of the source XLIFF, and says which of the two it was.\n\n"
      "Before anything is sent, FILE is checked: it must be well-formed XLIFF 1.2, or 2.0 to 2.2, in that "
      "version's namespace, with at least one <file>; and its source language (source-language of each "
      "<file>, or srcLang of a 2.x file) must fit --language. Languages are compared without regard to case, "
      "and \"_\" counts as \"-\"; a name without a region fits every region, so en fits en-US and en-US fits "
      "en, and en-GB doesn't fit en-US. A document type declaration is a fault: entities can be declared "
      "there. The content of the units isn't checked. What is wrong is told with its line, and nothing is "
      "sent.\n\n"
      "FILE is copied to the directory for temporary files, and the copy is sent. When somebody writes to "
      "FILE before the copy is whole, nothing is sent.\n\n"
      "Where a first source XLIFF goes is up to the server's XLIFF preferences for the document and the "
      "language. An upload that fails has not changed what the document shows as its source XLIFF, or the "
      "message says what it shows now.",
      {{"ADDRESS", "A path or a UID of the document; see ADDRESSES."}, {"FILE", "The XLIFF file to send."}},
      {{.name = "language",
        .letter = 'l',
        .value = "LANGUAGE",
        .help = "The source language, for example en-US. Needed; the server gets it as it is given."},
       {.name = "force",
        .letter = 'f',
        .help = "Send FILE whatever the check finds; what it finds is a warning then."},
       DryRunOption()},
      Requests::Some,
      RunXliffPut,
      {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
       {"uid", MemberType::Text, "without --dry-run", "the UID of the source XLIFF"},
       {"file", MemberType::Text, nullptr, "FILE"},
       {"language", MemberType::Text, nullptr, "the language as it was given"},
       {"action", MemberType::Text, nullptr, "created for the first source XLIFF, or updated"},
       DryRunMember("true: nothing was sent, and action is what would be done")}};
}

}  // namespace vtdirect_cli
