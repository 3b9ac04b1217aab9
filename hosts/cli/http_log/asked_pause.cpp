#include "hosts/cli/http_log/asked_pause.h"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <iomanip>
#include <locale>
#include <sstream>
#include <string>

namespace vtdirect_cli {
namespace {

using std::chrono::seconds;
using std::chrono::system_clock;

constexpr int tooManyRequestsStatus = 429;
constexpr int unavailable = 503;
constexpr std::string_view encodingName = "retry-after:";
// Nobody waits longer, and no clock overflows.
constexpr seconds longest = std::chrono::hours(24 * 365);

// An exchange is made on the thread that asks for it, and so is the pause of that thread.
thread_local std::optional<seconds> theAskedPause;

[[nodiscard]] bool HasName(std::string_view line) {
  const auto isSame = [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; };
  return line.size() >= encodingName.size() &&
         std::equal(encodingName.begin(), encodingName.end(), line.begin(),
                    [&](char wanted, char found) { return isSame(found, wanted); });
}

[[nodiscard]] std::string_view Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

[[nodiscard]] std::optional<seconds> AsSeconds(std::string_view text) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
  long count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  // What has too many digits for a number is long all the same.
  if (error != std::errc() || count > longest.count()) return longest;
  return seconds(count);
}

// "Sun, 06 Nov 1994 08:49:37 GMT", the one form that is sent today.
[[nodiscard]] std::optional<seconds> UntilDate(std::string_view text, system_clock::time_point now) {
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  std::tm date = {};
  std::string zone;
  stream >> std::get_time(&date, "%a, %d %b %Y %H:%M:%S") >> zone;
  if (stream.fail() || zone != "GMT") return std::nullopt;
  // In whole seconds: the clock's own unit ends in the year 2262.
  const seconds end(timegm(&date));
  const auto begin = std::chrono::floor<seconds>(now.time_since_epoch());
  return std::clamp(end - begin, seconds(0), longest);
}

}  // namespace

std::optional<seconds> PauseAskedIn(std::string_view answerHead, system_clock::time_point now) {
  while (!answerHead.empty()) {
    const std::size_t end = answerHead.find('\n');
    const std::string_view line = answerHead.substr(0, end);
    answerHead.remove_prefix(end == std::string_view::npos ? answerHead.size() : end + 1);
    if (!HasName(line)) continue;
    const std::string_view value = Trimmed(line.substr(encodingName.size()));
    if (const auto pause = AsSeconds(value)) return pause;
    return UntilDate(value, now);
  }
  return std::nullopt;
}

void NoteAskedPause(const du::http::ObservedExchange& exchange) {
  if (exchange.status != unavailable && exchange.status != tooManyRequestsStatus) return;
  if (exchange.turns.empty()) return;
  theAskedPause = PauseAskedIn(exchange.turns.back().answerHead, system_clock::now());
}

std::optional<seconds> TakeAskedPause() {
  const auto pause = theAskedPause;
  theAskedPause = std::nullopt;
  return pause;
}

}  // namespace vtdirect_cli
