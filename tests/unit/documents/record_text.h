#pragma once

#include <rapidjson/document.h>

#include <stdexcept>
#include <string>

#include "documents/reading/document_records.h"

/// Records as texts, one field after the other, so that a test compares all of a record at once.
namespace vtdirect_test {

inline rapidjson::Document Json(const std::string& text) {
  rapidjson::Document document;
  document.Parse(text.c_str(), text.size());
  if (document.HasParseError()) throw std::runtime_error("the test's own JSON is broken: " + text);
  return document;
}

inline std::string Text(bool flag) {
  return flag ? "1" : "0";
}

inline std::string Text(const lxservices::cms_interface::vantry::EpmMasterRecord& master) {
  return "[" + master.id + "," + master.name + "," + master.number + "," + master.category + "," +
         master.subCategory + "," + master.cadName + "," + master.authoringApplication + "]";
}

inline std::string SummaryText(const lxservices::cms_interface::vantry::DocumentSummary& summary) {
  return summary.id + "," + summary.contextId + "," + summary.contextName + "," + summary.contextType + "," +
         summary.revision + "," + summary.iteration + "," + summary.authAppVersion + "," + summary.ndVersion +
         "," + Text(summary.isCheckout) + Text(summary.isCheckoutByYou) + Text(summary.isLatest) + "," +
         summary.checkoutByUser + "," + summary.checkoutToFolderName + "," + Text(summary.isDerived) +
         Text(summary.master);
}

inline std::string Text(const lxservices::cms_interface::vantry::DerivedSourceDependency& dependency) {
  return dependency.asStoredChildName + "," + Text(dependency.isDirect) + "," + dependency.sourceId +
         Text(dependency.sourceMaster) + dependency.revision + "," + dependency.iteration + "," +
         dependency.authAppVersion + "," + dependency.ndVersion + "," + std::to_string(dependency.revNum) +
         "," + Text(dependency.isPlaceHolder) + Text(dependency.isDerived) +
         Text(dependency.hasCompleteDependencies);
}

inline std::string Text(const lxservices::cms_interface::vantry::ContentRecord& content) {
  std::string text = content.id + "," + content.category + "," + content.fileName + "," +
                     Text(content.isForwardable) + Text(content.isStale) + Text(content.isHidden) + "," +
                     std::to_string(content.streamId) + "," + content.encodedCCD + "," +
                     std::to_string(content.fileSize) + ",";
  for (const std::string& url : content.contentUrl) text += "<" + url + ">";
  return text;
}

inline std::string Text(const lxservices::cms_interface::vantry::FileBasedAttribute& attribute) {
  return attribute.parameterName + "," + attribute.attributeName + "," + attribute.valueType + "," +
         attribute.value;
}

inline std::string Text(const lxservices::cms_interface::vantry::WorkspaceRecord& workspace) {
  return workspace.id + "," + workspace.name + "," + workspace.description + "," + workspace.contextId;
}

}  // namespace vtdirect_test
