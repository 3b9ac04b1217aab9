#include "browsing/web_pages.h"

#include <algorithm>

#include "base/checkout_id.h"
#include "base/failure_trace.h"
#include "base/server_key.h"
#include "base/text.h"
#include "connection/url_escape.h"
#include "documents/reading/document_reads.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {
namespace {

bool FindWorkspaceOfId(ServerContext& server, const CheckoutId& id, WorkspaceRecord& workspace) {
  if (id.field0.empty() || id.field1.empty()) return false;
  DocumentRecord record;
  if (ReadDocument(server, id.field0, record) != Ok) return false;
  return FindWorkspaceById(server, id.field1, record.contextId, workspace);
}

}  // namespace

std::string InformationPage(const ServerContext& server, const char* id) {
  const std::string url = WithTrailingSlash(server.http()->uri());
  if (url.empty()) return {};
  return url + "app/#zvk1/tcomp/infoPage?oid=" + EscapeForUrl(ParseCheckoutId(id).field0);
}

std::string AttributesPage(ServerContext& server, const char* id) {
  const FailureStep step("find the attributes page");
  const FailureMark mark;
  const CheckoutId parsed = ParseCheckoutId(id);
  WorkspaceRecord workspace;
  if (!FindWorkspaceOfId(server, parsed, workspace)) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Error, "Failed to locate %s on server\n",
                                                      TextOrEmpty(id));
    return {};
  }
  return WithTrailingSlash(server.http()->uri()) +
         "servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction?u8&action=MULTIEDITATTR&oid=" +
         EscapeForUrl(parsed.field0) + "&wsName=" + EscapeForUrl(workspace.name) + "&wscontext=1";
}

bool FindWorkspaceById(ServerContext& server, const std::string& workspaceId, const std::string& contextId,
                       WorkspaceRecord& workspace) {
  const FailureStep step("find the workspace");
  const FailureMark mark;
  WorkspaceList workspaces;
  const bool listed = ListWorkspaces(server, contextId, workspaces);
  const auto hit = std::find_if(workspaces.begin(), workspaces.end(), [&](const WorkspaceRecord& candidate) {
    return candidate.id == workspaceId;
  });
  if (!listed || hit == workspaces.end()) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(
        dp::TraceType::Error, "Failed to locate workspace %s in context %s on server\n", workspaceId.c_str(),
        contextId.c_str());
    return false;
  }
  workspace = *hit;
  return true;
}

}  // namespace lxservices::cms_interface::vantry
