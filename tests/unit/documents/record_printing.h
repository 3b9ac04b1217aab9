#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "documents/reading/document_records.h"

/// How a failing test prints a record: its type, and by name each field that is not empty.
namespace lxservices::cms_interface::vantry {

class RecordPrinter {
 public:
  RecordPrinter(std::ostream* out, std::string_view type) : out_(*out) { out_ << type << "{"; }
  ~RecordPrinter() { out_ << "}"; }
  RecordPrinter(const RecordPrinter&) = delete;
  RecordPrinter& operator=(const RecordPrinter&) = delete;

  void Field(std::string_view name, const std::string& text) {
    if (!text.empty()) Begin(name) << "\"" << text << "\"";
  }
  void Field(std::string_view name, bool flag) {
    if (flag) Begin(name) << "true";
  }
  void Field(std::string_view name, std::int32_t number) {
    if (number != 0) Begin(name) << number;
  }
  void Field(std::string_view name, std::uint64_t number) {
    if (number != 0) Begin(name) << number;
  }
  template <typename Record>
  void Field(std::string_view name, const Record& record) {
    if (record == Record()) return;
    PrintTo(record, &Begin(name));
  }
  void Field(std::string_view name, const std::vector<std::string>& texts) {
    for (const std::string& text : texts) Begin(name) << "\"" << text << "\"";
  }
  template <typename Record>
  void Field(std::string_view name, const std::vector<Record>& records) {
    for (const Record& record : records) PrintTo(record, &Begin(name));
  }

 private:
  std::ostream& Begin(std::string_view name) {
    if (!isFirst_) out_ << ", ";
    isFirst_ = false;
    return out_ << name << ": ";
  }

  std::ostream& out_;
  bool isFirst_ = true;
};

inline void PrintTo(const EpmMasterRecord& master, std::ostream* out) {
  RecordPrinter printer(out, "EpmMasterRecord");
  printer.Field("id", master.id);
  printer.Field("name", master.name);
  printer.Field("number", master.number);
  printer.Field("category", master.category);
  printer.Field("subCategory", master.subCategory);
  printer.Field("cadName", master.cadName);
  printer.Field("authoringApplication", master.authoringApplication);
}

inline void PrintTo(const DocumentSummary& summary, std::ostream* out) {
  RecordPrinter printer(out, "DocumentSummary");
  printer.Field("id", summary.id);
  printer.Field("contextId", summary.contextId);
  printer.Field("contextName", summary.contextName);
  printer.Field("contextType", summary.contextType);
  printer.Field("revision", summary.revision);
  printer.Field("iteration", summary.iteration);
  printer.Field("authAppVersion", summary.authAppVersion);
  printer.Field("ndVersion", summary.ndVersion);
  printer.Field("isCheckout", summary.isCheckout);
  printer.Field("isCheckoutByYou", summary.isCheckoutByYou);
  printer.Field("isLatest", summary.isLatest);
  printer.Field("checkoutByUser", summary.checkoutByUser);
  printer.Field("checkoutToFolderName", summary.checkoutToFolderName);
  printer.Field("isDerived", summary.isDerived);
  printer.Field("master", summary.master);
}

inline void PrintTo(const DerivedSourceDependency& dependency, std::ostream* out) {
  RecordPrinter printer(out, "DerivedSourceDependency");
  printer.Field("asStoredChildName", dependency.asStoredChildName);
  printer.Field("isDirect", dependency.isDirect);
  printer.Field("sourceId", dependency.sourceId);
  printer.Field("sourceMaster", dependency.sourceMaster);
  printer.Field("revision", dependency.revision);
  printer.Field("iteration", dependency.iteration);
  printer.Field("authAppVersion", dependency.authAppVersion);
  printer.Field("ndVersion", dependency.ndVersion);
  printer.Field("revNum", dependency.revNum);
  printer.Field("isPlaceHolder", dependency.isPlaceHolder);
  printer.Field("isDerived", dependency.isDerived);
  printer.Field("hasCompleteDependencies", dependency.hasCompleteDependencies);
}

inline void PrintTo(const ContentRecord& content, std::ostream* out) {
  RecordPrinter printer(out, "ContentRecord");
  printer.Field("id", content.id);
  printer.Field("category", content.category);
  printer.Field("fileName", content.fileName);
  printer.Field("isForwardable", content.isForwardable);
  printer.Field("isStale", content.isStale);
  printer.Field("isHidden", content.isHidden);
  printer.Field("streamId", content.streamId);
  printer.Field("encodedCCD", content.encodedCCD);
  printer.Field("contentUrl", content.contentUrl);
  printer.Field("fileSize", content.fileSize);
  printer.Field("fileSizeTold", content.fileSizeTold);
}

inline void PrintTo(const FileBasedAttribute& attribute, std::ostream* out) {
  RecordPrinter printer(out, "FileBasedAttribute");
  printer.Field("parameterName", attribute.parameterName);
  printer.Field("attributeName", attribute.attributeName);
  printer.Field("valueType", attribute.valueType);
  printer.Field("value", attribute.value);
}

inline void PrintTo(const DocumentRecord& record, std::ostream* out) {
  RecordPrinter printer(out, "DocumentRecord");
  const DocumentSummary& summary = record;
  printer.Field("summary", summary);
  printer.Field("folderId", record.folderId);
  printer.Field("folderName", record.folderName);
  printer.Field("folderPath", record.folderPath);
  printer.Field("dependencies", record.dependencies);
  printer.Field("isSectioned", record.isSectioned);
  printer.Field("contentSections", record.contentSections);
  printer.Field("secondaryContents", record.secondaryContents);
  printer.Field("fileBasedAttributes", record.fileBasedAttributes);
}

inline void PrintTo(const WorkspaceRecord& workspace, std::ostream* out) {
  RecordPrinter printer(out, "WorkspaceRecord");
  printer.Field("id", workspace.id);
  printer.Field("name", workspace.name);
  printer.Field("description", workspace.description);
  printer.Field("contextId", workspace.contextId);
}

}  // namespace lxservices::cms_interface::vantry
