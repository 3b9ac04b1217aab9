#include "server/vt_rest_legacy_file_server.h"

#include <utility>

#include "base/checkout_id.h"
#include "base/result.h"
#include "base/text.h"
#include "browsing/directory_listing.h"
#include "browsing/document_details.h"
#include "browsing/document_to_path.h"
#include "browsing/hvd_features.h"
#include "browsing/path_to_document.h"
#include "browsing/vantry_lookup.h"
#include "browsing/walk.h"
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
  return HandOver(DownloadDocument(server, ParseCheckoutId(id), TextOrEmpty(localPath), std::move(progress)),
                  info);
}

bool VtRestLegacyFileServer::GetWholeFile(const char* id, const char* localPath, FileInfo& info,
                                          ProgressFunction progress) {
  ServerContext server = Begin();
  constexpr bool compareSize = true;
  return HandOver(
      DownloadDocument(server, ParseCheckoutId(id), TextOrEmpty(localPath), std::move(progress), compareSize),
      info);
}

Status VtRestLegacyFileServer::ReadDetails(const char* id, DocumentQuery& query) {
  ServerContext server = Begin();
  return GetDocumentDetails(server, ParseCheckoutId(id), query);
}

Status VtRestLegacyFileServer::GetFileInfo(const char* id, FileInfo& info) {
  ServerContext server = Begin();
  return HandOver(vantry::GetFileInfo(server, ParseCheckoutId(id)), info);
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
  return ResolveDocumentPath(server, TextOrEmpty(path));
}

std::string VtRestLegacyFileServer::GetVFSPath(const char* id, bool folderOnly, bool latestForm) {
  ServerContext server = Begin();
  const auto form = folderOnly   ? DocumentPathForm::Folder
                    : latestForm ? DocumentPathForm::LatestVersion
                                 : DocumentPathForm::ThisVersion;
  return FindDocumentPath(server, ParseCheckoutId(id), form);
}

std::string VtRestLegacyFileServer::BrowserInfo(const char* id) {
  return InformationPage(Begin(), ParseCheckoutId(id));
}

std::string VtRestLegacyFileServer::EditAttributesURL(const char* id) {
  ServerContext server = Begin();
  return AttributesPage(server, ParseCheckoutId(id));
}

std::string VtRestLegacyFileServer::UIDFromVantryParams(const char* documentId, const char* workspaceId) {
  ServerContext server = Begin();
  return FindIdInWorkspace(server, TextOrEmpty(documentId), TextOrEmpty(workspaceId));
}

std::string VtRestLegacyFileServer::UIDFromVantryCadName(const char* cadName) {
  if (cadName == nullptr) return {};
  ServerContext server = Begin();
  return FindLatestIdByCadName(server, cadName);
}

bool VtRestLegacyFileServer::GetCheckoutState(const char* id, VtCheckoutState& state) {
  ServerContext server = Begin();
  return HandOver(vantry::GetCheckoutState(server, ParseCheckoutId(id)), state);
}

ServerFeatures VtRestLegacyFileServer::Features() {
  if (const auto known = connection_->knowledge().Features()) return *known;
  ServerContext server = Begin();
  // Whatever came of it: a server that failed once answers no for the life of this object.
  return connection_->knowledge().LearnFeatures(ReadHvdFeatures(server));
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
  return ListDirectory(server, TextOrEmpty(path), callback, flags);
}

DirLister VtRestLegacyFileServer::OpenDir(const char* path) {
  ServerContext server = Begin();
  return OpenDirectory(server, TextOrEmpty(path));
}

std::shared_ptr<WalkedDirectory> VtRestLegacyFileServer::OpenWalk(const char* path) {
  ServerContext server = Begin();
  return vantry::OpenWalk(server, TextOrEmpty(path));
}

bool VtRestLegacyFileServer::IsPathWritable(const char* path) {
  return vantry::IsPathWritable(TextOrEmpty(path));
}

bool VtRestLegacyFileServer::CanPathShowVersions(const char* path) {
  ServerContext server = Begin();
  return vantry::CanPathShowVersions(server, TextOrEmpty(path));
}

bool VtRestLegacyFileServer::CanPathShowDetails(const char* path) {
  ServerContext server = Begin();
  return vantry::CanPathShowDetails(server, TextOrEmpty(path));
}

Status VtRestLegacyFileServer::UploadNew(const char* path, const DocumentUploadParams& params, FileInfo& info,
                                         ProgressFunction progress) {
  ServerContext server = Begin();
  return HandOver(UploadNewDocument(server, TextOrEmpty(path), params, std::move(progress)), info);
}

Status VtRestLegacyFileServer::UploadIteration(const char* id, const DocumentUploadParams& params,
                                               FileInfo& info, ProgressFunction progress) {
  ServerContext server = Begin();
  return HandOver(IterateDocument(server, TextOrEmpty(id), params, std::move(progress)), info);
}

bool VtRestLegacyFileServer::Checkout(const char* id, FileInfo& info) {
  ServerContext server = Begin();
  return HandOver(CheckoutDocument(server, ParseCheckoutId(id)), info);
}

bool VtRestLegacyFileServer::UndoCheckout(const char* id, FileInfo& info) {
  ServerContext server = Begin();
  return HandOver(UndoCheckoutDocument(server, ParseCheckoutId(id)), info);
}

Status VtRestLegacyFileServer::Store(const char* id, const DocumentUploadParams& params,
                                     ProgressFunction progress) {
  ServerContext server = Begin();
  return StoreDocument(server, ParseCheckoutId(id), params, std::move(progress));
}

bool VtRestLegacyFileServer::Checkin(const char* id, FileInfo& info) {
  ServerContext server = Begin();
  return HandOver(CheckinDocument(server, ParseCheckoutId(id)), info);
}

std::optional<TemporaryCheckouts> VtRestLegacyFileServer::FindTemporaryCheckoutsOf(const char* id) {
  ServerContext server = Begin();
  return ListTemporaryCheckoutsOf(server, ParseCheckoutId(id));
}

std::optional<TemporaryCheckouts> VtRestLegacyFileServer::FindTemporaryCheckoutsBelow(const char* path) {
  ServerContext server = Begin();
  return ListTemporaryCheckoutsBelow(server, TextOrEmpty(path));
}

bool VtRestLegacyFileServer::VerifyCheckout(const char* id, FileInfo& info, VtCheckoutState& state) {
  ServerContext server = Begin();
  auto verified = vantry::VerifyCheckout(server, ParseCheckoutId(id));
  if (!verified) return false;
  info = std::move(verified->info);
  state = std::move(verified->state);
  return true;
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
