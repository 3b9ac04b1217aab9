#include "translation/nrx_xliff_server.h"

#include <utility>

#include "base/checkout_id.h"
#include "translation/xliff_publishing.h"
#include "translation/xliff_queries.h"
#include "translation/xliff_upload.h"

namespace lxservices::cms_interface::vantry {
namespace {

std::string SourceIdOf(const char* id) {
  return ParseCheckoutId(id).field0;
}

}  // namespace

NrxXliffServer::NrxXliffServer(std::shared_ptr<VtConnection> connection)
    : connection_(std::move(connection)) {}

bool NrxXliffServer::UploadSource(const char* id, const char* xliffPath, const char* language,
                                  FileInfo& result, std::function<bool(std::size_t, std::size_t)> progress) {
  return UploadSourceXliff(connection_, SourceIdOf(id), xliffPath, language, result, std::move(progress));
}

bool NrxXliffServer::UpdateSource(const char* id, const char* xliffPath, FileInfo& result,
                                  std::function<bool(std::size_t, std::size_t)> progress,
                                  const char* language) {
  return UpdateSourceXliff(connection_, SourceIdOf(id), xliffPath, language, result, std::move(progress));
}

bool NrxXliffServer::GetSourceXliff(const char* id, XliffDocumentRef& xliff) {
  return FindSourceXliff(connection_, SourceIdOf(id), xliff);
}

bool NrxXliffServer::GetTranslations(const char* id, XliffDocumentRef& source,
                                     std::map<std::string, std::string>& translations) {
  return ListTranslations(connection_, SourceIdOf(id), source, translations);
}

bool NrxXliffServer::GetDocumentLanguage(const char* id, XliffDocumentRef& document) {
  return ReadDocumentLanguage(connection_, SourceIdOf(id), document);
}

bool NrxXliffServer::SetPublished(const char* id) {
  return MarkPublished(connection_, SourceIdOf(id));
}

}  // namespace lxservices::cms_interface::vantry
