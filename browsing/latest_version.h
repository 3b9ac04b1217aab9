#pragma once

#include <string>
#include <vector>

#include "browsing/document_query.h"
#include "browsing/document_search.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"

/// Which version of a document is the newest. The OData services are asked first and the document's own list
/// of versions decides what they leave open.
namespace lxservices::cms_interface::vantry {

/// A document that a question is about.
struct AskedDocument {
  std::string id;         ///< the id that was asked for, without a workspace
  std::string workspace;  ///< the workspace it was asked for in; empty for none
  DocumentRecord record;
};

/// What the OData services hold for the newest version of a document: none, one, or several when none of
/// several could be told to be a version of this document. Makes requests, on this thread: one search or two,
/// and up to one read for each of several candidates.
[[nodiscard]] std::vector<DocCandidate> FindLatestCandidates(ServerContext& server,
                                                             const AskedDocument& asked);

/// Takes a single candidate for the newest version. No request.
/// @return false, with `latest` left alone, when there is not exactly one candidate or it cannot be used
[[nodiscard]] bool TakeLatestFromCandidate(const std::vector<DocCandidate>& candidates,
                                           const AskedDocument& asked, LatestInfo& latest);

/// Takes the newest version from the document's list of versions. No request.
/// @param candidates  those that TakeLatestFromCandidate could not use
void TakeLatestFromVersions(const std::vector<DocumentSummary>& versions,
                            const std::vector<DocCandidate>& candidates, const AskedDocument& asked,
                            LatestInfo& latest);

}  // namespace lxservices::cms_interface::vantry
