// Addresses that come from servers: where a redirect leads, and where contents and pages lie. The first line is
// where it comes from.
#include "platform_default/redirection.h"

#include "connection/url_split.h"
#include "fuzz/support/input.h"
#include "platform_default/request_target.h"

using namespace vtdirect::platform;
using lxservices::cms_interface::vantry::SplitUrlAtPath;
using vtdirect_fuzz::Require;

namespace {

bool FitsRequestLine(std::string_view target) {
  for (const char byte : target) {
    if (static_cast<unsigned char>(byte) <= ' ' || static_cast<unsigned char>(byte) > '~') return false;
  }
  return target.starts_with('/');
}

void Follow(const Origin& from, const std::string& url) {
  const auto redirection = FollowableRedirection(from, url);
  if (!redirection) return;
  Require(from.scheme != "https" || redirection->origin.scheme == "https");
  Require(FitsRequestLine(RequestTarget(redirection->target)));
  Require(OriginOf(redirection->origin.Text() + "/") == redirection->origin);
  (void)Secures(from, redirection->origin);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view rest = vtdirect_fuzz::TextOf(data, size);
  const auto from = OriginOf(std::string(vtdirect_fuzz::TakePart(rest, '\n')));
  const std::string url(rest);
  Require(FitsRequestLine(RequestTarget(url)));
  const auto [place, path] = SplitUrlAtPath(url);
  vtdirect_fuzz::Look(place);
  vtdirect_fuzz::Look(path);
  if (from) Follow(*from, url);
  return 0;
}
