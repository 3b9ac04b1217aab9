// What becomes of the http addresses that a server names.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/result.h"
#include "browsing/folder_contents.h"
#include "connection/odata_page_reader.h"
#include "connection/server_address.h"
#include "documents/reading/document_download.h"
#include "documents/storing/content_upload.h"
#include "platform/http_settings.h"
#include "public/outcome.h"
#include "tests/support/operation.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace {

du::http::TransportSettings& Settings() {
  static du::http::TransportSettings settings;
  return settings;
}

}  // namespace

// In the place of the transport's.
du::http::TransportSettings du::http::GetTransportSettings() {
  return Settings();
}

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using du::http::HttpAddresses;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using vtdirect_test::Begin;

TEST(HttpAddress, OfAServerByHttpsIsRefusedAllowedOrUpgraded) {
  const std::string server = "https://plm.example/vt";
  EXPECT_EQ(AddressToAsk(server, "http://plm.example", HttpAddresses::Refuse), std::nullopt);
  EXPECT_EQ(AddressToAsk("HTTPS://plm.example", "Http://files.example:81", HttpAddresses::Refuse),
            std::nullopt);
  EXPECT_EQ(AddressToAsk(server, "http://files.example:81", HttpAddresses::Allow), "http://files.example:81");
  EXPECT_EQ(AddressToAsk(server, "http://files.example", HttpAddresses::Upgrade), "https://files.example");
  EXPECT_EQ(AddressToAsk(server, "http://files.example:80", HttpAddresses::Upgrade), "https://files.example");
  EXPECT_EQ(AddressToAsk(server, "HTTP://files.example:8443", HttpAddresses::Upgrade),
            "https://files.example:8443");
  EXPECT_EQ(AddressToAsk(server, "http://[::1]:80", HttpAddresses::Upgrade), "https://[::1]");
}

TEST(HttpAddress, OfAServerByHttpIsAskedAsItIs) {
  for (const auto rule : {HttpAddresses::Refuse, HttpAddresses::Allow, HttpAddresses::Upgrade}) {
    EXPECT_EQ(AddressToAsk("http://plm.example", "http://files.example", rule), "http://files.example");
    EXPECT_EQ(AddressToAsk("http://plm.example", "https://files.example", rule), "https://files.example");
    EXPECT_EQ(AddressToAsk("https://plm.example", "https://files.example", rule), "https://files.example");
    EXPECT_EQ(AddressToAsk("https://plm.example", "/servlet/x", rule), "/servlet/x");
  }
}

class NamedAddress : public testing::Test {
 protected:
  NamedAddress() { Settings() = {}; }

  bool Download(const std::string& url) {
    transport.Then(200,
                   R"({"id":"D1","cadContent":{"contentSections":[{"contentUrl":[")" + url + R"("]}]}})");
    transport.Then(200, "bytes");
    FileInfo info;
    return HandOver(
        DownloadDocument(Begin(connection), ParseCheckoutId("D1"), directory.File("copy").c_str(), {}), info);
  }
  Status Upload(const std::string& url) {
    vtdirect_test::WriteFile(directory.File("f"), "secret");
    transport.Then(200, R"({"items":[{"id":"csrf","attributes":{"nonce_key":"N","nonce":"1"}}]})");
    transport.Then(200,
                   R"({"masterUrl":"m","uploadUrl":")" + url + R"(","fileNames":["f"],"streamIds":["1"]})");
    transport.Then(200, R"({"contentInfos":[]})");
    std::vector<UploadedContent> contents;
    return HandOver(UploadContents(Begin(connection), {directory.File("f")}, {}), contents);
  }
  bool ReadPages(const std::string& next) {
    transport.Then(200, R"({"value":[1],"@odata.nextLink":")" + next + R"("})");
    transport.Then(200, R"({"value":[2]})");
    ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
    while (reader.Next() && reader.page().IsObject()) {
    }
    return !reader.failed();
  }
  /// The servers that were asked, in order.
  [[nodiscard]] std::vector<std::string> Asked() const {
    std::vector<std::string> servers;
    for (const auto& request : transport.requests()) servers.push_back(request.server);
    return servers;
  }
  /// The trace and the reason of a refusal say what was refused and what to set.
  void ExpectTold(const VtDirectManager::Outcome& outcome) {
    ASSERT_FALSE(trace.lines().empty());
    const std::string sentence =
        "The server was asked by https and names an address with http, to which nothing is sent";
    EXPECT_THAT(trace.lines().front().text, HasSubstr("http://files.example:81/"));
    EXPECT_THAT(trace.lines().front().text, HasSubstr(sentence + ". "));
    EXPECT_THAT(trace.lines().front().text, HasSubstr("TransportSettings::httpAddresses"));
    const auto cause = outcome.Cause();
    ASSERT_TRUE(cause.has_value());
    EXPECT_THAT(cause->url, HasSubstr("http://files.example:81/"));
    EXPECT_THAT(cause->serverText, HasSubstr("TransportSettings::httpAddresses"));
    EXPECT_EQ(cause->platformDetail, 25);
    EXPECT_EQ(cause->platformText, sentence);
  }

  static constexpr const char* server = "https://plm.example/vt";
  static constexpr const char* address = "http://files.example:81/a?ticket=secret";
  vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::TraceRecorder trace;
  vtdirect_test::ScriptedTransport transport;
  std::shared_ptr<VtConnection> connection =
      std::make_shared<VtConnection>(server, [](const char*) { return false; });
};

TEST_F(NamedAddress, ByHttpGetsNoDownloadUnlessAllowed) {
  const VtDirectManager::Outcome outcome;
  EXPECT_FALSE(Download(address));
  EXPECT_THAT(Asked(), ElementsAre(server));
  ExpectTold(outcome);
  EXPECT_THAT(directory.Entries(), IsEmpty());
}

TEST_F(NamedAddress, ByHttpGetsNoUploadUnlessAllowed) {
  const VtDirectManager::Outcome outcome;
  EXPECT_EQ(Upload(address), Refused);
  for (const std::string& asked : Asked()) EXPECT_EQ(asked, server);
  ExpectTold(outcome);
  EXPECT_THAT(directory.Entries(), ElementsAre("f"));
}

TEST_F(NamedAddress, ByHttpIsNoNextPageUnlessAllowed) {
  const VtDirectManager::Outcome outcome;
  EXPECT_FALSE(ReadPages(address));
  EXPECT_THAT(Asked(), ElementsAre(server));
  ExpectTold(outcome);
}

TEST_F(NamedAddress, ByHttpIsNoNextPageOfAFolderUnlessAllowed) {
  const VtDirectManager::Outcome outcome;
  transport.Then(200, R"({"value":[],"@odata.nextLink":")" + std::string(address) + R"("})");
  EXPECT_FALSE(ListDynamicDocuments(
      Begin(connection), "Products('1')", [](const DirEntryInfoExt&) {}, false));
  EXPECT_THAT(Asked(), ElementsAre(server));
  ExpectTold(outcome);
}

TEST_F(NamedAddress, ThatIsRefusedKeepsItsTicketFromTheTrace) {
  EXPECT_FALSE(Download(address));
  for (const auto& line : trace.lines()) EXPECT_EQ(line.text.find("secret"), std::string::npos) << line.text;
}

TEST_F(NamedAddress, ByHttpIsAskedWhereTheSettingsAllowIt) {
  Settings().httpAddresses = HttpAddresses::Allow;
  EXPECT_TRUE(Download(address));
  EXPECT_THAT(Asked(), ElementsAre(server, "http://files.example:81"));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(NamedAddress, ByHttpIsAskedByHttpsWhereTheSettingsUpgradeIt) {
  Settings().httpAddresses = HttpAddresses::Upgrade;
  EXPECT_TRUE(Download(address));
  EXPECT_TRUE(ReadPages("http://plm.example/p2"));
  EXPECT_EQ(Upload("http://plm.example:80/up"), Ok);
  EXPECT_THAT(Asked(), testing::IsSupersetOf({"https://files.example:81", "https://plm.example"}));
  for (const std::string& asked : Asked()) EXPECT_EQ(asked.substr(0, 8), "https://");
}

}  // namespace
