#pragma once

#include <memory>

#include "connection/vt_connection.h"
#include "translation/xliff_server.h"

namespace lxservices::cms_interface::vantry {

/// The translation service over OData. Keeps no state between operations, so any number of threads may use it
/// at once.
class NrxXliffServer final : public XliffServer {
 public:
  /// Sends nothing.
  explicit NrxXliffServer(std::shared_ptr<VtConnection> connection);

  bool UploadSource(const char* id, const char* xliffPath, const char* language, FileInfo& result,
                    std::function<bool(std::size_t, std::size_t)> progress) override;
  bool UpdateSource(const char* id, const char* xliffPath, FileInfo& result,
                    std::function<bool(std::size_t, std::size_t)> progress, const char* language) override;
  bool GetSourceXliff(const char* id, XliffDocumentRef& xliff) override;
  bool GetTranslations(const char* id, XliffDocumentRef& source,
                       std::map<std::string, std::string>& translations) override;
  bool GetDocumentLanguage(const char* id, XliffDocumentRef& document) override;
  bool SetPublished(const char* id) override;

 private:
  const std::shared_ptr<VtConnection> connection_;
};

}  // namespace lxservices::cms_interface::vantry
