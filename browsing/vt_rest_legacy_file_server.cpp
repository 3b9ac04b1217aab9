#include "browsing/vt_rest_legacy_file_server.h"

#include <utility>

#include "browsing/document_details.h"
#include "browsing/hvd_features.h"
#include "connection/server_check.h"
#include "documents/checkout_state.h"
#include "documents/document_download.h"

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

// Not built yet; until then each gives its failure value.
std::string VtRestLegacyFileServer::ResolvePath(const char*) {
  return {};
}
std::string VtRestLegacyFileServer::GetVFSPath(const char*, bool, bool) {
  return {};
}
Status VtRestLegacyFileServer::UploadNew(const char*, const DocumentUploadParams&, FileInfo&,
                                         ProgressFunction) {
  return Refused;
}
Status VtRestLegacyFileServer::UploadIteration(const char*, const DocumentUploadParams&, FileInfo&,
                                               ProgressFunction) {
  return Refused;
}
bool VtRestLegacyFileServer::ReadDir(const char*, std::function<void(const char*, const char*, bool)>) {
  return false;
}
bool VtRestLegacyFileServer::ReadDirExt(const char*, DirEntryCallback, ReadDirFlags) {
  return false;
}
DirLister VtRestLegacyFileServer::OpenDir(const char*) {
  return {};
}
bool VtRestLegacyFileServer::IsPathWritable(const char*) {
  return false;
}
bool VtRestLegacyFileServer::CanPathShowVersions(const char*) {
  return false;
}
bool VtRestLegacyFileServer::CanPathShowDetails(const char*) {
  return false;
}
std::string VtRestLegacyFileServer::BrowserInfo(const char*) {
  return {};
}
XliffServer* VtRestLegacyFileServer::GetXliffServer() {
  return nullptr;
}
std::string VtRestLegacyFileServer::EditAttributesURL(const char*) {
  return {};
}
std::string VtRestLegacyFileServer::UIDFromVantryParams(const char*, const char*) {
  return {};
}
std::string VtRestLegacyFileServer::UIDFromVantryCadName(const char*) {
  return {};
}
bool VtRestLegacyFileServer::Checkout(const char*, FileInfo&) {
  return false;
}
bool VtRestLegacyFileServer::UndoCheckout(const char*, FileInfo&) {
  return false;
}
Status VtRestLegacyFileServer::Store(const char*, const DocumentUploadParams&, ProgressFunction) {
  return Refused;
}
bool VtRestLegacyFileServer::Checkin(const char*, FileInfo&) {
  return false;
}
bool VtRestLegacyFileServer::VerifyCheckout(const char*, FileInfo&, VtCheckoutState&) {
  return false;
}

}  // namespace lxservices::cms_interface::vantry
