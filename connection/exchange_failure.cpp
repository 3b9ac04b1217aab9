#include "connection/exchange_failure.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "connection/printable_text.h"
#include "platform/uri.h"

namespace lxservices::cms_interface::vantry {
namespace {

using du::http::ErrorCode;

constexpr std::string_view hidden = "***";
/// A shorter value is in many words by chance, and guards nothing.
constexpr std::size_t shortestSecret = 4;
constexpr std::size_t longestText = 1024;

/// The parameters that this library sends itself: names, numbers and ids of what is asked for.
constexpr std::array<std::string_view, 12> harmlessParameters{
    "$expand", "$filter", "$orderby", "$select", "$top",   "contextId",
    "number",  "path",    "scope",    "type",    "typeId", "zvk.search.latestversion"};
constexpr std::array<std::string_view, 5> harmlessHeaders{"Accept", "Content-Type", "OData-Version",
                                                          "OData-MaxVersion", "Prefer"};

template <typename List>
bool Holds(const List& list, std::string_view text) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

// Calls `visit` with each piece of a text between delimiters.
template <typename Visit>
void ForEachPiece(std::string_view text, std::string_view delimiter, Visit visit) {
  while (true) {
    const auto end = text.find(delimiter);
    visit(text.substr(0, end));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + delimiter.size());
  }
}

std::string_view ValueOf(std::string_view pair, char delimiter) {
  const auto at = pair.find(delimiter);
  return at == std::string_view::npos ? std::string_view() : pair.substr(at + 1);
}

std::string ShownQuery(std::string_view query) {
  std::string shown;
  ForEachPiece(query, "&", [&](std::string_view parameter) {
    shown += shown.empty() ? "?" : "&";
    const std::string_view name = parameter.substr(0, parameter.find('='));
    const bool hasValue = name.size() < parameter.size();
    // A bare word may be a ticket as well as a name.
    if (Holds(harmlessParameters, name)) {
      shown += parameter;
    } else if (hasValue) {
      shown.append(name).append("=").append(hidden);
    } else if (!parameter.empty()) {
      shown += hidden;
    }
  });
  return shown;
}

std::string OriginOf(const std::string& url) {
  const std::string port = du::GetURIPart(url, du::URIPart::Port);
  const std::string origin =
      du::GetURIPart(url, du::URIPart::Scheme) + "://" + du::GetURIPart(url, du::URIPart::Host);
  return port.empty() ? origin : origin + ":" + port;
}

void AddSecret(std::vector<std::string>& secrets, std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  if (text.size() >= shortestSecret) secrets.emplace_back(text);
}

// What must not be shown although the server may repeat it: the nonce, the login in the server's URL, and
// what a server's own address holds.
std::vector<std::string> SecretsOf(const EndedExchange& exchange) {
  std::vector<std::string> secrets;
  ForEachPiece(exchange.headers, "\r\n", [&](std::string_view line) {
    if (!Holds(harmlessHeaders, line.substr(0, line.find(':')))) AddSecret(secrets, ValueOf(line, ':'));
  });
  const std::string server(exchange.server);
  AddSecret(secrets, du::GetURIPart(server, du::URIPart::User));
  AddSecret(secrets, du::GetURIPart(server, du::URIPart::Password));
  if (exchange.isOwnAddress) return secrets;
  const std::string_view path = exchange.uri.substr(0, exchange.uri.find('?'));
  ForEachPiece(path, "/", [&](std::string_view piece) { AddSecret(secrets, piece); });
  if (path.size() < exchange.uri.size()) {
    ForEachPiece(exchange.uri.substr(path.size() + 1), "&",
                 [&](std::string_view pair) { AddSecret(secrets, ValueOf(pair, '=')); });
  }
  return secrets;
}

void Hide(std::string& text, const std::string& secret) {
  for (auto at = text.find(secret); at != std::string::npos; at = text.find(secret, at + hidden.size())) {
    text.replace(at, secret.size(), hidden);
  }
  // The text was cut somewhere, perhaps within the secret.
  for (std::size_t count = std::min(secret.size() - 1, text.size()); count >= shortestSecret; --count) {
    if (!std::string_view(text).ends_with(std::string_view(secret).substr(0, count))) continue;
    text.replace(text.size() - count, count, hidden);
    return;
  }
}

}  // namespace

FailureKind KindOfStatus(int httpStatus) {
  switch (httpStatus) {
    case 401:
      return FailureKind::CredentialsWanted;
    case 404:
    case 410:
      return FailureKind::NotFound;
    case 409:
    case 412:
    case 423:  // locked
      return FailureKind::Conflict;
    case 413:
      return FailureKind::TooLarge;
    default:
      return FailureKind::Refused;
  }
}

FailureKind KindOfError(ErrorCode error) {
  switch (error) {
    case ErrorCode::NoConnection:
    case ErrorCode::TlsFailure:
      return FailureKind::Unreachable;
    case ErrorCode::TimedOut:
      return FailureKind::TimedOut;
    case ErrorCode::Cancelled:
      return FailureKind::Cancelled;
    case ErrorCode::TooLarge:
      return FailureKind::TooLarge;
    case ErrorCode::LocalFileFailure:
      return FailureKind::LocalFile;
    default:
      return FailureKind::AnswerBroken;
  }
}

bool MayHaveHappened(const EndedExchange& exchange) {
  if (exchange.method == du::http::Method::Get) return false;
  switch (exchange.error) {
    case ErrorCode::Done:
      // A success that could not be read, or the server's own trouble: it may have come after the deed.
      return exchange.status >= 500 || (exchange.status >= 200 && exchange.status <= 299);
    case ErrorCode::NoConnection:
    case ErrorCode::TlsFailure:
    case ErrorCode::TooLarge:
      return false;
    default:
      return exchange.wasSentWhole;
  }
}

std::string ShownUrl(const EndedExchange& exchange) {
  const std::string origin = OriginOf(std::string(exchange.server));
  std::string shown;
  if (exchange.isOwnAddress) {
    const std::string_view uri = exchange.uri.substr(0, exchange.uri.find('#'));
    const auto query = uri.find('?');
    const std::string_view path = uri.substr(0, query);
    shown = origin + (path.starts_with('/') ? "" : "/") + std::string(path);
    if (query != std::string_view::npos) shown += ShownQuery(uri.substr(query + 1));
  } else {
    shown = origin + "/" + std::string(hidden);
  }
  return PrintableText(shown, longestText);
}

std::string ShownText(const EndedExchange& exchange) {
  std::string text(exchange.text.substr(0, longestText));
  for (const std::string& secret : SecretsOf(exchange)) Hide(text, secret);
  return PrintableText(text, longestText);
}

Failure DescribeFailure(const EndedExchange& exchange) {
  const bool isDelivered = exchange.error == ErrorCode::Done;
  const bool isUnreadable = isDelivered && exchange.status >= 200 && exchange.status <= 299;
  Failure failure;
  failure.kind = !isDelivered   ? KindOfError(exchange.error)
                 : isUnreadable ? FailureKind::AnswerBroken
                                : KindOfStatus(exchange.status);
  if (isDelivered) failure.httpStatus = exchange.status;
  if (exchange.error == ErrorCode::TooLarge) failure.httpStatus = exchange.status;
  failure.platformError = static_cast<int>(exchange.error);
  if (!isUnreadable) failure.serverText = ShownText(exchange);
  failure.url = ShownUrl(exchange);
  failure.mayHaveHappened = MayHaveHappened(exchange);
  failure.platformDetail = static_cast<int>(exchange.found.detail);
  failure.platformText = PrintableText(exchange.found.text, longestText);
  return failure;
}

}  // namespace lxservices::cms_interface::vantry
