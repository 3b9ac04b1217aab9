#pragma once

#include <string>

#include "connection/rest_stream.h"
#include "connection/vt_connection.h"
#include "documents/reading/document_records.h"

/// What the operations on the documents of a workspace share.
namespace lxservices::cms_interface::vantry {

/// The path of an operation on a workspace.
[[nodiscard]] std::string WorkspaceOperationPath(const std::string& workspaceId, const char* operation);

/// A body of one member "objIdList" with one document id.
[[nodiscard]] rapidjson::Document MakeObjectIdList(const std::string& documentId);

/// Reads the first document of an answer's array; anything else leaves the record as it is.
/// @return whether the body was JSON
[[nodiscard]] bool ReadFirstDocument(RestStream& response, DocumentRecord& record);

}  // namespace lxservices::cms_interface::vantry
