#pragma once

#include <string>

#include "browsing/dir_entry.h"
#include "browsing/walked_directory.h"
#include "connection/server_context.h"

/// The contents of one folder by OData. Makes one GET a page, on this thread; nothing is cached or traced.
///
/// What was delivered before a failure stays delivered, and the result is then false. Nothing but the
/// server's last page ends a listing: one whose next link leads back to its own page goes on until the host's
/// callback throws or the transport's limits end it.
/// @param resource  the folder, as ResolveFolderResource gives it
namespace lxservices::cms_interface::vantry {

/// Delivers sub-folders, then dynamic documents, then CAD documents, the latter two as the settings turn them
/// on. Takes no notice of what kind of entry was asked for; the callers filter.
[[nodiscard]] bool ListODataFolder(ServerContext& server, const std::string& resource,
                                   const DirEntryCallback& callback, bool details);

/// ListODataFolder for a server with version 5 of the service, which also knows a document's versions.
[[nodiscard]] bool ListODataFolderV5(ServerContext& server, const std::string& resource,
                                     const DirEntryCallback& callback, bool details, bool versions);

/// Delivers the documents of a folder for a walk: dynamic ones, then CAD documents, as the settings turn them
/// on and the server's version of the service gives them.
/// @param flags  whether details and versions are wanted
/// @return NotThere when the first page of either was answered so
[[nodiscard]] ListingAnswer ListDocumentsOfFolder(ServerContext& server, const std::string& resource,
                                                  const DirEntryCallback& callback, ReadDirFlags flags);

/// Delivers the folders in a folder: names as the server has them, empty ids.
[[nodiscard]] bool ListSubfolders(ServerContext& server, const std::string& resource,
                                  const DirEntryCallback& callback);

/// Delivers the dynamic documents in a folder. Without details they come in no order, so that several
/// versions of one document may come apart.
[[nodiscard]] bool ListDynamicDocuments(ServerContext& server, const std::string& resource,
                                        const DirEntryCallback& callback, bool details);

/// ListDynamicDocuments for a server with version 5 of the service.
[[nodiscard]] bool ListDynamicDocumentsV5(ServerContext& server, const std::string& resource,
                                          const DirEntryCallback& callback, bool details, bool versions);

/// Delivers the CAD documents in a folder.
[[nodiscard]] bool ListCadDocuments(ServerContext& server, const std::string& resource,
                                    const DirEntryCallback& callback, bool details, bool versions);

}  // namespace lxservices::cms_interface::vantry
