#pragma once

#include <curl/curl.h>

#include <span>
#include <string>
#include <string_view>

#include "platform/http.h"

namespace vtdirect::platform {

/// One request as it goes out, ready for the wire. The lines are not owned.
struct OutgoingRequest {
  du::http::Method method = du::http::Method::Get;
  std::string_view url;  ///< a zero byte follows it
  std::span<const std::string_view> headerLines;
  du::http::FileSource* body = nullptr;  ///< null for a request without one
  bool asksForCompression = false;       ///< gzip and deflate, to be decoded on the way to the sink
  bool asksForIdentity = false;          ///< the content as it is; a coded one is refused
  int demands = 1;                       ///< see ExchangeParts
  long authenticationMask = CURLAUTH_NONE;
  std::string user;
  std::string password;
};

}  // namespace vtdirect::platform
