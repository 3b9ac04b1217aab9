#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>

#include "base/result.h"
#include "connection/rest_request.h"
#include "connection/rest_stream.h"
#include "documents/storing/content_upload.h"
#include "documents/storing/multipart_file.h"
#include "tests/wire/documents/flow_fixture.h"

// Local files that cannot be read, change, or are larger than 32 bits can tell, and a disk without room.
namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

void Append(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary | std::ios::app) << text;
}

// Takes the place of a full disk, which takes a file system of its own and with it the rights of root: no
// file of this process grows beyond so many bytes. /dev/full won't do, as the staging file is the library's
// to name.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) {
    signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit small{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
  }
  ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before_{};
};

class BadFiles : public FlowTest {
 protected:
  Status Upload(const std::vector<std::string>& paths, du::http::ProgressFunction progress = {}) {
    return HandOver(UploadContents(Begin(connection), paths, std::move(progress)), contents);
  }
  void ThenUpload(int files) {
    ThenNonce();
    transport.Then(200, Ticket(files)).Then(200, Receipts(files));
  }
  [[nodiscard]] std::string SentBody() const { return transport.requests().back().body.value_or("no body"); }

  std::vector<UploadedContent> contents;
};

// Whoever runs this test, root too, cannot open a socket as a file.
TEST_F(BadFiles, ThatNobodyCanReadAreLeftOut) {
  const std::string path = Local("socket");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.copy(address.sun_path, sizeof address.sun_path - 1), sizeof address.sun_path - 1);
  const int bound = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(bind(bound, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ThenUpload(3);
  EXPECT_EQ(Upload({MakeLocal("a", "A"), path, MakeLocal("b", "B")}), Ok);
  EXPECT_EQ(SentBody(), Multipart("901:f1:901;902:f2:902;903:f3:903;", {{"f1", "a", "A"}, {"f3", "b", "B"}}));
  EXPECT_THAT(trace.lines(), IsEmpty());
  close(bound);
}

TEST_F(BadFiles, WithoutTheRightToReadThemAreLeftOut) {
  if (geteuid() == 0) GTEST_SKIP() << "root reads everything";
  const std::string path = MakeLocal("secret", "S");
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  ThenUpload(1);
  EXPECT_EQ(Upload({path}), Ok);
  EXPECT_EQ(SentBody(), Multipart("901:f1:901;", {}));
}

TEST_F(BadFiles, ThatGrowBehindTheirStagingAreSentAsTheyWere) {
  const std::string path = MakeLocal("log", "old");
  ThenUpload(1);
  std::size_t largest = 0;
  EXPECT_EQ(Upload({path},
                   [&](std::size_t done, std::size_t total) {
                     Append(path, "new");
                     EXPECT_LE(done, total);
                     largest = total;
                     return true;
                   }),
            Ok);
  EXPECT_EQ(SentBody(), Multipart("901:f1:901;", {{"f1", "log", "old"}}));
  EXPECT_EQ(largest, SentBody().size());
  EXPECT_TRUE(ReadFile(path).starts_with("oldnew"));
}

// How much of it is sent is a matter of moments; what is sent is a beginning of the file in a whole body.
TEST_F(BadFiles, ThatGrowDuringTheirStagingAreSentUpToSomewhere) {
  const std::string path = MakeLocal("log", std::string(8 * 1024 * 1024, 'o'));
  ThenUpload(1);
  std::atomic<bool> appending{false};
  std::thread writer([&] {
    for (int times = 0; times < 2000; ++times) {
      Append(path, std::string(1000, static_cast<char>('a' + times % 26)));
      appending = true;
    }
  });
  while (!appending) std::this_thread::yield();
  EXPECT_EQ(Upload({path}), Ok);
  writer.join();
  const std::string body = SentBody();
  const std::string frame = Multipart("901:f1:901;", {{"f1", "log", ""}});
  const std::string end = "\r\n--xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary--";
  const std::string head = frame.substr(0, frame.size() - end.size());
  ASSERT_GE(body.size(), frame.size() + 8 * 1024 * 1024);
  EXPECT_TRUE(body.starts_with(head));
  EXPECT_TRUE(body.ends_with(end));
  const std::string sent = body.substr(head.size(), body.size() - frame.size());
  EXPECT_TRUE(ReadFile(path).starts_with(sent)) << "something else than a beginning of the file";
}

TEST_F(BadFiles, ThatArriveByAPipeAreReadToTheirEnd) {
  const std::string path = Local("pipe");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const std::string rest(100'000, 'r');
  std::thread writer([&] {
    std::ofstream pipe(path, std::ios::binary);
    pipe << "first" << std::flush;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    pipe << rest;
  });
  ThenUpload(1);
  EXPECT_EQ(Upload({path}), Ok);
  writer.join();
  EXPECT_EQ(SentBody(), Multipart("901:f1:901;", {{"f1", "pipe", "first" + rest}}));
}

// Half of what a user has is never sent, even to a server that could tell.
TEST_F(BadFiles, OnAFullDiskAreNotSent) {
  const std::string path = MakeLocal("a", std::string(1000, 'A'));
  ThenNonce();
  transport.Then(200, Ticket(1));
  {
    const FullDisk disk(700);
    EXPECT_EQ(Upload({path}), ServerError);
  }
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(factoryPath)}));
  ASSERT_EQ(trace.lines().size(), 1u);
  EXPECT_EQ(trace.lines().front().type, 3);
  EXPECT_THAT(trace.lines().front().text, testing::StartsWith("Failed to write upload file "));
  EXPECT_THAT(Leftovers(), IsEmpty());
}

// A setting of the kernel claims a page and ends within it, like a file that is cut while it is read.
TEST_F(BadFiles, ThatEndBeforeTheLengthThatTheyHadAreNotSent) {
  ThenNonce();
  transport.Then(200, Ticket(2));
  EXPECT_EQ(Upload({MakeLocal("a", "A"), "/sys/devices/system/cpu/online"}), ServerError);
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(factoryPath)}));
  EXPECT_THAT(Leftovers(), IsEmpty());
}

TEST_F(BadFiles, ThatAreDirectoriesAreLeftOut) {
  ThenUpload(2);
  EXPECT_EQ(Upload({directory.path(), MakeLocal("b", "B")}), Ok);
  EXPECT_EQ(SentBody(), Multipart("901:f1:901;902:f2:902;", {{"f2", "b", "B"}}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(BadFiles, OnADiskWithoutRoomForTheTicketsBodyAskForNone) {
  const std::string path = MakeLocal("a", "A");
  {
    const FullDisk disk(0);
    EXPECT_EQ(Upload({path}), Refused);
  }
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

// One byte more than 32 bits can tell.
constexpr std::uint64_t beyond32Bits = (std::uint64_t{1} << 32) + 1;

// Reads a pipe to its end and keeps its last bytes alone.
struct Drain {
  std::uint64_t total = 0;
  std::string tail;

  void Run(const std::string& pipe) {
    const int end = open(pipe.c_str(), O_RDONLY | O_CLOEXEC);
    std::vector<char> piece(1024 * 1024);
    fcntl(end, F_SETPIPE_SZ, static_cast<int>(piece.size()));
    for (ssize_t count = 0; (count = read(end, piece.data(), piece.size())) > 0;) {
      const std::size_t kept = std::min<std::size_t>(static_cast<std::size_t>(count), 200);
      tail.append(piece.data() + count - kept, kept);
      tail.erase(0, tail.size() > 200 ? tail.size() - 200 : 0);
      total += static_cast<std::uint64_t>(count);
    }
    close(end);
  }
};

// Writes zero bytes into a pipe, and closes it.
void Flood(const std::string& pipe, std::uint64_t bytes) {
  const int end = open(pipe.c_str(), O_WRONLY | O_CLOEXEC);
  const std::vector<char> piece(1024 * 1024);
  fcntl(end, F_SETPIPE_SZ, static_cast<int>(piece.size()));
  while (bytes > 0) {
    const ssize_t count = write(end, piece.data(), std::min<std::uint64_t>(piece.size(), bytes));
    if (count <= 0) break;
    bytes -= static_cast<std::uint64_t>(count);
  }
  close(end);
}

// Both the local file and the staging file are pipes here: four gigabytes pass through and none is kept, on
// no disk and in no cache.
TEST_F(BadFiles, BeyondFourGigabytesAreStagedToTheirEnd) {
  const std::string large = Local("large");
  const std::string pipe = Local("pipe");
  ASSERT_EQ(mkfifo(large.c_str(), 0600), 0);
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  Drain drain;
  std::thread writer([&] { Flood(large, beyond32Bits); });
  std::thread reader([&] { drain.Run(pipe); });
  MultipartFile body(pipe);
  ASSERT_TRUE(body.IsOpen());
  body.AddFile(large.c_str(), "f1");
  EXPECT_TRUE(body.Finish());
  writer.join();
  reader.join();
  const std::string line = "\r\n--xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary";
  const std::string head = line +
                           "\r\nContent-Type: application/octet-stream\r\n"
                           "Content-Disposition: form-data; name=\"f1\"; filename=\"large\"\r\n\r\n";
  EXPECT_EQ(drain.total, head.size() + beyond32Bits + line.size() + 2);
  EXPECT_TRUE(drain.tail.ends_with(std::string(10, '\0') + line + "--"));
}

// What stands in for the staging file is a hole, which takes no room. Its length is told with the first
// piece.
TEST_F(BadFiles, BeyondFourGigabytesTellTheirWholeLength) {
  const std::string hole = MakeLocal("hole", "");
  ASSERT_EQ(truncate(hole.c_str(), static_cast<off_t>(beyond32Bits)), 0);
  std::size_t total = 0;
  const RestStream response(MakeRestRequest(connection->http(), du::http::Method::Post, "up", hole.c_str(),
                                            "multipart/form-data", nullptr),
                            [&](std::size_t, std::size_t all) {
                              total = all;
                              return false;
                            });
  EXPECT_EQ(response.errorCode(), du::http::ErrorCode::Cancelled);
  EXPECT_EQ(response.status(), -1);
  EXPECT_EQ(total, beyond32Bits);
}

// Claims to have delivered bytes that nobody looks at.
class ClaimedBytes final : public du::http::FileSource {
 public:
  std::optional<std::uint64_t> Size() override { return beyond32Bits; }
  du::http::ErrorCode Read(std::uint8_t*, std::size_t capacity, std::size_t* count) override {
    *count = std::min<std::uint64_t>(capacity, left_);
    left_ -= *count;
    return du::http::ErrorCode::Done;
  }
  bool Rewind() override { return false; }

 private:
  std::uint64_t left_ = beyond32Bits;
};

TEST_F(BadFiles, BeyondFourGigabytesTellTheirProgressInFull) {
  ClaimedBytes bytes;
  std::vector<std::size_t> told;
  du::http::ProgressSource source(bytes, [&](std::size_t done, std::size_t total) {
    told.push_back(done);
    EXPECT_EQ(total, beyond32Bits);
    return true;
  });
  constexpr std::size_t gigabyte = 1 << 30;
  std::size_t count = gigabyte;
  while (count > 0) ASSERT_EQ(source.Read(nullptr, gigabyte, &count), du::http::ErrorCode::Done);
  EXPECT_EQ(told,
            (std::vector<std::size_t>{gigabyte, 2 * gigabyte, 3 * gigabyte, 4 * gigabyte, beyond32Bits}));
}

// The host's no ends the upload before the server has said anything.
TEST_F(BadFiles, ThatTheHostCancelsLeaveNothing) {
  ThenNonce();
  transport.Then(200, Ticket(1));
  EXPECT_EQ(
      Upload({MakeLocal("a", std::string(100'000, 'a'))}, [](std::size_t, std::size_t) { return false; }),
      Refused);
  EXPECT_EQ(transport.lines().back(), uploadLine);
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to upload document with error -1 : \n")});
}

}  // namespace
}  // namespace vtdirect_test
