#include <string>

#include "base/failure_trace.h"
#include "public/path_resolution.h"
#include "public/vt_direct_manager.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

/// What OpenDir hands out.
struct DirHandleData {
  DirLister lister;
};

/// What a WalkedDir shares.
struct WalkedDirData {
  std::shared_ptr<WalkedDirectory> directory;
};

namespace {

// The bits are the same ones, and what a host sets beyond them is the server's to pass over.
FileServer::ReadDirFlags ServerFlags(ReadDirFlags flags) {
  return static_cast<FileServer::ReadDirFlags>(flags);
}

// An entry as a host sees it, without its id. Refers to itself, and so stays where it is.
struct HostEntry {
  explicit HostEntry(const DirEntryInfoExt& info) {
    if (info.details != nullptr) details = {info.details->number, info.details->name, info.details->reserved};
    entry = {info.name, info.isDirectory, info.details != nullptr ? &details : nullptr, info.versions,
             info.versionIds};
  }
  HostEntry(const HostEntry&) = delete;
  HostEntry& operator=(const HostEntry&) = delete;

  DirEntryDetails details{};
  DirEntryExt entry{};
};

DirEntryCallback ForwardEntries(void (*callback)(DirEntryExt& entry, void* user), void* user) {
  return [callback, user](const DirEntryInfoExt& info) {
    HostEntry host(info);
    callback(host.entry, user);
  };
}

bool ReportListing(const FailureMark& mark, const char* path, bool listed) {
  if (!listed)
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Miss, "Failed to read dir %s\n", path);
  return listed;
}

// A plain function of the library, so that a handle is destroyed where it was made.
void CloseDir(DirHandleData* handle) {
  delete handle;
}

bool IsObject(FileServer& server, const std::string& id) {
  FileInfo info;
  return !id.empty() && server.GetFileInfo(id.c_str(), info) == Ok;
}

// After the last "/", still escaped.
std::string LastSegment(const std::string& relativePath) {
  const auto slash = relativePath.rfind('/');
  return slash != std::string::npos ? relativePath.substr(slash + 1) : relativePath;
}

}  // namespace

bool ReadDir(const char* path, void (*callback)(const char* name, bool isFolder, void* user), void* user) {
  const FailureStep step("list the directory");
  const FailureMark mark;
  const PathTarget target = ResolveTarget(path, {}, 0);
  if (target.server == nullptr) return false;
  const auto forward = [callback, user](const char* name, const char*, bool isFolder) {
    callback(name, isFolder, user);
  };
  return ReportListing(mark, path, target.server->ReadDir(target.relativePath.c_str(), forward));
}

bool ReadDirExt(const char* path, void (*callback)(DirEntryExt& entry, void* user), void* user,
                ReadDirFlags flags) {
  const FailureStep step("list the directory");
  const FailureMark mark;
  const PathTarget target = ResolveTarget(path, {}, 0);
  if (target.server == nullptr) return false;
  return ReportListing(mark, path,
                       target.server->ReadDirExt(target.relativePath.c_str(), ForwardEntries(callback, user),
                                                 ServerFlags(flags)));
}

DirHandle OpenDir(const char* path) {
  const FailureStep step("open the directory");
  const FailureMark mark;
  DirHandle handle(nullptr, CloseDir);
  const PathTarget target = ResolveTarget(path, {}, ResolveQuiet);
  if (target.server == nullptr) return handle;
  DirLister lister = target.server->OpenDir(target.relativePath.c_str());
  if (!lister) ReportReason(FollowsOr(mark, FailureKind::NotFound));
  if (lister) handle.reset(new DirHandleData{std::move(lister)});
  return handle;
}

bool ReadDir(const DirHandle& handle, void (*callback)(DirEntryExt& entry, void* user), void* user,
             ReadDirFlags flags) {
  const FailureStep step("list the directory");
  const FailureMark mark;
  // A copy: the callback may close the handle, and the listing goes on to its end.
  const DirLister lister = handle != nullptr ? handle->lister : DirLister();
  const bool listed = lister && lister(ForwardEntries(callback, user), ServerFlags(flags));
  if (!listed) ReportReason(FollowsOr(mark, FailureKind::NotFound));
  return listed;
}

WalkedDir OpenWalk(const char* path) {
  const FailureStep step("open the directory");
  const FailureMark mark;
  const PathTarget target = ResolveTarget(path, {}, ResolveQuiet);
  if (target.server == nullptr) return nullptr;
  auto directory = target.server->OpenWalk(target.relativePath.c_str());
  if (directory == nullptr) ReportReason(FollowsOr(mark, FailureKind::NotFound));
  if (directory == nullptr) return nullptr;
  return std::make_shared<const WalkedDirData>(WalkedDirData{std::move(directory)});
}

bool ReadWalkedDir(const WalkedDir& directory,
                   void (*callback)(DirEntryExt& entry, const WalkedDir& folder, void* user), void* user,
                   ReadDirFlags flags) {
  const FailureStep step("list the directory");
  const FailureMark mark;
  const WalkCallback forward = [callback, user](const DirEntryInfoExt& info,
                                                const std::shared_ptr<WalkedDirectory>& folder) {
    HostEntry host(info);
    WalkedDir shared;
    if (folder != nullptr) shared = std::make_shared<const WalkedDirData>(WalkedDirData{folder});
    callback(host.entry, shared, user);
  };
  // A copy: the callback may let the directory go, and the listing goes on to its end.
  const WalkedDir kept = directory;
  const bool listed = kept != nullptr && kept->directory->List(forward, ServerFlags(flags));
  if (!listed) ReportReason(FollowsOr(mark, FailureKind::NotFound));
  return listed;
}

bool FileOrFolderExists(const char* path) {
  const FailureStep step("find the file or folder");
  const PathTarget target = ResolveTarget(path, {}, ResolveQuiet);
  if (target.server == nullptr) return false;
  if (IsObject(*target.server, IdOfTarget(target))) return true;
  return static_cast<bool>(target.server->OpenDir(target.relativePath.c_str()));
}

bool FileNameAvailable(const char* path) {
  const FailureStep step("look whether the name is free");
  const PathTarget target = ResolveTarget(path, {}, ResolveQuiet);
  if (target.server == nullptr) return false;
  const FailureAside aside;  // that nothing is found is what a free name needs
  // An id whose object cannot be read counts as no object.
  if (IsObject(*target.server, IdOfTarget(target))) return false;
  auto* server = dynamic_cast<vantry::VantryFileServer*>(target.server.get());
  if (server == nullptr) return true;
  if (target.relativePath.find('?') != std::string::npos) return false;
  // Such a server has one space of CAD names for all its folders: a name that is taken anywhere is taken.
  return server->UIDFromVantryCadName(LastSegment(target.relativePath).c_str()).empty();
}

}  // namespace VtDirectManager
