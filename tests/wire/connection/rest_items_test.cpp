#include "connection/rest_items.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/scripted_transport.h"

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using vtdirect_test::SentRequest;
using Attributes = std::map<std::string, std::string>;

class ReadRestItemsTest : public testing::Test {
 protected:
  bool Read(bool itemsWrapped) {
    auto found =
        ReadRestItems(connection, "servlet/list", itemsWrapped ? RestListForm::Wrapped : RestListForm::Bare);
    status = found.status;
    rows.insert(rows.end(), found.value.begin(), found.value.end());
    return status == Ok;
  }

  vtdirect_test::ScriptedTransport transport;
  std::shared_ptr<HttpConnection> connection =
      std::make_shared<HttpConnection>("http://plm.example/vt", AuthFunction{});
  std::vector<RestItem> rows;
  Status status = TooLarge;
};

TEST_F(ReadRestItemsTest, SendsOneGetThatAcceptsJson) {
  transport.Then(200, "[]");
  EXPECT_TRUE(Read(false));
  EXPECT_THAT(transport.requests(), ElementsAre(SentRequest{"http://plm.example/vt", "GET /vt/servlet/list",
                                                            "Accept: application/json", std::nullopt}));
}

TEST_F(ReadRestItemsTest, ReadsIdTypeAndTextAttributesOfEachElement) {
  transport.Then(200, R"([{"id":"A","typeId":"T","attributes":{"x":"1","y":"2"}},{"id":"B"}])");
  EXPECT_TRUE(Read(false));
  EXPECT_EQ(status, Ok);
  ASSERT_THAT(rows, SizeIs(2));
  EXPECT_EQ(rows[0].id, "A");
  EXPECT_EQ(rows[0].typeId, "T");
  EXPECT_EQ(rows[0].attributes, (Attributes{{"x", "1"}, {"y", "2"}}));
  EXPECT_EQ(rows[1].id, "B");
  EXPECT_EQ(rows[1].typeId, "");
  EXPECT_THAT(rows[1].attributes, IsEmpty());
}

TEST_F(ReadRestItemsTest, IgnoresMembersOfOtherTypesAndNames) {
  transport.Then(200,
                 R"([{"id":1,"typeId":null,"attributes":{"n":1,"b":true,"s":"t","o":{"s":"u"}},"ID":"X"},)"
                 R"({"id":"B","attributes":["x"]},{"id":["C"],"attributes":"a"}])");
  EXPECT_TRUE(Read(false));
  ASSERT_THAT(rows, SizeIs(3));
  EXPECT_EQ(rows[0].id, "");
  EXPECT_EQ(rows[0].typeId, "");
  EXPECT_EQ(rows[0].attributes, (Attributes{{"s", "t"}}));
  EXPECT_EQ(rows[1].id, "B");
  EXPECT_THAT(rows[1].attributes, IsEmpty());
  EXPECT_EQ(rows[2].id, "");
  EXPECT_THAT(rows[2].attributes, IsEmpty());
}

TEST_F(ReadRestItemsTest, AnElementThatIsNoObjectGivesAnEmptyRow) {
  transport.Then(200, R"([1,"a",null,[],{"id":"B"}])");
  EXPECT_TRUE(Read(false));
  ASSERT_THAT(rows, SizeIs(5));
  for (int row = 0; row < 4; ++row) {
    EXPECT_EQ(rows[row].id, "");
    EXPECT_EQ(rows[row].typeId, "");
    EXPECT_THAT(rows[row].attributes, IsEmpty());
  }
  EXPECT_EQ(rows[4].id, "B");
}

TEST_F(ReadRestItemsTest, AWrappedListStandsInItems) {
  transport.Then(200, R"({"count":1,"items":[{"id":"A"}]})");
  EXPECT_TRUE(Read(true));
  ASSERT_THAT(rows, SizeIs(1));
  EXPECT_EQ(rows[0].id, "A");
}

TEST_F(ReadRestItemsTest, ABareListIsTakenWhereAWrappedOneIsExpected) {
  transport.Then(200, R"([{"id":"A"}])");
  EXPECT_TRUE(Read(true));
  EXPECT_THAT(rows, SizeIs(1));
}

TEST_F(ReadRestItemsTest, AWrappedListIsNotTakenWhereABareOneIsExpected) {
  transport.Then(200, R"({"items":[{"id":"A"}]})");
  EXPECT_TRUE(Read(false));
  EXPECT_THAT(rows, IsEmpty());
  EXPECT_EQ(status, Ok);
}

TEST_F(ReadRestItemsTest, WhatIsNoListGivesNoRowsAndIsNoFailure) {
  for (const char* body : {R"({"items":{}})", R"({"items":"x"})", "{}", "1", "null", "\"a\""}) {
    for (const bool itemsWrapped : {false, true}) {
      transport.Then(200, body);
      EXPECT_TRUE(Read(itemsWrapped)) << body;
      EXPECT_EQ(status, Ok) << body;
      EXPECT_THAT(rows, IsEmpty()) << body;
    }
  }
}

TEST_F(ReadRestItemsTest, ASuccessWithABrokenBodyIsAnEmptyList) {
  transport.Then(200, "{");
  EXPECT_TRUE(Read(true));
  EXPECT_EQ(status, Ok);
  EXPECT_THAT(rows, IsEmpty());
}

TEST_F(ReadRestItemsTest, ABrokenBodyLeavesEarlierRowsUntouched) {
  transport.Then(200, R"([{"id":"A"}])").Then(200, R"([{"id":"B"},)");
  EXPECT_TRUE(Read(false));
  EXPECT_TRUE(Read(false));
  ASSERT_THAT(rows, SizeIs(1));
  EXPECT_EQ(rows[0].id, "A");
}

TEST_F(ReadRestItemsTest, RowsAreAppended) {
  transport.Then(200, R"([{"id":"A"}])").Then(200, R"([{"id":"B"}])");
  EXPECT_TRUE(Read(false));
  EXPECT_TRUE(Read(false));
  ASSERT_THAT(rows, SizeIs(2));
  EXPECT_EQ(rows[1].id, "B");
}

TEST_F(ReadRestItemsTest, EverySuccessStatusIsOk) {
  for (const int http : {200, 201, 204, 299}) {
    transport.Then(http, http == 204 ? "" : "[]");
    status = TooLarge;
    EXPECT_TRUE(Read(false)) << http;
    EXPECT_EQ(status, Ok) << http;
  }
}

TEST_F(ReadRestItemsTest, A401IsUnauthorized) {
  transport.Then(401, R"([{"id":"A"}])");
  EXPECT_FALSE(Read(false));
  EXPECT_EQ(status, Unauthorized);
  EXPECT_THAT(rows, IsEmpty());
}

TEST_F(ReadRestItemsTest, EveryOtherFailureIsConnectionFailed) {
  for (const int http : {500, 404, 403, 302, 199, 300}) {
    transport.Then(http, R"([{"id":"A"}])");
    status = TooLarge;
    EXPECT_FALSE(Read(false)) << http;
    EXPECT_EQ(status, ConnectionFailed) << http;
    EXPECT_THAT(rows, IsEmpty()) << http;
  }
  transport.ThenFail(du::http::ErrorCode::TimedOut);
  status = TooLarge;
  EXPECT_FALSE(Read(false));
  EXPECT_EQ(status, ConnectionFailed);
}

TEST_F(ReadRestItemsTest, AListTooLongForMemoryIsReadFromTheDisk) {
  std::string body = "[";
  for (int row = 0; row < 20000; ++row) {
    body += R"({"id":"ITEM)" + std::to_string(row) + R"(","attributes":{"name":"some name"}},)";
  }
  body += "{\"id\":\"last\"}]";
  ASSERT_GT(body.size(), 524288U);
  transport.Then(200, body);
  EXPECT_TRUE(Read(false));
  ASSERT_THAT(rows, SizeIs(20001));
  EXPECT_EQ(rows[19999].id, "ITEM19999");
  EXPECT_EQ(rows[20000].id, "last");
}

}  // namespace
