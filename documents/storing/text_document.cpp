#include "documents/storing/text_document.h"

#include <string>
#include <utility>
#include <vector>

#include "base/failure_trace.h"
#include "base/text.h"
#include "documents/storing/content_upload.h"
#include "documents/storing/document_instruction.h"
#include "documents/storing/json_post.h"
#include "documents/workspaces/workspace_post.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr const char* languageAttribute = "ZVK_DD_LANGUAGE";
constexpr KindDefaults textDefaults{"TEXT", "{$CAD_NAME}", "xml", nullptr, "J-01"};

// What a text document is made of beside its content.
struct TextProperties {
  const char* cadName;
  const char* folderId;
  const char* translate;
  const char* language;
  const char* extendedDocType;
  const char* typeId;
};

// No setting counts here and no application is compared: text documents belong to an application of their
// own.
rapidjson::Value MakeTextMaster(const DocumentRecord& document, const char* cadName,
                                JsonAllocator& allocator) {
  const EpmMasterRecord& master = document.master;
  rapidjson::Value value(rapidjson::kObjectType);
  value.AddMember("category", MakeText(FirstGiven(master.category, textDefaults.masterCategory), allocator),
                  allocator);
  value.AddMember("cadName", MakeText(FirstGiven(master.cadName, TextOrEmpty(cadName)), allocator),
                  allocator);
  value.AddMember("authoringApplication",
                  MakeText(FirstGiven(master.authoringApplication, "SENTARIX"), allocator), allocator);
  return value;
}

std::vector<FileBasedAttribute> MakeTextAttributes(const DocumentRecord* document,
                                                   const TextProperties& properties) {
  const std::string language = TextOrEmpty(properties.language);
  std::vector<FileBasedAttribute> attributes;
  if (document == nullptr) {
    if (properties.translate != nullptr) {
      attributes.push_back(MakeStringAttribute("ZVK_DD_TRANSLATE", properties.translate));
    }
    if (properties.extendedDocType != nullptr) {
      attributes.push_back(MakeStringAttribute("ZVK_DD_EXTENDED_DOC_TYPE", properties.extendedDocType));
    }
  } else {
    for (const FileBasedAttribute& attribute : document->fileBasedAttributes) {
      if (language.empty() || attribute.parameterName != languageAttribute) attributes.push_back(attribute);
    }
  }
  if (!language.empty()) attributes.push_back(MakeStringAttribute(languageAttribute, language));
  return attributes;
}

rapidjson::Value MakeTextDocument(const DocumentRecord* document, const TextProperties& properties,
                                  const UploadedContent* content, JsonAllocator& allocator) {
  const DocumentRecord none;
  const DocumentRecord& known = document != nullptr ? *document : none;
  rapidjson::Value value(rapidjson::kObjectType);
  if (document != nullptr) value.AddMember("id", MakeText(document->id, allocator), allocator);
  value.AddMember("epmMaster", MakeTextMaster(known, properties.cadName, allocator), allocator);
  const ContentRecord section = MakePrimarySection(document, content, textDefaults);
  value.AddMember("cadContent", MakeCadContent(section, allocator), allocator);
  value.AddMember("authAppVersion", MakeText(FirstGiven(known.authAppVersion, "7000"), allocator), allocator);
  value.AddMember("ndVersion", MakeText(FirstGiven(known.ndVersion, textDefaults.ndVersion), allocator),
                  allocator);
  if (document == nullptr && properties.typeId != nullptr) {
    value.AddMember("typeId", MakeText(properties.typeId, allocator), allocator);
  }
  rapidjson::Value attributes(rapidjson::kArrayType);
  for (const FileBasedAttribute& attribute : MakeTextAttributes(document, properties)) {
    attributes.PushBack(WriteAttribute(attribute, allocator), allocator);
  }
  if (!attributes.Empty()) value.AddMember("fileBasedAttributes", attributes, allocator);
  return value;
}

rapidjson::Document MakeTextBody(const DocumentRecord* document, const TextProperties& properties,
                                 const char* contextId, const UploadedContent* content) {
  rapidjson::Document body(rapidjson::kObjectType);
  auto& allocator = body.GetAllocator();
  rapidjson::Value instruction(rapidjson::kObjectType);
  instruction.AddMember("epmDocument", MakeTextDocument(document, properties, content, allocator), allocator);
  if (document == nullptr && properties.folderId != nullptr) {
    instruction.AddMember("targetFolderId", MakeText(properties.folderId, allocator), allocator);
  }
  rapidjson::Value instructions(rapidjson::kArrayType);
  instructions.PushBack(instruction, allocator);
  const char* member = document == nullptr ? "createInstructions" : "iterateInstructions";
  body.AddMember(rapidjson::StringRef(member), instructions, allocator);
  const std::string context = document == nullptr ? TextOrEmpty(contextId) : document->contextId;
  body.AddMember("contextId", MakeText(context, allocator), allocator);
  return body;
}

}  // namespace

bool UpdateTextDocument(ServerContext& server, const DocumentRecord* document, const char* cadName,
                        const char* contextId, const char* folderId, const char* path, const char* translate,
                        const char* language, const char* extendedDocType, const char* typeId,
                        DocumentRecord* result, du::http::ProgressFunction progress) {
  const FailureStep step("write the XLIFF document");
  std::vector<UploadedContent> contents;
  if (UploadContents(server, {TextOrEmpty(path)}, contents, std::move(progress)) != Ok) return false;
  const TextProperties properties{cadName, folderId, translate, language, extendedDocType, typeId};
  const UploadedContent* content = contents.empty() ? nullptr : &contents.front();
  JsonPost post(server, "servlet/rest/v1/dkm/documents",
                MakeTextBody(document, properties, contextId, content));
  RestStream& response = post.response();
  DocumentRecord dropped;
  if (!response.succeeded() || !ReadFirstDocument(response, result != nullptr ? *result : dropped)) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to update document with error %d : %s\n",
                         response.status(), response.errorText().c_str());
  }
  return response.succeeded();
}

}  // namespace lxservices::cms_interface::vantry
