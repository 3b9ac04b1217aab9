#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

ExitCode RunBrowseUrl(Host& host, const Arguments& arguments) {
  const std::string address = arguments.Text("ADDRESS");
  const auto kind = RequirePlacedAddress(host, arguments, address);
  if (!kind) return host.output().Fail(kind.failure());

  std::string url;
  ForgetReasons();
  if (!VtDirectManager::BrowserInfo(address.c_str(), url)) {
    return host.output().Fail(Diagnose(host, address, Seen::Missing));
  }
  host.output().Row({{"url", url}});
  return ExitCode::Ok;
}

}  // namespace

CommandRow BrowseUrlCommand() {
  return {"browse-url",
          "Print the URL of an object's page in a web browser",
          "Prints the address at which a web browser shows the object at ADDRESS. For an address that names "
          "an object by its id the server isn't asked, not even whether the object is there.",
          {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
          {AnywhereOption()},
          Requests::Some,
          RunBrowseUrl,
          {{"url", MemberType::Text, nullptr, "the URL"}}};
}

}  // namespace vtdirect_cli
