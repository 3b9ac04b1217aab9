#include <gtest/gtest.h>
#include <unistd.h>

#include "connection/http_connection.h"
#include "connection/rest_request.h"
#include "connection/rest_stream.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/support/temporary_directory.h"

// A staged body that 32 bits cannot count, on the wire. The file is a hole, and the server refuses it by its
// length: no disk is filled and next to nothing is sent.
namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface::vantry;

TEST(LargeUpload, AnnouncesItsWholeLengthAndEndsAtTheServersLimit) {
  const TemporaryDirectory directory;
  const std::string hole = directory.File("hole");
  WriteFile(hole, "");
  ASSERT_EQ(truncate(hole.c_str(), 4294967297), 0);
  const ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Send("HTTP/1.1 413 Too Large\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    peer.Close();
  });
  const auto connection = std::make_shared<HttpConnection>(server.Url(), [](const char*) { return false; });
  const RestStream response(MakeRestRequest(connection, du::http::Method::Post, "up", hole.c_str(),
                                            "application/octet-stream", nullptr),
                            {});
  EXPECT_EQ(response.errorCode(), du::http::ErrorCode::TooLarge);
  ASSERT_EQ(server.requests().size(), 1u);
  EXPECT_EQ(server.requests().front().Header("Content-Length"), "4294967297");
}

}  // namespace
}  // namespace vtdirect_test
