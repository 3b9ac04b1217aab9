#pragma once

#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

namespace lxservices::cms_interface::vantry {

/// One number of a JSON text, taken as it passes, in parts of any length. What is kept of it does not grow
/// with its length. Pure.
///
/// Which event a number makes, which double it becomes and which numbers are refused is what RapidJSON's
/// reader of normal precision does, since hosts and files hold what came of it: "-0" is the integer 0, digits
/// beyond the seventeenth of a fraction count for nothing, 9e308 is infinite and 1e309 an error. Only an
/// exponent that overflows in that reader is different: here such a number is zero, as every other one below
/// the smallest double is.
class JsonNumber {
 public:
  /// Takes the next characters. The caller has checked that they go on with a number of RFC 8259.
  void Add(std::string_view characters);

  /// Hands the number to a handler by one event, and is ready for the next one.
  /// @return false for a number that is too large, which makes no event, and when the handler ends the parse
  template <typename Handler>
  [[nodiscard]] bool Deliver(Handler& handler);

 private:
  enum class Part : char { Integer, Fraction, Exponent };

  void AddDigit(unsigned digit);
  void AddIntegerDigit(unsigned digit);
  void AddFractionDigit(unsigned digit);
  void AddExponentDigit(unsigned digit);
  void Approximate();
  [[nodiscard]] double Real() const;

  Part part_ = Part::Integer;
  bool minus_ = false;
  bool exponentMinus_ = false;
  bool approximated_ = false;  ///< the digits are in approximation_, else in whole_
  bool tooLarge_ = false;
  int significantDigits_ = -1;  ///< the first digit of the integer is not counted
  std::uint64_t whole_ = 0;
  double approximation_ = 0;
  std::int64_t fractionDigits_ = 0;  ///< those that went into the digits
  std::int64_t exponent_ = 0;
};

template <typename Handler>
bool JsonNumber::Deliver(Handler& handler) {
  const JsonNumber number = std::exchange(*this, JsonNumber());
  if (number.tooLarge_) return false;
  if (number.approximated_ || number.part_ != Part::Integer) return handler.Double(number.Real());
  if (!number.minus_) {
    if (number.whole_ > std::numeric_limits<std::uint32_t>::max()) return handler.Uint64(number.whole_);
    return handler.Uint(static_cast<unsigned>(number.whole_));
  }
  const auto negative = static_cast<std::int64_t>(~number.whole_ + 1);
  if (negative < std::numeric_limits<std::int32_t>::min()) return handler.Int64(negative);
  return handler.Int(static_cast<int>(negative));
}

}  // namespace lxservices::cms_interface::vantry
