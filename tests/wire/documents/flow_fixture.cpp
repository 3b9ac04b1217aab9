#include "tests/wire/documents/flow_fixture.h"

#include <filesystem>

namespace vtdirect_test {
namespace {

const std::string boundary = "\r\n--xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary";

std::string JoinWithCommas(int count, const std::function<std::string(int)>& element) {
  std::string text;
  for (int number = 1; number <= count; ++number) text += (number > 1 ? "," : "") + element(number);
  return text;
}

}  // namespace

std::string Ticket(int files) {
  const auto name = [](int number) { return "\"f" + std::to_string(number) + "\""; };
  const auto stream = [](int number) { return "\"" + std::to_string(900 + number) + "\""; };
  return R"({"masterUrl":"https://plm.example/m","uploadUrl":"https://files.example:8443/up/load?k=1",)"
         R"("fileNames":[)" +
         JoinWithCommas(files, name) + R"(],"streamIds":[)" + JoinWithCommas(files, stream) + "]}";
}

std::string Receipts(int files) {
  const auto receipt = [](int number) {
    return R"({"streamId":)" + std::to_string(900 + number) + R"(,"encodedInfo":"r)" +
           std::to_string(number) + "\"}";
  };
  return R"({"contentInfos":[)" + JoinWithCommas(files, receipt) + "]}";
}

std::string Multipart(const std::string& descriptors, const std::vector<Part>& files) {
  std::string body =
      boundary + "\r\nContent-Disposition: form-data; name=\"Master_URL\"\r\n\r\nhttps://plm.example/m" +
      boundary + "\r\nContent-Disposition: form-data; name=\"CacheDescriptor_array\"\r\n\r\n" + descriptors;
  for (const Part& file : files) {
    body += boundary +
            "\r\nContent-Type: application/octet-stream\r\n"
            "Content-Disposition: form-data; name=\"" +
            file.name + "\"; filename=\"" + file.fileName + "\"\r\n\r\n" + file.bytes;
  }
  return body + boundary + "--";
}

FlowTest::FlowTest() {
  std::filesystem::create_directory(directory.File("local"));
}

FlowTest::~FlowTest() {
  EXPECT_EQ(transport.unanswered(), 0u) << "answers that nobody asked for";
  EXPECT_THAT(trace.strayAreas(), testing::IsEmpty());
  EXPECT_THAT(Leftovers(), testing::IsEmpty()) << "files left behind";
}

std::string FlowTest::MakeLocal(const std::string& name, const std::string& content) const {
  WriteFile(Local(name), content);
  return Local(name);
}

Lines FlowTest::Leftovers() const {
  Lines names = directory.Entries();
  std::erase(names, "local");
  return names;
}

}  // namespace vtdirect_test
