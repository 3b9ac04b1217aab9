#include "server/vt_rest_legacy_file_server.h"

#include <utility>

#include "browsing/directory_listing.h"
#include "browsing/document_details.h"
#include "browsing/document_to_path.h"
#include "browsing/hvd_features.h"
#include "browsing/path_to_document.h"
#include "browsing/vantry_lookup.h"
#include "browsing/web_pages.h"
#include "connection/server_check.h"
#include "documents/checkout/checkin.h"
#include "documents/checkout/checkout.h"
#include "documents/checkout/checkout_state.h"
#include "documents/checkout/undo_checkout.h"
#include "documents/checkout/verify_checkout.h"
#include "documents/reading/document_download.h"
#include "documents/storing/document_storing.h"
#include "server/path_capabilities.h"
#include "server/upload_target.h"
#include "translation/translation_gate.h"

namespace lxservices::cms_interface::vantry {

VtRestLegacyFileServer::VtRestLegacyFileServer(std::shared_ptr<VtConnection> connection,
                                               std::string serverKey)
    : connection_(std::move(connection)), serverKey_(std::move(serverKey)), xliffServer_(connection_) {}

ServerContext VtRestLegacyFileServer::Begin() const {
  return ServerContext(connection_);
}

bool VtRestLegacyFileServer::TestConnection() {
  return ProbeConnection(connection_) == Ok;
}

bool VtRestLegacyFileServer::GetFile(const char* id, const char* localPath, FileInfo& info,
                                     ProgressFunction progress) {
  ServerContext server = Begin();
  return DownloadDocument(server, id, localPath, info, std::move(progress));
}

Status VtRestLegacyFileServer::ReadDetails(const char* id, DocumentQuery& query) {
  ServerContext server = Begin();
  return GetDocumentDetails(server, id, query);
}

Status VtRestLegacyFileServer::GetFileInfo(const char* id, FileInfo& info) {
  ServerContext server = Begin();
  return vantry::GetFileInfo(server, id, info);
}

bool VtRestLegacyFileServer::AlwaysTrue() {
  return true;
}

std::string VtRestLegacyFileServer::GetServerURL() {
  return connection_->http()->uri();
}

std::string VtRestLegacyFileServer::GetServerKey() {
  return serverKey_;
}

CheckoutServer* VtRestLegacyFileServer::GetCheckoutServer() {
  return this;
}

std::string VtRestLegacyFileServer::ResolvePath(const char* path) {
  ServerContext server = Begin();
  return ResolveDocumentPath(server, path);
}

std::string VtRestLegacyFileServer::GetVFSPath(const char* id, bool folderOnly, bool latestForm) {
  ServerContext server = Begin();
  return FindDocumentPath(server, id, folderOnly, latestForm);
}

std::string VtRestLegacyFileServer::BrowserInfo(const char* id) {
  return InformationPage(Begin(), id);
}

std::string VtRestLegacyFileServer::EditAttributesURL(const char* id) {
  ServerContext server = Begin();
  return AttributesPage(server, id);
}

std::string VtRestLegacyFileServer::UIDFromVantryParams(const char* documentId, const char* workspaceId) {
  ServerContext server = Begin();
  return FindIdInWorkspace(server, documentId, workspaceId);
}

std::string VtRestLegacyFileServer::UIDFromVantryCadName(const char* cadName) {
  ServerContext server = Begin();
  return FindLatestIdByCadName(server, cadName);
}

bool VtRestLegacyFileServer::GetCheckoutState(const char* id, VtCheckoutState& state) {
  ServerContext server = Begin();
  return vantry::GetCheckoutState(server, id, state);
}

ServerFeatures VtRestLegacyFileServer::Features() {
  if (const auto known = connection_->knowledge().Features()) return *known;
  ServerContext server = Begin();
  ServerFeatures features;
  // Whatever came of it: a server that failed once answers no for the life of this object.
  (void)ReadHvdFeatures(server, features.separatedSources, features.vcsInfo);
  return connection_->knowledge().LearnFeatures(features);
}

bool VtRestLegacyFileServer::SupportsSeparatedSources() {
  return Features().separatedSources;
}

bool VtRestLegacyFileServer::SupportsVCSMetadata() {
  return Features().vcsInfo;
}

bool VtRestLegacyFileServer::ReadDir(const char* path,
                                     std::function<void(const char*, const char*, bool)> callback) {
  constexpr auto everything = static_cast<ReadDirFlags>(Files | Directories);
  const auto forward = [&callback](const DirEntryInfoExt& entry) {
    callback(entry.name, entry.id, entry.isDirectory);
  };
  return ReadDirExt(path, forward, everything);
}

bool VtRestLegacyFileServer::ReadDirExt(const char* path, DirEntryCallback callback, ReadDirFlags flags) {
  ServerContext server = Begin();
  return ListDirectory(server, path, callback, flags);
}

DirLister VtRestLegacyFileServer::OpenDir(const char* path) {
  ServerContext server = Begin();
  return OpenDirectory(server, path);
}

bool VtRestLegacyFileServer::IsPathWritable(const char* path) {
  return vantry::IsPathWritable(path);
}

bool VtRestLegacyFileServer::CanPathShowVersions(const char* path) {
  ServerContext server = Begin();
  return vantry::CanPathShowVersions(server, path);
}

bool VtRestLegacyFileServer::CanPathShowDetails(const char* path) {
  ServerContext server = Begin();
  return vantry::CanPathShowDetails(server, path);
}

Status VtRestLegacyFileServer::UploadNew(const char* path, const DocumentUploadParams& params, FileInfo& info,
                                         ProgressFunction progress) {
  ServerContext server = Begin();
  return UploadNewDocument(server, path, params, info, std::move(progress));
}

Status VtRestLegacyFileServer::UploadIteration(const char* id, const DocumentUploadParams& params,
                                               FileInfo& info, ProgressFunction progress) {
  ServerContext server = Begin();
  return IterateDocument(server, id, params, info, std::move(progress));
}

bool VtRestLegacyFileServer::Checkout(const char* id, FileInfo& info) {
  ServerContext server = Begin();
  return CheckoutDocument(server, id, info);
}

bool VtRestLegacyFileServer::UndoCheckout(const char* id, FileInfo& info) {
  ServerContext server = Begin();
  return UndoCheckoutDocument(server, id, info);
}

Status VtRestLegacyFileServer::Store(const char* id, const DocumentUploadParams& params,
                                     ProgressFunction progress) {
  ServerContext server = Begin();
  return StoreDocument(server, id, params, std::move(progress));
}

bool VtRestLegacyFileServer::Checkin(const char* id, FileInfo& info) {
  ServerContext server = Begin();
  return CheckinDocument(server, id, info);
}

std::optional<TemporaryCheckouts> VtRestLegacyFileServer::FindTemporaryCheckoutsOf(const char* id) {
  ServerContext server = Begin();
  return ListTemporaryCheckoutsOf(server, id);
}

std::optional<TemporaryCheckouts> VtRestLegacyFileServer::FindTemporaryCheckoutsBelow(const char* path) {
  ServerContext server = Begin();
  return ListTemporaryCheckoutsBelow(server, path);
}

bool VtRestLegacyFileServer::VerifyCheckout(const char* id, FileInfo& info, VtCheckoutState& state) {
  ServerContext server = Begin();
  return vantry::VerifyCheckout(server, id, info, state);
}

XliffServer* VtRestLegacyFileServer::GetXliffServer() {
  // A refusal is remembered, so that a server without translation is asked once; a server that is brought up
  // to date while the host runs needs a new server object.
  auto translates = connection_->knowledge().Translates();
  if (!translates) {
    ServerContext server = Begin();
    translates = connection_->knowledge().LearnTranslates(TranslationGate(server));
  }
  return *translates ? &xliffServer_ : nullptr;
}

}  // namespace lxservices::cms_interface::vantry
