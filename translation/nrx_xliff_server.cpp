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
  ServerContext server(connection_);
  return UploadSourceXliff(server, SourceIdOf(id), xliffPath, language, result, std::move(progress));
}

bool NrxXliffServer::UpdateSource(const char* id, const char* xliffPath, FileInfo& result,
                                  std::function<bool(std::size_t, std::size_t)> progress,
                                  const char* language) {
  ServerContext server(connection_);
  return UpdateSourceXliff(server, SourceIdOf(id), xliffPath, language, result, std::move(progress));
}

bool NrxXliffServer::GetSourceXliff(const char* id, XliffDocumentRef& xliff) {
  ServerContext server(connection_);
  return FindSourceXliff(server, SourceIdOf(id), xliff);
}

bool NrxXliffServer::GetTranslations(const char* id, XliffDocumentRef& source,
                                     std::map<std::string, std::string>& translations) {
  ServerContext server(connection_);
  return ListTranslations(server, SourceIdOf(id), source, translations);
}

bool NrxXliffServer::GetDocumentLanguage(const char* id, XliffDocumentRef& document) {
  ServerContext server(connection_);
  return ReadDocumentLanguage(server, SourceIdOf(id), document);
}

bool NrxXliffServer::SetPublished(const char* id) {
  ServerContext server(connection_);
  return MarkPublished(server, SourceIdOf(id));
}

}  // namespace lxservices::cms_interface::vantry
