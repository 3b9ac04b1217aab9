#pragma once

#include <map>
#include <string>
#include <vector>

namespace vtdirect_cli {

/// A document as the listing of its folder tells it.
struct ListedDocument {
  std::string name;                   ///< as it is in a path
  std::string number;                 ///< empty when the server does not tell it
  std::vector<std::string> versions;  ///< newest first; empty when the server does not tell them
  std::vector<std::string> ids;       ///< of each version, in their order
};

/// The name that a document of a folder has on the disk already.
struct KeptName {
  std::string name;
  std::string nameOnServer;  ///< that it was made from
};

/// The names of a folder's documents, by the id of the version that each file came from.
using KeptNames = std::map<std::string, KeptName>;

/// The names on the disk of the folders in a folder from which files came, by their names on the server.
using KeptFolders = std::map<std::string, std::string>;

/// What one folder of a server holds, by the names that its entries get on the disk.
struct NamedEntries {
  std::map<std::string, ListedDocument> documents;
  std::map<std::string, std::string> folders;  ///< to their names on the server
  std::vector<std::string> nameless;           ///< names that can't be in a path
};

/// Gives each entry of a folder a name of its own on the disk.
///
/// A name is the server's, as it is in a path, with what is unfit for a disk escaped as SafeFileName does
/// it; so two names never become one, and each comes back the same. Rows of one document count once. A
/// document whose name another one has, or a folder whose name a document has, gets a suffix that no name of a
/// server has: "fork%(0000100001).lxz" with its number, "fork.lxz%(folder)". A document keeps the name that it has,
/// or the file of one would become that of the other when a third one comes or the first one goes. So does a folder,
/// or all that is in it would be fetched anew.
[[nodiscard]] NamedEntries NameEntries(std::vector<ListedDocument> documents,
                                       const std::vector<std::string>& folders, const KeptNames& kept = {},
                                       const KeptFolders& keptFolders = {});

}  // namespace vtdirect_cli
