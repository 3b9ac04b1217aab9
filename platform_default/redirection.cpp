#include "platform_default/redirection.h"

#include "platform/uri.h"
#include "platform_default/request_target.h"

namespace vtdirect::platform {

std::optional<Redirection> FollowableRedirection(const Origin& from, const std::string& url) {
  std::optional<Origin> origin = OriginOf(url);
  if (!origin) return std::nullopt;
  if (from.scheme == "https" && origin->scheme != "https") return std::nullopt;
  std::string target = du::GetURIPart(url, du::URIPart::Path);
  if (target.empty()) target = "/";
  const auto query = du::GetURIPartPosCount(url, du::URIPart::Query);
  if (query.first != std::string::npos) target += "?" + url.substr(query.first, query.second);
  return Redirection{std::move(*origin), RequestTarget(target)};
}

bool Secures(const Origin& from, const Origin& to) {
  return from.scheme == "http" && to.scheme == "https" && from.host == to.host;
}

}  // namespace vtdirect::platform
