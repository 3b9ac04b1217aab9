#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/result.h"
#include "base/status.h"
#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// The receipt for one uploaded file.
struct UploadedContent {
  std::uint64_t streamId = 0;  ///< 0 when the server reported nothing for the file
  std::string encodedInfo;
};

/// Uploads local files to the server's content store: a ticket, and one multipart POST to wherever the ticket
/// says, staged in a temporary file. On this thread.
/// @throws std::invalid_argument, std::out_of_range  for a ticket whose stream ids are no numbers, or are too
///         large, before anything is stored
/// @param paths     a file that cannot be opened, such as a directory, is left out of the body
/// @param progress  may be empty; told about the body sent
/// @return with Ok one entry for each path, in the order of the paths; Refused without a usable ticket and for
///         a refused upload; ServerError when the staging file cannot be made, or, traced, not be written
///         whole, and then nothing is sent to where the ticket says; TooLarge for a body above the server's
///         limit
Result<std::vector<UploadedContent>> UploadContents(ServerContext& server,
                                                    const std::vector<std::string>& paths,
                                                    du::http::ProgressFunction progress);

/// UploadContents for optional paths: empty ones are left out. One after a gap is traced as a warning. Throws
/// what UploadContents throws.
Result<std::vector<UploadedContent>> UploadPaths(ServerContext& server, const std::vector<std::string>& paths,
                                                 du::http::ProgressFunction progress);

}  // namespace lxservices::cms_interface::vantry
