#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <set>
#include <thread>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/meeting.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/platform/sign_on.h"
#include "tests/e2e/platform/tls_front.h"
#include "tests/e2e/platform/tls_server.h"
#include "tests/support/temporary_directory.h"

namespace {

using du::http::ErrorCode;
using du::http::Method;
using vtdirect_test::Asking;
using vtdirect_test::Connect;
using vtdirect_test::Fetch;
using vtdirect_test::Fetched;
using vtdirect_test::FetchFrom;
using vtdirect_test::Meeting;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

/// Many threads of a host on one origin.
class Threads : public testing::Test {
 protected:
  Threads() {
    vtdirect_test::UseShortLimits();
    du::http::TransportSettings settings = du::http::GetTransportSettings();
    // Servers hold answers back here until the test says so, and the machine may be busy.
    settings.connectTimeoutMilliseconds = 20'000;
    settings.stallTimeoutSeconds = 20;
    settings.firstByteTimeoutSeconds = 20;
    settings.firstByteAfterBodyTimeoutSeconds = 20;
    du::http::SetTransportSettings(settings);
  }

  static void SetExchangesAtOnce(int count) {
    du::http::TransportSettings settings = du::http::GetTransportSettings();
    settings.exchangesAtOnce = count;
    du::http::SetTransportSettings(settings);
  }

  /// Runs a function on several threads at once, with the number of each.
  static std::vector<std::thread> Start(int count, const std::function<void(int)>& work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) threads.emplace_back(work, i);
    return threads;
  }
  static void Join(std::vector<std::thread> threads) {
    for (std::thread& thread : threads) thread.join();
  }
  /// A while in which threads that are not held back would get on. A test that passes does so however long it
  /// is.
  static void GiveAChance() { std::this_thread::sleep_for(std::chrono::milliseconds(100)); }
};

TEST_F(Threads, ShareOneConnectionObjectWithoutAFailure) {
  ScriptedServer server([](Peer& peer, WireRequest& request) { peer.Answer(200, request.target); });
  const auto connection = Connect(server.Url());
  std::atomic<int> good{0};
  Join(Start(8, [&](int number) {
    for (int i = 0; i < 50; ++i) {
      Asking asking;
      asking.uri = "/" + std::to_string(number) + "/" + std::to_string(i);
      good += Fetch(*connection, asking).body == asking.uri ? 1 : 0;
    }
  }));
  EXPECT_EQ(good, 400);
  EXPECT_LE(server.connections(), 8);
}

TEST_F(Threads, ShareTheSessionThatTheFirstOfThemWasGiven) {
  Meeting first;
  std::atomic<int> given{0};
  ScriptedServer server([&](Peer& peer, WireRequest& request) {
    if (request.Header("Cookie") != "(none)") return peer.Answer(200, "");
    first.Attend();
    peer.Answer(200, "", "Set-Cookie: session=" + std::to_string(++given) + "; Path=/\r\n");
  });
  std::atomic<int> good{0};
  auto threads = Start(8, [&](int) { good += FetchFrom(server.Url()).status == 200 ? 1 : 0; });
  EXPECT_TRUE(first.WaitFor(1));
  GiveAChance();
  EXPECT_EQ(first.arrived(), 1);
  first.Open();
  Join(std::move(threads));
  EXPECT_EQ(good, 8);
  EXPECT_EQ(given, 1);
}

TEST_F(Threads, DoNotWaitForEachOtherOnceTheSessionIsThere) {
  Meeting all;
  ScriptedServer server([&](Peer& peer, WireRequest& request) {
    if (request.target == "/all") all.Attend();
    peer.Answer(200, "");
  });
  FetchFrom(server.Url());
  Asking asking;
  asking.uri = "/all";
  auto threads = Start(8, [&](int) { FetchFrom(server.Url(), asking); });
  EXPECT_TRUE(all.WaitFor(8));
  all.Open();
  Join(std::move(threads));
}

TEST_F(Threads, GoFirstOneAfterTheOtherUntilOneIsAnswered) {
  std::atomic<int> atOnce{0};
  std::atomic<int> most{0};
  std::atomic<int> asked{0};
  ScriptedServer server([&](Peer& peer, WireRequest&) {
    const int number = ++asked;
    if (number <= 3) {
      most = std::max<int>(most, ++atOnce);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      --atOnce;
      return peer.Close();
    }
    peer.Answer(200, "");
  });
  std::atomic<int> good{0};
  Join(Start(6, [&](int) { good += FetchFrom(server.Url()).code == ErrorCode::Done ? 1 : 0; }));
  EXPECT_EQ(good, 3);
  EXPECT_EQ(most, 1);
}

TEST_F(Threads, WaitForTheHeadOfTheFirstAnswerAndNotForItsBody) {
  Meeting others;
  ScriptedServer server([&](Peer& peer, WireRequest& request) {
    if (request.target != "/large") return peer.Answer(200, "small");
    peer.Send("HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\nfour");
    others.Attend();
    peer.Send("more");
  });
  Asking large;
  large.uri = "/large";
  auto thread = Start(1, [&](int) { EXPECT_EQ(FetchFrom(server.Url(), large).body, "fourmore"); });
  EXPECT_TRUE(others.WaitFor(1));
  EXPECT_EQ(FetchFrom(server.Url()).body, "small");
  others.Open();
  Join(std::move(thread));
}

TEST_F(Threads, AskTheHostForAPasswordOnce) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    if (request.Header("Authorization") == "Bearer token") return peer.Answer(200, "in");
    peer.Answer(401, "", "WWW-Authenticate: Bearer\r\n");
  });
  Meeting asked;
  std::atomic<int> good{0};
  auto threads = Start(8, [&](int) {
    Asking asking;
    asking.reauthenticate = [&] {
      asked.Attend();
      du::http::SetBearerToken(server.Url(), "token");
      return true;
    };
    good += FetchFrom(server.Url(), asking).body == "in" ? 1 : 0;
  });
  EXPECT_TRUE(asked.WaitFor(1));
  GiveAChance();
  asked.Open();
  Join(std::move(threads));
  EXPECT_EQ(asked.arrived(), 1);
  EXPECT_EQ(good, 8);
}

TEST_F(Threads, TakeUpCredentialsThatAnotherOneHasSet) {
  // Both are refused at the same time, with the session that they share. One is asked and sets a token: the
  // other one tries that before it asks again.
  Meeting refused;
  ScriptedServer server([&](Peer& peer, WireRequest& request) {
    if (request.target == "/open") return peer.Answer(200, "");
    if (request.Header("Authorization") == "Bearer token") return peer.Answer(200, "in");
    if (request.target == "/slow") refused.Attend();
    peer.Answer(401, "", "WWW-Authenticate: Bearer\r\n");
  });
  Asking asking;
  asking.uri = "/open";
  FetchFrom(server.Url(), asking);
  std::atomic<int> asked{0};
  asking.uri = "/slow";
  asking.reauthenticate = [&asked] { return ++asked > 100; };
  std::string body;
  auto thread = Start(1, [&](int) { body = FetchFrom(server.Url(), asking).body; });
  EXPECT_TRUE(refused.WaitFor(1));
  du::http::SetBearerToken(server.Url(), "token");
  refused.Open();
  Join(std::move(thread));
  EXPECT_EQ(body, "in");
  EXPECT_EQ(asked, 0);
}

TEST_F(Threads, GoAloneAgainAfterTheCredentialsHaveChanged) {
  Meeting first;
  ScriptedServer server([&](Peer& peer, WireRequest& request) {
    if (request.Header("Authorization") == "(none)") return peer.Answer(200, "");
    if (request.Header("Cookie") == "(none)") first.Attend();
    peer.Answer(200, "", "Set-Cookie: session=new; Path=/\r\n");
  });
  FetchFrom(server.Url());
  du::http::SetBearerToken(server.Url(), "token");
  auto threads = Start(4, [&](int) { EXPECT_EQ(FetchFrom(server.Url()).status, 200); });
  EXPECT_TRUE(first.WaitFor(1));
  GiveAChance();
  EXPECT_EQ(first.arrived(), 1);
  first.Open();
  Join(std::move(threads));
  EXPECT_EQ(first.arrived(), 1);
}

TEST_F(Threads, WaitForAPlaceBeyondTheBound) {
  SetExchangesAtOnce(3);
  Meeting inside;
  ScriptedServer server([&](Peer& peer, WireRequest& request) {
    if (request.target == "/inside") inside.Attend();
    peer.Answer(200, "");
  });
  FetchFrom(server.Url());
  Asking asking;
  asking.uri = "/inside";
  std::atomic<int> good{0};
  auto threads = Start(7, [&](int) { good += FetchFrom(server.Url(), asking).status == 200 ? 1 : 0; });
  EXPECT_TRUE(inside.WaitFor(3));
  GiveAChance();
  EXPECT_EQ(inside.arrived(), 3);
  inside.Open();
  Join(std::move(threads));
  EXPECT_EQ(good, 7);
  EXPECT_LE(server.connections(), 3);
}

TEST_F(Threads, NeverWaitInsideACallback) {
  // Each transfer's progress function asks the same server, while every place is taken by such a transfer.
  SetExchangesAtOnce(2);
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    peer.Answer(200, request.target == "/large" ? std::string(2'000'000, 'x') : "small");
  });
  FetchFrom(server.Url());
  Meeting inside;
  std::atomic<int> good{0};
  auto threads = Start(4, [&](int) {
    const auto connection = Connect(server.Url());
    bool asked = false;
    du::http::ProgressSink sink(
        [&](std::size_t, std::size_t) {
          if (std::exchange(asked, true)) return true;
          inside.Attend();
          good += Fetch(*connection).body == "small" ? 1 : 0;
          return true;
        },
        nullptr);
    du::http::BufferFileSource headers(nullptr, 0);
    const du::http::Request request{Method::Get, "/large", &headers, nullptr, nullptr, &sink};
    int status = 0;
    EXPECT_EQ(du::http::DoRequestWithCommonAuth(*connection, {nullptr, {}}, request, &status),
              ErrorCode::Done);
  });
  EXPECT_TRUE(inside.WaitFor(2));
  inside.Open();
  Join(std::move(threads));
  EXPECT_EQ(good, 4);
}

TEST_F(Threads, NeverWaitInsideTheFirstExchange) {
  // A host may log in by a request of its own, while its first request waits for the login.
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    peer.Answer(200, "");
  });
  const auto connection = Connect(server.Url());
  const std::string content(2'000'000, 'u');
  du::http::BufferFileSource inner(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
  int good = 0;
  du::http::ProgressSource body(inner, [&](std::size_t, std::size_t) {
    good += Fetch(*connection).status == 200 ? 1 : 0;
    return true;
  });
  du::http::BufferFileSource headers(nullptr, 0);
  const du::http::Request request{Method::Post, "/", &headers, &body, nullptr, nullptr};
  int status = 0;
  EXPECT_EQ(du::http::DoRequestWithCommonAuth(*connection, {nullptr, {}}, request, &status), ErrorCode::Done);
  EXPECT_GT(good, 0);
}

TEST_F(Threads, WorkOnWhileCredentialsAndSettingsChange) {
  ScriptedServer server(
      [](Peer& peer, WireRequest&) { peer.Answer(200, "fine", "Set-Cookie: session=s; Path=/\r\n"); });
  std::atomic<bool> over{false};
  std::thread changer([&] {
    for (int i = 0; !over; ++i) {
      du::http::TransportSettings settings = du::http::GetTransportSettings();
      settings.idleConnections = i % 4;
      settings.exchangesAtOnce = 1 + i % 5;
      settings.certificateAuthorityFile = i % 2 == 0 ? "" : "/nowhere";
      du::http::SetTransportSettings(settings);
      if (i % 3 == 0) du::http::SetBearerToken(server.Url(), "t" + std::to_string(i));
      if (i % 7 == 0) du::http::ClearCredentials(server.Url());
      if (i % 11 == 0) du::http::ClearAllCredentials();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  std::atomic<int> good{0};
  Join(Start(6, [&](int number) {
    const auto connection = Connect(server.Url());
    for (int i = 0; i < 60; ++i) {
      good += (number % 2 == 0 ? Fetch(*connection) : FetchFrom(server.Url())).body == "fine" ? 1 : 0;
    }
  }));
  over = true;
  changer.join();
  EXPECT_EQ(good, 360);
}

TEST_F(Threads, ShareOneSingleSignOn) {
  const vtdirect_test::SignOnOfADomain domain;
  std::atomic<int> good{0};
  Join(Start(6, [&](int) {
    for (int i = 0; i < 10; ++i) good += FetchFrom(domain.Url()).body == "in" ? 1 : 0;
  }));
  EXPECT_EQ(good, 60);
  EXPECT_EQ(domain.logins(), 1);
}

TEST_F(Threads, SignOnAnewWhileCredentialsChange) {
  const vtdirect_test::SignOnOfADomain domain;
  std::atomic<bool> over{false};
  std::thread changer([&] {
    for (int i = 0; !over; ++i) {
      du::http::SetBearerToken(i % 2 == 0 ? domain.Url() : domain.LoginUrl(), "t" + std::to_string(i));
      if (i % 5 == 0) du::http::ClearAllCredentials();
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  });
  // A session that ends while its login is under way costs another login, and so may the next one.
  std::atomic<int> good{0};
  Join(Start(6, [&](int) {
    for (int i = 0; i < 20; ++i) good += FetchFrom(domain.Url()).code == ErrorCode::Done ? 1 : 0;
  }));
  over = true;
  changer.join();
  EXPECT_EQ(good, 120);
  EXPECT_EQ(FetchFrom(domain.Url()).body, "in");
}

TEST_F(Threads, WorkOnWhileClientCertificatesAndProxiesChange) {
  if (!vtdirect_test::HaveOpenSsl())
    GTEST_SKIP() << "the openssl program, which makes certificates, is missing";
  const vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::Trust(vtdirect_test::MakeCertificate(directory.path(), "server", "IP:127.0.0.1"));
  const std::string client = vtdirect_test::MakeCertificate(directory.path(), "client", "DNS:anna.example");
  const std::string locked = vtdirect_test::MakeLockedKey(directory.path(), "client", "s3cret");
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "let in"); });
  const vtdirect_test::TlsFront front(directory.path(), "server", server.port(), {client});
  std::atomic<int> asked{0};
  const du::http::ClientCertificate certificate{client, locked, [&asked](const std::string&) {
                                                  ++asked;
                                                  return std::optional<std::string>("s3cret");
                                                }};
  du::http::SetClientCertificateForAll(certificate);
  std::atomic<bool> over{false};
  std::thread changer([&] {
    for (int i = 0; !over; ++i) {
      du::http::TransportSettings settings = du::http::GetTransportSettings();
      settings.proxy = i % 2 == 0 ? std::optional<std::string>("") : std::nullopt;
      if (i % 5 == 0) du::http::SetTransportSettings(settings);
      if (i % 3 == 0) du::http::SetClientCertificate(front.Url(), certificate);
      if (i % 4 == 0) du::http::ClearClientCertificate(front.Url());
      if (i % 7 == 0) du::http::SetProxyCredentials("paula", std::to_string(i));
      if (i % 11 == 0) du::http::SetNegotiateCredentials("https://vantry.invalid/");
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  });
  std::atomic<int> good{0};
  Join(Start(6, [&](int) {
    for (int i = 0; i < 20; ++i) good += FetchFrom(front.Url()).body == "let in" ? 1 : 0;
  }));
  over = true;
  changer.join();
  EXPECT_EQ(good, 120);
  EXPECT_GE(asked, 1);
}

TEST_F(Threads, ShareCertificatesAndTlsSessions) {
  if (!vtdirect_test::HaveOpenSsl())
    GTEST_SKIP() << "the openssl program, which makes certificates, is missing";
  const vtdirect_test::TemporaryDirectory directory;
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.certificateAuthorityFile =
      vtdirect_test::MakeCertificate(directory.path(), "server", "IP:127.0.0.1");
  settings.idleConnections = 0;  // each exchange shakes hands
  du::http::SetTransportSettings(settings);
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "secure"); });
  const vtdirect_test::TlsFront front(directory.path(), "server", server.port());
  std::atomic<int> good{0};
  Join(Start(8, [&](int) {
    for (int i = 0; i < 10; ++i) good += FetchFrom(front.Url()).body == "secure" ? 1 : 0;
  }));
  EXPECT_EQ(good, 80);
  EXPECT_EQ(front.handshakes(), 80);
  // Each came with a new handle, which has no TLS session of its own.
  EXPECT_GT(front.resumed(), 0);
}

}  // namespace
