#include <gmock/gmock.h>

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
  std::string piece;
  std::vector<std::string> words;
  bool fails = true;
};

/// The program with an address space of 400 MiB, and a server that answers a quarter of it, or as much.
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
        Flood{"Numbers", "/documents/", "200 OK", "[", "0,", {"get", "//sim/?id=D1001", "-o", "-"}},
        Flood{"Objects",
              "/documents/",
              "200 OK",
              "[",
              R"({"id":"D1","name":"fork"},)",
              {"get", "//sim/?id=D1001", "-o", "-"}},
        Flood{"OneText", "/documents/", "200 OK", "{\"id\":\"", "x", {"get", "//sim/?id=D1001", "-o", "-"}},
        Flood{"Rows",
              "FolderContents",
              "200 OK",
              R"({"value":[)",
              R"({"Name":"a","ID":"1","CADName":"b"},)",
              {"ls", "//sim/Products/Trekking Bike/Folders/Frame/"}},
        Flood{"OneTextOfARow",
              "FolderContents",
              "200 OK",
              R"({"value":[{"Name":")",
              "x",
              {"ls", "//sim/Products/Trekking Bike/Folders/Frame/"}},
        // A service whose description is broken is done without: an older one answers.
        Flood{"Metadata", "$metadata", "200 OK", "<Schema>", "<a>", {"ls", "//sim/Products/"}, false},
        Flood{"Tokens",
              "$metadata",
              "200 OK",
              "<Schema>",
              "<a b=\"" + std::string(200 * 1024, 'x') + "\"/>",
              {"ls", "//sim/Products/"},
              false},
        Flood{"Redirects", "/streams/", "302 Found", "", "x", {"get", "//sim/?id=D1001", "-o", "-"}},
        Flood{"Demands", "/servlet/", "401 Who", "", "x", {"get", "//sim/?id=D1001", "-o", "-"}},
        Flood{"Receipts",
              "/creationFactory",
              "200 OK",
              R"({"fileNames":[)",
              R"("a",)",
              {"put", "file", "//sim/Products/Trekking Bike/Folders/Frame/new.lxz"}},
        Flood{"Information", "/OrvetGW", "200 OK", "", "ServerMajorVersion:12\n", {"check", "sim"}},
        Flood{"Refusals", "/servlet/", "500 No", "", "x", {"get", "//sim/?id=D1001", "-o", "-"}},
        Flood{"Contents", "/streams/", "200 OK", "", "x", {"get", "//sim/?id=D1001", "-o", "-"}}),
    [](const auto& row) { return row.param.name; });

TEST_P(LittleMemory, EndsInOrder) {
  for (const std::size_t size : {100, 400}) {
    ProcessResult result;
    {
      Meddler meddler([size](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
        if (request.target.find(GetParam().target) == std::string::npos) return peer.Send(forward());
        SendFlood(peer, size * mebibyte);
      });
      environment_["http_proxy"] = meddler.Url();
      WriteFile(Here("file"), "content");
      result = RunWithLittle(GetParam().words);
      environment_.erase("http_proxy");
    }
    RecordProperty("peakMebibytes" + std::to_string(size), static_cast<int>(result.peakKilobytes / 1024));
    EXPECT_EQ(result.status > 0, GetParam().fails) << result.err;
    EXPECT_GE(result.status, 0) << result.err;
    EXPECT_LT(result.status, 100) << result.err;
    EXPECT_THAT(TemporaryNames(), IsEmpty());
  }
}

}  // namespace vtdirect_test
