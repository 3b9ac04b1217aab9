#pragma once

#include <string>
#include <string_view>

#include "base/failure.h"
#include "platform/http.h"

/// The reason of an exchange that failed, fit to be shown: bounded, printable and without secrets.
namespace lxservices::cms_interface::vantry {

/// One exchange that is over. Nothing is owned.
struct EndedExchange {
  du::http::Method method = du::http::Method::Get;
  std::string_view server;   ///< the URL that the connection was made for
  std::string_view uri;      ///< base path, path and query as they were sent
  bool isOwnAddress = true;  ///< made up by this library; false for an address that a server gave
  std::string_view headers;  ///< the header lines that were sent
  bool wasSentWhole = true;  ///< whether the body, if there was one, was read to its end
  du::http::ErrorCode error = du::http::ErrorCode::Done;
  int status = 0;                      ///< counts for an answer that was delivered, and with TooLarge
  std::string_view text;               ///< what the server said
  du::http::FailureReport found = {};  ///< its cause, if it is known
};

/// The kind of a delivered answer outside 200 to 299.
[[nodiscard]] FailureKind KindOfStatus(int httpStatus);

/// The kind of an exchange that did not deliver an answer.
[[nodiscard]] FailureKind KindOfError(du::http::ErrorCode error);

/// Whether the server may have done what it was asked to, although the exchange failed.
[[nodiscard]] bool MayHaveHappened(const EndedExchange& exchange);

/// Scheme, host, port, path and query without secrets. An address that a server gave may hold a ticket
/// anywhere, so only its origin is told.
[[nodiscard]] std::string ShownUrl(const EndedExchange& exchange);

/// The first 1024 bytes of what a server said as UTF-8 without control and direction characters, each of
/// which becomes a blank, without the values of header lines that are not this library's own.
[[nodiscard]] std::string ShownText(const EndedExchange& exchange);

/// All of it, without a step.
[[nodiscard]] Failure DescribeFailure(const EndedExchange& exchange);

}  // namespace lxservices::cms_interface::vantry
