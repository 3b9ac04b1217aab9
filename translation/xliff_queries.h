#pragma once

#include <map>
#include <string>

#include "connection/server_context.h"
#include "translation/xliff_server.h"

/// Reads of the translation add-on. One GET a page, on this thread; nothing is traced.
namespace lxservices::cms_interface::vantry {

/// Finds the source XLIFF of a document; of several the last of a page counts.
/// @return false when there is none, or it lacks its id or its language
[[nodiscard]] bool FindSourceXliff(ServerContext& server, const std::string& sourceId,
                                   XliffDocumentRef& xliff);

/// Reads a document's own language, from an answer of the same form as FindSourceXliff's.
[[nodiscard]] bool ReadDocumentLanguage(ServerContext& server, const std::string& documentId,
                                        XliffDocumentRef& document);

/// Lists the translations of a document; of several of one language the last counts.
/// @param translations  entries are added
/// @return whether the last page told the document's own id and language
[[nodiscard]] bool ListTranslations(ServerContext& server, const std::string& sourceId,
                                    XliffDocumentRef& source,
                                    std::map<std::string, std::string>& translations);

}  // namespace lxservices::cms_interface::vantry
