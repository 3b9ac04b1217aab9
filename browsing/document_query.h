#pragma once

#include <map>
#include <string>
#include <vector>

#include "documents/reading/file_info.h"

/// The request of ReadDetails: every member is an optional output, and null means not asked.
namespace lxservices::cms_interface {

/// The newest iteration of a document.
struct LatestInfo {
  bool isLatest = false;  ///< the asked document is the newest
  std::string id;
  std::string version;
};

struct VersionEntry {
  std::string id;
  std::string version;
};

/// One content section of a document.
struct SourceEntry {
  std::string fileName;
  std::string url;  ///< empty when the server gave none
  std::string key;  ///< identifies this content of this document
};

struct DocumentQuery {
  FileInfo* current = nullptr;
  LatestInfo* latest = nullptr;
  std::vector<VersionEntry>* versions = nullptr;
  std::map<std::string, std::string>* attributes = nullptr;  ///< "name" and "number"
  std::vector<SourceEntry>* contents = nullptr;
};

}  // namespace lxservices::cms_interface
