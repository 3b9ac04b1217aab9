#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/editing/foreground_program.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/environment.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/servers/origin.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

constexpr const char* usualBrowser = "xdg-open";

// BROWSER may list several, with colons between; the first that can show the page does.
[[nodiscard]] bool ShowInOneOf(std::string browsers, const std::string& url) {
  browsers += ':';
  while (!browsers.empty()) {
    const std::size_t end = browsers.find(':');
    const std::string browser = browsers.substr(0, end);
    browsers.erase(0, end + 1);
    if (!browser.empty() && RunInForeground(browser, {url}) == 0) return true;
  }
  return false;
}

ExitCode RunOpen(Host& host, const Arguments& arguments) {
  const std::string address = arguments.Text("ADDRESS");
  const auto kind = RequirePlacedAddress(host, arguments, address);
  if (!kind) return host.output().Fail(kind.failure());
  std::string url;
  ForgetReasons();
  if (!VtDirectManager::BrowserInfo(address.c_str(), url)) {
    return host.output().Fail(Diagnose(host, address, Seen::Missing));
  }
  // What is no address of the web could be taken for an option, or for a file of this machine.
  if (!OriginOf(url)) {
    return host.output().Fail(
        {ExitCode::Failure, "the page of " + address + " has no address that a browser could open"});
  }
  const std::string named = Environment("BROWSER");
  if (!ShowInOneOf(named.empty() ? usualBrowser : named, url)) {
    return host.output().Fail(
        {ExitCode::Failure, "no browser could be started for " + url, "set BROWSER to one"});
  }
  host.output().JsonOnly({{"url", url}});
  host.output().Note("opened " + url);
  return ExitCode::Ok;
}

}  // namespace

CommandRow OpenCommand() {
  return {"open",
          "Show an object's page in a web browser",
          "Opens the page of the object at ADDRESS, which browse-url prints, by the program that BROWSER "
          "names, else by xdg-open. BROWSER may name several with colons between; the first that ends well "
          "counts. The browser logs in by itself: it is given no login of vtdirect's.",
          {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
          {AnywhereOption()},
          Requests::Some,
          RunOpen,
          {{"url", MemberType::Text, nullptr, "the URL that was opened"}}};
}

}  // namespace vtdirect_cli
