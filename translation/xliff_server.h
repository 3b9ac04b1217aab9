#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>

#include "documents/reading/file_info.h"

namespace lxservices::cms_interface {

/// A document of the translation add-on.
struct XliffDocumentRef {
  std::string id;
  std::string language;
};

/// The translation service of a server. An id is a CheckoutId or a plain object id, of which the first field
/// is the document that is translated. Every operation makes requests on this thread, and reports by its
/// bool; the reason, where there is one, goes to the trace.
class XliffServer {
 public:
  virtual ~XliffServer() = default;

  /// Uploads the first source XLIFF of a document. A link that fails is traced and no failure.
  /// @throws std::invalid_argument, std::out_of_range  for a stream id that is no number
  [[nodiscard]] virtual bool UploadSource(const char* id, const char* xliffPath, const char* language,
                                          FileInfo& result,
                                          std::function<bool(std::size_t, std::size_t)> progress) = 0;
  /// Makes a new iteration of a document's source XLIFF, and links it again.
  /// @throws what UploadSource throws
  [[nodiscard]] virtual bool UpdateSource(const char* id, const char* xliffPath, FileInfo& result,
                                          std::function<bool(std::size_t, std::size_t)> progress,
                                          const char* language) = 0;
  /// Finds the source XLIFF of a document.
  [[nodiscard]] virtual bool GetSourceXliff(const char* id, XliffDocumentRef& xliff) = 0;
  /// Lists the translations of a document: language to object id.
  [[nodiscard]] virtual bool GetTranslations(const char* id, XliffDocumentRef& source,
                                             std::map<std::string, std::string>& translations) = 0;
  /// Reads the language of a document.
  [[nodiscard]] virtual bool GetDocumentLanguage(const char* id, XliffDocumentRef& document) = 0;
  /// Marks a translated document as published.
  [[nodiscard]] virtual bool SetPublished(const char* id) = 0;
};

}  // namespace lxservices::cms_interface
