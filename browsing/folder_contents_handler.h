#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "browsing/dir_entry.h"

namespace lxservices::cms_interface::vantry {

/// What a page's rows hold, and what is wanted of them.
struct RowForm {
  bool details = false;      ///< number and name are wanted
  bool versions = false;     ///< the versions are wanted
  bool fileNameKey = false;  ///< the row's name comes from "FileName", else from "CADName"
};

/// Turns the events of one page of a folder's documents into entries as the bytes pass. Holds one row and one
/// next link, so that memory does not grow with the folder; the texts of the row keep their capacity from row
/// to row. Content never ends the parse: a value of an unexpected type is passed over.
class FolderContentsHandler {
 public:
  FolderContentsHandler(const RowForm& form, DirEntryCallback callback);

  /// "@odata.nextLink" of the page; empty on the last one.
  [[nodiscard]] const std::string& nextLink() const { return nextLink_; }

  // The events of the JSON reader.
  bool Null() { return true; }
  bool Bool(bool) { return true; }
  bool Int(int) { return true; }
  bool Uint(unsigned) { return true; }
  bool Int64(std::int64_t) { return true; }
  bool Uint64(std::uint64_t) { return true; }
  bool Double(double) { return true; }
  bool RawNumber(const char*, unsigned, bool) { return true; }
  bool String(const char* text, unsigned length, bool);
  bool Key(const char* text, unsigned length, bool);
  bool StartObject();
  bool EndObject(unsigned);
  bool StartArray();
  bool EndArray(unsigned);

 private:
  enum class Member : char { Other, Value, NextLink, Id, FileName, Name, Number, Version, Versions };
  using VersionRow = std::pair<std::string, std::string>;  ///< version, id

  [[nodiscard]] Member MemberOf(std::string_view key) const;
  [[nodiscard]] bool InRow() const { return objectDepth_ == 2 && valueDepth_ == 1; }
  [[nodiscard]] std::string* FieldOfRow();
  [[nodiscard]] std::string* FieldOfVersion();
  void AddVersionRow();
  void EndRow();
  void DeliverRow();
  void CollectVersions();
  void ClearRow();

  const RowForm form_;
  int objectDepth_ = 0;    ///< open objects
  int valueDepth_ = 0;     ///< open arrays since the key "value"
  int versionsDepth_ = 0;  ///< open arrays since the key "Versions"
  Member key_ = Member::Other;
  std::string lastName_;
  std::string name_;
  std::string id_;
  std::string displayName_;
  std::string number_;
  std::string nextLink_;
  /// Only the first `versionCount_` are rows; the others wait to be used again.
  std::vector<VersionRow> versionRows_;
  std::size_t versionCount_ = 0;
  std::vector<const char*> versions_;
  std::vector<const char*> versionIds_;
  DirEntryCallback callback_;
};

}  // namespace lxservices::cms_interface::vantry
