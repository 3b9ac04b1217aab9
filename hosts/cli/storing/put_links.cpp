#include "hosts/cli/storing/put_links.h"

#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <optional>

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/texts/printable.h"

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

// With these links, and without what a first store was made to depend on.
[[nodiscard]] std::string CommandToStoreWith(const PutRequest& request, const SourceLinks& links) {
  std::string command =
      "vtdirect put " + QuotedForShell(request.content.path) + " " + QuotedForShell(request.address);
  if (request.viewable) command += " --viewable " + QuotedForShell(request.viewable->path);
  if (request.metadata) command += " --metadata " + QuotedForShell(request.metadata->path);
  if (!request.language.empty()) command += " --language " + QuotedForShell(request.language);
  for (const auto& [name, address] : links) command += " --link " + QuotedForShell(name + "=" + address);
  if (request.checkIn) command += " --checkin";
  return "\"" + command + "\"";
}

[[nodiscard]] Failure LinkWouldGo(const PutRequest& request, const std::string& name) {
  return WithNothing(
      "sent", {ExitCode::Failure,
               "the document has a link " + name + " to a document that can't be read now, and would lose it",
               "when that can be read, the same command can be given again; " +
                   CommandToStoreWith(request, {{name, "ADDRESS"}}) + " links to another one, and --link " +
                   QuotedForShell(name + "=") + " takes the link away"});
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

[[nodiscard]] std::string StoredAs(const PutRequest& request, const std::string& uid, bool isCheckedOut) {
  std::string stored = request.content.path + " is stored as " + uid;
  if (isCheckedOut) stored += ", which is checked out";
  if (isCheckedOut && request.checkIn) stored += " and was not checked in";
  return stored;
}

// Only a check-in can be held back until that is known.
[[nodiscard]] std::optional<Failure> LinksUnknown(Host& host, const PutRequest& request,
                                                  const std::string& uid, bool isCheckedOut) {
  const std::string unknown = "whether it has its source links could not be found out";
  const std::string message = WithWords(StoredAs(request, uid, isCheckedOut) + "; " + unknown);
  const std::string advice = CommandToType("links", ByOwnId(uid)) + " tells its links";
  if (!isCheckedOut || !request.checkIn) {
    host.output().Warning(message + "; " + advice);
    return std::nullopt;
  }
  // Without the reason, which would call it safe to store the file once more.
  return Failure{ExitCode::Incomplete, message,
                 advice + ", and " + CommandToType("checkin", uid) + " checks it in"};
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
    return LinkWouldGo(request, name);
  }
  return links;
}

std::optional<Failure> FailureOfLinks(Host& host, const PutRequest& request, const std::string& uid,
                                      const SourceLinks& links, bool isCheckedOut) {
  if (links.empty()) return std::nullopt;
  ForgetReasons();
  const auto stored = LinksOf(ByOwnId(uid));
  if (!stored) return LinksUnknown(host, request, uid, isCheckedOut);
  SourceLinks missing = links;
  for (const auto& link : *stored) missing.erase(link.first);
  if (missing.empty()) return std::nullopt;
  std::string names;
  for (const auto& link : missing) names += (names.empty() ? "" : " and ") + link.first;
  return Failure{ExitCode::Incomplete,
                 StoredAs(request, uid, isCheckedOut) + ", but without the link " + names,
                 CommandToStoreWith(request, missing) + " stores it again with the link"};
}

}  // namespace vtdirect_cli
