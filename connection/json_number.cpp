#include "connection/json_number.h"

#include <rapidjson/reader.h>

#include <algorithm>

namespace lxservices::cms_interface::vantry {
namespace {

constexpr int significantDigitsOfADouble = 17;
constexpr std::int64_t largestPowerOfTen = 308;
constexpr std::uint64_t largestExactInteger = (std::uint64_t{1} << 53) - 1;
// A tenth of the largest double: another digit could go beyond it.
constexpr double lastWithRoom = 1.7976931348623157e307;
// So far below every double that neither digits nor a longer exponent can change the zero.
constexpr std::int64_t surelyZero = -1000;
constexpr std::int64_t endlessExponent = 214748364;

}  // namespace

void JsonNumber::Add(std::string_view characters) {
  for (const char character : characters) {
    if (character >= '0' && character <= '9') {
      AddDigit(static_cast<unsigned>(character - '0'));
    } else if (character == '-') {
      (part_ == Part::Exponent ? exponentMinus_ : minus_) = true;
    } else if (character == '.') {
      part_ = Part::Fraction;
    } else if (character != '+') {
      part_ = Part::Exponent;
    }
  }
}

void JsonNumber::AddDigit(unsigned digit) {
  if (part_ == Part::Integer) {
    AddIntegerDigit(digit);
  } else if (part_ == Part::Fraction) {
    AddFractionDigit(digit);
  } else {
    AddExponentDigit(digit);
  }
}

void JsonNumber::AddIntegerDigit(unsigned digit) {
  const std::uint64_t limit = minus_ ? std::uint64_t{1} << 63 : std::numeric_limits<std::uint64_t>::max();
  if (!approximated_ && whole_ > (limit - digit) / 10) Approximate();
  if (!approximated_) {
    whole_ = whole_ * 10 + digit;
    ++significantDigits_;
  } else if (approximation_ >= lastWithRoom) {
    tooLarge_ = true;
  } else {
    approximation_ = approximation_ * 10 + digit;
  }
}

void JsonNumber::AddFractionDigit(unsigned digit) {
  if (!approximated_ && whole_ <= largestExactInteger) {
    whole_ = whole_ * 10 + digit;
    ++fractionDigits_;
    if (whole_ != 0) ++significantDigits_;
    return;
  }
  Approximate();
  if (significantDigits_ >= significantDigitsOfADouble) return;
  approximation_ = approximation_ * 10.0 + digit;
  ++fractionDigits_;
  ++significantDigits_;
}

void JsonNumber::AddExponentDigit(unsigned digit) {
  if (exponentMinus_) {
    if (exponent_ < endlessExponent) exponent_ = exponent_ * 10 + digit;
  } else if (!tooLarge_) {
    exponent_ = exponent_ * 10 + digit;
    // Without a look at the digits: 0e309 is refused too.
    tooLarge_ = exponent_ > largestPowerOfTen + fractionDigits_;
  }
}

void JsonNumber::Approximate() {
  if (!approximated_) approximation_ = static_cast<double>(whole_);
  approximated_ = true;
}

double JsonNumber::Real() const {
  const double digits = approximated_ ? approximation_ : static_cast<double>(whole_);
  const std::int64_t power = (exponentMinus_ ? -exponent_ : exponent_) - fractionDigits_;
  const double magnitude =
      rapidjson::internal::StrtodNormalPrecision(digits, static_cast<int>(std::max(power, surelyZero)));
  return minus_ ? -magnitude : magnitude;
}

}  // namespace lxservices::cms_interface::vantry
