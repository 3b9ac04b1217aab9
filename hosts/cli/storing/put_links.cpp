#include "hosts/cli/storing/put_links.h"

#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <optional>

#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"

namespace vtdirect_cli {
namespace {

// Nothing when they could not be read: a document that can't be read looks like one without links.
[[nodiscard]] std::optional<SourceLinks> LinksOf(const std::string& uid) {
  const VtDirectManager::Outcome outcome;
  SourceLinks links;
  VtDirectManager::GetSourceLinks(uid.c_str(), links);
  if (links.empty() && !outcome.Empty()) return std::nullopt;
  return links;
}

// The new iteration would have none of them.
[[nodiscard]] Failure LinksUnread(Host& host, const PutTarget& target) {
  Failure failure = WithReason({ExitCode::Failure, {}});
  if (auto server = DiagnoseServer(host, VtDirectManager::GetServerURL(target.address.c_str())))
    failure = *server;
  if (failure.code == ExitCode::Interrupted) return failure;
  failure.message = "the source links of " + target.address + " could not be read, and would be lost" +
                    (failure.message.empty() ? "" : " (" + failure.Text() + ")");
  failure.advice = "the same command can be given again";
  return WithNothing("sent", failure);
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
  ForgetReasons();
  if (VtDirectManager::FileExists(address.c_str())) return std::nullopt;
  Failure failure = Diagnose(host, address, Seen::Missing);
  failure.message = "the link " + name + ": " + failure.message;
  return WithNothing("sent", failure);
}

[[nodiscard]] Result<SourceLinks> WithChanges(Host& host, const PutRequest& request, const PutTarget& target,
                                              SourceLinks links) {
  for (const auto& [name, address] : request.links) {
    if (address.empty()) {
      links.erase(name);
      continue;
    }
    if (auto failure = CheckLink(host, target, name, address)) return *failure;
    links[name] = address;
  }
  return links;
}

}  // namespace

Result<SourceLinks> SettleLinks(Host& host, const PutRequest& request, const PutTarget& target) {
  if (request.type != VtDirectManager::FileTypeFenlet) return SourceLinks{};
  const bool isNew = target.action == PutTarget::Action::Create;
  const auto before = isNew ? SourceLinks{} : LinksOf(target.before);
  if (!before) return LinksUnread(host, target);
  const auto links = WithChanges(host, request, target, *before);
  if (!links) return links;
  for (const auto& [name, address] : *links) {
    if (!address.empty()) continue;
    return WithNothing(
        "sent",
        {ExitCode::Failure,
         "the document has a link " + name + " to a document that can't be read now, and would lose it",
         "give --link '" + name + "=ADDRESS', or --link '" + name + "=' to take it away"});
  }
  return links;
}

SourceLinks MissingLinks(Host& host, const std::string& uid, SourceLinks links) {
  if (links.empty()) return links;
  const auto stored = LinksOf(uid);
  if (!stored) {
    host.output().Warning("whether the document has its source links could not be found out; " +
                          CommandToType("links", uid) + " tells");
    return {};
  }
  for (const auto& link : *stored) links.erase(link.first);
  return links;
}

}  // namespace vtdirect_cli
