#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <atomic>
#include <thread>

#include "platform/environment.h"
#include "platform/trace.h"
#include "tests/support/trace_recorder.h"

namespace {

using dp::LXTracer;
using dp::TraceType;
using testing::ElementsAre;
using testing::IsEmpty;
using vtdirect_test::TraceLine;
using vtdirect_test::TraceRecorder;

TEST(Environment, TestsForSetAndNotEmpty) {
  unsetenv("FENLOOM_TEST_SWITCH");
  EXPECT_FALSE(dp::Environment::Test("FENLOOM_TEST_SWITCH"));
  EXPECT_EQ(dp::Environment::Get("FENLOOM_TEST_SWITCH"), "");
  setenv("FENLOOM_TEST_SWITCH", "", 1);
  EXPECT_FALSE(dp::Environment::Test("FENLOOM_TEST_SWITCH"));
  setenv("FENLOOM_TEST_SWITCH", "0", 1);
  EXPECT_TRUE(dp::Environment::Test("FENLOOM_TEST_SWITCH"));
  EXPECT_EQ(dp::Environment::Get("FENLOOM_TEST_SWITCH"), "0");
  EXPECT_FALSE(dp::Environment::Test(nullptr));
  EXPECT_EQ(dp::Environment::Get(nullptr), "");
}

TEST(Trace, HandsEachLineOnAsItWasComposed) {
  TraceRecorder recorder;
  LXTracer("fenlet", "VtDirect")(TraceType::Information, "Downloading %s\n", "D1");
  LXTracer("fenlet", "CmsInterface")(TraceType::Error, "Failed with %d : %s", -1, "100% no");
  EXPECT_THAT(recorder.lines(), ElementsAre(TraceLine{0, "VtDirect", "Downloading D1\n"},
                                            TraceLine{3, "CmsInterface", "Failed with -1 : 100% no"}));
  EXPECT_THAT(recorder.strayAreas(), IsEmpty());
}

TEST(Trace, TakesALineOfAnyLength) {
  TraceRecorder recorder;
  const std::string text(1'000'000, 'x');
  LXTracer("fenlet", "VtDirect")(TraceType::Miss, "<%s>", text.c_str());
  ASSERT_EQ(recorder.lines().size(), 1u);
  EXPECT_TRUE(recorder.lines()[0].text == "<" + text + ">");
}

TEST(Trace, ComposesALinePieceByPiece) {
  TraceRecorder recorder;
  {
    auto line = LXTracer("fenlet", "VtDirect")(TraceType::Warning);
    line << "found " << 3 << " of " << std::string("five");
    EXPECT_THAT(recorder.lines(), IsEmpty());
  }
  LXTracer("fenlet", "VtDirect")(TraceType::Error) << "on the spot\n";
  EXPECT_THAT(recorder.lines(), ElementsAre(TraceLine{2, "VtDirect", "found 3 of five"},
                                            TraceLine{3, "VtDirect", "on the spot\n"}));
}

TEST(Trace, WritesAMovedLineOnce) {
  TraceRecorder recorder;
  {
    auto line = LXTracer("fenlet", "VtDirect")(TraceType::Warning);
    line << "moved";
    const auto moved = std::move(line);
  }
  EXPECT_EQ(recorder.lines().size(), 1u);
}

TEST(Trace, IsSilentWithoutAHandlerAndASwitch) {
  unsetenv("FENLOOM_TRACE");
  testing::internal::CaptureStderr();
  LXTracer("fenlet", "VtDirect")(TraceType::Error, "nobody listens\n");
  LXTracer("fenlet", "VtDirect")(TraceType::Error) << "nobody listens";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Trace, GoesToStandardErrorAsFarAsTheSwitchSays) {
  setenv("FENLOOM_TRACE", "31", 1);
  testing::internal::CaptureStderr();
  const LXTracer tracer("fenlet", "VtDirect");
  tracer(TraceType::Information, "information\n");
  tracer(TraceType::Miss, "miss\n");
  tracer(TraceType::Warning) << "warning";
  tracer(TraceType::Error) << "error without an end";
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "1 fenlet/VtDirect: miss\n3 fenlet/VtDirect: error without an end\n");
}

TEST(Trace, SteersNobodysTerminal) {
  setenv("FENLOOM_TRACE", "3", 1);
  testing::internal::CaptureStderr();
  LXTracer("fenlet", "VtDirect")(TraceType::Error, "%s", "\x1B[2J\x07 a server's text\r\n\tgoes on\x7F");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "3 fenlet/VtDirect: ?[2J? a server's text?\n\tgoes on?\n");
  testing::internal::CaptureStderr();
  LXTracer("fenlet", "VtDirect")(TraceType::Error, "%s",
                                 "\xC2\x9B\x32J Gr\xC3\xB6\xC3\x9F\x65 \xE2\x80\xAEgpj.\xE2\x80\xAC "
                                 "\xE2\x81\xA6\xE2\x81\xA9 \xE2\x80\x93 \xC2");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "3 fenlet/VtDirect: ?2J Gr\xC3\xB6\xC3\x9F\x65 ?gpj.? ?? \xE2\x80\x93 \xC2\n");
}

TEST(Trace, ReturnsToTheDefaultWithAnEmptyFunction) {
  unsetenv("FENLOOM_TRACE");
  int lines = 0;
  dp::SetTraceHandler([&lines](const char*, const char*, TraceType, const std::string&) { ++lines; });
  LXTracer("fenlet", "VtDirect")(TraceType::Error, "one");
  dp::SetTraceHandler({});
  LXTracer("fenlet", "VtDirect")(TraceType::Error, "two");
  EXPECT_EQ(lines, 1);
}

TEST(Trace, LetsAHandlerTraceAndReplaceItself) {
  int lines = 0;
  dp::SetTraceHandler([&lines](const char*, const char*, TraceType, const std::string&) {
    ++lines;
    dp::SetTraceHandler({});
    LXTracer("fenlet", "VtDirect")(TraceType::Error, "from inside");
  });
  LXTracer("fenlet", "VtDirect")(TraceType::Error, "from outside");
  EXPECT_EQ(lines, 1);
}

TEST(Trace, KeepsAHandlersExceptionToItself) {
  dp::SetTraceHandler([](const char*, const char*, TraceType, const std::string&) { throw 1; });
  LXTracer("fenlet", "VtDirect")(TraceType::Error, "line");
  LXTracer("fenlet", "VtDirect")(TraceType::Error) << "line";
  dp::SetTraceHandler({});
}

TEST(Trace, ServesSeveralThreadsAtOnce) {
  std::atomic<int> lines{0};
  const auto count = [&lines](const char*, const char*, TraceType, const std::string&) { ++lines; };
  dp::SetTraceHandler(count);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&count] {
      for (int j = 0; j < 500; ++j) {
        LXTracer("fenlet", "VtDirect")(TraceType::Information, "%d", j);
        if (j % 50 == 0) dp::SetTraceHandler(count);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  dp::SetTraceHandler({});
  EXPECT_EQ(lines, 2000);
}

TEST(Trace, TakesNoFormatAndNoNames) {
  TraceRecorder recorder;
  const char* format = nullptr;
  LXTracer("fenlet", "VtDirect")(TraceType::Error, format, "for a format that is not there");
  EXPECT_THAT(recorder.lines(), IsEmpty());
  LXTracer(nullptr, nullptr)(TraceType::Error, "x");
  EXPECT_THAT(recorder.lines(), ElementsAre(TraceLine{3, "", "x"}));
}

}  // namespace
