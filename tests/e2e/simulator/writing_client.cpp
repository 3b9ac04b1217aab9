#include "writing_client.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace vantry_sim {
namespace {

const std::string documentsPath = "/servlet/rest/v1/dkm/documents";

}  // namespace

std::string Member(const std::string& json, const std::string& name) {
  const auto key = json.find("\"" + name + "\":");
  if (key == std::string::npos) return {};
  auto begin = key + name.size() + 3;
  while (begin < json.size() && (json[begin] == '"' || json[begin] == '[')) ++begin;
  return json.substr(begin, json.find_first_of("\",]}", begin) - begin);
}

std::string BytesOf(int number) {
  return std::string(static_cast<std::size_t>(1000 + 37 * number), static_cast<char>('a' + number % 26));
}

std::string NameOf(int number) {
  return "killed" + std::to_string(number) + ".lxz";
}

void ExpectWhole(RawClient& client, const std::string& id, int number) {
  const auto document = client.Get(documentsPath + "/" + id);
  ASSERT_EQ(document.status, 200) << id;
  EXPECT_EQ(Member(document.body, "cadName"), NameOf(number));
  const std::string stream = Member(document.body, "streamId");
  const auto content = client.Get("/servlet/rest/v1/content/streams/" + stream + "/x");
  EXPECT_EQ(content.status, 200) << id;
  EXPECT_EQ(content.body, BytesOf(number)) << id;
}

WritingClient::WritingClient(int port) : main_(port) {
  const auto csrf = main_.Get("/servlet/rest/security/csrf");
  nonce_ = "X-Zvk-Nonce: " + Member(csrf.body, "nonce") + "\r\n";
  json_ = nonce_ + "Content-Type: application/json\r\n";
}

std::string WritingClient::Make(int number) {
  const UploadPlan plan = Plan();
  const std::string receipt = plan.port > 0 ? Upload(plan, BytesOf(number)) : std::string();
  if (receipt.empty()) return {};
  const auto made = main_.Post(
      documentsPath, json_,
      R"({"createInstructions":[{"epmDocument":{"epmMaster":{"cadName":")" + NameOf(number) +
          R"("},"cadContent":{"contentSections":[{"category":"FENLET","fileName":"{$CAD_NAME}","streamId":)" +
          plan.stream + R"(,"uploadInfo":{"encodedCCD":")" + receipt +
          R"("}}]},"authAppVersion":"310","ndVersion":"J-01"}}],"contextId":"OR:vn.product.Product:101"})");
  return made.status == 200 && made.complete ? Member(made.body, "id") : std::string();
}

std::string WritingClient::CheckOutAndIn(const std::string& id) {
  const std::string bench = "/servlet/rest/v1/dkm/workspaces/W301/";
  const auto out = main_.Post(bench + "checkout", json_,
                              "{\"objIdList\":[\"" + id + "\"],\"dependenciesOption\":\"None\"}");
  if (out.status != 200 || !out.complete) return {};
  const auto in = main_.Post(
      bench + "checkin", json_,
      "{\"checkinInstructions\":[{\"id\":\"" + Member(out.body, "id") + "\"}],\"removeFromWorkspace\":true}");
  return in.status == 200 && in.complete ? Member(in.body, "id") : std::string();
}

UploadPlan WritingClient::Plan() {
  const auto ticket = main_.Post("/servlet/rest/v1/content/creationFactory", json_, "{\"noOfFiles\":1}");
  UploadPlan plan;
  if (ticket.status != 200 || !ticket.complete) return plan;
  const std::string url = Member(ticket.body, "uploadUrl");
  const std::string name = Member(ticket.body, "fileNames");
  const std::string line = "\r\n--B\r\nContent-Disposition: form-data; name=\"";
  plan.port = std::atoi(url.substr(url.find(':', 7) + 1).c_str());
  plan.stream = Member(ticket.body, "streamIds");
  plan.head = "POST " + url.substr(url.find('/', 7)) + " HTTP/1.1\r\nHost: h\r\n" + nonce_ +
              "Content-Type: multipart/form-data; boundary=B\r\n";
  plan.front = line + "Master_URL\"\r\n\r\n" + Member(ticket.body, "masterUrl") + line +
               "CacheDescriptor_array\"\r\n\r\n" + plan.stream + ":" + name + ":" + plan.stream + ";" + line +
               name + "\"; filename=\"x\"\r\n\r\n";
  plan.end = "\r\n--B--";
  return plan;
}

std::string WritingClient::Upload(const UploadPlan& plan, const std::string& bytes) {
  try {
    RawClient uploads(plan.port);
    const std::string body = plan.front + bytes + plan.end;
    uploads.Send(plan.head + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
    const auto answer = uploads.Read();
    return answer.status == 200 && answer.complete ? Member(answer.body, "encodedInfo") : std::string();
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace vantry_sim
