#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/status.h"
#include "browsing/dir_entry.h"
#include "browsing/document_query.h"
#include "browsing/temporary_checkouts.h"
#include "browsing/walked_directory.h"
#include "documents/checkout/checkout_state.h"
#include "documents/reading/file_info.h"
#include "documents/storing/upload_params.h"

/// A server as a tree of directories and files.
///
/// Paths are relative to the server; an id is a CheckoutId or a plain object id, never a whole UID. A text
/// result is empty on failure. Everything runs on the caller's thread and blocks on the network where a
/// comment says that requests are made. Any number of threads may use one server at once. No server failure
/// leaves an operation as an exception, but for a stream id that is no number: it leaves the three that store
/// a file.
namespace lxservices::cms_interface {

class CheckoutServer;
class XliffServer;

/// Bytes so far, bytes in all (0 when unknown); false cancels.
using ProgressFunction = std::function<bool(std::size_t, std::size_t)>;

class FileServer {
 public:
  using ReadDirFlags = cms_interface::ReadDirFlags;

  virtual ~FileServer() = default;

  /// Whether the server gives useful data. Up to two requests.
  [[nodiscard]] virtual bool TestConnection() = 0;
  /// The id of the object at a path. Makes requests.
  [[nodiscard]] virtual std::string ResolvePath(const char* path) = 0;
  /// The relative path of an object. Makes requests.
  /// @param folderOnly  the path of the folder that holds it, with its closing "/", or of the workspace,
  /// without one
  /// @param latestForm  the path that always means the newest iteration
  [[nodiscard]] virtual std::string GetVFSPath(const char* id, bool folderOnly, bool latestForm) = 0;
  /// Downloads the content into a local file. Two requests.
  [[nodiscard]] virtual bool GetFile(const char* id, const char* localPath, FileInfo& info,
                                     ProgressFunction progress) = 0;
  /// The same, and a content that is not as long as its record says is a failure. A kind of server that knows of no
  /// lengths has no other way than GetFile.
  [[nodiscard]] virtual bool GetWholeFile(const char* id, const char* localPath, FileInfo& info,
                                          ProgressFunction progress) {
    return GetFile(id, localPath, info, std::move(progress));
  }
  /// Fills what the query asks for. Makes requests.
  virtual Status ReadDetails(const char* id, DocumentQuery& query) = 0;
  /// Reads the summary of an object. One request.
  virtual Status GetFileInfo(const char* id, FileInfo& info) = 0;
  /// True. Nothing calls it; its place among the operations is kept.
  [[nodiscard]] virtual bool AlwaysTrue() = 0;
  /// Creates a document at a path. Makes requests.
  /// @throws std::invalid_argument, std::out_of_range  as UploadContents does
  virtual Status UploadNew(const char* path, const DocumentUploadParams& params, FileInfo& info,
                           ProgressFunction progress) = 0;
  /// Makes a new iteration of a document. Makes requests.
  /// @throws what UploadNew throws
  virtual Status UploadIteration(const char* id, const DocumentUploadParams& params, FileInfo& info,
                                 ProgressFunction progress) = 0;
  /// Lists files and directories: name, id, isDirectory. Makes requests.
  [[nodiscard]] virtual bool ReadDir(const char* path,
                                     std::function<void(const char*, const char*, bool)> callback) = 0;
  /// Lists a directory. What was delivered before a failure stays delivered. Makes requests.
  [[nodiscard]] virtual bool ReadDirExt(const char* path, DirEntryCallback callback, ReadDirFlags flags) = 0;
  /// A lister of a directory that is resolved now and read later; empty when there is none. Makes requests.
  [[nodiscard]] virtual DirLister OpenDir(const char* path) = 0;
  /// Whether documents can be created at a path. No request.
  [[nodiscard]] virtual bool IsPathWritable(const char* path) = 0;
  /// Whether a listing of a path can show versions. The first call makes requests.
  [[nodiscard]] virtual bool CanPathShowVersions(const char* path) = 0;
  /// Whether a listing of a path can show details. The first call makes requests.
  [[nodiscard]] virtual bool CanPathShowDetails(const char* path) = 0;
  /// The URL of the connection, as it was given.
  [[nodiscard]] virtual std::string GetServerURL() = 0;
  /// The server's key in the server table.
  [[nodiscard]] virtual std::string GetServerKey() = 0;
  /// The page of an object for a web browser. No request; the id is not checked.
  [[nodiscard]] virtual std::string BrowserInfo(const char* id) = 0;
  /// The translation service, or null. The server owns it. The first call makes requests.
  [[nodiscard]] virtual XliffServer* GetXliffServer() = 0;
  /// The checkout service; owned by the server.
  [[nodiscard]] virtual CheckoutServer* GetCheckoutServer() = 0;
  /// The page that edits a working copy's attributes. Makes requests.
  [[nodiscard]] virtual std::string EditAttributesURL(const char* id) = 0;
  /// The id of a document in a workspace. Makes requests.
  [[nodiscard]] virtual std::string UIDFromVantryParams(const char* documentId, const char* workspaceId) = 0;
  /// The id of the latest document with a CAD name. Makes requests.
  [[nodiscard]] virtual std::string UIDFromVantryCadName(const char* cadName) = 0;
  /// Whether the server keeps sources apart. The first call makes a request; a failure is remembered as no.
  [[nodiscard]] virtual bool SupportsSeparatedSources() = 0;
  /// Whether the server takes metadata files. Shares the request of SupportsSeparatedSources.
  [[nodiscard]] virtual bool SupportsVCSMetadata() = 0;
  /// A directory that a walk begins at; null when there is none, and for a kind of server that can't be walked
  /// so. Makes the requests of OpenDir.
  [[nodiscard]] virtual std::shared_ptr<WalkedDirectory> OpenWalk(const char* /*path*/) { return nullptr; }
};

/// Checking documents out and in. Ids are CheckoutIds; false, traced, on failure. Everything makes requests
/// on the caller's thread.
class CheckoutServer {
 public:
  virtual ~CheckoutServer() = default;

  /// Reads the state of a document.
  [[nodiscard]] virtual bool GetCheckoutState(const char* id, VtCheckoutState& state) = 0;
  /// Checks a document out; the summary carries the id to go on with.
  [[nodiscard]] virtual bool Checkout(const char* id, FileInfo& info) = 0;
  /// Throws a working copy away.
  [[nodiscard]] virtual bool UndoCheckout(const char* id, FileInfo& info) = 0;
  /// Puts a new iteration into the workspace of a checkout.
  /// @throws std::invalid_argument, std::out_of_range  as UploadContents does
  virtual Status Store(const char* id, const DocumentUploadParams& params, ProgressFunction progress) = 0;
  /// Makes a working copy the document's next iteration.
  [[nodiscard]] virtual bool Checkin(const char* id, FileInfo& info) = 0;
  /// The connected user's working copies of a document in temporary workspaces; nothing on failure. Changes
  /// nothing.
  [[nodiscard]] virtual std::optional<TemporaryCheckouts> FindTemporaryCheckoutsOf(const char* id) = 0;
  /// Those of all documents in a context, of a kind of contexts, or of the server; nothing on failure and for
  /// a path that leads to none of these. Changes nothing.
  [[nodiscard]] virtual std::optional<TemporaryCheckouts> FindTemporaryCheckoutsBelow(const char* path) = 0;
  /// Confirms a checkout, and renews one in a temporary workspace that is out of date.
  [[nodiscard]] virtual bool VerifyCheckout(const char* id, FileInfo& info, VtCheckoutState& state) = 0;
};

namespace vantry {

/// A server of the Vantry kind, which answers the questions that only such a server has.
class VantryFileServer : public FileServer {};

}  // namespace vantry
}  // namespace lxservices::cms_interface
