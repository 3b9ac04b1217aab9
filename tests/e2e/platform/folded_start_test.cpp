// Which lines count as the start of a head that continues nothing.

#include "platform_default/folded_start.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/e2e/platform/scripted_server.h"

namespace {

using vtdirect::platform::FoldedStart;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

std::size_t TakeAll(char*, std::size_t size, std::size_t count, void*) {
  return size * count;
}

/// Whether a line without a beginning is met in an answer that starts so.
bool IsMetIn(const std::string& head) {
  ScriptedServer server([&head](Peer& peer, WireRequest&) {
    peer.Send(head + "\r\nContent-Length: 0\r\n\r\n");
    peer.Close();
  });
  // Of its own for each answer: only a second one on a handle would find memory that is free.
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(), &curl_easy_cleanup);
  FoldedStart start;
  start.Attach(handle.get());
  curl_easy_setopt(handle.get(), CURLOPT_URL, server.Url().c_str());
  curl_easy_setopt(handle.get(), CURLOPT_PROXY, "");
  curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, &TakeAll);
  curl_easy_perform(handle.get());
  return start.Met();
}

TEST(FoldedStart, IsALineThatContinuesAStatusLine) {
  EXPECT_TRUE(IsMetIn("HTTP/1.1 200 OK\r\n X: y"));
  EXPECT_TRUE(IsMetIn("HTTP/1.1 200 OK\r\n\tX: y"));
  EXPECT_TRUE(IsMetIn("HTTP/1.1 103 Early Hints\r\nA: b\r\n\r\nHTTP/1.1 200 OK\r\n X: y"));
}

// curl takes it for a status line all the same.
TEST(FoldedStart, ContinuesAStatusLineInSmallLettersToo) {
  EXPECT_TRUE(IsMetIn("HtTP/1.1 200 OK\r\n X: y"));
  EXPECT_TRUE(IsMetIn("http/1.1 200 OK\r\n\tX: y"));
}

TEST(FoldedStart, IsNoLineThatContinuesAHeaderLine) {
  EXPECT_FALSE(IsMetIn("HTTP/1.1 200 OK\r\nA: b\r\n X: y"));
  EXPECT_FALSE(IsMetIn("HTTP/1.1 200 OK\r\nA: b\r\n X: y\r\n Z: y"));
  EXPECT_FALSE(IsMetIn("HTTP/1.1 200 OK\r\nA: b"));
}

}  // namespace
