#include "simulator/store/document_instruction.h"

#include <utility>

#include "simulator/wire/json_members.h"

namespace vantry_sim {
namespace {

ContentInstruction ReadContent(JsonValue value, std::string& problem) {
  ContentInstruction content;
  JsonMembers members(value, problem);
  members.Text("category", content.category, Presence::Required)
      .Text("fileName", content.fileName, Presence::Required);
  members.Flag("isHidden", content.isHidden);
  if (!members.Has("streamId")) return content;
  members.Number("streamId", content.stream.emplace(0));
  if (const JsonValue info = members.Object("uploadInfo", Presence::Required); !info.IsMissing()) {
    JsonMembers(info, problem).Text("encodedCCD", content.receipt);
  }
  return content;
}

void ReadContents(JsonValue array, std::string& problem, std::vector<ContentInstruction>& out) {
  if (array.IsMissing()) return;
  for (const JsonValue value : array) out.push_back(ReadContent(value, problem));
}

void ReadAttributes(JsonMembers& document, std::string& problem, DocumentInstruction& out) {
  JsonValue array = document.Array("fileBasedAttributes");
  if (array.IsMissing()) return;
  auto& attributes = out.attributes.emplace();
  for (const JsonValue value : array) {
    AttributeInstruction attribute;
    JsonMembers members(value, problem);
    if (const JsonValue definition = members.Object("parameterDefinition", Presence::Required);
        !definition.IsMissing()) {
      JsonMembers names(definition, problem);
      names.Text("parameterName", attribute.parameterName, Presence::Required)
          .Text("attributeName", attribute.attributeName);
      names.Text("valueType", attribute.valueType, Presence::Required);
    }
    if (const JsonValue given = members.Object("parameterValue", Presence::Required); !given.IsMissing()) {
      JsonMembers(given, problem).Text("value", attribute.value);
    }
    attributes.push_back(std::move(attribute));
  }
}

/// `isDerived` false takes all dependencies away; without it and without a list they stay as they are.
void ReadDependencies(JsonMembers& document, std::string& problem, DocumentInstruction& out) {
  bool derived = false;
  document.Flag("isDerived", derived);
  JsonValue array =
      document.Array("derivedSourceDependencies", derived ? Presence::Required : Presence::Optional);
  if (!document.Has("isDerived") && array.IsMissing()) return;
  auto& dependencies = out.dependencies.emplace();
  if (array.IsMissing()) return;
  for (const JsonValue value : array) {
    DependencyInstruction dependency;
    JsonMembers members(value, problem);
    members.Text("asStoredChildName", dependency.asStoredChildName).Flag("isDirect", dependency.isDirect);
    if (const JsonValue source = members.Object("source", Presence::Required); !source.IsMissing()) {
      JsonMembers(source, problem).Text("id", dependency.source, Presence::Required);
    }
    dependencies.push_back(std::move(dependency));
  }
}

void ReadDocument(JsonValue value, std::string& problem, DocumentInstruction& out) {
  JsonMembers document(value, problem);
  document.Text("id", out.id).Text("authAppVersion", out.authAppVersion).Text("ndVersion", out.ndVersion);
  document.Text("typeId", out.typeId);
  if (const JsonValue master = document.Object("epmMaster", Presence::Required); !master.IsMissing()) {
    JsonMembers members(master, problem);
    members.Text("cadName", out.cadName, Presence::Required).Text("category", out.category);
    members.Text("subCategory", out.subCategory).Text("authoringApplication", out.application);
  }
  if (const JsonValue content = document.Object("cadContent", Presence::Required); !content.IsMissing()) {
    ReadContents(JsonMembers(content, problem).Array("contentSections", Presence::Required), problem,
                 out.primary);
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

OrRefusal<std::vector<DocumentInstruction>> ReadInstructions(JsonValue body, const char* member) {
  std::string problem;
  JsonValue array = JsonMembers(body, problem).Array(member, Presence::Required);
  if (problem.empty() && array.Size() == 0) problem = std::string(member) + " is empty";
  if (problem.empty() && array.Size() > mostInstructions) problem = std::string(member) + " is too long";
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  std::vector<DocumentInstruction> instructions;
  for (const JsonValue value : array) {
    DocumentInstruction instruction;
    JsonMembers members(value, problem);
    members.Text("targetFolderId", instruction.targetFolder);
    if (const JsonValue document = members.Object("epmDocument", Presence::Required); !document.IsMissing())
      ReadDocument(document, problem, instruction);
    if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
    instructions.push_back(std::move(instruction));
  }
  return instructions;
}

}  // namespace vantry_sim
