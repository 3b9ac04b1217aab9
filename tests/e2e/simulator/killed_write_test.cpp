// What a server that is killed in the middle of its writes holds at its next start.
#include <signal.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <thread>

#include "raw_client.h"
#include "simulator_process.h"

namespace vantry_sim {
namespace {

const std::string kDocuments = "/servlet/rest/v1/dkm/documents";

/// The text or number behind the first member of this name, from `at` on.
std::string Member(const std::string& json, const std::string& name, std::size_t at = 0) {
  const auto key = json.find("\"" + name + "\":", at);
  if (key == std::string::npos) return {};
  auto begin = key + name.size() + 3;
  while (begin < json.size() && (json[begin] == '"' || json[begin] == '[')) ++begin;
  return json.substr(begin, json.find_first_of("\",]}", begin) - begin);
}

/// The bytes of the n-th document, another number of them for each.
std::string BytesOf(int number) {
  return std::string(static_cast<std::size_t>(1000 + 37 * number), static_cast<char>('a' + number % 26));
}

std::string NameOf(int number) {
  return "killed" + std::to_string(number) + ".lxz";
}

/// Makes documents one after the other until the server is gone.
class Writer {
 public:
  explicit Writer(int port) : main_(port) {
    const auto csrf = main_.Get("/servlet/rest/security/csrf");
    nonce_ = "X-Zvk-Nonce: " + Member(csrf.body, "nonce") + "\r\n";
    json_ = nonce_ + "Content-Type: application/json\r\n";
  }

  /// @return the new document's id; empty when the server didn't say that it was made
  std::string Make(int number) {
    const auto ticket =
        main_.Post("/servlet/rest/v1/content/creationFactory", json_, "{\n\"noOfFiles\":1\n}");
    if (ticket.status != 200 || !ticket.complete) return {};
    const std::string receipt = Upload(ticket.body, BytesOf(number));
    if (receipt.empty()) return {};
    const auto made = main_.Post(
        kDocuments, json_,
        R"({"createInstructions":[{"epmDocument":{"epmMaster":{"cadName":")" + NameOf(number) +
            R"("},"cadContent":{"contentSections":[{"category":"FENLET","fileName":"{$CAD_NAME}","streamId":)" +
            Member(ticket.body, "streamIds") + R"(,"uploadInfo":{"encodedCCD":")" + receipt +
            R"("}}]},"authAppVersion":"310","ndVersion":"J-01"}}],"contextId":"OR:vn.product.Product:101"})");
    return made.status == 200 && made.complete ? Member(made.body, "id") : std::string();
  }

 private:
  std::string Upload(const std::string& ticket, const std::string& bytes) {
    const std::string url = Member(ticket, "uploadUrl");
    const std::string stream = Member(ticket, "streamIds");
    const std::string name = Member(ticket, "fileNames");
    const std::string line = "\r\n--B\r\nContent-Disposition: form-data; name=\"";
    const std::string body = line + "Master_URL\"\r\n\r\n" + Member(ticket, "masterUrl") + line +
                             "CacheDescriptor_array\"\r\n\r\n" + stream + ":" + name + ":" + stream + ";" +
                             line + name + "\"; filename=\"x\"\r\n\r\n" + bytes + "\r\n--B--";
    try {
      RawClient uploads(std::atoi(url.substr(url.find(':', 7) + 1).c_str()));
      const auto answer = uploads.Post(url.substr(url.find('/', 7)),
                                       nonce_ + "Content-Type: multipart/form-data; boundary=B\r\n", body);
      return answer.status == 200 && answer.complete ? Member(answer.body, "encodedInfo") : std::string();
    } catch (const std::exception&) {
      return {};
    }
  }

  RawClient main_;
  std::string nonce_;
  std::string json_;
};

/// Everything that the server shows of a document must be there in full.
void ExpectWhole(RawClient& client, const std::string& id, int number) {
  const auto document = client.Get(kDocuments + "/" + id);
  ASSERT_EQ(document.status, 200) << id;
  EXPECT_EQ(Member(document.body, "cadName"), NameOf(number));
  const std::string stream = Member(document.body, "streamId");
  const auto content = client.Get("/servlet/rest/v1/content/streams/" + stream + "/x");
  EXPECT_EQ(content.status, 200) << id;
  EXPECT_EQ(content.body, BytesOf(number)) << id;
}

TEST_F(SimulatorProcess, KilledBetweenItsWritesKeepsAllThatItHasAnsweredAndNothingHalf) {
  std::map<int, std::string> answered;
  int number = 0;
  for (const int milliseconds : {3, 10, 25, 40, 70, 110, 160, 230}) {
    Process process(Arguments());
    const int port = process.ReadyPort();
    ASSERT_GT(port, 0);
    Writer writer(port);
    std::thread killer([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
      process.Signal(SIGKILL);
    });
    for (;; ++number) {
      const std::string id = writer.Make(number);
      if (id.empty()) break;
      answered[number] = id;
    }
    ++number;  // the name of the unanswered one may be taken or not
    killer.join();
    EXPECT_EQ(process.Wait(), 1000 + SIGKILL);
  }
  EXPECT_GT(answered.size(), 5U);

  Process process(Arguments());
  RawClient client(process.ReadyPort());
  for (const auto& [made, id] : answered) ExpectWhole(client, id, made);
  for (int made = 0; made < number; ++made) {
    const auto found = client.Get("/servlet/rest/objects?typeId=vn.epm.EPMDocument&$filter=CADName%20eq%20'" +
                                  NameOf(made) + "'");
    ASSERT_EQ(found.status, 200);
    if (const std::string id = Member(found.body, "id"); !id.empty()) ExpectWhole(client, id, made);
  }
  for (const auto& entry : std::filesystem::directory_iterator(directory_ / "data/content")) {
    EXPECT_NE(entry.path().filename().string().rfind("incoming-", 0), 0U) << entry.path();
  }
}

TEST_F(SimulatorProcess, LongUploadIsNotHeldInMemory) {
  Process process(Arguments());
  const int port = process.ReadyPort();
  ASSERT_GT(port, 0);
  RawClient client(port);
  const std::string nonce =
      "X-Zvk-Nonce: " + Member(client.Get("/servlet/rest/security/csrf").body, "nonce") + "\r\n";
  const auto ticket = client.Post("/servlet/rest/v1/content/creationFactory",
                                  nonce + "Content-Type: application/json\r\n", "{\"noOfFiles\":1}");
  const std::string url = Member(ticket.body, "uploadUrl");
  const std::string stream = Member(ticket.body, "streamIds");
  const std::string name = Member(ticket.body, "fileNames");
  const std::string line = "\r\n--B\r\nContent-Disposition: form-data; name=\"";
  const std::string front = line + "Master_URL\"\r\n\r\n" + Member(ticket.body, "masterUrl") + line +
                            "CacheDescriptor_array\"\r\n\r\n" + stream + ":" + name + ":" + stream + ";" +
                            line + name + "\"; filename=\"x\"\r\n\r\n";
  const std::string end = "\r\n--B--";
  constexpr std::size_t kBlocks = 200;
  const std::string block(1024 * 1024, 'x');
  RawClient uploads(std::atoi(url.substr(url.find(':', 7) + 1).c_str()));
  uploads.Send("POST " + url.substr(url.find('/', 7)) + " HTTP/1.1\r\nHost: h\r\n" + nonce +
               "Content-Type: multipart/form-data; boundary=B\r\nContent-Length: " +
               std::to_string(front.size() + kBlocks * block.size() + end.size()) + "\r\n\r\n" + front);
  for (std::size_t i = 0; i < kBlocks; ++i) uploads.Send(block);
  uploads.Send(end);
  EXPECT_EQ(uploads.Read(60'000).status, 200);
  EXPECT_EQ(std::filesystem::file_size(directory_ / "data/content" / stream), kBlocks * block.size());

  std::ifstream status("/proc/" + std::to_string(process.id()) + "/status");
  long peak = 0;
  for (std::string text; std::getline(status, text);) {
    if (text.rfind("VmHWM:", 0) == 0) peak = std::atol(text.c_str() + 6);
  }
  EXPECT_GT(peak, 0);
  EXPECT_LT(peak, 100 * 1024) << "kB";
}

}  // namespace
}  // namespace vantry_sim
