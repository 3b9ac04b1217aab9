// Addresses, taken apart without being checked: UIDs hold bytes that a strict reader would refuse.
#include <vtdirect/platform/uri.h>

#include <algorithm>
#include <cctype>

namespace du {
namespace {

using Range = std::pair<std::size_t, std::size_t>;  // begin and length

constexpr Range absent{std::string::npos, 0};

// The ranges that a URI falls into; what is not there has no begin.
struct Parts {
  Range scheme = absent, user = absent, password = absent, host = absent, port = absent, path = absent,
        query = absent, fragment = absent;
};

bool IsScheme(const std::string& uri, std::size_t colon) {
  return colon != std::string::npos && colon > 0 &&
         std::all_of(uri.begin(), uri.begin() + static_cast<std::ptrdiff_t>(colon), [](unsigned char byte) {
           return std::isalnum(byte) != 0 || byte == '+' || byte == '-' || byte == '.';
         });
}

// "user:password@host:port", which lies between `begin` and `end`.
void SplitAuthority(const std::string& uri, std::size_t begin, std::size_t end, Parts* parts) {
  const std::string authority = uri.substr(begin, end - begin);
  const std::size_t at = authority.rfind('@');
  if (at != std::string::npos) {
    const std::size_t colon = std::min(authority.find(':'), at);
    parts->user = {begin, colon};
    if (colon < at) parts->password = {begin + colon + 1, at - colon - 1};
    begin += at + 1;
  }
  std::size_t colon = uri.rfind(':', end == 0 ? 0 : end - 1);
  if (colon == std::string::npos || colon < begin || uri.find(']', colon) < end) colon = end;
  parts->host = {begin, colon - begin};
  if (colon < end) parts->port = {colon + 1, end - colon - 1};
}

Parts Split(const std::string& uri) {
  Parts parts;
  std::size_t position = 0;
  const std::size_t colon = uri.find(':');
  if (IsScheme(uri, colon)) {
    parts.scheme = {0, colon};
    position = colon + 1;
  }
  if (uri.compare(position, 2, "//") == 0) {
    const std::size_t end = std::min(uri.find_first_of("/?#", position + 2), uri.size());
    SplitAuthority(uri, position + 2, end, &parts);
    position = end;
  }
  const std::size_t pathEnd = std::min(uri.find_first_of("?#", position), uri.size());
  if (pathEnd > position) parts.path = {position, pathEnd - position};
  const std::size_t hash = std::min(uri.find('#', pathEnd), uri.size());
  if (pathEnd < hash) parts.query = {pathEnd + 1, hash - pathEnd - 1};
  if (hash < uri.size()) parts.fragment = {hash + 1, uri.size() - hash - 1};
  return parts;
}

int HexDigit(char byte) {
  const std::string digits = "0123456789abcdef";
  const std::size_t found = digits.find(static_cast<char>(std::tolower(static_cast<unsigned char>(byte))));
  return found == std::string::npos ? -1 : static_cast<int>(found);
}

}  // namespace

std::pair<std::size_t, std::size_t> GetURIPartPosCount(const std::string& uri, URIPart part) {
  const Parts parts = Split(uri);
  switch (part) {
    case URIPart::Scheme:
      return parts.scheme;
    case URIPart::User:
      return parts.user;
    case URIPart::Password:
      return parts.password;
    case URIPart::Host:
      return parts.host;
    case URIPart::Port:
      return parts.port;
    case URIPart::Path:
      return parts.path;
    case URIPart::Query:
      return parts.query;
    case URIPart::Fragment:
      return parts.fragment;
  }
  return absent;
}

std::string GetURIPart(const std::string& uri, URIPart part) {
  const Range range = GetURIPartPosCount(uri, part);
  return range.first == std::string::npos ? std::string() : uri.substr(range.first, range.second);
}

void URI_Escape(std::string* out, const std::string& in, std::size_t position, std::size_t count) {
  const std::string text = position > in.size() ? std::string() : in.substr(position, count);
  const char* digits = "0123456789ABCDEF";
  out->clear();
  for (const char byte : text) {
    const auto value = static_cast<unsigned char>(byte);
    const bool plain = (value < 0x80 && std::isalnum(value) != 0) ||
                       (byte != '\0' && std::string("-._~").find(byte) != std::string::npos);
    if (plain) {
      *out += byte;
    } else {
      *out += {'%', digits[value / 16], digits[value % 16]};
    }
  }
}

void URI_Unescape(std::string* out, std::size_t position, const std::string& in) {
  const std::string text = position > in.size() ? std::string() : in.substr(position);
  out->clear();
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool escape =
        text[at] == '%' && at + 2 < text.size() && HexDigit(text[at + 1]) >= 0 && HexDigit(text[at + 2]) >= 0;
    *out += escape ? static_cast<char>(16 * HexDigit(text[at + 1]) + HexDigit(text[at + 2])) : text[at];
    if (escape) at += 2;
  }
}

}  // namespace du
