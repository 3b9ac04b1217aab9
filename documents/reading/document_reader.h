#pragma once

#include <rapidjson/document.h>

#include "documents/reading/document_records.h"

/// Readers of the document service's JSON. Pure functions.
///
/// All of them give false, and leave the record alone, only for a value that is no object. No key is needed;
/// a member that is absent or of another type leaves its field at the default, unknown members are passed
/// over, and of a member that is there twice the later wins, while lists grow.
namespace lxservices::cms_interface::vantry {

/// The scalars of a summary without its master.
bool ReadDocumentBase(const rapidjson::Value& value, DocumentSummary& record);
/// ReadDocumentBase and the master.
bool ReadDocumentSummary(const rapidjson::Value& value, DocumentSummary& record);
/// ReadDocumentSummary and location, dependencies, contents and attributes. An element of a list that is no
/// object is dropped; among the primary sections it becomes an empty record.
bool ReadDocumentRecord(const rapidjson::Value& value, DocumentRecord& record);
/// The object under "epmMaster".
bool ReadEpmMaster(const rapidjson::Value& value, EpmMasterRecord& record);
/// An element of "derivedSourceDependencies".
bool ReadDependency(const rapidjson::Value& value, DerivedSourceDependency& record);
/// An element of "contentSections" or "secondaryContents".
bool ReadContent(const rapidjson::Value& value, ContentRecord& record);
/// An element of "fileBasedAttributes".
bool ReadAttribute(const rapidjson::Value& value, FileBasedAttribute& record);
/// A workspace, as lists hold it.
bool ReadWorkspace(const rapidjson::Value& value, WorkspaceRecord& record);

}  // namespace lxservices::cms_interface::vantry
