#include "browsing/temporary_checkouts.h"

#include <algorithm>
#include <string_view>

#include "base/checkout_id.h"
#include "base/failure_step.h"
#include "base/text.h"
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
bool ListTemporaryWorkspaces(ServerContext& server, const std::string& contextId, Wanted wanted,
                             WorkspaceList& workspaces) {
  if (!ListWorkspaces(server, contextId, workspaces)) return false;
  const std::string_view prefix = server.settings().temporaryWorkspacePrefix;
  workspaces.remove_if(
      [prefix](const WorkspaceRecord& workspace) { return !workspace.name.starts_with(prefix); });
  const auto isNamed = [wanted](const WorkspaceRecord& workspace) {
    return workspace.name == wanted->checkoutToFolderName;
  };
  if (wanted != nullptr && std::any_of(workspaces.begin(), workspaces.end(), isNamed)) {
    workspaces.remove_if([&](const WorkspaceRecord& workspace) { return !isNamed(workspace); });
  }
  return true;
}

// The document that a copy was taken from has the same version, and the search finds it and no copies.
bool FindOriginal(ServerContext& server, const DocumentSummary& copy, const std::string& contextId,
                  std::string& original) {
  std::vector<DocumentRecord> documents;
  if (!SearchDocuments(server, copy.master.number, documents, contextId.c_str())) return false;
  const auto hit = std::find_if(documents.begin(), documents.end(), [&](const DocumentRecord& other) {
    return other.revision == copy.revision && other.iteration == copy.iteration && other.id != copy.id &&
           other.master.id == copy.master.id;
  });
  if (hit != documents.end()) original = hit->id;
  return true;
}

bool AddCopiesIn(ServerContext& server, const WorkspaceRecord& workspace, const std::string& contextId,
                 Wanted wanted, TemporaryCheckouts& found) {
  DocumentList documents;
  if (!ListWorkspaceDocuments(server, workspace.id, documents)) return false;
  for (const DocumentSummary& copy : documents) {
    if (!IsWantedCopy(copy, wanted)) continue;
    std::string original;
    if (!FindOriginal(server, copy, contextId, original)) return false;
    found.push_back({FormatTemporaryCheckoutId(workspace.id, original, copy.id), workspace.name,
                     copy.master.number, copy.master.cadName, VersionText(copy)});
  }
  return true;
}

bool AddCopiesOfContext(ServerContext& server, const std::string& contextId, Wanted wanted,
                        TemporaryCheckouts& found) {
  WorkspaceList workspaces;
  if (!ListTemporaryWorkspaces(server, contextId, wanted, workspaces)) return false;
  return std::all_of(workspaces.begin(), workspaces.end(), [&](const WorkspaceRecord& workspace) {
    return AddCopiesIn(server, workspace, contextId, wanted, found);
  });
}

// The ids of the contexts that a directory stands for; none, and false, for a directory of another kind.
bool ListContextIds(ServerContext& server, std::string_view path, std::vector<std::string>& ids) {
  const ParsedVfsPath parsed = SplitDirectoryPath(path);
  if (!parsed.section.empty() || (parsed.kind == ContextKind::None && !path.empty())) return false;
  if (!parsed.context.empty()) {
    ids.push_back(ResolveContextId(server, parsed.kind, parsed.context));
    return !ids.back().empty();
  }
  std::vector<RestItem> rows;
  const bool listed = path.empty() ? ListAllContexts(server, rows)
                                   : ListContextsByKind(server, RestWordOf(parsed.kind), rows, nullptr);
  for (const RestItem& row : rows) ids.push_back(row.id);
  return listed;
}

}  // namespace

std::optional<TemporaryCheckouts> ListTemporaryCheckoutsOf(ServerContext& server, const char* id) {
  const FailureStep step("find temporary checkouts");
  DocumentRecord document;
  if (ReadDocument(server, ParseCheckoutId(id).field0, document) != Ok) return std::nullopt;
  TemporaryCheckouts found;
  if (!AddCopiesOfContext(server, document.contextId, &document, found)) return std::nullopt;
  return found;
}

std::optional<TemporaryCheckouts> ListTemporaryCheckoutsBelow(ServerContext& server, const char* path) {
  const FailureStep step("find temporary checkouts");
  std::vector<std::string> contexts;
  if (!ListContextIds(server, TextOrEmpty(path), contexts)) return std::nullopt;
  TemporaryCheckouts found;
  for (const std::string& contextId : contexts) {
    if (!AddCopiesOfContext(server, contextId, nullptr, found)) return std::nullopt;
  }
  return found;
}

}  // namespace lxservices::cms_interface::vantry
