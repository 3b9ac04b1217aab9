#pragma once

#include <rapidjson/rapidjson.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/short_text.h"
#include "connection/memory_watch.h"
#include "documents/reading/record_fields.h"

namespace lxservices::cms_interface::vantry {

/// Makes a record out of the events of one JSON value, by a table. Of a member that is there twice the later
/// wins, while lists grow; what the table doesn't name is passed over without a copy. Ends the parse when
/// there is no memory for what it takes. Pure.
class RecordHandler {
 public:
  /// @param fields  the table; outlives the handler, as its parts do
  /// @param record  of the type that the table is for; outlives the handler
  RecordHandler(Fields fields, void* record);

  /// Whether the value was an object. Nothing of the record has changed if it was not.
  [[nodiscard]] bool isObject() const { return isObject_; }

  bool Null() { return Other(); }
  bool Bool(bool value);
  bool Int(int value);
  bool Uint(unsigned value) { return Number(value); }
  bool Int64(std::int64_t value) { return value < 0 ? Other() : Number(static_cast<std::uint64_t>(value)); }
  bool Uint64(std::uint64_t value) { return Number(value); }
  bool Double(double) { return Other(); }
  bool RawNumber(const char*, rapidjson::SizeType, bool) { return false; }
  bool String(const char* text, rapidjson::SizeType length, bool);
  bool Key(const char* text, rapidjson::SizeType length, bool);
  /// For a reader that holds the text, what Key is for the name that the next member is likely to have: that
  /// is compared where it is.
  /// @param rest  from the first byte of a name on
  /// @return the length of the name; 0 when it is another one, which is left to Key
  [[nodiscard]] std::size_t TakeLikelyName(std::string_view rest);
  bool StartObject();
  bool EndObject(rapidjson::SizeType) { return End(); }
  bool StartArray();
  bool EndArray(rapidjson::SizeType) { return End(); }

 private:
  /// An object or a list that is being read.
  struct Level {
    Fields fields;                ///< of an object
    const Field* list = nullptr;  ///< null for an object
    void* record = nullptr;       ///< which the fields or the list belong to
    const Field* next = nullptr;  ///< the row that the next member is likely to be of; null for none
    const Field* last = nullptr;  ///< the last row
  };

  void TakeMember(const Field* member);
  [[nodiscard]] const Field* Find(std::string_view name) const;
  /// The field of the member that a value is of; null when it is of none, or not of this kind.
  [[nodiscard]] const Field* Wanted(FieldKind kind) const;
  [[nodiscard]] bool Number(std::uint64_t value);
  /// Takes a text that is the value of no text field.
  [[nodiscard]] bool TextElement(std::string_view text);
  /// Takes what is of no use; some lists keep an empty record for it.
  [[nodiscard]] bool Other();
  [[nodiscard]] void* NewRecord();
  [[nodiscard]] bool Skip();
  [[nodiscard]] bool EnterObject(Fields fields, void* record);
  [[nodiscard]] bool Enter(const Level& level);
  [[nodiscard]] bool End();

  /// More than there are in any table, and what is deeper is passed over.
  static constexpr std::size_t mostLevels = 8;

  const Field root_;
  Level level_;
  const Field* member_ = &root_;  ///< the one whose value comes next; null for one without a field
  std::array<Level, mostLevels> outer_;
  std::size_t depth_ = 0;
  std::size_t skipped_ = 0;  ///< levels of a value that is passed over
  bool isObject_ = false;
  MemoryWatch memory_;
};

inline std::size_t RecordHandler::TakeLikelyName(std::string_view rest) {
  if (skipped_ > 0 || level_.next == nullptr) return 0;
  const std::string_view name = level_.next->name;
  if (rest.size() <= name.size() || rest[name.size()] != '"' || !IsAlike(rest.data(), name)) return 0;
  TakeMember(level_.next);
  return name.size();
}

inline void RecordHandler::TakeMember(const Field* member) {
  member_ = member;
  level_.next = member == level_.last ? nullptr : member + 1;
}

inline bool RecordHandler::Key(const char* text, rapidjson::SizeType length, bool) {
  if (skipped_ > 0) return true;
  member_ = Find({text, length});
  if (member_ != nullptr) TakeMember(member_);
  return true;
}

inline const Field* RecordHandler::Wanted(FieldKind kind) const {
  const bool isWanted = skipped_ == 0 && member_ != nullptr && member_->kind == kind;
  return isWanted ? member_ : nullptr;
}

inline bool RecordHandler::String(const char* text, rapidjson::SizeType length, bool) {
  if (const Field* field = Wanted(FieldKind::Text)) {
    if (!memory_.HasRoomFor(length)) return false;
    auto& target = *static_cast<std::string*>(field->at(level_.record));
    target.clear();  // to assign would first look whether the text is a part of the target
    target.append(text, length);
    return true;
  }
  return TextElement({text, length});
}

inline bool RecordHandler::Bool(bool value) {
  const Field* field = Wanted(FieldKind::Flag);
  if (field == nullptr) return Other();
  *static_cast<bool*>(field->at(level_.record)) = value;
  return true;
}

}  // namespace lxservices::cms_interface::vantry
