#include "connection/server_check.h"

#include <vector>

#include "base/failure_trace.h"
#include "base/step_words.h"
#include "base/tracers.h"
#include "connection/rest_items.h"
#include "connection/server_information.h"
#include "connection/service_schema.h"
#include "platform/uri.h"

namespace lxservices::cms_interface::vantry {
namespace {

void TraceUnsupported(const ServerVersion& version) {
  Reason reason{FailureKind::UnsupportedServer};
  // A page of somebody else's has no version at all.
  if (version == ServerVersion{}) reason.found = ForeignServer();
  TracerFor(reason)(dp::TraceType::Error)
      << "Server version: " << FormatServerVersion(version)
      << " unsupported, at least: " << FormatServerVersion(MinimumServerVersion) << " is required";
}

// The library never lets a server's own address lead it away from https.
bool LeavesHttps(const std::string& url, const std::string& codebaseUrl) {
  const std::string scheme = du::GetURIPart(url, du::URIPart::Scheme);
  return scheme == "https" && du::GetURIPart(codebaseUrl, du::URIPart::Scheme) != scheme;
}

// The address to follow, or the empty text. The comparison is one of texts: a `url` that only differs by its
// closing "/" counts as another address.
std::string AddressToFollow(const std::string& url, const std::string& codebaseUrl) {
  return codebaseUrl == url || LeavesHttps(url, codebaseUrl) ? std::string() : codebaseUrl;
}

Status ProbeTraced(const std::shared_ptr<VtConnection>& connection, const char* url) {
  const FailureMark mark;
  const Status status = ProbeConnection(connection);
  if (status != Ok) {
    TracerFor(FollowsOr(mark, FailureKind::UnsupportedServer))(
        dp::TraceType::Error, "Failed to get useful data from server %s treating as unsupported", url);
  }
  return status;
}

}  // namespace

Status ProbeConnection(const std::shared_ptr<VtConnection>& connection) {
  const FailureStep step(stepAskWhetherServerAnswers);
  int version = 0;
  if (FetchSchema(*connection, "servlet/odata/DynamicDocMgmt/$metadata", nullptr, &version) == Ok) return Ok;
  return ReadRestItems(connection->http(), "servlet/rest/v1/contexts", RestListForm::Wrapped).status;
}

Status CheckServer(const char* url, const AuthFunction& auth, std::string* redirect) {
  const FailureStep step(stepCheckServer);
  const auto connection = std::make_shared<VtConnection>(url, auth);
  ServerInfo info;
  if (const Status status = GetServerInfo(*connection->http(), info); status != Ok) return status;
  if (info.version < MinimumServerVersion) {
    TraceUnsupported(info.version);
    return Unsupported;
  }
  std::string address;
  if (redirect != nullptr) {
    redirect->clear();
    address = AddressToFollow(url, info.codebaseUrl);
  }
  const auto probed = address.empty() ? connection : std::make_shared<VtConnection>(address, auth);
  if (const Status status = ProbeTraced(probed, url); status != Ok) return status;
  if (redirect != nullptr) *redirect = address;
  VtDirectTracer()(dp::TraceType::Information)
      << "Server " << url << " (version: " << FormatServerVersion(info.version) << ") passed our checks OK";
  return Ok;
}

}  // namespace lxservices::cms_interface::vantry
