#include "translation/nrx_xliff_server.h"

#include <utility>

#include "base/checkout_id.h"
#include "base/result.h"
#include "base/text.h"
#include "translation/xliff_publishing.h"
#include "translation/xliff_queries.h"
#include "translation/xliff_upload.h"

namespace lxservices::cms_interface::vantry {
namespace {

std::string SourceIdOf(const char* id) {
  return ParseCheckoutId(id).document;
}

}  // namespace

NrxXliffServer::NrxXliffServer(std::shared_ptr<VtConnection> connection)
    : connection_(std::move(connection)) {}

bool NrxXliffServer::UploadSource(const char* id, const char* xliffPath, const char* language,
                                  FileInfo& result, std::function<bool(std::size_t, std::size_t)> progress) {
  ServerContext server(connection_);
  return HandOver(UploadSourceXliff(server, SourceIdOf(id), TextOrEmpty(xliffPath), TextOrEmpty(language),
                                    std::move(progress)),
                  result);
}

bool NrxXliffServer::UpdateSource(const char* id, const char* xliffPath, FileInfo& result,
                                  std::function<bool(std::size_t, std::size_t)> progress,
                                  const char* language) {
  ServerContext server(connection_);
  return HandOver(UpdateSourceXliff(server, SourceIdOf(id), TextOrEmpty(xliffPath), TextOrEmpty(language),
                                    std::move(progress)),
                  result);
}

bool NrxXliffServer::GetSourceXliff(const char* id, XliffDocumentRef& xliff) {
  ServerContext server(connection_);
  auto told = FindSourceXliff(server, SourceIdOf(id), std::move(xliff));
  xliff = std::move(told.document);
  return told.complete;
}

bool NrxXliffServer::GetTranslations(const char* id, XliffDocumentRef& source,
                                     std::map<std::string, std::string>& translations) {
  ServerContext server(connection_);
  auto told = ListTranslations(server, SourceIdOf(id), {std::move(source), std::move(translations)});
  source = std::move(told.source);
  translations = std::move(told.translations);
  return told.complete;
}

bool NrxXliffServer::GetDocumentLanguage(const char* id, XliffDocumentRef& document) {
  ServerContext server(connection_);
  auto told = ReadDocumentLanguage(server, SourceIdOf(id), std::move(document));
  document = std::move(told.document);
  return told.complete;
}

bool NrxXliffServer::SetPublished(const char* id) {
  ServerContext server(connection_);
  return MarkPublished(server, SourceIdOf(id));
}

}  // namespace lxservices::cms_interface::vantry
