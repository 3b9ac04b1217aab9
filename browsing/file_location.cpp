#include "browsing/file_location.h"

#include <string_view>

#include "base/checkout_id.h"
#include "base/failure_trace.h"
#include "browsing/cad_name_search.h"
#include "browsing/document_details.h"
#include "browsing/document_search.h"
#include "browsing/folder_tree.h"
#include "browsing/vfs_tree.h"

namespace lxservices::cms_interface::vantry {
namespace {

// The id by the folder itself; empty when OData cannot tell, in which case the context is searched.
std::string FindThroughFolder(ServerContext& server, const std::string& cadName,
                              const std::string& folderPath, ContextKind kind,
                              const std::string& contextName) {
  const std::string_view type = ODataTypeOf(kind);
  if (type.empty()) {
    TracerFor({FailureKind::NotFound})(dp::TraceType::Miss, "unhandled context type %d",
                                       static_cast<int>(kind));
    return {};
  }
  const std::string resource = ResolveFolderResource(server, contextName, type, folderPath);
  if (resource.empty()) return {};
  return SearchFolderByCadName(server, cadName, resource).id;
}

// The search of a context may have given any version; where the server has dynamic documents they know
// better.
std::string NewestVersionOf(ServerContext& server, const std::string& id) {
  if (!server.Services().dynamicDocPresent) return id;
  LatestInfo latest;
  DocumentQuery query;
  query.latest = &latest;
  if (GetDocumentDetails(server, ParseCheckoutId(id), query) != Ok) return id;
  return ParseCheckoutId(latest.id).document;
}

}  // namespace

std::string FindFileInFolder(ServerContext& server, const std::string& cadName, const std::string& folderPath,
                             ContextKind kind, const std::string& contextName) {
  const FailureStep step("find the file");
  const FailureMark mark;
  if (!ForceLegacyFileBrowse() && server.Services().folderContents) {
    std::string id = FindThroughFolder(server, cadName, folderPath, kind, contextName);
    if (!id.empty()) return id;
  }
  const FoundByCadName found = FindDocumentByCadNameInContext(server, cadName, kind, contextName);
  if (found.count == 0) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Miss, "Failed to find file %s",
                                                      cadName.c_str());
    return {};
  }
  return NewestVersionOf(server, found.record.id);
}

}  // namespace lxservices::cms_interface::vantry
