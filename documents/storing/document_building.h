#pragma once

#include <functional>
#include <string>

#include "base/status.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"
#include "documents/storing/document_writer.h"
#include "documents/storing/upload_params.h"

/// From local files to an instruction for the server. Requests run on this thread. Both throw what
/// UploadContents throws.
namespace lxservices::cms_interface::vantry {

/// Sends an instruction to where it belongs.
using Poster = std::function<Status(JsonAllocator&, rapidjson::Value&)>;

/// Resolves the dependencies, uploads the files, settles the authoring application version, builds the
/// instruction for a new document and hands it to the poster. Each step's failure ends the flow.
/// @param folderId  may be empty
/// @return what failed, or what the poster gave; NotFound, with nothing done, for an unknown kind
Status BuildDocumentForCreate(ServerContext& server, const std::string& name, const std::string& folderId,
                              const DocumentUploadParams& params, const Poster& poster,
                              du::http::ProgressFunction progress);

/// The same for a new iteration of a document.
/// @param record  the document
/// @param json    the document as the server gave it; stays valid for the call
Status BuildDocumentForIterate(ServerContext& server, const DocumentRecord& record,
                               const rapidjson::Value& json, const DocumentUploadParams& params,
                               const Poster& poster, du::http::ProgressFunction progress);

}  // namespace lxservices::cms_interface::vantry
