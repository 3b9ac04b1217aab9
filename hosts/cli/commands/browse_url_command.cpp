#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/address.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/diagnosis.h"
#include "hosts/cli/host.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/trace_log.h"

namespace vtdirect_cli {
namespace {

ExitCode RunBrowseUrl(Host& host, const Arguments& arguments) {
  const std::string address = arguments.Text("ADDRESS");
  AddressKind kind{};
  if (const auto failure = RequirePlacedAddress(arguments, address, kind))
    return host.output().Fail(*failure);

  std::string url;
  ForgetTracedErrors();
  if (!VtDirectManager::BrowserInfo(address.c_str(), url)) {
    return host.output().Fail(Diagnose(host, address, true));
  }
  host.output().Row({{"url", url}});
  return ExitCode::Ok;
}

}  // namespace

CommandRow BrowseUrlCommand() {
  return {
      "browse-url",
      "Print the URL of an object's page in a web browser",
      "Prints the address at which a web browser shows the object at ADDRESS. For an address that names an "
      "object by its id the server isn't asked, not even whether the object is there.",
      {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
      {AnywhereOption()},
      true,
      RunBrowseUrl,
      {{"url", MemberType::Text, nullptr, "the URL"}}};
}

}  // namespace vtdirect_cli
