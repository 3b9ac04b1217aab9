#include "browsing/latest_version.h"

#include <algorithm>

#include "base/checkout_id.h"
#include "documents/reading/document_reads.h"
#include "documents/reading/file_info.h"

namespace lxservices::cms_interface::vantry {
namespace {

std::vector<DocCandidate> SearchDynamicDocuments(ServerContext& server, const std::string& cadName) {
  if (server.Services().dynamicDocV2) return SearchDynamicDocumentsV2(server, cadName);
  if (server.Services().dynamicDocPresent) return SearchDynamicDocumentsV1(server, cadName);
  return {};
}

std::vector<DocCandidate> SearchByCadName(ServerContext& server, const std::string& cadName) {
  std::vector<DocCandidate> candidates;
  const Settings& settings = server.settings();
  if (settings.browseDynamicDocuments) candidates = SearchDynamicDocuments(server, cadName);
  if (candidates.empty() && settings.browseCadDocuments && server.Services().cadDocPresent) {
    candidates = SearchCadDocuments(server, cadName);
  }
  return candidates;
}

// The candidate's id is compared for a document in a workspace alone: there the search may have found the
// very working copy that is asked about.
bool IsVersionOf(ServerContext& server, const DocCandidate& candidate, const AskedDocument& asked) {
  if (!asked.workspace.empty() && candidate.id == asked.id) return true;
  const auto [status, record] = ReadDocument(server, candidate.id);
  return status == Ok && record.master.id == asked.record.master.id;
}

// A candidate that is checked out is somebody's copy in the making, and not the newest version, unless it is
// the very copy that is asked about.
bool CanBeUsed(const DocCandidate& candidate, const AskedDocument& asked) {
  return !candidate.checkedOut || (!asked.workspace.empty() && candidate.id == asked.id);
}

// A shorter text is the smaller one, so that "9" comes before "10" and "Z" before "AA".
bool IsLess(const std::string& left, const std::string& right) {
  if (left.size() != right.size()) return left.size() < right.size();
  return left < right;
}

bool IsOlder(const DocumentSummary& left, const DocumentSummary& right) {
  if (left.revision != right.revision) return IsLess(left.revision, right.revision);
  return IsLess(left.iteration, right.iteration);
}

void TakeGreatestVersion(const std::vector<DocumentSummary>& versions, const AskedDocument& asked,
                         LatestInfo& latest) {
  const DocumentSummary* best = &asked.record;
  for (const DocumentSummary& version : versions) {
    if (!version.isLatest || !IsOlder(*best, version)) continue;
    best = &version;
    latest.id = FormatWorkspaceId(asked.workspace, version.id);
    latest.isLatest = false;
  }
  latest.version = VersionText(*best);
}

// The candidate itself is a copy, but its version says which one of the list it was taken from.
void TakeVersionOfCandidate(const std::vector<DocumentSummary>& versions, const DocCandidate& candidate,
                            const AskedDocument& asked, LatestInfo& latest) {
  const auto isSame = [&](const DocumentSummary& version) {
    return VersionText(version) == candidate.version;
  };
  const auto found = std::find_if(versions.begin(), versions.end(), isSame);
  // Without one the document stands for its own newest version, and the version text is left as it was: it is
  // empty for a host that asks afresh, which tells it that nobody could say.
  if (found == versions.end()) return;
  latest.id = FormatWorkspaceId(asked.workspace, found->id);
  latest.version = VersionText(*found);
  latest.isLatest = latest.version == VersionText(asked.record);
}

}  // namespace

std::vector<DocCandidate> FindLatestCandidates(ServerContext& server, const AskedDocument& asked) {
  std::vector<DocCandidate> candidates = SearchByCadName(server, asked.record.master.cadName);
  if (candidates.size() < 2) return candidates;
  // A CAD name can be used again by another master, so each is looked at. A single candidate is not, and is
  // taken at its word: the one request that this saves is made for every row of a host's status view.
  for (DocCandidate& candidate : candidates) {
    if (IsVersionOf(server, candidate, asked)) return {std::move(candidate)};
  }
  return candidates;
}

bool TakeLatestFromCandidate(const std::vector<DocCandidate>& candidates, const AskedDocument& asked,
                             LatestInfo& latest) {
  if (candidates.size() != 1 || !CanBeUsed(candidates.front(), asked)) return false;
  const DocCandidate& candidate = candidates.front();
  latest.id = FormatWorkspaceId(asked.workspace, candidate.id);
  latest.version = candidate.version;
  latest.isLatest = candidate.version == VersionText(asked.record);
  return true;
}

void TakeLatestFromVersions(const std::vector<DocumentSummary>& versions,
                            const std::vector<DocCandidate>& candidates, const AskedDocument& asked,
                            LatestInfo& latest) {
  latest.id = FormatWorkspaceId(asked.workspace, asked.record.id);
  latest.isLatest = asked.record.isLatest;
  if (candidates.size() == 1) {
    TakeVersionOfCandidate(versions, candidates.front(), asked, latest);
  } else {
    TakeGreatestVersion(versions, asked, latest);
  }
}

}  // namespace lxservices::cms_interface::vantry
