#pragma once

#include <cstddef>
#include <string>

#include "browsing/context_kind.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"

/// Searches of the REST services for a document by its CAD name or its number. Each makes requests, on this
/// thread, and traces each failure unless it says otherwise.
namespace lxservices::cms_interface::vantry {

/// Finds the first document with a CAD name, wherever it is. Up to two GETs.
/// @param record  the document; on a false result it is not to be used
[[nodiscard]] bool FindDocumentByCadName(ServerContext& server, const std::string& cadName,
                                         DocumentRecord& record);

/// Finds a document with a CAD name in one context.
///
/// A name that only one document of the whole server has is taken wherever that document is; only a name
/// that several have is looked for in the context. Up to two GETs in the first case; in the second one for
/// the name, one for the context, and one for each number.
/// @param record  the document found; of several numbers in the context that of the smallest number
/// @return how many were found, one for each number; any but 0 counts as found
[[nodiscard]] std::size_t FindDocumentByCadNameInContext(ServerContext& server, const std::string& cadName,
                                                         ContextKind kind, const std::string& contextName,
                                                         DocumentRecord& record);

/// Finds the newest version of the document with a number. One GET.
/// @param scope   id of the context to look in; null or empty means everywhere
/// @param record  written on success only
/// @return false when there is none, untraced, and when several documents have the number
[[nodiscard]] bool FindLatestDocumentByNumber(ServerContext& server, const std::string& number,
                                              const char* scope, DocumentRecord& record);

}  // namespace lxservices::cms_interface::vantry
