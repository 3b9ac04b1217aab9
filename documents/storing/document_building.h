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

/// A document that is to be made, and where.
struct NewDocument {
  std::string name;
  std::string contextId;
  std::string folderId;     ///< empty: the server decides
  std::string workspaceId;  ///< of a creation in a workspace
};

/// A document twice: as a record, and as the server gave it, for what the record does not know.
struct KnownDocument {
  DocumentRecord record;
  rapidjson::Document json;
};

/// Resolves the dependencies, uploads the files, settles the authoring application version, builds the
/// instruction for a new document and hands it to the poster. Each step's failure ends the flow.
/// @return what failed, or what the poster gave; NotFound, with nothing done, for an unknown kind
Status BuildDocumentForCreate(ServerContext& server, const NewDocument& document,
                              const DocumentUploadParams& params, const Poster& poster,
                              du::http::ProgressFunction progress);

/// The same for a new iteration of a document.
Status BuildDocumentForIterate(ServerContext& server, const KnownDocument& document,
                               const DocumentUploadParams& params, const Poster& poster,
                               du::http::ProgressFunction progress);

}  // namespace lxservices::cms_interface::vantry
