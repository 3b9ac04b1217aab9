#include "hosts/cli/many/put_places.h"

#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <map>

#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/files/name_for_server.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/work_folder/parallel.h"
#include "hosts/cli/work_folder/remote_tree.h"

namespace vtdirect_cli {
namespace {

// Whether a name is one of those that get gives to the second of two things of one name.
[[nodiscard]] bool HasAddition(const std::string& name) {
  return name.find("%(") != std::string::npos;
}

class Search {
 public:
  Search(std::string directory, const LocalTree& tree, std::string address, Effort effort)
      : directory_(std::move(directory)), tree_(tree), address_(std::move(address)), effort_(effort) {}

  [[nodiscard]] PutPlaces Run() {
    if (tree_.files.empty()) return {};
    static_cast<void>(VtDirectManager::GetLinkContext(address_.c_str(), server_));
    std::vector<RemoteFolder> level{{"", address_}};
    while (!level.empty()) level = TakeLevel(level);
    for (const std::string& file : tree_.files) Place(file);
    LeaveOutWhatMeets();
    return std::move(found_);
  }

 private:
  // Each folder by itself, so that each failure is that of a folder.
  [[nodiscard]] std::vector<RemoteFolder> TakeLevel(const std::vector<RemoteFolder>& level) {
    std::vector<RemoteLevel> listed(level.size());
    RunInParallel(level.size(), effort_.threads, [&](std::size_t number) {
      listed[number] = ReadRemoteLevel(server_, {level[number]}, {1, effort_.retries});
    });
    std::vector<RemoteFolder> next;
    for (std::size_t number = 0; number < level.size(); ++number) {
      if (!listed[number].tree.Knows(level[number].path)) {
        AddNotListed(level[number], listed[number].tree);
        continue;
      }
      for (RemoteFolder& below : TakeFolder(level[number], listed[number])) next.push_back(std::move(below));
    }
    return next;
  }

  // Gives the folders in it that files go to.
  [[nodiscard]] std::vector<RemoteFolder> TakeFolder(const RemoteFolder& folder, const RemoteLevel& listed) {
    addresses_[folder.path] = folder.address;
    for (const auto& [path, document] : listed.tree.documents) {
      documents_[path] = document;
      ++namesakes_[document.address];
    }
    std::vector<RemoteFolder> below;
    for (const std::string& wanted : FoldersIn(folder.path)) {
      const auto there = std::find_if(listed.below.begin(), listed.below.end(),
                                      [&wanted](const RemoteFolder& one) { return one.path == wanted; });
      if (there == listed.below.end()) {
        AddMissing(wanted, folder.address);
      } else {
        below.push_back(*there);
      }
    }
    return below;
  }

  [[nodiscard]] std::vector<std::string> FoldersIn(const std::string& folder) const {
    std::vector<std::string> folders;
    for (auto at = tree_.folders.upper_bound(folder); at != tree_.folders.end() && at->starts_with(folder);
         ++at) {
      if (at->find('/', folder.size()) + 1 == at->size()) folders.push_back(*at);
    }
    return folders;
  }

  // "2 files of bike/Frame/ are not sent"
  [[nodiscard]] std::string NotSent(const std::string& folder) const {
    const auto count = std::count_if(tree_.files.begin(), tree_.files.end(),
                                     [&folder](const std::string& file) { return file.starts_with(folder); });
    return std::to_string(count) + (count == 1 ? " file of " : " files of ") + LocalPath(folder) +
           (count == 1 ? " is not sent" : " are not sent");
  }

  void AddNotListed(const RemoteFolder& folder, const RemoteTree& tree) {
    Failure failure = tree.failures.empty()
                          ? Failure{ExitCode::Incomplete, "cannot list " + Printable(folder.address)}
                          : tree.failures.front();
    failure.message += "; " + NotSent(folder.path);
    found_.failures.push_back(std::move(failure));
  }

  void AddMissing(const std::string& folder, const std::string& above) {
    const std::string name = folder.substr(FolderPartOf(folder.substr(0, folder.size() - 1)).size());
    const std::string path = above + NameForServer(name.substr(0, name.size() - 1)) + "/";
    found_.failures.push_back(
        {ExitCode::NotFound, "there is no folder " + Printable(path) + "; " + NotSent(folder),
         "vtdirect makes no folders: make it on the server's page, to which " +
             CommandToType("browse-url", above) + " leads, and give the same command again"});
  }

  [[nodiscard]] std::string LocalPath(const std::string& path) const {
    return Printable(PathBelow(directory_, path));
  }

  void Place(const std::string& file) {
    const std::string folder = FolderPartOf(file);
    const auto address = addresses_.find(folder);
    if (address == addresses_.end()) return;  // told with its folder
    const auto document = documents_.find(file);
    const std::string name = file.substr(folder.size());
    if (document != documents_.end()) {
      PlaceAtDocument(file, document->second);
    } else if (HasAddition(name)) {
      found_.failures.push_back({ExitCode::NotFound,
                                 LocalPath(file) +
                                     " is called as get calls one of several documents of one name, and " +
                                     Printable(address->second) + " has no such document; it is not sent",
                                 "put it at the address of the document that is meant"});
    } else {
      found_.places.push_back({PathBelow(directory_, file), address->second + NameForServer(name)});
    }
  }

  // The path of several documents leads to none of them.
  void PlaceAtDocument(const std::string& file, const RemoteDocument& document) {
    const bool isOne = namesakes_[document.address] == 1;
    if (!isOne && document.uid.empty()) {
      found_.failures.push_back({ExitCode::Failure,
                                 "there are several documents " + Printable(document.address) +
                                     ", and the server does not tell which is which; " + LocalPath(file) +
                                     " is not sent",
                                 "put it at the UID of the document that is meant"});
      return;
    }
    found_.places.push_back({PathBelow(directory_, file), isOne ? document.address : document.uid});
  }

  // Which of two files a document is to have, nobody can tell.
  void LeaveOutWhatMeets() {
    std::map<std::string, int> counts;
    for (const PutPlace& place : found_.places) ++counts[place.address];
    std::erase_if(found_.places, [&](const PutPlace& place) {
      if (counts[place.address] == 1) return false;
      found_.failures.push_back({ExitCode::LocalFile,
                                 Printable(place.file) + " and another file would become one document, " +
                                     Printable(place.address) + "; it is not sent",
                                 "rename one of them"});
      return true;
    });
  }

  std::string directory_;
  const LocalTree& tree_;
  std::string address_;
  Effort effort_;
  std::string server_;
  std::map<std::string, std::string> addresses_;  // of the folders that were listed, by their paths
  std::map<std::string, RemoteDocument> documents_;
  std::map<std::string, int> namesakes_;  // how many documents have an address
  PutPlaces found_;
};

}  // namespace

PutPlaces FindPutPlaces(const std::string& directory, const LocalTree& tree, const std::string& address,
                        Effort effort) {
  return Search(directory, tree, address, effort).Run();
}

}  // namespace vtdirect_cli
