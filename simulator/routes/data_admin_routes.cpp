#include <array>
#include <utility>

#include "simulator/routes/routes.h"
#include "simulator/store/document_lists.h"
#include "simulator/store/document_store.h"
#include "simulator/store/folder_lists.h"
#include "simulator/store/folder_store.h"
#include "simulator/wire/metadata.h"
#include "simulator/wire/odata_answers.h"
#include "simulator/wire/resource_path.h"

namespace vantry_sim {
namespace {

/// Folders know their contents since the fourth version of the service.
constexpr char firstWithContents = '4';
/// Dynamic documents tell their versions since the fifth; CAD documents always did.
constexpr char firstWithDynamicVersions = '5';

constexpr std::array<std::pair<std::string_view, std::string_view>, 5> casts{{
    {"ZVK.DataAdmin.ProductContainer", "Product"},
    {"ZVK.DataAdmin.LibraryContainer", "Library"},
    {"ZVK.DataAdmin.ProjectContainer", "Project"},
    {"ZVK.DataAdmin.Site", "Site"},
    {"ZVK.DataAdmin.OrganizationContainer", "Organization"},
}};

Response NotFound(std::string_view message) {
  return ErrorResponse(404, "no-such-resource", message);
}

/// Nothing for a type that isn't one of containers; empty without a cast.
std::optional<std::string_view> KindOfCast(std::string_view cast) {
  if (cast.empty()) return std::string_view();
  for (const auto& [type, kind] : casts) {
    if (type == cast) return kind;
  }
  return std::nullopt;
}

/// What keeps an $expand of folders from being answered; nothing for a query that is fine.
std::optional<Response> RefuseFolderExpand(const ODataQuery& query) {
  if (!query.expand) return std::nullopt;
  if (query.expand->navigation != "Folders") return ODataRefusal({400, "$expand takes Folders here"});
  if (!FoldersHave(*query.expand)) return ODataRefusal({400, "$expand selects what folders don't have"});
  return std::nullopt;
}

Response Containers(const ServiceContext& context, const Request& request, std::string_view kind,
                    const ODataQuery& query) {
  if (auto refusal = RefuseFolderExpand(query)) return std::move(*refusal);
  ODataRowParts parts;
  parts.expanded = [&](JsonText& json, std::int64_t key, const ODataExpand& expand) {
    WriteFolderTree(json, context.database, key, 0, expand);
  };
  return AnswerODataList(context, request, ContainerList(kind), query, parts);
}

Response Folders(const ServiceContext& context, const Request& request, std::int64_t container,
                 std::int64_t parent, const ODataQuery& query) {
  if (auto refusal = RefuseFolderExpand(query)) return std::move(*refusal);
  ODataRowParts parts;
  parts.computed = [&](std::string_view, std::int64_t key) { return FolderLocation(context.database, key); };
  parts.expanded = [&](JsonText& json, std::int64_t key, const ODataExpand& expand) {
    WriteFolderTree(json, context.database, container, key, expand);
  };
  return AnswerODataList(context, request, FolderList(container, parent), query, parts);
}

Response Contents(const ServiceContext& context, const Request& request, std::int64_t folder,
                  const std::string& type, const ODataQuery& query) {
  const char version = request.Path("version").front();
  if (version < firstWithContents)
    return NotFound("folders don't know their contents in this version of DataAdmin");
  if (type.empty()) return ODataRefusal({501, "contents are listed one type at a time"});
  const bool dynamic = type == "ZVK.DynamicDocMgmt.DynamicDocument";
  if (!dynamic && type != "ZVK.CADDocumentMgmt.CADDocument")
    return NotFound("folders hold nothing of this type");
  const auto service = dynamic ? DocumentService::Dynamic : DocumentService::Cad;
  if (query.expand) {
    const bool offered = !dynamic || version >= firstWithDynamicVersions;
    if (query.expand->navigation != "Versions" || !offered) {
      return ODataRefusal({400, "these rows don't have the navigation of the $expand"});
    }
    if (!VersionsHave(service, *query.expand))
      return ODataRefusal({400, "$expand selects what versions don't have"});
  }
  ODataRowParts parts;
  parts.expanded = [&](JsonText& json, std::int64_t key, const ODataExpand& expand) {
    WriteVersions(json, context.database, key, service, expand);
  };
  return AnswerODataList(context, request, FolderContents(folder, service, query.filter.has_value()), query,
                         parts);
}

Response BelowContainer(const ServiceContext& context, const Request& request, const ResourcePath& path,
                        std::string_view kind, const ODataQuery& query) {
  const auto container = ContextKey(context.database, path.container, kind);
  if (!container) return NotFound("no such container");
  const auto folder = FindFolderByIds(context.database, *container, path.folders);
  if (!folder) return NotFound("no such folder in this container");
  if (path.target == ResourcePath::Target::Folders)
    return Folders(context, request, *container, *folder, query);
  return Contents(context, request, *folder, path.contentType, query);
}

Response DataAdmin(const ServiceContext& context, const Request& request) {
  if (!OffersVersion(context.options.generation, "DataAdmin", request.Path("version"))) {
    return NotFound("this server doesn't offer this version of DataAdmin");
  }
  const auto path = ParseResourcePath(request.tail);
  const auto kind = path ? KindOfCast(path->cast) : std::nullopt;
  if (!path || !kind) return NotFound("DataAdmin has nothing at this path");
  ODataProblem problem;
  const auto query = ParseODataQuery(request.query, problem);
  if (!query) return ODataRefusal(problem);
  if (query->latestVersionOnly) return ODataRefusal({400, "zvk.search.latestversion is for searches"});
  if (path->target == ResourcePath::Target::Containers) return Containers(context, request, *kind, *query);
  return BelowContainer(context, request, *path, *kind, *query);
}

}  // namespace

void AddDataAdminRoutes(Router& router, const ServiceContext& context) {
  if (!HasOData(context.options.generation)) return;
  router.Add(
      "GET", "servlet/odata/v{version}/DataAdmin/{...}",
      [&context](const Request& request) { return DataAdmin(context, request); },
      "contexts at `Containers` and `Containers/ZVK.DataAdmin.<type>`; roots at "
      "`Containers('<id>')/Folders`, folders of a folder at `Folders('<id>')/Folders`; the "
      "latest version of each document in a folder at "
      "`Folders('<id>')/FolderContents/ZVK.DynamicDocMgmt.DynamicDocument` and "
      "`.../ZVK.CADDocumentMgmt.CADDocument`");
}

}  // namespace vantry_sim
