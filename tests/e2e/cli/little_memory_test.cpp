#include <gmock/gmock.h>

#include <chrono>

#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/cli/vtdirect_fixture.h"
#include "tests/support/resident_memory.h"

using testing::IsEmpty;

namespace vtdirect_test {

/// What a server answers to every request of one kind, without an end in sight.
struct Flood {
  const char* name;
  const char* target;  ///< a part of the targets that are answered so
  const char* head;
  const char* begin;
  const char* piece;
  std::vector<std::string> words;
};

/// The program with an address space of 400 MiB, and a server that answers 100 and 400 MiB.
class LittleMemory : public VtDirect, public testing::WithParamInterface<Flood> {
 protected:
  void SetUp() override {
    if (!memoryIsMeasured) GTEST_SKIP() << "the address space belongs to the sanitizer";
    Serve();
  }

  ProcessResult RunWithLittle(const std::vector<std::string>& words) {
    std::vector<std::string> all = {"/bin/sh",        "-c",       "ulimit -v 409600; exec \"$@\"", "sh",
                                    VTDIRECT_PROGRAM, "--server", "sim=" + server().url()};
    all.insert(all.end(), words.begin(), words.end());
    return Process(all, ProcessOptions{environment_, Here(""), "/dev/null", 0}).Wait();
  }

  static void SendFlood(Peer& peer, std::size_t size) {
    std::string piece;
    while (piece.size() < mebibyte) piece += GetParam().piece;
    peer.Send("HTTP/1.1 " + std::string(GetParam().head) + "\r\n\r\n" + GetParam().begin);
    for (std::size_t sent = 0; sent < size && !peer.closed(); sent += piece.size()) peer.Send(piece);
  }
};

INSTANTIATE_TEST_SUITE_P(
    Of, LittleMemory,
    testing::Values(
        Flood{"Numbers", "/documents/", "200 OK", "[", "0,", {"info", "//sim/?id=D1001"}},
        Flood{"Objects",
              "/documents/",
              "200 OK",
              "[",
              R"({"id":"D1","name":"fork"},)",
              {"info", "//sim/?id=D1001"}},
        Flood{"OneText", "/documents/", "200 OK", "{\"id\":\"", "x", {"info", "//sim/?id=D1001"}},
        Flood{"Rows",
              "/servlet/",
              "200 OK",
              R"({"value":[)",
              R"({"Name":"a","ID":"1","CADName":"b"},)",
              {"ls", "//sim/Products/"}},
        Flood{
            "OneTextOfARow", "/servlet/", "200 OK", R"({"value":[{"Name":")", "x", {"ls", "//sim/Products/"}},
        Flood{"Metadata", "$metadata", "200 OK", "<Schema>", "<a>", {"ls", "//sim/Products/"}},
        Flood{"Information", "/OrvetGW", "200 OK", "", "ServerMajorVersion:12\n", {"check", "sim"}},
        Flood{"Refusals", "/servlet/", "500 No", "", "x", {"info", "//sim/?id=D1001"}},
        Flood{"Contents", "/streams/", "200 OK", "", "x", {"get", "//sim/?id=D1001", "-o", "-"}}),
    [](const auto& row) { return row.param.name; });

TEST_P(LittleMemory, EndsInAFailureAndInNoCrash) {
  for (const std::size_t size : {100 * mebibyte, 400 * mebibyte}) {
    ProcessResult result;
    const auto begin = std::chrono::steady_clock::now();
    {
      Meddler meddler([size](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
        if (request.target.find(GetParam().target) == std::string::npos) return peer.Send(forward());
        SendFlood(peer, size);
      });
      environment_["http_proxy"] = meddler.Url();
      result = RunWithLittle(GetParam().words);
      environment_.erase("http_proxy");
    }
    const auto time = std::chrono::steady_clock::now() - begin;
    RecordProperty("milliseconds" + std::to_string(size / mebibyte),
                   static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(time).count()));
    RecordProperty("peakKilobytes" + std::to_string(size / mebibyte), static_cast<int>(result.peakKilobytes));
    EXPECT_GT(result.status, 0) << result.err;
    EXPECT_LT(result.status, 100) << result.err;
    EXPECT_NE(result.err, "");
    EXPECT_THAT(TemporaryNames(), IsEmpty());
  }
}

}  // namespace vtdirect_test
