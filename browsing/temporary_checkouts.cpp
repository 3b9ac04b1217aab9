#include "browsing/temporary_checkouts.h"

#include <algorithm>
#include <string_view>

#include "base/failure_step.h"
#include "browsing/contexts.h"
#include "browsing/vfs_tree.h"
#include "connection/rest_items.h"
#include "documents/reading/document_reads.h"
#include "documents/reading/file_info.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {
namespace {

// The document whose copies are wanted; none for all documents.
using Wanted = const DocumentRecord*;

bool IsWantedCopy(const DocumentSummary& document, Wanted wanted) {
  if (document.id.empty() || !document.isCheckoutByYou) return false;
  return wanted == nullptr || document.master.id == wanted->master.id;
}

// The workspaces to look into. A document that is checked out names its workspace; one that names none of
// these may lie in any.
std::optional<WorkspaceList> ListTemporaryWorkspaces(ServerContext& server, const std::string& contextId,
                                                     Wanted wanted) {
  auto workspaces = ListWorkspaces(server, contextId);
  if (!workspaces) return std::nullopt;
  const std::string_view prefix = server.settings().temporaryWorkspacePrefix;
  workspaces->remove_if(
      [prefix](const WorkspaceRecord& workspace) { return !workspace.name.starts_with(prefix); });
  const auto isNamed = [wanted](const WorkspaceRecord& workspace) {
    return workspace.name == wanted->checkoutToFolderName;
  };
  if (wanted != nullptr && std::any_of(workspaces->begin(), workspaces->end(), isNamed)) {
    workspaces->remove_if([&](const WorkspaceRecord& workspace) { return !isNamed(workspace); });
  }
  return workspaces;
}

// The id of the document that a copy was taken from, which has the same version; the search finds it and no
// copies. Empty when it is not told, nothing when the search failed.
std::optional<std::string> FindOriginal(ServerContext& server, const DocumentSummary& copy,
                                        const std::string& contextId) {
  const auto documents = SearchDocuments(server, copy.master.number, contextId);
  if (!documents) return std::nullopt;
  const auto hit = std::find_if(documents->begin(), documents->end(), [&](const DocumentRecord& other) {
    return other.revision == copy.revision && other.iteration == copy.iteration && other.id != copy.id &&
           other.master.id == copy.master.id;
  });
  return hit != documents->end() ? hit->id : std::string();
}

bool AddCopiesIn(ServerContext& server, const WorkspaceRecord& workspace, const std::string& contextId,
                 Wanted wanted, TemporaryCheckouts& found) {
  const auto documents = ListWorkspaceDocuments(server, workspace.id);
  if (!documents) return false;
  for (const DocumentSummary& copy : *documents) {
    if (!IsWantedCopy(copy, wanted)) continue;
    const auto original = FindOriginal(server, copy, contextId);
    if (!original) return false;
    found.push_back({FormatTemporaryCheckoutId(workspace.id, *original, copy.id), workspace.name,
                     copy.master.number, copy.master.cadName, VersionText(copy)});
  }
  return true;
}

bool AddCopiesOfContext(ServerContext& server, const std::string& contextId, Wanted wanted,
                        TemporaryCheckouts& found) {
  const auto workspaces = ListTemporaryWorkspaces(server, contextId, wanted);
  return workspaces &&
         std::all_of(workspaces->begin(), workspaces->end(), [&](const WorkspaceRecord& workspace) {
           return AddCopiesIn(server, workspace, contextId, wanted, found);
         });
}

// The ids of the contexts that a directory stands for; nothing for a directory of another kind and after a
// failure.
std::optional<std::vector<std::string>> ListContextIds(ServerContext& server, std::string_view path) {
  const ParsedVfsPath parsed = SplitDirectoryPath(path);
  if (!parsed.section.empty() || (parsed.kind == ContextKind::None && !path.empty())) return std::nullopt;
  std::vector<std::string> ids;
  if (!parsed.context.empty()) {
    ids.push_back(ResolveContextId(server, parsed.kind, parsed.context));
    if (ids.back().empty()) return std::nullopt;
    return ids;
  }
  const auto [status, rows] = path.empty() ? ListAllContexts(server)
                                           : ListContextsByKind(server, std::string(RestWordOf(parsed.kind)));
  if (status != Ok) return std::nullopt;
  for (const RestItem& row : rows) ids.push_back(row.id);
  return ids;
}

}  // namespace

std::optional<TemporaryCheckouts> ListTemporaryCheckoutsOf(ServerContext& server, const CheckoutId& id) {
  const FailureStep step("find temporary checkouts");
  const auto [status, document] = ReadDocument(server, id.document);
  if (status != Ok) return std::nullopt;
  TemporaryCheckouts found;
  if (!AddCopiesOfContext(server, document.contextId, &document, found)) return std::nullopt;
  return found;
}

std::optional<TemporaryCheckouts> ListTemporaryCheckoutsBelow(ServerContext& server, std::string_view path) {
  const FailureStep step("find temporary checkouts");
  const auto contexts = ListContextIds(server, path);
  if (!contexts) return std::nullopt;
  TemporaryCheckouts found;
  for (const std::string& contextId : *contexts) {
    if (!AddCopiesOfContext(server, contextId, nullptr, found)) return std::nullopt;
  }
  return found;
}

}  // namespace lxservices::cms_interface::vantry
