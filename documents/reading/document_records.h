#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// The one model of a document in the JSON of the document service. Plain values; texts are the JSON's bytes.
namespace lxservices::cms_interface::vantry {

/// The object under "epmMaster".
struct EpmMasterRecord {
  std::string id;
  std::string name;
  std::string number;
  std::string category;
  std::string subCategory;
  std::string cadName;  ///< file-like name of the document on the server
  std::string authoringApplication;
  bool operator==(const EpmMasterRecord&) const = default;
};

/// One iteration of a document, as lists hold it.
struct DocumentSummary {
  std::string id;
  std::string contextId;
  std::string contextName;
  std::string contextType;
  std::string revision;
  std::string iteration;
  std::string authAppVersion;  ///< a number kept as text
  std::string ndVersion;
  bool isCheckout = false;       ///< checked out by anybody
  bool isCheckoutByYou = false;  ///< checked out by the connected user
  bool isLatest = false;
  std::string checkoutByUser;
  std::string checkoutToFolderName;
  bool isDerived = false;
  EpmMasterRecord master;
  bool operator==(const DocumentSummary&) const = default;
};

/// A relation to the document that this one was made from.
struct DerivedSourceDependency {
  std::string asStoredChildName;
  bool isDirect = false;
  std::string sourceId;
  EpmMasterRecord sourceMaster;
  std::string revision;
  std::string iteration;
  std::string authAppVersion;
  std::string ndVersion;
  std::int32_t revNum = 0;
  bool isPlaceHolder = false;
  bool isDerived = false;
  bool hasCompleteDependencies = false;
  bool operator==(const DerivedSourceDependency&) const = default;
};

/// A file of a document.
struct ContentRecord {
  std::string id;
  std::string category;  ///< role of the file, such as "VIEWABLE"
  std::string fileName;
  bool isForwardable = false;  ///< a new iteration carries this secondary content forward
  bool isStale = false;
  bool isHidden = false;
  std::uint64_t streamId = 0;
  std::string encodedCCD;               ///< upload receipt
  std::vector<std::string> contentUrl;  ///< absolute URLs
  std::uint64_t fileSize = 0;           ///< bytes
  bool fileSizeTold = false;            ///< whether the server told it: an empty file has 0 too
  bool operator==(const ContentRecord&) const = default;
};

struct FileBasedAttribute {
  std::string parameterName;
  std::string attributeName;
  std::string valueType;
  std::string value;
  bool operator==(const FileBasedAttribute&) const = default;
};

/// One iteration of a document with all that it holds.
struct DocumentRecord : DocumentSummary {
  std::string folderId;
  std::string folderName;
  std::string folderPath;
  std::vector<DerivedSourceDependency> dependencies;
  bool isSectioned = false;
  std::vector<ContentRecord> contentSections;  ///< primary content; a download fetches the first
  std::vector<ContentRecord> secondaryContents;
  std::vector<FileBasedAttribute> fileBasedAttributes;
  bool operator==(const DocumentRecord&) const = default;
};

struct WorkspaceRecord {
  std::string id;
  std::string name;
  std::string description;
  std::string contextId;
  bool operator==(const WorkspaceRecord&) const = default;
};

}  // namespace lxservices::cms_interface::vantry
