#include "simulator/wire/request_log.h"

#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

Exchange Sample() {
  Exchange exchange;
  exchange.start = std::chrono::system_clock::time_point(std::chrono::milliseconds(1'700'000'000'123));
  exchange.duration = std::chrono::microseconds(42);
  exchange.method = "GET";
  exchange.target = "/a?b=\"c\"";
  exchange.status = 200;
  exchange.bodyBytes = 5'000'000'000;
  exchange.user = "anna";
  exchange.remotePort = 4711;
  return exchange;
}

TEST(RequestLog, LineIsOneJsonObject) {
  EXPECT_EQ(
      LogLine(Sample()),
      "{\"time\":\"2023-11-14T22:13:20.123Z\",\"method\":\"GET\",\"path\":\"/a?b=\\\"c\\\"\",\"status\":200,"
      "\"bytes\":5000000000,\"user\":\"anna\",\"port\":4711,\"microseconds\":42}\n");
}

TEST(RequestLog, BytesThatAreNoUtf8DoNotSpoilALine) {
  Exchange exchange = Sample();
  exchange.target = "/\xFF\n\xC3";
  rapidjson::Document line;
  line.Parse(LogLine(exchange).c_str());
  ASSERT_FALSE(line.HasParseError());
  EXPECT_STREQ(line["path"].GetString(), "/\xEF\xBF\xBD\n\xEF\xBF\xBD");
  EXPECT_EQ(LogLine(exchange).find('\n'), LogLine(exchange).size() - 1);
}

TEST_F(SimulatorTest, LogIsAppendedTo) {
  const std::string file = (directory_ / "log").string();
  { RequestLog(file).Write(Sample()); }
  { RequestLog(file).Write(Sample()); }
  EXPECT_EQ(ReadFile(file), LogLine(Sample()) + LogLine(Sample()));
}

TEST_F(SimulatorTest, LogThatCannotBeWrittenIsAnError) {
  EXPECT_THROW(RequestLog((directory_ / "missing" / "log").string()), std::runtime_error);
}

}  // namespace
}  // namespace vantry_sim
