#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "connection/rest_stream.h"
#include "connection/vt_connection.h"
#include "documents/reading/document_records.h"

/// What the operations on the documents of a workspace share.
namespace lxservices::cms_interface::vantry {

/// The path of an operation on a workspace.
[[nodiscard]] std::string WorkspaceOperationPath(const std::string& workspaceId, std::string_view operation);

/// A body of one member "objIdList" with one document id.
[[nodiscard]] rapidjson::Document MakeObjectIdList(const std::string& documentId);

/// Reads the first document of an answer's array; any other JSON gives a blank record.
/// @return nothing when the body is no JSON
[[nodiscard]] std::optional<DocumentRecord> ReadFirstDocument(RestStream& response);

}  // namespace lxservices::cms_interface::vantry
