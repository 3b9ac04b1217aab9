#pragma once

#include <span>
#include <string>

#include "base/status.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"
#include "documents/storing/document_writer.h"

/// The POSTs that carry instructions. Each makes one request, on this thread.
namespace lxservices::cms_interface::vantry {

/// What a POST carries. It is used up by the POST.
struct Posting {
  JsonAllocator& allocator;
  rapidjson::Value& instructions;           ///< one or an array of them; null or an empty array sends nothing
  rapidjson::Value* resolutions = nullptr;  ///< a conflict resolution or an array of them, or null
};

/// What the instructions tell the server to do.
enum class InstructionKind { Create, Iterate };

/// Creates or iterates documents.
/// @param records  filled from the answer's documents until either ends
/// @return Ok; NotFound for nothing to send; Refused, traced, for a refusal and for an answer that is no JSON
Status PostDocumentInstructions(ServerContext& server, InstructionKind kind, const Posting& posting,
                                const std::string& contextId, std::span<DocumentRecord> records);

/// Stores documents into a workspace. Otherwise like PostDocumentInstructions.
Status PostStore(ServerContext& server, const Posting& posting, const std::string& workspaceId,
                 std::span<DocumentRecord> records);

}  // namespace lxservices::cms_interface::vantry
