#include "browsing/folder_contents_handler.h"

#include "base/file_name.h"

namespace lxservices::cms_interface::vantry {

FolderContentsHandler::FolderContentsHandler(const RowForm& form, DirEntryCallback callback)
    : form_(form), callback_(std::move(callback)) {}

// By length first: this runs for every key of every row.
FolderContentsHandler::Member FolderContentsHandler::MemberOf(std::string_view key) const {
  switch (key.size()) {
    case 2:
      return key == "ID" ? Member::Id : Member::Other;
    case 4:
      return key == "Name" ? Member::Name : Member::Other;
    case 5:
      return key == "value" ? Member::Value : Member::Other;
    case 6:
      return key == "Number" ? Member::Number : Member::Other;
    case 7:
      if (key == "Version") return Member::Version;
      return !form_.fileNameKey && key == "CADName" ? Member::FileName : Member::Other;
    case 8:
      if (key == "Versions") return Member::Versions;
      return form_.fileNameKey && key == "FileName" ? Member::FileName : Member::Other;
    case 15:
      return key == "@odata.nextLink" ? Member::NextLink : Member::Other;
    default:
      return Member::Other;
  }
}

bool FolderContentsHandler::Key(const char* text, unsigned length, bool) {
  key_ = MemberOf({text, length});
  return true;
}

std::string* FolderContentsHandler::FieldOfRow() {
  switch (key_) {
    case Member::FileName:
      return &name_;
    case Member::Id:
      return &id_;
    case Member::Name:
      return &displayName_;
    case Member::Number:
      return &number_;
    default:
      return nullptr;
  }
}

std::string* FolderContentsHandler::FieldOfVersion() {
  if (versionsDepth_ != 1 || versionCount_ == 0) return nullptr;
  VersionRow& row = versionRows_[versionCount_ - 1];
  if (key_ == Member::Version) return &row.first;
  return key_ == Member::Id ? &row.second : nullptr;
}

bool FolderContentsHandler::String(const char* text, unsigned length, bool) {
  std::string* field = nullptr;
  if (objectDepth_ == 1 && key_ == Member::NextLink) {
    field = &nextLink_;
  } else {
    field = InRow() ? FieldOfRow() : FieldOfVersion();
  }
  if (field != nullptr) field->assign(text, length);
  return true;
}

bool FolderContentsHandler::StartObject() {
  ++objectDepth_;
  key_ = Member::Other;
  if (versionsDepth_ == 1) AddVersionRow();
  return true;
}

bool FolderContentsHandler::EndObject(unsigned) {
  if (InRow()) {
    EndRow();
  } else if (versionsDepth_ == 1 && versionCount_ > 0 && versionRows_[versionCount_ - 1].first.empty()) {
    --versionCount_;
  }
  --objectDepth_;
  key_ = Member::Other;
  return true;
}

bool FolderContentsHandler::StartArray() {
  if (key_ == Member::Value || valueDepth_ >= 1) ++valueDepth_;
  if (key_ == Member::Versions || versionsDepth_ >= 1) ++versionsDepth_;
  return true;
}

bool FolderContentsHandler::EndArray(unsigned) {
  if (valueDepth_ >= 1) --valueDepth_;
  if (versionsDepth_ >= 1) --versionsDepth_;
  return true;
}

void FolderContentsHandler::AddVersionRow() {
  if (versionCount_ == versionRows_.size()) versionRows_.emplace_back();
  VersionRow& row = versionRows_[versionCount_++];
  row.first.clear();
  row.second.clear();
}

void FolderContentsHandler::EndRow() {
  // Rows come by version, so other versions of a document are next to each other and count once. Rows of
  // one name that are not neighbours are delivered each time.
  if (!name_.empty() && name_ != lastName_) DeliverRow();
  // The name as delivered, escaped, while the comparison above takes it raw: a document whose name holds a
  // forbidden character is never its own neighbour, and each of its versions makes an entry. Hosts and
  // servers have settled on that; it must not be evened out.
  lastName_.swap(name_);
  ClearRow();
}

void FolderContentsHandler::DeliverRow() {
  if (HoldsForbiddenCharacter(name_)) name_ = EscapeFileName(name_);
  const DirEntryDetails details{number_.c_str(), displayName_.c_str(), nullptr};
  DirEntryInfoExt entry;
  entry.name = name_.c_str();
  entry.id = id_.c_str();
  if (form_.details) entry.details = &details;
  if (form_.versions) {
    CollectVersions();
    entry.versions = versions_.data();
    entry.versionIds = versionIds_.data();
  }
  callback_(entry);
}

// In the reverse of the server's order, which gives the newest first.
void FolderContentsHandler::CollectVersions() {
  versions_.clear();
  versionIds_.clear();
  std::string_view added;
  for (std::size_t index = versionCount_; index > 0; --index) {
    const auto& [version, id] = versionRows_[index - 1];
    if (version == added) continue;
    added = version;
    versions_.push_back(version.c_str());
    versionIds_.push_back(id.c_str());
  }
  versions_.push_back(nullptr);
  versionIds_.push_back(nullptr);
}

void FolderContentsHandler::ClearRow() {
  name_.clear();
  id_.clear();
  displayName_.clear();
  number_.clear();
  versionCount_ = 0;
}

}  // namespace lxservices::cms_interface::vantry
