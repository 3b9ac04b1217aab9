#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/scripted_transport.h"
#include "tests/support/together.h"
#include "tests/support/trace_recorder.h"
#include "tests/wire/requests/counted_calls.h"
#include "tests/wire/requests/sample_server.h"

namespace vtdirect_test {

inline constexpr const char* plmUrl = "https://plm.example/vt/";
inline constexpr const char* uidOfD1 = "korvufenloom-vt://plm.example/vt/?id=D1";
inline constexpr const char* uidWithName = "korvufenloom-vt://plm.example/vt/?id=D1&file=/fork.lxz";
inline constexpr const char* pathOfD1 = "//plm/Products/Bike/Folders/Frames/fork.lxz";
inline constexpr const char* framesFolder = "//plm/Products/Bike/Folders/Frames/";

/// A host with threads: the sample server is listed as "plm", and beside it "down", which no request reaches.
/// The library starts afresh, nothing may be left behind, and the sample server must know each request.
class ThreadedHost {
 public:
  explicit ThreadedHost(Generation generation = Generation::Schema5);
  ~ThreadedHost();
  ThreadedHost(const ThreadedHost&) = delete;
  ThreadedHost& operator=(const ThreadedHost&) = delete;

  /// Answers as the servers do.
  Answer AnswerOfServers(const SentRequest& request);
  /// Makes the server objects again, which then know nothing of their servers.
  static void ListServers();

  TraceRecorder trace;
  SampleServer server;
  ScriptedTransport transport;
};

/// A question that makes no request, with what it must answer.
struct SilentQuestion {
  std::string function;
  std::function<bool()> isAnswered;
};
[[nodiscard]] const std::vector<SilentQuestion>& SilentQuestions();

/// A function that changes what all threads share, in a way that leaves every answer the same: the same
/// servers, the same meaning of the settings, callbacks that do the same, sessions that write off nobody but
/// "down".
struct Writer {
  std::string function;
  std::function<void()> write;
};
[[nodiscard]] const std::vector<Writer>& Writers();

}  // namespace vtdirect_test
