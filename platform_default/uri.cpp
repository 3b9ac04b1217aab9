#include "platform/uri.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "platform_default/characters.h"

namespace du {
namespace {

using vtdirect::platform::AppendPercentEscaped;
using vtdirect::platform::ByteTable;
using vtdirect::platform::HexadecimalValue;
using vtdirect::platform::IsAsciiDigit;
using vtdirect::platform::IsAsciiLetter;
using vtdirect::platform::IsIn;
using vtdirect::platform::TableOf;

struct Range {
  std::size_t position = std::string::npos;
  std::size_t count = 0;
};

/// Where each part is. An absent part keeps the position npos.
struct UriParts {
  Range scheme, user, password, host, port, path, query, fragment;
};

constexpr ByteTable unreserved = TableOf([](char byte) {
  return IsAsciiLetter(byte) || IsAsciiDigit(byte) || byte == '-' || byte == '.' || byte == '_' ||
         byte == '~';
});

Range Between(std::size_t begin, std::size_t end) {
  return {begin, end - begin};
}

/// The first position from `begin` on and before `end` that holds one of `bytes`, else `end`.
std::size_t FindBefore(std::string_view text, std::string_view bytes, std::size_t begin, std::size_t end) {
  const std::size_t found = text.find_first_of(bytes, begin);
  return found == std::string_view::npos || found > end ? end : found;
}

bool IsSchemeByte(char byte) {
  return IsAsciiLetter(byte) || IsAsciiDigit(byte) || byte == '+' || byte == '-' || byte == '.';
}

/// The length of the scheme that the text begins with, 0 without one. In front of "://" any bytes make one: a
/// host may give its addresses a stem that no strict scheme allows ("my_app").
std::size_t SchemeLength(std::string_view uri) {
  const std::size_t length = uri.find_first_of(":/?#");
  if (length == std::string_view::npos || uri[length] != ':') return 0;
  if (uri.substr(length).starts_with("://")) return length;
  const std::string_view scheme = uri.substr(0, length);
  const bool strict =
      !scheme.empty() && IsAsciiLetter(scheme[0]) && std::all_of(scheme.begin(), scheme.end(), IsSchemeByte);
  return strict ? length : 0;
}

void SplitUserInformation(std::string_view uri, std::size_t begin, std::size_t end, UriParts* parts) {
  const std::size_t colon = FindBefore(uri, ":", begin, end);
  parts->user = Between(begin, colon);
  if (colon < end) parts->password = Between(colon + 1, end);
}

/// Takes "host", "host:port" and "[address]:port" apart. An address in brackets keeps its brackets, as its
/// colons are none of the delimiters.
void SplitHostAndPort(std::string_view uri, std::size_t begin, std::size_t end, UriParts* parts) {
  std::size_t search = begin;
  if (begin < end && uri[begin] == '[') search = FindBefore(uri, "]", begin, end);
  const std::size_t colon = FindBefore(uri, ":", search, end);
  parts->host = Between(begin, colon);
  if (colon < end) parts->port = Between(colon + 1, end);
}

void SplitAuthority(std::string_view uri, std::size_t begin, std::size_t end, UriParts* parts) {
  // The last "@" closes the user information: a password with a raw "@" must not become part of the host.
  const std::size_t at = uri.substr(begin, end - begin).rfind('@');
  if (at != std::string_view::npos) {
    SplitUserInformation(uri, begin, begin + at, parts);
    begin += at + 1;
  }
  SplitHostAndPort(uri, begin, end, parts);
}

UriParts Split(std::string_view uri) {
  UriParts parts;
  std::size_t position = 0;
  if (const std::size_t length = SchemeLength(uri); length > 0) {
    parts.scheme = {0, length};
    position = length + 1;
  }
  std::size_t end = uri.size();
  if (const std::size_t hash = uri.find('#', position); hash != std::string_view::npos) {
    parts.fragment = Between(hash + 1, end);
    end = hash;
  }
  if (const std::size_t mark = FindBefore(uri, "?", position, end); mark < end) {
    parts.query = Between(mark + 1, end);
    end = mark;
  }
  if (uri.substr(position, end - position).substr(0, 2) == "//") {
    const std::size_t authority = position + 2;
    position = FindBefore(uri, "/", authority, end);
    SplitAuthority(uri, authority, position, &parts);
  }
  if (position < end) parts.path = Between(position, end);
  return parts;
}

Range PartOf(const UriParts& parts, URIPart part) {
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
  return {};
}

}  // namespace

void URI_Escape(std::string* out, const std::string& in, std::size_t position, std::size_t count) {
  std::string escaped;
  if (position < in.size()) {
    const std::string_view part = std::string_view(in).substr(position, count);
    escaped.reserve(part.size());
    for (const char byte : part) {
      if (IsIn(unreserved, byte)) {
        escaped += byte;
      } else {
        AppendPercentEscaped(byte, &escaped);
      }
    }
  }
  *out = std::move(escaped);
}

void URI_Unescape(std::string* out, std::size_t position, const std::string& in) {
  std::string text;
  for (std::size_t at = position; at < in.size(); ++at) {
    if (in[at] == '%' && in.size() - at > 2) {
      const int high = HexadecimalValue(in[at + 1]);
      const int low = HexadecimalValue(in[at + 2]);
      if (high >= 0 && low >= 0) {
        text += static_cast<char>(high * 16 + low);
        at += 2;
        continue;
      }
    }
    text += in[at];
  }
  *out = std::move(text);
}

std::string GetURIPart(const std::string& uri, URIPart part) {
  const Range range = PartOf(Split(uri), part);
  return range.position == std::string::npos ? std::string() : uri.substr(range.position, range.count);
}

std::pair<std::size_t, std::size_t> GetURIPartPosCount(const std::string& uri, URIPart part) {
  const Range range = PartOf(Split(uri), part);
  return {range.position, range.count};
}

}  // namespace du
