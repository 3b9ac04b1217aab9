#include "connection/http_connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/scripted_transport.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using du::http::ErrorCode;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using vtdirect_test::Answer;
using Calls = std::vector<std::pair<std::size_t, std::size_t>>;

// A sink that keeps what it was given.
class KeepingSink final : public du::http::FileSink {
 public:
  ErrorCode Begin(int, std::optional<std::uint64_t>) override { return ErrorCode::Done; }
  ErrorCode Write(const std::uint8_t* data, std::size_t count) override {
    content.append(reinterpret_cast<const char*>(data), count);
    return ErrorCode::Done;
  }
  ErrorCode Finish() override { return ErrorCode::Done; }
  std::string content;
};

// A request with its parts, on the test's stack.
class TestRequest {
 public:
  explicit TestRequest(const std::string* body = nullptr)
      : headers_(nullptr, 0),
        body_(body != nullptr ? reinterpret_cast<const std::uint8_t*>(body->data()) : nullptr,
              body != nullptr ? body->size() : 0) {
    request.uri = "vt/x";
    request.headers = &headers_;
    request.body = body != nullptr ? &body_ : nullptr;
    request.sink = &sink;
  }
  du::http::Request request;
  KeepingSink sink;

 private:
  du::http::BufferFileSource headers_;
  du::http::BufferFileSource body_;
};

std::function<bool(std::size_t, std::size_t)> Recording(Calls& calls) {
  return [&calls](std::size_t done, std::size_t total) {
    calls.emplace_back(done, total);
    return true;
  };
}

class HttpConnectionTest : public testing::Test {
 protected:
  vtdirect_test::ScriptedTransport transport;
};

TEST_F(HttpConnectionTest, KeepsTheUrlExactlyAsItWasGiven) {
  EXPECT_EQ(HttpConnection("HTTP://Plm.example:80/vt?q#f", {}).uri(), "HTTP://Plm.example:80/vt?q#f");
}

TEST_F(HttpConnectionTest, TheBasePathIsThePathOfTheUrlWithAClosingSlash) {
  EXPECT_EQ(HttpConnection("http://plm.example/vt", {}).basePath(), "/vt/");
  EXPECT_EQ(HttpConnection("http://plm.example/vt/", {}).basePath(), "/vt/");
  EXPECT_EQ(HttpConnection("http://plm.example/a/b", {}).basePath(), "/a/b/");
  EXPECT_EQ(HttpConnection("http://plm.example/", {}).basePath(), "/");
  EXPECT_EQ(HttpConnection("https://plm.example:8443/vt?x=/y", {}).basePath(), "/vt/");
}

TEST_F(HttpConnectionTest, TheBasePathOfAUrlWithoutAPathIsEmpty) {
  EXPECT_EQ(HttpConnection("http://plm.example", {}).basePath(), "");
  EXPECT_EQ(HttpConnection("http://plm.example?x=1", {}).basePath(), "");
}

TEST_F(HttpConnectionTest, ConnectsAtConstructionAndSendsNothing) {
  const HttpConnection connection("http://plm.example/vt", {});
  EXPECT_THAT(transport.connections(), ElementsAre("http://plm.example/vt"));
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(HttpConnectionTest, OneConnectionServesAllRequests) {
  transport.Then(200).Then(500).ThenFail(ErrorCode::TimedOut).Then(200);
  HttpConnection connection("http://plm.example/vt", {});
  for (int turn = 0; turn < 4; ++turn) {
    TestRequest test;
    int status = 0;
    (void)connection.SendRequest(test.request, &status);
  }
  EXPECT_EQ(transport.requests().size(), 4U);
  // Not renewed after the failed requests either.
  EXPECT_EQ(transport.connections().size(), 1U);
}

TEST_F(HttpConnectionTest, GivesWhatTheExchangeGives) {
  transport.Then(404, "gone").ThenFail(ErrorCode::TlsFailure);
  HttpConnection connection("http://plm.example/vt", {});
  TestRequest first;
  int status = 0;
  EXPECT_EQ(connection.SendRequest(first.request, &status), ErrorCode::Done);
  EXPECT_EQ(status, 404);
  EXPECT_EQ(first.sink.content, "gone");
  TestRequest second;
  EXPECT_EQ(connection.SendRequest(second.request, &status), ErrorCode::TlsFailure);
}

TEST_F(HttpConnectionTest, AMissingConnectionIsMadeBeforeTheNextRequest) {
  transport.RefuseConnections(1);
  transport.Then(200).Then(200);
  HttpConnection connection("http://plm.example/vt", {});
  TestRequest test;
  int status = 0;
  EXPECT_EQ(connection.SendRequest(test.request, &status), ErrorCode::Done);
  EXPECT_EQ(status, 200);
  EXPECT_THAT(transport.connections(), ElementsAre("http://plm.example/vt", "http://plm.example/vt"));
  TestRequest next;
  EXPECT_EQ(connection.SendRequest(next.request, &status), ErrorCode::Done);
  EXPECT_EQ(transport.connections().size(), 2U);
}

TEST_F(HttpConnectionTest, WithoutAConnectionTheResultIsNoConnectionAndTheStatusIsLeftAlone) {
  transport.RefuseConnections(2);
  transport.Then(200);
  HttpConnection connection("http://plm.example/vt", {});
  TestRequest test;
  int status = 77;
  const ErrorCode error = connection.SendRequest(test.request, &status);
  EXPECT_EQ(static_cast<int>(error), 1);
  EXPECT_EQ(status, 77);
  EXPECT_THAT(transport.requests(), IsEmpty());
  // Tried once and not more for one request.
  EXPECT_EQ(transport.connections().size(), 2U);
  // The next request tries again.
  EXPECT_EQ(connection.SendRequest(test.request, &status), ErrorCode::Done);
  EXPECT_EQ(transport.connections().size(), 3U);
}

TEST_F(HttpConnectionTest, EveryRequestCarriesTheClientMark) {
  transport.Then(200).Then(200);
  HttpConnection connection("http://plm.example/vt", {});
  for (int turn = 0; turn < 2; ++turn) {
    TestRequest test;
    int status = 0;
    (void)connection.SendRequest(test.request, &status);
  }
  EXPECT_EQ(transport.clientMarks().size(), 2U);
  EXPECT_THAT(transport.clientMarks(), Each("X-Zvk-Connected: 1"));
}

TEST_F(HttpConnectionTest, AuthenticationIsAskedWithTheUrlOfTheConnection) {
  std::vector<std::string> asked;
  const HttpConnection connection("http://plm.example/vt", [&asked](const char* url) {
    asked.emplace_back(url);
    return asked.size() == 1;
  });
  const du::http::CommonAuth auth = connection.MakeCommonAuth();
  EXPECT_STREQ(auth.header, "X-Zvk-Connected: 1");
  EXPECT_TRUE(auth.reauthenticate());
  EXPECT_FALSE(auth.reauthenticate());
  EXPECT_THAT(asked, ElementsAre("http://plm.example/vt", "http://plm.example/vt"));
}

TEST_F(HttpConnectionTest, TheAuthenticationOfARequestOutlivesItsConnection) {
  std::string asked;
  std::function<bool()> reauthenticate;
  {
    const HttpConnection connection("http://plm.example/a-path-too-long-for-a-short-string",
                                    [&](const char* url) {
                                      asked = url;
                                      return true;
                                    });
    reauthenticate = connection.MakeCommonAuth().reauthenticate;
  }
  EXPECT_TRUE(reauthenticate());
  EXPECT_EQ(asked, "http://plm.example/a-path-too-long-for-a-short-string");
}

TEST_F(HttpConnectionTest, AuthenticationWithoutAFunctionRaisesBadFunctionCall) {
  const HttpConnection connection("http://plm.example/vt", {});
  const du::http::CommonAuth auth = connection.MakeCommonAuth();
  ASSERT_TRUE(static_cast<bool>(auth.reauthenticate));
  EXPECT_THROW((void)auth.reauthenticate(), std::bad_function_call);
}

TEST_F(HttpConnectionTest, ARequestHandsItsAuthenticationToThePlatform) {
  Answer answer;
  answer.demands = 2;
  transport.Then(answer);
  int calls = 0;
  HttpConnection connection("http://plm.example/vt", [&calls](const char*) { return ++calls == 2; });
  TestRequest test;
  int status = 0;
  (void)connection.SendRequest(test.request, &status);
  EXPECT_THAT(transport.authResults(), ElementsAre(false, true));
}

TEST_F(HttpConnectionTest, ARefusedDemandIsNotRepeatedByTheLibrary) {
  transport.Then(401, "denied").Then(200);
  HttpConnection connection("http://plm.example/vt", [](const char*) { return true; });
  TestRequest test;
  int status = 0;
  EXPECT_EQ(connection.SendRequest(test.request, &status), ErrorCode::Done);
  EXPECT_EQ(status, 401);
  EXPECT_EQ(transport.unanswered(), 1U);
}

TEST_F(HttpConnectionTest, UploadProgressSeesTheBodyAlone) {
  transport.Then(200, "the answer");
  HttpConnection connection("http://plm.example/vt", {});
  const std::string body(1000, 'b');
  TestRequest test(&body);
  Calls up;
  int status = 0;
  EXPECT_EQ(connection.SendWithProgress(test.request, &status, Recording(up), {}), ErrorCode::Done);
  // The scripted server reads in pieces of 777 bytes.
  EXPECT_THAT(up, ElementsAre(std::pair(777U, 1000U), std::pair(1000U, 1000U)));
  EXPECT_EQ(transport.requests().front().body, body);
  EXPECT_EQ(test.sink.content, "the answer");
}

TEST_F(HttpConnectionTest, DownloadProgressSeesTheAnswerAlone) {
  const std::string answer(5000, 'a');
  transport.Then(200, answer);
  HttpConnection connection("http://plm.example/vt", {});
  const std::string body(1000, 'b');
  TestRequest test(&body);
  Calls down;
  int status = 0;
  EXPECT_EQ(connection.SendWithProgress(test.request, &status, {}, Recording(down)), ErrorCode::Done);
  // The scripted server writes in pieces of 4099 bytes.
  EXPECT_THAT(down, ElementsAre(std::pair(4099U, 5000U), std::pair(5000U, 5000U)));
  EXPECT_EQ(transport.requests().front().body, body);
  EXPECT_EQ(test.sink.content, answer);
}

TEST_F(HttpConnectionTest, BothProgressFunctionsSeeTheirOwnSide) {
  transport.Then(200, "four");
  HttpConnection connection("http://plm.example/vt", {});
  const std::string body = "sixsix";
  TestRequest test(&body);
  Calls up;
  Calls down;
  int status = 0;
  EXPECT_EQ(connection.SendWithProgress(test.request, &status, Recording(up), Recording(down)),
            ErrorCode::Done);
  EXPECT_THAT(up, ElementsAre(std::pair(6U, 6U)));
  EXPECT_THAT(down, ElementsAre(std::pair(4U, 4U)));
}

TEST_F(HttpConnectionTest, AnUploadFunctionWithoutABodySeesNothing) {
  transport.Then(200, "four");
  HttpConnection connection("http://plm.example/vt", {});
  TestRequest test;
  Calls up;
  int status = 0;
  EXPECT_EQ(connection.SendWithProgress(test.request, &status, Recording(up), {}), ErrorCode::Done);
  EXPECT_THAT(up, IsEmpty());
  EXPECT_EQ(transport.requests().front().body, std::nullopt);
  EXPECT_EQ(test.sink.content, "four");
}

TEST_F(HttpConnectionTest, WithoutProgressTheRequestGoesAsItIs) {
  transport.Then(201, "four");
  HttpConnection connection("http://plm.example/vt", {});
  const std::string body = "six";
  TestRequest test(&body);
  int status = 0;
  EXPECT_EQ(connection.SendWithProgress(test.request, &status, {}, {}), ErrorCode::Done);
  EXPECT_EQ(status, 201);
  EXPECT_EQ(transport.requests().front().body, "six");
  EXPECT_EQ(test.sink.content, "four");
}

TEST_F(HttpConnectionTest, ProgressLeavesTheCallersRequestAsItWas) {
  transport.Then(200, "four");
  HttpConnection connection("http://plm.example/vt", {});
  const std::string body = "six";
  TestRequest test(&body);
  auto* const source = test.request.body;
  Calls calls;
  int status = 0;
  (void)connection.SendWithProgress(test.request, &status, Recording(calls), Recording(calls));
  EXPECT_EQ(test.request.body, source);
  EXPECT_EQ(test.request.sink, &test.sink);
}

TEST_F(HttpConnectionTest, ProgressThatGivesFalseCancels) {
  transport.Then(200, std::string(10000, 'a'));
  HttpConnection connection("http://plm.example/vt", {});
  TestRequest test;
  int status = 0;
  const auto stop = [](std::size_t, std::size_t) { return false; };
  EXPECT_EQ(connection.SendWithProgress(test.request, &status, {}, stop), ErrorCode::Cancelled);
  EXPECT_EQ(test.sink.content.size(), 4099U);
}

}  // namespace
