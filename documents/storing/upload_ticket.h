#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// What the server gives out for one upload.
struct UploadTicket {
  std::string masterUrl;               ///< goes back to the server as it is
  std::string uploadUrl;               ///< absolute; receives the upload, maybe on another host
  std::vector<std::string> fileNames;  ///< one part name for each requested file
  std::vector<std::string> streamIds;  ///< one stream id, decimal digits, for each requested file
};

/// Asks the content store for a ticket: one POST on this thread, and a second one to the route of older
/// servers when the first does not exist there.
/// @return nothing unless the ticket is complete; a refusal and a broken answer are traced, an incomplete one
///         is not. Without a file for the request nothing is sent.
[[nodiscard]] std::optional<UploadTicket> RequestUploadTicket(ServerContext& server, std::size_t fileCount);

}  // namespace lxservices::cms_interface::vantry
