#pragma once

#include <string>
#include <vector>

#include "browsing/document_query.h"
#include "connection/server_context.h"

/// Searches of the OData services for documents by their name. Each makes one GET a page, on this thread, and
/// traces nothing; a page that fails ends the search, and what was found before it stays found.
namespace lxservices::cms_interface::vantry {

/// A document as a search of the OData services found it.
struct DocCandidate {
  std::string id;
  std::string version;      ///< in the form of VersionText
  bool checkedOut = false;  ///< by anybody
};

/// The newest version of each CAD document with a file name, over the whole server.
[[nodiscard]] std::vector<DocCandidate> SearchCadDocuments(ServerContext& server, const std::string& name);

/// The newest version of each dynamic document with a CAD name, over the whole server.
[[nodiscard]] std::vector<DocCandidate> SearchDynamicDocumentsV2(ServerContext& server,
                                                                 const std::string& name);

/// Every version of the dynamic documents with a CAD name, newest first: the first version of that service
/// cannot be asked for the newest alone.
[[nodiscard]] std::vector<DocCandidate> SearchDynamicDocumentsV1(ServerContext& server,
                                                                 const std::string& name);

/// The newest version of a dynamic document in one folder.
/// @param resource  the folder as ResolveFolderResource gives it
/// @return id and version; both empty when there is none
[[nodiscard]] VersionEntry SearchFolderByCadName(ServerContext& server, const std::string& cadName,
                                                 const std::string& resource);

}  // namespace lxservices::cms_interface::vantry
