#pragma once

#include <string>

#include "base/checkout_id.h"
#include "base/result.h"
#include "connection/server_context.h"
#include "documents/reading/file_info.h"
#include "documents/storing/document_building.h"
#include "documents/storing/upload_params.h"

/// The flows that bring local files into documents. Requests run on this thread; each step's failure ends the
/// flow and is traced, and nothing is undone on the server. A stream id that is no number leaves each of them
/// as std::invalid_argument or std::out_of_range, before anything is stored.
namespace lxservices::cms_interface::vantry {

/// Creates a document in a folder.
/// @return the summary with the new document's id, or the status of the step that failed
Result<FileInfo> CreateDocument(ServerContext& server, const NewDocument& document,
                                const DocumentUploadParams& params, du::http::ProgressFunction progress);

/// Creates a document in a workspace; the id of the summary carries the workspace.
Result<FileInfo> CreateDocumentInWorkspace(ServerContext& server, const NewDocument& document,
                                           const DocumentUploadParams& params,
                                           du::http::ProgressFunction progress);

/// Makes a new iteration of a document that is not checked out.
/// @return the summary with the new iteration's id, or the status of the step that failed
Result<FileInfo> IterateDocument(ServerContext& server, const std::string& id,
                                 const DocumentUploadParams& params, du::http::ProgressFunction progress);

/// Puts a new iteration of a checked-out document into its workspace. The CheckoutId stays as it is.
/// @return NotFound for an id that is not valid for a checkout operation, Refused when the working copy
///         cannot be read, else Ok or the status of the step that failed
Status StoreDocument(ServerContext& server, const CheckoutId& checkoutId, const DocumentUploadParams& params,
                     du::http::ProgressFunction progress);

}  // namespace lxservices::cms_interface::vantry
