#pragma once

#include <map>
#include <string>

namespace lxservices::cms_interface {

enum class DocumentKind : int { Fenlet = 0, General = 1, Ugc = 2 };

/// What an upload hands to the document services. An empty text counts as none.
struct DocumentUploadParams {
  DocumentKind kind = DocumentKind::Fenlet;
  std::string mainPath;      ///< local file of the primary content
  std::string viewablePath;  ///< local viewable file; Fenlet only
  std::string vcsPath;       ///< local metadata file; Fenlet only
  std::string language;      ///< language attribute; Fenlet only
  /// Child name to id; read for the length of the call only. Null leaves a document those it has.
  const std::map<std::string, std::string>* dependencies = nullptr;
};

}  // namespace lxservices::cms_interface
