#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/store/database.h"

namespace vantry_sim {

/// One iteration of a document with all that is one to one with it.
struct DocumentRow {
  std::int64_t key = 0;  ///< row id of the iteration
  std::string oid;
  std::string revision;
  std::int64_t iteration = 0;
  std::string authAppVersion;
  std::string ndVersion;
  bool isLatest = false;
  bool isDerived = false;
  std::string checkoutUser;       ///< empty: not checked out
  std::string checkoutWorkspace;  ///< name of the workspace that it is checked out to

  std::optional<std::int64_t> workspaceKey;     ///< nothing for a checked-in document
  std::optional<std::int64_t> checkoutBaseKey;  ///< base of the checkout that it is one end of

  std::int64_t contextKey = 0;
  std::string contextOid;
  std::string contextName;
  std::string contextKind;

  std::int64_t masterKey = 0;
  std::string masterOid;
  std::string masterName;
  std::string number;
  std::string category;
  std::string subCategory;
  std::string cadName;
  std::string authoringApplication;
  std::string service;  ///< "dynamic" or "cad"

  std::optional<std::int64_t> folderKey;  ///< nothing for a document that has never left its workspace
  std::string folderOid;
  std::string folderName;
};

/// One file of a document.
struct ContentRow {
  std::string oid;
  std::string category;
  std::string fileName;
  bool isForwardable = false;
  bool isStale = false;
  bool isHidden = false;
  std::optional<std::int64_t> stream;
  std::int64_t size = 0;
};

/// The document with this id, if the user may see it: a working copy is seen by the owner of its workspace
/// alone.
std::optional<DocumentRow> FindDocument(Database& database, std::string_view oid, std::string_view user);

/// The checked-in versions of the document's master, the newest first. A document that has never been checked
/// in is its own only version.
std::vector<DocumentRow> VersionsOf(Database& database, const DocumentRow& document, std::string_view user);

/// Every version with this number, the newest first, with the user's own working copies.
/// @param contextOid one context's documents alone; empty: those of all contexts
std::vector<DocumentRow> SearchByNumber(Database& database, std::string_view number,
                                        std::string_view contextOid, std::string_view user);

/// The documents that a workspace holds, in the order of their ids: working copies, and what was added
/// without a checkout.
std::vector<DocumentRow> DocumentsInWorkspace(Database& database, std::int64_t workspaceKey);

/// The properties by which the object query finds documents.
enum class DocumentProperty { CadName, Number, Name };

/// The latest version of each document whose property has exactly this value, in the order of their ids.
std::vector<DocumentRow> FindLatestByProperty(Database& database, DocumentProperty property,
                                              std::string_view value);

/// The primary or the secondary contents of an iteration, in their order.
enum class ContentRole { Primary, Secondary };
std::vector<ContentRow> ContentsOf(Database& database, std::int64_t iterationKey, ContentRole role);

/// Where a folder is: "/", its context's name and the names below the root, each after a "/". The root's
/// own name is no part of it, since clients address what is below a root without naming the root.
std::string FolderPath(Database& database, std::int64_t folderKey);

/// The place that a folder is in: the FolderPath of the folder around it, and "/" for a root.
std::string FolderLocation(Database& database, std::int64_t folderKey);

/// The size of a stream; nothing for an unknown one.
std::optional<std::int64_t> StreamSize(Database& database, std::int64_t stream);

}  // namespace vantry_sim
