#include "browsing/walked_folder.h"

#include <atomic>
#include <optional>
#include <utility>
#include <vector>

#include "base/failure_step.h"
#include "browsing/folder_contents.h"
#include "browsing/walk.h"
#include "connection/json_members.h"
#include "connection/odata_page_reader.h"

namespace lxservices::cms_interface::vantry {
namespace {

struct FolderName {
  std::string id;  // empty when the server did not tell it
  std::string name;
};

// The names of the folders in a folder; nothing when they are not known.
using KnownFolders = std::optional<std::vector<FolderName>>;

// What all folders of one walk have in common.
struct WalkState {
  explicit WalkState(const ServerContext& context) : server(context) {}
  const ServerContext server;
  std::atomic<bool> asksLevelByLevel = false;  // the server refuses two levels in one answer
};

std::optional<FolderName> NameOf(const rapidjson::Value& row) {
  const rapidjson::Value* name = FindString(row, "Name");
  if (name == nullptr) return std::nullopt;
  const rapidjson::Value* id = FindString(row, "ID");
  // Up to a zero byte, as every listing delivers a name.
  return FolderName{id != nullptr ? std::string(TextView(*id)) : std::string(), name->GetString()};
}

// A server may give long lists in an answer in parts; then not all are known.
KnownFolders FoldersTold(const rapidjson::Value& row) {
  const rapidjson::Value* folders = FindArray(row, "Folders");
  if (folders == nullptr || FindMember(row, "Folders@odata.nextLink") != nullptr) return std::nullopt;
  std::vector<FolderName> names;
  for (const auto& folder : folders->GetArray()) {
    if (auto name = NameOf(folder)) names.push_back(std::move(*name));
  }
  return names;
}

// Refused is not missing: some servers take no list with another one in its rows.
bool RefusesTheQuestion(int status) {
  return status == 400 || status == 500 || status == 501;
}

class WalkedFolder final : public WalkedDirectory {
 public:
  WalkedFolder(std::shared_ptr<WalkState> walk, std::string path, std::string resource, KnownFolders told)
      : walk_(std::move(walk)),
        path_(std::move(path)),
        resource_(std::move(resource)),
        told_(std::move(told)),
        isTold_(told_.has_value()) {}

  ListingAnswer ListAsFound(const WalkCallback& callback, ReadDirFlags flags) override;

 protected:
  std::shared_ptr<WalkedDirectory> FindAnew() override {
    ServerContext now = walk_->server.NextOperation();
    return OpenWalk(now, path_);
  }

 private:
  struct Page {
    ListingAnswer answer = ListingAnswer::Whole;
    int status = 0;  ///< of the page that was read last
  };

  /// How many levels of folders one question asks for.
  enum class Levels { One, Two };
  /// Which folders a listing of documents delivers before the first of them.
  enum class FoldersBefore { None, ThoseTold };

  void Deliver(const FolderName& folder, KnownFolders below, const WalkCallback& callback) const;
  [[nodiscard]] Page AskForFolders(ServerContext& server, Levels levels, const WalkCallback& callback) const;
  [[nodiscard]] ListingAnswer ListFolders(ServerContext& server, const WalkCallback& callback) const;
  [[nodiscard]] ListingAnswer ListDocuments(ServerContext& server, FoldersBefore folders,
                                            const WalkCallback& callback, ReadDirFlags flags) const;

  const std::shared_ptr<WalkState> walk_;
  const std::string path_;
  const std::string resource_;
  const KnownFolders told_;
  std::atomic<bool> isTold_;
};

// Without an id the folder can be found by its path alone.
void WalkedFolder::Deliver(const FolderName& folder, KnownFolders below, const WalkCallback& callback) const {
  DirEntryInfoExt entry;
  entry.name = folder.name.c_str();
  entry.id = "";
  entry.isDirectory = true;
  std::string path = path_ + folder.name + "/";
  if (folder.id.empty()) return callback(entry, WalkedByPath(walk_->server, std::move(path)));
  std::string resource = resource_ + "/Folders('" + folder.id + "')";
  callback(entry,
           std::make_shared<WalkedFolder>(walk_, std::move(path), std::move(resource), std::move(below)));
}

WalkedFolder::Page WalkedFolder::AskForFolders(ServerContext& server, Levels levels,
                                               const WalkCallback& callback) const {
  const FailureStep step("list the folder");
  std::string path = "servlet/odata/v1/DataAdmin/" + resource_ + "/Folders?$select=ID,Name";
  if (levels == Levels::Two) path += "&$expand=Folders($levels=1;$select=ID,Name)";
  ODataPageReader reader(server, std::move(path));
  bool delivered = false;
  while (reader.Next()) {
    if (reader.failed()) {
      const bool isGone = IsNotThere(reader.status()) && !delivered;
      return {isGone ? ListingAnswer::NotThere : ListingAnswer::Broken, delivered ? 0 : reader.status()};
    }
    const rapidjson::Value* rows = FindArray(reader.page(), "value");
    if (rows == nullptr) continue;
    for (const auto& row : rows->GetArray()) {
      const auto folder = NameOf(row);
      if (!folder) continue;
      delivered = true;
      Deliver(*folder, levels == Levels::Two ? FoldersTold(row) : std::nullopt, callback);
    }
  }
  return {};
}

ListingAnswer WalkedFolder::ListFolders(ServerContext& server, const WalkCallback& callback) const {
  if (!walk_->asksLevelByLevel) {
    const Page page = AskForFolders(server, Levels::Two, callback);
    if (page.answer == ListingAnswer::Whole || !RefusesTheQuestion(page.status)) return page.answer;
  }
  const ListingAnswer answer = AskForFolders(server, Levels::One, callback).answer;
  if (answer == ListingAnswer::Whole) walk_->asksLevelByLevel = true;
  return answer;
}

// Folders come before documents. Those that are known wait for the first document, or for the end: when the
// folder is not there any more, what was told of it is of no use.
ListingAnswer WalkedFolder::ListDocuments(ServerContext& server, FoldersBefore folders,
                                          const WalkCallback& callback, ReadDirFlags flags) const {
  bool waits = folders == FoldersBefore::ThoseTold;
  bool delivered = false;
  const auto deliverFolders = [&] {
    if (!std::exchange(waits, false)) return;
    for (const FolderName& folder : *told_) Deliver(folder, std::nullopt, callback);
  };
  ListingAnswer answer = ListingAnswer::Whole;
  if ((flags & Files) != 0) {
    const auto deliver = [&](const DirEntryInfoExt& entry) {
      deliverFolders();
      delivered = true;
      callback(entry, nullptr);
    };
    answer = ListDocumentsOfFolder(server, resource_, deliver, flags);
  }
  if (answer == ListingAnswer::NotThere && !delivered) return answer;
  deliverFolders();
  return answer == ListingAnswer::Whole ? answer : ListingAnswer::Broken;
}

ListingAnswer WalkedFolder::ListAsFound(const WalkCallback& callback, ReadDirFlags flags) {
  ServerContext server = walk_->server.NextOperation();
  if ((flags & Directories) == 0) return ListDocuments(server, FoldersBefore::None, callback, flags);
  if (isTold_.exchange(false)) return ListDocuments(server, FoldersBefore::ThoseTold, callback, flags);
  bool delivered = false;
  const auto deliver = [&](const DirEntryInfoExt& entry, const std::shared_ptr<WalkedDirectory>& folder) {
    delivered = true;
    callback(entry, folder);
  };
  const ListingAnswer answer = ListFolders(server, deliver);
  if (answer != ListingAnswer::Whole) return answer;
  const ListingAnswer documents = ListDocuments(server, FoldersBefore::None, callback, flags);
  return documents == ListingAnswer::NotThere && delivered ? ListingAnswer::Broken : documents;
}

class ByPath final : public WalkedDirectory {
 public:
  ByPath(const ServerContext& server, std::string path) : server_(server), path_(std::move(path)) {}

  ListingAnswer ListAsFound(const WalkCallback& callback, ReadDirFlags flags) override {
    ServerContext now = server_.NextOperation();
    const auto found = OpenWalk(now, path_);
    return found != nullptr ? found->ListAsFound(callback, flags) : ListingAnswer::Broken;
  }

 private:
  const ServerContext server_;
  const std::string path_;
};

}  // namespace

std::shared_ptr<WalkedDirectory> BeginWalkAtFolder(const ServerContext& server, std::string path,
                                                   std::string resource) {
  return std::make_shared<WalkedFolder>(std::make_shared<WalkState>(server), std::move(path),
                                        std::move(resource), std::nullopt);
}

std::shared_ptr<WalkedDirectory> WalkedByPath(const ServerContext& server, std::string path) {
  return std::make_shared<ByPath>(server, std::move(path));
}

}  // namespace lxservices::cms_interface::vantry
