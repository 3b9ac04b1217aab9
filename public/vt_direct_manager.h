#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#ifndef VTDIRECT_API
#define VTDIRECT_API __attribute__((visibility("default")))
#endif

/// A Vantry server as a virtual file system.
///
/// An address is one text in either of two families. A VFS path names an object by the place where it is
/// ("korvufenloom-vfs://plm/Products/Bike/Folders/Frames/fork.lxz", or "//plm/Products/..."); a UID names it
/// by its id on the server ("korvufenloom-vt://plm.example/vt/?id=D1001&file=/fork.lxz").
///
/// Threads: every function may be called from any thread at any time: on the same server and the same
/// document as other threads, from inside callbacks, and while SetAppConfig, RegisterAuth,
/// RegisterTaskRunner, UpdateServerList, StartSession or the release of a session run on another thread. An
/// operation goes on with the server object that it began with; each later one sees what was written.
/// Settings are read whole, at the beginning of each step of an operation: finding the object of a path,
/// reading or writing it, making the address of the result. One that is written meanwhile counts from the
/// next step on. A task of GetFileAsync looks for its server when it runs.
///
/// The library starts no thread: a call runs on its caller's thread and blocks on the network where it says
/// that it makes requests. Callbacks run on the thread of the operation that they belong to, and no lock is
/// held meanwhile; so they may run on several threads at once, and what they share is the host's to guard.
/// The environment is read while operations run, so a host changes it (setenv) only while no other thread is
/// inside the library.
///
/// What holds for all threads does not hold for the arguments: a text, a map or a handle that one thread
/// hands in is not changed or destroyed by another one during the call.
///
/// Failures come back as false, the empty text or a status; nothing is thrown for them. Details go to the
/// trace (vtdirect/platform/trace.h). Text arguments are copied; no argument is kept beyond the call unless a
/// comment says so. A null address is answered like one that names nothing, without a trace.
///
/// A write that ends without an answer, because a limit of time ran out, the connection broke off or a
/// progress function gave false, fails like any other, but may have been carried out: nothing tells whether
/// it was, and nothing is sent a second time. The functions that write say what to ask before another try.
///
/// What a host's callback throws, and what the standard library throws when memory runs out, passes through
/// every function. The functions that store a file can throw more, and say so.
namespace VtDirectManager {

/// What a status callback is told.
enum StatusCode : std::int32_t {
  StatusOk = 0,                 ///< finished; the text is the UID of the result
  StatusConnectFailed = 1,      ///< no server could be reached for the address
  StatusServerRefused = 2,      ///< the server wants other credentials (ServerSupported only)
  StatusServerUnsupported = 3,  ///< the server is of a release that is not supported (ServerSupported only)
  StatusFileNotFound = 4,       ///< the server answered; the object is not there
  StatusCreateFailed = 7,       ///< creating a new document failed
  StatusUpdateFailed = 8,       ///< a new iteration of a document that was not checked out failed
  StatusCheckedOutUpdateFailed = 9,  ///< storing into, or checking in, a checked-out document failed
  StatusDownloadFailed = 10,         ///< a download failed
  StatusFileTooLarge = 11,           ///< an upload is above the server's size limit
};

/// The state of a checkout. The low byte holds flags of state; values from 0x8000 up are failures.
enum VtCheckoutStatus : std::int32_t {
  CheckoutNone = 0,                ///< not checked out, and a checkout is possible
  CheckoutByUserUnrecorded = 1,    ///< checked out by the connected user, but the UID is not that of the copy
  CheckoutByOther = 2,             ///< checked out by somebody else
  CheckoutInTempWorkspace = 0x11,  ///< the UID is that of a checkout in a temporary workspace
  CheckoutInWorkspace = 0x21,      ///< the UID is that of a working copy in a workspace of the user's own
  CheckoutStatusFailed = 0x8000,   ///< the state could not be found out
  CheckoutUnsupported = 0x9000,    ///< the server offers no checkout
  CheckoutNotPossible = 0xA000,    ///< not checked out, and the document cannot be checked out
};

/// Keys of the map of ReadDetails.
enum VtDetails : std::int32_t { DetailName = 16, DetailNumber = 17 };

/// What a listing delivers; bits.
enum ReadDirFlags : std::uint32_t {
  ReadDirFiles = 1,
  ReadDirFolders = 2,
  ReadDirDetails = 4,   ///< number and name of each document
  ReadDirVersions = 8,  ///< the versions of each document
};

/// Sets of these bits: ReadDirFiles | ReadDirDetails. A bit without a name passes through.
constexpr ReadDirFlags operator|(ReadDirFlags left, ReadDirFlags right) {
  return static_cast<ReadDirFlags>(static_cast<std::uint32_t>(left) | static_cast<std::uint32_t>(right));
}
/// The bits that both sets have.
constexpr ReadDirFlags operator&(ReadDirFlags left, ReadDirFlags right) {
  return static_cast<ReadDirFlags>(static_cast<std::uint32_t>(left) & static_cast<std::uint32_t>(right));
}
/// The bits that one of the two sets has.
constexpr ReadDirFlags operator^(ReadDirFlags left, ReadDirFlags right) {
  return static_cast<ReadDirFlags>(static_cast<std::uint32_t>(left) ^ static_cast<std::uint32_t>(right));
}
/// All bits that the set does not have, those without a name included.
constexpr ReadDirFlags operator~(ReadDirFlags flags) {
  return static_cast<ReadDirFlags>(~static_cast<std::uint32_t>(flags));
}
/// Adds the bits of the second set to the first.
constexpr ReadDirFlags& operator|=(ReadDirFlags& left, ReadDirFlags right) {
  return left = left | right;
}
/// Keeps those bits of the first set that the second has too.
constexpr ReadDirFlags& operator&=(ReadDirFlags& left, ReadDirFlags right) {
  return left = left & right;
}
/// Turns over those bits of the first set that the second has.
constexpr ReadDirFlags& operator^=(ReadDirFlags& left, ReadDirFlags right) {
  return left = left ^ right;
}

/// The kind of a document to upload.
enum FileType : std::int32_t { FileTypeFenlet = 0, FileTypeGeneral = 1, FileTypeUgc = 2 };

/// Keys of SetAppConfig.
enum ConfigItem : std::int32_t {
  ConfigUriStem = 0,                   ///< stem of the two URI schemes: stem + "-vfs" and stem + "-vt"
  ConfigLegacyVfsPaths = 1,            ///< flag, initially off: accept the legacy scheme "vndir"
  ConfigAuthoringApplication = 2,      ///< id of the authoring application; empty means "MERIDOX"
  ConfigRegisterAuthAppVersion = 3,    ///< application version to register with a server; empty means none
  ConfigAuthAppVersion = 4,            ///< version when registration gave none; empty means "310"
  ConfigTempWorkspacePrefix = 5,       ///< name prefix of temporary workspaces; empty means "FenloomTMP"
  ConfigTempWorkspaceDescription = 6,  ///< their description; empty means "ZVK Fenloom temporary workspace"
  ConfigBrowseDynamicDocuments = 7,    ///< flag, initially on: look at dynamic documents
  ConfigBrowseCadDocuments = 8,        ///< flag, initially off: look at CAD documents
  /// Longest JSON answer that is read into memory as a whole, as a decimal number of bytes; a longer one is
  /// broken. In memory it takes up to sixteen times as much. Empty means 67108864 (64 MiB). A listing that is
  /// handed on row by row may be longer.
  ConfigLargestJson = 9,
  /// Longest text within a JSON answer, as a decimal number of bytes; an answer with a longer one is broken
  /// from there on. Empty means 16777216 (16 MiB).
  ConfigLongestJsonText = 10,
};

/// Number and name of a document in a listing. Valid during the callback only.
struct DirEntryDetails {
  const char* number;    ///< the document's number
  const char* name;      ///< the document's name, which is not its file's
  const char* reserved;  ///< always null
};

/// One entry of an extended listing. Valid during the callback only.
struct DirEntryExt {
  const char* name;                ///< as it is in a VFS path, escaped
  bool isFolder;                   ///< a directory that can be listed, otherwise a document
  const DirEntryDetails* details;  ///< null unless asked for
  const char** versions;           ///< null-terminated, null unless asked for
  const char** versionIds;         ///< null-terminated, parallel to `versions`
};

/// What UploadFenletAsync takes beside the content. Read only for the length of the call.
struct UploadFenletParams {
  const char* viewablePath;                               ///< local viewable file, may be null
  const char* vcsPath;                                    ///< local metadata file, may be null
  const std::map<std::string, std::string>* sourceLinks;  ///< null means none
  const char* language;                                   ///< value of the language attribute, may be null
};

/// Keeps a server written off once it has failed, for as long as a host works through a batch. Opaque.
class Session;

/// Told how an operation ends. The text is valid for the call only and may be null.
using StatusCallback = std::function<void(StatusCode, const char*)>;
/// Told how a transfer goes: bytes so far, bytes in all (0 when unknown). False cancels the transfer.
using ProgressCallback = std::function<bool(std::size_t, std::size_t)>;

// ---- Settings, servers, sessions. None of these makes a request. ----

/// Writes a process-wide setting. ConfigUriStem is to be set before the servers are. A key that ConfigItem
/// does not name is ignored.
///
/// Flags differ on purpose: ConfigLegacyVfsPaths is on for every non-empty value, even "false"; the two
/// Browse flags are off for null, "" and exactly "false", and on for anything else.
/// @param value  null counts as empty, which brings back the default of a text
VTDIRECT_API void SetAppConfig(ConfigItem item, const char* value);

/// Replaces the host's list of servers.
///
/// A server that stays keeps its object, with its connection and its login; so does one whose URL went from
/// "https" to "http". The cache flag of ShouldInvalidateCache is set, even when nothing changed.
/// @param servers  nickname to server URL
VTDIRECT_API void UpdateServerList(const std::map<std::string, std::string>& servers);

/// Registers the function that a demand for authentication calls with the server's URL; it sets credentials
/// (vtdirect/platform/http_credentials.h) and gives true to try again, or gives false. Applies to servers
/// that exist already. Null answers every demand with false.
///
/// Called on the thread of the request, and so possibly on several threads at once. It may call the library,
/// on the server that asks too. A call that has begun is not ended by another registration.
VTDIRECT_API void RegisterAuth(bool (*callback)(const char* url));

/// Registers the function that runs the tasks of the asynchronous operations; it takes a task over and gives
/// whether it will run it. With null a task runs at once, inside the call that made it. Called on the thread
/// of the operation, and so possibly on several threads at once. A task can throw, as UploadAsync tells.
VTDIRECT_API void RegisterTaskRunner(bool (*runner)(std::function<void()>));

/// Starts a session: until the result is released, a server whose status query failed is not asked again, by
/// no thread. Release it on any thread.
VTDIRECT_API std::shared_ptr<Session> StartSession();

/// Calls back once per nickname, in the order of the nicknames, on this thread.
VTDIRECT_API void ReadRootDirs(void (*callback)(const char* nickname, void* user), void* user);

/// Whether what a host has cached of server contents is out of date. Starts true; UpdateServerList and each
/// successful upload set it.
/// @param clear  true resets the flag after the answer
VTDIRECT_API bool ShouldInvalidateCache(bool clear);

// ---- Addresses ----

/// Whether a text is a VFS path with a scheme. The bare form "//nickname/..." gives false, though every
/// operation takes it. Reads the text only.
VTDIRECT_API bool IsVFSPath(const char* text);

/// Whether a text is a UID with an id. Reads the text only.
VTDIRECT_API bool IsUID(const char* text);

/// Whether a text begins like an address of either family. Reads the text only.
VTDIRECT_API bool IsManaged(const char* text);

/// The scheme of VFS paths, without ":". The text stays valid and as it is for the life of the process, also
/// when ConfigUriStem is written; then another call gives another text.
VTDIRECT_API const char* GetVFSLocationPrefix();

/// Whether two UIDs name the same object: equal server and equal id. Two texts that are no UIDs compare
/// equal, however they differ. Reads the texts only.
VTDIRECT_API bool CompareUIDsEqual(const char* a, const char* b);

/// What a UID says. Every text may be empty but the first two.
struct ParsedUID {
  std::string server;       ///< key of the server, as GetLinkContext gives it, with its closing "/"
  std::string document;     ///< id of the document; of a temporary checkout, the one that it was taken from
  std::string workspace;    ///< id of the workspace, of whatever kind
  std::string workingCopy;  ///< id of the document in that workspace; empty without a workspace
  std::string fileName;     ///< plain, neither escaped as in a path nor as in a URL
  bool isTemporaryCheckout = false;  ///< the workspace was made for this checkout and goes with it
};

/// Takes a UID apart, so that no host reads its text. A checkout's UID names what the server knew when it was
/// made; GetCheckoutStatus and FindTemporaryCheckouts tell whether it is still so. Reads the text only.
/// @return nothing for null, for what is no UID, and for a UID with an empty id
[[nodiscard]] VTDIRECT_API std::optional<ParsedUID> ParseUID(const char* text);

/// The UID by which the content of a working copy is read: GetFile of a temporary checkout's own UID fetches
/// the document from before the checkout. Reads the text only; whether the copy is there is not asked.
/// @return the UID of the copy in its workspace; the empty text for a UID without a workspace, and for what is no
///         UID
[[nodiscard]] VTDIRECT_API std::string WorkingCopyUID(const char* text);

/// A canonical UID for any address, or the empty text. Makes requests unless `path` is a UID with a file
/// name.
VTDIRECT_API std::string GetUID(const char* path);

/// The VFS path of the newest iteration, or the empty text. Makes requests for a UID only.
VTDIRECT_API std::string GetVFSPathLatest(const char* path);

/// The VFS path of exactly this iteration, or the empty text. Makes requests.
VTDIRECT_API std::string GetVFSPathVersioned(const char* path);

/// The VFS path of the folder that holds the object, or the empty text. Makes requests.
VTDIRECT_API std::string GetVFSFolderPath(const char* path);

/// The UID of the latest document with a CAD name, or the empty text. Adds the server to the list when it is
/// not there and is supported. Makes requests.
VTDIRECT_API std::string UIDFromVantryCadName(const char* url, const char* cadName);

/// The UID of a document that the server knows by its id, or the empty text. Makes requests.
/// @param workspace  id of the workspace that holds it; null or empty means none
/// @param remember   whether a server that is not in the list is added to it
VTDIRECT_API std::string UIDFromVantryParams(const char* url, const char* documentId, const char* workspace,
                                             bool remember);

/// The URL of the address's server as the host gave it, or the empty text. Makes no request.
VTDIRECT_API std::string GetServerURL(const char* path);

/// The nickname of the address's server, or the empty text. Makes no request.
VTDIRECT_API std::string GetServerNickname(const char* path);

// ---- What a server can do ----

/// Whether a server can be used: asks its version, follows the address that it calls its own, and probes it.
/// The server need not be in the list and is not entered. Makes requests.
/// @param url      server URL; null gives false with both outputs untouched
/// @param code     may be null; StatusOk, StatusConnectFailed, StatusServerRefused or StatusServerUnsupported
/// @param message  may be null; receives the URL to use instead of `url`, empty when `url` is to be used. A
///                 server that fails before its address is looked at leaves it as it was.
VTDIRECT_API bool ServerSupported(const char* url, StatusCode* code, std::string* message);

/// The address at which a web browser shows the object. False, `url` untouched, when the object is not found.
VTDIRECT_API bool BrowserInfo(const char* path, std::string& url);

/// The address at which a web browser edits the attributes of a working copy; empty on failure. UIDs only.
VTDIRECT_API std::string VantryEditAttributesURL(const char* path);

/// Whether a listing of this path can show details; false without a server. May make requests.
VTDIRECT_API bool CanPathShowDetails(const char* path);
/// Whether a listing of this path can show versions; false without a server. May make requests.
VTDIRECT_API bool CanPathShowVersions(const char* path);
/// Whether documents can be created at this path; false without a server. Makes no request.
VTDIRECT_API bool IsPathWritable(const char* path);
/// Whether the server offers checkout; false without a server. Makes no request.
VTDIRECT_API bool IsCheckoutSupported(const char* path);
/// Whether the server offers translation; false without a server. May make requests.
VTDIRECT_API bool TranslationSupported(const char* path);
/// Whether the server keeps sources apart; false without a server. Makes a request on first use.
VTDIRECT_API bool SupportsSeparatedSources(const char* path);
/// Whether the server takes metadata files; false without a server. Makes a request on first use.
VTDIRECT_API bool SupportsVCSMetadata(const char* path);

// ---- Directories ----
//
// A path is handed to the server as it is, and a level counts only when a "/" closes it: "//plm/Products"
// lists nothing, "//plm/Products/" lists the products. A UID lists its server's root. Entries are delivered
// on this thread, during the call.

/// An open directory. Opaque.
struct DirHandleData;
/// Owns an open directory; empty when there is none. It is destroyed inside the library.
using DirHandle = std::unique_ptr<DirHandleData, void (*)(DirHandleData*)>;

/// Lists the files and folders of a directory. Makes requests. The documents of a folder pass through row by
/// row where the server lists them by its newer services; contexts, workspaces and the answer of an older
/// server's gateway are held whole.
/// @param callback  once per entry; the name is valid during the call only
/// @param user      handed through to the callback untouched
/// @return false without a server (nothing is sent), for a path that is no directory, and when the listing
///         failed part of the way; what was delivered before that stays delivered. Each is traced.
VTDIRECT_API bool ReadDir(const char* path, void (*callback)(const char* name, bool isFolder, void* user),
                          void* user);

/// ReadDir with details and versions as far as `flags` asks and the server can show them.
///
/// A server that browses folders by its newer services delivers files and folders whatever bits 1 and 2 say,
/// so a host that wants one kind looks at `isFolder`.
VTDIRECT_API bool ReadDirExt(const char* path, void (*callback)(DirEntryExt& entry, void* user), void* user,
                             ReadDirFlags flags);

/// Walks to a directory now, to read it later without that walk. Makes requests. The handle keeps what it
/// needs of the server alive through an UpdateServerList. An older server's answer is kept with it until it
/// is closed: up to half a megabyte in memory, more in a temporary file.
/// @return an empty handle when there is no such directory or it cannot be reached
[[nodiscard]] VTDIRECT_API DirHandle OpenDir(const char* path);

/// Lists an open directory, as often as wanted, and on several threads at once. Makes requests, except where
/// opening has fetched the listing. The callback may close the handle; the listing then goes on to its end.
/// @return false for an empty handle and when the listing failed; nothing is traced
VTDIRECT_API bool ReadDir(const DirHandle& handle, void (*callback)(DirEntryExt& entry, void* user),
                          void* user, ReadDirFlags flags);

/// A directory that a walk has come to. Opaque.
struct WalkedDirData;
/// Shares a directory of a walk; empty when there is none. Held, read and let go on any thread.
using WalkedDir = std::shared_ptr<const WalkedDirData>;

/// Walks to a directory now, to list it and all below it. Makes requests, those of OpenDir. The result keeps the
/// server in use alive, also after an UpdateServerList.
/// @return empty when there is no such directory or it cannot be reached
[[nodiscard]] VTDIRECT_API WalkedDir OpenWalk(const char* path);

/// Lists a directory of a walk. Each folder comes with a handle by which it is listed later, without a search
/// for its path. That saves one request a folder, often two. Makes requests.
///
/// Meant for one pass over a tree. The first listing of a directory may go by what the listing above it told of
/// the folders in it; a later one asks again. A directory that the server does not find any more is looked up
/// by its path, once.
/// @param callback  once per entry, folders first, on this thread; `folder` is empty for a document. It may keep
///                  `folder`, list it at once, or hand it to another thread.
/// @param user      handed through to the callback untouched
/// @param flags     what is delivered; nothing else is asked for. ReadDirDetails and ReadDirVersions count as
///                  far as the server can show them.
/// @return false for an empty directory and when the listing failed; what was delivered before that stays
///         delivered, and nothing is traced
VTDIRECT_API bool ReadWalkedDir(const WalkedDir& directory,
                                void (*callback)(DirEntryExt& entry, const WalkedDir& folder, void* user),
                                void* user, ReadDirFlags flags);

/// Whether an object or a directory is there. Makes requests.
VTDIRECT_API bool FileOrFolderExists(const char* path);

/// Whether a new document may be created at a path: nothing is there, and no document anywhere on the server
/// has that name. False without a server. Makes requests.
VTDIRECT_API bool FileNameAvailable(const char* path);

// ---- Questions about one object ----

/// Whether the object is there. Makes requests.
VTDIRECT_API bool FileExists(const char* path);

/// The file name of an address, escaped as in a VFS path, or the empty text. Makes a request only when the
/// text itself holds no name.
VTDIRECT_API std::string GetFileName(const char* path);

/// The version and the UID of an object's newest iteration. Makes requests.
///
/// Here and in the two functions below an object counts as its own newest iteration when the server gives it and does
/// not tell its versions. An Outcome has an entry of the step stepListVersions then.
/// @return false, outputs untouched, when the object is not found
VTDIRECT_API bool GetLatest(const char* path, std::string& version, std::string& uid);

/// The UID of an object's newest iteration; `path` itself, as it came, when it is that already; the empty
/// text on failure. Makes requests.
VTDIRECT_API std::string GetLatestUPath(const char* path);

/// Whether an object is the newest iteration. UIDs only. Makes requests.
///
/// A server that cannot be reached or used is written off in every live Session.
/// @param currentVersion  written on success only, as is `latestVersion`
/// @param latestUid       may be null; receives the UID of the newest iteration by one more request, which is
///                        sent after a failure too and then gives the empty text; untouched when `path` is no
///                        UID with an id or has no server
/// @return 0 newest, 1 a newer one exists, -1 on failure
VTDIRECT_API int GetStatus(const char* path, std::string& currentVersion, std::string& latestVersion,
                           std::string* latestUid);

/// The key of an address's server. Two links are on the same server if their keys are equal. Makes no request.
/// @return false, `context` untouched, without a server
VTDIRECT_API bool GetLinkContext(const char* path, std::string& context);

/// Reads details of an object. Makes requests, for an empty map too.
/// @param details  the keys that are in it say what is wanted, and their values are replaced; an unknown key
///                 keeps its value
/// @return false, map untouched, when the object is not found
VTDIRECT_API bool ReadDetails(const char* path, std::map<VtDetails, std::string>& details);

// ---- Download ----

/// Downloads an object's content into a local file, on this thread, to the end. Makes requests.
///
/// `status` is called once or twice; the last call is the end of the operation: StatusOk with the UID, or
/// StatusDownloadFailed with null, before it StatusConnectFailed when no server could be found. A partly
/// written local file is not removed.
/// @param path       the UID of a temporary checkout gives the content from before it (WorkingCopyUID)
/// @param localPath  full file name; its directory must exist; what was there is replaced, also a file that the
///                   user has edited: a host that must not lose that looks first
/// @param uid        receives the UID on success
/// @param status     may be empty
/// @param progress   may be empty
VTDIRECT_API bool GetFile(const char* path, const char* localPath, std::string& uid, StatusCallback status,
                          ProgressCallback progress);

/// What GetFile takes beside the address. Owns what it holds.
struct DownloadOptions {
  StatusCallback status;      ///< may be empty
  ProgressCallback progress;  ///< may be empty
  /// Whether the content must be as long as the server's record of the document says; one that is longer or
  /// shorter is then a failed download. The transfer of a longer one ends with the first byte too many, so that
  /// no server can fill the disk. The file stays as it came, as after any failure. Nothing is compared when the
  /// record tells no length; when `localPath` is no regular file, nobody can tell that a content is shorter.
  bool compareSize = false;
};

/// GetFile, and with `compareSize` a comparison of lengths. The requests are the same.
VTDIRECT_API bool GetFile(const char* path, const char* localPath, std::string& uid,
                          const DownloadOptions& options);

/// The length of the content that GetFile fetches, in bytes, as the server's record of the document tells it.
/// Makes requests; transfers no content.
/// @return nothing when the object is not found, has no content, or its record tells no length
[[nodiscard]] VTDIRECT_API std::optional<std::uint64_t> GetContentSize(const char* path);

/// Tests the server's connection on this thread, then hands a GetFile to the task runner, where the callbacks
/// run. The outcome arrives by `status`.
/// @return whether the task was accepted; false after StatusConnectFailed when the server cannot be reached,
///         and without a call when the runner refuses
VTDIRECT_API bool GetFileAsync(const char* path, const char* localPath, StatusCallback status,
                               ProgressCallback progress);

/// GetFileAsync with the options of GetFile.
VTDIRECT_API bool GetFileAsync(const char* path, const char* localPath, const DownloadOptions& options);

/// The direct URL of an object's content, for a downloader of the host's own. Makes requests; transfers
/// nothing.
/// @param url       emptied for an object without content
/// @param cacheKey  may be null; a key under which a host may cache that content; untouched without content
/// @return false, outputs untouched, when the object is not found
VTDIRECT_API bool GetFileDownloadURL(const char* path, std::string& url, std::string* cacheKey);

// ---- Upload ----

/// Stores a local file at an address, on this thread, to the end. Makes requests.
///
/// A VFS path names a new document and never overwrites one; a UID gets a new iteration, or, when it is that
/// of a working copy, the file is stored into the checkout. A checkout in a temporary workspace is checked in
/// after the store without being asked to.
///
/// If the server has only one document of this name, a path finds it in whatever folder it is, so Upload refuses
/// to create a second one. A version that no document has ("fork.lxz|-.0") gets around this: the path then finds
/// nothing, and the version is not part of the new name. List the folder before you do so.
///
/// `status` is called at most once: StatusOk with the UID of the result; StatusConnectFailed when the server
/// does not answer; StatusCreateFailed, StatusUpdateFailed or StatusCheckedOutUpdateFailed by what was tried;
/// StatusFileTooLarge. It is not called when the address cannot be resolved or names a document that exists.
/// Upload progress is told of the bytes sent.
///
/// After a failure without an answer FileExists tells whether a new document was stored, and a later version
/// from GetLatest whether a new iteration was. A working copy can be stored once more, since the last store
/// counts, after GetCheckoutStatus has told that it was not checked in.
/// @throws std::invalid_argument, std::out_of_range  when the server names a place for the content and its
///         stream id is no number, or too large a one; nothing has been stored then
/// @param mainPath      local file of the primary content; null is a failure that is traced and told to
///                      `status`, without a request
/// @param viewablePath  local viewable file; null or empty for none
/// @param sourceLinks   escaped name, as GetSourceLinks gives it, to address; one that cannot be resolved is
///                      traced and dropped, and links that are not named here are taken away
/// @param status        may be empty
/// @param progress      may be empty
/// @param language      value of the language attribute; may be null
/// @param checkIn       checks a working copy in after the store
VTDIRECT_API bool Upload(const char* path, const char* mainPath, const char* viewablePath,
                         const std::map<std::string, std::string>& sourceLinks, StatusCallback status,
                         ProgressCallback progress, const char* language, bool checkIn);

/// Upload for a document of any kind, with nothing but its primary content. A temporary checkout is checked
/// in only when asked to. Over a Fenlet document the kinds general and ugc drop its viewable, metadata and
/// links, and no function tells which kind a document has.
/// @param kind  an unknown value counts as FileTypeFenlet
/// @throws      what Upload throws
VTDIRECT_API bool Upload(FileType kind, const char* path, const char* mainPath, StatusCallback status,
                         ProgressCallback progress, const char* language, bool checkIn);

/// Like Upload up to the transfer, which is handed to the task runner; the callbacks run there.
///
/// What Upload throws for a stream id leaves the task, on the thread of the runner, and `status` is then not
/// called: a runner that lets it pass out of its thread ends the process. Runners catch what a task throws.
/// @return whether the task was accepted
VTDIRECT_API bool UploadAsync(const char* path, const char* mainPath, const char* viewablePath,
                              const std::map<std::string, std::string>& sourceLinks, StatusCallback status,
                              ProgressCallback progress, const char* language, bool checkIn);
/// The same for a document of any kind, with nothing but its primary content.
VTDIRECT_API bool UploadAsync(FileType kind, const char* path, const char* mainPath, StatusCallback status,
                              ProgressCallback progress, const char* language, bool checkIn);

/// UploadAsync with all that a Fenlet document can have. `params` is read during this call only. Its task
/// throws what that of UploadAsync throws.
VTDIRECT_API bool UploadFenletAsync(const char* path, const char* mainPath, const UploadFenletParams& params,
                                    StatusCallback status, ProgressCallback progress, bool checkIn);

/// Whether a store into a working copy is followed by its check-in.
enum class CheckInWish : std::int32_t {
  /// As Upload does without being asked: a Fenlet document in a temporary workspace is checked in, and nothing
  /// else is.
  ByAddress = 0,
  CheckIn = 1,    ///< always
  NoCheckIn = 2,  ///< never: what is stored stays in the working copy, in a temporary workspace too
};

/// What Store takes beside address and content. Read only for the length of the call; callbacks are copied.
struct StoreOptions {
  FileType kind = FileTypeFenlet;                ///< an unknown value counts as FileTypeFenlet
  CheckInWish checkIn = CheckInWish::ByAddress;  ///< plays no part without a working copy
  const char* language = nullptr;                ///< value of the language attribute
  const char* viewablePath = nullptr;            ///< Fenlet documents only
  const char* vcsPath = nullptr;                 ///< metadata file; Fenlet documents only
  const std::map<std::string, std::string>* sourceLinks = nullptr;  ///< as Upload; Fenlet documents only
  StatusCallback status = {};                                       ///< called as by Upload
  ProgressCallback progress = {};                                   ///< called as by Upload
};

/// Upload for a document of any kind, with all that it can have, and with a say in the check-in: Upload
/// checks a temporary checkout in whether or not it is asked to. Makes requests, on this thread, to the end.
/// @throws what Upload throws
VTDIRECT_API bool Store(const char* path, const char* mainPath, const StoreOptions& options);

/// Like Store up to the transfer, which is handed to the task runner; the callbacks run there. Its task
/// throws what that of UploadAsync throws.
/// @return whether the task was accepted
VTDIRECT_API bool StoreAsync(const char* path, const char* mainPath, const StoreOptions& options);

/// The documents that a document was made from: escaped name to UID, empty for one that cannot be read. UIDs
/// only. Makes requests.
/// @param links  entries under other names stay; unchanged on failure, so that a question that failed looks like
///               a document without links. Ask an Outcome before a store hands over what was read.
VTDIRECT_API void GetSourceLinks(const char* path, std::map<std::string, std::string>& links);

/// Whether a document exists and has no content yet. Makes requests.
VTDIRECT_API bool ShouldCreate(const char* path);

// ---- Checkout ----

/// Checks a document out and gives the UID of the working copy, which the host must use from then on; the
/// empty text on failure. Makes requests. After a failure without an answer GetCheckoutStatus tells whether
/// the document is checked out. The library keeps the UID nowhere: of a host that is killed meanwhile,
/// FindTemporaryCheckouts finds the working copy.
VTDIRECT_API std::string Checkout(const char* path);

/// Checks a working copy in and gives the UID to go on with; the empty text on failure. UIDs only. Makes
/// requests. After a failure without an answer GetCheckoutStatus tells whether it is still checked out.
VTDIRECT_API std::string Checkin(const char* path);

/// Throws a working copy away and gives the UID to go on with; the empty text on failure. UIDs only. Makes
/// requests. After a failure without an answer GetCheckoutStatus tells whether it is still checked out.
VTDIRECT_API std::string UndoCheckout(const char* path);

/// The state of a checkout. Makes requests. As with VerifyCheckout, what was not answered may show no
/// checkout; an Outcome tells of it.
/// @param user  may be null; receives who holds the checkout, untouched without one
VTDIRECT_API VtCheckoutStatus GetCheckoutStatus(const char* path, std::string* user);

/// Confirms that a remembered checkout still exists, and renews one in a temporary workspace that could not
/// be confirmed: undoes it, with the content that was stored into it, and checks out again. A question that
/// merely failed leads to that too, so a host asks GetCheckoutStatus first. What was not answered, or
/// by the page of a proxy, shows no checkout, and may read CheckoutNotPossible or CheckoutNone: a host looks
/// through all entries of an Outcome (outcome.h) before it believes that the checkout has ended. UIDs only. Makes
/// requests. After a failure without an answer GetCheckoutStatus tells whether the document is checked out.
/// @param uid  emptied first; the UID to go on with, which may differ from `path`
VTDIRECT_API VtCheckoutStatus VerifyCheckout(const char* path, std::string& uid);

/// A working copy of the connected user in a temporary workspace.
struct TemporaryCheckout {
  /// The UID that Checkout gave, for Checkin, UndoCheckout, VerifyCheckout and the stores. Empty when the
  /// server does not tell the document that the copy was taken from.
  std::string uid;
  std::string workspaceName;   ///< as the server has it, with the prefix of temporary workspaces
  std::string documentNumber;  ///< of the working copy, as the server has it
  std::string fileName;        ///< plain
  std::string version;         ///< of the document that it was taken from: "B.3"
};

/// Finds checkouts that nobody remembers, by what the server tells alone: the temporary workspaces are those
/// whose name begins with ConfigTempWorkspacePrefix, and a working copy is what the connected user has
/// checked out in one. Changes nothing. Makes requests: for a document one for itself, one for the workspaces
/// of its context, one for each temporary workspace, one for each copy that is found; for a context the same
/// without the first; for a server, or one of its upper directories, one more for the contexts and then for
/// each.
/// @param path  a document; or a directory above folders and workspaces, "//plm/", "//plm/Products/" or
///              "//plm/Products/Bike/", or a UID without an id, for the server
/// @return in the server's order; nothing when any request failed, so that an empty list means that there are
///         none
[[nodiscard]] VTDIRECT_API std::optional<std::vector<TemporaryCheckout>> FindTemporaryCheckouts(
    const char* path);

/// Turns a checkout that was remembered in the older form, "workspace|working id", into a UID of today's
/// form. Makes no request unless `uid` has no file name.
/// @param legacy  null or empty gives `uid` back; a text without "|" gives a UID with an empty id
VTDIRECT_API std::string ConvertLegacyCheckout(const char* uid, const char* legacy);

// ---- Translation ----

/// Sends a source XLIFF file for a document: its first, or a new iteration of the one that it has. UIDs only.
/// Makes requests. After a failure without an answer GetUIDForSourceXliff tells whether there is a first one,
/// and a later version of it from GetLatest whether there is a new iteration.
/// @param language  language of the source; travels as it comes
/// @throws          what Upload throws
VTDIRECT_API bool UploadSourceXliff(const char* path, const char* xliffPath, const char* language);

/// The source XLIFF of a document. UIDs only. Makes requests.
/// @return false without one, and when the server could not tell, which an Outcome tells apart; true with both
///         arguments as they were when it cannot be read
VTDIRECT_API bool GetUIDForSourceXliff(const char* path, std::string& uid, std::string& language);

/// The translations of a document: language to UID, added to the map. UIDs only. Makes requests.
/// @return whether the map then holds as many entries as the server lists: pass an empty map. One translation
///         that cannot be read makes the result false, and the others are delivered.
VTDIRECT_API bool GetXliffTranslations(const char* path, std::map<std::string, std::string>& translations);

/// Marks a translated document as published. UIDs only. Makes requests. After a failure without an answer it
/// is set once more: that changes nothing where it is set already.
VTDIRECT_API bool SetXliffPublished(const char* path);

}  // namespace VtDirectManager
