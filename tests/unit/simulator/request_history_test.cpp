#include "simulator/wire/request_history.h"

#include <gtest/gtest.h>

#include <thread>

#include "simulator/wire/redaction.h"

namespace vantry_sim {
namespace {

std::uint64_t Begin(RequestHistory& history, const std::string& method, const std::string& target) {
  RememberedRequest request;
  request.method = method;
  request.target = target;
  return history.Begin(std::move(request));
}

void Finish(RequestHistory& history, std::uint64_t id, int status) {
  Exchange exchange;
  exchange.status = status;
  history.Finish(id, exchange, 0);
}

TEST(RequestHistory, FindsByMethodPatternStatusAndMark) {
  RequestHistory history;
  EXPECT_EQ(history.Mark(), 0U);
  Finish(history, Begin(history, "GET", "/a/1"), 200);
  Finish(history, Begin(history, "POST", "/a/2"), 409);
  const auto open = Begin(history, "GET", "/b");
  EXPECT_EQ(history.Find({}).size(), 2U);
  EXPECT_EQ(history.Find({.arrived = true}).size(), 3U);
  EXPECT_EQ(history.Find({.method = "GET"}).size(), 1U);
  EXPECT_EQ(history.Find({.pattern = "/a/*"}).size(), 2U);
  EXPECT_EQ(history.Find({.status = 409}).at(0).target, "/a/2");
  EXPECT_EQ(history.Find({.since = 1}).size(), 1U);
  EXPECT_EQ(history.Mark(), open);
  Finish(history, open, 0);
  EXPECT_EQ(history.Find({}).size(), 3U);
  history.Clear();
  EXPECT_EQ(history.Find({}).size(), 0U);
  EXPECT_EQ(history.Mark(), 3U);
  EXPECT_EQ(Begin(history, "GET", "/c"), 4U);
}

TEST(RequestHistory, WaitEndsWithTheLastRequestThatItWaitsFor) {
  RequestHistory history;
  std::thread client([&] {
    for (int i = 0; i < 3; ++i) Finish(history, Begin(history, "GET", "/a"), 200);
  });
  EXPECT_GE(history.Wait({.pattern = "/a"}, 3, std::chrono::seconds(60)).size(), 3U);
  client.join();
}

TEST(RequestHistory, WaitEndsWithItsTimeAndWithTheServer) {
  RequestHistory history;
  EXPECT_EQ(history.Wait({}, 1, std::chrono::milliseconds(1)).size(), 0U);
  std::thread stopper([&] { history.EndWaits(); });
  EXPECT_EQ(history.Wait({}, 1, std::chrono::hours(1)).size(), 0U);
  stopper.join();
}

TEST(RequestHistory, KeepsTheLatestWithinItsBounds) {
  RequestHistory history;
  for (int i = 0; i < 10'100; ++i) Begin(history, "GET", "/a");
  auto kept = history.Find({.arrived = true});
  ASSERT_EQ(kept.size(), 10'000U);
  EXPECT_EQ(kept.front().id, 101U);
  EXPECT_EQ(kept.back().id, 10'100U);
  // 20 MiB each: three of them fit 64 MiB.
  for (int i = 0; i < 5; ++i) history.SetBody(Begin(history, "GET", "/b"), std::string(20 << 20, 'x'), 1);
  EXPECT_EQ(history.Find({.pattern = "/b", .arrived = true}).size(), 3U);
  // What was forgotten is not missed.
  Finish(history, 1, 200);
}

TEST(RequestHistory, CountsEveryTextOfARequest) {
  const std::string text(20 << 20, 'x');
  RequestHistory methods;
  for (int i = 0; i < 5; ++i) Begin(methods, text, "/a");
  EXPECT_EQ(methods.Find({.arrived = true}).size(), 3U);
  RequestHistory users;
  Exchange exchange;
  exchange.user = text;
  for (int i = 0; i < 5; ++i) users.Finish(Begin(users, "GET", "/a"), exchange, 0);
  EXPECT_EQ(users.Find({}).size(), 3U);
}

TEST(RequestHistory, MarkIsOfTheMomentInWhichTheRequestsWereFound) {
  RequestHistory history;
  std::thread client([&] {
    for (int i = 0; i < 5000; ++i) Finish(history, Begin(history, "GET", "/a"), 200);
  });
  std::uint64_t mark = 0;
  do {
    const auto found = history.Wait({.arrived = true}, 0, std::chrono::milliseconds(0), &mark);
    EXPECT_EQ(found.empty() ? 0 : found.back().id, mark);
  } while (mark < 5000);
  client.join();
}

TEST(Redaction, TokenOfAnUploadIsHiddenHoweverThePathIsWritten) {
  const std::string shown = "/servlet/content/upload/(hidden)";
  for (const char* target : {"/servlet/content/upload/t0ken", "/servlet/content/%75pload/t0ken",
                             "/servlet%2Fcontent/upload%2ft0ken", "/servlet/content/upload/t%30ken/x"})
    EXPECT_EQ(ShownTarget(target), shown);
  EXPECT_EQ(ShownTarget("/servlet/x%20y?path=%2F"), "/servlet/x%20y?path=%2F");
}

TEST(RequestHistory, BodyIsShownWithoutItsSecrets) {
  RequestHistory history;
  const auto id = Begin(history, "POST", "/a");
  history.ShowBody(id, "application/json", R"({"name":"n","password":"p"})");
  Finish(history, id, 200);
  EXPECT_EQ(history.Find({}).at(0).body, R"x({"name":"n","password":"(hidden)"})x");
  EXPECT_EQ(history.Find({}).at(0).bodySize, 27U);
}

}  // namespace
}  // namespace vantry_sim
