#include "simulator/store/document_instruction.h"

#include <utility>

#include "simulator/wire/json_members.h"

namespace vantry_sim {
namespace {

ContentInstruction ReadContent(const rapidjson::Value& value, std::string& problem) {
  ContentInstruction content;
  JsonMembers members(value, problem);
  members.Text("category", content.category, true).Text("fileName", content.file_name, true);
  members.Flag("isHidden", content.is_hidden);
  if (!members.Has("streamId")) return content;
  members.Number("streamId", content.stream.emplace(0));
  if (const auto* info = members.Object("uploadInfo", true)) {
    JsonMembers(*info, problem).Text("encodedCCD", content.receipt);
  }
  return content;
}

void ReadContents(const rapidjson::Value* array, std::string& problem, std::vector<ContentInstruction>& out) {
  if (array == nullptr) return;
  for (const rapidjson::Value& value : array->GetArray()) out.push_back(ReadContent(value, problem));
}

void ReadAttributes(JsonMembers& document, std::string& problem, DocumentInstruction& out) {
  const rapidjson::Value* array = document.Array("fileBasedAttributes");
  if (array == nullptr) return;
  auto& attributes = out.attributes.emplace();
  for (const rapidjson::Value& value : array->GetArray()) {
    AttributeInstruction attribute;
    JsonMembers members(value, problem);
    if (const auto* definition = members.Object("parameterDefinition", true)) {
      JsonMembers names(*definition, problem);
      names.Text("parameterName", attribute.parameter_name, true)
          .Text("attributeName", attribute.attribute_name);
      names.Text("valueType", attribute.value_type, true);
    }
    if (const auto* given = members.Object("parameterValue", true)) {
      JsonMembers(*given, problem).Text("value", attribute.value);
    }
    attributes.push_back(std::move(attribute));
  }
}

/// `isDerived` false takes all dependencies away; without it and without a list they stay as they are.
void ReadDependencies(JsonMembers& document, std::string& problem, DocumentInstruction& out) {
  bool derived = false;
  document.Flag("isDerived", derived);
  const rapidjson::Value* array = document.Array("derivedSourceDependencies", derived);
  if (!document.Has("isDerived") && array == nullptr) return;
  auto& dependencies = out.dependencies.emplace();
  if (array == nullptr) return;
  for (const rapidjson::Value& value : array->GetArray()) {
    DependencyInstruction dependency;
    JsonMembers members(value, problem);
    members.Text("asStoredChildName", dependency.as_stored_child_name).Flag("isDirect", dependency.is_direct);
    if (const auto* source = members.Object("source", true)) {
      JsonMembers(*source, problem).Text("id", dependency.source, true);
    }
    dependencies.push_back(std::move(dependency));
  }
}

void ReadDocument(const rapidjson::Value& value, std::string& problem, DocumentInstruction& out) {
  JsonMembers document(value, problem);
  document.Text("id", out.id).Text("authAppVersion", out.auth_app_version).Text("ndVersion", out.nd_version);
  document.Text("typeId", out.type_id);
  if (const auto* master = document.Object("epmMaster", true)) {
    JsonMembers members(*master, problem);
    members.Text("cadName", out.cad_name, true).Text("category", out.category);
    members.Text("subCategory", out.sub_category).Text("authoringApplication", out.application);
  }
  if (const auto* content = document.Object("cadContent", true)) {
    ReadContents(JsonMembers(*content, problem).Array("contentSections", true), problem, out.primary);
  }
  ReadContents(document.Array("secondaryContents"), problem, out.secondary);
  ReadAttributes(document, problem, out);
  ReadDependencies(document, problem, out);
  for (const ContentInstruction& content : out.primary) {
    if (!content.stream && problem.empty()) problem = "contentSections names a file without a stream";
  }
  if (out.primary.empty() && problem.empty()) problem = "contentSections is empty";
}

}  // namespace

Refusal ReadInstructions(const rapidjson::Value& body, const char* member,
                         std::vector<DocumentInstruction>& out) {
  std::string problem;
  const rapidjson::Value* array = JsonMembers(body, problem).Array(member, true);
  if (problem.empty() && array->Empty()) problem = std::string(member) + " is empty";
  if (problem.empty() && array->Size() > kMostInstructions) problem = std::string(member) + " is too long";
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  for (const rapidjson::Value& value : array->GetArray()) {
    DocumentInstruction instruction;
    JsonMembers members(value, problem);
    members.Text("targetFolderId", instruction.target_folder);
    if (const auto* document = members.Object("epmDocument", true))
      ReadDocument(*document, problem, instruction);
    if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
    out.push_back(std::move(instruction));
  }
  return std::nullopt;
}

}  // namespace vantry_sim
