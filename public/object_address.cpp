#include "public/object_address.h"

#include "base/settings.h"
#include "public/address_text.h"
#include "public/server_table.h"

namespace lxservices::cms_interface {

std::string UidOfInfo(FileServer& server, const FileInfo& info, std::string_view extra) {
  return MakeUid(server.GetServerKey(), info.id, info.cadName, extra);
}

std::string UidOfId(FileServer& server, const std::string& id) {
  FileInfo info;
  if (server.GetFileInfo(id.c_str(), info) != Ok) return {};
  return UidOfInfo(server, info);
}

std::string VfsPathOf(const std::shared_ptr<FileServer>& server, const ServerTable& table,
                      const std::string& relativePath) {
  if (server == nullptr) return {};
  return CurrentSettings()->vfsScheme + "://" + FindNicknameOf(table, server) + "/" + relativePath;
}

}  // namespace lxservices::cms_interface
