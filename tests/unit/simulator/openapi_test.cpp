// The description of the admin port is held to what the port does: to its routes, one by one, and to what
// each answers to its own example.
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <set>

#include "admin_fixture.h"
#include "simulator/pages/embedded_files.h"

namespace vantry_sim {
namespace {

using Value = rapidjson::Value;

class OpenApiTest : public AdminTest {
 protected:
  OpenApiTest() {
    options_.sessionSeconds = 60;
    const EmbeddedFile* file = FindEmbeddedFile("openapi.json");
    description_.Parse(file->bytes.data(), file->bytes.size());
    EXPECT_FALSE(description_.HasParseError());
  }

  static bool IsMethod(const std::string& word) {
    return word == "get" || word == "put" || word == "post" || word == "delete";
  }

  /// What the examples count on being there.
  void Prepare() {
    Start();
    Get("/servlet/OrvetGW");
    Admin("PUT", "/snapshots/before-upload");
    Admin("POST", "/faults", R"({"rule":"GET /a=500"})");
    Admin("PUT", "/users/zoe", R"({"password":"pw"})");
  }

  void AddParameters(const Value& holder, std::string& path, std::string& query) {
    if (!holder.HasMember("parameters")) return;
    for (const auto& parameter : holder["parameters"].GetArray()) {
      if (!parameter.HasMember("example")) continue;
      const Value& example = parameter["example"];
      const std::string value = example.IsString() ? example.GetString() : std::to_string(example.GetInt64());
      const std::string name = parameter["name"].GetString();
      if (std::string(parameter["in"].GetString()) == "path") {
        const std::string place = "{" + name + "}";
        path.replace(path.find(place), place.size(), value);
      } else {
        query += (query.empty() ? "?" : "&") + name + "=" + value;
      }
    }
  }

  const Value& Resolved(const Value& schema) {
    if (!schema.HasMember("$ref")) return schema;
    const std::string name = schema["$ref"].GetString();
    return description_["components"]["schemas"][name.substr(name.rfind('/') + 1).c_str()];
  }

  /// What of a value is not as a schema has it; empty for nothing.
  std::string Mismatch(const Value& reference, const Value& value, const std::string& where) {
    const Value& schema = Resolved(reference);
    if (value.IsNull() && schema.HasMember("nullable")) return {};
    const std::string type = schema.HasMember("type") ? schema["type"].GetString() : "";
    const bool fits = type.empty() || (type == "object" && value.IsObject()) ||
                      (type == "array" && value.IsArray()) || (type == "string" && value.IsString()) ||
                      (type == "integer" && value.IsInt64()) || (type == "boolean" && value.IsBool());
    if (!fits) return where + " is no " + type;
    if (schema.HasMember("enum")) {
      for (const auto& word : schema["enum"].GetArray()) {
        if (word == value) return {};
      }
      return where + " is none of the words";
    }
    if (value.IsArray() && schema.HasMember("items")) {
      for (const auto& item : value.GetArray()) {
        if (auto problem = Mismatch(schema["items"], item, where + "[]"); !problem.empty()) return problem;
      }
    }
    return value.IsObject() ? MembersMismatch(schema, value, where) : std::string();
  }

  std::string MembersMismatch(const Value& schema, const Value& value, const std::string& where) {
    if (schema.HasMember("required")) {
      for (const auto& name : schema["required"].GetArray()) {
        if (!value.HasMember(name)) return where + " lacks " + name.GetString();
      }
    }
    if (!schema.HasMember("properties")) return {};
    for (const auto& member : value.GetObject()) {
      const char* name = member.name.GetString();
      const std::string inside = where + "." + name;
      // What is named must be told, but for the records of a state, which the manual tells.
      if (!schema["properties"].HasMember(name)) {
        if (schema.HasMember("description")) continue;
        return inside + " is not told";
      }
      if (auto problem = Mismatch(schema["properties"][name], member.value, inside); !problem.empty())
        return problem;
    }
    return {};
  }

  void TryExample(const std::string& method, const std::string& path, const Value& item,
                  const Value& operation) {
    SCOPED_TRACE(method + " " + path);
    Prepare();
    std::string target = path, query;
    AddParameters(item, target, query);
    AddParameters(operation, target, query);
    std::string body;
    if (operation.HasMember("requestBody")) {
      rapidjson::StringBuffer buffer;
      rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
      operation["requestBody"]["content"]["application/json"]["example"].Accept(writer);
      body = buffer.GetString();
    }
    const Response response = Admin(method, target + query, body);
    EXPECT_LT(response.status, 300) << response.body;
    const std::string status = std::to_string(response.status);
    const Value& told = operation["responses"];
    ASSERT_TRUE(told.HasMember(status.c_str())) << status;
    if (!told[status.c_str()].HasMember("content")) {
      EXPECT_EQ(response.body, "");
      return;
    }
    const auto content = told[status.c_str()]["content"].MemberBegin();
    EXPECT_EQ(
        response.contentType.substr(0, response.contentType.find(';')),
        std::string(content->name.GetString()).substr(0, std::string(content->name.GetString()).find(';')));
    if (std::string(content->name.GetString()) != "application/json") return;
    rapidjson::Document answer;
    answer.Parse(response.body.c_str());
    EXPECT_EQ(Mismatch(content->value["schema"], answer, "answer"), "");
  }

  rapidjson::Document description_;
};

TEST_F(OpenApiTest, TellsTheRoutesOfThePortAndNoOthers) {
  Start();
  std::set<std::string> routes;
  for (const Router::Listed& route : AdminApi(*simulator_).Routes()) {
    routes.insert(route.method + " /" + route.pattern);
    EXPECT_NE(route.about, "") << route.pattern;
  }
  std::set<std::string> told;
  for (const auto& path : description_["paths"].GetObject()) {
    for (const auto& operation : path.value.GetObject()) {
      std::string method = operation.name.GetString();
      if (!IsMethod(method)) continue;
      for (char& c : method) c = static_cast<char>(c - 'a' + 'A');
      told.insert(method + " " + path.name.GetString());
    }
  }
  EXPECT_EQ(told, routes);
}

TEST_F(OpenApiTest, EveryExampleIsAnsweredAsItIsTold) {
  int tried = 0;
  for (const auto& path : description_["paths"].GetObject()) {
    for (const auto& operation : path.value.GetObject()) {
      std::string method = operation.name.GetString();
      if (!IsMethod(method)) continue;
      for (char& c : method) c = static_cast<char>(c - 'a' + 'A');
      TryExample(method, path.name.GetString(), path.value, operation.value);
      ++tried;
      admin_.reset();
      simulator_.reset();
      std::filesystem::remove_all(options_.dataDirectory);
    }
  }
  EXPECT_GT(tried, 35);
}

TEST_F(OpenApiTest, OperationsHaveNamesOfTheirOwn) {
  std::set<std::string> names;
  for (const auto& path : description_["paths"].GetObject()) {
    for (const auto& operation : path.value.GetObject()) {
      if (!IsMethod(operation.name.GetString())) continue;
      EXPECT_TRUE(names.insert(operation.value["operationId"].GetString()).second) << path.name.GetString();
      EXPECT_TRUE(operation.value.HasMember("summary"));
    }
  }
}

}  // namespace
}  // namespace vantry_sim
