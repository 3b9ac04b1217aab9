#pragma once

#include <string>

#include "browsing/context_kind.h"
#include "browsing/contexts.h"
#include "browsing/dir_entry.h"
#include "browsing/walked_directory.h"
#include "connection/rest_stream.h"
#include "connection/server_context.h"

/// Folders by the publishing gateway, which lists one folder by its path and gives folders and files in one
/// list. Makes requests on this thread; nothing is cached or traced.
namespace lxservices::cms_interface::vantry {

/// A folder as the gateway is asked for it.
struct GatewayFolder {
  std::string contextName;
  ContextKind kind = ContextKind::None;
  std::string path;  ///< as the tree holds it; may be empty
};

/// Lists a folder: one GET to find its context and one for the folder.
/// @return false when the context is not known or the gateway refused; a broken answer lists nothing and
///         counts as success
[[nodiscard]] bool ListGatewayFolder(ServerContext& server, const GatewayFolder& folder,
                                     const DirEntryCallback& callback, ReadDirFlags flags);

/// Fetches a folder's listing now, by the two GETs of ListGatewayFolder, and gives a lister that delivers it
/// as often as it is called, without a further request, and on any number of threads at once. It holds the
/// answer as it came: up to half a megabyte in memory, more in a temporary file that goes with the lister.
/// @return empty when the context is not known or the gateway refused
[[nodiscard]] DirLister OpenGatewayFolder(ServerContext& server, const GatewayFolder& folder);

/// The same for a context that is known: one GET.
/// @param folderPath  as the tree holds it; may be empty
[[nodiscard]] ListingAnswer ListGatewayFolder(ServerContext& server, const ContextRecord& context,
                                              const std::string& folderPath, const DirEntryCallback& callback,
                                              ReadDirFlags flags);
[[nodiscard]] DirLister OpenGatewayFolder(ServerContext& server, const ContextRecord& context,
                                          const std::string& folderPath);

/// Delivers the gateway's answer: directories and files in its order, as far as `flags` asks for them. Reads
/// the body, which can be done once. Sends nothing.
/// @return whether the HTTP status was in 200 to 299
[[nodiscard]] bool ReadGatewayListing(RestStream& stream, const DirEntryCallback& callback,
                                      ReadDirFlags flags);

}  // namespace lxservices::cms_interface::vantry
