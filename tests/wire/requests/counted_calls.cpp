#include "tests/wire/requests/counted_calls.h"

#include <atomic>
#include <fstream>
#include <memory>

#include "public/vt_direct_manager.h"
#include "public/vt_direct_utils.h"
#include "tests/support/temporary_directory.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

constexpr const char* url = "https://plm.example/vt/";
constexpr const char* uid = "korvufenloom-vt://plm.example/vt/?id=D1";
constexpr const char* uidWithName = "korvufenloom-vt://plm.example/vt/?id=D1&file=/fork.lxz";
constexpr const char* olderUid = "korvufenloom-vt://plm.example/vt/?id=D0";
constexpr const char* uidWithSource = "korvufenloom-vt://plm.example/vt/?id=D4";
constexpr const char* checkedOutUid = "korvufenloom-vt://plm.example/vt/?id=D2";
constexpr const char* workspaceUid = "korvufenloom-vt://plm.example/vt/?id=D3|W1";
constexpr const char* temporaryUid = "korvufenloom-vt://plm.example/vt/?id=D2|W9|D3|T";
constexpr const char* path = "//plm/Products/Bike/Folders/Frames/fork.lxz";
constexpr const char* versionPath = "//plm/Products/Bike/Folders/Frames/fork.lxz|A.1";
constexpr const char* freePath = "//plm/Products/Bike/Folders/Frames/new.lxz";
constexpr const char* folder = "//plm/Products/Bike/Folders/Frames/";
constexpr const char* workspace = "//plm/Products/Bike/Workspaces/Mine/";
constexpr auto everything = ReadDirFiles | ReadDirFolders | ReadDirDetails | ReadDirVersions;

const TemporaryDirectory& LocalFiles() {
  static const TemporaryDirectory directory;
  return directory;
}

// Where this thread's downloads go and its uploads come from.
std::string LocalFile() {
  static std::atomic<int> threads = 0;
  static thread_local const int thread = ++threads;
  const std::string file = LocalFiles().File("local" + std::to_string(thread));
  std::ofstream(file) << "bytes";
  return file;
}

void CountName(const char*, bool, void* user) {
  ++*static_cast<int*>(user);
}

void CountEntry(DirEntryExt&, void* user) {
  ++*static_cast<int*>(user);
}

bool List(const char* address) {
  int entries = 0;
  return ReadDir(address, CountName, &entries) && entries > 0;
}

bool ListExt(const char* address) {
  int entries = 0;
  return ReadDirExt(address, CountEntry, &entries, everything) && entries > 0;
}

bool Status(const char* address, bool withUid) {
  std::string current;
  std::string latest;
  std::string latestUid;
  const int status = GetStatus(address, current, latest, withUid ? &latestUid : nullptr);
  return status == 0 && (!withUid || latestUid == uidWithName);
}

bool Details(const char* address) {
  std::map<VtDetails, std::string> details{{DetailName, ""}, {DetailNumber, ""}};
  return ReadDetails(address, details) && details[DetailName] == "Fork" && details[DetailNumber] == "42";
}

bool Latest(const char* address) {
  std::string version;
  std::string latest;
  return GetLatest(address, version, latest) && version == "A.2" && latest == uidWithName;
}

bool Download(const char* address) {
  std::string result;
  return GetFile(address, LocalFile().c_str(), result, {}, {});
}

bool DownloadUrl(const char* address) {
  std::string result;
  return GetFileDownloadURL(address, result, nullptr) && result == "https://plm.example/content/1";
}

bool Information(const char* address) {
  std::string result;
  return BrowserInfo(address, result);
}

// The outcome arrives by the callback, which the task runner calls before this returns.
StatusCallback Into(bool& done) {
  return [&done](StatusCode code, const char*) { done = code == StatusOk; };
}

bool DownloadLater() {
  bool done = false;
  return GetFileAsync(uid, LocalFile().c_str(), Into(done), {}) && done;
}

bool UploadPlain(const char* address) {
  bool done = false;
  return Upload(FileTypeGeneral, address, LocalFile().c_str(), Into(done), {}, nullptr, false) && done;
}

bool UploadPlainLater() {
  bool done = false;
  return UploadAsync(FileTypeGeneral, uid, LocalFile().c_str(), Into(done), {}, nullptr, false) && done;
}

bool UploadIntoCheckout() {
  bool done = false;
  return Upload(temporaryUid, LocalFile().c_str(), "", {}, Into(done), {}, nullptr, false) && done;
}

bool UploadIntoCheckoutLater() {
  bool done = false;
  const UploadFenletParams params{"", nullptr, nullptr, nullptr};
  return UploadFenletAsync(temporaryUid, LocalFile().c_str(), params, Into(done), {}, false) && done;
}

bool StoreIntoCheckout() {
  bool done = false;
  StoreOptions options;
  options.checkIn = CheckInWish::NoCheckIn;
  options.status = Into(done);
  return Store(temporaryUid, LocalFile().c_str(), options) && done;
}

bool StoreIntoCheckoutLater() {
  bool done = false;
  StoreOptions options;
  options.checkIn = CheckInWish::NoCheckIn;
  options.status = Into(done);
  return StoreAsync(temporaryUid, LocalFile().c_str(), options) && done;
}

bool FindsTheCheckout(const char* address) {
  const auto found = FindTemporaryCheckouts(address);
  return found && found->size() == 1 &&
         found->front().uid == "korvufenloom-vt://plm.example/vt/?id=D1|W9|D3|T&file=/fork.lxz";
}

bool SourceLinks() {
  std::map<std::string, std::string> links;
  GetSourceLinks(uidWithSource, links);
  return links.size() == 1 && links["wheel.lxz"] == uidWithName;
}

bool Verify() {
  std::string result;
  return VerifyCheckout(temporaryUid, result) == CheckoutInTempWorkspace && !result.empty();
}

CountedCall UploadsXliffOf(const char* address) {
  const auto upload = [address] { return UploadSourceXliff(address, LocalFile().c_str(), "en"); };
  return {upload, [] {}, true, true};
}

bool FindSourceXliff() {
  std::string found;
  std::string language;
  return GetUIDForSourceXliff(uid, found, language) && language == "en" &&
         found == "korvufenloom-vt://plm.example/vt/?id=D5&file=/fork.lxz";
}

bool ListTranslations() {
  std::map<std::string, std::string> translations;
  return GetXliffTranslations(uid, translations) && translations.size() == 2;
}

bool Supported() {
  StatusCode code = StatusConnectFailed;
  return ServerSupported(url, &code, nullptr) && code == StatusOk;
}

DirHandle& Handle() {
  static DirHandle handle(nullptr, nullptr);
  return handle;
}

// Reading a handle. What opening has fetched is delivered once; it is requests that count here.
CountedCall HandleOf(const char* address) {
  const auto read = [] {
    int entries = 0;
    return ReadDir(Handle(), CountEntry, &entries, everything);
  };
  return {read, [address] { Handle() = OpenDir(address); }};
}

CountedCall Opens(const char* address) {
  return {[address] { return OpenDir(address) != nullptr; }};
}

void CountWalked(DirEntryExt& entry, const WalkedDir& /*folder*/, void* user) {
  CountEntry(entry, user);
}

WalkedDir& Walked() {
  static WalkedDir directory;
  return directory;
}

// The directory from which a walk begins.
CountedCall WalkFrom(const char* address) {
  const auto read = [] {
    int entries = 0;
    return ReadWalkedDir(Walked(), CountWalked, &entries, everything);
  };
  return {read, [address] { Walked() = OpenWalk(address); }};
}

void KeepFolder(DirEntryExt& /*entry*/, const WalkedDir& walked, void* /*user*/) {
  if (walked != nullptr) Walked() = walked;
}

// A folder that a walk has come to.
CountedCall WalkInto(const char* address) {
  CountedCall call = WalkFrom(address);
  call.prepare = [address] { (void)ReadWalkedDir(OpenWalk(address), KeepFolder, nullptr, everything); };
  return call;
}

CountedCall BrowsingCadDocuments() {
  return {[] { return ListExt(folder); }, [] { SetAppConfig(ConfigBrowseCadDocuments, "true"); }};
}

std::map<std::pair<std::string, std::string>, CountedCall> AddressCalls() {
  return {
      {{"GetUID", "UID with a file name"}, {[] { return GetUID(uidWithName) == uidWithName; }}},
      {{"GetUID", "UID"}, {[] { return GetUID(uid) == uidWithName; }}},
      {{"GetUID", "path of a document"}, {[] { return GetUID(path) == uidWithName; }}},
      {{"GetUID", "path of a document with a version"}, {[] { return !GetUID(versionPath).empty(); }}},
      {{"GetVFSPathLatest", "UID"}, {[] { return !GetVFSPathLatest(uid).empty(); }}},
      {{"GetVFSPathLatest", "path of a document"}, {[] { return !GetVFSPathLatest(path).empty(); }}},
      {{"GetVFSPathVersioned", "UID"}, {[] { return !GetVFSPathVersioned(uid).empty(); }}},
      {{"GetVFSPathVersioned", "path of a document"}, {[] { return !GetVFSPathVersioned(path).empty(); }}},
      {{"GetVFSFolderPath", "UID"}, {[] { return !GetVFSFolderPath(uid).empty(); }}},
      {{"GetVFSFolderPath", "path of a document"}, {[] { return !GetVFSFolderPath(path).empty(); }}},
      {{"UIDFromVantryCadName", "listed server"},
       {[] { return UIDFromVantryCadName(url, "fork.lxz") == uidWithName; }}},
      {{"UIDFromVantryCadName", "server that is not listed, and is then"},
       {[] { return UIDFromVantryCadName(url, "fork.lxz") == uidWithName; }, [] {}, false}},
      {{"UIDFromVantryParams", "document"},
       {[] { return UIDFromVantryParams(url, "D1", nullptr, true) == uidWithName; }}},
      {{"UIDFromVantryParams", "document and workspace"},
       {[] { return !UIDFromVantryParams(url, "D3", "W1", true).empty(); }}},
      {{"UIDFromVantryParams", "document on a server that is not remembered"},
       {[] { return UIDFromVantryParams(url, "D1", nullptr, false) == uidWithName; }, [] {}, false}},
      {{"ServerSupported", "URL"}, {Supported}},
      {{"BrowserInfo", "UID"}, {[] { return Information(uid); }}},
      {{"BrowserInfo", "path of a document"}, {[] { return Information(path); }}},
      {{"VantryEditAttributesURL", "UID in a workspace"},
       {[] { return !VantryEditAttributesURL(workspaceUid).empty(); }}},
      {{"GetFileName", "UID"}, {[] { return GetFileName(uid) == "fork.lxz"; }}},
      {{"GetFileName", "UID with a file name"}, {[] { return GetFileName(uidWithName) == "fork.lxz"; }}},
  };
}

// Whether the answer is yes depends on the generation; either is an answer.
std::map<std::pair<std::string, std::string>, CountedCall> CapabilityCalls() {
  return {
      {{"CanPathShowDetails", "path of a folder"}, {[] { return CanPathShowDetails(folder), true; }}},
      {{"CanPathShowVersions", "path of a folder"}, {[] { return CanPathShowVersions(folder), true; }}},
      {{"TranslationSupported", "UID"}, {[] { return TranslationSupported(uid); }}},
      {{"SupportsSeparatedSources", "UID"}, {[] { return SupportsSeparatedSources(uid), true; }}},
      {{"SupportsVCSMetadata", "UID"}, {[] { return SupportsVCSMetadata(uid), true; }}},
  };
}

std::map<std::pair<std::string, std::string>, CountedCall> DirectoryCalls() {
  return {
      {{"ReadDir", "root of a server"}, {[] { return List("//plm/"); }}},
      {{"ReadDir", "Products/"}, {[] { return List("//plm/Products/"); }}},
      {{"ReadDir", "Products/Bike/"}, {[] { return List("//plm/Products/Bike/"); }}},
      {{"ReadDir", "path of a folder"}, {[] { return List(folder); }}},
      {{"ReadDir", "Products/Bike/Workspaces/"}, {[] { return List("//plm/Products/Bike/Workspaces/"); }}},
      {{"ReadDir", "path of a workspace"}, {[] { return List(workspace); }}},
      {{"ReadDir", "handle of Products/"}, HandleOf("//plm/Products/")},
      {{"ReadDir", "handle of a folder"}, HandleOf(folder)},
      {{"ReadDir", "handle of a workspace"}, HandleOf(workspace)},
      {{"ReadDirExt", "path of a folder, all flags"}, {[] { return ListExt(folder); }}},
      {{"ReadDirExt", "path of a folder, all flags, CAD documents too"}, BrowsingCadDocuments()},
      {{"OpenWalk", "path of a folder"}, {[] { return OpenWalk(folder) != nullptr; }}},
      {{"ReadWalkedDir", "folder that a walk begins at"}, WalkFrom(folder)},
      {{"ReadWalkedDir", "folder that a walk comes to"}, WalkInto(folder)},
      {{"OpenDir", "Products/"}, Opens("//plm/Products/")},
      {{"OpenDir", "path of a folder"}, Opens(folder)},
      {{"OpenDir", "path of a workspace"}, Opens(workspace)},
      {{"FileOrFolderExists", "UID"}, {[] { return FileOrFolderExists(uid); }}},
      {{"FileOrFolderExists", "path of a document"}, {[] { return FileOrFolderExists(path); }}},
      {{"FileOrFolderExists", "path of a folder"}, {[] { return FileOrFolderExists(folder); }}},
      {{"FileNameAvailable", "path of a document"}, {[] { return !FileNameAvailable(path); }}},
      {{"FileNameAvailable", "path with a free name"}, {[] { return FileNameAvailable(freePath); }}},
  };
}

std::map<std::pair<std::string, std::string>, CountedCall> ObjectCalls() {
  return {
      {{"FileExists", "UID"}, {[] { return FileExists(uid); }}},
      {{"FileExists", "path of a document"}, {[] { return FileExists(path); }}},
      {{"GetLatest", "UID"}, {[] { return Latest(uid); }}},
      {{"GetLatest", "path of a document"}, {[] { return Latest(path); }}},
      {{"GetLatestUPath", "UID"}, {[] { return GetLatestUPath(uid) == uid; }}},
      {{"GetLatestUPath", "UID of an older version"},
       {[] { return GetLatestUPath(olderUid) == uidWithName; }}},
      {{"GetStatus", "UID"}, {[] { return Status(uid, false); }}},
      {{"GetStatus", "UID, latest UID too"}, {[] { return Status(uid, true); }}},
      {{"GetStatus", "path of a document"}, {[] { return !Status(path, false); }}},
      {{"ReadDetails", "UID"}, {[] { return Details(uid); }}},
      {{"ReadDetails", "path of a document"}, {[] { return Details(path); }}},
      {{"GetFile", "UID"}, {[] { return Download(uid); }}},
      {{"GetFile", "path of a document"}, {[] { return Download(path); }}},
      {{"GetFileAsync", "UID"}, {DownloadLater}},
      {{"GetFileDownloadURL", "UID"}, {[] { return DownloadUrl(uid); }}},
      {{"GetFileDownloadURL", "path of a document"}, {[] { return DownloadUrl(path); }}},
      {{"GetLocalFile", "UID"}, {[] { return VtDirectUtils::GetLocalFile(uid) != nullptr; }}},
      {{"GetLocalFile", "UID with a file name"},
       {[] { return VtDirectUtils::GetLocalFile(uidWithName) != nullptr; }}},
  };
}

std::map<std::pair<std::string, std::string>, CountedCall> WritingCalls() {
  return {
      {{"GetSourceLinks", "UID of a document with one source"}, {SourceLinks}},
      {{"ShouldCreate", "UID"}, {[] { return !ShouldCreate(uid); }}},
      {{"Upload", "UID, a plain file"}, {[] { return UploadPlain(uid); }}},
      {{"Upload", "UID of a temporary checkout, with its check-in"}, {UploadIntoCheckout}},
      {{"Upload", "path with a free name"}, {[] { return UploadPlain(freePath); }}},
      {{"UploadAsync", "UID, a plain file"}, {UploadPlainLater}},
      {{"UploadFenletAsync", "UID of a temporary checkout, with its check-in"}, {UploadIntoCheckoutLater}},
      {{"Checkout", "UID"}, {[] { return !Checkout(uid).empty(); }}},
      {{"Checkin", "UID of a temporary checkout"}, {[] { return !Checkin(temporaryUid).empty(); }}},
      {{"Checkin", "UID in a workspace"}, {[] { return !Checkin(workspaceUid).empty(); }}},
      {{"UndoCheckout", "UID of a temporary checkout"}, {[] { return !UndoCheckout(temporaryUid).empty(); }}},
      {{"UndoCheckout", "UID in a workspace"}, {[] { return !UndoCheckout(workspaceUid).empty(); }}},
      {{"Store", "UID of a temporary checkout, without its check-in"}, {StoreIntoCheckout}},
      {{"StoreAsync", "UID of a temporary checkout, without its check-in"}, {StoreIntoCheckoutLater}},
      {{"FindTemporaryCheckouts", "UID of a document with one"}, {[] { return FindsTheCheckout(uid); }}},
      {{"FindTemporaryCheckouts", "root of a server with one context"},
       {[] { return FindsTheCheckout("//plm/"); }}},
      {{"FindTemporaryCheckouts", "Products/ with one context"},
       {[] { return FindsTheCheckout("//plm/Products/"); }}},
      {{"FindTemporaryCheckouts", "Products/Bike/"},
       {[] { return FindsTheCheckout("//plm/Products/Bike/"); }}},
      {{"GetContentSize", "UID"}, {[] { return GetContentSize(uid) == 5u; }}},
      {{"GetCheckoutStatus", "UID"}, {[] { return GetCheckoutStatus(uid, nullptr) == CheckoutNone; }}},
      {{"GetCheckoutStatus", "UID of a temporary checkout"},
       {[] { return GetCheckoutStatus(temporaryUid, nullptr) == CheckoutInTempWorkspace; }}},
      {{"VerifyCheckout", "UID of a temporary checkout that is still there"}, {Verify}},
      {{"ConvertLegacyCheckout", "UID with a file name"},
       {[] { return !ConvertLegacyCheckout(uidWithName, "W9|D3").empty(); }}},
      {{"ConvertLegacyCheckout", "UID"}, {[] { return !ConvertLegacyCheckout(uid, "W9|D3").empty(); }}},
  };
}

std::map<std::pair<std::string, std::string>, CountedCall> TranslationCalls() {
  return {
      {{"UploadSourceXliff", "UID, the first one, into a cabinet"}, UploadsXliffOf(olderUid)},
      {{"UploadSourceXliff", "UID, the first one, into a context by its name"},
       UploadsXliffOf(checkedOutUid)},
      {{"UploadSourceXliff", "UID of a document that has one"}, UploadsXliffOf(uid)},
      {{"GetUIDForSourceXliff", "UID of a document that has one"}, {FindSourceXliff, [] {}, true, true}},
      {{"GetXliffTranslations", "UID of a document with two"}, {ListTranslations, [] {}, true, true}},
      {{"SetXliffPublished", "UID"}, {[] { return SetXliffPublished(uid); }, [] {}, true, true}},
  };
}

}  // namespace

const std::map<std::pair<std::string, std::string>, CountedCall>& CountedCalls() {
  static const auto calls = [] {
    auto all = AddressCalls();
    for (auto more :
         {CapabilityCalls(), DirectoryCalls(), ObjectCalls(), WritingCalls(), TranslationCalls()}) {
      all.merge(more);
    }
    return all;
  }();
  return calls;
}

const std::map<std::string, std::function<void()>>& SilentCalls() {
  static const std::map<std::string, std::function<void()>> calls{
      {"SetAppConfig", [] { SetAppConfig(ConfigAuthAppVersion, "310"); }},
      {"UpdateServerList",
       [] {
         UpdateServerList({{"plm", url}});
       }},
      {"RegisterAuth", [] { RegisterAuth(nullptr); }},
      {"RegisterTaskRunner", [] { RegisterTaskRunner(nullptr); }},
      {"StartSession", [] { StartSession(); }},
      {"ReadRootDirs", [] { ReadRootDirs([](const char*, void*) {}, nullptr); }},
      {"ShouldInvalidateCache", [] { ShouldInvalidateCache(false); }},
      {"IsVFSPath", [] { IsVFSPath(path); }},
      {"IsUID", [] { IsUID(uid); }},
      {"IsManaged", [] { IsManaged(uid); }},
      {"GetVFSLocationPrefix", [] { GetVFSLocationPrefix(); }},
      {"ParseUID", [] { (void)ParseUID(uid); }},
      {"WorkingCopyUID", [] { (void)WorkingCopyUID(temporaryUid); }},
      {"CompareUIDsEqual", [] { CompareUIDsEqual(uid, uidWithName); }},
      {"GetServerURL", [] { GetServerURL(path); }},
      {"GetServerNickname", [] { GetServerNickname(uid); }},
      {"GetLinkContext",
       [] {
         std::string context;
         GetLinkContext(uid, context);
       }},
      {"IsPathWritable", [] { IsPathWritable(folder); }},
      {"IsCheckoutSupported", [] { IsCheckoutSupported(uid); }},
  };
  return calls;
}

std::vector<std::string> LeftoversOfCalls() {
  std::vector<std::string> left = LocalFiles().Entries();
  std::erase_if(left, [](const std::string& name) { return name.starts_with("local"); });
  return left;
}

void ListSampleServer(bool isListed) {
  // A server that stays in the list keeps what it has learnt, so it leaves the list first.
  UpdateServerList({});
  if (isListed) UpdateServerList({{"plm", url}});
}

}  // namespace vtdirect_test
