#include "browsing/gateway_listing.h"

#include <memory>
#include <mutex>
#include <string_view>

#include "base/failure_step.h"
#include "base/file_name.h"
#include "browsing/contexts.h"
#include "connection/json_members.h"
#include "connection/url_escape.h"
#include "platform/environment.h"
#include "platform/uri.h"

namespace lxservices::cms_interface::vantry {
namespace {

// Whether the gateway sends its names percent-escaped, as newer ones do. Read once per process.
bool GatewayEscapes() {
  static const bool escapes = dp::Environment::Test("FENLOOM_REST_SNXGW_NOW_ESCAPES");
  return escapes;
}

std::string GatewayFolderPath(const ContextRecord& context, const std::string& folderPath) {
  std::string path = "servlet/rest/snx_gw/organizations/" + EscapeForUrl(context.organization) + "/" +
                     EscapeForUrl(context.typeClass) + "/" + EscapeForUrl(context.name) + "/folders";
  if (!folderPath.empty()) path += "?path=" + EscapeForUrl(folderPath);
  return path;
}

// Brings a name into path form. Without the switch every name is escaped, so the names of a gateway that
// escapes come out escaped twice; a host that sees this sets the switch. With it a directory's name is what
// the gateway takes back in "?path=", and passes as it is.
std::string NameInPathForm(const std::string& text, EntryKind kind) {
  if (!GatewayEscapes()) return EscapeFileName(text);
  if (kind == EntryKind::Directory || !HoldsForbiddenCharacter(text)) return text;
  std::string plain;
  du::URI_Unescape(&plain, 0, text);
  return EscapeFileName(plain);
}

void EmitGatewayEntry(const DirEntryCallback& callback, std::string_view text, EntryKind kind) {
  const std::string name = NameInPathForm(std::string(text), kind);
  DirEntryInfoExt entry;
  entry.name = name.c_str();
  entry.isDirectory = kind == EntryKind::Directory;
  callback(entry);
}

// One element of the list: the address of a file, which ends in its name, or of a folder, which holds "path="
// and ends in the folder's path.
void ReadGatewayElement(std::string_view address, const DirEntryCallback& callback, ReadDirFlags flags) {
  constexpr std::string_view folderMark = "path=";
  const auto slash = address.rfind('/');
  if (slash == std::string_view::npos) return;
  const auto mark = address.rfind(folderMark);
  const bool isDirectory = mark != std::string_view::npos;
  if ((flags & (isDirectory ? Directories : Files)) == 0) return;
  const bool nameFollowsMark = isDirectory && mark > slash;
  EmitGatewayEntry(callback, address.substr(nameFollowsMark ? mark + folderMark.size() : slash + 1),
                   isDirectory ? EntryKind::Directory : EntryKind::File);
}

void DeliverListing(const rapidjson::Value& listing, const DirEntryCallback& callback, ReadDirFlags flags) {
  if ((flags & (Files | Directories)) == 0 || !listing.IsObject()) return;
  for (const auto& member : listing.GetObject()) {
    if (TextView(member.name) != "folderContent" || !member.value.IsArray()) continue;
    for (const auto& element : member.value.GetArray()) {
      if (element.IsString()) ReadGatewayElement(TextView(element), callback, flags);
    }
  }
}

// The answer that an open folder is read from. Parsed at each listing and not once for all: it may be large
// and a handle may be held for long, and as a document it takes more memory than its text.
struct KeptAnswer {
  KeptAnswer(ServerContext& server, const std::string& path)
      : stream(MakeGetRequest(server.http(), path.c_str(), nullptr), {}) {}
  std::mutex mutex;  ///< guards the stream, which has one position for all threads; not held for a callback
  RestStream stream;
};

// Null for a broken answer.
rapidjson::Document ParseAgain(KeptAnswer& answer) {
  rapidjson::Document listing;
  const std::lock_guard lock(answer.mutex);
  answer.stream.Rewind();
  (void)ParseJsonResponse(answer.stream, listing);
  return listing;
}

}  // namespace

bool ReadGatewayListing(RestStream& stream, const DirEntryCallback& callback, ReadDirFlags flags) {
  if (!stream.succeeded()) return false;
  rapidjson::Document listing;
  if (!ParseJsonResponse(stream, listing)) return true;
  if (!listing.IsObject()) stream.ReportBroken();
  DeliverListing(listing, callback, flags);
  return true;
}

bool ListGatewayFolder(ServerContext& server, const GatewayFolder& folder, const DirEntryCallback& callback,
                       ReadDirFlags flags) {
  const FailureStep step("list the folder");
  const auto context = FindContext(server, folder.kind, folder.contextName);
  if (!context) return false;
  return ListGatewayFolder(server, *context, folder.path, callback, flags) == ListingAnswer::Whole;
}

DirLister OpenGatewayFolder(ServerContext& server, const GatewayFolder& folder) {
  const FailureStep step("list the folder");
  const auto context = FindContext(server, folder.kind, folder.contextName);
  return context ? OpenGatewayFolder(server, *context, folder.path) : DirLister();
}

ListingAnswer ListGatewayFolder(ServerContext& server, const ContextRecord& context,
                                const std::string& folderPath, const DirEntryCallback& callback,
                                ReadDirFlags flags) {
  const FailureStep step("list the folder");
  const std::string path = GatewayFolderPath(context, folderPath);
  RestStream stream(MakeGetRequest(server.http(), path.c_str(), nullptr), {});
  if (ReadGatewayListing(stream, callback, flags)) return ListingAnswer::Whole;
  return IsNotThere(stream.status()) ? ListingAnswer::NotThere : ListingAnswer::Broken;
}

DirLister OpenGatewayFolder(ServerContext& server, const ContextRecord& context,
                            const std::string& folderPath) {
  const FailureStep step("list the folder");
  const auto answer = std::make_shared<KeptAnswer>(server, GatewayFolderPath(context, folderPath));
  if (!answer->stream.succeeded()) return {};
  return [answer](const DirEntryCallback& callback, ReadDirFlags flags) {
    const rapidjson::Document listing = ParseAgain(*answer);
    DeliverListing(listing, callback, flags);
    return true;
  };
}

}  // namespace lxservices::cms_interface::vantry
