#pragma once

#include <rapidjson/document.h>

#include <string>
#include <vector>

#include "base/status.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"

/// Reads of the document service. Each makes one GET on this thread.
namespace lxservices::cms_interface::vantry {

/// Reads a document by its id. A body that is no JSON leaves the record at its defaults and counts as
/// success.
/// Nothing is traced.
/// @return Ok on 200 to 299; ConnectionFailed without a usable exchange; Refused for any other answer
Status ReadDocument(ServerContext& server, const std::string& id, DocumentRecord& record);

/// Reads a document by its id as raw JSON, which stays null when the body is none.
/// @return whether the status was in 200 to 299
[[nodiscard]] bool ReadDocumentJson(ServerContext& server, const std::string& id,
                                    rapidjson::Document& document);

/// Appends all iterations of a document in the server's order; elements that are no objects are passed over.
/// @return whether the status was in 200 to 299
[[nodiscard]] bool ReadDocumentVersions(ServerContext& server, const std::string& id,
                                        const std::string& contextId, std::vector<DocumentSummary>& versions);

/// Appends the documents with a number; an element that is no object becomes a blank record in the list.
/// @param scope  id of the context to look in; null or empty means everywhere
/// @return whether the status was in 200 to 299; a failure is traced
[[nodiscard]] bool SearchDocuments(ServerContext& server, const std::string& number,
                                   std::vector<DocumentRecord>& documents, const char* scope);

}  // namespace lxservices::cms_interface::vantry
