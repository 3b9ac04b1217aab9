#include "hosts/cli/storing/put_links.h"

#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/diagnosis.h"
#include "hosts/cli/trace_log.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] SourceLinks LinksOf(const std::string& uid) {
  SourceLinks links;
  VtDirectManager::GetSourceLinks(uid.c_str(), links);
  // A document that could not be read looks like one without links, whose links would then be lost.
  if (links.empty()) VtDirectManager::GetSourceLinks(uid.c_str(), links);
  return links;
}

[[nodiscard]] std::string ContextOf(const std::string& address) {
  std::string context;
  static_cast<void>(VtDirectManager::GetLinkContext(address.c_str(), context));
  return context;
}

[[nodiscard]] std::optional<Failure> CheckLink(Host& host, const PutTarget& target, const std::string& name,
                                               const std::string& address) {
  if (ContextOf(address) != ContextOf(target.address)) {
    return Failure{ExitCode::Usage, "the link " + name + " leads to " + address +
                                        ", which is on another server than the document; nothing was sent"};
  }
  ForgetTracedErrors();
  if (VtDirectManager::FileExists(address.c_str())) return std::nullopt;
  Failure failure = Diagnose(host, address, true);
  failure.message = "the link " + name + ": " + failure.message + "; nothing was sent";
  return failure;
}

[[nodiscard]] std::optional<Failure> ApplyChanges(Host& host, const PutRequest& request,
                                                  const PutTarget& target, SourceLinks& links) {
  for (const auto& [name, address] : request.links) {
    if (address.empty()) {
      links.erase(name);
      continue;
    }
    if (auto failure = CheckLink(host, target, name, address)) return failure;
    links[name] = address;
  }
  return std::nullopt;
}

}  // namespace

std::optional<Failure> SettleLinks(Host& host, const PutRequest& request, const PutTarget& target,
                                   SourceLinks& links) {
  if (request.type != VtDirectManager::FileTypeFenlet) return std::nullopt;
  if (target.action != PutTarget::Action::Create) links = LinksOf(target.before);
  if (auto failure = ApplyChanges(host, request, target, links)) return failure;
  for (const auto& [name, address] : links) {
    if (!address.empty()) continue;
    return Failure{ExitCode::Failure,
                   "the document has a link " + name +
                       " to a document that can't be read now, and would lose it; nothing was sent; give "
                       "--link '" +
                       name + "=ADDRESS', or --link '" + name + "=' to take it away"};
  }
  return std::nullopt;
}

std::vector<std::string> MissingLinks(const std::string& uid, const SourceLinks& links) {
  std::vector<std::string> missing;
  if (links.empty()) return missing;
  const SourceLinks stored = LinksOf(uid);
  for (const auto& [name, address] : links) {
    if (!stored.contains(name)) missing.push_back(name);
  }
  return missing;
}

}  // namespace vtdirect_cli
