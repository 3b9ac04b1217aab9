#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "public/vt_direct_manager.h"
#include "tests/support/trace_recorder.h"
#include "tests/wire/requests/counted_calls.h"
#include "tests/wire/requests/page_of_requests.h"
#include "tests/wire/requests/sample_server.h"

namespace vtdirect_test {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& line : lines) text += "\n  " + line;
  return text;
}

// Makes one call against a server of one generation.
class CallCounter {
 public:
  explicit CallCounter(Generation generation) : generation_(generation), server_(generation) {
    setenv("FENLOOM_LANGUAGE", "en", 1);
    VtDirectManager::SetAppConfig(VtDirectManager::ConfigBrowseCadDocuments, "");
    transport_.AnswerBy([this](const SentRequest& request) { return server_.AnswerTo(request.line); });
  }

  Cost CostOf(const CountedCall& call) {
    ListSampleServer(call.isListed);
    call.prepare();
    const int first = RequestsOf(call);
    const int later = RequestsOf(call);
    EXPECT_THAT(server_.unknown(), IsEmpty());
    return {first, later};
  }

  [[nodiscard]] const std::string& requests() const { return requests_; }

 private:
  int RequestsOf(const CountedCall& call) {
    transport_.ClearRequests();
    const bool isRefused = call.needsOData && generation_ == Generation::Gateway;
    EXPECT_EQ(call.run(), !isRefused);
    requests_ += "\ncall:" + Joined(transport_.lines());
    return static_cast<int>(transport_.lines().size());
  }

  TraceRecorder trace_;
  Generation generation_;
  SampleServer server_;
  ScriptedTransport transport_;
  std::string requests_;
};

void ExpectColumn(std::size_t column, Generation generation) {
  const auto rows = ReadRequestRows();
  ASSERT_FALSE(rows.empty());
  for (const RequestRow& row : rows) {
    SCOPED_TRACE(row.function + " of " + row.calledWith);
    const auto call = CountedCalls().find({row.function, row.calledWith});
    if (call == CountedCalls().end()) continue;  // another test tells of it
    CallCounter counter(generation);
    const Cost measured = counter.CostOf(call->second);
    EXPECT_EQ(row.costs[column].first, measured.first) << "first call" << counter.requests();
    EXPECT_EQ(row.costs[column].later, measured.later) << "later call" << counter.requests();
  }
}

TEST(RequestsOfACall, AreAsThePageSaysOnAServerWithTheGatewayAlone) {
  ExpectColumn(0, Generation::Gateway);
}

TEST(RequestsOfACall, AreAsThePageSaysOnAServerWithTheFirstSchema) {
  ExpectColumn(1, Generation::Schema1);
}

TEST(RequestsOfACall, AreAsThePageSaysOnAServerWithTheFourthSchema) {
  ExpectColumn(2, Generation::Schema4);
}

TEST(RequestsOfACall, AreAsThePageSaysOnAServerWithTheFifthSchema) {
  ExpectColumn(3, Generation::Schema5);
}

TEST(RequestsOfACall, AreNoneForTheCallsThatThePageCallsSilent) {
  for (const auto& [function, call] : SilentCalls()) {
    SampleServer server(Generation::Schema5);
    ScriptedTransport transport;
    transport.AnswerBy([&](const SentRequest& request) { return server.AnswerTo(request.line); });
    ListSampleServer(true);
    call();
    EXPECT_THAT(transport.lines(), IsEmpty()) << function;
  }
}

TEST(PageOfRequests, HasALineForEachCountedCallAndNoOther) {
  std::vector<std::pair<std::string, std::string>> lines;
  for (const RequestRow& row : ReadRequestRows()) lines.emplace_back(row.function, row.calledWith);
  std::vector<std::pair<std::string, std::string>> calls;
  for (const auto& entry : CountedCalls()) calls.push_back(entry.first);
  EXPECT_THAT(lines, UnorderedElementsAreArray(calls));
}

TEST(PageOfRequests, NamesTheSilentCalls) {
  std::set<std::string> calls;
  for (const auto& entry : SilentCalls()) calls.insert(entry.first);
  EXPECT_EQ(ReadNamesInSection("Calls that never make a request"), calls);
}

TEST(PageOfRequests, NamesEveryPublicFunction) {
  std::set<std::string> named = ReadNamesInSection("Calls that never make a request");
  for (const RequestRow& row : ReadRequestRows()) named.insert(row.function);
  EXPECT_EQ(named, ReadPublicFunctions());
}

}  // namespace
}  // namespace vtdirect_test
