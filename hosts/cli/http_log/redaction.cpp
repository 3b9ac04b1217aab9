#include "hosts/cli/http_log/redaction.h"

#include <algorithm>
#include <array>
#include <functional>

namespace vtdirect_cli {
namespace {

constexpr std::size_t shortestSecret = 6;
// Every text of a log is searched for each of them. A server that sends a new cookie with every answer has many.
constexpr std::size_t mostSecrets = 256;

// In small letters.
constexpr std::array<std::string_view, 26> harmlessHeaders{"accept",
                                                           "accept-encoding",
                                                           "accept-ranges",
                                                           "allow",
                                                           "cache-control",
                                                           "connection",
                                                           "content-encoding",
                                                           "content-length",
                                                           "content-range",
                                                           "content-type",
                                                           "date",
                                                           "expires",
                                                           "host",
                                                           "keep-alive",
                                                           "last-modified",
                                                           "odata-maxversion",
                                                           "odata-version",
                                                           "pragma",
                                                           "prefer",
                                                           "range",
                                                           "retry-after",
                                                           "server",
                                                           "transfer-encoding",
                                                           "user-agent",
                                                           "vary",
                                                           "via"};

constexpr std::array<std::string_view, 15> harmlessParameters{
    "$count",  "$expand", "$filter", "$format",   "$orderby",
    "$select", "$skip",   "$top",    "contextId", "number",
    "path",    "scope",   "type",    "typeId",    "zvk.search.latestversion"};

// What clients ask a server for. A path that goes on after one of them names objects and functions.
constexpr std::array<std::string_view, 11> knownPaths{"/servlet/odata/",
                                                      "/servlet/rest/v1/contexts",
                                                      "/servlet/rest/v1/dkm/",
                                                      "/servlet/rest/v1/folders/",
                                                      "/servlet/rest/security/",
                                                      "/servlet/rest/objects",
                                                      "/servlet/rest/snx_gw/",
                                                      "/servlet/rest/v1/content/creationFactory",
                                                      "/servlet/rest/content/creationFactory",
                                                      "/servlet/OrvetGW",
                                                      "/servlet/VantryAuthGW/"};

constexpr std::array<std::string_view, 13> secretWords{
    "nonce",      "token", "passw",    "secret",    "ticket",    "cookie", "session",
    "credential", "csrf",  "authoriz", "authentic", "signature", "apikey"};

[[nodiscard]] char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

[[nodiscard]] std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = LowerCase(c);
  return lower;
}

template <typename List>
[[nodiscard]] bool Holds(const List& list, std::string_view text) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

[[nodiscard]] bool SpeaksOfASecret(std::string_view name) {
  const std::string lower = LowerCase(name);
  return std::any_of(secretWords.begin(), secretWords.end(),
                     [&lower](std::string_view word) { return lower.find(word) != std::string::npos; });
}

[[nodiscard]] std::string RedactedPath(std::string_view path) {
  for (const std::string_view known : knownPaths) {
    if (path.find(known) != std::string_view::npos) return std::string(path);
  }
  return path.empty() || path == "/" ? std::string(path) : "/" + std::string(hiddenText);
}

[[nodiscard]] std::string RedactedQuery(std::string_view query) {
  std::string shown;
  while (!query.empty()) {
    const std::size_t end = std::min(query.find('&'), query.size());
    const std::string_view pair = query.substr(0, end);
    query.remove_prefix(std::min(end + 1, query.size()));
    const std::size_t equals = pair.find('=');
    const std::string_view name = pair.substr(0, equals);
    shown += shown.empty() ? "?" : "&";
    if (IsHarmlessParameter(name)) {
      shown += pair;
    } else {
      // A bare word may be a ticket as well as a name.
      shown += equals == std::string_view::npos ? std::string(hiddenText)
                                                : std::string(name) + "=" + std::string(hiddenText);
    }
  }
  return shown;
}

[[nodiscard]] bool LooksLikeUrl(std::string_view text) {
  return text.starts_with("http://") || text.starts_with("https://") ||
         text.find("/servlet/") != std::string_view::npos;
}

// What is in a JSON text, piece by piece.
struct JsonPiece {
  enum class Kind { Key, Text, Other };
  Kind kind = Kind::Other;
  std::string_view text;  // of a key or a text without its quotes, as it is escaped
  bool isWhole = true;    // its closing quote is there
};

[[nodiscard]] std::size_t EndOfText(std::string_view json, std::size_t from) {
  for (std::size_t at = from; at < json.size(); ++at) {
    if (json[at] == '\\') {
      ++at;
    } else if (json[at] == '"') {
      return at;
    }
  }
  return json.size();
}

[[nodiscard]] bool ColonFollows(std::string_view json, std::size_t at) {
  const std::size_t next = json.find_first_not_of(" \t\r\n", at);
  return next != std::string_view::npos && json[next] == ':';
}

void VisitJson(std::string_view json, const std::function<void(const JsonPiece&)>& visit) {
  std::size_t at = 0;
  while (at < json.size()) {
    if (json[at] != '"') {
      const std::size_t end = std::min(json.find('"', at), json.size());
      visit({.kind = JsonPiece::Kind::Other, .text = json.substr(at, end - at)});
      at = end;
      continue;
    }
    const std::size_t end = EndOfText(json, at + 1);
    const bool isWhole = end < json.size();
    const bool isKey = isWhole && ColonFollows(json, end + 1);
    visit({isKey ? JsonPiece::Kind::Key : JsonPiece::Kind::Text, json.substr(at + 1, end - at - 1), isWhole});
    at = std::min(end + 1, json.size());
  }
}

// Slashes of an address may be escaped.
[[nodiscard]] std::string WithPlainSlashes(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '\\' && at + 1 < text.size() && text[at + 1] == '/') continue;
    plain += text[at];
  }
  return plain;
}

// Numbers after a name that speaks of a secret.
[[nodiscard]] std::string WithoutNumbers(std::string_view text) {
  std::string shown;
  for (const char c : text) {
    const bool isDigit = c >= '0' && c <= '9';
    if (!isDigit) {
      shown += c;
    } else if (!shown.ends_with('"')) {
      shown += "\"***\"";
    }
  }
  return shown;
}

[[nodiscard]] std::string FromBase64(std::string_view text) {
  constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  unsigned bits = 0;
  int count = 0;
  for (const char c : text) {
    const std::size_t digit = digits.find(c);
    if (digit == std::string_view::npos) break;
    bits = (bits << 6U | static_cast<unsigned>(digit)) & 0xFFFFFU;
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>((bits >> static_cast<unsigned>(count)) & 0xFFU);
  }
  return bytes;
}

// Whether the value that comes next is a secret: by its own name, or in {"name": "nonce", "value": "..."} by
// that of the object.
class SecretNames {
 public:
  void Key(std::string_view key) {
    isName_ = key == "name" || key == "key" || key == "id";
    isSecret_ = SpeaksOfASecret(key) || (key == "value" && nameIsSecret_);
  }
  void Text(std::string_view text) {
    if (isName_) nameIsSecret_ = SpeaksOfASecret(text);
  }
  [[nodiscard]] bool isSecret() const { return isSecret_; }

 private:
  bool isName_ = false;
  bool nameIsSecret_ = false;
  bool isSecret_ = false;
};

}  // namespace

std::string RedactedHeader(std::string_view name, std::string_view value) {
  const std::string lower = LowerCase(name);
  if (Holds(harmlessHeaders, lower)) return std::string(value);
  if (lower == "location" || lower == "content-location") return RedactedUrl(value);
  if (lower == "www-authenticate" || lower == "proxy-authenticate" || lower == "authorization") {
    const std::string_view scheme = value.substr(0, value.find(' '));
    return scheme.size() == value.size() ? std::string(hiddenText)
                                         : std::string(scheme) + " " + std::string(hiddenText);
  }
  return std::string(hiddenText);
}

bool IsHarmlessParameter(std::string_view name) {
  return Holds(harmlessParameters, name);
}

std::string RedactedUrl(std::string_view url) {
  url = url.substr(0, url.find('#'));
  const std::size_t query = std::min(url.find('?'), url.size());
  const std::size_t scheme = url.substr(0, query).find("://");
  std::size_t path = 0;
  std::string shown;
  if (scheme != std::string_view::npos) {
    path = std::min(url.find('/', scheme + 3), query);
    const std::string_view authority = url.substr(scheme + 3, path - scheme - 3);
    const std::size_t user = authority.rfind('@');
    shown = std::string(url.substr(0, scheme + 3)) +
            std::string(user == std::string_view::npos ? authority : authority.substr(user + 1));
  }
  shown += RedactedPath(url.substr(path, query - path));
  return query < url.size() ? shown + RedactedQuery(url.substr(query + 1)) : shown;
}

std::string RedactedJson(std::string_view text) {
  std::string shown;
  SecretNames names;
  VisitJson(text, [&](const JsonPiece& piece) {
    if (piece.kind == JsonPiece::Kind::Other) {
      shown += names.isSecret() ? WithoutNumbers(piece.text) : std::string(piece.text);
      return;
    }
    std::string inside(piece.text);
    if (piece.kind == JsonPiece::Kind::Key) {
      names.Key(inside);
    } else if (names.isSecret() || !piece.isWhole) {
      inside = hiddenText;
    } else if (const std::string plain = WithPlainSlashes(inside); LooksLikeUrl(plain)) {
      inside = RedactedUrl(plain);
    }
    if (piece.kind == JsonPiece::Kind::Text) names.Text(piece.text);
    shown += "\"" + inside + "\"";
  });
  return shown;
}

void KnownSecrets::Add(std::string_view text) {
  if (text.size() < shortestSecret || text == hiddenText || texts_.size() >= mostSecrets) return;
  if (!Holds(texts_, text)) texts_.emplace_back(text);
}

void KnownSecrets::AddFromHeader(std::string_view name, std::string_view value) {
  const std::string shown = RedactedHeader(name, value);
  if (shown == value) return;
  const std::string lower = LowerCase(name);
  if (lower == "location" || lower == "content-location") return;
  // What a Digest login sends is another text each time, and of use nowhere else.
  if (LowerCase(value).starts_with("digest ")) return;
  Add(value);
  const std::size_t blank = value.find(' ');
  const std::string_view rest =
      blank == std::string_view::npos ? std::string_view() : value.substr(blank + 1);
  if (lower == "authorization" || lower == "proxy-authorization") {
    Add(rest);
    if (!LowerCase(value).starts_with("basic ")) return;
    const std::string login = FromBase64(rest);
    Add(login);
    Add(login.substr(std::min(login.find(':') + 1, login.size())));
  }
  // "name=value; name=value" of cookies, of which each may turn up alone.
  if (lower != "cookie" && lower != "set-cookie") return;
  for (std::string_view cookies = value; !cookies.empty();) {
    const std::size_t end = std::min(cookies.find(';'), cookies.size());
    const std::string_view cookie = cookies.substr(0, end);
    if (const std::size_t equals = cookie.find('='); equals != std::string_view::npos)
      Add(cookie.substr(equals + 1));
    if (lower == "set-cookie") break;
    cookies.remove_prefix(std::min(end + 1, cookies.size()));
  }
}

void KnownSecrets::AddFromJson(std::string_view text) {
  SecretNames names;
  VisitJson(text, [&](const JsonPiece& piece) {
    if (piece.kind == JsonPiece::Kind::Key) names.Key(piece.text);
    if (piece.kind != JsonPiece::Kind::Text) return;
    if (names.isSecret()) Add(piece.text);
    names.Text(piece.text);
  });
}

std::string KnownSecrets::Hide(std::string text) const {
  for (const std::string& secret : texts_) {
    for (std::size_t at = text.find(secret); at != std::string::npos;
         at = text.find(secret, at + hiddenText.size())) {
      text.replace(at, secret.size(), hiddenText);
    }
  }
  return text;
}

}  // namespace vtdirect_cli
