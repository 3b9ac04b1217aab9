#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

/// Tables of which member of a JSON object becomes which field of a record. Pure, made by the compiler.
namespace lxservices::cms_interface::vantry {

/// What a member has to be, and what becomes of it; one of another kind is passed over.
enum class FieldKind : char {
  Text,
  Flag,
  Unsigned,        ///< a whole number of up to 64 bits
  Signed,          ///< a whole number of 32 bits
  Texts,           ///< a list of texts; other elements are dropped
  Object,          ///< an object with a table of its own
  Records,         ///< a list of objects, each a record; other elements are dropped
  RecordsWithGaps  ///< the same, with an empty record for an element that is no object
};

/// One row of a table.
struct Field {
  std::string_view name;
  FieldKind kind = FieldKind::Text;
  /// Gives the place of what the member becomes, in the record that the table is for; of a list of records
  /// that of a new one at its end.
  void* (*at)(void* record) = nullptr;
  std::span<const Field> members{};       ///< of an object, or of each element that is one
  std::size_t recordSize = 0;             ///< of an element of a list, in bytes
  bool* (*told)(void* record) = nullptr;  ///< a flag that is set once the number was there; may be null
};

/// The members of an object. Mostly they come in this order.
using Fields = std::span<const Field>;

namespace field_access {

template <typename Root, auto Member>
void* At(void* record) {
  return &(static_cast<Root*>(record)->*Member);
}

template <typename Root, auto Member>
bool* FlagAt(void* record) {
  return &(static_cast<Root*>(record)->*Member);
}

template <typename Root, auto Items>
void* NewIn(void* record) {
  return &(static_cast<Root*>(record)->*Items).emplace_back();
}

inline void* Itself(void* record) {
  return record;
}

template <typename Root, auto Member>
using TypeOf = std::remove_reference_t<decltype(std::declval<Root&>().*Member)>;

template <typename Value>
constexpr FieldKind KindFor() {
  if constexpr (std::is_same_v<Value, std::string>) return FieldKind::Text;
  if constexpr (std::is_same_v<Value, bool>) return FieldKind::Flag;
  if constexpr (std::is_same_v<Value, std::uint64_t>) return FieldKind::Unsigned;
  if constexpr (std::is_same_v<Value, std::int32_t>) return FieldKind::Signed;
  if constexpr (std::is_same_v<Value, std::vector<std::string>>) return FieldKind::Texts;
}

}  // namespace field_access

/// A text, flag, number or list of texts of the record `Root`.
template <typename Root, auto Member>
constexpr Field Plain(std::string_view name) {
  return {name, field_access::KindFor<field_access::TypeOf<Root, Member>>(), field_access::At<Root, Member>};
}

/// A number, and a flag for that it was there.
template <typename Root, auto Member, auto Flag>
constexpr Field Told(std::string_view name) {
  Field field = Plain<Root, Member>(name);
  field.told = field_access::FlagAt<Root, Flag>;
  return field;
}

/// An object whose members are fields of the same record.
constexpr Field Inside(std::string_view name, Fields members) {
  return {name, FieldKind::Object, field_access::Itself, members};
}

/// An object that is a record of its own within the record `Root`.
template <typename Root, auto Member>
constexpr Field Part(std::string_view name, Fields members) {
  return {name, FieldKind::Object, field_access::At<Root, Member>, members};
}

/// A list of records.
template <typename Root, auto Items>
constexpr Field List(std::string_view name, Fields members, FieldKind kind = FieldKind::Records) {
  using Record = typename field_access::TypeOf<Root, Items>::value_type;
  return {name, kind, field_access::NewIn<Root, Items>, members, sizeof(Record)};
}

/// Two tables as one.
template <std::size_t First, std::size_t Second>
constexpr std::array<Field, First + Second> Joined(const std::array<Field, First>& one,
                                                   const std::array<Field, Second>& other) {
  std::array<Field, First + Second> all;
  for (std::size_t index = 0; index < First; ++index) all[index] = one[index];
  for (std::size_t index = 0; index < Second; ++index) all[First + index] = other[index];
  return all;
}

}  // namespace lxservices::cms_interface::vantry
