#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "connection/server_context.h"
#include "documents/reading/document_records.h"

/// Making and deleting workspaces. Requests run on this thread; nothing is kept, and nothing traced unless
/// told.
namespace lxservices::cms_interface::vantry {

/// Creates a workspace in a context: one POST.
/// @param description  none leaves it out
/// @return what the server tells of it, blank without JSON; nothing for a status outside 200 to 299
[[nodiscard]] std::optional<WorkspaceRecord> CreateWorkspace(ServerContext& server,
                                                             const std::string& contextId,
                                                             const std::string& name,
                                                             const std::optional<std::string>& description);

/// Deletes a workspace with what is in it: one POST.
/// @return whether the status was in 200 to 299
[[nodiscard]] bool DeleteWorkspace(ServerContext& server, const std::string& workspaceId);

/// DeleteWorkspace for a workspace that was made for one checkout; a failure is traced and goes no further.
void DeleteTemporaryWorkspace(ServerContext& server, const std::string& workspaceId);

/// The time since 1970 in seconds.
using Clock = std::uint32_t (*)();
[[nodiscard]] std::uint32_t SystemSeconds();

/// Creates a workspace for one checkout: one POST, and after a refusal a list of the names taken and a second
/// POST with a free one. Operations on several threads at once take names apart from each other.
/// @return its id; the empty text when it cannot be made
[[nodiscard]] std::string CreateTemporaryWorkspace(ServerContext& server, const std::string& contextId,
                                                   Clock clock = SystemSeconds);

}  // namespace lxservices::cms_interface::vantry
