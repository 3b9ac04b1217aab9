#include "simulator/wire/timestamp.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>

namespace vantry_sim {
namespace {

using std::chrono::floor;

std::string Format(std::int64_t milliseconds, bool fraction) {
  const std::chrono::sys_time<std::chrono::milliseconds> time{std::chrono::milliseconds(milliseconds)};
  const auto day = floor<std::chrono::days>(time);
  const std::chrono::year_month_day date{day};
  const std::chrono::hh_mm_ss clock{time - day};
  std::array<char, 80> text{};
  int length =
      std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(date.year()),
                    static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                    static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                    static_cast<int>(clock.seconds().count()));
  std::string out(text.data(), static_cast<std::size_t>(length));
  if (fraction) {
    length = std::snprintf(text.data(), text.size(), ".%03d", static_cast<int>(clock.subseconds().count()));
    out.append(text.data(), static_cast<std::size_t>(length));
  }
  return out + "Z";
}

/// Takes so many digits and the character after them off the front.
bool TakeDigits(std::string_view& text, std::size_t count, char after, int& number) {
  if (text.size() <= count || text[count] != after || text.front() == '-') return false;
  const auto [end, code] = std::from_chars(text.data(), text.data() + count, number);
  if (code != std::errc() || end != text.data() + count) return false;
  text.remove_prefix(count + 1);
  return true;
}

/// The milliseconds of ".1", ".12" or ".123" with a "Z" after it, or of a "Z" alone.
bool TakeFraction(std::string_view text, int& milliseconds) {
  if (text == "Z") return true;
  if (!text.starts_with('.') || text.size() < 3 || text.size() > 5) return false;
  const std::size_t digits = text.size() - 2;
  text.remove_prefix(1);
  if (!TakeDigits(text, digits, 'Z', milliseconds)) return false;
  for (std::size_t i = digits; i < 3; ++i) milliseconds *= 10;
  return true;
}

}  // namespace

std::string Timestamp(std::int64_t milliseconds) {
  return Format(milliseconds, true);
}

std::string TimestampOfSecond(std::int64_t milliseconds) {
  return Format(milliseconds, false);
}

std::optional<std::int64_t> ReadTimestamp(std::string_view text) {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, milliseconds = 0;
  if (!TakeDigits(text, 4, '-', year) || !TakeDigits(text, 2, '-', month) || !TakeDigits(text, 2, 'T', day) ||
      !TakeDigits(text, 2, ':', hour) || !TakeDigits(text, 2, ':', minute)) {
    return std::nullopt;
  }
  if (text.size() < 3 || !TakeFraction(text.substr(2), milliseconds)) return std::nullopt;
  const std::string seconds = std::string(text.substr(0, 2)) + " ";
  std::string_view rest = seconds;
  if (!TakeDigits(rest, 2, ' ', second)) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok() || year < 1970 || hour > 23 || minute > 59 || second > 59) return std::nullopt;
  const std::chrono::sys_days days{date};
  return std::chrono::duration_cast<std::chrono::milliseconds>(days.time_since_epoch()).count() +
         ((hour * 60LL + minute) * 60 + second) * 1000 + milliseconds;
}

}  // namespace vantry_sim
