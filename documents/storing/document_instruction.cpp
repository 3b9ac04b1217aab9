#include "documents/storing/document_instruction.h"

#include "connection/json_members.h"
#include "documents/storing/secondary_contents.h"

namespace lxservices::cms_interface::vantry {
namespace {

const std::vector<DerivedSourceDependency>& DependenciesOf(const InstructionParts& parts) {
  static const std::vector<DerivedSourceDependency> none;
  if (parts.dependencies != nullptr) return *parts.dependencies;
  return parts.document != nullptr ? parts.document->dependencies : none;
}

// An iteration keeps the application that wrote the document, with the version that it was written with.
AuthoringApplicationVersion ApplicationOf(const InstructionParts& parts) {
  const DocumentRecord* document = parts.document;
  if (document == nullptr || document->master.authoringApplication == parts.application.application) {
    return parts.application;
  }
  return {document->master.authoringApplication, document->authAppVersion};
}

rapidjson::Value MakeMaster(const InstructionParts& parts, const std::string& application,
                            JsonAllocator& allocator) {
  const KindDefaults& defaults = DefaultsOf(parts.kind);
  const EpmMasterRecord none;
  const EpmMasterRecord& master = parts.document != nullptr ? parts.document->master : none;
  rapidjson::Value value(rapidjson::kObjectType);
  value.AddMember("category", MakeText(FirstGiven(master.category, defaults.masterCategory), allocator),
                  allocator);
  value.AddMember("subCategory",
                  MakeText(FirstGiven(master.subCategory, defaults.masterSubCategory), allocator), allocator);
  value.AddMember("cadName", MakeText(FirstGiven(master.cadName, parts.name), allocator), allocator);
  value.AddMember("authoringApplication", MakeText(application, allocator), allocator);
  return value;
}

rapidjson::Value MakeDependencies(const std::vector<DerivedSourceDependency>& dependencies,
                                  JsonAllocator& allocator) {
  rapidjson::Value list(rapidjson::kArrayType);
  for (const DerivedSourceDependency& dependency : dependencies) {
    rapidjson::Value master(rapidjson::kObjectType);
    master.AddMember("id", MakeText(dependency.sourceMaster.id, allocator), allocator);
    master.AddMember("cadName", MakeText(dependency.sourceMaster.cadName, allocator), allocator);
    rapidjson::Value source(rapidjson::kObjectType);
    source.AddMember("id", MakeText(dependency.sourceId, allocator), allocator);
    source.AddMember("epmMaster", master, allocator);
    rapidjson::Value entry(rapidjson::kObjectType);
    entry.AddMember("asStoredChildName", MakeText(dependency.asStoredChildName, allocator), allocator);
    entry.AddMember("isDirect", dependency.isDirect, allocator);
    entry.AddMember("source", source, allocator);
    list.PushBack(entry, allocator);
  }
  return list;
}

// The document's attributes are copied as the server gave them, so that members that this model does not know
// survive; only language and translation are touched.
rapidjson::Value MakeAttributes(const InstructionParts& parts, JsonAllocator& allocator) {
  rapidjson::Value attributes(rapidjson::kArrayType);
  const rapidjson::Value* known =
      parts.json != nullptr ? FindArray(*parts.json, "fileBasedAttributes") : nullptr;
  if (known != nullptr) attributes.CopyFrom(*known, allocator);
  if (!parts.language.empty()) ReplaceAttribute(attributes, allocator, "ZVK_DD_LANGUAGE", parts.language);
  if (FindAttribute(attributes, "ZVK_DD_LANGUAGE") != attributes.End() &&
      FindAttribute(attributes, "ZVK_DD_TRANSLATE") == attributes.End()) {
    ReplaceAttribute(attributes, allocator, "ZVK_DD_TRANSLATE", "yes");
  }
  return attributes;
}

void AddFenletMembers(const InstructionParts& parts, JsonAllocator& allocator, rapidjson::Value& document) {
  const auto& dependencies = DependenciesOf(parts);
  document.AddMember("isDerived", !dependencies.empty(), allocator);
  if (!dependencies.empty()) {
    document.AddMember("derivedSourceDependencies", MakeDependencies(dependencies, allocator), allocator);
  }
  rapidjson::Value attributes = MakeAttributes(parts, allocator);
  if (!attributes.Empty()) document.AddMember("fileBasedAttributes", attributes, allocator);
}

rapidjson::Value MakeEpmDocument(const InstructionParts& parts, JsonAllocator& allocator) {
  const KindDefaults& defaults = DefaultsOf(parts.kind);
  const bool isFenlet = parts.kind == DocumentKind::Fenlet;
  const AuthoringApplicationVersion application = ApplicationOf(parts);
  const ContentRecord primary = MakePrimarySection(parts.document, parts.main, defaults);
  rapidjson::Value document(rapidjson::kObjectType);
  if (parts.document != nullptr) document.AddMember("id", MakeText(parts.document->id, allocator), allocator);
  document.AddMember("epmMaster", MakeMaster(parts, application.application, allocator), allocator);
  document.AddMember("cadContent", MakeCadContent(primary, allocator), allocator);
  if (isFenlet) {
    rapidjson::Value secondary = MakeSecondaryContents(parts, primary.fileName, allocator);
    if (!secondary.Empty()) document.AddMember("secondaryContents", secondary, allocator);
  }
  document.AddMember("authAppVersion", MakeText(application.version, allocator), allocator);
  const std::string ndVersion = parts.document != nullptr ? parts.document->ndVersion : std::string();
  document.AddMember("ndVersion", MakeText(FirstGiven(ndVersion, defaults.ndVersion), allocator), allocator);
  if (isFenlet) AddFenletMembers(parts, allocator, document);
  return document;
}

}  // namespace

const KindDefaults& DefaultsOf(DocumentKind kind) {
  static constexpr KindDefaults fenlet{"FENLET", "{$CAD_NAME}", "iso", "FENLET", "J-01"};
  static constexpr KindDefaults general{"GENERAL", "{$CAD_NAME}", "OTHER", "OTHER", "J-01"};
  static constexpr KindDefaults ugc{"DOVA_UGC", "{$CAD_NAME}", "kdx", "", "L-01"};
  switch (kind) {
    case DocumentKind::General:
      return general;
    case DocumentKind::Ugc:
      return ugc;
    default:
      return fenlet;
  }
}

std::string_view FirstGiven(std::string_view text, std::string_view otherwise) {
  return text.empty() ? otherwise : text;
}

ContentRecord MakePrimarySection(const DocumentRecord* document, const UploadedContent* content,
                                 const KindDefaults& defaults) {
  ContentRecord section;
  if (document != nullptr && !document->contentSections.empty()) {
    section.category = document->contentSections.front().category;
    section.fileName = document->contentSections.front().fileName;
  }
  if (section.category.empty()) section.category = defaults.category;
  if (section.fileName.empty()) section.fileName = defaults.fileName;
  if (content != nullptr) {
    section.streamId = content->streamId;
    section.encodedCCD = content->encodedInfo;
  }
  return section;
}

rapidjson::Value MakeCadContent(const ContentRecord& section, JsonAllocator& allocator) {
  rapidjson::Value sections(rapidjson::kArrayType);
  sections.PushBack(WriteContentSection(section, allocator), allocator);
  rapidjson::Value content(rapidjson::kObjectType);
  content.AddMember("contentSections", sections, allocator);
  return content;
}

rapidjson::Value MakeInstruction(const InstructionParts& parts, JsonAllocator& allocator) {
  rapidjson::Value instruction(rapidjson::kObjectType);
  instruction.AddMember("epmDocument", MakeEpmDocument(parts, allocator), allocator);
  if (parts.document == nullptr && !parts.folderId.empty()) {
    instruction.AddMember("targetFolderId", MakeText(parts.folderId, allocator), allocator);
  }
  return instruction;
}

}  // namespace lxservices::cms_interface::vantry
