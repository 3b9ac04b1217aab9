#include "hosts/cli/doctor/seen_way.h"

#include <algorithm>
#include <ctime>

namespace vtdirect_cli {
namespace {

using du::http::ObservedCertificate;
using du::http::ObservedExchange;

constexpr long secondsOfADay = 24L * 60 * 60;
constexpr long daysToWarn = 30;

[[nodiscard]] std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return lower;
}

// The value of a header line, by its name in small letters; empty without one.
[[nodiscard]] std::string HeaderOf(const std::string& head, const std::string& name) {
  const std::string lower = LowerCase(head);
  const std::size_t line = lower.find("\n" + name + ":");
  if (line == std::string::npos) return {};
  const std::size_t start = std::min(head.find_first_not_of(" \t", line + name.size() + 2), head.size());
  const std::size_t end = std::min(head.find_first_of("\r\n", start), head.size());
  return head.substr(start, end - start);
}

[[nodiscard]] bool WentThroughProxy(const ObservedExchange& exchange) {
  return std::any_of(exchange.turns.begin(), exchange.turns.end(), [](const du::http::ObservedTurn& turn) {
    const std::size_t target = turn.requestHead.find(' ') + 1;
    return turn.requestHead.starts_with("CONNECT ") || turn.requestHead.compare(target, 7, "http://") == 0;
  });
}

// "Oct  1 00:00:00 2026 GMT"; 0 for what can't be read.
[[nodiscard]] long TimeOf(const std::string& text) {
  std::tm parts = {};
  if (strptime(text.c_str(), "%b %d %H:%M:%S %Y", &parts) == nullptr) return 0;
  return static_cast<long>(timegm(&parts));
}

[[nodiscard]] std::string DateText(long seconds) {
  const std::time_t time = seconds;
  std::tm parts = {};
  char text[16];
  if (gmtime_r(&time, &parts) == nullptr) return {};
  return {text, std::strftime(text, sizeof text, "%Y-%m-%d", &parts)};
}

// Every login that a request carried, and whether it was refused.
struct Login {
  std::string scheme;
  bool refused = false;
};

[[nodiscard]] std::vector<Login> LoginsIn(const std::vector<ObservedExchange>& exchanges) {
  std::vector<Login> logins;
  for (const ObservedExchange& exchange : exchanges) {
    for (const du::http::ObservedTurn& turn : exchange.turns) {
      const std::string sent = HeaderOf(turn.requestHead, "authorization");
      if (sent.empty() || turn.answerHead.empty()) continue;
      logins.push_back({sent.substr(0, sent.find(' ')), turn.answerHead.find(" 401") == 8});
    }
  }
  return logins;
}

[[nodiscard]] bool WasRefused(const std::vector<ObservedExchange>& exchanges) {
  return !exchanges.empty() && exchanges.back().status == 401;
}

[[nodiscard]] std::string LineValue(const std::string& body, const std::string& key) {
  const std::size_t line = body.starts_with(key + ":") ? 0 : body.find("\n" + key + ":");
  if (line == std::string::npos) return {};
  const std::size_t start = body.find(':', line) + 1;
  std::string value = body.substr(start, body.find_first_of("\r\n", start) - start);
  const bool isNumber = !value.empty() && value.size() < 10 &&
                        std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; });
  return isNumber ? value : std::string();
}

// The number after the annotation of a service's version.
[[nodiscard]] std::string SchemaVersionIn(const std::string& metadata) {
  const std::size_t annotation = metadata.find("Core.SchemaVersion");
  if (annotation == std::string::npos) return {};
  const std::size_t text = metadata.find("<String>", annotation);
  if (text == std::string::npos) return {};
  const std::size_t start = text + std::string("<String>").size();
  const std::size_t end = metadata.find_first_not_of("0123456789", start);
  return metadata.substr(start, std::min<std::size_t>(end - start, 9));
}

// "DataAdmin" of ".../servlet/odata/DataAdmin/$metadata".
[[nodiscard]] std::string ServiceOf(const std::string& url) {
  const std::string before = "/servlet/odata/";
  const std::string after = "/$metadata";
  const std::size_t start = url.find(before);
  if (start == std::string::npos || !url.ends_with(after)) return {};
  const std::size_t name = start + before.size();
  return name + after.size() > url.size() ? "" : url.substr(name, url.size() - after.size() - name);
}

}  // namespace

std::optional<ExaminedStep> ConnectionSeen(const std::vector<ObservedExchange>& exchanges) {
  for (const ObservedExchange& exchange : exchanges) {
    if (exchange.status == 0 || exchange.peer.empty()) continue;
    std::string seen = WentThroughProxy(exchange) ? "a proxy at " + exchange.peer : exchange.peer;
    if (exchange.newConnection)
      seen += ", connected within " + std::to_string(exchange.times.connect / 1000) + " ms";
    seen += ", answered within " + std::to_string(exchange.times.wait / 1000) + " ms";
    return ExaminedStep{"connection", ExaminedStep::State::Ok, seen, {}};
  }
  return std::nullopt;
}

std::optional<ExaminedStep> CertificateSeen(const std::vector<ObservedExchange>& exchanges, long now) {
  for (const ObservedExchange& exchange : exchanges) {
    if (exchange.certificates.empty()) continue;
    const ObservedCertificate& own = exchange.certificates.front();
    const long end = TimeOf(own.notAfter);
    ExaminedStep finding{
        "certificate", ExaminedStep::State::Ok, own.subject + ", issued by " + own.issuer, {}};
    if (end == 0) return finding;
    finding.seen += ", valid until " + DateText(end);
    if (end - now < daysToWarn * secondsOfADay) {
      finding.state = ExaminedStep::State::Warning;
      finding.advice = "it ends within " + std::to_string(std::max(0L, (end - now) / secondsOfADay)) +
                       " days; tell whoever runs the server";
    }
    return finding;
  }
  return std::nullopt;
}

ExaminedStep LoginSeen(const std::vector<ObservedExchange>& exchanges) {
  const std::vector<Login> logins = LoginsIn(exchanges);
  if (WasRefused(exchanges)) {
    const std::string what = logins.empty() ? "the server demands a login, and there was none to give"
                                            : "the server refused the login (" + logins.back().scheme + ")";
    return {"login", ExaminedStep::State::Failed, what,
            "set VTDIRECT_USER and VTDIRECT_PASSWORD or VTDIRECT_TOKEN, or keep a login with vtdirect login"};
  }
  if (logins.empty()) return {"login", ExaminedStep::State::Ok, "the server asked for none", {}};
  return {"login", ExaminedStep::State::Ok, "the server took the login (" + logins.back().scheme + ")", {}};
}

std::string VersionSeen(const std::vector<ObservedExchange>& exchanges) {
  for (const ObservedExchange& exchange : exchanges) {
    if (exchange.status != 200 || !exchange.url.ends_with("/servlet/OrvetGW")) continue;
    std::string version;
    for (const char* key :
         {"ServerMajorVersion", "ServerMinorVersion", "ServerServicepackVersion", "ServerCPSVersion"}) {
      const std::string number = LineValue(exchange.answerBody, key);
      if (number.empty()) break;
      version += (version.empty() ? "" : ".") + number;
    }
    return version;
  }
  return {};
}

std::string ServicesSeen(const std::vector<ObservedExchange>& exchanges) {
  std::vector<std::string> services;
  for (const ObservedExchange& exchange : exchanges) {
    const std::string name = ServiceOf(exchange.url);
    if (exchange.status != 200 || name.empty()) continue;
    const std::string version = SchemaVersionIn(exchange.answerBody);
    const std::string service = version.empty() ? name : name + " " + version;
    if (std::find(services.begin(), services.end(), service) == services.end()) services.push_back(service);
  }
  std::sort(services.begin(), services.end());
  std::string text;
  for (const std::string& service : services) text += (text.empty() ? "" : ", ") + service;
  return text;
}

bool LoginWasTaken(const std::vector<ObservedExchange>& exchanges) {
  const std::vector<Login> logins = LoginsIn(exchanges);
  return !logins.empty() && !logins.back().refused && !WasRefused(exchanges);
}

}  // namespace vtdirect_cli
