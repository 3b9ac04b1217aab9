#pragma once

#include "base/result.h"
#include "connection/server_context.h"
#include "server/file_server.h"

namespace lxservices::cms_interface::vantry {

/// Creates a document at a path below a context's folders or in one of its workspaces. Makes requests, on
/// this thread. A version in the path is dropped. Throws what UploadContents throws.
/// @return the summary, or Refused when the context or the workspace is not found, NotFound when the path leads
///         to neither section, each traced; else what the creation gave. A folder that is not found is no failure here:
///         the server decides.
Result<FileInfo> UploadNewDocument(ServerContext& server, const std::string& targetPath,
                                   const DocumentUploadParams& params, ProgressFunction progress);

}  // namespace lxservices::cms_interface::vantry
