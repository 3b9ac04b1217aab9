#pragma once

#include <vtdirect/vt_direct_manager.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "hosts/cli/failures/failure.h"
#include "hosts/cli/work_folder/file_store.h"
#include "hosts/cli/work_folder/listed_folders.h"

namespace vtdirect_cli {

/// A version of a document, as the listing of its folder tells it.
struct RemoteVersion {
  std::string version;
  std::string uid;
};

/// A document as the server shows it now.
struct RemoteDocument {
  std::string path;     ///< below the work folder, by the names on the disk
  std::string address;  ///< its path on the server
  std::string uid;      ///< of its newest iteration
  std::string version;
  std::vector<RemoteVersion> versions = {};  ///< newest first; empty when listings don't tell them
};

/// What a folder of a server holds, with all below it.
struct RemoteTree {
  std::map<std::string, RemoteDocument> documents;  ///< by their paths
  std::vector<std::string> folders;                 ///< paths of those that were listed, but the start
  /// Paths of folders and documents of which nothing is known, since asking for them failed. A folder's has a
  /// closing "/".
  std::set<std::string> unknown;
  std::vector<Failure> failures;  ///< one for each of them

  /// Whether the server was asked for what is at this path, and has answered.
  [[nodiscard]] bool Knows(const std::string& path) const;
};

/// One folder that is to be listed.
struct RemoteFolder {
  std::string path;     ///< below the work folder, by the names on the disk; empty, or with a closing "/"
  std::string address;  ///< with a closing "/"
  /// How a listing came to it; empty: it is looked up by its address.
  VtDirectManager::WalkedDir directory = {};
};

/// What a work folder keeps of its files, by their paths.
using KeptFiles = std::map<std::string, FolderFile>;

/// Lists a folder and all below it, several folders at a time, each once: the listing tells the newest version
/// of each document and its UID. Where a server's listings don't tell them, each document is asked for. Makes
/// requests. A folder that could not be listed is one of `failures`, and nothing of it is delivered.
/// @param server  the key of the server (see GetLinkContext)
/// @param kept    whose documents keep their names
[[nodiscard]] RemoteTree ReadRemoteTree(const std::string& server, const RemoteFolder& start, Effort effort,
                                        const SideTasks& beside = {}, const KeptFiles& kept = {});

/// What some folders hold, without what is below them.
struct RemoteLevel {
  RemoteTree tree;                  ///< its documents have no UID where listings don't tell them
  std::vector<RemoteFolder> below;  ///< the folders in them
};

/// Lists some folders, several at a time. Makes requests.
[[nodiscard]] RemoteLevel ReadRemoteLevel(const std::string& server, const std::vector<RemoteFolder>& wanted,
                                          Effort effort);

/// The same for some folders alone, without what is below them.
[[nodiscard]] RemoteTree ReadRemoteFolders(const std::string& server, const std::vector<RemoteFolder>& wanted,
                                           Effort effort, const KeptFiles& kept = {});

/// The folder that a document lies in.
/// @param path     the document's, below the work folder
/// @param address  the document's, on the server
[[nodiscard]] RemoteFolder FolderOfDocument(const std::string& path, const std::string& address);

}  // namespace vtdirect_cli
