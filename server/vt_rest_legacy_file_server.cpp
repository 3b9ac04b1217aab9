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
#include "translation/nrx_xliff_server.h"
#include "translation/translation_gate.h"

namespace lxservices::cms_interface::vantry {

VtRestLegacyFileServer::VtRestLegacyFileServer(std::shared_ptr<VtConnection> connection,
                                               std::string serverKey)
    : connection_(std::move(connection)), serverKey_(std::move(serverKey)) {}

bool VtRestLegacyFileServer::TestConnection() {
  return ProbeConnection(connection_) == Ok;
}

bool VtRestLegacyFileServer::GetFile(const char* id, const char* localPath, FileInfo& info,
                                     ProgressFunction progress) {
  return DownloadDocument(connection_, id, localPath, info, std::move(progress));
}

Status VtRestLegacyFileServer::ReadDetails(const char* id, DocumentQuery& query) {
  EnsureServiceFlags(services_, *connection_);
  return GetDocumentDetails(connection_, services_, id, query);
}

Status VtRestLegacyFileServer::GetFileInfo(const char* id, FileInfo& info) {
  return vantry::GetFileInfo(connection_, id, info);
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
  return ResolveDocumentPath(connection_, services_, path);
}

std::string VtRestLegacyFileServer::GetVFSPath(const char* id, bool folderOnly, bool latestForm) {
  return FindDocumentPath(connection_, services_, id, folderOnly, latestForm);
}

std::string VtRestLegacyFileServer::BrowserInfo(const char* id) {
  return InformationPage(*connection_, id);
}

std::string VtRestLegacyFileServer::EditAttributesURL(const char* id) {
  return AttributesPage(connection_, id);
}

std::string VtRestLegacyFileServer::UIDFromVantryParams(const char* documentId, const char* workspaceId) {
  return FindIdInWorkspace(connection_, documentId, workspaceId);
}

std::string VtRestLegacyFileServer::UIDFromVantryCadName(const char* cadName) {
  return FindLatestIdByCadName(connection_, services_, cadName);
}

bool VtRestLegacyFileServer::GetCheckoutState(const char* id, VtCheckoutState& state) {
  return vantry::GetCheckoutState(connection_, id, state);
}

void VtRestLegacyFileServer::ReadFeaturesOnce() {
  // Whatever came of it: a server that failed once answers no for the life of this object.
  if (!featuresRead_) (void)ReadHvdFeatures(connection_, separatedSources_, vcsInfo_);
  featuresRead_ = true;
}

bool VtRestLegacyFileServer::SupportsSeparatedSources() {
  ReadFeaturesOnce();
  return separatedSources_;
}

bool VtRestLegacyFileServer::SupportsVCSMetadata() {
  ReadFeaturesOnce();
  return vcsInfo_;
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
  return ListDirectory(connection_, services_, path, callback, flags);
}

DirLister VtRestLegacyFileServer::OpenDir(const char* path) {
  return OpenDirectory(connection_, services_, path);
}

bool VtRestLegacyFileServer::IsPathWritable(const char* path) {
  return vantry::IsPathWritable(path);
}

bool VtRestLegacyFileServer::CanPathShowVersions(const char* path) {
  return vantry::CanPathShowVersions(connection_, services_, path);
}

bool VtRestLegacyFileServer::CanPathShowDetails(const char* path) {
  return vantry::CanPathShowDetails(connection_, services_, path);
}

Status VtRestLegacyFileServer::UploadNew(const char* path, const DocumentUploadParams& params, FileInfo& info,
                                         ProgressFunction progress) {
  EnsureServiceFlags(services_, *connection_);
  return UploadNewDocument(connection_, services_, path, params, info, std::move(progress));
}

Status VtRestLegacyFileServer::UploadIteration(const char* id, const DocumentUploadParams& params,
                                               FileInfo& info, ProgressFunction progress) {
  return IterateDocument(connection_, id, params, info, std::move(progress));
}

bool VtRestLegacyFileServer::Checkout(const char* id, FileInfo& info) {
  return CheckoutDocument(connection_, id, info);
}

bool VtRestLegacyFileServer::UndoCheckout(const char* id, FileInfo& info) {
  return UndoCheckoutDocument(connection_, id, info);
}

Status VtRestLegacyFileServer::Store(const char* id, const DocumentUploadParams& params,
                                     ProgressFunction progress) {
  return StoreDocument(connection_, id, params, std::move(progress));
}

bool VtRestLegacyFileServer::Checkin(const char* id, FileInfo& info) {
  return CheckinDocument(connection_, id, info);
}

bool VtRestLegacyFileServer::VerifyCheckout(const char* id, FileInfo& info, VtCheckoutState& state) {
  return vantry::VerifyCheckout(connection_, id, info, state);
}

XliffServer* VtRestLegacyFileServer::GetXliffServer() {
  // A refusal is remembered, so that a server without translation is asked once; a server that is brought up
  // to date while the host runs needs a new server object.
  if (xliffServer_ != nullptr || xliffRefused_) return xliffServer_.get();
  if (TranslationGate(*connection_)) {
    xliffServer_ = std::make_unique<NrxXliffServer>(connection_);
  } else {
    xliffRefused_ = true;
  }
  return xliffServer_.get();
}

}  // namespace lxservices::cms_interface::vantry
