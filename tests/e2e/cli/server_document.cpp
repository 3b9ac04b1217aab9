#include "tests/e2e/cli/server_document.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

namespace vtdirect_test {
namespace {

std::string TextAt(const rapidjson::Value& object, const char* name) {
  return object.HasMember(name) && object[name].IsString() ? object[name].GetString() : "";
}

std::string BytesOf(const Simulator& server, const rapidjson::Value& content) {
  const std::string stream = std::to_string(content["streamId"].GetUint64());
  return server.Get("/servlet/rest/v1/content/streams/" + stream + "/content");
}

void ReadContents(const Simulator& server, const rapidjson::Value& json, ServerDocument& document) {
  const auto& sections = json["cadContent"]["contentSections"];
  if (!sections.Empty()) {
    document.category = TextAt(sections[0], "category");
    document.bytes = BytesOf(server, sections[0]);
  }
  for (const auto& content : json["secondaryContents"].GetArray()) {
    document.secondary.push_back({TextAt(content, "category"), TextAt(content, "fileName"),
                                  BytesOf(server, content), content["isHidden"].GetBool()});
  }
}

void ReadLists(const rapidjson::Value& json, ServerDocument& document) {
  for (const auto& attribute : json["fileBasedAttributes"].GetArray()) {
    document.attributes[TextAt(attribute["parameterDefinition"], "parameterName")] =
        TextAt(attribute["parameterValue"], "value");
  }
  for (const auto& source : json["derivedSourceDependencies"].GetArray()) {
    document.sources[TextAt(source, "asStoredChildName")] = TextAt(source["source"], "id");
  }
}

}  // namespace

ServerDocument DocumentOf(const Simulator& server, const std::string& id) {
  ServerDocument document;
  const std::string answer = server.Get("/servlet/rest/v1/dkm/documents/" + id);
  rapidjson::Document json;
  json.Parse(answer.c_str());
  if (json.HasParseError() || !json.IsObject() || !json.HasMember("epmMaster")) {
    ADD_FAILURE() << "no document " << id << ": " << answer;
    return document;
  }
  document.version = TextAt(json, "revision") + "." + TextAt(json, "iteration");
  document.name = TextAt(json["epmMaster"], "cadName");
  document.masterCategory = TextAt(json["epmMaster"], "category");
  document.application = TextAt(json["epmMaster"], "authoringApplication");
  document.applicationVersion = TextAt(json, "authAppVersion");
  document.checkedOutBy = TextAt(json["pdmIterationState"], "checkoutByUser");
  if (json.HasMember("locationFolder")) document.folder = TextAt(json["locationFolder"], "path");
  ReadContents(server, json, document);
  ReadLists(json, document);
  return document;
}

std::string IdIn(const std::string& uid) {
  const std::size_t start = uid.find("?id=");
  if (start == std::string::npos) return "";
  const std::size_t end = uid.find_first_of("&|\n", start);
  return uid.substr(start + 4, end == std::string::npos ? end : end - start - 4);
}

}  // namespace vtdirect_test
