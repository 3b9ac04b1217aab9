#pragma once

#include <list>
#include <string>

#include "connection/server_context.h"
#include "documents/reading/document_records.h"

/// The reads of a server's workspaces. Each makes at least one GET, on this thread; nothing is kept between
/// calls.
namespace lxservices::cms_interface::vantry {

/// In the order of the server's array.
using WorkspaceList = std::list<WorkspaceRecord>;
using DocumentList = std::list<DocumentSummary>;

/// Appends all workspaces of a context, temporary ones included; a blank one for an element that is no
/// object. An answer that is no array leaves the list as it is and counts as success. One GET.
/// @return whether the status was in 200 to 299
[[nodiscard]] bool ListWorkspaces(ServerContext& server, const std::string& contextId, WorkspaceList& list);

/// Appends the workspaces of a context but the temporary ones, which are known by the prefix of their names.
/// One GET.
/// @return whether the status was in 200 to 299
[[nodiscard]] bool ListUserWorkspaces(ServerContext& server, const std::string& contextId,
                                      WorkspaceList& list);

/// Appends the documents of a workspace; an empty summary for an element that is no object. An answer that is
/// no array leaves the list as it is and counts as success. One GET.
/// @return whether the status was in 200 to 299; nothing is traced
[[nodiscard]] bool ListWorkspaceDocuments(ServerContext& server, const std::string& workspaceId,
                                          DocumentList& list);

/// Whether a workspace lists a document of that id. One GET; a failure is traced and counts as no.
[[nodiscard]] bool WorkspaceHoldsDocument(ServerContext& server, const std::string& documentId,
                                          const std::string& workspaceId);

/// Finds a workspace of the user's by its id. One GET.
/// @param workspace  left alone on failure
[[nodiscard]] bool FindUserWorkspace(ServerContext& server, const std::string& contextId,
                                     const std::string& workspaceId, WorkspaceRecord& workspace);

/// Finds the first workspace of the user's, in the server's order, that holds a document. One GET for the
/// list and one for each workspace up to the hit.
/// @param workspace  left alone on failure
[[nodiscard]] bool FindWorkspaceOfDocument(ServerContext& server, const std::string& documentId,
                                           const std::string& contextId, WorkspaceRecord& workspace);

}  // namespace lxservices::cms_interface::vantry
