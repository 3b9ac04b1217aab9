#include "simulator/wire/answer_cache.h"

#include "admin_fixture.h"

namespace vantry_sim {
namespace {

Request Ask(const std::string& target, const std::string& user = "anna") {
  Request request;
  request.method = "GET";
  request.target = target;
  request.user = user;
  return request;
}

Response Answer(std::string body) {
  Response response;
  response.body = std::move(body);
  return response;
}

TEST(AnswerCache, SameQuestionOfTheSameUserHasTheSameAnswerUntilSomethingIsWritten) {
  AnswerCache cache;
  const DatabaseVersion version{1, 0, 5};
  EXPECT_FALSE(cache.Find(Ask("/a"), version));
  Response response = Answer("one");
  cache.Keep(Ask("/a"), response);
  EXPECT_EQ(cache.Find(Ask("/a"), version)->body, "one");
  EXPECT_FALSE(cache.Find(Ask("/b"), version));
  EXPECT_FALSE(cache.Find(Ask("/a", "bruno"), version));
  Request other = Ask("/a");
  other.host = "h";
  EXPECT_FALSE(cache.Find(other, version));
  other = Ask("/a");
  other.prefer = "odata.maxpagesize=2";
  EXPECT_FALSE(cache.Find(other, version));
  for (const DatabaseVersion& next :
       {DatabaseVersion{1, 0, 6}, DatabaseVersion{1, 1, 5}, DatabaseVersion{2, 0, 5}}) {
    EXPECT_FALSE(cache.Find(Ask("/a"), next));
    cache.Keep(Ask("/a"), response);
  }
}

TEST(AnswerCache, WhatMayChangeByItselfIsNotKept) {
  AnswerCache cache;
  Response once = Answer("nonce");
  once.once = true;
  cache.Keep(Ask("/a"), once);
  Response refused = Answer("no");
  refused.status = 404;
  cache.Keep(Ask("/b"), refused);
  EXPECT_FALSE(cache.Find(Ask("/a"), {}));
  EXPECT_FALSE(cache.Find(Ask("/b"), {}));
}

TEST(AnswerCache, LongBodiesAreSharedAndMemoryIsBounded) {
  AnswerCache cache;
  for (int i = 0; i < 100; ++i) {
    Response response = Answer(std::string(10 << 20, 'x'));
    cache.Keep(Ask("/" + std::to_string(i)), response);
    EXPECT_EQ(response.shared->size(), std::size_t{10 << 20});
  }
  int kept = 0;
  for (int i = 0; i < 100; ++i) kept += cache.Find(Ask("/" + std::to_string(i)), {}) ? 1 : 0;
  EXPECT_GT(kept, 0);
  EXPECT_LE(kept, 6);
  Response huge = Answer(std::string(40 << 20, 'x'));
  cache.Keep(Ask("/huge"), huge);
  EXPECT_FALSE(cache.Find(Ask("/huge"), {}));
}

TEST(AnswerMemory, OneClientGetsThreeQuartersAndOthersTheRest) {
  AnswerMemory memory(100);
  const auto hold = [&](std::size_t size, const char* client) {
    std::string body(size, 'x');
    return memory.Hold(body, client);
  };
  auto first = hold(50, "a");
  const auto second = hold(25, "a");
  ASSERT_TRUE(first && second);
  EXPECT_FALSE(hold(1, "a"));
  const auto other = hold(25, "b");
  EXPECT_TRUE(other);
  EXPECT_FALSE(hold(1, "b"));
  // One that two read is there until both have.
  auto again = first;
  first.reset();
  EXPECT_FALSE(hold(1, "a"));
  again.reset();
  EXPECT_TRUE(hold(50, "a"));
}

TEST(AnswerMemory, FirstAnswerIsTakenWhateverItsLengthAndARefusedOneIsLeftAlone) {
  AnswerMemory memory(100);
  std::string body(1000, 'x');
  const auto longOne = memory.Hold(body, "a");
  ASSERT_TRUE(longOne);
  EXPECT_EQ(longOne->size(), 1000U);
  body = "short";
  EXPECT_FALSE(memory.Hold(body, "b"));
  EXPECT_EQ(body, "short");
}

TEST(AnswerCache, AnswersThatAreReadHaveABoundTogether) {
  AnswerCache cache;
  std::vector<Response> read;
  for (int i = 0; i < 10; ++i) {
    read.push_back(Answer(std::string(40 << 20, 'x')));
    cache.Keep(Ask("/" + std::to_string(i)), read.back());
  }
  // One client's part of 256 MiB holds four of 40 MiB.
  for (int i = 0; i < 10; ++i) EXPECT_EQ(read[i].status, i < 4 ? 200 : 503) << i;
  EXPECT_EQ(read[4].body.find("xxx"), std::string::npos);
  Request elsewhere = Ask("/elsewhere");
  elsewhere.client = "127.0.0.2";
  Response other = Answer(std::string(40 << 20, 'x'));
  cache.Keep(elsewhere, other);
  EXPECT_EQ(other.status, 200);
  read.clear();
  Response later = Answer(std::string(40 << 20, 'x'));
  cache.Keep(Ask("/later"), later);
  EXPECT_EQ(later.status, 200);
}

TEST(AnswerCache, WhatIsOnlyKeptMakesRoomForWhatIsRead) {
  AnswerCache cache;
  std::vector<Response> read;
  for (int i = 0; i < 3; ++i) {
    read.push_back(Answer(std::string(50 << 20, 'x')));
    cache.Keep(Ask("/" + std::to_string(i)), read.back());
  }
  Response kept = Answer(std::string(30 << 20, 'x'));
  cache.Keep(Ask("/kept"), kept);
  kept = {};
  ASSERT_TRUE(cache.Find(Ask("/kept"), {}));
  read.push_back(Answer(std::string(40 << 20, 'x')));
  cache.Keep(Ask("/more"), read.back());
  EXPECT_EQ(read.back().status, 200);
  EXPECT_FALSE(cache.Find(Ask("/kept"), {}));
}

TEST_F(AdminTest, ReadsSeeEveryWriteWhoeverMadeIt) {
  const std::string target = "/servlet/rest/v1/dkm/documents/D1001";
  const auto paint = [&] {
    return std::string(GetJson(target)["fileBasedAttributes"][1]["parameterValue"]["value"].GetString());
  };
  EXPECT_EQ(paint(), "Nachtblau");
  Admin("POST", "/documents/D1001/attributes", R"({"attributes":{"ZVK_DD_PAINT":"Rot"}})");
  EXPECT_EQ(paint(), "Rot");
  {
    // Another process, such as the shell of the database.
    Database other((directory_ / "data/vantry-sim.db").string());
    other.Execute("UPDATE attributes SET value = 'Grün' WHERE parameter_name = 'ZVK_DD_PAINT'");
  }
  EXPECT_EQ(paint(), "Gr\xC3\xBCn");
  Admin("POST", "/reset");
  EXPECT_EQ(paint(), "Nachtblau");
}

}  // namespace
}  // namespace vantry_sim
