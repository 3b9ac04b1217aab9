#include "hosts/cli/commands/command.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/translation/xliff_translations.h"

namespace vtdirect_cli {
namespace {

ExitCode RunXliffList(Host& host, const Arguments& arguments) {
  const auto settled = SettleSubject(host, arguments);
  if (!settled) return host.output().Fail(settled.failure());
  const XliffSubject& subject = *settled;
  const XliffTranslations translations = FindTranslations(subject);
  for (const auto& [language, uid] : translations.uids) {
    host.output().Row({{"language", language}, {"uid", uid}});
  }
  if (!translations.whole) {
    return host.output().Fail(IncompleteTranslations(host, subject, translations));
  }
  if (translations.uids.empty()) host.output().Note(subject.address + " has no translations");
  return ExitCode::Ok;
}

}  // namespace

CommandRow XliffListCommand() {
  return AsListing({"xliff list",
                    "List the translations of a document",
                    "Prints one line for each translation of the document at ADDRESS: its language as the "
                    "server names it, and its UID, separated by a tab, in the order of the languages. When a "
                    "translation can't be read, the others are printed, and the exit status is 11.",
                    {{"ADDRESS", "A path or a UID of the document that is translated; see ADDRESSES."}},
                    {AnywhereOption()},
                    Requests::Some,
                    RunXliffList,
                    {{"language", MemberType::Text, nullptr, "the language"},
                     {"uid", MemberType::Text, nullptr, "the UID of the translation"}}},
                   {"language", "uid"}, "Sort the lines by this column: language or uid.");
}

}  // namespace vtdirect_cli
