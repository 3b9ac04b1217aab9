#pragma once

#include <optional>
#include <string>

#include "connection/server_context.h"
#include "documents/reading/document_records.h"

namespace lxservices::cms_interface::vantry {

/// A text document that is to be made. Of the optional texts none leaves a member out; an empty one is sent.
struct NewTextDocument {
  std::string cadName;
  std::string contextId;
  std::optional<std::string> folderId;  ///< none leaves the place to the server
  std::optional<std::string> translate;
  std::string language;  ///< empty for none
  std::optional<std::string> extendedDocType;
  std::optional<std::string> typeId;
};

/// Creates a text document from a local file: the file is uploaded, then one POST names it. On this thread.
/// @param path      local file
/// @param progress  may be empty; told about the body sent
/// @throws          what UploadContents throws
/// @return the document; blank, and traced, when the answer is no JSON; nothing when the upload failed and,
///         traced, when the status of the POST was outside 200 to 299
[[nodiscard]] std::optional<DocumentRecord> UpdateTextDocument(ServerContext& server,
                                                               const NewTextDocument& document,
                                                               const std::string& path,
                                                               du::http::ProgressFunction progress);

/// The same for a new iteration of a document, in the document's own context.
/// @param language  empty leaves what the document has
[[nodiscard]] std::optional<DocumentRecord> UpdateTextDocument(ServerContext& server,
                                                               const DocumentRecord& document,
                                                               const std::string& language,
                                                               const std::string& path,
                                                               du::http::ProgressFunction progress);

}  // namespace lxservices::cms_interface::vantry
