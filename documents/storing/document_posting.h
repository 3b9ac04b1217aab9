#pragma once

#include <span>
#include <string>

#include "base/status.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"
#include "documents/storing/document_writer.h"

/// The POSTs that carry instructions. Each makes one request, on this thread.
namespace lxservices::cms_interface::vantry {

/// Creates or iterates documents.
/// @param instructions  one instruction or an array of them; null or an empty array sends nothing
/// @param records       filled from the answer's documents until either ends
/// @param resolutions   a conflict resolution or an array of them; may be null
/// @return Ok; NotFound for nothing to send; Refused, traced, for a refusal and for an answer that is no JSON
Status PostDocumentInstructions(ServerContext& server, bool isCreate, JsonAllocator& allocator,
                                rapidjson::Value& instructions, const std::string& contextId,
                                std::span<DocumentRecord> records, rapidjson::Value* resolutions);

/// Stores documents into a workspace. Otherwise like PostDocumentInstructions.
Status PostStore(ServerContext& server, JsonAllocator& allocator, rapidjson::Value& instructions,
                 const std::string& workspaceId, std::span<DocumentRecord> records,
                 rapidjson::Value* resolutions);

}  // namespace lxservices::cms_interface::vantry
