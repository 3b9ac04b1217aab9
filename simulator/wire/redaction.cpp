#include "simulator/wire/redaction.h"

#include <algorithm>
#include <array>

#include "simulator/wire/json.h"
#include "simulator/wire/json_reader.h"
#include "simulator/wire/request_head.h"
#include "simulator/wire/uri.h"

namespace vantry_sim {
namespace {

constexpr std::array<std::string_view, 34> headers{
    "Accept",
    "Accept-Charset",
    "Accept-Encoding",
    "Accept-Language",
    "Cache-Control",
    "Connection",
    "Content-Encoding",
    "Content-Length",
    "Content-Type",
    "Date",
    "DNT",
    "Expect",
    "Host",
    "If-Match",
    "If-Modified-Since",
    "If-None-Match",
    "If-Range",
    "If-Unmodified-Since",
    "Keep-Alive",
    "Max-Forwards",
    "OData-MaxVersion",
    "OData-Version",
    "Origin",
    "Pragma",
    "Prefer",
    "Range",
    "TE",
    "Trailer",
    "Transfer-Encoding",
    "Upgrade",
    "User-Agent",
    "Via",
    "X-Requested-With",
    "X-Zvk-Connected",
};

constexpr std::array<std::string_view, 18> parameters{
    "$count",     "$expand", "$filter", "$orderby",  "$select", "$skip",
    "$skiptoken", "$top",    "action",  "contextId", "number",  "oid",
    "path",       "scope",   "type",    "typeId",    "u8",      "zvk.search.latestversion",
};

constexpr std::array<std::string_view, 35> members{
    "ZVKDDEXTENDEDDOCTYPE",
    "appliedEntities",
    "asStoredChildName",
    "attributeName",
    "authAppVersion",
    "authoringApplication",
    "cadName",
    "category",
    "checkinComment",
    "code",
    "contextId",
    "dependenciesOption",
    "description",
    "field",
    "fileName",
    "id",
    "isDerived",
    "isDirect",
    "isForwardable",
    "isHidden",
    "name",
    "ndVersion",
    "ndVersions",
    "noOfFiles",
    "objIdList",
    "oidForQ7zkDocument",
    "oidForXliffDocument",
    "parameterName",
    "removeFromWorkspace",
    "resolutionOption",
    "streamId",
    "subCategory",
    "targetFolderId",
    "typeId",
    "value",
};

/// `type` and `valueType` of what an instruction names.
constexpr std::array<std::string_view, 2> moreMembers{"type", "valueType"};

constexpr std::string_view uploadPathPart = "/servlet/content/upload/";
constexpr int deepest = 64;

template <typename List>
bool Holds(const List& list, std::string_view name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

void WriteShown(JsonText& json, JsonValue value, bool known, int depth) {
  if (depth == 0 || (!known && value.Size() == 0 && !value.IsArray() && !value.IsObject())) {
    json.String(hiddenText);
  } else if (value.IsObject()) {
    json.StartObject();
    for (const JsonValue member : value) {
      json.Key(member.Name());
      WriteShown(json, member, Holds(members, member.Name()) || Holds(moreMembers, member.Name()), depth - 1);
    }
    json.EndObject();
  } else if (value.IsArray()) {
    json.StartArray();
    for (const JsonValue item : value) WriteShown(json, item, known, depth - 1);
    json.EndArray();
  } else if (value.IsText()) {
    json.String(value.Text());
  } else if (value.IsBoolean()) {
    json.Boolean(value.Boolean());
  } else if (value.IsNumber()) {
    json.RawNumber(value.NumberText());
  } else {
    json.Null();
  }
}

std::string WithoutUserInformation(std::string_view target) {
  const auto scheme = target.find("://");
  if (target.starts_with('/') || scheme == std::string_view::npos) return std::string(target);
  const auto host = scheme + 3;
  const auto at = target.substr(0, target.find('/', host)).rfind('@');
  if (at == std::string_view::npos || at < host) return std::string(target);
  return std::string(target.substr(0, host)).append(hiddenText).append(target.substr(at));
}

}  // namespace

std::string ShownHeader(std::string_view name, std::string_view value) {
  const bool known = std::any_of(headers.begin(), headers.end(),
                                 [&](std::string_view header) { return SameHeaderName(header, name); });
  return std::string(known ? value : hiddenText);
}

std::string ShownTarget(std::string_view target) {
  std::string shown = WithoutUserInformation(target);
  const auto mark = shown.find('?');
  std::string query = mark == std::string::npos ? std::string() : shown.substr(mark);
  if (mark != std::string::npos) shown.resize(mark);
  // Whoever writes the path in escapes means the same one.
  if (auto decoded = PercentDecode(shown); decoded && decoded->find(uploadPathPart) != std::string::npos)
    shown = std::move(*decoded);
  if (const auto upload = shown.find(uploadPathPart);
      upload != std::string::npos && upload + uploadPathPart.size() < shown.size())
    shown.replace(upload + uploadPathPart.size(), std::string::npos, hiddenText);
  for (std::size_t at = 0; at < query.size();) {
    const auto end = std::min(query.find('&', at + 1), query.size());
    const auto equals = query.find('=', at + 1);
    const std::string_view name = std::string_view(query).substr(at + 1, std::min(equals, end) - at - 1);
    shown.append(query, at, std::min(equals, end) - at);
    const bool known = Holds(parameters, PercentDecode(name).value_or(""));
    if (equals < end) shown.append(known ? query.substr(equals, end - equals) : "=(hidden)");
    at = end;
  }
  return shown;
}

std::string ShownBody(std::string_view contentType, std::string_view body) {
  if (!contentType.starts_with("application/json")) return {};
  const auto document = ReadJson(body);
  if (!document) return {};
  JsonText json;
  WriteShown(json, document->Root(), false, deepest);
  return json.Take();
}

}  // namespace vantry_sim
