#include <algorithm>
#include <string_view>

#include "base/failure_step.h"
#include "public/address_text.h"
#include "public/path_resolution.h"
#include "public/vt_direct_manager.h"
#include "server/file_server.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

namespace {

// Whether a target leads to a directory above folders and workspaces: "", "Products/", "Products/Bike/". With
// more levels it leads to a document.
bool IsAboveSections(const PathTarget& target) {
  constexpr std::size_t closedLevels = 2;
  if (!target.id.empty() || target.relativePath.starts_with("?id=")) return false;
  const std::string_view path = target.relativePath;
  const auto slashes = static_cast<std::size_t>(std::count(path.begin(), path.end(), '/'));
  return path.empty() || (path.ends_with('/') && slashes <= closedLevels);
}

std::optional<TemporaryCheckouts> Find(const PathTarget& target) {
  CheckoutServer* checkout = target.server->GetCheckoutServer();
  if (checkout == nullptr) return std::nullopt;
  if (IsAboveSections(target)) return checkout->FindTemporaryCheckoutsBelow(target.relativePath.c_str());
  const std::string id = IdOfTarget(target);
  if (id.empty()) return std::nullopt;
  return checkout->FindTemporaryCheckoutsOf(id.c_str());
}

TemporaryCheckout ForHost(FileServer& server, const TemporaryCheckoutEntry& entry) {
  std::string uid;
  if (!entry.id.empty()) uid = MakeUid(server.GetServerKey(), entry.id, entry.cadName);
  return {uid, entry.workspaceName, entry.number, entry.cadName, entry.version};
}

}  // namespace

std::optional<std::vector<TemporaryCheckout>> FindTemporaryCheckouts(const char* path) {
  const FailureStep step("find temporary checkouts");
  const FailureMark mark;
  const PathTarget target = ResolveTarget(path, {}, 0);
  if (target.server == nullptr) return std::nullopt;
  const auto entries = Find(target);
  if (!entries) {
    ReportReason(FollowsOr(mark, FailureKind::NotFound));
    return std::nullopt;
  }
  std::vector<TemporaryCheckout> found;
  for (const auto& entry : *entries) found.push_back(ForHost(*target.server, entry));
  return found;
}

}  // namespace VtDirectManager
