#pragma once

#include <rapidjson/document.h>

#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"

/// Reads of the document service. Each makes one GET on this thread.
namespace lxservices::cms_interface::vantry {

/// Reads a document by its id. A body that is no JSON leaves the record as it was and counts as success.
/// Nothing is traced.
/// @return with Ok on 200 to 299; ConnectionFailed without a usable exchange; Refused for any other answer
Result<DocumentRecord> ReadDocument(ServerContext& server, const std::string& id);

/// The same, read on top of what another answer has told of the document.
Result<DocumentRecord> ReadDocument(ServerContext& server, const std::string& id,
                                    const DocumentRecord& known);

/// Reads a document by its id as raw JSON, which is null when the body is none.
/// @return nothing for a status outside 200 to 299
[[nodiscard]] std::optional<rapidjson::Document> ReadDocumentJson(ServerContext& server,
                                                                  const std::string& id);

/// Reads all iterations of a document in the server's order; elements that are no objects are passed over.
/// @return nothing for a status outside 200 to 299
[[nodiscard]] std::optional<std::vector<DocumentSummary>> ReadDocumentVersions(ServerContext& server,
                                                                               const std::string& id,
                                                                               const std::string& contextId);

/// Finds the documents with a number; an element that is no object is a blank record in the list.
/// @param scope  id of the context to look in; empty means everywhere
/// @return nothing, traced, for a status outside 200 to 299
[[nodiscard]] std::optional<std::vector<DocumentRecord>> SearchDocuments(ServerContext& server,
                                                                         const std::string& number,
                                                                         const std::string& scope);

}  // namespace lxservices::cms_interface::vantry
