#pragma once

#include <memory>
#include <string>

#include "connection/server_context.h"
#include "connection/vt_connection.h"
#include "server/file_server.h"
#include "translation/nrx_xliff_server.h"

namespace lxservices::cms_interface::vantry {

/// The one concrete server. Any number of threads may use it at once. What it learns of the server is kept by
/// its connection; it holds no listing, context, folder or document. Always held by std::shared_ptr.
class VtRestLegacyFileServer final : public VantryFileServer, private CheckoutServer {
 public:
  /// Sends nothing: all that is to be known of the server is found out on first use.
  VtRestLegacyFileServer(std::shared_ptr<VtConnection> connection, std::string serverKey);

  bool TestConnection() override;
  std::string ResolvePath(const char* path) override;
  std::string GetVFSPath(const char* id, bool folderOnly, bool latestForm) override;
  bool GetFile(const char* id, const char* localPath, FileInfo& info, ProgressFunction progress) override;
  bool GetWholeFile(const char* id, const char* localPath, FileInfo& info,
                    ProgressFunction progress) override;
  Status ReadDetails(const char* id, DocumentQuery& query) override;
  Status GetFileInfo(const char* id, FileInfo& info) override;
  bool AlwaysTrue() override;
  Status UploadNew(const char* path, const DocumentUploadParams& params, FileInfo& info,
                   ProgressFunction progress) override;
  Status UploadIteration(const char* id, const DocumentUploadParams& params, FileInfo& info,
                         ProgressFunction progress) override;
  bool ReadDir(const char* path, std::function<void(const char*, const char*, bool)> callback) override;
  bool ReadDirExt(const char* path, DirEntryCallback callback, ReadDirFlags flags) override;
  DirLister OpenDir(const char* path) override;
  bool IsPathWritable(const char* path) override;
  bool CanPathShowVersions(const char* path) override;
  bool CanPathShowDetails(const char* path) override;
  std::string GetServerURL() override;
  std::string GetServerKey() override;
  std::string BrowserInfo(const char* id) override;
  XliffServer* GetXliffServer() override;
  CheckoutServer* GetCheckoutServer() override;
  std::string EditAttributesURL(const char* id) override;
  std::string UIDFromVantryParams(const char* documentId, const char* workspaceId) override;
  std::string UIDFromVantryCadName(const char* cadName) override;
  bool SupportsSeparatedSources() override;
  bool SupportsVCSMetadata() override;
  std::shared_ptr<WalkedDirectory> OpenWalk(const char* path) override;

 private:
  bool GetCheckoutState(const char* id, VtCheckoutState& state) override;
  bool Checkout(const char* id, FileInfo& info) override;
  bool UndoCheckout(const char* id, FileInfo& info) override;
  Status Store(const char* id, const DocumentUploadParams& params, ProgressFunction progress) override;
  bool Checkin(const char* id, FileInfo& info) override;
  std::optional<TemporaryCheckouts> FindTemporaryCheckoutsOf(const char* id) override;
  std::optional<TemporaryCheckouts> FindTemporaryCheckoutsBelow(const char* path) override;
  bool VerifyCheckout(const char* id, FileInfo& info, VtCheckoutState& state) override;

  /// Each operation begins with a context of its own.
  [[nodiscard]] ServerContext Begin() const;
  [[nodiscard]] ServerFeatures Features();

  const std::shared_ptr<VtConnection> connection_;
  const std::string serverKey_;
  NrxXliffServer xliffServer_;  ///< handed out if the server translates
};

}  // namespace lxservices::cms_interface::vantry
