#pragma once

#include <optional>
#include <string>

#include "connection/server_context.h"
#include "documents/reading/file_info.h"

/// The two ways of a source XLIFF to the server. Requests on this thread. A partly successful upload is never
/// undone, and a link that fails is no failure: it is traced. Both throw what UploadContents throws.
namespace lxservices::cms_interface::vantry {

/// Creates the source XLIFF of a document, where the server's preferences say, and links it.
/// @return the summary of the new document; nothing, without a trace, when a preference is missing or the
///         place cannot be found, and after a traced failure of the upload
[[nodiscard]] std::optional<FileInfo> UploadSourceXliff(ServerContext& server, const std::string& sourceId,
                                                        const std::string& xliffPath,
                                                        const std::string& language,
                                                        du::http::ProgressFunction progress);

/// Makes a new iteration of the source XLIFF of a document, and links it: a new iteration has a new id.
[[nodiscard]] std::optional<FileInfo> UpdateSourceXliff(ServerContext& server, const std::string& sourceId,
                                                        const std::string& xliffPath,
                                                        const std::string& language,
                                                        du::http::ProgressFunction progress);

}  // namespace lxservices::cms_interface::vantry
