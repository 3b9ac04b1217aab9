#include "documents/reading/document_reader.h"

#include <new>

#include "documents/reading/document_fields.h"
#include "documents/reading/record_handler.h"

namespace lxservices::cms_interface::vantry {
namespace {

template <typename Record>
bool Read(const rapidjson::Value& value, Fields fields, Record& record) {
  if (!value.IsObject()) return false;
  RecordHandler handler(fields, &record);
  if (!value.Accept(handler)) throw std::bad_alloc();  // it ends for want of memory alone
  return true;
}

}  // namespace

bool ReadDocumentBase(const rapidjson::Value& document, DocumentSummary& record) {
  return Read(document, baseFields<DocumentSummary>, record);
}

bool ReadDocumentSummary(const rapidjson::Value& document, DocumentSummary& record) {
  return Read(document, summaryFields<DocumentSummary>, record);
}

bool ReadDocumentRecord(const rapidjson::Value& document, DocumentRecord& record) {
  return Read(document, recordFields, record);
}

bool ReadEpmMaster(const rapidjson::Value& master, EpmMasterRecord& record) {
  return Read(master, masterFields, record);
}

bool ReadDependency(const rapidjson::Value& dependency, DerivedSourceDependency& record) {
  return Read(dependency, dependencyFields, record);
}

bool ReadContent(const rapidjson::Value& content, ContentRecord& record) {
  return Read(content, contentFields, record);
}

bool ReadAttribute(const rapidjson::Value& attribute, FileBasedAttribute& record) {
  return Read(attribute, attributeFields, record);
}

bool ReadWorkspace(const rapidjson::Value& workspace, WorkspaceRecord& record) {
  return Read(workspace, workspaceFields, record);
}

}  // namespace lxservices::cms_interface::vantry
