#pragma once

#include <map>
#include <string>

#include "connection/server_context.h"
#include "translation/xliff_server.h"

/// Reads of the translation add-on. One GET a page, on this thread; nothing is traced. Each goes on from what
/// is known of a document, and keeps what it read before an answer failed.
namespace lxservices::cms_interface::vantry {

/// What the server told of a document.
struct ToldDocument {
  XliffDocumentRef document;
  bool complete = false;  ///< both its id and its language, in the row that counts
};

/// Finds the source XLIFF of a document; of several the last of a page counts.
[[nodiscard]] ToldDocument FindSourceXliff(ServerContext& server, const std::string& sourceId,
                                           XliffDocumentRef known = {});

/// Reads a document's own language, from an answer of the same form as FindSourceXliff's.
[[nodiscard]] ToldDocument ReadDocumentLanguage(ServerContext& server, const std::string& documentId,
                                                XliffDocumentRef known = {});

/// A document with its translations.
struct TranslatedDocument {
  XliffDocumentRef source;
  std::map<std::string, std::string> translations;  ///< language to object id
  bool complete = false;                            ///< the last page told the document's own id and language
};

/// Lists the translations of a document; of several of one language the last counts.
/// @param known  entries are added to its translations
[[nodiscard]] TranslatedDocument ListTranslations(ServerContext& server, const std::string& sourceId,
                                                  TranslatedDocument known = {});

}  // namespace lxservices::cms_interface::vantry
