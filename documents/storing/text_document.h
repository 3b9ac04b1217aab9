#pragma once

#include "connection/server_context.h"
#include "documents/reading/document_records.h"

namespace lxservices::cms_interface::vantry {

/// Creates a text document from a local file, or iterates one: the file is uploaded, then one POST names it.
/// On this thread.
/// @param document         the document to iterate; null creates one
/// @param cadName          of a new document
/// @param contextId        of a new document; an iteration goes to the document's own context
/// @param folderId         of a new document; null leaves the place to the server
/// @param path             local file
/// @param translate        attribute of a new document, may be null
/// @param language         attribute; null or empty leaves what the document has
/// @param extendedDocType  attribute of a new document, may be null
/// @param typeId           type of a new document, may be null
/// @param result           may be null; receives the document or iteration
/// @param progress         may be empty; told about the body sent
/// @throws                 what UploadContents throws
/// @return whether the status of the POST was in 200 to 299; a refusal and an answer that is no JSON are
///         traced
[[nodiscard]] bool UpdateTextDocument(ServerContext& server, const DocumentRecord* document,
                                      const char* cadName, const char* contextId, const char* folderId,
                                      const char* path, const char* translate, const char* language,
                                      const char* extendedDocType, const char* typeId, DocumentRecord* result,
                                      du::http::ProgressFunction progress);

}  // namespace lxservices::cms_interface::vantry
