#pragma once

#include <array>
#include <string>

/// Bytes as URIs and header lines see them, whatever the locale. Pure functions.
namespace vtdirect::platform {

[[nodiscard]] constexpr bool IsAsciiLetter(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

[[nodiscard]] constexpr bool IsAsciiDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

[[nodiscard]] constexpr char ToAsciiLower(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

/// For each value of a byte whether it has a property. Looked up, where each byte of many texts is asked about.
using ByteTable = std::array<bool, 256>;

/// The table of a function that tells of a byte whether it has the property.
template <typename Property>
[[nodiscard]] constexpr ByteTable TableOf(Property property) {
  ByteTable table{};
  for (std::size_t value = 0; value < table.size(); ++value)
    table[value] = property(static_cast<char>(value));
  return table;
}

[[nodiscard]] constexpr bool IsIn(const ByteTable& table, char byte) {
  return table[static_cast<unsigned char>(byte)];
}

/// The value of a hexadecimal digit of either case, -1 for any other byte.
[[nodiscard]] constexpr int HexadecimalValue(char byte) {
  if (IsAsciiDigit(byte)) return byte - '0';
  const char lower = ToAsciiLower(byte);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Appends "%" and two upper-case hexadecimal digits.
inline void AppendPercentEscaped(char byte, std::string* out) {
  constexpr char digits[] = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  *out += '%';
  *out += digits[value >> 4];
  *out += digits[value & 0x0F];
}

}  // namespace vtdirect::platform
