#include "browsing/folder_contents.h"

#include <optional>
#include <string>

#include "base/failure_step.h"
#include "browsing/folder_contents_handler.h"
#include "browsing/odata_rows.h"
#include "connection/json_members.h"
#include "connection/json_parsing.h"
#include "connection/rest_stream.h"
#include "connection/url_split.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr const char* selectDetails = ",Version,Name,Number";
constexpr const char* expandVersions = "&$expand=Versions($select=Version,ID)";
constexpr const char* newestFirst = "&$orderby=Version desc";

// One document list: what to ask for and how to read its rows.
struct DocumentListing {
  std::string path;
  RowForm form;
};

std::string DynamicDocumentsPath(const std::string& serviceVersion, const std::string& resource) {
  return "servlet/odata/" + serviceVersion + "/DataAdmin/" + resource +
         "/FolderContents/ZVK.DynamicDocMgmt.DynamicDocument?$select=CADName,ID";
}

bool ReadPage(RestStream& response, FolderContentsHandler& handler) {
  if (ReadJson([&response] { return response.NextPiece(); }, handler)) return true;
  response.ReportBroken();
  return false;
}

// One page: its HTTP status, and its next link, which is empty after the last; nothing when the page failed.
struct PageEnd {
  int status = -1;
  std::optional<std::string> nextLink;
};

PageEnd ListPage(const std::shared_ptr<HttpConnection>& connection, const std::string& path,
                 const RowForm& form, const DirEntryCallback& callback) {
  const FailureStep step("list the folder");
  RestStream response(MakeGetRequest(connection, path.c_str(), VtConnection::ODataHeaders()), {});
  if (!response.succeeded()) return {response.status(), std::nullopt};
  FolderContentsHandler handler(form, callback);
  if (!ReadPage(response, handler)) return {response.status(), std::nullopt};
  return {response.status(), handler.nextLink()};
}

ListingAnswer ListDocuments(ServerContext& server, const DocumentListing& listing,
                            const DirEntryCallback& callback) {
  PageEnd page = ListPage(server.http(), listing.path, listing.form, callback);
  if (IsNotThere(page.status)) return ListingAnswer::NotThere;
  while (page.nextLink && !page.nextLink->empty()) {
    // A next link is a full URL and may lead to another host.
    const auto [base, path] = SplitUrlAtPath(*page.nextLink);
    const FailureMark mark;
    const auto side = server.MakeSideConnection(base);
    if (side == nullptr) ReportReason(FollowsOr(mark, FailureKind::AnswerBroken));
    if (side == nullptr) return ListingAnswer::Broken;
    page = ListPage(side, path, listing.form, callback);
  }
  return page.nextLink ? ListingAnswer::Whole : ListingAnswer::Broken;
}

DocumentListing DynamicDocuments(const std::string& resource, bool details) {
  DocumentListing listing{DynamicDocumentsPath("v4", resource), {.details = details}};
  if (details) listing.path.append(selectDetails).append(newestFirst);
  return listing;
}

DocumentListing DynamicDocumentsV5(const std::string& resource, bool details, bool versions) {
  DocumentListing listing{DynamicDocumentsPath("v5", resource), {.details = details, .versions = versions}};
  if (details) listing.path += selectDetails;
  if (versions) listing.path += expandVersions;
  listing.path += newestFirst;
  return listing;
}

DocumentListing CadDocuments(const std::string& resource, bool details, bool versions) {
  // Version 4 of the service on a server with version 5 too: it is the one that gives CAD documents by
  // "FileName".
  DocumentListing listing{"servlet/odata/v4/DataAdmin/" + resource +
                              "/FolderContents/ZVK.CADDocumentMgmt.CADDocument?$select=FileName,ID",
                          {details, versions, true}};
  if (details) listing.path += selectDetails;
  if (versions) listing.path += expandVersions;
  listing.path += newestFirst;
  return listing;
}

}  // namespace

bool ListSubfolders(ServerContext& server, const std::string& resource, const DirEntryCallback& callback) {
  const FailureStep step("list the folder");
  const std::string path = "servlet/odata/v1/DataAdmin/" + resource + "/Folders?$select=Name";
  return VisitODataPages(server, path, [&](const rapidjson::Value& rows) {
    for (const auto& row : rows.GetArray()) {
      const rapidjson::Value* name = FindString(row, "Name");
      if (name == nullptr) continue;
      // Raw, where documents and the gateway's folders are escaped: the walk that looks a folder up compares
      // with the server's own names.
      DirEntryInfoExt entry;
      entry.name = name->GetString();
      entry.id = "";
      entry.isDirectory = true;
      callback(entry);
    }
    return true;
  });
}

bool ListDynamicDocuments(ServerContext& server, const std::string& resource,
                          const DirEntryCallback& callback, bool details) {
  return ListDocuments(server, DynamicDocuments(resource, details), callback) == ListingAnswer::Whole;
}

bool ListDynamicDocumentsV5(ServerContext& server, const std::string& resource,
                            const DirEntryCallback& callback, bool details, bool versions) {
  return ListDocuments(server, DynamicDocumentsV5(resource, details, versions), callback) ==
         ListingAnswer::Whole;
}

bool ListCadDocuments(ServerContext& server, const std::string& resource, const DirEntryCallback& callback,
                      bool details, bool versions) {
  return ListDocuments(server, CadDocuments(resource, details, versions), callback) == ListingAnswer::Whole;
}

ListingAnswer ListDocumentsOfFolder(ServerContext& server, const std::string& resource,
                                    const DirEntryCallback& callback, ReadDirFlags flags) {
  const bool isV5 = server.Services().dataAdminV5;
  const bool details = (flags & Details) != 0;
  const bool versions = isV5 && (flags & Versions) != 0;
  ListingAnswer answer = ListingAnswer::Whole;
  if (server.settings().browseDynamicDocuments) {
    answer = ListDocuments(
        server, isV5 ? DynamicDocumentsV5(resource, details, versions) : DynamicDocuments(resource, details),
        callback);
  }
  if (answer != ListingAnswer::Whole || !server.settings().browseCadDocuments) return answer;
  return ListDocuments(server, CadDocuments(resource, details, versions), callback);
}

bool ListODataFolder(ServerContext& server, const std::string& resource, const DirEntryCallback& callback,
                     bool details) {
  if (!ListSubfolders(server, resource, callback)) return false;
  const Settings& settings = server.settings();
  if (settings.browseDynamicDocuments && !ListDynamicDocuments(server, resource, callback, details)) {
    return false;
  }
  return !settings.browseCadDocuments || ListCadDocuments(server, resource, callback, details, false);
}

bool ListODataFolderV5(ServerContext& server, const std::string& resource, const DirEntryCallback& callback,
                       bool details, bool versions) {
  if (!ListSubfolders(server, resource, callback)) return false;
  const Settings& settings = server.settings();
  if (settings.browseDynamicDocuments &&
      !ListDynamicDocumentsV5(server, resource, callback, details, versions)) {
    return false;
  }
  return !settings.browseCadDocuments || ListCadDocuments(server, resource, callback, details, versions);
}

}  // namespace lxservices::cms_interface::vantry
