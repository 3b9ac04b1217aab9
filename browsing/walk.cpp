#include "browsing/walk.h"

#include <optional>
#include <string>
#include <utility>

#include "base/failure_step.h"
#include "browsing/contexts.h"
#include "browsing/directory_listing.h"
#include "browsing/folder_tree.h"
#include "browsing/gateway_listing.h"
#include "browsing/vfs_tree.h"
#include "browsing/walked_folder.h"

namespace lxservices::cms_interface {

bool WalkedDirectory::List(const WalkCallback& callback, ReadDirFlags flags) {
  const ListingAnswer answer = ListAsFound(callback, flags);
  if (answer != ListingAnswer::NotThere) return answer == ListingAnswer::Whole;
  const auto again = FindAnew();
  return again != nullptr && again->ListAsFound(callback, flags) == ListingAnswer::Whole;
}

namespace vantry {
namespace {

// The path with its closing "/", to which the name of an entry is appended.
std::string PathBefore(const ParsedVfsPath& path) {
  std::string before;
  for (const std::string* step : {&path.root, &path.context, &path.section}) {
    if (!step->empty()) before += *step + "/";
  }
  before += path.folderPath;
  if (!path.folderPath.empty() && !path.folderPath.ends_with('/')) before += "/";
  return before;
}

bool IsOfFolders(const ParsedVfsPath& path) {
  return path.kind != ContextKind::None && !path.context.empty() && !path.section.empty() &&
         IsVfsName(path.section, VfsNameId::Folders);
}

// A level that a lister delivers, and whose directories are looked up by their paths.
class WalkedLevel final : public WalkedDirectory {
 public:
  WalkedLevel(const ServerContext& server, DirLister lister, std::string path)
      : server_(server), lister_(std::move(lister)), path_(std::move(path)) {}

  ListingAnswer ListAsFound(const WalkCallback& callback, ReadDirFlags flags) override {
    const auto deliver = [&](const DirEntryInfoExt& entry) {
      const std::string path = path_ + entry.name + "/";
      callback(entry, entry.isDirectory ? WalkedByPath(server_, path) : nullptr);
    };
    return lister_(deliver, flags) ? ListingAnswer::Whole : ListingAnswer::Broken;
  }

 private:
  const ServerContext server_;
  const DirLister lister_;
  const std::string path_;
};

// What all folders of a walk by the gateway have in common.
struct GatewayWalk {
  ServerContext server;
  ContextRecord context;
  std::string above;  ///< the path up to the folders of the context, with its closing "/"
};

class WalkedGatewayFolder final : public WalkedDirectory {
 public:
  /// @param lister  of an answer that is there already; may be empty
  WalkedGatewayFolder(std::shared_ptr<const GatewayWalk> walk, std::string folderPath, DirLister lister)
      : walk_(std::move(walk)), folderPath_(std::move(folderPath)), lister_(std::move(lister)) {}

  ListingAnswer ListAsFound(const WalkCallback& callback, ReadDirFlags flags) override {
    const auto deliver = [&](const DirEntryInfoExt& entry) {
      callback(entry, entry.isDirectory ? Below(entry.name) : nullptr);
    };
    if (lister_) return lister_(deliver, flags) ? ListingAnswer::Whole : ListingAnswer::Broken;
    ServerContext now = walk_->server.NextOperation();
    return ListGatewayFolder(now, walk_->context, folderPath_, deliver, flags);
  }

 protected:
  std::shared_ptr<WalkedDirectory> FindAnew() override {
    ServerContext now = walk_->server.NextOperation();
    return OpenWalk(now, walk_->above + folderPath_);
  }

 private:
  [[nodiscard]] std::shared_ptr<WalkedDirectory> Below(const char* name) const {
    const bool isOpen = !folderPath_.empty() && !folderPath_.ends_with('/');
    std::string path = folderPath_ + (isOpen ? "/" : "") + name + "/";
    return std::make_shared<WalkedGatewayFolder>(walk_, std::move(path), DirLister());
  }

  const std::shared_ptr<const GatewayWalk> walk_;
  const std::string folderPath_;
  const DirLister lister_;
};

std::shared_ptr<WalkedDirectory> OpenByGateway(ServerContext& server, const ParsedVfsPath& path) {
  const FailureStep step("list the folder");
  const auto context = FindContext(server, path.kind, path.context);
  if (!context) return nullptr;
  DirLister lister = OpenGatewayFolder(server, *context, path.folderPath);
  if (!lister) return nullptr;
  auto walk = std::make_shared<const GatewayWalk>(
      GatewayWalk{server, *context, path.root + "/" + path.context + "/" + path.section + "/"});
  return std::make_shared<WalkedGatewayFolder>(std::move(walk), path.folderPath, std::move(lister));
}

// The same choice as of every listing: by OData where the folder is found there, else by the gateway.
std::shared_ptr<WalkedDirectory> OpenFolder(ServerContext& server, const ParsedVfsPath& path) {
  if (!ForceLegacyFileBrowse() && server.Services().folderContents) {
    const std::string_view type = ODataTypeOf(path.kind);
    if (type.empty()) return nullptr;
    std::string resource = ResolveFolderResource(server, path.context, type, path.folderPath);
    if (!resource.empty()) return BeginWalkAtFolder(server, PathBefore(path), std::move(resource));
  }
  return OpenByGateway(server, path);
}

}  // namespace

std::shared_ptr<WalkedDirectory> OpenWalk(ServerContext& server, std::string_view path) {
  const FailureStep step("open the directory");
  const ParsedVfsPath parsed = SplitDirectoryPath(path);
  if (IsOfFolders(parsed)) return OpenFolder(server, parsed);
  DirLister lister = OpenDirectory(server, path);
  if (!lister) return nullptr;
  return std::make_shared<WalkedLevel>(server, std::move(lister), PathBefore(parsed));
}

}  // namespace vantry
}  // namespace lxservices::cms_interface
