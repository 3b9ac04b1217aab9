#pragma once

#include <map>
#include <string>

#include "hosts/cli/failures/failure.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/translation/xliff_subject.h"

namespace vtdirect_cli {

/// The translations of a document, as far as they could be read.
struct XliffTranslations {
  std::map<std::string, std::string> uids;  ///< by language
  bool whole = false;
};

/// Asks for the translations. Makes requests.
[[nodiscard]] XliffTranslations FindTranslations(const XliffSubject& subject);

/// Why a list of translations isn't whole. Makes requests.
[[nodiscard]] Failure IncompleteTranslations(Host& host, const XliffSubject& subject,
                                             const XliffTranslations& translations);

/// The UID of the translation into a language, as the server names it or, where it has none such, in other
/// letters: without regard to case, and with "_" for "-". Empty when there is none.
[[nodiscard]] std::string TranslationInto(const XliffTranslations& translations, const std::string& language);

}  // namespace vtdirect_cli
