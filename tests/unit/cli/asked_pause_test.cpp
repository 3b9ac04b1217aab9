#include "hosts/cli/http_log/asked_pause.h"

#include <gtest/gtest.h>

#include <string>

namespace vtdirect_cli {
namespace {

using std::chrono::seconds;
using std::chrono::system_clock;

// Sun, 06 Nov 1994 08:49:37 GMT.
[[nodiscard]] system_clock::time_point Then() {
  return system_clock::from_time_t(784111777);
}

[[nodiscard]] std::optional<seconds> Asked(const std::string& value) {
  return PauseAskedIn("HTTP/1.1 503 Busy\r\nServer: x\r\nRetry-After: " + value + "\r\nAge: 1", Then());
}

void Answer(int status, const std::string& line) {
  du::http::ObservedExchange exchange;
  exchange.status = status;
  exchange.turns = {{"GET / HTTP/1.1", "HTTP/1.1 " + std::to_string(status) + " x\r\n" + line}};
  NoteAskedPause(exchange);
}

}  // namespace

TEST(AskedPause, IsReadInSeconds) {
  EXPECT_EQ(Asked("7"), seconds(7));
  EXPECT_EQ(Asked("0"), seconds(0));
  EXPECT_EQ(Asked(" 120 \t"), seconds(120));
  EXPECT_EQ(Asked("99999999999999999999999"), seconds(31'536'000));
  EXPECT_EQ(PauseAskedIn("HTTP/1.1 503 Busy\r\nRETRY-AFTER:5", Then()), seconds(5));
}

TEST(AskedPause, IsReadAsADate) {
  EXPECT_EQ(Asked("Sun, 06 Nov 1994 08:49:47 GMT"), seconds(10));
  EXPECT_EQ(Asked("Sun, 06 Nov 1994 08:49:36 GMT"), seconds(0));
  EXPECT_EQ(Asked("Mon, 06 Nov 2090 08:49:36 GMT"), seconds(31'536'000));
  EXPECT_EQ(Asked("Sun, 06 Nov 9994 08:49:36 GMT"), seconds(31'536'000));
}

TEST(AskedPause, IsNothingWhenItCannotBeRead) {
  for (const char* value :
       {"", "-1", "1.5", "soon", "7 s", "Sun, 06 Nov 1994", "Sun, 06 Nov 1994 08:49:47 CET"}) {
    EXPECT_FALSE(Asked(value)) << value;
  }
  EXPECT_FALSE(PauseAskedIn("HTTP/1.1 503 Busy\r\nX-Retry-After: 7\r\nRetry-Afters: 7", Then()));
  EXPECT_FALSE(PauseAskedIn("", Then()));
}

TEST(AskedPause, IsThatOfAServerWhichWasTooBusy) {
  Answer(503, "Retry-After: 4");
  EXPECT_EQ(TakeAskedPause(), seconds(4));
  EXPECT_FALSE(TakeAskedPause());
  Answer(429, "Retry-After: 5");
  EXPECT_EQ(TakeAskedPause(), seconds(5));
  Answer(301, "Retry-After: 6");
  EXPECT_FALSE(TakeAskedPause());
  // The last one counts, if it asks for nothing too.
  Answer(503, "Retry-After: 4");
  Answer(503, "Age: 4");
  EXPECT_FALSE(TakeAskedPause());
  du::http::ObservedExchange nothing;
  nothing.status = 503;
  NoteAskedPause(nothing);
  EXPECT_FALSE(TakeAskedPause());
}

}  // namespace vtdirect_cli
