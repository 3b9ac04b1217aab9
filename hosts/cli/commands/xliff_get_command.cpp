#include "hosts/cli/commands/command.h"
#include "hosts/cli/files/content_download.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/translation/xliff_translations.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::string LanguagesOf(const XliffTranslations& translations) {
  std::string out;
  for (const auto& [language, uid] : translations.uids) out += (out.empty() ? "" : ", ") + language;
  return out;
}

[[nodiscard]] Failure NoTranslation(Host& host, const XliffSubject& subject, const std::string& language,
                                    const XliffTranslations& translations) {
  const std::string there = LanguagesOf(translations);
  if (!translations.whole) {
    Failure failure = IncompleteTranslations(host, subject, translations);
    if (!there.empty()) failure.message += "; \"" + language + "\" is not among " + there;
    return failure;
  }
  if (there.empty()) return {ExitCode::NotFound, subject.address + " has no translations"};
  return {ExitCode::NotFound,
          subject.address + " has no translation into \"" + language + "\"; it has " + there};
}

[[nodiscard]] std::vector<MemberRow> Members() {
  std::vector<MemberRow> members = {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
                                    {"language", MemberType::Text, nullptr, "the language as it was given"}};
  for (const MemberRow& row : DownloadMembers()) members.push_back(row);
  return members;
}

[[nodiscard]] std::vector<OptionRow> Options() {
  std::vector<OptionRow> options = {
      {.name = "language",
       .letter = 'l',
       .value = "LANGUAGE",
       .help =
           "The language of the translation, as \"vtdirect xliff list\" shows it. Needed. The case of its "
           "letters doesn't matter, nor does \"_\" for \"-\"."}};
  options.push_back(AnywhereOption());
  for (const OptionRow& row : DownloadOptions()) options.push_back(row);
  return options;
}

ExitCode RunXliffGet(Host& host, const Arguments& arguments) {
  const auto given = ReadLanguage(arguments);
  if (!given) return host.output().Fail(given.failure());
  if (const auto failure = CheckDownloadOptions(host, arguments)) return host.output().Fail(*failure);
  const auto settled = SettleSubject(host, arguments);
  if (!settled) return host.output().Fail(settled.failure());
  const std::string& language = *given;
  const XliffSubject& subject = *settled;

  const XliffTranslations translations = FindTranslations(subject);
  const std::string translation = TranslationInto(translations, language);
  if (translation.empty()) return host.output().Fail(NoTranslation(host, subject, language, translations));
  auto download = SettleDownload(host, arguments, translation);
  if (!download) return host.output().Fail(download.failure());
  download->described = {{"address", subject.address}, {"language", language}};
  return RunDownload(host, *download);
}

}  // namespace

CommandRow XliffGetCommand() {
  return {
      "xliff get",
      "Download a translation of a document",
      "Downloads the translation of the document at ADDRESS into a language, as \"vtdirect get\" downloads: "
      "the file is whole or not there, and without -o it is named after the translation.\n\nFor a language "
      "that there is no translation into, the message tells those that are there.",
      {{"ADDRESS", "A path or a UID of the document that is translated; see ADDRESSES."}},
      Options(),
      Requests::Some,
      RunXliffGet,
      Members()};
}

}  // namespace vtdirect_cli
