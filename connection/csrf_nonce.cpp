#include "connection/csrf_nonce.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "base/failure_step.h"
#include "base/step_words.h"
#include "connection/json_members.h"
#include "connection/rest_items.h"
#include "connection/rest_stream.h"
#include "connection/vt_connection.h"

namespace lxservices::cms_interface::vantry {
namespace {

// Bytes that a header's name may consist of.
bool IsNameByte(char byte) {
  constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
         marks.find(byte) != std::string_view::npos;
}

bool IsControlByte(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value < 0x20 || value == 0x7F;
}

// The header line; empty when the two texts do not make one, and then the next write asks again. A server's
// line feed in them would add header lines of its choice to every later write, and with any other control
// byte no later write could be sent.
std::string MakeHeaderLine(std::string_view key, std::string_view value) {
  const bool isName = !key.empty() && std::all_of(key.begin(), key.end(), IsNameByte);
  if (!isName || std::any_of(value.begin(), value.end(), IsControlByte)) return {};
  return std::string(key) + ": " + std::string(value);
}

// An answer that holds no nonce, or none that can be sent.
std::string NoNonce(const FailureMark& mark) {
  ReportReason(FollowsOr(mark, FailureKind::AnswerBroken));
  return {};
}

std::string LineOrReason(const FailureMark& mark, std::string_view key, std::string_view value) {
  std::string line = MakeHeaderLine(key, value);
  return line.empty() ? NoNonce(mark) : line;
}

}  // namespace

std::string FetchRestCsrf(const std::shared_ptr<HttpConnection>& connection) {
  const FailureStep step(stepFetchNonce);
  const FailureMark mark;
  const auto [status, rows] = ReadRestItems(connection, "servlet/rest/security/csrf", RestListForm::Wrapped);
  if (status != Ok) return {};
  if (rows.size() != 1 || rows.front().id != "csrf") return NoNonce(mark);
  const auto& attributes = rows.front().attributes;
  const auto key = attributes.find("nonce_key");
  const auto nonce = attributes.find("nonce");
  if (key == attributes.end() || nonce == attributes.end()) return NoNonce(mark);
  return LineOrReason(mark, key->second, nonce->second);
}

std::string FetchODataCsrf(const std::shared_ptr<HttpConnection>& connection) {
  const FailureStep step(stepFetchNonce);
  const FailureMark mark;
  const auto request =
      MakeGetRequest(connection, "servlet/odata/v1/ZVK/GetCSRFToken()", VtConnection::ODataHeaders());
  RestStream response(request, {});
  rapidjson::Document document;
  if (!response.succeeded() || !ParseJsonResponse(response, document)) return {};
  if (!document.IsObject()) response.ReportBroken();
  const rapidjson::Value* key = FindString(document, "NonceKey");
  const rapidjson::Value* value = FindString(document, "NonceValue");
  if (key == nullptr || value == nullptr) return NoNonce(mark);
  return LineOrReason(mark, TextView(*key), TextView(*value));
}

}  // namespace lxservices::cms_interface::vantry
