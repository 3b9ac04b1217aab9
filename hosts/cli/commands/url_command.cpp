#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

ExitCode RunUrl(Host& host, const Arguments& arguments) {
  const std::string address = arguments.Text("ADDRESS");
  const auto kind = RequirePlacedAddress(host, arguments, address);
  if (!kind) return host.output().Fail(kind.failure());

  std::string url;
  std::string cacheKey;
  ForgetReasons();
  const bool isTold = VtDirectManager::GetFileDownloadURL(address.c_str(), url, &cacheKey);
  if (!isTold || (url.empty() && LastAnswerWasBroken())) {
    return host.output().Fail(Diagnose(host, address, Seen::Missing));
  }
  if (url.empty()) return host.output().Fail({ExitCode::DownloadFailed, address + " has no content"});
  host.output().Row({{"url", url}}, {{"url", url}, {"cache_key", cacheKey}});
  return ExitCode::Ok;
}

}  // namespace

CommandRow UrlCommand() {
  return {"url",
          "Print the URL of an object's content",
          "Prints the direct URL of the content of the object at ADDRESS, for a downloader of your own. "
          "Nothing is downloaded. The server may demand credentials there too.",
          {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
          {AnywhereOption()},
          Requests::Some,
          RunUrl,
          {{"url", MemberType::Text, nullptr, "the URL"},
           {"cache_key", MemberType::Text, nullptr, "a key under which the content may be cached"}}};
}

}  // namespace vtdirect_cli
