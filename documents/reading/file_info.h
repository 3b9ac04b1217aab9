#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "base/checkout_id.h"
#include "base/result.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"

namespace lxservices::cms_interface {

/// What the document flows hand back about one object.
struct FileInfo {
  std::string id;  ///< a CheckoutId or a plain id
  std::string version;
  std::string cadName;
  std::uint64_t size = 0;                           ///< bytes of the primary content
  std::optional<std::uint64_t> downloadSize;        ///< bytes of what a download fetches, if the server told
  std::map<std::string, std::string> dependencies;  ///< child name to object id
};

namespace vantry {

/// Revision, a full stop, iteration: "B.3".
[[nodiscard]] std::string VersionText(const DocumentSummary& record);

/// The summary of a document.
/// @param id  what the flow hands back as its id
[[nodiscard]] FileInfo MakeFileInfo(const DocumentRecord& record, std::string id = {});

/// Reads a document and makes its summary, with the whole id as its id: one GET on this thread.
/// @return with Ok, Refused or ConnectionFailed; a failure is traced
Result<FileInfo> GetFileInfo(ServerContext& server, const CheckoutId& id);

}  // namespace vantry
}  // namespace lxservices::cms_interface
