#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "browsing/context_kind.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"

/// Searches of the REST services for a document by its CAD name or its number. Each makes requests, on this
/// thread, and traces each failure unless it says otherwise.
namespace lxservices::cms_interface::vantry {

/// Finds the first document with a CAD name, wherever it is. Up to two GETs.
[[nodiscard]] std::optional<DocumentRecord> FindDocumentByCadName(ServerContext& server,
                                                                  const std::string& cadName);

/// What a search in a context found.
struct FoundByCadName {
  std::size_t count = 0;  ///< one for each number; any but 0 counts as found
  DocumentRecord record;  ///< of several numbers that of the smallest
};

/// Finds a document with a CAD name in one context.
///
/// A name that only one document of the whole server has is taken wherever that document is; only a name
/// that several have is looked for in the context. Up to two GETs in the first case; in the second one for
/// the name, one for the context, and one for each number.
[[nodiscard]] FoundByCadName FindDocumentByCadNameInContext(ServerContext& server, const std::string& cadName,
                                                            ContextKind kind, const std::string& contextName);

/// Finds the newest version of the document with a number. One GET.
/// @param scope  id of the context to look in; empty means everywhere
/// @return nothing when there is none, untraced, and when several documents have the number
[[nodiscard]] std::optional<DocumentRecord> FindLatestDocumentByNumber(ServerContext& server,
                                                                       const std::string& number,
                                                                       const std::string& scope);

}  // namespace lxservices::cms_interface::vantry
