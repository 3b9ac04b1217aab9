#pragma once

#include <map>
#include <string>

namespace lxservices::cms_interface {

enum class DocumentKind : int { Fenlet = 0, General = 1, Ugc = 2 };

/// What an upload hands to the document services. The pointers are read for the length of the call only.
struct DocumentUploadParams {
  DocumentKind kind = DocumentKind::Fenlet;
  const char* mainPath = nullptr;      ///< local file of the primary content
  const char* viewablePath = nullptr;  ///< local viewable file, may be null; Fenlet only
  const char* vcsPath = nullptr;       ///< local metadata file, may be null; Fenlet only
  const char* language = nullptr;      ///< language attribute, may be null; Fenlet only
  const std::map<std::string, std::string>* dependencies = nullptr;  ///< child name to id, may be null
};

}  // namespace lxservices::cms_interface
