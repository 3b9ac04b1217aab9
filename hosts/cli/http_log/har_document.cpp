#include "hosts/cli/http_log/har_document.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <ctime>

#include "hosts/cli/commands/command_line.h"
#include "hosts/cli/program/environment.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

using du::http::ObservedExchange;
using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer, rapidjson::UTF8<>, rapidjson::ASCII<>>;

struct HeaderLine {
  std::string_view name;
  std::string_view value;
};

// A head, taken apart.
struct Head {
  std::string_view firstLine;
  std::vector<HeaderLine> lines;
};

[[nodiscard]] Head ReadHead(std::string_view text) {
  Head head;
  bool isFirst = true;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (isFirst) {
      head.firstLine = line;
    } else if (const std::size_t colon = line.find(':'); colon != std::string_view::npos) {
      const std::size_t value = std::min(line.find_first_not_of(" \t", colon + 1), line.size());
      head.lines.push_back({line.substr(0, colon), line.substr(value)});
    }
    isFirst = false;
  }
  return head;
}

[[nodiscard]] std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return lower;
}

[[nodiscard]] std::string ValueOf(const Head& head, std::string_view name) {
  for (const HeaderLine& line : head.lines) {
    if (LowerCase(line.name) == name) return std::string(line.value);
  }
  return {};
}

// The word of a first line, counted from 0.
[[nodiscard]] std::string_view WordOf(std::string_view line, int index) {
  for (; index > 0; --index) line.remove_prefix(std::min(line.find(' ') + 1, line.size()));
  return line.substr(0, line.find(' '));
}

// What of a body is written: of service metadata and JSON the text, without the secrets of the JSON.
enum class BodyKind { Json, ServiceMetadata, Other };

[[nodiscard]] bool IsJson(std::string_view type) {
  return type.find("json") != std::string_view::npos;
}

// The one XML that says nothing of documents and users.
[[nodiscard]] bool IsServiceMetadata(const ObservedExchange& exchange, std::string_view type) {
  return exchange.url.ends_with("/$metadata") && type.find("xml") != std::string_view::npos;
}

[[nodiscard]] BodyKind KindOfAnswer(const ObservedExchange& exchange, std::string_view type) {
  if (IsJson(type)) return BodyKind::Json;
  return IsServiceMetadata(exchange, type) ? BodyKind::ServiceMetadata : BodyKind::Other;
}

[[nodiscard]] std::string TimeText(std::chrono::system_clock::time_point time) {
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
  const std::time_t seconds = milliseconds / 1000;
  std::tm parts = {};
  gmtime_r(&seconds, &parts);
  char text[32];
  const std::size_t size = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  const std::string fraction = std::to_string(1000 + milliseconds % 1000);
  return std::string(text, size) + "." + fraction.substr(1) + "Z";
}

/// Writes one log.
class HarWriter {
 public:
  explicit HarWriter(const KnownSecrets& secrets) : secrets_(secrets), writer_(buffer_) {}

  [[nodiscard]] std::string Write(const SeenExchanges& seen) {
    writer_.StartObject();
    Object("log");
    Text("version", "1.2");
    Object("creator");
    Text("name", "vtdirect");
    Text("version", VersionText().substr(VersionText().find(' ') + 1));
    writer_.EndObject();
    if (seen.leftOut > 0) {
      Text("comment", std::to_string(seen.leftOut) + " later exchanges are left out for want of room");
    }
    Array("entries");
    for (const ObservedExchange& exchange : seen.exchanges) WriteExchange(exchange);
    writer_.EndArray();
    writer_.EndObject();
    writer_.EndObject();
    return JsonWithoutDelete({buffer_.GetString(), buffer_.GetSize()}) + "\n";
  }

 private:
  void Key(const char* key) { writer_.Key(key); }
  void Object(const char* key) {
    Key(key);
    writer_.StartObject();
  }
  void Array(const char* key) {
    Key(key);
    writer_.StartArray();
  }
  void EmptyArray(const char* key) {
    Array(key);
    writer_.EndArray();
  }
  void Number(const char* key, std::int64_t value) {
    Key(key);
    writer_.Int64(value);
  }
  void Milliseconds(const char* key, std::int64_t microseconds) {
    Key(key);
    writer_.Double(static_cast<double>(microseconds) / 1000);
  }
  // The one way for a text into the log.
  void Text(const char* key, const std::string& text) {
    Key(key);
    const std::string shown = ValidUtf8(secrets_.Hide(text));
    writer_.String(shown.data(), static_cast<rapidjson::SizeType>(shown.size()));
  }

  // The time is that of the whole exchange, with the turns before it.
  void WriteExchange(const ObservedExchange& exchange) {
    std::vector<du::http::ObservedTurn> turns = exchange.turns;
    if (turns.empty()) turns.emplace_back();
    for (const du::http::ObservedTurn& turn : turns) WriteEntry(exchange, turn, &turn == &turns.back());
  }

  void WriteEntry(const ObservedExchange& exchange, const du::http::ObservedTurn& turn, bool isLast) {
    const du::http::ObservedTimes none;
    const du::http::ObservedTimes& times = isLast ? exchange.times : none;
    writer_.StartObject();
    Text("startedDateTime", TimeText(exchange.started));
    Milliseconds("time", times.name + times.connect + times.tls + times.wait + times.receive);
    WriteRequest(exchange, ReadHead(turn.requestHead), isLast);
    WriteResponse(exchange, ReadHead(turn.answerHead), isLast);
    Object("cache");
    writer_.EndObject();
    WriteTimes(times);
    if (!exchange.peer.empty()) Text("serverIPAddress", exchange.peer);
    if (isLast && !exchange.certificates.empty()) {
      const du::http::ObservedCertificate& own = exchange.certificates.front();
      Text("comment",
           "certificate of " + own.subject + ", issued by " + own.issuer + ", until " + own.notAfter);
    }
    writer_.EndObject();
  }

  void WriteLines(const Head& head) {
    EmptyArray("cookies");
    Array("headers");
    for (const HeaderLine& line : head.lines) {
      writer_.StartObject();
      Text("name", std::string(line.name));
      Text("value", RedactedHeader(line.name, line.value));
      writer_.EndObject();
    }
    writer_.EndArray();
  }

  void WriteQuery(std::string_view url) {
    Array("queryString");
    std::string_view query = url.substr(std::min(url.find('?'), url.size()));
    while (!query.empty()) {
      query.remove_prefix(1);
      const std::size_t end = std::min(query.find('&'), query.size());
      const std::string_view pair = query.substr(0, end);
      query.remove_prefix(end);
      const std::size_t equals = std::min(pair.find('='), pair.size());
      writer_.StartObject();
      Text("name", std::string(pair.substr(0, equals)));
      Text("value", std::string(pair.substr(std::min(equals + 1, pair.size()))));
      writer_.EndObject();
    }
    writer_.EndArray();
  }

  void WriteRequest(const ObservedExchange& exchange, const Head& head, bool isLast) {
    const std::string_view method = WordOf(head.firstLine, 0);
    const std::string url = RedactedUrl(exchange.url);
    Object("request");
    Text("method", method.empty() ? MethodWord(exchange.method) : std::string(method));
    Text("url", url);
    Text("httpVersion", "HTTP/1.1");
    WriteLines(head);
    WriteQuery(url);
    Number("headersSize", -1);
    Number("bodySize", isLast ? static_cast<std::int64_t>(exchange.requestBodyBytes) : 0);
    const std::string type = ValueOf(head, "content-type");
    if (isLast && exchange.requestBodyBytes > 0) {
      Object("postData");
      Text("mimeType", type);
      EmptyArray("params");
      WriteBody(IsJson(type) ? BodyKind::Json : BodyKind::Other, exchange.requestBody,
                exchange.requestBodyBytes);
      writer_.EndObject();
    }
    writer_.EndObject();
  }

  void WriteResponse(const ObservedExchange& exchange, const Head& head, bool isLast) {
    const std::string_view status = WordOf(head.firstLine, 1);
    const std::string type = ValueOf(head, "content-type");
    Object("response");
    Number("status", status.size() == 3 ? std::atoi(std::string(status).c_str()) : 0);
    const std::size_t words =
        std::min(head.firstLine.find(status) + status.size() + 1, head.firstLine.size());
    Text("statusText", status.empty() ? "" : std::string(head.firstLine.substr(words)));
    Text("httpVersion", head.firstLine.empty() ? "" : std::string(WordOf(head.firstLine, 0)));
    WriteLines(head);
    Object("content");
    Number("size", isLast ? static_cast<std::int64_t>(exchange.answerBodyBytes) : 0);
    Text("mimeType", type);
    if (isLast && exchange.answerBodyBytes > 0) {
      WriteBody(KindOfAnswer(exchange, type), exchange.answerBody, exchange.answerBodyBytes);
    }
    writer_.EndObject();
    Text("redirectURL", RedactedUrl(ValueOf(head, "location")));
    Number("headersSize", -1);
    Number("bodySize", -1);
    if (isLast && exchange.result != du::http::ErrorCode::Done) {
      Text("_error", "the exchange failed, code " + std::to_string(static_cast<int>(exchange.result)));
    }
    writer_.EndObject();
  }

  void WriteBody(BodyKind kind, const std::string& body, std::uint64_t bytes) {
    if (kind == BodyKind::Other) {
      Text("comment", "left out: " + ByteCount(bytes));
      return;
    }
    Text("text", kind == BodyKind::Json ? RedactedJson(body) : body);
    if (body.size() < bytes)
      Text("comment", "the first " + ByteCount(body.size()) + " of " + std::to_string(bytes));
  }

  void WriteTimes(const du::http::ObservedTimes& times) {
    Object("timings");
    Number("blocked", -1);
    Milliseconds("dns", times.name);
    // As the form has it, the handshake is a part of connecting.
    Milliseconds("connect", times.connect + times.tls);
    Milliseconds("ssl", times.tls);
    Number("send", 0);
    Milliseconds("wait", times.wait);
    Milliseconds("receive", times.receive);
    writer_.EndObject();
  }

  [[nodiscard]] static std::string MethodWord(du::http::Method method) {
    switch (method) {
      case du::http::Method::Post:
        return "POST";
      case du::http::Method::Patch:
        return "PATCH";
      default:
        return "GET";
    }
  }

  const KnownSecrets& secrets_;
  rapidjson::StringBuffer buffer_;
  JsonWriter writer_;
};

void AddSecretsOf(const ObservedExchange& exchange, KnownSecrets& secrets) {
  for (const du::http::ObservedTurn& turn : exchange.turns) {
    for (const std::string* text : {&turn.requestHead, &turn.answerHead}) {
      for (const HeaderLine& line : ReadHead(*text).lines) secrets.AddFromHeader(line.name, line.value);
    }
  }
  if (exchange.turns.empty()) return;
  const auto& turn = exchange.turns.back();
  if (IsJson(ValueOf(ReadHead(turn.requestHead), "content-type"))) secrets.AddFromJson(exchange.requestBody);
  if (IsJson(ValueOf(ReadHead(turn.answerHead), "content-type"))) secrets.AddFromJson(exchange.answerBody);
}

}  // namespace

std::string HarDocument(const SeenExchanges& seen, KnownSecrets known) {
  const KnownSecrets all = WithSecretsOf(seen, std::move(known));
  return HarWriter(all).Write(seen);
}

KnownSecrets WithSecretsOf(const SeenExchanges& seen, KnownSecrets known) {
  for (const ObservedExchange& exchange : seen.exchanges) AddSecretsOf(exchange, known);
  return known;
}

KnownSecrets SecretsOfEnvironment() {
  KnownSecrets secrets;
  for (const char* name :
       {"VTDIRECT_TOKEN", "VTDIRECT_PASSWORD", "VTDIRECT_PROXY_PASSWORD", "VTDIRECT_KEY_PASSPHRASE"}) {
    secrets.Add(Environment(name));
  }
  return secrets;
}

}  // namespace vtdirect_cli
