#pragma once

#include <string>

#include "base/status.h"
#include "connection/server_context.h"
#include "documents/reading/file_info.h"
#include "documents/storing/upload_params.h"

/// The flows that bring local files into documents. Requests run on this thread; each step's failure ends the
/// flow and is traced, and nothing is undone on the server. A stream id that is no number leaves each of them
/// as std::invalid_argument or std::out_of_range, before anything is stored.
namespace lxservices::cms_interface::vantry {

/// Creates a document in a folder.
/// @param folderId  may be empty: the server decides
/// @param info      receives the summary with the new document's id
/// @return Ok, or the status of the step that failed
Status CreateDocument(ServerContext& server, const std::string& name, const std::string& contextId,
                      const std::string& folderId, const DocumentUploadParams& params, FileInfo& info,
                      du::http::ProgressFunction progress);

/// Creates a document in a workspace; the id of the summary carries the workspace.
Status CreateDocumentInWorkspace(ServerContext& server, const std::string& name, const std::string& contextId,
                                 const std::string& folderId, const std::string& workspaceId,
                                 const DocumentUploadParams& params, FileInfo& info,
                                 du::http::ProgressFunction progress);

/// Makes a new iteration of a document that is not checked out.
/// @param info  receives the summary with the new iteration's id
Status IterateDocument(ServerContext& server, const char* id, const DocumentUploadParams& params,
                       FileInfo& info, du::http::ProgressFunction progress);

/// Puts a new iteration of a checked-out document into its workspace. The CheckoutId stays as it is.
/// @return NotFound for an id that is not valid for a checkout operation, Refused when the working copy cannot be
///         read, else Ok or the status of the step that failed
Status StoreDocument(ServerContext& server, const char* checkoutId, const DocumentUploadParams& params,
                     du::http::ProgressFunction progress);

}  // namespace lxservices::cms_interface::vantry
