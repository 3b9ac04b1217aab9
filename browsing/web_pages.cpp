#include "browsing/web_pages.h"

#include "base/failure_trace.h"
#include "base/server_key.h"
#include "connection/url_escape.h"
#include "documents/reading/document_reads.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {
namespace {

std::optional<WorkspaceRecord> FindWorkspaceOfId(ServerContext& server, const CheckoutId& id) {
  if (id.document.empty() || id.workspace.empty()) return std::nullopt;
  const auto [status, record] = ReadDocument(server, id.document);
  if (status != Ok) return std::nullopt;
  return FindWorkspaceById(server, id.workspace, record.contextId);
}

}  // namespace

std::string InformationPage(const ServerContext& server, const CheckoutId& id) {
  const std::string url = WithTrailingSlash(server.http()->uri());
  if (url.empty()) return {};
  return url + "app/#zvk1/tcomp/infoPage?oid=" + EscapeForUrl(id.document);
}

std::string AttributesPage(ServerContext& server, const CheckoutId& id) {
  const FailureStep step("find the attributes page");
  const FailureMark mark;
  const auto workspace = FindWorkspaceOfId(server, id);
  if (!workspace) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Error, "Failed to locate %s on server\n",
                                                      id.text.c_str());
    return {};
  }
  return WithTrailingSlash(server.http()->uri()) +
         "servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction?u8&action=MULTIEDITATTR&oid=" +
         EscapeForUrl(id.document) + "&wsName=" + EscapeForUrl(workspace->name) + "&wscontext=1";
}

std::optional<WorkspaceRecord> FindWorkspaceById(ServerContext& server, const std::string& workspaceId,
                                                 const std::string& contextId) {
  const FailureStep step("find the workspace");
  const FailureMark mark;
  const auto workspaces = ListWorkspaces(server, contextId);
  const WorkspaceRecord* hit = workspaces ? FindById(*workspaces, workspaceId) : nullptr;
  if (hit != nullptr) return *hit;
  TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Error,
                                                    "Failed to locate workspace %s in context %s on server\n",
                                                    workspaceId.c_str(), contextId.c_str());
  return std::nullopt;
}

}  // namespace lxservices::cms_interface::vantry
