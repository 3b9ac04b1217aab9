// Each exported function beside itself and beside each of the functions that change what all threads share,
// on one server and one document.

#include <atomic>
#include <set>

#include "tests/wire/threads/threaded_host.h"

namespace vtdirect_test {
namespace {

constexpr int callsOfAThread = 3;
constexpr int writes = 20;

struct NamedCall {
  std::string name;
  std::function<bool()> run;
};

// Makes a call again and again and counts the answers that are not the right one.
std::function<void()> Repeated(const NamedCall& call, std::atomic<int>& wrong) {
  return [&call, &wrong] {
    for (int number = 0; number < callsOfAThread; ++number) {
      if (!call.run()) ++wrong;
    }
  };
}

std::function<void()> Repeated(const Writer& writer) {
  return [&writer] {
    for (int number = 0; number < writes; ++number) writer.write();
  };
}

void ExpectRightBesideAll(const NamedCall& call) {
  for (const Writer& writer : Writers()) {
    // The first calls on a server ask it what it has; each writer is to meet those too.
    ThreadedHost::ListServers();
    std::atomic<int> wrong = 0;
    Together({Repeated(call, wrong), Repeated(call, wrong), Repeated(writer)});
    EXPECT_EQ(wrong, 0) << call.name << " beside " << writer.function;
  }
}

// The calls of a function; those that a server without OData refuses are left out on such a server.
std::vector<NamedCall> CallsOf(const std::string& function, Generation generation) {
  std::vector<NamedCall> calls;
  for (const auto& [key, call] : CountedCalls()) {
    if (key.first != function || (call.needsOData && generation == Generation::Gateway)) continue;
    call.prepare();
    calls.push_back({key.first + " of " + key.second, call.run});
  }
  for (const SilentQuestion& question : SilentQuestions()) {
    if (question.function == function) calls.push_back({function, question.isAnswered});
  }
  return calls;
}

std::vector<std::string> Functions() {
  std::set<std::string> functions;
  for (const auto& [key, call] : CountedCalls()) functions.insert(key.first);
  for (const SilentQuestion& question : SilentQuestions()) functions.insert(question.function);
  return {functions.begin(), functions.end()};
}

class EveryFunction : public testing::TestWithParam<std::string> {};

TEST_P(EveryFunction, IsRightBesideItselfAndEachWriter) {
  for (const Generation generation : {Generation::Gateway, Generation::Schema5}) {
    const ThreadedHost host(generation);
    for (const NamedCall& call : CallsOf(GetParam(), generation)) ExpectRightBesideAll(call);
  }
}

INSTANTIATE_TEST_SUITE_P(OnOneServer, EveryFunction, testing::ValuesIn(Functions()),
                         [](const auto& test) { return test.param; });

TEST(EveryWriter, RunsBesideItselfAndTheOthers) {
  const ThreadedHost host;
  for (const Writer& one : Writers()) {
    for (const Writer& other : Writers()) {
      Together({Repeated(one), Repeated(one), Repeated(other)});
      for (const SilentQuestion& question : SilentQuestions()) {
        EXPECT_TRUE(question.isAnswered())
            << question.function << " after " << one.function << " beside " << other.function;
      }
    }
  }
}

// The calls of the page and the questions above are all functions that there are, but for the writers.
TEST(EveryFunctionHas, ACallHere) {
  std::set<std::string> functions{"SetAppConfig", "UpdateServerList", "RegisterAuth", "RegisterTaskRunner",
                                  "StartSession"};
  for (const std::string& function : Functions()) functions.insert(function);
  for (const auto& [function, call] : SilentCalls()) {
    EXPECT_EQ(functions.count(function), 1u) << function;
  }
}

}  // namespace
}  // namespace vtdirect_test
