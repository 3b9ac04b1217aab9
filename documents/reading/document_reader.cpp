#include "documents/reading/document_reader.h"

#include <string_view>

#include "connection/json_members.h"

namespace lxservices::cms_interface::vantry {
namespace {

void CopyBool(const rapidjson::Value& value, bool& field) {
  if (value.IsBool()) field = value.GetBool();
}

void CopyNumber(const rapidjson::Value& value, std::uint64_t& field) {
  if (value.IsUint64()) field = value.GetUint64();
}

void CopyNumber(const rapidjson::Value& value, std::int32_t& field) {
  if (value.IsInt()) field = value.GetInt();
}

// Calls `read(name, value)` for each member in the order of the JSON. False for what is no object.
template <typename Reader>
bool ForEachMember(const rapidjson::Value& object, Reader read) {
  if (!object.IsObject()) return false;
  for (const auto& member : object.GetObject()) read(TextView(member.name), member.value);
  return true;
}

void ReadContext(const rapidjson::Value& context, DocumentSummary& record) {
  ForEachMember(context, [&](std::string_view name, const rapidjson::Value& value) {
    if (name == "id") CopyString(value, record.contextId);
    if (name == "name") CopyString(value, record.contextName);
    if (name == "type") CopyString(value, record.contextType);
  });
}

void ReadIterationState(const rapidjson::Value& state, DocumentSummary& record) {
  ForEachMember(state, [&](std::string_view name, const rapidjson::Value& value) {
    if (name == "isCheckout") CopyBool(value, record.isCheckout);
    if (name == "isCheckoutByYou") CopyBool(value, record.isCheckoutByYou);
    if (name == "isLatest") CopyBool(value, record.isLatest);
    if (name == "checkoutByUser") CopyString(value, record.checkoutByUser);
    if (name == "checkoutToFolderName") CopyString(value, record.checkoutToFolderName);
  });
}

void ReadLocationFolder(const rapidjson::Value& folder, DocumentRecord& record) {
  ForEachMember(folder, [&](std::string_view name, const rapidjson::Value& value) {
    if (name == "id") CopyString(value, record.folderId);
    if (name == "name") CopyString(value, record.folderName);
    if (name == "path") CopyString(value, record.folderPath);
  });
}

void ReadSource(const rapidjson::Value& source, DerivedSourceDependency& record) {
  ForEachMember(source, [&](std::string_view name, const rapidjson::Value& value) {
    if (name == "id") CopyString(value, record.sourceId);
    if (name == "epmMaster") ReadEpmMaster(value, record.sourceMaster);
    if (name == "revision") CopyString(value, record.revision);
    if (name == "iteration") CopyString(value, record.iteration);
    if (name == "authAppVersion") CopyString(value, record.authAppVersion);
    if (name == "ndVersion") CopyString(value, record.ndVersion);
    if (name == "revNum") CopyNumber(value, record.revNum);
    if (name == "isPlaceHolder") CopyBool(value, record.isPlaceHolder);
    if (name == "isDerived") CopyBool(value, record.isDerived);
    if (name == "hasCompleteDependencies") CopyBool(value, record.hasCompleteDependencies);
  });
}

void ReadContentUrls(const rapidjson::Value& urls, std::vector<std::string>& list) {
  if (!urls.IsArray()) return;
  for (const auto& url : urls.GetArray()) {
    if (url.IsString()) list.emplace_back(TextView(url));
  }
}

// Appends a record for each element that is an object; any other element is dropped.
template <typename Record>
void ReadList(const rapidjson::Value& array, bool (*read)(const rapidjson::Value&, Record&),
              std::vector<Record>& list) {
  if (!array.IsArray()) return;
  for (const auto& element : array.GetArray()) {
    Record record;
    if (read(element, record)) list.push_back(std::move(record));
  }
}

// Unlike every other list, the primary sections keep an empty record for an element that is no object: the
// indices of this list stay those of the server's.
void ReadContentSections(const rapidjson::Value& array, std::vector<ContentRecord>& sections) {
  if (!array.IsArray()) return;
  for (const auto& element : array.GetArray()) ReadContent(element, sections.emplace_back());
}

void ReadCadContent(const rapidjson::Value& content, DocumentRecord& record) {
  ForEachMember(content, [&](std::string_view name, const rapidjson::Value& value) {
    if (name == "isSectioned") CopyBool(value, record.isSectioned);
    if (name == "contentSections") ReadContentSections(value, record.contentSections);
  });
}

}  // namespace

bool ReadDocumentBase(const rapidjson::Value& document, DocumentSummary& record) {
  return ForEachMember(document, [&](std::string_view name, const rapidjson::Value& value) {
    if (name == "id") CopyString(value, record.id);
    if (name == "context") ReadContext(value, record);
    if (name == "revision") CopyString(value, record.revision);
    if (name == "iteration") CopyString(value, record.iteration);
    if (name == "authAppVersion") CopyString(value, record.authAppVersion);
    if (name == "ndVersion") CopyString(value, record.ndVersion);
    if (name == "pdmIterationState") ReadIterationState(value, record);
    if (name == "isDerived") CopyBool(value, record.isDerived);
  });
}

void ReadMasterOf(const rapidjson::Value& document, EpmMasterRecord& master) {
  ForEachMember(document, [&](std::string_view name, const rapidjson::Value& value) {
    if (name == "epmMaster") ReadEpmMaster(value, master);
  });
}

bool ReadDocumentSummary(const rapidjson::Value& document, DocumentSummary& record) {
  if (!ReadDocumentBase(document, record)) return false;
  ReadMasterOf(document, record.master);
  return true;
}

bool ReadDocumentRecord(const rapidjson::Value& document, DocumentRecord& record) {
  if (!ReadDocumentBase(document, record)) return false;
  return ForEachMember(document, [&](std::string_view name, const rapidjson::Value& value) {
    if (name == "epmMaster") ReadEpmMaster(value, record.master);
    if (name == "locationFolder") ReadLocationFolder(value, record);
    if (name == "derivedSourceDependencies") ReadList(value, ReadDependency, record.dependencies);
    if (name == "cadContent") ReadCadContent(value, record);
    if (name == "secondaryContents") ReadList(value, ReadContent, record.secondaryContents);
    if (name == "fileBasedAttributes") ReadList(value, ReadAttribute, record.fileBasedAttributes);
  });
}

bool ReadEpmMaster(const rapidjson::Value& master, EpmMasterRecord& record) {
  return ForEachMember(master, [&](std::string_view name, const rapidjson::Value& value) {
    if (name == "id") CopyString(value, record.id);
    if (name == "name") CopyString(value, record.name);
    if (name == "number") CopyString(value, record.number);
    if (name == "category") CopyString(value, record.category);
    if (name == "subCategory") CopyString(value, record.subCategory);
    if (name == "cadName") CopyString(value, record.cadName);
    if (name == "authoringApplication") CopyString(value, record.authoringApplication);
  });
}

bool ReadDependency(const rapidjson::Value& dependency, DerivedSourceDependency& record) {
  return ForEachMember(dependency, [&](std::string_view name, const rapidjson::Value& value) {
    if (name == "asStoredChildName") CopyString(value, record.asStoredChildName);
    if (name == "isDirect") CopyBool(value, record.isDirect);
    if (name == "source") ReadSource(value, record);
  });
}

bool ReadContent(const rapidjson::Value& content, ContentRecord& record) {
  return ForEachMember(content, [&](std::string_view name, const rapidjson::Value& value) {
    if (name == "id") CopyString(value, record.id);
    if (name == "category") CopyString(value, record.category);
    if (name == "fileName") CopyString(value, record.fileName);
    if (name == "isForwardable") CopyBool(value, record.isForwardable);
    if (name == "isStale") CopyBool(value, record.isStale);
    if (name == "isHidden") CopyBool(value, record.isHidden);
    if (name == "streamId") CopyNumber(value, record.streamId);
    if (name == "contentUrl") ReadContentUrls(value, record.contentUrl);
    if (name == "fileSize") {
      CopyNumber(value, record.fileSize);
      record.fileSizeTold = record.fileSizeTold || value.IsUint64();
    }
    if (name != "uploadInfo") return;
    ForEachMember(value, [&](std::string_view key, const rapidjson::Value& receipt) {
      if (key == "encodedCCD") CopyString(receipt, record.encodedCCD);
    });
  });
}

bool ReadAttribute(const rapidjson::Value& attribute, FileBasedAttribute& record) {
  return ForEachMember(attribute, [&](std::string_view name, const rapidjson::Value& value) {
    const bool isDefinition = name == "parameterDefinition";
    const bool isValue = name == "parameterValue";
    ForEachMember(value, [&](std::string_view key, const rapidjson::Value& text) {
      if (isDefinition && key == "parameterName") CopyString(text, record.parameterName);
      if (isDefinition && key == "attributeName") CopyString(text, record.attributeName);
      if (isDefinition && key == "valueType") CopyString(text, record.valueType);
      if (isValue && key == "value") CopyString(text, record.value);
    });
  });
}

bool ReadWorkspace(const rapidjson::Value& workspace, WorkspaceRecord& record) {
  return ForEachMember(workspace, [&](std::string_view name, const rapidjson::Value& value) {
    if (name == "id") CopyString(value, record.id);
    if (name == "name") CopyString(value, record.name);
    if (name == "description") CopyString(value, record.description);
    if (name == "contextId") CopyString(value, record.contextId);
  });
}

}  // namespace lxservices::cms_interface::vantry
