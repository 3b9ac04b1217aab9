#include "hosts/cli/translation/xliff_translations.h"

#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/translation/xliff_check.h"

namespace vtdirect_cli {

XliffTranslations FindTranslations(const XliffSubject& subject) {
  XliffTranslations translations;
  ForgetReasons();
  translations.whole = VtDirectManager::GetXliffTranslations(subject.uid.c_str(), translations.uids);
  return translations;
}

Failure IncompleteTranslations(Host& host, const XliffSubject& subject,
                               const XliffTranslations& translations) {
  if (translations.uids.empty()) {
    return DiagnoseXliff(
        host, subject,
        {ExitCode::Incomplete, "the translations of " + subject.address + " could not be read"});
  }
  return DiagnoseXliff(
      host, subject,
      {ExitCode::Incomplete, "the list of the translations of " + subject.address +
                                 " is incomplete: the server has more than the " +
                                 std::to_string(translations.uids.size()) + " that could be read"});
}

std::string TranslationInto(const XliffTranslations& translations, const std::string& language) {
  const auto exact = translations.uids.find(language);
  if (exact != translations.uids.end()) return exact->second;
  for (const auto& [name, uid] : translations.uids) {
    // Names of one length fit only when they are the same name in other letters.
    if (name.size() == language.size() && LanguagesFit(name, language)) return uid;
  }
  return {};
}

}  // namespace vtdirect_cli
