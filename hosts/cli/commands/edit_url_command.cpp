#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] Failure WhyNoPage(Host& host, const std::string& address, const std::string& uid) {
  const std::string hint = WordsOfLastReason();
  if (uid.empty() || !VtDirectManager::FileExists(uid.c_str())) return Diagnose(host, address, Seen::Missing);
  const CheckoutState state = ReadCheckoutState(uid);
  if (state.status == VtDirectManager::CheckoutNone) {
    return {ExitCode::Failure, address + " is no working copy, and only those have attributes to edit; " +
                                   CommandToType("checkout", address) + " makes one"};
  }
  if (state.status == VtDirectManager::CheckoutByOther) {
    return {ExitCode::Failure, address + " is checked out by " + state.user +
                                   ", and only a working copy of your own has attributes to edit"};
  }
  return {ExitCode::Failure, "the working copy of " + address + " was not found (checkout: " +
                                 CheckoutWord(state.status) + (hint.empty() ? "" : "; " + hint) +
                                 "); give the UID that checkout has printed, or the path in your workspace"};
}

ExitCode RunEditUrl(Host& host, const Arguments& arguments) {
  const std::string address = arguments.Text("ADDRESS");
  const auto kind = RequirePlacedAddress(host, arguments, address);
  if (!kind) return host.output().Fail(kind.failure());

  ForgetReasons();
  // The page is that of the copy in its workspace, which an id alone does not tell.
  const std::string uid = WithWorkspace(UidToGoOnWith(host, address));
  const std::string url = uid.empty() ? "" : VtDirectManager::VantryEditAttributesURL(uid.c_str());
  if (url.empty()) return host.output().Fail(WhyNoPage(host, address, uid));
  host.output().Row({{"url", url}}, {{"url", url}, {"uid", uid}});
  return ExitCode::Ok;
}

}  // namespace

CommandRow EditUrlCommand() {
  return {"edit-url",
          "Print the URL at which a working copy's attributes are edited",
          "Prints the address at which a web browser edits the attributes of a working copy. ADDRESS is that "
          "of the working copy, or of a document that is checked out by vtdirect.",
          {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
          {AnywhereOption()},
          Requests::Some,
          RunEditUrl,
          {{"url", MemberType::Text, nullptr, "the URL"},
           {"uid", MemberType::Text, nullptr, "the working copy's UID"}}};
}

}  // namespace vtdirect_cli
