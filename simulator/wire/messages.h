#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/wire/uri.h"

namespace vantry_sim {

/// A request as the route handlers see it: checked, decoded, and free of the HTTP library.
struct Request {
  std::string method;         ///< "HEAD" arrives as "GET"
  std::string target;         ///< as it is on the request line
  std::string path;           ///< after the prefix, as it is on the request line, with "/" in front
  std::string client;         ///< the address that it came from
  std::string host;           ///< the Host header, unchecked; may be empty
  std::string origin;         ///< the Origin header; may be empty
  std::string user;           ///< who asks; never empty after the authentication
  std::string prefer;         ///< the Prefer header; may be empty
  std::string nonce;          ///< the X-Zvk-Nonce header; may be empty
  std::string contentType;    ///< the Content-Type header; may be empty
  std::string range;          ///< the Range header; may be empty
  std::string cookies;        ///< the Cookie header; may be empty
  std::string authorization;  ///< the Authorization header; may be empty
  std::string sessionNonce;   ///< of the session that it is in; empty on a server without sessions
  QueryParameters query;      ///< decoded
  std::map<std::string, std::string, std::less<>> pathParameters;  ///< decoded; what the route's braces took
  std::vector<std::string> tail;  ///< decoded segments that an open end of the route took
  std::string body;

  /// The first value of a query parameter; nothing without one. An empty value is a value.
  [[nodiscard]] std::optional<std::string> Query(std::string_view name) const;

  /// A path parameter of the route that was matched; empty for a name that the route doesn't have.
  [[nodiscard]] const std::string& Path(std::string_view name) const;
};

/// A file, or a part of one, that is the body of an answer, streamed and never held.
struct FileBody {
  std::filesystem::path path;
  std::uint64_t size = 0;
  std::uint64_t first = 0;  ///< where the body begins in the file
};

/// A body up to this size is cheaper to copy than to share, and to be sent piece by piece.
inline constexpr std::size_t shortBody = 64 * 1024;

/// An answer.
struct Response {
  int status = 200;
  std::string contentType = "application/json;charset=UTF-8";
  std::string body;
  std::shared_ptr<const std::string> shared;  ///< in place of `body`, for one that several answers have
  std::optional<FileBody> file;               ///< in place of `body`
  std::vector<std::pair<std::string, std::string>> headers;
  bool once = false;  ///< the same question may have another answer next time, though nothing was written
};

/// What an operation answers when it can't be done; nothing when it was.
using Refusal = std::optional<Response>;

/// A refusal with a reason: {"error":{"code":...,"message":...}}.
/// @param code one word for programs, such as "not-found"
Response ErrorResponse(int status, std::string_view code, std::string_view message);

}  // namespace vantry_sim
