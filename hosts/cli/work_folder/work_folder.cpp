#include "hosts/cli/work_folder/work_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/work_folder/local_files.h"

namespace vtdirect_cli {
namespace {

constexpr const char* outsideText = "the current directory is not in a work folder";
constexpr const char* outsideAdvice = "vtdirect clone makes one of a folder on a server";

[[nodiscard]] std::string DatabaseIn(const std::string& root) {
  return root + "/.vtdirect/files.db";
}

[[nodiscard]] bool IsThere(const std::string& path) {
  struct stat facts = {};
  return lstat(path.c_str(), &facts) == 0;
}

[[nodiscard]] std::string CurrentDirectory() {
  std::error_code error;
  const auto path = std::filesystem::current_path(error);
  return error ? "" : path.string();
}

[[nodiscard]] std::string ServerOf(const std::string& address) {
  std::string server;
  static_cast<void>(VtDirectManager::GetLinkContext(address.c_str(), server));
  return server;
}

void EmptyDirectory(const std::string& directory) {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(directory, error)) {
    std::error_code ignored;
    std::filesystem::remove(entry.path(), ignored);
  }
}

[[nodiscard]] Failure LocalFailure(const std::string& what, int error) {
  return {ExitCode::LocalFile, what + ": " + std::strerror(error)};
}

// The path of the server's folder that a directory below the root was made for. The steps of a name on the disk may be
// other ones than on the server, so they are taken from a file that lies below.
[[nodiscard]] std::optional<std::string> FolderBehind(FileStore& store, const std::string& path) {
  if (path.empty()) return store.address();
  const auto files = store.Files();
  if (!files) return std::nullopt;
  const auto below = files->lower_bound(path + "/");
  if (below == files->end() || !below->first.starts_with(path + "/")) return std::nullopt;
  std::string address = below->second.address;
  const auto steps =
      std::count(below->first.begin() + static_cast<std::ptrdiff_t>(path.size()), below->first.end(), '/');
  for (auto step = steps; step > 0; --step) address.resize(address.find_last_of('/', address.size() - 2));
  return address + "/";
}

// The path on the server for a text that is no address and names a directory of the work folder.
[[nodiscard]] std::optional<std::string> AddressOfWorkDirectory(const std::string& text) {
  if (text.empty() || text.starts_with("//") || VtDirectManager::IsManaged(text.c_str())) return std::nullopt;
  std::error_code error;
  const std::string whole = std::filesystem::canonical(text, error).string();
  if (error || !std::filesystem::is_directory(whole, error)) return std::nullopt;
  const std::string root = WorkFolder::RootAbove(CurrentDirectory());
  if (root.empty() || (whole != root && !whole.starts_with(root + "/"))) return std::nullopt;
  const auto opened = WorkFolder::OpenHere();
  if (!opened) return std::nullopt;
  return FolderBehind((*opened)->store(), whole == root ? "" : whole.substr(root.size() + 1));
}

// What is kept of the server's URL is without "http" or "https".
[[nodiscard]] Failure NotListed(const FileStore& store) {
  const std::string nickname = store.address().substr(2, store.address().find('/', 2) - 2);
  const std::size_t host = store.server().find("://");
  const std::string kept = host == std::string::npos ? "" : store.server().substr(host + 3);
  return {ExitCode::ServerNotListed,
          "the server of this work folder, " + Printable(store.address()) + ", is not in the list of servers",
          "list it in the configuration file, or by --server " + Printable(nickname) +
              "=URL; its URL is https://" + Printable(kept) + ", or the same with http"};
}

}  // namespace

Failure StoreFailure(const std::string& fault) {
  return {ExitCode::LocalFile, "what is kept of the work folder can't be read or written: " + fault};
}

Failure AlreadyMade(const std::string& directory) {
  return {ExitCode::LocalFile, Printable(directory) + " is a work folder already",
          "vtdirect pull in it fetches what is missing"};
}

std::string WorkFolder::RootAbove(const std::string& directory) {
  for (std::filesystem::path at(directory); !at.empty(); at = at.parent_path()) {
    if (IsThere(DatabaseIn(at.string()))) return at.string();
    if (at == at.root_path()) break;
  }
  return {};
}

bool WorkFolder::IsMade(const std::string& directory) {
  return IsThere(DatabaseIn(directory)) && FileStore::Open(DatabaseIn(directory)).store != nullptr;
}

Result<std::unique_ptr<WorkFolder>> WorkFolder::OpenHere() {
  const std::string root = RootAbove(CurrentDirectory());
  if (root.empty()) return Failure{ExitCode::Usage, outsideText, outsideAdvice};
  auto [store, fault] = FileStore::Open(DatabaseIn(root));
  if (!store) return StoreFailure(fault);
  const std::string server = ServerOf(store->address());
  if (server.empty()) {
    return NotListed(*store);
  }
  if (server != store->server()) {
    return Failure{ExitCode::Usage,
                   "the files of this work folder come from " + store->server() + ", and " +
                       store->address() + " leads to " + server + " now; nothing was done",
                   "list that server by this nickname again"};
  }
  std::unique_ptr<WorkFolder> folder(new WorkFolder(root, std::move(store)));
  const std::string here = CurrentDirectory();
  if (here != root) folder->here_ = here.substr(root.size() + 1);
  return folder;
}

Result<std::unique_ptr<WorkFolder>> WorkFolder::Create(const std::string& directory,
                                                       const std::string& address) {
  std::error_code error;
  const std::string root = std::filesystem::canonical(directory, error).string();
  if (error) return LocalFailure("cannot open " + directory, error.value());
  if (const int code = MakeDirectories(root + "/.vtdirect/incoming"); code != 0) {
    return LocalFailure("cannot write in " + directory, code);
  }
  std::unique_ptr<WorkFolder> folder(new WorkFolder(root, nullptr));
  if (const auto locked = folder->TakeLock()) return *locked;
  // Another process may have made it one since its directory was looked at, of another folder perhaps.
  if (IsMade(root)) return AlreadyMade(directory);
  auto [store, fault] = FileStore::Create(DatabaseIn(root), address, ServerOf(address));
  if (!store) return StoreFailure(fault);
  folder->store_ = std::move(store);
  EmptyDirectory(folder->incoming());
  return folder;
}

WorkFolder::~WorkFolder() {
  if (lock_ >= 0) close(lock_);
}

std::optional<Failure> WorkFolder::Lock() {
  if (auto locked = TakeLock()) return locked;
  if (const int code = MakeDirectories(incoming()); code != 0) {
    return LocalFailure("cannot write in " + root_, code);
  }
  EmptyDirectory(incoming());
  SettleAnnouncements();
  return std::nullopt;
}

std::optional<Failure> WorkFolder::TakeLock() {
  if (lock_ >= 0) return std::nullopt;
  const std::string file = root_ + "/.vtdirect/lock";
  lock_ = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (lock_ < 0) return LocalFailure("cannot write " + file, errno);
  if (flock(lock_, LOCK_EX | LOCK_NB) != 0) {
    close(lock_);
    lock_ = -1;
    return Failure{ExitCode::Failure, "another vtdirect is at work in this work folder; nothing was done",
                   "the same command can be given again when it has ended"};
  }
  return std::nullopt;
}

// Killed between the two, a process has put a file in its place and not kept that it did.
void WorkFolder::SettleAnnouncements() {
  for (FolderFile& file : store_->Announced()) {
    const LocalFacts facts = FactsOf(OnDisk(file.path));
    if (HasBytesOf(OnDisk(file.path), facts, file)) {
      if (file.time != facts.time) file.time = TimeToKeep(facts.time, facts.seen);
      static_cast<void>(store_->Keep(file));
    } else {
      static_cast<void>(store_->Withdraw(file.path));
    }
  }
}

std::string WorkFolder::PathOf(const std::string& name) const {
  std::error_code error;
  const std::filesystem::path given(name);
  // The last step may be a link, which is meant itself.
  const auto parent = std::filesystem::weakly_canonical(
      given.is_absolute() ? given.parent_path() : CurrentDirectory() / given.parent_path(), error);
  if (error) return {};
  const std::string whole = (parent / given.filename()).string();
  if (!whole.starts_with(root_ + "/")) return {};
  return whole.substr(root_.size() + 1);
}

std::string WorkFolder::Shown(const std::string& path) const {
  return here_.empty() ? path : std::filesystem::path(path).lexically_relative(here_).string();
}

std::string AddressOfWorkFolderHere() {
  const std::string root = WorkFolder::RootAbove(CurrentDirectory());
  if (root.empty()) return {};
  const auto opening = FileStore::Open(DatabaseIn(root));
  return opening.store ? opening.store->address() : "";
}

std::optional<FolderFile> FindWorkFile(const std::string& text) {
  if (text.starts_with("//") || VtDirectManager::IsManaged(text.c_str())) return std::nullopt;
  if (WorkFolder::RootAbove(CurrentDirectory()).empty()) return std::nullopt;
  const auto opened = WorkFolder::OpenHere();
  if (!opened) return std::nullopt;
  WorkFolder& folder = **opened;
  const auto files = folder.store().Files();
  if (!files) return std::nullopt;
  const auto file = files->find(folder.PathOf(text));
  if (file == files->end()) return std::nullopt;
  return file->second;
}

std::optional<std::string> UidOfWorkFile(const std::string& text) {
  const auto file = FindWorkFile(text);
  return file ? std::optional(file->uid) : std::nullopt;
}

std::string AddressOfWorkName(const std::string& text) {
  if (const auto uid = UidOfWorkFile(text)) return *uid;
  const auto folder = AddressOfWorkDirectory(text);
  return folder ? *folder : text;
}

bool IsPlaceOfWorkFile(const std::string& path) {
  std::error_code error;
  const auto whole = std::filesystem::absolute(path, error);
  const auto directory = std::filesystem::weakly_canonical(whole.parent_path(), error);
  const std::string root = error ? "" : WorkFolder::RootAbove(directory.string());
  if (root.empty()) return false;
  const auto opening = FileStore::Open(DatabaseIn(root));
  const auto files = opening.store ? opening.store->Files() : std::nullopt;
  return files && files->contains((directory / whole.filename()).string().substr(root.size() + 1));
}

}  // namespace vtdirect_cli
