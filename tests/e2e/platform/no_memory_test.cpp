// What a request comes to when there is no memory for it. curl's own memory is curl's affair; this is about what is
// allocated around it, also in the functions that curl calls back.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <new>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/platform/tls_front.h"
#include "tests/e2e/platform/tls_server.h"
#include "tests/support/temporary_directory.h"

namespace {

/// How many more allocations of this thread succeed; without a value all do.
struct Allowance {
  bool counts = false;
  long left = 0;
};
thread_local Allowance allowance;

}  // namespace

void* operator new(std::size_t size) {
  if (allowance.counts && --allowance.left < 0) throw std::bad_alloc();
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace {

using du::http::ErrorCode;
using vtdirect_test::Asking;
using vtdirect_test::Fetch;
using vtdirect_test::Fetched;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

std::size_t OpenDescriptors() {
  const std::filesystem::directory_iterator open("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(open), end(open)));
}

class NoMemory : public testing::Test {
 protected:
  NoMemory() { vtdirect_test::UseShortLimits(); }

  /// One exchange of which all allocations from the one with this number on fail.
  /// @return whether it was whole, for which there was memory enough
  static bool FetchWith(const std::string& url, const Asking& asking, long allocations) {
    // A login that is set again ends the session, so that each exchange makes all that belongs to one.
    du::http::SetPasswordCredentials(url, "paula", "s3cret");
    const auto connection = vtdirect_test::Connect(url);
    bool whole = false;
    try {
      allowance = {true, allocations};
      const Fetched fetched = Fetch(*connection, asking);
      whole = fetched.code == ErrorCode::Done && fetched.status == 200 && allowance.left >= 0;
    } catch (const std::bad_alloc&) {
    }
    allowance = {};
    return whole;
  }
  /// With ever more memory, until there is enough; and in between the transport works as ever.
  static void ExpectOrder(const std::string& url, const Asking& asking) {
    du::http::SetPasswordCredentials(url, "paula", "s3cret");
    EXPECT_EQ(Fetch(*vtdirect_test::Connect(url), asking).body, "right");
    const std::size_t before = OpenDescriptors();
    constexpr long farTooMany = 3000;
    long allocations = 0;
    while (allocations < farTooMany && !FetchWith(url, asking, allocations)) {
      ++allocations;
      if (allocations % 16 != 0) continue;
      EXPECT_EQ(Fetch(*vtdirect_test::Connect(url), asking).body, "right") << allocations;
    }
    EXPECT_GT(allocations, 10);
    RecordProperty("allocations", static_cast<int>(allocations));
    EXPECT_LT(allocations, farTooMany);
    EXPECT_EQ(Fetch(*vtdirect_test::Connect(url), asking).body, "right");
    EXPECT_LE(OpenDescriptors(), before + 2) << "no connection is left behind";
  }
};

TEST_F(NoMemory, EndsARequestInOrder) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    if (request.target == "/") return peer.Answer(302, "there", "Location: /there\r\nSet-Cookie: a=b\r\n");
    peer.Answer(200, "right", "Server: of a name that is longer than a short text may be\r\n");
  });
  Asking asking;
  asking.headers = "Accept: application/json\r\nX-Long: a line that is longer than a short text may be";
  ExpectOrder(server.Url(), asking);
}

TEST_F(NoMemory, EndsALoginInOrder) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    if (request.Header("Authorization") != "(none)") return peer.Answer(200, "right");
    peer.Answer(401, "who?",
                "WWW-Authenticate: SomethingOfALongName a=b\r\nWWW-Authenticate: Digest realm=\"vault\", "
                "nonce=\"n\"\r\n");
  });
  const std::string body = "what is posted";
  Asking asking;
  asking.method = du::http::Method::Post;
  asking.body = &body;
  ExpectOrder(server.Url(), asking);
}

TEST_F(NoMemory, EndsARequestOverTlsInOrder) {
  if (!vtdirect_test::HaveOpenSsl()) GTEST_SKIP() << "no openssl program";
  const vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::Trust(vtdirect_test::MakeCertificate(directory.path(), "front", "IP:127.0.0.1"));
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Answer(200, "right", "Connection: close\r\n");
    peer.Close();
  });
  const vtdirect_test::TlsFront front(directory.path(), "front", server.port());
  ExpectOrder(front.Url(), {});
}

}  // namespace
