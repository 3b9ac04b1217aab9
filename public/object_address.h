#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "public/manager_state.h"
#include "server/file_server.h"

/// Addresses of objects on a server.
namespace lxservices::cms_interface {

/// The UID of a read object. No request.
/// @param extra  further parameters; empty for none
[[nodiscard]] std::string UidOfInfo(FileServer& server, const FileInfo& info, std::string_view extra = {});

/// Reads an object and gives its UID; the empty text when that fails. One request.
[[nodiscard]] std::string UidOfId(FileServer& server, const std::string& id);

/// The VFS path of a relative path; the empty text for an empty pointer. No request.
/// @param table  the list that names the server
[[nodiscard]] std::string VfsPathOf(const std::shared_ptr<FileServer>& server, const ServerTable& table,
                                    const std::string& relativePath);

}  // namespace lxservices::cms_interface
