#include "browsing/document_search.h"

#include <optional>
#include <string_view>
#include <utility>

#include "base/failure_step.h"
#include "browsing/odata_rows.h"
#include "connection/json_members.h"
#include "connection/url_escape.h"

namespace lxservices::cms_interface::vantry {
namespace {

// A row without a text for its checkout status is none of ours: the server leaves the status null on some
// rows, for reasons of its own, and a document whose status is unknown must not be taken for the newest.
std::optional<DocCandidate> ReadCandidate(const rapidjson::Value& row) {
  const rapidjson::Value* id = FindString(row, "ID");
  const rapidjson::Value* version = FindString(row, "Version");
  const rapidjson::Value* checkOutStatus = FindString(row, "CheckOutStatus");
  if (id == nullptr || version == nullptr || checkOutStatus == nullptr) return std::nullopt;
  return DocCandidate{std::string(TextView(*id)), std::string(TextView(*version)),
                      checkOutStatus->GetStringLength() > 0};
}

std::vector<DocCandidate> Search(ServerContext& server, const std::string& path) {
  const FailureStep step("find the newest version");
  std::vector<DocCandidate> candidates;
  VisitODataPages(server, path, [&](const rapidjson::Value& rows) {
    for (const auto& row : rows.GetArray()) {
      if (auto candidate = ReadCandidate(row)) candidates.push_back(std::move(*candidate));
    }
    return true;
  });
  return candidates;
}

// Only the name is escaped; the blanks of the filter go out as they are, and the transport makes them fit
// for the wire. An apostrophe in the name is escaped like any other byte and not doubled.
std::string FilterByName(const std::string& property, const std::string& name) {
  return std::string("?$filter=") + property + " eq '" + EscapeForUrl(name) +
         "'&$orderby=Version desc&$select=ID,Version,CheckOutStatus";
}

constexpr const char* newestVersionOnly = "&zvk.search.latestversion=true";

}  // namespace

std::vector<DocCandidate> SearchCadDocuments(ServerContext& server, const std::string& name) {
  return Search(server, "servlet/odata/v1/CADDocumentMgmt/CADDocuments" + FilterByName("FileName", name) +
                            newestVersionOnly);
}

std::vector<DocCandidate> SearchDynamicDocumentsV2(ServerContext& server, const std::string& name) {
  return Search(server, "servlet/odata/v2/DynamicDocMgmt/DynamicDocuments" + FilterByName("CADName", name) +
                            newestVersionOnly);
}

std::vector<DocCandidate> SearchDynamicDocumentsV1(ServerContext& server, const std::string& name) {
  return Search(server, "servlet/odata/v1/DynamicDocMgmt/DynamicDocuments" + FilterByName("CADName", name));
}

VersionEntry SearchFolderByCadName(ServerContext& server, const std::string& cadName,
                                   const std::string& resource) {
  const FailureStep step("search by name");
  // Unlike in the searches above the whole filter is escaped here, blanks and apostrophes included: the
  // service that answers for folders wants it so, and the name is not escaped twice.
  const std::string path = "servlet/odata/v4/DataAdmin/" + resource +
                           "/FolderContents/ZVK.DynamicDocMgmt.DynamicDocument?$filter=" +
                           EscapeForUrl("CADName eq '" + cadName + "'") +
                           "&$orderby=Version desc&$select=CADName,ID,Version&$top=1";
  VersionEntry found;
  VisitODataPages(server, path, [&](const rapidjson::Value& rows) {
    for (const auto& row : rows.GetArray()) {
      const rapidjson::Value* id = FindString(row, "ID");
      const rapidjson::Value* version = FindString(row, "Version");
      if (id == nullptr || version == nullptr) continue;
      found = {std::string(TextView(*id)), std::string(TextView(*version))};
      return false;
    }
    return true;
  });
  return found;
}

}  // namespace lxservices::cms_interface::vantry
