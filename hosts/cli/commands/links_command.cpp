#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

// By the UID to go on with, a copy in a temporary workspace reads as the document that was checked out. That
// is right only when the copy is there no more.
[[nodiscard]] std::string ReadableUid(const std::string& uid) {
  const std::string copy = ByOwnId(uid);
  return copy != uid && VtDirectManager::FileExists(copy.c_str()) ? copy : uid;
}

ExitCode RunLinks(Host& host, const Arguments& arguments) {
  const std::string address = arguments.Text("ADDRESS");
  const auto kind = RequirePlacedAddress(host, arguments, address);
  if (!kind) return host.output().Fail(kind.failure());

  ForgetReasons();
  const std::string uid = ReadableUid(UidToGoOnWith(host, address));
  if (uid.empty()) return host.output().Fail(Diagnose(host, address, Seen::Missing));
  std::map<std::string, std::string> links;
  VtDirectManager::GetSourceLinks(uid.c_str(), links);
  // A document that can't be read has no links either.
  if (links.empty() && (!VtDirectManager::FileExists(uid.c_str()) || LastAnswerWasBroken())) {
    return host.output().Fail(Diagnose(host, address, Seen::Missing));
  }
  std::uint64_t unreadable = 0;
  for (const auto& [name, source] : links) {
    host.output().Row({{"link", name}, {"uid", source}});
    if (source.empty()) ++unreadable;
  }
  if (links.empty()) host.output().Note(address + " has no source links");
  if (unreadable == 0) return ExitCode::Ok;
  return host.output().Fail({ExitCode::Incomplete, std::to_string(unreadable) + " of " +
                                                       std::to_string(links.size()) +
                                                       " links lead to documents that can't be read"});
}

}  // namespace

CommandRow LinksCommand() {
  return AsListing(
      {"links",
       "List the documents that a document was made from",
       "Prints one line for each source link of the document at ADDRESS: the name by which the document "
       "calls its source, escaped as in a path, and the source's UID, separated by a tab; the UID is empty "
       "when the source can't be read. Of a document that is checked out by vtdirect they are those of its "
       "working copy. --link of put takes them as they are printed, with \"=\" in place of the tab.",
       {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
       {AnywhereOption()},
       Requests::Some,
       RunLinks,
       {{"link", MemberType::Text, nullptr,
         "by which name the document calls its source, escaped as in a path"},
        {"uid", MemberType::Text, nullptr, "the source's UID; empty when it can't be read"}}},
      {"link", "uid"}, "Sort the lines by this column: link or uid.");
}

}  // namespace vtdirect_cli
