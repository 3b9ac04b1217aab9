#include "documents/storing/text_document.h"

#include <string_view>
#include <utility>
#include <vector>

#include "base/failure_trace.h"
#include "documents/storing/content_upload.h"
#include "documents/storing/document_instruction.h"
#include "documents/storing/json_post.h"
#include "documents/workspaces/workspace_post.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr std::string_view languageAttribute = "ZVK_DD_LANGUAGE";
constexpr KindDefaults textDefaults{"TEXT", "{$CAD_NAME}", "xml", {}, "J-01"};

// No setting counts here and no application is compared: text documents belong to an application of their
// own.
rapidjson::Value MakeTextMaster(const DocumentRecord& document, const std::string& cadName,
                                JsonAllocator& allocator) {
  const EpmMasterRecord& master = document.master;
  rapidjson::Value value(rapidjson::kObjectType);
  value.AddMember("category", MakeText(FirstGiven(master.category, textDefaults.masterCategory), allocator),
                  allocator);
  value.AddMember("cadName", MakeText(FirstGiven(master.cadName, cadName), allocator), allocator);
  value.AddMember("authoringApplication",
                  MakeText(FirstGiven(master.authoringApplication, "SENTARIX"), allocator), allocator);
  return value;
}

std::vector<FileBasedAttribute> MakeTextAttributes(const DocumentRecord* document,
                                                   const NewTextDocument& properties) {
  const std::string& language = properties.language;
  std::vector<FileBasedAttribute> attributes;
  if (document == nullptr) {
    if (properties.translate) {
      attributes.push_back(MakeStringAttribute("ZVK_DD_TRANSLATE", *properties.translate));
    }
    if (properties.extendedDocType) {
      attributes.push_back(MakeStringAttribute("ZVK_DD_EXTENDED_DOC_TYPE", *properties.extendedDocType));
    }
  } else {
    for (const FileBasedAttribute& attribute : document->fileBasedAttributes) {
      if (language.empty() || attribute.parameterName != languageAttribute) attributes.push_back(attribute);
    }
  }
  if (!language.empty()) attributes.push_back(MakeStringAttribute(languageAttribute, language));
  return attributes;
}

rapidjson::Value MakeTextDocument(const DocumentRecord* document, const NewTextDocument& properties,
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
  if (document == nullptr && properties.typeId) {
    value.AddMember("typeId", MakeText(*properties.typeId, allocator), allocator);
  }
  rapidjson::Value attributes(rapidjson::kArrayType);
  for (const FileBasedAttribute& attribute : MakeTextAttributes(document, properties)) {
    attributes.PushBack(WriteAttribute(attribute, allocator), allocator);
  }
  if (!attributes.Empty()) value.AddMember("fileBasedAttributes", attributes, allocator);
  return value;
}

rapidjson::Document MakeTextBody(const DocumentRecord* document, const NewTextDocument& properties,
                                 const UploadedContent* content) {
  rapidjson::Document body(rapidjson::kObjectType);
  auto& allocator = body.GetAllocator();
  rapidjson::Value instruction(rapidjson::kObjectType);
  instruction.AddMember("epmDocument", MakeTextDocument(document, properties, content, allocator), allocator);
  if (document == nullptr && properties.folderId) {
    instruction.AddMember("targetFolderId", MakeText(*properties.folderId, allocator), allocator);
  }
  rapidjson::Value instructions(rapidjson::kArrayType);
  instructions.PushBack(instruction, allocator);
  const bool creates = document == nullptr;
  body.AddMember(rapidjson::StringRef(creates ? "createInstructions" : "iterateInstructions"), instructions,
                 allocator);
  const std::string& context = creates ? properties.contextId : document->contextId;
  body.AddMember("contextId", MakeText(context, allocator), allocator);
  return body;
}

// Iterates a document, of whose properties the language alone counts then, or creates one when there is none.
std::optional<DocumentRecord> WriteTextDocument(ServerContext& server, const DocumentRecord* document,
                                                const NewTextDocument& properties, const std::string& path,
                                                du::http::ProgressFunction progress) {
  const FailureStep step("write the XLIFF document");
  const auto [status, contents] = UploadContents(server, {path}, std::move(progress));
  if (status != Ok) return std::nullopt;
  const UploadedContent* content = contents.empty() ? nullptr : &contents.front();
  JsonPost post(server, "servlet/rest/v1/dkm/documents", MakeTextBody(document, properties, content));
  RestStream& response = post.response();
  std::optional<DocumentRecord> written;
  if (response.succeeded()) written = ReadFirstDocument(response);
  if (!written) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to update document with error %d : %s\n",
                         response.status(), response.errorText().c_str());
  }
  if (!response.succeeded()) return std::nullopt;
  return written.value_or(DocumentRecord());
}

}  // namespace

std::optional<DocumentRecord> UpdateTextDocument(ServerContext& server, const NewTextDocument& document,
                                                 const std::string& path,
                                                 du::http::ProgressFunction progress) {
  return WriteTextDocument(server, nullptr, document, path, std::move(progress));
}

std::optional<DocumentRecord> UpdateTextDocument(ServerContext& server, const DocumentRecord& document,
                                                 const std::string& language, const std::string& path,
                                                 du::http::ProgressFunction progress) {
  NewTextDocument properties;
  properties.language = language;
  return WriteTextDocument(server, &document, properties, path, std::move(progress));
}

}  // namespace lxservices::cms_interface::vantry
