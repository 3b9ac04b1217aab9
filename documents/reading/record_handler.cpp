#include "documents/reading/record_handler.h"

#include <algorithm>
#include <limits>

namespace lxservices::cms_interface::vantry {
namespace {

bool IsListOfRecords(FieldKind kind) {
  return kind == FieldKind::Records || kind == FieldKind::RecordsWithGaps;
}

}  // namespace

RecordHandler::RecordHandler(Fields fields, void* record) : root_(Inside({}, fields)) {
  level_.record = record;
}

const Field* RecordHandler::Find(std::string_view name) const {
  const auto found = std::find_if(level_.fields.begin(), level_.fields.end(),
                                  [name](const Field& field) { return field.name == name; });
  return found == level_.fields.end() ? nullptr : &*found;
}

bool RecordHandler::Int(int value) {
  const Field* field = Wanted(FieldKind::Signed);
  if (field == nullptr) return Int64(value);
  *static_cast<std::int32_t*>(field->at(level_.record)) = value;
  return true;
}

bool RecordHandler::Number(std::uint64_t value) {
  if (const Field* field = Wanted(FieldKind::Unsigned)) {
    *static_cast<std::uint64_t*>(field->at(level_.record)) = value;
    if (field->told != nullptr) *field->told(level_.record) = true;
    return true;
  }
  const Field* field = Wanted(FieldKind::Signed);
  if (field == nullptr || value > std::numeric_limits<std::int32_t>::max()) return Other();
  *static_cast<std::int32_t*>(field->at(level_.record)) = static_cast<std::int32_t>(value);
  return true;
}

bool RecordHandler::TextElement(std::string_view text) {
  const bool isOfList = skipped_ == 0 && level_.list != nullptr && level_.list->kind == FieldKind::Texts;
  if (!isOfList) return Other();
  if (!memory_.HasRoomFor(2 * sizeof(std::string) + text.size())) return false;
  static_cast<std::vector<std::string>*>(level_.list->at(level_.record))->emplace_back(text);
  return true;
}

bool RecordHandler::Other() {
  const bool leavesGap =
      skipped_ == 0 && level_.list != nullptr && level_.list->kind == FieldKind::RecordsWithGaps;
  return !leavesGap || NewRecord() != nullptr;
}

// Null without memory for it. A list that grows takes its new size beside the old one.
void* RecordHandler::NewRecord() {
  if (!memory_.HasRoomFor(2 * level_.list->recordSize)) return nullptr;
  return level_.list->at(level_.record);
}

bool RecordHandler::StartObject() {
  if (skipped_ > 0) return Skip();
  if (level_.list != nullptr) {
    if (!IsListOfRecords(level_.list->kind)) return Skip();
    void* const record = NewRecord();
    return record != nullptr && EnterObject(level_.list->members, record);
  }
  if (Wanted(FieldKind::Object) == nullptr) return Skip();
  isObject_ = true;
  return EnterObject(member_->members, member_->at(level_.record));
}

bool RecordHandler::StartArray() {
  if (skipped_ > 0) return Skip();
  if (level_.list != nullptr) return Other() && Skip();
  const bool isWanted =
      member_ != nullptr && (member_->kind == FieldKind::Texts || IsListOfRecords(member_->kind));
  return isWanted ? Enter({{}, member_, level_.record}) : Skip();
}

bool RecordHandler::Skip() {
  ++skipped_;
  return true;
}

bool RecordHandler::EnterObject(Fields fields, void* record) {
  return Enter({fields, nullptr, record, &fields.front(), &fields.back()});
}

bool RecordHandler::Enter(const Level& level) {
  if (depth_ == outer_.size()) return Skip();
  outer_[depth_++] = level_;
  level_ = level;
  member_ = nullptr;
  return true;
}

bool RecordHandler::End() {
  member_ = nullptr;
  if (skipped_ > 0) {
    --skipped_;
  } else if (depth_ > 0) {
    level_ = outer_[--depth_];
  }
  return true;
}

}  // namespace lxservices::cms_interface::vantry
