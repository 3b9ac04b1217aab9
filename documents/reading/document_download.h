#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/checkout_id.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"
#include "documents/reading/file_info.h"

namespace lxservices::cms_interface::vantry {

/// Downloads a document's primary content into a local file: two GETs on this thread, the second over a
/// connection of its own to wherever the content lies.
///
/// A temporary CheckoutId downloads the document as it was before the checkout, a workspace form the working
/// copy. After a failure the local file holds what the server answered, and the caller owns it; the trace
/// line quotes the beginning of it, up to 8 KiB.
/// @param localPath    empty names no file, and the download fails
/// @param compareSize  whether the content must be as long as the document's record says, if it says that. One
///                     that is longer ends as soon as it is; of one that is shorter only a regular file tells
/// @return the summary, with the id that came in, when the answer was exactly 200; each failure is traced
[[nodiscard]] std::optional<FileInfo> DownloadDocument(ServerContext& server, const CheckoutId& id,
                                                       const std::string& localPath,
                                                       du::http::ProgressFunction progress,
                                                       bool compareSize = false);

/// Fetches the first URL of the first content section; no other URL or section is ever tried.
/// @return the HTTP status, 65535 when the exchange failed, 0 when there was nothing to fetch
[[nodiscard]] std::uint16_t DownloadPrimaryContent(ServerContext& server, const DocumentRecord& record,
                                                   const std::string& localPath,
                                                   du::http::ProgressFunction progress);

}  // namespace lxservices::cms_interface::vantry
