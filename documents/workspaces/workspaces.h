#pragma once

#include <list>
#include <optional>
#include <string>

#include "connection/server_context.h"
#include "documents/reading/document_records.h"

/// The reads of a server's workspaces. Each makes at least one GET, on this thread; nothing is kept between
/// calls.
namespace lxservices::cms_interface::vantry {

/// In the order of the server's array.
using WorkspaceList = std::list<WorkspaceRecord>;
using DocumentList = std::list<DocumentSummary>;

/// All workspaces of a context, temporary ones included; a blank one for an element that is no object. An
/// answer that is no array gives an empty list and counts as success. One GET.
/// @return nothing for a status outside 200 to 299
[[nodiscard]] std::optional<WorkspaceList> ListWorkspaces(ServerContext& server,
                                                          const std::string& contextId);

/// The workspaces of a context but the temporary ones, which are known by the prefix of their names. One GET.
/// @return nothing for a status outside 200 to 299
[[nodiscard]] std::optional<WorkspaceList> ListUserWorkspaces(ServerContext& server,
                                                              const std::string& contextId);

/// The documents of a workspace; an empty summary for an element that is no object. An answer that is no
/// array gives an empty list and counts as success. One GET.
/// @return nothing for a status outside 200 to 299, which is not traced
[[nodiscard]] std::optional<DocumentList> ListWorkspaceDocuments(ServerContext& server,
                                                                 const std::string& workspaceId);

/// Whether a workspace lists a document of that id. One GET; a failure is traced and counts as no.
[[nodiscard]] bool WorkspaceHoldsDocument(ServerContext& server, const std::string& documentId,
                                          const std::string& workspaceId);

/// The workspace of a list that has an id; null for none.
[[nodiscard]] const WorkspaceRecord* FindById(const WorkspaceList& list, const std::string& workspaceId);

/// Finds a workspace of the user's by its id. One GET.
/// @return nothing when there is none, and when the list could not be read
[[nodiscard]] std::optional<WorkspaceRecord> FindUserWorkspace(ServerContext& server,
                                                               const std::string& contextId,
                                                               const std::string& workspaceId);

/// Finds the first workspace of the user's, in the server's order, that holds a document. One GET for the
/// list and one for each workspace up to the hit.
/// @return nothing when there is none, and when the list could not be read
[[nodiscard]] std::optional<WorkspaceRecord> FindWorkspaceOfDocument(ServerContext& server,
                                                                     const std::string& documentId,
                                                                     const std::string& contextId);

}  // namespace lxservices::cms_interface::vantry
